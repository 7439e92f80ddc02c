// Shadows: areas that an aperture, a beam stop or the like keeps dark on all frames of a series.
#pragma once

#include "imaging/imgobj.h"

#include <QList>
#include <QPolygonF>

#include <vector>

namespace tessera {

constexpr int g_nShadowBlock = 4;  ///< side of the blocks of which shadows are made, pixels

/// The means of the blocks of a frame, row by row. Blocks at the right and the lower edge may be smaller.
/// Pixels without a usable number do not count. A block that has only such pixels is filled from those
/// around it (fillBadPixels()), as a gap of the detector is no shadow.
std::vector<float> blockMeans(const CImgObj<float>& imgFrame);

/// Finds the shadows that frames have in common.
///
/// For each block the median over the frames is taken, which ignores reflections. A shadow is a connected
/// region that is less than a third as bright as the blocks just beyond its edge, along nearly the whole
/// edge. Each shadow has at least 30 blocks, and all together cover less than half of the frame. A gradual
/// slope, such as that of the diffuse scattering around the beam, is no shadow.
/// @param vecFrame  block means of frames of the same size
/// @param nWidth    width of the frames, pixels; nHeight likewise
/// @return in pixels, a polygon for each shadow, which is one block wider than the shadow; holes are joined
///         by a seam
QList<QPolygonF> findShadows(const std::vector<std::vector<float>>& vecFrame, int nWidth, int nHeight);

}  // namespace tessera
