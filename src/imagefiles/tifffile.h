// TIFF files: counts of 8 to 64 bits and floating point, one page or many.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file for FrameFormat::fnRead.
///
/// Counts are whole numbers or floating point of 16, 32 and 64 bits, signed ones of 8 bits, and those of 2
/// to 15 bits packed from the high bit of each byte on. They are not scaled, and "white is zero" does not
/// invert them. If a pixel has several samples that are no colours, the first one is used. In files of a
/// Dectris detector, which is named in the text, numbers below 0 mark gaps. Unsigned grey of 8 bits, single
/// bits, colours and palettes are pictures and follow the rule of ReadPicture(). Rows and columns follow
/// the orientation. Strips, tiles and planes, both byte orders, offsets of 4 and 8 bytes, and all
/// compressions of libtiff are read. Sources: TIFF revision 6.0 (1992), and for the stacks of ImageJ the
/// text that it writes, "images=N".
///
/// A page of another size ends the series, with a reason.
bool readTiffFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                    QString& strReason);

/// Reads the header of an image for FrameFormat::fnReadHeader. Private tags of camera programs and ImageJ
/// are used where the unit is known, too.
FrameHeader readTiffHeader(const QString& strFileName, int nImage);

}  // namespace tessera
