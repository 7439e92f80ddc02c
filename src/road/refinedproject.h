// The contents of the files of a refined geometry: project and shifts.
#pragma once

#include "dataset/dataset.h"
#include "dataset/shiftfile.h"
#include "refinement/geometryrefinement.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tessera {

/// A project with the frames of a data set and the axis, tilts, stretching and distortions of a model. The
/// lines of the distortions are written even if they are 0, so that the distortions of a series that was open
/// before do not stay in force when the project is opened.
///
/// @param strProjectFile  path of the project
/// @return the contents of the file; none, with the reason, if a project file cannot represent the series
[[nodiscard]] std::optional<QByteArray> refinedProjectText(const DataSet& dataSet, const GeometryModel& model,
                                                           const QString& strProjectFile,
                                                           QString* pstrReason = nullptr);

/// The shifts of a data set with the direct beam of the model, to which the refined cell belongs. Saved
/// beside the refined project, they are read when it is opened.
ShiftData refinedShifts(const DataSet& dataSet, const GeometryModel& model);

}  // namespace tessera
