// SMV files: writes images with a text header in braces, padded to 512 bytes, and unsigned 16-bit pixels.
#pragma once

#include "imaging/imgobj.h"

#include <QString>

namespace tessera {

/// The pixel size of the detector in the header, mm. The camera length is computed for it.
constexpr double g_dfSmvPixelSize = 0.055;

/// The header with the values of the items that are the same for all exports, and placeholders in the
/// others.
QString smvHeaderTemplate();

/// Replaces the value of an item, "KEY=value;", by a number.
///
/// The item is the first place with the key, even as a part of another text. The value extends from one
/// character after the key to the next ";".
/// @param nDecimals  of the number, which is written in the C locale without blanks
/// @return false, without a change, if there is no key or no value after it
bool replaceSmvItem(QString& strHeader, const QString& strKey, double dfValue, int nDecimals);

/// Writes header and pixels, top row first, little-endian. Each pixel is limited to 0 and 65535 and
/// truncated; NaN becomes 0. The file is written whole or not at all.
///
/// @param strHeader   the text before its first "{" is left out; cut to 512 bytes
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return false for an empty image and when the file cannot be written
bool writeSmvImage(const QString& strHeader, const CImgObj<float>& image, const QString& strFileName,
                   QString* pstrReason = nullptr);

}  // namespace tessera
