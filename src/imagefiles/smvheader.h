// SmvHeader: the items of the text header of an SMV file, and what they tell of the pixels.
#pragma once

#include "imagefiles/plainpixels.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <map>
#include <optional>

namespace tessera {

/// The text header: "{", then lines "KEY=value;", then a line that begins with "}". HEADER_BYTES is the
/// place of the pixels. Files of the d*TREK family have a Data_type in place of TYPE, and may have many
/// more items.
struct SmvHeader {
    std::map<QByteArray, QByteArray>
        mapItem;  ///< values by the key in upper case; the first one of equal keys
    PlainPixels pixels;

    /// The value of an item without blanks around it; empty without the item.
    QByteArray text(const char* pszKey) const;
    /// The value of an item as a number in the C locale; NaN without the item, and where the value is no
    /// number, as in "PHI={phi:.4f};".
    double number(const char* pszKey) const;
};

/// Reads the header of an open file. HEADER_BYTES may be any number within the file, but at most a megabyte
/// is searched.
/// @return nothing, with the reason, when the file has no such header, or pixels of a type that is not read.
///         Whether the file has all pixels must be checked by holdsSmvPixels().
std::optional<SmvHeader> readSmvHeaderText(QFile& file, QString& strReason);

/// Whether the length of a file agrees with the header; if not, with the reason. A longer file is refused,
/// too, except for some padding. Programs have confused rows and columns in the header, and such a picture
/// would be sheared.
bool holdsSmvPixels(const SmvHeader& header, qint64 nFileSize, QString& strReason);

}  // namespace tessera
