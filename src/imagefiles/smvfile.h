// SMV images: a text header in braces, padded to 512 bytes, and unsigned 16-bit pixels.
#pragma once

#include "imaging/imgobj.h"

#include <QString>

namespace tessera {

/// Detector pixel that the header is written for, mm. The camera length is derived from it.
constexpr double g_dfSmvPixelSize = 0.055;

/// The header with the values of items that no export changes, and place holders in the others.
QString smvHeaderTemplate();

/// Replaces the value of one item, "KEY=value;", by a number.
///
/// The item is the first place where the key stands, be it as a part of another text; the value reaches from
/// one character behind the key to the next ";".
/// @param nDecimals  of the number, which is written in the C locale without blanks
/// @return false, with no change, without the key or a value behind it
bool replaceSmvItem(QString& strHeader, const QString& strKey, double dfValue, int nDecimals);

/// Writes header and pixels, top row first, little-endian. Each pixel is cut off at 0 and 65535 and
/// truncated; one that is not a number gives 0. The file appears whole or not at all.
///
/// @param strHeader    what stands before its first "{" is left out; cut to 512 bytes
/// @param pstrReason   may be null; on failure the file's name and what is wrong
/// @return false for an empty image and when the file can't be written
bool writeSmvImage(const QString& strHeader, const CImgObj<float>& image, const QString& strFileName,
                   QString* pstrReason = nullptr);

}  // namespace tessera
