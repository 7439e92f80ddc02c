// NeXus files of detectors: masters with their data files, NXmx, and plain data files.
#pragma once

#include "imagefiles/hdf5series.h"

#include <array>

namespace tessera {

/// Finds the images of an NXentry. @return false for another file
/// @param nTotal  gets the number of images that the detector was to take; unchanged when not told
bool findNexus(hid_t idFile, const QString& strPath, Hdf5Series& series, qint64& nTotal);

/// Fills in what the file tells of detector, beam and sample, and its mask.
void readNexus(hid_t idFile, const QString& strPath, Hdf5Series& series);

using NexusVector = std::array<double, 3>;

/// The azimuth of the axis of rotation on the image, degrees counter-clockwise from 3 o'clock, when the
/// sample turns right-handed about it and the image has its first row on top.
///
/// @param axis  in the frame of NeXus: z along the beam, y up
/// @param fast  from pixel to pixel in a row, of unit length, likewise
/// @param slow  from row to row
/// @param strReason  why it cannot be told: the detector is not across the beam or is seen from behind, or
/// the
///              axis leaves its plane
bool axisOnImage(const NexusVector& axis, const NexusVector& fast, const NexusVector& slow, double& dfDegrees,
                 QString& strReason);

}  // namespace tessera
