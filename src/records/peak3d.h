// Peak3D: one peak on a frame or one merged reflection.
#pragma once

#include "records/vec3d.h"

#include <QList>

namespace tessera {

/// One peak found on one frame or, in the merged lists, one reflection.
///
/// All stages use this record. Each stage fills in further fields.
struct Peak3D {
    double dfX2D = 0;           ///< column on the raw frame, pixels; whole numbers are pixel centres
    double dfY2D = 0;           ///< row on the raw frame, pixels
    double dfX2DCorrected = 0;  ///< column relative to the direct beam of the frame, after stretching
    double dfY2DCorrected = 0;  ///< row, likewise
    float fX3D = 0;             ///< point of reciprocal space, laboratory frame at tilt 0, Å⁻¹
    float fY3D = 0;
    float fZ3D = 0;
    double dfH = 0;  ///< indices as real numbers; all 0 until indexed
    double dfK = 0;
    double dfL = 0;
    int nFrame = -1;      ///< frame index from 0; -1 for a peak that belongs to no frame
    double dfIPoint = 0;  ///< smoothed frame at the pixel of the peak; of a reflection the merged intensity
    double dfI2D = 0;     ///< intensity of the disc minus the background of the ring
    double dfDStar = 0;   ///< length of the point, Å⁻¹, computed in single precision
    double dfFrameTilt = 0;  ///< overall tilt of the frame, degrees, without relaxation
    double dfIntFit = 0;     ///< intensity of the curve fitted through the frames
    double dfFrameFit = 0;   ///< its centre, a frame number counted from 1
    double dfHalfWidth = 0;  ///< its half width in frames; 0 without a fit
    double dfTiltFit = 0;    ///< tilt of the fitted centre, degrees
    int nID = 0;             ///< running number of a frame peak, or chain index of a reflection
    int nRGroup = 0;         ///< group of symmetry equivalents, from 1; 0 unindexed

    /// Sets the three indices.
    void setHKL(double dfNewH, double dfNewK, double dfNewL)
    {
        dfH = dfNewH;
        dfK = dfNewK;
        dfL = dfNewL;
    }
    /// The point of reciprocal space, Å⁻¹.
    Vec3D point() const { return {fX3D, fY3D, fZ3D}; }
    /// Sets the point of reciprocal space, Å⁻¹.
    void setPoint(const Vec3D& v)
    {
        fX3D = v.x;
        fY3D = v.y;
        fZ3D = v.z;
    }
};

}  // namespace tessera
