// EMD files: HDF5 of electron microscopes, as Velox writes it and as the Berkeley laboratory does.
#pragma once

#include "imagefiles/hdf5series.h"

#include <QByteArray>

namespace tessera {

/// Finds the images of a file of Velox, which are counted by the last axis: of several detectors those with
/// the most images. @return false for another file
bool findVelox(hid_t idFile, const QString& strPath, Hdf5Series& series);

/// Fills in what Velox tells with an image: a text in JSON, whose numbers are texts themselves. Lengths are
/// metres there, tilts radians.
void readVeloxText(const QByteArray& bytesJson, FrameHeader& header);

/// The text that Velox stores with an image; empty when there is none. Needs a CHdf5Lock.
QByteArray veloxText(const Hdf5Series& series, int nImage);

/// Fills in what a file of the Berkeley layout tells of its axes.
void readBerkeley(hid_t idFile, const QString& strPath, Hdf5Series& series);

}  // namespace tessera
