// CReflectionBuilder: all reflections of a cell inside a sphere of reciprocal space.
#pragma once

#include "geometry/doublevector.h"

#include <array>
#include <vector>

namespace tessera {

/// A cell with its bases, and the reflections built from it.
///
/// a lies in the xz plane, c along z; b has the z component b·cos α.
class CReflectionBuilder {
public:
    /// The absolute values of all six numbers are taken; lengths in Å, angles in degrees.
    /// @return false, with the old cell kept, if one angle is at least the sum of the two others, and for
    ///         numbers that close no cell (three angles of 360 degrees or more together, a length of 0)
    bool setUnitCell(double a, double b, double c, double alpha, double beta, double gamma);

    /// Builds the reflections with |g| below `dfDStarMax` (Å⁻¹), of each pair of Friedel mates one, h from 0
    /// up; then their negatives in the same order.
    ///
    /// The limits of the indices are the whole parts of the largest indices of points on the sphere in
    /// steps of 10 degrees, so that a reflection close to the limit may be missed.
    /// @return false, with no reflections, without a cell, for a limit that is not above 0, for more than
    ///         s_dfMaxReflections expected ones and for more than 10⁹ indices
    bool build(double dfDStarMax);

    /// Reflections with |g| below `dfDStarMax` by the volume of the sphere, 4πr³V/3.
    double expectedReflections(double dfDStarMax) const;
    static constexpr double s_dfMaxReflections = 2e6;

    const std::vector<std::array<int, 3>>& reflections() const { return m_vecReflection; }  ///< h, k, l

    double m_dfA = 0;  ///< Å
    double m_dfB = 0;
    double m_dfC = 0;
    double m_dfAlpha = 0;  ///< radians
    double m_dfBeta = 0;
    double m_dfGamma = 0;
    std::array<DoubleVector, 3> m_aDirect{};      ///< a, b, c in the rows, Å
    std::array<DoubleVector, 3> m_aReciprocal{};  ///< a*, b*, c* in the rows, Å⁻¹
    double m_dfVolume = 0;                        ///< Å³
    double m_dfDStarMax = 0;                      ///< of the last build

private:
    std::vector<std::array<int, 3>> m_vecReflection;
};

}  // namespace tessera
