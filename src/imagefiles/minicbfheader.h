// tellMiniCbf: the lines that cameras write before the pixels of a CBF file.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>

namespace tessera {

/// Takes what the lines "# Key value unit" of a text tell into a header. How a line is punctuated makes no
/// difference, and of two lines with one key the first counts. The text of Oscillation_axis names an axis of
/// a goniometer, which is no direction on the screen: it is not used.
/// @param header  has the size, so far as it is known: the beam is not told where it lies beyond
void tellMiniCbf(const QByteArray& bytesText, FrameHeader& header);

}  // namespace tessera
