// writeWhole: writing of the simulator's files, whole or not at all.
#pragma once

#include <QByteArray>
#include <QString>

namespace tessera {

/// Writes beside the file and renames the result into place, once the disk has taken all of it; a former file
/// stands as it was otherwise. The core has a function for this too, but the simulator links none of it.
/// @return empty, or why the file was not written, in the system's words
[[nodiscard]] QString writeWhole(const QString& strFileName, const QByteArray& bytes);

}  // namespace tessera
