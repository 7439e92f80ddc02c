// What kind of image a file holds by its content, where its name says another.
#pragma once

#include <QByteArray>
#include <QString>

namespace tessera {

/// What to do with a file whose content has no magic bytes but is known, and whose suffix belongs to another
/// kind: an MRC file of before the year 2000; empty else. For the reason why a file could not be read.
QString misnamedHint(const QString& strFileName);

/// Why a TIFF file holds no picture for eyes: samples of other than whole numbers up to 16 bits; empty if its
/// first picture has none, or the bytes are no TIFF file. Source: TIFF revision 6.0 (1992).
QString unreadTiff(const QByteArray& bytesFile);

}  // namespace tessera
