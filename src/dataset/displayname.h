// Display name: the name under which a list of files is shown.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// The common name of files. It is as long as the shortest base name, with "*" where the names differ, and
/// has the suffix of the last file: f001.dm3 to f120.dm3 give "f***.dm3". A single file has its own name,
/// and no file an empty one. Without a suffix there is no dot.
QString displayName(const QStringList& listFile);

}  // namespace tessera
