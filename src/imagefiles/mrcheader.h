// MRC header: what header and extended header of an MRC file tell, and its sections as frames.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads sections of a file for FrameFormat::fnRead, as readMrcSections().
bool readMrcFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

/// Reads the header of an image for FrameFormat::fnReadHeader.
FrameHeader readMrcHeader(const QString& strFileName, int nImage);

}  // namespace tessera
