// How far the direct beam would have to move to suit the indexed reflections best.
#pragma once

#include "records/peak3d.h"

#include <QList>

#include <cmath>
#include <optional>

namespace tessera {

/// A joint linear fit of basis and beam. Pixels are those of dfX2DCorrected: where a stretching was applied
/// in the mapping, the offset is in stretched pixels.
struct CentreOffset {
    double dfX = 0;       ///< pixels to add to the direct beam, columns
    double dfY = 0;       ///< rows
    double dfErrorX = 0;  ///< standard errors, pixels
    double dfErrorY = 0;
    double dfRms = 0;  ///< of the distances left after the fit, Å⁻¹

    /// How far the beam is off, pixels.
    double length() const { return std::hypot(dfX, dfY); }
    /// Standard error of the length, the errors of the two directions taken as independent.
    double lengthError() const { return std::hypot(dfX * dfErrorX, dfY * dfErrorY) / length(); }
};

/// Fits r = h·a* + k·b* + l·c* + s·Rx(θ)·Rz(φ)·(dx, dy, 0) by least squares over the three vectors
/// (nine numbers) and the offset (dx, dy), where r is the measured point of a reflection with the
/// indices (h, k, l) and s the pixel size. Difference vectors do not see a wrong beam, so a cell may
/// be found in spite of it; the points then miss the lattice by one vector that turns with the
/// frames, which is what this fit measures. The Ewald curvature is left out: it changes the term
/// by the cosine of the scattering angle.
///
/// A second round leaves out the points that the first missed by more than three times its rms: a
/// reflection with wrong indices is off by a whole lattice step.
///
/// @param listPeak        reflections with indices (rounded here), points (Å⁻¹) and the tilt of the
///                        strongest frame
/// @param dfPixelSize     Å⁻¹ per pixel
/// @param dfRotationAxis  degrees
/// @return none with fewer than 6 reflections, or where they do not determine the eleven
///         unknowns (all at one tilt, or in one plane)
std::optional<CentreOffset> fitCentreOffset(const QList<Peak3D>& listPeak, double dfPixelSize,
                                            double dfRotationAxis);

}  // namespace tessera
