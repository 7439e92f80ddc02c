// CCellFrame: a cell's direct and reciprocal vectors, for the indices of points and the directions of zones.
#pragma once

#include "geometry/doublevector.h"
#include "geometry/reciprocalbasis.h"

#include <array>
#include <optional>

namespace tessera {

/// The direct and the reciprocal basis of a cell, in double precision. Both are in the laboratory frame at
/// tilt 0, in which the 3D view shows the points.
class CCellFrame {
public:
    /// Nothing where there is no basis, or its vectors are co-planar or not finite.
    static std::optional<CCellFrame> of(const std::optional<ReciprocalBasis>& basis);

    /// h, k, l of a point of reciprocal space (Å⁻¹), as real numbers.
    DoubleVector indicesOf(const Vec3D& place) const;
    /// The vector u·a + v·b + w·c of the zone axis [u v w], Å. Its scalar product with a point of reciprocal
    /// space is u·h + v·k + w·l, the number of the point's Laue zone.
    /// @param anIndex  u, v, w
    DoubleVector zone(const std::array<int, 3>& anIndex) const;
    /// a*, b* or c* (nAxis 0, 1, 2), Å⁻¹.
    const DoubleVector& reciprocal(int nAxis) const { return m_aReciprocal[nAxis]; }

private:
    std::array<DoubleVector, 3> m_aDirect = {};
    std::array<DoubleVector, 3> m_aReciprocal = {};
};

/// Reads the indices u, v, w of a direction as they are typed: "1 -1 0", "[1-10]", "1,-1,0". Without blanks
/// or commas between them each index is one digit with its sign. Each is from -99 to 99, and not all are 0.
///
/// @param pReason  may be null; takes what is wrong, in words, where nothing is returned
std::optional<std::array<int, 3>> readDirection(const QString& strText, QString* pReason);

/// "[1 -1 0]".
QString directionName(const std::array<int, 3>& anIndex);

}  // namespace tessera
