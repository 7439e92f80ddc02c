// removeMaskedPeaks: drops positions that lie in the mask of peak hunting.
#pragma once

#include "dataset/maskdata.h"

#include <QList>

namespace tessera {

/// Drops every position that lies in any polygon of the mask, by the mask's fill rule.
///
/// The order of the others stays. Does nothing for an empty mask or lists of different length.
void removeMaskedPeaks(const MaskData& mask, QList<double>& listX, QList<double>& listY);

}  // namespace tessera
