// HDF5 probe: reads a file in a child process first, as HDF5 does not check files and may crash on a
// damaged one.
#pragma once

#include <QString>

namespace tessera {

/// The result of a trial.
enum class Hdf5Trial {
    GOOD,    ///< images were found, or this system cannot make child processes
    NONE,    ///< there are no images, or the trial was not possible now
    BROKEN,  ///< HDF5 crashed or did not finish, and will do so again
};

/// Finds the images of a file in a child process and reads the first and the last one there. Needs a
/// CHdf5Lock, so that no other thread is inside HDF5. The child has a minute of processor time, ten minutes
/// of real time, for slow disks, and the available memory.
/// @return with the reason, unless it is GOOD
Hdf5Trial tryReading(const QString& strPath, QString& strReason);

}  // namespace tessera
