// PlainPixels: where the unpacked pixels of an image lie in a file, and of which type they are.
#pragma once

#include "imaging/imgobj.h"

#include <QFile>
#include <QString>

#include <memory>

namespace tessera {

enum class PixelElement { Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Float32, Float64 };

/// Rows without gaps, the first element of a row first; row 0 of the image comes first.
struct PlainPixels {
    PixelElement element = PixelElement::UInt16;
    bool bBigEndian = false;
    qint64 nOffset = 0;  ///< of the first element in the file, bytes
    qint64 nWidth = 0;   ///< as the file tells it, any number
    qint64 nHeight = 0;  ///< likewise
};

/// Bytes of an element.
int sizeOfElement(PixelElement element);

/// Whether an image may have that many pixels, whatever the file holds; else the reason is told.
bool isImageSize(qint64 nWidth, qint64 nHeight, QString& strReason);

/// Whether a file of so many bytes holds the pixels; else the reason is told.
bool holdsPixels(const PlainPixels& pixels, qint64 nFileSize, QString& strReason);

/// Reads the pixels block by block; what holdsPixels() refuses is refused before memory is taken.
/// @return null with the reason when the file does not hold them or cannot be read
/// @throws std::bad_alloc when memory runs out
std::unique_ptr<CImgObj<float>> readPlainPixels(QFile& file, const PlainPixels& pixels, QString& strReason);

}  // namespace tessera
