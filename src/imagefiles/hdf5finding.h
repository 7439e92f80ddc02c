// HDF5 finding: finds the images of an HDF5 file: master files of detectors, NeXus, EMD, or else the
// largest data set.
#pragma once

#include "imagefiles/hdf5series.h"

namespace tessera {

/// Finds the images and what the file tells of them. Needs a CHdf5Lock.
/// @return false with the reason
bool findSeries(const QString& strPath, Hdf5Series& series, QString& strReason);

/// The images of a data set in an open file, with its layout, or with the reason why they cannot be read.
Hdf5Block blockOf(hid_t idFile, const QString& strFile, const QByteArray& strPath, bool bFramesLast);

/// The subgroups with a class of NeXus (attribute NX_class), or else with the usual name.
std::vector<QByteArray> groupsOfClass(hid_t idWhere, const QByteArray& strWhere, const char* pszClass,
                                      const char* pszName);

/// The blocks of a virtual data set that consists of complete images; else empty with the reason.
std::vector<Hdf5Block> virtualBlocks(hid_t idDataSet, const QString& strFile, QString& strReason);

/// The block of a data set in another file in the same folder or below.
Hdf5Block linkedBlock(const QString& strMaster, const Hdf5External& external);

}  // namespace tessera
