// SMV reader: reads SMV files of cameras, which have a text header in braces and 16-bit pixels.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file for FrameFormat::fnRead.
bool readSmvFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

/// Reads the header of an image for FrameFormat::fnReadHeader.
FrameHeader readSmvHeader(const QString& strFileName, int nImage);

}  // namespace tessera
