// someNames: shortens a list of names for a line of the log.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// The names separated by commas, but at most ten: "... and N more".
QString someNames(const QStringList& listName);

}  // namespace tessera
