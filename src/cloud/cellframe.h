// CCellFrame: a cell's direct and reciprocal vectors, for the indices of points and the directions of zones.
#pragma once

#include "geometry/doublevector.h"
#include "geometry/reciprocalbasis.h"

#include <array>
#include <optional>

namespace tessera {

/// Both bases of a cell in the laboratory frame, double precision.
class CCellFrame {
public:
    /// None where the vectors are co-planar or no numbers.
    static std::optional<CCellFrame> of(const std::optional<ReciprocalBasis>& basis);

    /// Real-valued h, k, l of a place in reciprocal space (Å⁻¹).
    DoubleVector indicesOf(const Vec3D& place) const;
    /// u·a + v·b + w·c, Å. Its product with a place in reciprocal space is u·h + v·k + w·l of the place.
    DoubleVector zone(const std::array<int, 3>& anIndex) const;
    /// a*, b* or c* (nAxis 0, 1, 2), Å⁻¹.
    const DoubleVector& reciprocal(int nAxis) const { return m_aReciprocal[nAxis]; }

private:
    std::array<DoubleVector, 3> m_aDirect = {};
    std::array<DoubleVector, 3> m_aReciprocal = {};
};

/// Three indices of a direction as they are typed: "1 -1 0", "[1-10]", "1,-1,0"; without anything between
/// them each is one digit. At most 99, and not all 0.
///
/// @param pReason  what is wrong, in words, where nothing is returned; left alone otherwise
std::optional<std::array<int, 3>> readDirection(const QString& strText, QString* pReason);

/// "[1 -1 0]".
QString directionName(const std::array<int, 3>& anIndex);

}  // namespace tessera
