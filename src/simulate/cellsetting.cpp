#include "simulate/cellsetting.h"

#include "simulate/angles.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tessera {

namespace {
// Uncorrected distortions and axes are off by some per cent and degrees; a wrong lattice is off by more.
constexpr double g_dfLargestShare = 0.06;
constexpr double g_dfLargestAngle = 5 * g_dfPi / 180;
// The uncertainty of refined cells; axes whose lengths differ by more are considered different.
constexpr double g_dfEquallyNear = 0.003;

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
    Matrix3 indices() const
    {
        return {apVector[0]->vecIndices, apVector[1]->vecIndices, apVector[2]->vecIndices};
    }
    double angle(int i) const { return angleBetween(*apVector[(i + 1) % 3], *apVector[(i + 2) % 3]); }
};

// The lattice vectors whose length is near a given one.
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
// Calls with each triple of true lattice vectors near the cell, with the ratio of its volume to the primitive
// one and the sum of squares of its deviations.
template <typename Callback>
void forEachTriple(const std::array<double, 6>& adfCell, const Matrix3& matTrue, const Matrix3& matPrimitive,
                   Callback fnTriple)
{
    std::array<std::vector<LatticeVector>, 3> aList;
    std::array<double, 3> adfAngle{};
    for (size_t i = 0; i < 3; ++i) {
        if (!(adfCell[i] > 0 && std::isfinite(adfCell[i]))) {
            return;
        }
        aList[i] = shell(matPrimitive * matTrue, adfCell[i]);
        adfAngle[i] = radians(adfCell[3 + i]);
    }
    const auto judge = [&](const Triple& triple) {
        const int nRatio = int(std::lround(std::abs(determinantOf(triple.indices()))));
        double dfSum = 0;
        for (int i = 0; i < 3; ++i) {
            const double dfAngle = triple.angle(i) - adfAngle[i];
            if (!(std::abs(dfAngle) < g_dfLargestAngle)) {
                return;
            }
            const double dfShare = adfCell[i] / triple.apVector[i]->dfLength - 1;
            dfSum += dfAngle * dfAngle + dfShare * dfShare;
        }
        if (nRatio >= 1) {
            fnTriple(triple, nRatio, dfSum);
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
}
}  // namespace

CellSetting trueCellInSettingOf(const std::array<double, 6>& adfCell, const Matrix3& matTrue,
                                const Matrix3& matPrimitive)
{
    CellSetting setting;
    double dfLeast = std::numeric_limits<double>::infinity();
    forEachTriple(adfCell, matTrue, matPrimitive, [&](const Triple& triple, int nRatio, double dfSum) {
        if (!(dfSum < dfLeast)) {
            return;
        }
        dfLeast = dfSum;
        setting.bFound = true;
        setting.nVolumeRatio = nRatio;
        for (int i = 0; i < 3; ++i) {
            setting.adfTrue[i] = triple.apVector[i]->dfLength;
            setting.adfTrue[size_t(i) + 3] = degrees(triple.angle(i));
        }
    });
    return setting;
}

std::vector<Matrix3> settingsNear(const std::array<double, 6>& adfCell, const Matrix3& matTrue,
                                  const Matrix3& matPrimitive)
{
    std::vector<std::pair<double, Matrix3>> listNear;
    double dfLeast = std::numeric_limits<double>::infinity();
    forEachTriple(adfCell, matTrue, matPrimitive, [&](const Triple& triple, int, double dfSum) {
        const double df = std::sqrt(dfSum);
        dfLeast = std::min(dfLeast, df);
        // Indices on the found axes are N times those on the primitive basis, N the axes on its dual.
        listNear.push_back({df, transposed(inverseOf(triple.indices())) * matPrimitive});
    });
    std::vector<Matrix3> listSetting;
    for (const auto& [df, mat] : listNear) {
        if (df <= dfLeast + g_dfEquallyNear) {
            listSetting.push_back(mat);
        }
    }
    return listSetting;
}

}  // namespace tessera
