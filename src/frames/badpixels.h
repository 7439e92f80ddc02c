// BadPixels: pixels that hold no usable number, how many and how the user is told.
#pragma once

#include "imaging/imgobj.h"
#include "records/runreport.h"

#include <QtGlobal>

#include <cmath>

namespace tessera {

/// Whether a pixel holds a finite number of at most 1e30 in size: sums over frames of larger ones
/// run out of single precision.
inline bool isUsablePixel(float f)
{
    return std::fabs(f) <= 1e30f;
}

/// Mean of the usable pixels, 0 if there are none.
/// @param nBad  takes the number of the others
double meanOfUsablePixels(const CImgObj<float>& img, qint64& nBad);

/// Tells the user of such pixels, frame after frame. Detectors mark the same ones on each frame: a number
/// that stays is told once.
class CBadPixelLines {
public:
    /// Frames in order. @param nFrame  index from 0
    void add(int nFrame, qint64 nBad, CRunReport& report);

private:
    qint64 m_nFormer = 0;
    bool m_bSaidSo = false;
};

}  // namespace tessera
