// CBF files of cameras: a text header and pixels packed as differences of bytes.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file as FrameFormat::fnRead asks for it.
bool readCbfFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

/// Reads the header of one image as FrameFormat::fnReadHeader asks for it.
FrameHeader readCbfHeader(const QString& strFileName, int nImage);

}  // namespace tessera
