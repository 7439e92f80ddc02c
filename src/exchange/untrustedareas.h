// Untrusted areas: the mask of a series as the rectangles that other programs take.
#pragma once

#include "exchange/exchangegeometry.h"

#include <QRect>
#include <QSize>

#include <vector>

namespace tessera {

/// Rectangles that cover all masked pixels.
///
/// Runs of equal ends on successive rows become one rectangle. Where more than `nMost` come out, as of a long
/// slanted edge, they are found for blocks of 2, 4, 8 … pixels that hold a masked one: they cover more, never
/// less.
/// @param listMask  row by row, 1: masked
std::vector<QRect> rectanglesOfMask(const std::vector<char>& listMask, const QSize& size, size_t nMost = 200);

/// The mask of frames that were moved by whole pixels, each by its own: what is masked on any of them, and
/// the edges where a moved frame has wrapped round.
std::vector<char> movedMask(const std::vector<char>& listMask, const QSize& size,
                            const std::vector<FramePlace>& listMoved);

}  // namespace tessera
