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
/// neighbours by 0.3, so that a stretch with few reflections follows the others and keeps near 1.
/// Source: Hamilton, Rollett & Sparks (1965), Acta Cryst. 18, 129–130; Fox & Holmes (1966), Acta Cryst. 20,
/// 886–891; the restraints after Evans (2006), Acta Cryst. D62, 72–82.
///
/// @param curves  where it starts; those of a decay that is not wanted are left at 0
/// @return observations that it was made from
int fitScaleCurves(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                   const ErrorModel& errors, bool bDecay, ScaleCurves& curves);

}  // namespace tessera
