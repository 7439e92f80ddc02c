// HDF5 scan: the rotation of a NeXus file: its axis, its angles, and the direction of the axis on the
// image.
#pragma once

#include "imagefiles/hdf5series.h"

namespace tessera {

/// Reads the angles of each image and the rotation axis. Needs a CHdf5Lock. What is not certain is left
/// out, with a line in the list of doubts of the header.
/// @param strEntry     path of the NXentry
/// @param strDetector  path of the NXdetector; may be empty
/// @param bElectrons   the file says that its probe is electrons
void readScan(hid_t idFile, const QString& strPath, const QByteArray& strEntry, const QByteArray& strDetector,
              bool bElectrons, Hdf5Series& series);

}  // namespace tessera
