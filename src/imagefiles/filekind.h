// What kind of image a file holds by its content, where its name says another.
#pragma once

#include <QString>

namespace tessera {

/// What to do with a file whose content has no magic bytes but is known, and whose suffix belongs to another
/// kind: an MRC file of before the year 2000; empty else. For the reason why a file could not be read.
QString misnamedHint(const QString& strFileName);

}  // namespace tessera
