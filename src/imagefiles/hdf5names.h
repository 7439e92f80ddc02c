// HDF5 names: the names of the files that detectors write: a master file with data files beside it.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// Whether a file contains images of a master file in the same folder, so that only the master is listed as
/// a frame file: "x_data_000001.h5" where the list has "x_master.h5", "x.h5", "x.nxs" or "x_vds.h5".
/// @param strFileName       a name, with or without folder
/// @param listNameInFolder  names of the files in the same folder, likewise
bool isDataOfMaster(const QString& strFileName, const QStringList& listNameInFolder);

}  // namespace tessera
