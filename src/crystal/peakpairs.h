// Peak pairs: two indexed peaks of one frame, whose distance knows no beam position.
#pragma once

#include "crystal/spacegroup.h"
#include "records/peakpair.h"
#include "records/runreport.h"

#include <QList>
#include <QVector>

#include <optional>
#include <vector>

namespace tessera {

/// What makes two peaks of a frame a pair.
struct PeakPairLimits {
    double dfDStarLow = 1;  ///< Å⁻¹, bounds included and in either order
    double dfDStarHigh = 2;
    double dfPixelSize = 0.001;  ///< Å⁻¹ per pixel
};

/// A pair by places: the list (frame) that it comes from and the two peaks in that list.
struct PeakPairPlace {
    int nList;
    int nFirst;
    int nSecond;
};

/// The peaks with dfIPoint between the bounds, which are included and may stand in either order; same shape.
QVector<QList<Peak3D>> selectPeaksByIntensity(const QVector<QList<Peak3D>>& vecPeak, double dfLow,
                                              double dfHigh);

/// The pairs of each frame, in the order of the first peak, then of the second.
///
/// Both peaks have rounded indices other than (0, 0, 0) that the space group allows, and lie at a pixel
/// distance times the pixel size within the limits. Only the positions on the frame count, not d* of either.
///
/// @return nothing if the report's goOn() ended the walk
std::optional<std::vector<PeakPairPlace>> peakPairPlaces(const QVector<QList<Peak3D>>& vecPeak,
                                                         const PeakPairLimits& limits,
                                                         const CSpaceGroup& spaceGroup, CRunReport& report);

/// The same with the peaks themselves: one list for each frame of at least two peaks, so that the lists need
/// not line up with the frames. A pair takes some 400 bytes here; long series are better served by
/// peakPairPlaces().
QVector<QList<PeakPair>> buildPeakPairs(const QVector<QList<Peak3D>>& vecPeak, const PeakPairLimits& limits,
                                        const CSpaceGroup& spaceGroup, CRunReport& report);

}  // namespace tessera
