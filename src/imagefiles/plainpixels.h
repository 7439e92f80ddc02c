// PlainPixels: place and type of the unpacked pixels of an image in a file.
#pragma once

#include "imaging/imgobj.h"

#include <QFile>
#include <QString>

#include <memory>

namespace tessera {

/// The types of pixels.
enum class PixelElement { Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Float32, Float64 };

/// Pixels in rows without gaps, row 0 of the image first.
struct PlainPixels {
    PixelElement element = PixelElement::UInt16;
    bool bBigEndian = false;
    qint64 nOffset = 0;  ///< place of the first element in the file, bytes
    qint64 nWidth = 0;   ///< as in the file, so any number is possible
    qint64 nHeight = 0;  ///< likewise
};

/// The bytes of an element.
int sizeOfElement(PixelElement element);

/// Whether an image may have this size, independent of the file; if not, with the reason.
bool isImageSize(qint64 nWidth, qint64 nHeight, QString& strReason);

/// Whether there is memory for images of this size as floats, and for nBuffer bytes while they are read; if
/// not, with the reason. For up to 256 MB nobody is asked.
bool hasMemoryForImages(qint64 nImages, qint64 nWidth, qint64 nHeight, qint64 nBuffer, QString& strReason);

/// Whether a file of this length has all the pixels; if not, with the reason.
bool holdsPixels(const PlainPixels& pixels, qint64 nFileSize, QString& strReason);

/// Reads the pixels block by block. holdsPixels() is checked before memory is allocated.
/// @return null, with the reason, when the file does not have them or cannot be read
/// @throws std::bad_alloc when memory runs out
std::unique_ptr<CImgObj<float>> readPlainPixels(QFile& file, const PlainPixels& pixels, QString& strReason);

}  // namespace tessera
