// The name under which a list of files is shown.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// The base names laid over one another: as long as the shortest, the character where all agree and "*"
/// elsewhere, with the suffix of the last file. f001.dm3 to f120.dm3 give "f***.dm3", a single
/// file its own name, no file the empty text. Without a suffix there is no dot.
QString displayName(const QStringList& listFile);

}  // namespace tessera
