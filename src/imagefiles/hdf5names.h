// Names of the files that a detector of HDF5 writes: a master and the data files beside it.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// Whether a file holds images that the master beside it leads to, so that a folder's frames are the
/// master's alone: "x_data_000001.h5" where "x_master.h5" is in the list, or "x.h5", "x.nxs", "x_vds.h5".
/// @param strFileName       a name, with or without folder
/// @param listNameInFolder  names of the files in the same folder, likewise
bool isDataOfMaster(const QString& strFileName, const QStringList& listNameInFolder);

}  // namespace tessera
