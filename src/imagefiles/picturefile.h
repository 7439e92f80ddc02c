// Picture files: frames in the formats that QImage reads.
#pragma once

#include "imaging/imagelist.h"

#include <QSize>
#include <QString>

namespace tessera {

/// Whether a picture reader may open a file. It must be a regular file, as opening a pipe would wait for
/// its writer, and not longer than a picture can be, as some readers go through the whole file just for the
/// size. A file that does not exist may be one.
/// @param strReason  takes what is wrong where the result is false
[[nodiscard]] bool mayBePicture(const QString& strFileName, QString& strReason);

/// Reads a picture and appends it: 19 × (R + 2 × G) + 7 × B per pixel, so that grey g becomes 64 × g. Grey
/// of 16 bits, which PNG files may have, is not scaled, like counts. TIFF files of 8 bits and of colours
/// follow the same rule, see readTiffFrames().
///
/// A BMP or JPEG that ends early is read with its missing part black or grey. Refused are pictures of 2^31
/// pixels or more, pictures over 2^26 pixels in a file that is too short for any packing, pictures for
/// which memory is short, and what mayBePicture() refuses. So a damaged header cannot make the program
/// allocate memory without limit.
///
/// @param vecImage   unchanged on failure
/// @param strReason  takes what is wrong with the file; empty if nothing is
/// @return 1 on success, else 0
/// @throws std::bad_alloc when memory runs out; CShortMemory, with the amount needed, before memory for a
/// picture is allocated that is not available
int ReadPicture(const QString& strFileName, ImageList& vecImage, QString& strReason);

/// Columns and rows from the header of a picture; invalid when the header does not have them, or the file
/// does not exist or is no picture.
QSize pictureSize(const QString& strFileName);

}  // namespace tessera
