// FrameGaps: areas of the detector that the frames mark as no measurement.
#pragma once

#include "imaging/imgobj.h"

#include <QList>
#include <QPolygonF>

#include <vector>

namespace tessera {

/// A run of pixels in a row, including the first and the last one.
struct PixelRun {
    int nY = 0;
    int nFirst = 0;
    int nLast = 0;

    /// Number of pixels.
    int pixelCount() const { return nLast - nFirst + 1; }
};

/// The runs of pixels without a usable number (isUsablePixel()), from left to right and row by row.
std::vector<PixelRun> unusableRuns(const CImgObj<float>& img);

/// The pixels that are in both lists. The lists and the result are in the order of unusableRuns().
std::vector<PixelRun> commonRuns(const std::vector<PixelRun>& vecOne, const std::vector<PixelRun>& vecOther);

/// The areas that are formed by runs, in raw pixels. They are rectangles that do not overlap, or the
/// outline of an irregular area. Areas of less than 16 pixels in both directions, such as dead pixels and
/// clusters of them, are left out.
QList<QPolygonF> gapAreas(const std::vector<PixelRun>& vecRun, int nWidth, int nHeight);

/// Whether a pixel belongs to a gap: it has no usable number, and one of its eight neighbours has none
/// either. A single dead pixel is no gap, as its neighbours tell about what it would have counted.
bool isGapPixel(const CImgObj<float>& img, int nX, int nY);

}  // namespace tessera
