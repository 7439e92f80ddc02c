// PeakMapping: what points of reciprocal space were computed with.
#pragma once

#include "geometry/seriesdistortion.h"

#include <QList>
#include <QPointF>

namespace tessera {

/// What points of reciprocal space were computed from frame positions with. Points of one record are not to
/// be mixed with shifts, centre or geometry of another.
struct PeakMapping {
    QList<QPointF> listShift;       ///< pixels, per frame
    QList<double> listOverallTilt;  ///< degrees, per frame
    double dfCenterX = 0;           ///< direct beam on the first frame, pixels
    double dfCenterY = 0;           ///< row of it, pixels
    double dfWavelength = 0;        ///< Å
    double dfPixelSize = 0;         ///< Å⁻¹ per pixel
    double dfRotationAxis = 0;      ///< degrees
    double dfTiltRelaxation = 0;    ///< degrees
    double dfStretchAmplitude = 0;  ///< this and the azimuth: 0 where stretching is not applied
    double dfStretchAzimuth = 0;    ///< degrees
    SeriesDistortion distortion;    ///< what is undone beside the stretching

    bool operator==(const PeakMapping& other) const;  ///< equal to the bit in all of these
    bool operator!=(const PeakMapping& other) const { return !(*this == other); }  ///< the opposite
};

}  // namespace tessera
