// PixelMask: the pixels of a frame that are no measurements, whatever they count.
#pragma once

#include "dataset/maskdata.h"

#include <QList>
#include <QPoint>
#include <QSize>

#include <vector>

namespace tessera {

/// Row by row, 1 where a polygon of the mask has the pixel's centre, and at hot pixels, whose counts were
/// made from their neighbours.
std::vector<char> pixelMask(const QSize& sizeFrame, const MaskData& mask, const QList<QPoint>& listHotPixel);

}  // namespace tessera
