// Calibration of the microscope from a refined geometry.
#pragma once

#include "dataset/calibration.h"
#include "refinement/geometryrefinement.h"

#include <optional>

namespace tessera {

/// The pixel size with which a refined cell has the volume of the known cell.
struct DeterminedPixelSize {
    double dfSize = 0;   ///< Å⁻¹
    double dfError = 0;  ///< standard error due to the refined cell; the known cell is taken as exact
};

/// Determines the pixel size from a known cell.
/// @param dfPixelSize  pixel size with which the cell was refined, Å⁻¹
/// @param refined      refined cell
/// @param errors       its standard errors
/// @param known        may have another centring or setting, so that its volume may differ by a factor up to
/// 4
/// @return none if the edges differ by more than 5 %, since it is another crystal then
std::optional<DeterminedPixelSize> determinedPixelSize(double dfPixelSize, const CellParameters& refined,
                                                       const CellParameters& errors,
                                                       const CellParameters& known);

/// The calibration from a refined model, with standard errors: of the axis and its inclination in degrees, of
/// stretching, ellipse (along and across the axis) and third-order distortions in per cent.
/// @param known  the known cell of the crystal, which determines the pixel size; may be none
Calibration calibrationOfModel(const DataSet& dataSet, const GeometryModel& model,
                               const std::optional<CellParameters>& known);

}  // namespace tessera
