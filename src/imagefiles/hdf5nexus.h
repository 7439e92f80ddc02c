// NeXus files of detectors: master files with their data files, NXmx, and plain data files.
#pragma once

#include "imagefiles/hdf5series.h"

#include <array>
#include <optional>

namespace tessera {

/// Finds the images of an NXentry.
/// @param nTotal  takes the number of images that the detector was to take; unchanged when unknown
/// @return false for another file
bool findNexus(hid_t idFile, const QString& strPath, Hdf5Series& series, qint64& nTotal);

/// Reads what the file tells of detector, beam and sample, and the mask.
void readNexus(hid_t idFile, const QString& strPath, Hdf5Series& series);

/// A direction or position in the frame of NeXus.
using NexusVector = std::array<double, 3>;

/// The azimuth of the rotation axis on the image, degrees counter-clockwise from 3 o'clock, for a
/// right-handed rotation of the sample and an image with its first row on top.
///
/// @param axis       in the frame of NeXus: z along the beam, y up
/// @param fast       unit vector from pixel to pixel of a row, likewise
/// @param slow       unit vector from row to row
/// @param strReason  takes why it is unknown: the detector is not perpendicular to the beam or is seen from
///                   behind, or the axis is not in its plane
/// @return nothing where it is unknown
std::optional<double> axisOnImage(const NexusVector& axis, const NexusVector& fast, const NexusVector& slow,
                                  QString& strReason);

}  // namespace tessera
