// Finding the images in an HDF5 file: detectors' masters, NeXus, EMD, or whatever data set is the largest.
#pragma once

#include "imagefiles/hdf5series.h"

namespace tessera {

/// Finds images and what the file tells of them; needs a CHdf5Lock. @return false with the reason
bool findSeries(const QString& strPath, Hdf5Series& series, QString& strReason);

/// The images of a data set, described, in a file that is open; missing ones with the reason.
Hdf5Block blockOf(hid_t idFile, const QString& strFile, const QByteArray& strPath, bool bFramesLast);

/// The groups with a class of NeXus (attribute NX_class) in a group, or the name that they have as a rule.
std::vector<QByteArray> groupsOfClass(hid_t idWhere, const QByteArray& strWhere, const char* pszClass,
                                      const char* pszName);

/// The blocks of a virtual data set that is put together of whole images; empty with the reason otherwise.
std::vector<Hdf5Block> virtualBlocks(hid_t idDataSet, const QString& strFile, QString& strReason);

/// The block of a data set in another file beside this one.
Hdf5Block linkedBlock(const QString& strMaster, const Hdf5External& external);

}  // namespace tessera
