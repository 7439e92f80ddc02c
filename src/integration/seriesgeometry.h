// SeriesGeometry: all that a prediction needs to know of a series.
#pragma once

#include "geometry/diffractiongeometry.h"
#include "geometry/rotationmode.h"

#include <QSize>

#include <vector>

namespace tessera {

/// The geometry of a series with its frames. Its terms of the plane count from the beam of each frame.
struct SeriesGeometry {
    DiffractionGeometry geometry;      ///< refined, where it was
    std::vector<double> listTilt;      ///< degrees, one per frame, with their share of the relaxation
    std::vector<FramePlace> listBeam;  ///< direct beam of each frame, raw pixels, with the drift left over
    QSize sizeFrame;                   ///< pixels
    RotationMode rotation;

    int frameCount() const { return int(listTilt.size()); }
};

}  // namespace tessera
