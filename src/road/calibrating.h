// Calibrating: makes the calibration of a microscope from the refined geometry of a series.
#pragma once

#include "dataset/calibration.h"
#include "refinement/geometryrefinement.h"

#include <optional>

namespace tessera {

/// The pixel size with which a refined cell has the volume of the known cell.
struct DeterminedPixelSize {
    double dfSize = 0;  ///< Å⁻¹ per pixel
    /// Its standard error, Å⁻¹ per pixel, from that of the refined cell; the known cell counts as exact.
    double dfError = 0;
};

/// Determines the pixel size from a known cell. The edges of a refined cell are inversely proportional to the
/// pixel size that it was refined with, so the cube root of the ratio of the volumes corrects it.
///
/// The known cell may have another setting or centring: the shortest vectors of the primitive lattices are
/// compared, with each centring that the two cells may have.
/// @param dfPixelSize  pixel size with which the cell was refined, Å⁻¹ per pixel
/// @param refined      refined cell, Å and degrees
/// @param errors       its standard errors
/// @param known        known cell, Å and degrees
/// @return none if the pixel size would change by more than 5 %, or if the lattices differ by more in shape,
/// as
///         it is another crystal then; or if a cell has no volume
std::optional<DeterminedPixelSize> determinedPixelSize(double dfPixelSize, const CellParameters& refined,
                                                       const CellParameters& errors,
                                                       const CellParameters& known);

/// Makes the calibration from a refined model. It has the numbers of the microscope: axis, its inclination,
/// distortions and, with a known cell, the pixel size; but not those of the series: centre of the frames,
/// scale and offset of the tilts. Standard errors are of the numbers that were fitted, in degrees for the
/// axis and its inclination, in per cent for stretching, ellipse (along and across the axis) and the
/// distortions of second and third order, in Å⁻¹ for the pixel size.
/// @param dataSet  the series, with the pixel size and the wavelength that the model was refined with
/// @param known    the known cell of the crystal, which determines the pixel size; may be none
Calibration calibrationOfModel(const DataSet& dataSet, const GeometryModel& model,
                               const std::optional<CellParameters>& known);

}  // namespace tessera
