// Shadows: what an aperture, a beam stop or the like keeps dark on all frames of a series.
#pragma once

#include "imaging/imgobj.h"

#include <QList>
#include <QPolygonF>

#include <vector>

namespace tessera {

constexpr int g_nShadowBlock = 4;  ///< side of the blocks of pixels that shadows are made of

/// Means of the blocks of a frame, row by row; those on the right and lower edge may be smaller. Pixels
/// without a usable number do not count, a block of such alone takes what
/// those around it tell (fillBadPixels()), as a gap of the detector is no shadow.
std::vector<float> blockMeans(const CImgObj<float>& imgFrame);

/// Finds the shadows that frames have in common.
///
/// Over the frames each block takes its median, which knows no reflections. A shadow is a connected region
/// that is less than a third as bright as what lies just beyond its edge, along next to all of it. No shadow
/// is smaller than 30 blocks, and all of them cover less than the half of the frame; of a slope, such as that
/// of the diffuse scattering around the beam, none is made.
/// @param vecFrame  block means of frames of the same size
/// @return a polygon for each, a block wider than the shadow itself; holes are joined by a seam. Pixels
QList<QPolygonF> findShadows(const std::vector<std::vector<float>>& vecFrame, int nWidth, int nHeight);

}  // namespace tessera
