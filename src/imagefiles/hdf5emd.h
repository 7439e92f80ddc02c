// EMD files: HDF5 files of electron microscopes, in the layouts of Velox and of the Berkeley laboratory.
#pragma once

#include "imagefiles/hdf5series.h"

#include <QByteArray>

namespace tessera {

/// Finds the images of a file of Velox, which are counted by the last axis. If there are several detectors,
/// the one with the most images is taken.
/// @return false for another file
bool findVelox(hid_t idFile, const QString& strPath, Hdf5Series& series);

/// Reads the text in JSON that Velox stores with an image. Its numbers are strings, with lengths in metres
/// and tilts in radians.
void readVeloxText(const QByteArray& bytesJson, FrameHeader& header);

/// The text that Velox stores with an image; empty when there is none. Needs a CHdf5Lock.
QByteArray veloxText(const Hdf5Series& series, int nImage);

/// Reads what a file of the Berkeley layout tells of its axes.
void readBerkeley(hid_t idFile, const QString& strPath, Hdf5Series& series);

}  // namespace tessera
