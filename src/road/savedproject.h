// The series as it is, saved as a project with the files that it is opened with.
#pragma once

#include "dataset/dataset.h"
#include "dataset/newproject.h"
#include "records/runparameters.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// The frames of a data set and the geometry that its peaks are mapped with.
NewProject projectOfSeries(const DataSet& dataSet, const MappingParameters& mapping);

/// Writes a project file, and beside it shifts, cell in force and peaks, under the names by which they are
/// found when it is opened. What the data set does not have gets no file.
///
/// @param plistFile  may be null; the files that were written
/// @return false, with the reason and none of the files of project, shifts and cell written, where the name
/// is
///         that of the open project, which keeps what it was told, or where a file cannot be written. The
///         peaks are written last: with a reason of theirs the others stand.
[[nodiscard]] bool saveSeriesAsProject(const DataSet& dataSet, const MappingParameters& mapping,
                                       const QString& strProjectFile, QString* pstrReason,
                                       QStringList* plistFile = nullptr);

}  // namespace tessera
