// CloudSlab: the points of a cloud near one layer of a lattice.
#pragma once

#include "cloud/cellframe.h"
#include "records/peak3d.h"

#include <QList>
#include <QString>

#include <array>
#include <utility>
#include <vector>

namespace tessera {

/// A slab of reciprocal space perpendicular to the direct lattice vector [u v w]: the points whose indices h,
/// k, l, which need not be whole numbers, have u·h + v·k + w·l within dfHalfThickness of dfLevel, its two
/// faces included. The layers of the reciprocal lattice lie at whole levels.
struct CloudSlab {
    std::array<int, 3> anDirection = {0, 0, 1};  ///< u, v, w; (0, 0, 1) gives the layers l = n
    double dfLevel = 0;                          ///< value of u·h + v·k + w·l in the middle of the slab
    /// In units of u·h + v·k + w·l. Indices of good cells scatter by less than a tenth; beyond a half, slabs
    /// of neighbouring layers would overlap.
    double dfHalfThickness = 0.2;

    /// Whether all three members are equal.
    bool operator==(const CloudSlab& other) const
    {
        return anDirection == other.anDirection && dfLevel == other.dfLevel &&
               dfHalfThickness == other.dfHalfThickness;
    }
    /// Whether a value of u·h + v·k + w·l is in the slab; NaN is not.
    bool holds(double dfCoordinate) const
    {
        return dfCoordinate >= dfLevel - dfHalfThickness && dfCoordinate <= dfLevel + dfHalfThickness;
    }
};

/// For each point (coordinates in Å⁻¹), in the order of the list: 1 if it is in the slab, else 0.
std::vector<char> pointsInSlab(const QList<Peak3D>& listPoint, const CCellFrame& cell, const CloudSlab& slab);
/// Whether a place (coordinates in Å⁻¹) is in the slab.
bool isInSlab(const Vec3D& place, const CCellFrame& cell, const CloudSlab& slab);

/// Takes the places nEach at a time, such as the two ends of a line, and returns those groups of which all
/// places (coordinates in Å⁻¹) are in the slab.
/// @param nEach  at least 1
std::vector<Vec3D> placesInSlab(const std::vector<Vec3D>& vecPlace, size_t nEach, const CCellFrame& cell,
                                const CloudSlab& slab);

/// The range of the layers that have points: the value of u·h + v·k + w·l of each point is rounded to a whole
/// level, and the least and the greatest of these are returned. Points beyond level ±1000 do not count. 0 and
/// 0 if no point counts.
std::pair<int, int> slabLevels(const QList<Peak3D>& listPoint, const CCellFrame& cell,
                               const std::array<int, 3>& anDirection);

/// The left side of the equation of a layer: "l", "h - k", "2h + l".
QString layerName(const std::array<int, 3>& anDirection);
/// "l = 2 ± 0.2", in the default locale.
QString slabName(const CloudSlab& slab);

/// Reads the direction of a slab as a user types it: "h", "k", "l", or what readDirection() takes.
/// @param pReason  as for readDirection()
std::optional<std::array<int, 3>> readLayer(const QString& strText, QString* pReason);
/// A text that readLayer() gives back: "l", "[1 -1 0]".
QString layerText(const std::array<int, 3>& anDirection);

}  // namespace tessera
