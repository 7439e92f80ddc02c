// DM3 files as frames: the image or the planes of a stack.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads one image of a file for FrameFormat::fnRead, by ReadDM3() if it is the first one. Of a stack only
/// one plane is read, even if more are wanted.
bool readDm3Frames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

/// Reads the header of an image for FrameFormat::fnReadHeader.
FrameHeader readDm3Header(const QString& strFileName, int nImage);

}  // namespace tessera
