// PixelMask: the pixels of a frame that are not used as measurements.
#pragma once

#include "dataset/maskdata.h"

#include <QList>
#include <QPoint>
#include <QSize>

#include <vector>

namespace tessera {

/// A mask row by row: 1 for pixels whose centre is in a polygon of the mask, and for hot pixels, whose counts
/// were interpolated from their neighbours.
std::vector<char> pixelMask(const QSize& sizeFrame, const MaskData& mask, const QList<QPoint>& listHotPixel);

}  // namespace tessera
