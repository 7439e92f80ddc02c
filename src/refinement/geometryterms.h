// Choice of terms: whether a fit gains from the less usual numbers, judged by frames that were left out of
// it.
#pragma once

#include "refinement/geometryrefinement.h"
#include "refinement/geometryrounds.h"

namespace tessera {

/// The rms in the plane of the frames, pixels, under fits to half of the frames.
struct HalvesRms {
    double dfSeen = 0;    ///< rms of the half that was fitted
    double dfUnseen = 0;  ///< rms of the half that was left out
};
/// Fits each half of the frames in turn (even and odd numbers) and gives the rms over both.
/// @return not finite if a half cannot be fitted
HalvesRms rmsOfHalves(const GeometryWork& work, const GeometryFit& fit);
/// The rms of the frames that were left out, see rmsOfHalves().
inline double rmsOfUnseenFrames(const GeometryWork& work, const GeometryFit& fit)
{
    return rmsOfHalves(work, fit).dfUnseen;
}

/// The fit with more free numbers, which start at their present values. Numbers that are free already are not
/// added twice.
GeometryFit withNumbers(const GeometryFit& fit, const std::vector<int>& listMore);
/// The fit with some of its numbers fixed at `dfValue`.
GeometryFit withoutNumbers(const GeometryFit& fit, const std::vector<int>& listLess, double dfValue = 0);

/// Frees the optional terms that improve the fit of frames that were left out.
/// @param fit        has the stretching among its free numbers; gets the chosen terms
/// @param listFixed  gets the terms that stay fixed, with the reasons
/// @return whether the ellipse replaced the stretching
bool chooseTerms(const GeometryWork& work, const GeometryRefinementOptions& options, double dfTiltRange,
                 GeometryFit& fit, std::vector<FixedNumber>& listFixed, CRunReport& report);

}  // namespace tessera
