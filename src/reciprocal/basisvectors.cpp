#include "reciprocal/basisvectors.h"

#include "reciprocal/bydstar.h"

#include <cmath>

namespace tessera {

QList<Vec3D> findBasisVectors(const QList<Peak3D>& listVector)
{
    if (listVector.size() < 3) {
        return {};
    }
    QList<Peak3D> listSorted = listVector;
    sortByDStar(listSorted);

    const Vec3D vecA = listSorted.constFirst().point();
    QList<Vec3D> listBasis = {vecA};

    Vec3D vecB = listSorted.constLast().point();
    bool bFound = false;
    for (const Peak3D& vector : listSorted) {
        const Vec3D v = vector.point();
        const float fCos = dot(vecA, v) / std::sqrt(squaredLength(vecA) * squaredLength(v));
        if (std::sqrt(3.0) * 0.5 > double(std::fabs(fCos))) {
            vecB = fCos > 0 ? v : -v;
            bFound = true;
            break;
        }
    }
    listBasis.append(vecB);
    if (!bFound) {
        return listBasis;  // all vectors lie along one line; the list ends with the last one tried
    }

    const Vec3D vecNormal = cross(vecA, vecB);
    for (const Peak3D& vector : listSorted) {
        const Vec3D v = vector.point();
        const float fTriple = std::fabs(dot(vecNormal, v)) / (length(vecA) * length(vecB) * length(v));
        if (!(double(fTriple) > 0.2)) {
            continue;
        }
        Vec3D vecC = dot(v, vecA) + dot(v, vecB) > dot(-v, vecA) + dot(-v, vecB) ? v : -v;
        if (dot(vecNormal, vecC) < 0) {
            std::swap(listBasis[1], vecC);
        }
        listBasis.append(vecC);
        break;
    }
    return listBasis;
}

}  // namespace tessera
