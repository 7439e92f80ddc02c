// Scale curves: the scale along the series and its fall-off with resolution, fitted to equivalents.
#pragma once

#include "integration/equivalents.h"
#include "integration/errormodel.h"
#include "integration/knotcurve.h"

#include <optional>
#include <vector>

namespace tessera {

/// What is multiplied onto an intensity: exp(scale(frame) + decay(frame) · x), where x is (d*/2)² counted
/// from a middle one, over its half range: both curves are natural logarithms, the second at the edge of the
/// range.
struct ScaleCurves {
    CKnotCurve scale;
    CKnotCurve decay;
    double dfMiddle = 0;     ///< (sin θ/λ)², Å⁻²
    double dfHalfRange = 1;  ///< likewise
    double dfStep = 0.3;     ///< standard deviation of what a coefficient may differ from the next one by

    double logarithm(double dfFrame, double dfDStar) const;
    /// Of a reflection without resolution: exp(scaleAtZero) · exp(2 B (d*/2)²) is the whole.
    double scaleAtZero(double dfFrame) const;
    double decayB(double dfFrame) const;  ///< Å²
};

/// The curves before their fit, 0 everywhere, with as many knots as the observations in groups of two and
/// more can carry: a knot for 40 of them, from 600 on for 200 more, and at most for every three frames, and
/// for the decay one for 600 and for every ten frames.
/// @return none where fewer than 20 observations have a partner
std::optional<ScaleCurves> emptyScaleCurves(const std::vector<Observation>& listObservation,
                                            const EquivalentGroups& groups, int nFrames);

/// Least squares of the curves together with the true intensity of each group, which is eliminated, by
/// Gauss–Newton steps with Cauchy weights. The flag of an outlier leaves an observation out.
///
/// Each coefficient is held towards 0 by a standard deviation of 0.7, a factor of two, and towards its
/// neighbours by the step of the curves, so that a stretch with few reflections follows the others and keeps
/// near 1. Source: Hamilton, Rollett & Sparks (1965), Acta Cryst. 18, 129–130; Fox & Holmes (1966), Acta
/// Cryst. 20, 886–891; the restraints after Evans (2006), Acta Cryst. D62, 72–82.
///
/// @param curves  where it starts; those of a decay that is not wanted are left at 0
/// @return observations that it was made from
int fitScaleCurves(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                   const ErrorModel& errors, bool bDecay, ScaleCurves& curves);

/// What is best for equivalents that the fit has not seen.
struct CurveChoice {
    bool bScale = false;
    bool bDecay = false;
    double dfStep = 0.3;  ///< see ScaleCurves
};

/// No scale, a stiff one, a free one, and each with decay: curves fitted to one half of the groups are tried
/// on the other, and what asks for more is taken where it makes those agree better by more than the standard
/// error of that. Agreement is the likelihood of the intensities as measured, by Student's distribution with
/// three degrees of freedom, so that noise that a scale makes greater is not counted as disagreement, nor
/// outliers as much. Outliers take part.
///
/// @param bDecay  false: none is tried
/// @param curves  as emptyScaleCurves() makes them
CurveChoice chooseCurves(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                         const ErrorModel& errors, bool bDecay, const ScaleCurves& curves);

}  // namespace tessera
