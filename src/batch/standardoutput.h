// Standard output: what the driver prints there, and whether it could.
#pragma once

#include <QByteArray>
#include <QString>

namespace tessera {

/// Whether a name stands for the standard output: "-", or what the system calls it.
bool isStandardOutput(const QString& strFileName);

/// Prints all bytes. A reader that went away, as `head` does, has what it wants.
/// @return empty, or why they were not printed
[[nodiscard]] QString printToStandardOutput(const QByteArray& bytes);

}  // namespace tessera
