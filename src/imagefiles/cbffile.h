// CBF files of cameras: a text header, and pixels packed as differences of bytes.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file for FrameFormat::fnRead.
bool readCbfFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

/// Reads the header of an image for FrameFormat::fnReadHeader.
FrameHeader readCbfHeader(const QString& strFileName, int nImage);

}  // namespace tessera
