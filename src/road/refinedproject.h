// The files of a refined geometry: a project, and the direct beam that goes with it.
#pragma once

#include "dataset/dataset.h"
#include "dataset/shiftfile.h"
#include "refinement/geometryrefinement.h"

#include <QByteArray>
#include <QString>

namespace tessera {

/// The frames of a data set with the axis, the tilts, the stretching and the distortions of a model. Lines of
/// the distortions are written also where there are none: a project that has them tells all of its lens, so
/// that no stretching of a series before stays in force when it is opened.
///
/// @param strProjectFile  where it will stand
/// @return false, with `bytesText` as it was, where a project file cannot hold the series, with the reason
[[nodiscard]] bool makeRefinedProjectText(const DataSet& dataSet, const GeometryModel& model,
                                          const QString& strProjectFile, QByteArray& bytesText,
                                          QString* pstrReason = nullptr);

/// The shifts of a data set with the direct beam where the model has it: what the refined cell was fitted
/// with. Beside the refined project it is found when that is opened.
ShiftData refinedShifts(const DataSet& dataSet, const GeometryModel& model);

}  // namespace tessera
