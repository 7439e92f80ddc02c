// SeriesGeometry: the geometry of a series, as the prediction of reflections needs it.
#pragma once

#include "geometry/diffractiongeometry.h"
#include "geometry/rotationmode.h"

#include <QSize>

#include <vector>

namespace tessera {

/// The diffraction geometry together with tilt and beam of each frame. The in-plane terms of the geometry are
/// relative to the direct beam of each frame.
struct SeriesGeometry {
    DiffractionGeometry geometry;  ///< the refined geometry if there is one
    std::vector<double> listTilt;  ///< degrees, one per frame, including the relaxation
    std::vector<FramePlace>
        listBeam;     ///< direct beam of each frame, raw pixels, including the residual drift
    QSize sizeFrame;  ///< pixels
    RotationMode rotation;

    int frameCount() const { return int(listTilt.size()); }  ///< number of frames
};

}  // namespace tessera
