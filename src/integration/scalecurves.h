// Scale curves: scale and decay along the series, fitted to equivalent observations.
#pragma once

#include "integration/equivalents.h"
#include "integration/errormodel.h"
#include "integration/knotcurve.h"

#include <optional>
#include <vector>

namespace tessera {

/// The scale factor of an intensity: exp(scale(frame) + decay(frame) · x), where x = ((d*/2)² − dfMiddle) /
/// dfHalfRange is between −1 and 1. Both curves are natural logarithms; the second is the decay at x = 1.
struct ScaleCurves {
    CKnotCurve scale;
    CKnotCurve decay;
    double dfMiddle = 0;     ///< (sin θ/λ)², Å⁻²
    double dfHalfRange = 1;  ///< (sin θ/λ)², Å⁻²
    double dfStep = 0.3;     ///< expected standard deviation of the difference of successive coefficients

    /// The logarithm of the scale factor.
    double logarithm(double dfFrame, double dfDStar) const;
    /// The logarithm of the factor at d* = 0; the factor is exp(scaleAtZero) · exp(2 B (d*/2)²).
    double scaleAtZero(double dfFrame) const;
    double decayB(double dfFrame) const;  ///< B in the same, Å²
};

/// Curves that are 0 everywhere, with as many knots as the observations in groups of at least two permit.
/// Scale: one knot for every 40 observations, beyond 600 for every 200 more, but at most one for every three
/// frames. Decay: one for every 600 observations and at most one for every ten frames.
/// @return none if fewer than 20 observations have an equivalent
std::optional<ScaleCurves> emptyScaleCurves(const std::vector<Observation>& listObservation,
                                            const EquivalentGroups& groups, int nFrames);

/// Fits the curves by least squares, together with the true intensity of each group, which is eliminated; in
/// Gauss–Newton steps with Cauchy weights. Observations with the outlier flag are left out.
///
/// Each coefficient is restrained towards 0 with a standard deviation of 0.7 (a factor of two in intensity),
/// and towards its neighbours with the step of the curves, so that parts of the series with few reflections
/// follow the others and have scales near 1. Sources: Hamilton, Rollett & Sparks (1965), Acta Cryst. 18,
/// 129–130; Fox & Holmes (1966), Acta Cryst. 20, 886–891; restraints after Evans (2006), Acta Cryst. D62,
/// 72–82.
///
/// @param bDecay  false: the decay is left as it is
/// @param curves  starting values, and the result
/// @return the number of observations in the fit
int fitScaleCurves(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                   const ErrorModel& errors, bool bDecay, ScaleCurves& curves);

/// The curves that predict omitted equivalents best.
struct CurveChoice {
    bool bScale = false;  ///< fit a scale
    bool bDecay = false;  ///< fit a decay
    double dfStep = 0.3;  ///< see ScaleCurves
};

/// Chooses between no scale, a stiff one and a free one, each with and without decay, by cross-validation:
/// curves are fitted to one half of the groups and applied to the other. A more flexible choice is taken if
/// it improves the agreement of the omitted half by more than the standard error of the improvement.
/// Agreement is the likelihood of the unscaled intensities under Student's distribution with three degrees of
/// freedom, so that noise amplified by a scale does not count as disagreement, and outliers count little.
/// Outliers are included.
///
/// @param bDecay  false: no decay is tried
/// @param curves  from emptyScaleCurves()
CurveChoice chooseCurves(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                         const ErrorModel& errors, bool bDecay, const ScaleCurves& curves);

}  // namespace tessera
