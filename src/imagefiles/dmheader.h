// What the tags of a DM3 or DM4 file tell of the microscope.
#pragma once

#include "imagefiles/dmimage.h"
#include "imagefiles/frameheader.h"

namespace tessera {

/// The size of the image, and from its tags what they tell: voltage, tilt of the stage, exposure, camera
/// length (in diffraction mode, where the tag of the magnification has it), size of the camera's pixels with
/// their binning, and from the scale of its first dimension the size of a pixel of a calibrated diffraction
/// pattern (unit 1/nm or 1/Å). Any content is safe.
FrameHeader dmHeader(const DmTags& tags, const DmImage& image);

/// Opens a file of the version 3 or 4 and reads its header; nothing for other files.
FrameHeader readDmHeader(const QString& strFileName, int nVersion, int nImage);

/// Opens a file of the version 3 or 4 and reads images as FrameFormat::fnRead asks for it.
bool readDmFrames(const QString& strFileName, int nVersion, int nFirst, int nMaxImages, ImageList& vecImage,
                  QString& strReason);

}  // namespace tessera
