// TIFF files: counts of 8 to 64 bits and floating point, one page or many.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QString>

namespace tessera {

/// Reads images of a file as FrameFormat::fnRead asks for it.
///
/// Counts are whole or floating point of 16, 32 and 64 bits, signed ones of 8, and those of 2 to 15 bits
/// packed from the high bit of each byte on; they come unscaled, and "white is zero" does not turn them
/// round. Of several samples that are no colours the first is taken. Below 0 a detector of Dectris, which the
/// text names, marks gaps. Grey of 8 unsigned bits, one bit, colours and palettes are pictures and follow the
/// rule of ReadPicture(). Rows and columns are put where the orientation tells. Strips, tiles and planes,
/// both byte orders, offsets of 4 and 8 bytes, and what libtiff can unpack. Sources: TIFF revision 6.0
/// (1992), and for the stacks of ImageJ the text that it writes, "images=N".
///
/// A page of another size ends the series, with a reason.
bool readTiffFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                    QString& strReason);

/// Reads the header of one image as FrameFormat::fnReadHeader asks for it. What programs of cameras and
/// ImageJ leave in tags of their own is told where its unit is told, too.
FrameHeader readTiffHeader(const QString& strFileName, int nImage);

}  // namespace tessera
