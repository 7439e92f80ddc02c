// RotationSense: whether the reflections were strongest at tilts of the opposite sense of rotation.
#pragma once

#include "dataset/dataset.h"

#include <QList>

#include <optional>

namespace tessera {

/// A cell and its mirror image have the same lengths, angles and d*, so a rotation axis that is 180° off,
/// which turns the sense of rotation round, shows neither in the share of indexed reflections nor in the fit
/// of the cell. It shows in the curvature of the Ewald sphere: a reflection away from the axis passes the
/// sphere at a tilt that differs from the one of the flat section by up to λ d* / 2, radians, to the other
/// side for the other sense.
struct RotationSense {
    double dfSquaresBefore = 0;  ///< of the tilts against the cell in force, degrees²
    double dfSquaresAfter = 0;   ///< against the basis that fits them best
    bool bOpposite = false;      ///< the best basis is the one in force with all signs turned round
};

/// Refines the basis against the tilts as refineBasisVectors() does, without a word and with no change.
/// @param listPeak  merged reflections with indices, raw positions, dfFrameFit
/// @return none without a cell in force, and where the fit found nothing
std::optional<RotationSense> judgeRotationSense(const QList<Peak3D>& listPeak, const DataSet& dataSet);

}  // namespace tessera
