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

/// Points whose real-valued indices have u·h + v·k + w·l within dfHalfThickness of dfLevel, the edges
/// included. The layers of a lattice lie at whole levels.
struct CloudSlab {
    std::array<int, 3> anDirection = {0, 0, 1};  ///< u, v, w: of (0, 0, 1) the layers l = n
    double dfLevel = 0;                          ///< n
    /// In units of the index. Indices of good cells scatter by less than a tenth; beyond a half, slabs of
    /// neighbouring layers would overlap.
    double dfHalfThickness = 0.2;

    /// Whether all three members are equal.
    bool operator==(const CloudSlab& other) const
    {
        return anDirection == other.anDirection && dfLevel == other.dfLevel &&
               dfHalfThickness == other.dfHalfThickness;
    }
    /// Whether a value of u·h + v·k + w·l is in it; what is no number is not.
    bool holds(double dfCoordinate) const
    {
        return dfCoordinate >= dfLevel - dfHalfThickness && dfCoordinate <= dfLevel + dfHalfThickness;
    }
};

/// 1 for each point (Å⁻¹) that is in the slab.
std::vector<char> pointsInSlab(const QList<Peak3D>& listPoint, const CCellFrame& cell, const CloudSlab& slab);
/// The same for one place.
bool isInSlab(const Vec3D& place, const CCellFrame& cell, const CloudSlab& slab);

/// Of places in groups of nEach, such as the two ends of a line, the groups that lie in the slab whole.
std::vector<Vec3D> placesInSlab(const std::vector<Vec3D>& vecPlace, size_t nEach, const CCellFrame& cell,
                                const CloudSlab& slab);

/// The least and the greatest whole level that a point is nearest to, of levels to a thousand; 0 and 0
/// without points.
std::pair<int, int> slabLevels(const QList<Peak3D>& listPoint, const CCellFrame& cell,
                               const std::array<int, 3>& anDirection);

/// The left side of the equation of a layer: "l", "h - k", "2h + l".
QString layerName(const std::array<int, 3>& anDirection);
/// "l = 2 ± 0.2", in the default locale.
QString slabName(const CloudSlab& slab);

/// What a user calls the direction of a slab: "h", "k", "l", or what readDirection() takes.
std::optional<std::array<int, 3>> readLayer(const QString& strText, QString* pReason);
/// A text that readLayer() gives back: "l", "[1 -1 0]".
QString layerText(const std::array<int, 3>& anDirection);

}  // namespace tessera
