// Difference vectors: the vectors between all pairs of reflections.
#pragma once

#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

namespace tessera {

/// The vectors v and −v between all pairs of reflections whose length lies within the limits (included).
///
/// A vector is carried in a Peak3D: the point is the vector, dfDStar its length (Å⁻¹), dfIPoint the
/// smaller of the two intensities. Of more than 300000 vectors the strongest are kept, strongest first
/// and in order of pairs among equals; the others are never stored, so that memory stays bounded.
/// A run that was stopped gives an empty list.
QList<Peak3D> calDifferenceVectors(const QList<Peak3D>& listPeak, float fMaxLength, float fMinLength,
                                   CRunReport& report);

}  // namespace tessera
