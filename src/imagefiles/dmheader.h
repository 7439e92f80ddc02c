// DM header: reads what the tags of a DM3 or DM4 file tell of the microscope.
#pragma once

#include "imagefiles/dmimage.h"
#include "imagefiles/frameheader.h"

namespace tessera {

/// The header of an image: its size, and what its tags tell of voltage, tilt of the stage, exposure, camera
/// length (in diffraction mode, where it is in the tag of the magnification), pixel size of the camera with
/// its binning, and the pixel size of a calibrated diffraction pattern (unit 1/nm or 1/Å) from the scale of
/// the first dimension. Any content is safe.
FrameHeader dmHeader(const DmTags& tags, const DmImage& image);

/// Reads the header of a file of version 3 or 4; empty for other files.
FrameHeader readDmHeader(const QString& strFileName, int nVersion, int nImage);

/// Reads images of a file of version 3 or 4 for FrameFormat::fnRead.
bool readDmFrames(const QString& strFileName, int nVersion, int nFirst, int nMaxImages, ImageList& vecImage,
                  QString& strReason);

}  // namespace tessera
