// TVIPS files: streams of a camera, with a series in one or more files.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file for FrameFormat::fnRead. A series consists of NAME_000.tvips, NAME_001.tvips and
/// so on, and only the first file has the header with the size of the images. So all images are read
/// through the first file, and later files cannot be read on their own.
bool readTvipsFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                     QString& strReason);

/// Reads the header of an image for FrameFormat::fnReadHeader. The number of images is that of the whole
/// series.
FrameHeader readTvipsHeader(const QString& strFileName, int nImage);

/// Whether a file has later images of a series, so that it must not be listed as a frame file:
/// NAME_001.tvips and so on, without a header of its own, beside NAME_000.tvips.
/// @param strName  name with folder
bool isContinuation(const QString& strName);

}  // namespace tessera
