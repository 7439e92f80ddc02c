// Untrusted areas: converts the mask of a series to rectangles for other programs.
#pragma once

#include "exchange/exchangegeometry.h"

#include <QRect>
#include <QSize>

#include <vector>

namespace tessera {

/// Finds rectangles that cover all masked pixels.
///
/// Runs with the same ends on successive rows become one rectangle. If there are more than `nMost`, as for
/// a long slanted edge, they are found for blocks of 2, 4, 8 … pixels that contain a masked one. These
/// cover more pixels, but never less.
/// @param listMask  row by row, 1: masked
std::vector<QRect> rectanglesOfMask(const std::vector<char>& listMask, const QSize& size, size_t nMost = 200);

/// The mask for frames that were moved cyclically, each by its own whole pixels: pixels that are masked on
/// any of them, and the edges with pixels from the opposite side.
std::vector<char> movedMask(const std::vector<char>& listMask, const QSize& size,
                            const std::vector<FramePlace>& listMoved);

}  // namespace tessera
