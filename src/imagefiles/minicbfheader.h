// tellMiniCbf: reads the lines that cameras write before the pixels of a CBF file.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>

namespace tessera {

/// Reads the lines "# Key value unit" of a text into a header. Punctuation is ignored, and of two lines
/// with the same key the first one counts. Oscillation_axis is not used, as it names an axis of a
/// goniometer, which is no direction on the screen.
/// @param header  has the size if it is known; a beam position outside it is ignored
void tellMiniCbf(const QByteArray& bytesText, FrameHeader& header);

}  // namespace tessera
