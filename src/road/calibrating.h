// Calibrating: what a refined geometry tells of the microscope.
#pragma once

#include "dataset/calibration.h"
#include "refinement/geometryrefinement.h"

#include <optional>

namespace tessera {

/// The size of a pixel at which a refined cell would be the known one, Å⁻¹, by the volumes of both.
struct DeterminedPixelSize {
    double dfSize = 0;
    double dfError = 0;  ///< standard error that the cell has; the known cell has none
};

/// @param refined  with its errors, refined with the pixel size `dfPixelSize`
/// @param known    may have another centring or setting, with 1 to 4 times the volume or a part of it
/// @return none where the edges differ by more than 5 %: another crystal
std::optional<DeterminedPixelSize> determinedPixelSize(double dfPixelSize, const CellParameters& refined,
                                                       const CellParameters& errors,
                                                       const CellParameters& known);

/// The calibration that a model makes, with its standard errors: those of the axis and its tilt in degrees,
/// of stretching, ellipse (along and across the axis) and third order in per cent.
/// @param known  of the crystal, if it is; it determines the size of a pixel
Calibration calibrationOfModel(const DataSet& dataSet, const GeometryModel& model,
                               const std::optional<CellParameters>& known);

}  // namespace tessera
