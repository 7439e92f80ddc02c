#include "cloud/nearestzone.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <vector>

#include "records/pi.h"

namespace tessera {

namespace {

const double g_dfDegree = g_dfPi / 180.0;
const double g_dfSame = 0.05;  // degrees: less than the text shows

typedef std::array<int, 3> Zone;

// Coprime indices, the least first.
std::vector<Zone> makeZones()
{
    std::vector<Zone> vecZone;
    for (int u = -g_nZoneOrder; u <= g_nZoneOrder; ++u) {
        for (int v = -g_nZoneOrder; v <= g_nZoneOrder; ++v) {
            for (int w = -g_nZoneOrder; w <= g_nZoneOrder; ++w) {
                if (std::gcd(std::gcd(u, v), w) == 1) {
                    vecZone.push_back({u, v, w});
                }
            }
        }
    }
    const auto size = [](const Zone& zone) {
        return zone[0] * zone[0] + zone[1] * zone[1] + zone[2] * zone[2];
    };
    std::stable_sort(vecZone.begin(), vecZone.end(),
                     [size](const Zone& a, const Zone& b) { return size(a) < size(b); });
    return vecZone;
}

DoubleVector normalised(const DoubleVector& v)
{
    const double dfLength = std::hypot(v[0], v[1], v[2]);
    return {v[0] / dfLength, v[1] / dfLength, v[2] / dfLength};
}

// By the chord of unit vectors: the arc cosine has no digits left near 0.
double angleDegrees(const DoubleVector& a, const DoubleVector& b)
{
    const double dfHalf = std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]) / 2;
    return 2 * std::asin(std::min(dfHalf, 1.0)) / g_dfDegree;
}

}  // namespace

NearestZone nearestZone(const CCellFrame& cell, const Vec3D& direction)
{
    static const std::vector<Zone> vecZone = makeZones();
    const DoubleVector view = normalised(widened(direction));
    NearestZone nearest;
    nearest.dfOff = std::numeric_limits<double>::infinity();
    // Whether the zone is nearer than the best so far.
    const auto take = [&](const DoubleVector& v) {
        const DoubleVector unit = normalised(v);
        const double dfOff = angleDegrees(view, unit);
        if (!(dfOff < nearest.dfOff - g_dfSame)) {
            return false;
        }
        nearest.direction = unit;
        nearest.dfOff = dfOff;
        return true;
    };
    const Zone* pZone = nullptr;
    for (const Zone& zone : vecZone) {
        if (take(cell.zone(zone))) {
            pZone = &zone;
        }
    }
    if (pZone) {
        nearest.strName = directionName(*pZone);
    }
    for (int nAxis = 0; nAxis < 3; ++nAxis) {
        const DoubleVector& axis = cell.reciprocal(nAxis);
        const bool bBack = dot(axis, view) < 0;
        if (take(bBack ? DoubleVector{-axis[0], -axis[1], -axis[2]} : axis)) {
            nearest.strName = (bBack ? QStringLiteral("-") : QString()) + QLatin1Char("abc"[nAxis]) +
                              QLatin1Char('*');
        }
    }
    return nearest;
}

QString nearestZoneText(const NearestZone& zone)
{
    return QStringLiteral("%1, %L2° off").arg(zone.strName).arg(zone.dfOff, 0, 'f', 1);
}

}  // namespace tessera
