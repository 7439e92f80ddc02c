// The pixels of DM3 and DM4 files, by the data type of an image.
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>

namespace tessera {

/// Bytes of a pixel; 0 for a type that is not read: all but whole and real numbers.
size_t dmPixelSize(int nDataType);

/// What pixels of a type that is not read are, " (complex)"; empty for a number without a meaning.
QString dmPixelName(int nDataType);

/// Converts nCount pixels of a type that is read.
void dmPixelsToFloat(int nDataType, bool bBigEndian, const uint8_t* pSource, size_t nCount, float* pfTarget);

}  // namespace tessera
