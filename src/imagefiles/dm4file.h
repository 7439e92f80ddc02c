// DM4 files: tags with counts of 64 bits.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file for FrameFormat::fnRead.
bool readDm4Frames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

/// Reads the header of an image for FrameFormat::fnReadHeader.
FrameHeader readDm4Header(const QString& strFileName, int nImage);

}  // namespace tessera
