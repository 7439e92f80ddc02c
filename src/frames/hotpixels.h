// Hot pixels: repairs pixels of the camera that are always bright.
#pragma once

#include "imaging/imgobj.h"

#include <QList>
#include <QPoint>

namespace tessera {

/// Replaces each listed pixel by the mean of its eight neighbours (sum in double precision times 0.125).
///
/// Neighbours without a usable number are left out of the mean; if none has one, the pixel becomes NaN.
///
/// Pixels at the edge and outside of the image are not changed. The list is processed in its order and in
/// place, so a pixel beside a repaired one uses the repaired value.
///
/// @param image         any size, also empty
/// @param listHotPixel  column, row
void repairHotPixels(CImgObj<float>& image, const QList<QPoint>& listHotPixel);

}  // namespace tessera
