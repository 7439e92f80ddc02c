// Direct beam refinement: the linear map from index differences to position differences of one frame.
#pragma once

#include "crystal/peakpairs.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>
#include <QVector>

#include <array>

namespace tessera {

/// The map of one frame: x = p0·H + p2·K + p4·L, y = p1·H + p3·K + p5·L, pixels.
struct DifferenceMap {
    std::array<double, 6> adfStart{};
    std::array<double, 6> adfEnd{};
    std::array<double, 6> adfStdErr{};
    int nInfo = 0;            ///< result of the fit; 0 if none took place
    double dfSumSquares = 0;  ///< at the end, pixels²
    int nPairs = 0;
    QList<Peak3D> listDifference;  ///< index and position differences, product of intensities, d*
};

/// Fits the map of each frame to the pairs of its peaks; no direct beam enters.
///
/// Start values come from the first three pairs. If their index differences have no determinant above
/// 1e-7, the start is the least-squares map of all pairs, or 0 if these lie in a plane. p5 starts off by 1.
/// A frame with fewer than three pairs gets its differences listed and no map; the fit itself wants six.
/// A run that the report stops ends at once, with the entries found so far. The lines of the differences of a
/// frame are one log entry, and so are those of its start map.
///
/// @param vecListPeakPair  one list per frame; entries of the result line up with it
/// @param dfAmplitude, dfAzimuth  of the stretching, per cent and degrees
/// @param dfPixelSize      Å⁻¹ per pixel
QVector<DifferenceMap> refineDirectBeamPosition(const QVector<QList<PeakPair>>& vecListPeakPair,
                                                double dfAmplitude, double dfAzimuth, double dfPixelSize,
                                                CRunReport& report);

/// The same for the pairs that peakPairPlaces() finds, with the copies of one frame's pairs in memory at a
/// time; listDifference of the maps stays empty.
/// @param vecPeak  one list per frame; the result has an entry for each frame of at least two peaks
QVector<DifferenceMap> refineDirectBeamPosition(const QVector<QList<Peak3D>>& vecPeak,
                                                const PeakPairLimits& limits, const CSpaceGroup& spaceGroup,
                                                double dfAmplitude, double dfAzimuth, CRunReport& report);

}  // namespace tessera
