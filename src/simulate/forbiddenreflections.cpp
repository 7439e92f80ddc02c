#include "simulate/forbiddenreflections.h"

#include <algorithm>
#include <tuple>

namespace tessera {

namespace {
// Whether an operation that keeps the indices shifts the phase: the sum over the orbit is then zero.
bool isForbidden(const CStructureFactor& crystal, const std::array<int, 3>& anIndex, bool bTranslationOnly)
{
    const auto& listOperation = crystal.operations();
    return std::any_of(listOperation.begin(), listOperation.end(), [&](const gemmi::Op& operation) {
        if (bTranslationOnly && operation.rot != listOperation.front().rot) {
            return false;
        }
        const int nPhase = anIndex[0] * operation.tran[0] + anIndex[1] * operation.tran[1] +
                           anIndex[2] * operation.tran[2];
        return operation.apply_to_hkl(anIndex) == anIndex && nPhase % gemmi::Op::DEN != 0;
    });
}
}  // namespace

void fillForbidden(const CStructureFactor& crystal, double dfMaxDStar, double dfShare,
                   std::vector<Reflection>& listReflection)
{
    // Mean of ten shells of d*, as scattering falls with it.
    constexpr int nShells = 10;
    std::array<double, nShells> adfSum{};
    std::array<int, nShells> anCount{};
    const auto shellOf = [&](double dfDStar) {
        return std::min(nShells - 1, int(nShells * dfDStar / dfMaxDStar));
    };
    for (const Reflection& reflection : listReflection) {
        const size_t nShell = size_t(shellOf(reflection.dfDStar));
        adfSum[nShell] += reflection.dfSquareF;
        ++anCount[nShell];
    }
    const std::array<double, 6> adfCell = cellOfReciprocalBasis(crystal.reciprocalBasis());
    std::array<int, 3> anMost{};
    for (size_t i = 0; i < 3; ++i) {
        anMost[i] = int(dfMaxDStar * adfCell[i]);  // |h| = |g·a| <= |g| |a|
    }
    for (int h = -anMost[0]; h <= anMost[0]; ++h) {
        for (int k = -anMost[1]; k <= anMost[1]; ++k) {
            for (int l = -anMost[2]; l <= anMost[2]; ++l) {
                const double dfDStar = lengthOf(Vector3{double(h), double(k), double(l)} *
                                                crystal.reciprocalBasis());
                if (dfDStar >= dfMaxDStar || isForbidden(crystal, {h, k, l}, true) ||
                    !isForbidden(crystal, {h, k, l}, false)) {
                    continue;
                }
                const size_t nShell = size_t(shellOf(dfDStar));
                if (anCount[nShell] > 0) {
                    listReflection.push_back({h, k, l, dfDStar, dfShare * adfSum[nShell] / anCount[nShell]});
                }
            }
        }
    }
    std::stable_sort(listReflection.begin(), listReflection.end(),
                     [](const Reflection& a, const Reflection& b) {
                         return std::tie(a.nH, a.nK, a.nL) < std::tie(b.nH, b.nK, b.nL);
                     });
}

}  // namespace tessera
