// Regular files: what may be opened for reading without waiting for anybody.
#pragma once

#include <QFile>
#include <QString>

namespace tessera {

/// Opens a file for reading. Anything else of that name is refused: opening a pipe would wait for its writer,
/// and a device may never end.
/// @return false with the reason in words, without the file's name
[[nodiscard]] bool openRegularFile(QFile& file, QIODevice::OpenMode mode, QString& strReason);

}  // namespace tessera
