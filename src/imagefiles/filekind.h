// File kind: recognizes files by their content where the name says another kind.
#pragma once

#include <QString>

namespace tessera {

/// A hint for the reason why a file could not be read: what to do with a file of a known kind without magic
/// bytes (an MRC file from before 2000) whose suffix belongs to another kind. Empty for other files.
QString misnamedHint(const QString& strFileName);

}  // namespace tessera
