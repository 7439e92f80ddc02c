// DM3 files as frames: the image or the planes of a stack.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads one image of a file as FrameFormat::fnRead asks for it, by ReadDM3() if it is the first. Of a stack
/// no more than one plane is read, however many are asked for.
bool readDm3Frames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

/// Reads the header of one image as FrameFormat::fnReadHeader asks for it.
FrameHeader readDm3Header(const QString& strFileName, int nImage);

}  // namespace tessera
