// FrameGaps: areas of the detector that the frames mark as no measurement.
#pragma once

#include "imaging/imgobj.h"

#include <QList>
#include <QPolygonF>

#include <vector>

namespace tessera {

/// Pixels side by side in a row, from the first to the last, which both count.
struct PixelRun {
    int nY = 0;
    int nFirst = 0;
    int nLast = 0;

    int pixelCount() const { return nLast - nFirst + 1; }
};

/// The pixels without a usable number (isUsablePixel()), from left to right and row by row.
std::vector<PixelRun> unusableRuns(const CImgObj<float>& img);

/// The pixels that both have, both and the result in the order of unusableRuns().
std::vector<PixelRun> commonRuns(const std::vector<PixelRun>& vecOne, const std::vector<PixelRun>& vecOther);

/// The areas that runs make, in raw pixels: rectangles that do not overlap, of a ragged area its outline.
/// What is small, under 16 pixels both ways, is left out: single dead pixels and clusters are no areas.
QList<QPolygonF> gapAreas(const std::vector<PixelRun>& vecRun, int nWidth, int nHeight);

/// Whether a pixel is one of a gap: without a usable number, and so is one of its eight neighbours. A single
/// dead pixel is none, as what lies around it tells what it would have counted.
bool isGapPixel(const CImgObj<float>& img, int nX, int nY);

}  // namespace tessera
