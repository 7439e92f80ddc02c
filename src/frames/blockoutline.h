// blockOutline: the polygon around a region of blocks.
#pragma once

#include <QPolygonF>

#include <cstddef>
#include <vector>

namespace tessera {

/// The outline of a region of square blocks, widened by one block on all sides and simplified: it deviates
/// from the steps of the blocks by at most about one block.
///
/// Outlines of holes follow that of the region. Each is connected to it by a seam that runs there and back,
/// so that the odd-even rule leaves the holes out.
/// @param vecBlock  places of the blocks, y * nWidth + x, at least one
/// @param nWidth    blocks in a row
/// @param nSide     side of a block, pixels; pixel (0, 0) is the centre of the first pixel
/// @return in pixels
QPolygonF blockOutline(const std::vector<size_t>& vecBlock, int nWidth, int nHeight, int nSide);

}  // namespace tessera
