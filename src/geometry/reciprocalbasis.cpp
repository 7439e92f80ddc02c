#include "geometry/reciprocalbasis.h"

#include <algorithm>
#include <cmath>

namespace tessera {

std::optional<ReciprocalBasis> basisFromList(const QList<Vec3D>& listCell)
{
    if (listCell.size() != 3) {
        return std::nullopt;
    }
    return ReciprocalBasis{listCell[0], listCell[1], listCell[2]};
}

bool isFinite(const ReciprocalBasis& basis)
{
    const std::array<Vec3D, 3> aVector = basis.vectors();
    return std::all_of(aVector.begin(), aVector.end(), [](const Vec3D& v) {
        return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
    });
}

}  // namespace tessera
