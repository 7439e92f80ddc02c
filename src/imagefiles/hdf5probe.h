// A child process that reads a file first, as HDF5 trusts what it finds and may crash on a damaged file.
#pragma once

#include <QString>

namespace tessera {

enum class Hdf5Trial {
    GOOD,    ///< images were found, or no child can be had on this system
    NONE,    ///< no images, or it could not be tried now
    BROKEN,  ///< HDF5 crashed, or did not come to an end: it will the next time as well
};

/// Finds the images of a file in a child process, which reads the first and the last of them as well; needs a
/// CHdf5Lock, so that no other thread is within HDF5 meanwhile. The child gets a minute of the processor's
/// time, ten minutes on the clock for slow disks, and the memory that there is.
/// @return with the reason unless it is good
Hdf5Trial tryReading(const QString& strPath, QString& strReason);

}  // namespace tessera
