// PeakMapping: the numbers with which points of reciprocal space were computed.
#pragma once

#include "geometry/seriesdistortion.h"

#include <QList>
#include <QPointF>

namespace tessera {

/// The numbers with which points of reciprocal space were computed from positions on frames. Points with
/// one record must not be mixed with shifts, centre or geometry of another.
struct PeakMapping {
    QList<QPointF> listShift;       ///< pixels, per frame
    QList<double> listOverallTilt;  ///< degrees, per frame
    double dfCenterX = 0;           ///< column of the direct beam on the first frame, pixels
    double dfCenterY = 0;           ///< row of it, pixels
    double dfWavelength = 0;        ///< Å
    double dfPixelSize = 0;         ///< Å⁻¹ per pixel
    double dfRotationAxis = 0;      ///< degrees
    double dfTiltRelaxation = 0;    ///< degrees
    /// Per cent; amplitude and azimuth are 0 where the stretching is not applied.
    double dfStretchAmplitude = 0;
    double dfStretchAzimuth = 0;  ///< degrees
    SeriesDistortion distortion;  ///< the other distortions, which are corrected

    bool operator==(const PeakMapping& other) const;  ///< whether all numbers are equal
    bool operator!=(const PeakMapping& other) const { return !(*this == other); }  ///< the opposite
};

}  // namespace tessera
