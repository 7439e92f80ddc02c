#include "cloud/cloudslab.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tessera {

namespace {

const char g_acIndex[] = "hkl";

// Points beyond this level do not count for the range of levels. A slider has that range: one stray point far
// out would make the step from one level to the next less than a pixel.
const double g_dfMostLevel = 1000;

}  // namespace

std::vector<char> pointsInSlab(const QList<Peak3D>& listPoint, const CCellFrame& cell, const CloudSlab& slab)
{
    // The lattice vector u·a + v·b + w·c in Å: its product with a point in Å⁻¹ is u·h + v·k + w·l.
    const DoubleVector axis = cell.zone(slab.anDirection);
    std::vector<char> vecInside;
    vecInside.reserve(listPoint.size());
    for (const Peak3D& peak : listPoint) {
        vecInside.push_back(slab.holds(dot(axis, widened(peak.point()))));
    }
    return vecInside;
}

bool isInSlab(const Vec3D& place, const CCellFrame& cell, const CloudSlab& slab)
{
    return slab.holds(dot(cell.zone(slab.anDirection), widened(place)));
}

std::vector<Vec3D> placesInSlab(const std::vector<Vec3D>& vecPlace, size_t nEach, const CCellFrame& cell,
                                const CloudSlab& slab)
{
    const DoubleVector axis = cell.zone(slab.anDirection);
    const auto isIn = [&](const Vec3D& place) { return slab.holds(dot(axis, widened(place))); };
    std::vector<Vec3D> vecInside;
    for (auto it = vecPlace.begin(); size_t(vecPlace.end() - it) >= nEach; it += std::ptrdiff_t(nEach)) {
        const auto itEnd = it + std::ptrdiff_t(nEach);
        if (std::all_of(it, itEnd, isIn)) {
            vecInside.insert(vecInside.end(), it, itEnd);
        }
    }
    return vecInside;
}

std::pair<int, int> slabLevels(const QList<Peak3D>& listPoint, const CCellFrame& cell,
                               const std::array<int, 3>& anDirection)
{
    const DoubleVector axis = cell.zone(anDirection);
    double dfLeast = 0, dfGreatest = 0;
    bool bFirst = true;
    for (const Peak3D& peak : listPoint) {
        const double df = dot(axis, widened(peak.point()));
        if (!(std::abs(df) <= g_dfMostLevel)) {
            continue;
        }
        dfLeast = bFirst ? df : std::min(dfLeast, df);
        dfGreatest = bFirst ? df : std::max(dfGreatest, df);
        bFirst = false;
    }
    return {int(std::lround(dfLeast)), int(std::lround(dfGreatest))};
}

QString layerName(const std::array<int, 3>& anDirection)
{
    QString strName;
    for (size_t i = 0; i < 3; ++i) {
        const int n = anDirection[i];
        if (n == 0) {
            continue;
        }
        if (strName.isEmpty()) {
            strName = n < 0 ? QStringLiteral("-") : QString();
        } else {
            strName += n < 0 ? QStringLiteral(" - ") : QStringLiteral(" + ");
        }
        if (std::abs(n) != 1) {
            strName += QString::number(std::abs(n));
        }
        strName += QLatin1Char(g_acIndex[i]);
    }
    return strName;
}

QString slabName(const CloudSlab& slab)
{
    return QStringLiteral("%1 = %L2 ± %L3")
        .arg(layerName(slab.anDirection))
        .arg(slab.dfLevel, 0, 'g', 6)
        .arg(slab.dfHalfThickness, 0, 'g', 6);
}

QString layerText(const std::array<int, 3>& anDirection)
{
    const QString strName = layerName(anDirection);
    return strName.size() == 1 ? strName : directionName(anDirection);
}

std::optional<std::array<int, 3>> readLayer(const QString& strText, QString* pReason)
{
    const QString str = strText.trimmed();
    for (size_t i = 0; i < 3; ++i) {
        if (str == QLatin1Char(g_acIndex[i])) {
            std::array<int, 3> anDirection = {};
            anDirection[i] = 1;
            return anDirection;
        }
    }
    return readDirection(str, pReason);
}

}  // namespace tessera
