// blockOutline: the polygon around a region of blocks.
#pragma once

#include <QPolygonF>

#include <cstddef>
#include <vector>

namespace tessera {

/// The outline of a region of square blocks, widened by a block all round, with few corners: none lies
/// further than about a block from the stairs of the blocks.
///
/// The outlines of holes follow that of the region, each there and back over one seam, so that the odd-even
/// rule leaves the holes out.
/// @param vecBlock  places of the blocks, y * nWidth + x, at least one
/// @param nSide     pixels; the pixel (0, 0) is the centre of the first
QPolygonF blockOutline(const std::vector<size_t>& vecBlock, int nWidth, int nHeight, int nSide);

}  // namespace tessera
