// DM pixels: converts the pixels of DM3 and DM4 files by their data type.
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>

namespace tessera {

/// Bytes of a pixel; 0 for a type that is neither whole nor real numbers, which is not read.
size_t dmPixelSize(int nDataType);

/// The name of a type that is not read, such as " (complex)"; empty for an unknown type.
QString dmPixelName(int nDataType);

/// Converts nCount pixels of a type that can be read.
void dmPixelsToFloat(int nDataType, bool bBigEndian, const uint8_t* pSource, size_t nCount, float* pfTarget);

}  // namespace tessera
