// HDF5 files: NeXus, masters of detectors, EMD.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file for FrameFormat::fnRead.
bool readHdf5Frames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                    QString& strReason);

/// Reads the header of an image for FrameFormat::fnReadHeader.
FrameHeader readHdf5Header(const QString& strFileName, int nImage);

}  // namespace tessera
