// Saves the present state of a series as a project with its side files.
#pragma once

#include "dataset/dataset.h"
#include "dataset/newproject.h"
#include "records/runparameters.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// A project with the frames of a data set and the geometry with which its peaks are mapped.
NewProject projectOfSeries(const DataSet& dataSet, const MappingParameters& mapping);

/// Writes a project file, and beside it shifts, cell in force and peaks, which are read when the project is
/// opened. No file is written for parts that the data set does not have.
///
/// @param plistFile  may be null; gets the files that were written
/// @return false, with the reason, if the name is that of the open project, which must not be replaced, or if
/// a
///         file cannot be written. Project, shifts and cell are written together or not at all; the peaks are
///         written last, so the other files remain if only the peaks cannot be written.
[[nodiscard]] bool saveSeriesAsProject(const DataSet& dataSet, const MappingParameters& mapping,
                                       const QString& strProjectFile, QString* pstrReason,
                                       QStringList* plistFile = nullptr);

}  // namespace tessera
