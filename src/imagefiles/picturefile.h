// Pictures: frames in the formats that QImage reads.
#pragma once

#include "imaging/imagelist.h"

#include <QSize>
#include <QString>

namespace tessera {

/// Whether a picture reader may look into a file: it is a regular one, as opening a pipe would wait for its
/// writer, and no longer than a picture can be, as some readers go through all of it for the size alone. A
/// file that is not there may be one.
/// @param strReason  what is wrong, in words, on false
[[nodiscard]] bool mayBePicture(const QString& strFileName, QString& strReason);

/// Reads a picture and appends it: 19 × (R + 2 × G) + 7 × B per pixel, so that grey g is 64 × g. Grey of 16
/// bits, as a PNG may have it, comes unscaled, as counts do. TIFF files of 8 bits and of colour follow the
/// same rule, see readTiffFrames().
///
/// A BMP or JPEG that ends early is read, with the missing part black or grey. A picture's size is only its
/// header's word: pictures of 2^31 pixels or more are refused, those over 2^26 pixels when the file is too
/// short for any packing to hold them, and those that memory has no room for. So is what mayBePicture()
/// refuses.
///
/// @param vecImage   unchanged on failure
/// @param strReason  what is wrong with the file, in words; empty if nothing is
/// @return 1 on success, else 0
/// @throws std::bad_alloc when memory runs out; CShortMemory, which tells how much is needed, before memory
///         is taken for a picture that it has no room for
int ReadPicture(const QString& strFileName, ImageList& vecImage, QString& strReason);

/// Columns and rows as the picture's header tells them; not valid when it doesn't, or what has the name is no
/// picture or no file.
QSize pictureSize(const QString& strFileName);

}  // namespace tessera
