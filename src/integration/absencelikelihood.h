// Absence likelihood: how probable a mean intensity is for forbidden and for allowed reflections.
#pragma once

namespace tessera {

/// The mean intensity of reflections that a condition may forbid, relative to reference reflections that are
/// certainly allowed.
struct AbsenceRatio {
    int nReflections = 0;     ///< reflections that may be forbidden
    int nReference = 0;       ///< reference reflections; 0: the mean at their resolution is the reference
    double dfRatio = 0;       ///< mean E² over the mean E² of the reference
    double dfRatioError = 0;  ///< standard error due to the measurement alone
};

/// The probability density of the ratio for forbidden reflections: an exponential with a mean of 0.06.
///
/// Multiple scattering fills absences: on a garnet (Ia-3d) 0kl to 0.045 and hhl to 0.17 of the allowed mean,
/// while kinematical intensities are 0. The exponential covers both. A twentieth of the density is an
/// exponential with a mean of 0.5, so that no single condition decides alone.
double densityOfForbidden(const AbsenceRatio& ratio);

/// The probability density of the ratio for allowed reflections: a gamma distribution with mean 1. Its
/// variance is that of Wilson's statistics of centric zones for the numbers of reflections, 2/n +
/// 2/n(reference), but at least 1/6, since a structure may make such reflections weak or strong without a
/// symmetry operation. A twentieth of the density is uniform from 0 to 2. Source: Wilson (1949), Acta Cryst.
/// 2, 318–321.
double densityOfAllowed(const AbsenceRatio& ratio);

}  // namespace tessera
