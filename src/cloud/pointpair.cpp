#include "cloud/pointpair.h"

#include <cmath>

#include "records/pi.h"

namespace tessera {

PointPair measurePair(const Vec3D& from, const Vec3D& to, const std::optional<CCellFrame>& cell)
{
    PointPair pair;
    const DoubleVector a = widened(from), b = widened(to);
    pair.dfDelta = std::hypot(b[0] - a[0], b[1] - a[1], b[2] - a[2]);
    if (pair.dfDelta > 0) {
        pair.spacing = 1 / pair.dfDelta;
    }
    if (cell) {
        const DoubleVector first = cell->indicesOf(from), second = cell->indicesOf(to);
        pair.deltaIndices = DoubleVector{second[0] - first[0], second[1] - first[1], second[2] - first[2]};
    }
    const DoubleVector normal = cross(a, b);
    const double dfSine = std::sqrt(dot(normal, normal)), dfCosine = dot(a, b);
    if (dot(a, a) > 0 && dot(b, b) > 0) {
        pair.angle = std::atan2(dfSine, dfCosine) * 180 / g_dfPi;
    }
    return pair;
}

QString pairText(const PointPair& pair)
{
    QString strText = QStringLiteral("Δ=%L1 Å⁻¹").arg(pair.dfDelta, 0, 'f', 4);
    if (pair.spacing) {
        strText += QStringLiteral(", d=%L1 Å").arg(*pair.spacing, 0, 'f', 3);
    }
    if (pair.deltaIndices) {
        const DoubleVector& v = *pair.deltaIndices;
        strText += QStringLiteral(", Δhkl=(%L1, %L2, %L3)")
                       .arg(v[0], 0, 'f', 2)
                       .arg(v[1], 0, 'f', 2)
                       .arg(v[2], 0, 'f', 2);
    }
    if (pair.angle) {
        strText += QStringLiteral(", %L1° at the origin").arg(*pair.angle, 0, 'f', 1);
    }
    return strText;
}

}  // namespace tessera
