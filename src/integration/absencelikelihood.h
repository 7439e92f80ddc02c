// Absence likelihood: what a mean intensity says of a class of reflections that may be forbidden.
#pragma once

namespace tessera {

/// A class of reflections of a zone against those that nothing forbids.
struct AbsenceRatio {
    int nReflections = 0;
    int nReference = 0;       ///< reflections of the reference; 0: the mean of their resolution
    double dfRatio = 0;       ///< of the mean E²
    double dfRatioError = 0;  ///< of the measurement alone
};

/// The density of such a ratio where the class is forbidden: an exponential with a mean of 0.06.
///
/// Multiple scattering fills absences: on a garnet (Ia-3d) 0kl to 0.045 and hhl to 0.17 of the allowed mean,
/// while a kinematical crystal has 0. The exponential spans both; one part in twenty is one with a mean of
/// 0.5, so that no single class decides alone.
double densityOfForbidden(const AbsenceRatio& ratio);

/// The density where it is allowed: a gamma distribution with mean 1 and the variance that Wilson's
/// statistics of centric zones give for so many reflections, 2/n + 2/n(reference), but 1/6 at least, as
/// structures make classes weak or strong for reasons of their own; one part in twenty is spread evenly up
/// to 2. Source: Wilson (1949), Acta Cryst. 2, 318–321.
double densityOfAllowed(const AbsenceRatio& ratio);

}  // namespace tessera
