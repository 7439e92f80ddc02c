// What the header and the extended header of an MRC file tell, and its sections as frames.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads sections of a file as FrameFormat::fnRead asks for it; ReadMRC() with a first section.
bool readMrcFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

/// Reads the header of one image as FrameFormat::fnReadHeader asks for it.
FrameHeader readMrcHeader(const QString& strFileName, int nImage);

}  // namespace tessera
