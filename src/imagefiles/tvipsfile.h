// TVIPS files: streams of a camera, a series in one or more files.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file as FrameFormat::fnRead asks for it. A series runs from NAME_000.tvips over
/// NAME_001.tvips and so on, and only the first of them has the header that tells the size of the images: all
/// images count as those of the first file, and a later one is not read by itself.
bool readTvipsFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                     QString& strReason);

/// Reads the header of one image as FrameFormat::fnReadHeader asks for it; the number of images is that of
/// the whole series.
FrameHeader readTvipsHeader(const QString& strFileName, int nImage);

/// Whether a file holds later images of a series that stands beside it, which lists of a folder's frames
/// leave out: NAME_001.tvips and so on, without a header of its own, beside NAME_000.tvips.
/// @param strName  with its folder
bool isContinuation(const QString& strName);

}  // namespace tessera
