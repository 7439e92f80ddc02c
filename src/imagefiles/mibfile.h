// MIB files: frames of a Medipix detector, each behind a header of text.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file as FrameFormat::fnRead asks for it.
bool readMibFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

/// Reads the header of one image as FrameFormat::fnReadHeader asks for it.
FrameHeader readMibHeader(const QString& strFileName, int nImage);

}  // namespace tessera
