// CbfSection: the binary section of a CBF file and the text before it.
#pragma once

#include "imagefiles/plainpixels.h"

#include <QByteArray>
#include <QFile>
#include <QString>

namespace tessera {

/// The first binary section of a CBF file.
struct CbfSection {
    QByteArray bytesText;      ///< text of the file up to the section
    PlainPixels pixels;        ///< nOffset is where the data of the section begin, packed or not
    bool bByteOffset = false;  ///< packed as differences (x-CBF_BYTE_OFFSET), else plain (x-CBF_NONE)
    qint64 nBytes = 0;         ///< length of the data, as far as the file has them
};

/// Finds the first binary section of an open file and reads its MIME lines. Content-MD5 is not verified, as
/// cameras have written wrong ones.
/// @return false, with the reason, when there is none, when its pixels are of a type or packing that is not
///         read, and when the file is too short for the pixels
bool readCbfSection(QFile& file, CbfSection& section, QString& strReason);

}  // namespace tessera
