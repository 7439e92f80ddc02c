// The scan of a NeXus file: which axis turned, from where to where, and how it lies on the image.
#pragma once

#include "imagefiles/hdf5series.h"

namespace tessera {

/// Reads the angles of each image and the axis of rotation; needs a CHdf5Lock. What cannot be told for sure
/// is left untold, with a line in the header's list of doubts.
/// @param strEntry     path of the NXentry
/// @param strDetector  path of the NXdetector; may be empty
/// @param bElectrons   the file says that its probe is electrons
void readScan(hid_t idFile, const QString& strPath, const QByteArray& strEntry, const QByteArray& strDetector,
              bool bElectrons, Hdf5Series& series);

}  // namespace tessera
