// Crystal scales: the intensities of several crystals brought to one scale and one fall-off.
#pragma once

#include "crystals/crystalsettings.h"

#include <vector>

namespace tessera {

/// What an intensity of one crystal is multiplied by: dfScale · exp(2 B s²) with s = sin θ/λ.
struct CrystalScale {
    double dfScale = 1;  ///< geometric mean 1 over the crystals
    double dfB = 0;      ///< Å², mean 0
    int nCommon = 0;     ///< reflections that it is from

    double factor(double dfSquare) const;  ///< at s² in Å⁻²
};

/// Least squares by turns: the mean of each reflection over the crystals, then scale and B of each crystal by
/// what its intensities lack to these means, relative to them, on reflections whose mean is above 3 sigma,
/// with weights that fall for what lies far off (Cauchy), until nothing moves. A crystal that shares fewer
/// than 20 such reflections keeps B 0, one that shares fewer than 3 gets the scale of its mean intensity.
/// Source: the two alternating steps of Hamilton, Rollett & Sparks (1965), Acta Cryst. 18, 129–130.
///
/// @param listMean  merged reflections of each crystal in one setting, equivalent ones under one index
/// @param basis     a, b, c of that setting
std::vector<CrystalScale> scaleCrystals(const std::vector<const std::vector<FriedelIntensity>*>& listMean,
                                        const LatticeBasis& basis);

/// (sin θ/λ)² of a reflection, Å⁻².
double squareOf(const std::array<int, 3>& anIndex, const Eigen::Matrix3d& matReciprocal);

}  // namespace tessera
