// TIFF files: counts of 8, 16 and 32 bits and floating point, one page or many.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file as FrameFormat::fnRead asks for it.
bool readTiffFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                    QString& strReason);

/// Reads the header of one image as FrameFormat::fnReadHeader asks for it.
FrameHeader readTiffHeader(const QString& strFileName, int nImage);

}  // namespace tessera
