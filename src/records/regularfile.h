// Regular files: opening files for reading without the risk of waiting for ever.
#pragma once

#include <QFile>
#include <QString>

namespace tessera {

/// Opens a file for reading. What is no regular file is refused: opening a pipe would wait for its writer,
/// and reading a device may never end.
/// @param strReason  takes on failure what is wrong, without the file's name
[[nodiscard]] bool openRegularFile(QFile& file, QIODevice::OpenMode mode, QString& strReason);

}  // namespace tessera
