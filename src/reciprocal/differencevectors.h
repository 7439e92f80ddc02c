// Difference vectors: the vectors between all pairs of reflections.
#pragma once

#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

#include <vector>

namespace tessera {

/// The vector between two reflections.
struct DifferenceVector {
    Vec3D v;              ///< Å⁻¹
    double dfDStar = 0;   ///< its length, Å⁻¹
    double dfWeight = 0;  ///< the smaller of the two intensities
};

/// The vectors v and −v between all pairs of reflections whose length lies within the limits (included).
///
/// Of more than 300000 vectors the strongest are kept, strongest first and in order of pairs among equals;
/// the others are never stored, so that memory stays bounded. A run that was stopped gives an empty list.
std::vector<DifferenceVector> calDifferenceVectors(const QList<Peak3D>& listPeak, float fMaxLength,
                                                   float fMinLength, CRunReport& report);

}  // namespace tessera
