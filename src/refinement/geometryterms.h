// Choice of terms: what a fit gains from the less usual numbers, asked of frames that it has not seen.
#pragma once

#include "refinement/geometryrefinement.h"
#include "refinement/geometryrounds.h"

namespace tessera {

/// The rms in the plane, pixels, with fits to half of the frames.
struct HalvesRms {
    double dfSeen = 0;    ///< of the half that was fitted
    double dfUnseen = 0;  ///< of the other half
};
/// Both halves in turn, together.
/// @return not finite where a half cannot be fitted
HalvesRms rmsOfHalves(const GeometryWork& work, const GeometryFit& fit);
inline double rmsOfUnseenFrames(const GeometryWork& work, const GeometryFit& fit)
{
    return rmsOfHalves(work, fit).dfUnseen;
}

/// The fit with more free numbers, which begin where they are. None of them twice.
GeometryFit withNumbers(const GeometryFit& fit, const std::vector<int>& listMore);
/// The fit without some; they become `dfValue`.
GeometryFit withoutNumbers(const GeometryFit& fit, const std::vector<int>& listLess, double dfValue = 0);

/// Frees the optional terms that the peaks ask for, on top of a fit that has the stretching.
/// @param listFixed  takes what stays fixed, and why
/// @return whether the ellipse took the place of the stretching
bool chooseTerms(const GeometryWork& work, const GeometryRefinementOptions& options, double dfTiltRange,
                 GeometryFit& fit, std::vector<FixedNumber>& listFixed, CRunReport& report);

}  // namespace tessera
