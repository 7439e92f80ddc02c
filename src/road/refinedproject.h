// The project file of a refined geometry.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"
#include "refinement/geometryrefinement.h"

#include <QByteArray>
#include <QString>

namespace tessera {

/// The frames of a data set with the axis, the tilts and the stretching of a model.
///
/// Where the model has a linear ellipse, the stretching is the one that the series was mapped with: one along
/// the radius of the amplitude of the ellipse leaves what that moves along the circle, and a cell that had
/// taken up the ellipse fits it worse than before. Ellipse, third order and the axis' tilt out of the plane
/// have keywords of their own beside (ELLIPSEAMP in per cent, ELLIPSEAZIMUTH
/// in degrees as STRETCHINGAZIMUTH counts; THIRDORDERRADIAL and THIRDORDERSPIRAL in per cent at
/// THIRDORDERRADIUS pixels; AXISOUTOFPLANE in degrees), which ProjectFile passes over; so do comments. The
/// beam's place is none of a project's: it is in the shift file.
///
/// @param mapping         of the series: whether its stretching is undone
/// @param strProjectFile  where it will stand
/// @return false, with `bytesText` as it was, where a project file cannot hold the series, with the reason
[[nodiscard]] bool makeRefinedProjectText(const DataSet& dataSet, const MappingParameters& mapping,
                                          const GeometryModel& model, const QString& strProjectFile,
                                          QByteArray& bytesText, QString* pstrReason = nullptr);

}  // namespace tessera
