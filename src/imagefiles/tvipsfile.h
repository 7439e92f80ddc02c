// TVIPS files: streams of a camera, a series in one or more files.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file as FrameFormat::fnRead asks for it.
bool readTvipsFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                     QString& strReason);

/// Reads the header of one image as FrameFormat::fnReadHeader asks for it.
FrameHeader readTvipsHeader(const QString& strFileName, int nImage);

}  // namespace tessera
