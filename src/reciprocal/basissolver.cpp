#include "reciprocal/basissolver.h"

#include <cmath>

namespace tessera {

void CBasisSolver::setBasis(const Vec3D& vecA, const Vec3D& vecB, const Vec3D& vecC)
{
    vecBasis[0] = vecA;
    vecBasis[1] = vecB;
    vecBasis[2] = vecC;
    const Vec3D vecRow[3] = {cross(vecB, vecC), cross(vecC, vecA), cross(vecA, vecB)};
    for (int n = 0; n < 3; ++n) {
        dfCofactor[3 * n] = double(vecRow[n].x);
        dfCofactor[3 * n + 1] = double(vecRow[n].y);
        dfCofactor[3 * n + 2] = double(vecRow[n].z);
    }
    dfDeterminant = double(dot(vecA, vecRow[0]));
    bValid = std::fabs(dfDeterminant) >= 1e-6;
}

}  // namespace tessera
