// Hot pixels: camera pixels that always shine, replaced by what lies around them.
#pragma once

#include "imaging/imgobj.h"

#include <QList>
#include <QPoint>

namespace tessera {

/// Replaces each listed pixel by the mean of its eight neighbours (sum in double precision times 0.125).
///
/// Of neighbours without a usable number the others count alone; a pixel with none that counts becomes NaN.
///
/// Pixels on the image's edge and outside stay as they are. The repair works down the list in place, so
/// that a pixel beside an already repaired one sees the repaired value: the order counts.
///
/// @param image         any size; an empty one stays empty
/// @param listHotPixel  column, row
void repairHotPixels(CImgObj<float>& image, const QList<QPoint>& listHotPixel);

}  // namespace tessera
