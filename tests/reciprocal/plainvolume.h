// The plain way from the pixels of a frame to voxels: each pixel by itself, through the mapping of peaks.
#pragma once

#include "geometry/rotationgeometry.h"
#include "reciprocal/reciprocalvolume.h"

#include <cmath>

namespace tessera {

inline int plainIndex(float fCoordinate, double dfInverse, float fHalf)
{
    const float f = std::trunc(float(double(fCoordinate) * dfInverse) + fHalf);
    return f >= 0.f && f < 1e9f ? int(f) : -1;
}

inline void plainAddFrame(CReciprocalVolume& volume, const CImgObj<float>& image, const QPointF& ptCenter,
                          double dfTilt)
{
    const CMatrix3 matTilt = rotationX(dfTilt);
    const int nX = volume.m_listSlice.first()->Width(), nY = volume.m_listSlice.first()->Height(),
              nZ = volume.m_listSlice.size();
    for (int x = 0; x < image.Width(); ++x) {
        for (int y = 0; y < image.Height(); ++y) {
            const QPointF p(x - ptCenter.x(), y - ptCenter.y());
            const Vec3D v = {float(volume.m_dfPixelSize * p.x()), float(volume.m_dfPixelSize * p.y()), 0.f};
            const Vec3D r = rotated(matTilt,
                                    ewaldPoint(rotated(volume.m_matRotationAxis, v), volume.m_dfWavelength));
            const double dfInverse = 1 / volume.m_dfPixelSize;
            const int ix = plainIndex(r.x, dfInverse, float(nX) * 0.5f);
            const int iy = plainIndex(r.y, dfInverse, float(nY) * 0.5f);
            const int iz = plainIndex(r.z, dfInverse, float(nZ) * 0.5f);
            if (ix < 0 || ix >= nX || iy < 0 || iy >= nY || iz < 0 || iz >= nZ) {
                continue;
            }
            float& fVoxel = volume.m_listSlice[iz]->Data()[iy * nX + ix];
            const float fPixel = image.Data()[y * image.Width() + x];
            if (fPixel > fVoxel) {
                fVoxel = fPixel;
            }
        }
    }
}

}  // namespace tessera
