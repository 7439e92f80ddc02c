// SmvHeader: the items of an SMV file's text header, and what they tell of the pixels behind it.
#pragma once

#include "imagefiles/plainpixels.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <map>

namespace tessera {

/// The text is "{", then lines "KEY=value;", then a line that "}" begins; HEADER_BYTES of it tells where the
/// pixels lie. Files of the d*TREK family have a Data_type where the others have a TYPE, and may have many.
struct SmvHeader {
    std::map<QByteArray, QByteArray>
        mapItem;  ///< by the key in capitals; of two items with one key the first
    PlainPixels pixels;

    /// The value without the blanks round it; empty without such an item.
    QByteArray text(const char* pszKey) const;
    /// The value as a number of the C locale; NaN where it is none, as in "PHI={phi:.4f};", and without item.
    double number(const char* pszKey) const;
};

/// Reads the header of an open file. HEADER_BYTES may be anything that the file is long enough for, but no
/// more than a megabyte of it is looked through.
/// @return false with the reason when the file has no such header, or tells of pixels that are not read. That
///         the file holds the pixels is for holdsSmvPixels() to say.
bool readSmvHeaderText(QFile& file, SmvHeader& header, QString& strReason);

/// Whether a file of so many bytes is as long as the header tells; else the reason is told. A longer one is
/// refused too, but for a padding: programs have written the number of rows for that of columns, which
/// would give a sheared picture.
bool holdsSmvPixels(const SmvHeader& header, qint64 nFileSize, QString& strReason);

}  // namespace tessera
