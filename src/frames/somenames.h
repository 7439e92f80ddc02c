// someNames: a list of names that may be long, for a line of the log.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// The names with commas between them, but no more than ten: "... and N more".
QString someNames(const QStringList& listName);

}  // namespace tessera
