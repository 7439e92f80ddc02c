// BadPixels: pixels without a usable number, how many there are and how the log reports them.
#pragma once

#include "imaging/imgobj.h"
#include "records/runreport.h"

#include <QtGlobal>

#include <cmath>

namespace tessera {

/// Whether a pixel is a finite number of at most 1e30 in magnitude. The sum of a frame of larger numbers
/// could exceed the range of single precision.
inline bool isUsablePixel(float f)
{
    return std::fabs(f) <= 1e30f;
}

/// The mean of an image over its usable pixels.
struct UsableMean {
    double dfMean = 0;  ///< 0 if no pixel is usable
    qint64 nBad = 0;    ///< number of the other pixels
};

/// Finds the mean over the usable pixels and counts the others.
UsableMean meanOfUsablePixels(const CImgObj<float>& img);

/// Reports unusable pixels in the log, frame after frame. As a detector marks the same pixels on each frame,
/// a number that does not change is reported only once.
class CBadPixelLines {
public:
    /// To be called for the frames in their order.
    /// @param nFrame  index from 0
    /// @param nBad    unusable pixels of the frame
    void add(int nFrame, qint64 nBad, CRunReport& report);

private:
    qint64 m_nFormer = 0;
    bool m_bSaidSo = false;
};

}  // namespace tessera
