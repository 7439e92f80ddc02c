#include "simulate/cellsetting.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace tessera {

namespace {
constexpr double g_dfPi = 3.14159265358979323846;
// Uncorrected distortions and axes are off by some per cent and degrees; a wrong lattice is off by more.
constexpr double g_dfLargestShare = 0.06;
constexpr double g_dfLargestAngle = 5 * g_dfPi / 180;

struct LatticeVector {
    Vector3 vecIndices, vec;
    double dfLength = 0;
};

double angleBetween(const LatticeVector& a, const LatticeVector& b)
{
    const double df = dotProduct(a.vec, b.vec) / (a.dfLength * b.dfLength);
    return std::acos(std::max(-1.0, std::min(1.0, df)));
}

// Edges and angles of a triple; angles in radians.
struct Triple {
    const LatticeVector* apVector[3];
    double angle(int i) const { return angleBetween(*apVector[(i + 1) % 3], *apVector[(i + 2) % 3]); }
};

// Lattice vectors of about a length.
std::vector<LatticeVector> shell(const Matrix3& matReciprocal, double dfLength)
{
    const Matrix3 matDirect = transposed(inverseOf(matReciprocal));
    std::vector<LatticeVector> list;
    std::array<int, 3> anMost{};
    for (size_t i = 0; i < 3; ++i) {
        // An index is the vector times a reciprocal axis.
        anMost[i] = int((1 + g_dfLargestShare) * dfLength * lengthOf(matReciprocal[i]));
    }
    for (int h = -anMost[0]; h <= anMost[0]; ++h) {
        for (int k = -anMost[1]; k <= anMost[1]; ++k) {
            for (int l = -anMost[2]; l <= anMost[2]; ++l) {
                const Vector3 vecIndices{double(h), double(k), double(l)};
                const Vector3 vec = vecIndices * matDirect;
                const double df = lengthOf(vec);
                if (df > 0 && std::abs(dfLength / df - 1) < g_dfLargestShare) {
                    list.push_back({vecIndices, vec, df});
                }
            }
        }
    }
    return list;
}
}  // namespace

CellSetting trueCellInSettingOf(const std::array<double, 6>& adfCell, const Matrix3& matTrue,
                                const Matrix3& matPrimitive)
{
    CellSetting setting;
    std::array<std::vector<LatticeVector>, 3> aList;
    std::array<double, 3> adfAngle{};
    for (size_t i = 0; i < 3; ++i) {
        if (!(adfCell[i] > 0 && std::isfinite(adfCell[i]))) {
            return setting;
        }
        aList[i] = shell(matPrimitive * matTrue, adfCell[i]);
        adfAngle[i] = adfCell[3 + i] * g_dfPi / 180;
    }
    double dfLeast = std::numeric_limits<double>::infinity();
    const auto judge = [&](const Triple& triple) {
        const int nRatio = int(std::lround(
            std::abs(determinantOf({triple.apVector[0]->vecIndices, triple.apVector[1]->vecIndices,
                                    triple.apVector[2]->vecIndices}))));
        double dfSum = 0;
        for (int i = 0; i < 3; ++i) {
            const double dfAngle = triple.angle(i) - adfAngle[size_t(i)];
            if (!(std::abs(dfAngle) < g_dfLargestAngle)) {
                return;
            }
            const double dfShare = adfCell[size_t(i)] / triple.apVector[i]->dfLength - 1;
            dfSum += dfAngle * dfAngle + dfShare * dfShare;
        }
        if (nRatio < 1 || !(dfSum < dfLeast)) {
            return;
        }
        dfLeast = dfSum;
        setting.bFound = true;
        setting.nVolumeRatio = nRatio;
        for (int i = 0; i < 3; ++i) {
            setting.adfTrue[size_t(i)] = triple.apVector[i]->dfLength;
            setting.adfTrue[size_t(i) + 3] = triple.angle(i) * 180 / g_dfPi;
        }
    };
    for (const LatticeVector& a : aList[0]) {
        for (const LatticeVector& b : aList[1]) {
            if (std::abs(angleBetween(a, b) - adfAngle[2]) < g_dfLargestAngle) {
                for (const LatticeVector& c : aList[2]) {
                    judge({&a, &b, &c});
                }
            }
        }
    }
    return setting;
}

}  // namespace tessera
