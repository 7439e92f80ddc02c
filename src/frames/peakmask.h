// removeMaskedPeaks: removes positions inside the mask of the peak search.
#pragma once

#include "dataset/maskdata.h"

#include <QList>

namespace tessera {

/// Removes every position inside a polygon of the mask, by the fill rule of the mask. The order of the
/// others does not change. Nothing is done for an empty mask or lists of different length.
void removeMaskedPeaks(const MaskData& mask, QList<double>& listX, QList<double>& listY);

}  // namespace tessera
