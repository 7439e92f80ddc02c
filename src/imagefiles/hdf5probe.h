// A child process that reads a file first, as HDF5 trusts what it finds and may crash on a damaged file.
#pragma once

#include <QString>

namespace tessera {

/// Finds the images of a file in a child process, which reads the first and the last of them as well; needs a
/// CHdf5Lock, so that no other thread is within HDF5 meanwhile.
/// @return false with the reason, when that process crashed or did not come to an end within a minute. True
///         where no child can be had
bool survivesReading(const QString& strPath, QString& strReason);

}  // namespace tessera
