// Settings file: puts a damaged one aside before the program reads it.
#pragma once

#include <QString>

namespace tessera {

/// Where Qt keeps the settings of this program. Nothing is read on the way.
QString settingsFile();

/// Puts a settings file aside that must not be read: no regular file, one that cannot be opened, one larger
/// than any that the program writes, one that is no list of settings, or one with a serialized object
/// ("@Variant"): the program writes none, and with a damaged one Qt may end the process. It goes to the first
/// free name of FILE~, FILE~2, ... in the same folder.
///
/// @return what was wrong and where the file is now, in words; empty when it can be read or there is none.
///         If it cannot be moved either, the settings of this process are kept in memory alone
QString putBadSettingsAside(const QString& strFile);

}  // namespace tessera
