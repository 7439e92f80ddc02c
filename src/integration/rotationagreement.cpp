#include "integration/rotationagreement.h"

#include "geometry/angles.h"
#include "integration/equivalents.h"
#include "integration/mergedgroups.h"
#include "integration/resolutionbins.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessera {

namespace {

std::uint64_t keyOf(const std::array<int, 3>& anIndex)
{
    std::uint64_t nKey = 0;
    for (const int n : anIndex) {
        nKey = (nKey << 21) | (std::uint64_t(n + (1 << 20)) & 0x1fffffu);
    }
    return nKey;
}

/// Weighted sums over pairs, each counted in both orders for symmetry.
struct PairSums {
    double dfWeight = 0;
    double dfMean = 0;
    double dfSquares = 0;
    double dfProducts = 0;
    double dfVariance = 0;

    void add(double dfOne, double dfOther, double dfVarianceOfOne, double dfVarianceOfOther)
    {
        const double df = 1 / ((1 + dfVarianceOfOne) * (1 + dfVarianceOfOther));
        dfWeight += df;
        dfMean += df * (dfOne + dfOther) / 2;
        dfSquares += df * (dfOne * dfOne + dfOther * dfOther) / 2;
        dfProducts += df * dfOne * dfOther;
        dfVariance += df * (dfVarianceOfOne + dfVarianceOfOther) / 2;
    }
    double spread() const { return dfSquares / dfWeight - dfMean / dfWeight * dfMean / dfWeight; }
    double correlation() const
    {
        return (dfProducts / dfWeight - dfMean / dfWeight * dfMean / dfWeight) / spread();
    }
    double expected() const { return 1 - dfVariance / dfWeight / spread(); }
};

}  // namespace

CRotationAgreement::CRotationAgreement(const std::vector<Observation>& listObservation,
                                       const ObservationSymmetry& primitive)
{
    const EquivalentGroups groups = groupEquivalents(listObservation, primitive);
    const std::vector<MergedGroup> listMerged = mergeGroups(listObservation, groups);
    std::vector<double> listDStar;
    std::vector<double> listIntensity;
    for (size_t n = 0; n < listMerged.size(); ++n) {
        listDStar.push_back(listObservation[size_t(groups.listMember[size_t(groups.listStart[n])])].dfDStar);
        listIntensity.push_back(listMerged[n].dfIntensity);
    }
    const CResolutionMean resolutionMean(listDStar, listIntensity);
    for (size_t n = 0; n < listMerged.size(); ++n) {
        const double dfMean = resolutionMean.mean(listDStar[n]);
        const double dfSigma = listMerged[n].dfSigma / dfMean;
        m_mapPlace.emplace(keyOf(groups.listIndex[n]), int(n));
        m_listReflection.push_back({groups.listIndex[n], listMerged[n].dfIntensity, listMerged[n].dfSigma,
                                    listMerged[n].dfIntensity / dfMean, dfSigma * dfSigma});
    }
}

const CRotationAgreement::Reflection* CRotationAgreement::find(const std::array<int, 3>& anIndex) const
{
    auto it = m_mapPlace.find(keyOf(anIndex));
    if (it == m_mapPlace.end()) {
        it = m_mapPlace.find(keyOf({-anIndex[0], -anIndex[1], -anIndex[2]}));
    }
    return it == m_mapPlace.end() ? nullptr : &m_listReflection[it->second];
}

RotationAgreement CRotationAgreement::agreement(const Eigen::Matrix3i& matRotation) const
{
    RotationAgreement agreement;
    const bool bOwnInverse = (matRotation * matRotation).isIdentity();
    PairSums sums;
    double dfDifferences = 0;
    double dfForetold = 0;
    double dfIntensities = 0;
    for (const Reflection& reflection : m_listReflection) {
        const Eigen::Vector3i image = matRotation * Eigen::Vector3i(reflection.anIndex[0],
                                                                    reflection.anIndex[1],
                                                                    reflection.anIndex[2]);
        const Reflection* pOther = find({image.x(), image.y(), image.z()});
        if (!pOther || pOther == &reflection || (bOwnInverse && pOther < &reflection)) {
            continue;
        }
        ++agreement.nPairs;
        sums.add(reflection.dfSquare, pOther->dfSquare, reflection.dfVariance, pOther->dfVariance);
        dfDifferences += std::abs(reflection.dfIntensity - pOther->dfIntensity);
        // The mean absolute deviation of a normal distribution is sqrt(2/pi) sigma.
        dfForetold += std::sqrt(2 / g_dfPi) * std::hypot(reflection.dfSigma, pOther->dfSigma);
        dfIntensities += reflection.dfIntensity + pOther->dfIntensity;
    }
    const int nFewest = 10;
    const double dfNone = std::numeric_limits<double>::quiet_NaN();
    agreement.dfCorrelation = dfNone;
    agreement.dfR = dfNone;
    agreement.dfForetoldR = dfNone;
    agreement.dfExpected = dfNone;
    if (agreement.nPairs < nFewest || !(sums.spread() > 0)) {
        return agreement;
    }
    agreement.dfCorrelation = std::clamp(sums.correlation(), -1.0, 1.0);
    if (dfIntensities > 0) {
        agreement.dfR = 2 * dfDifferences / dfIntensities;
        agreement.dfForetoldR = 2 * dfForetold / dfIntensities;
    }
    agreement.dfExpected = std::clamp(sums.expected(), 0.2, 0.98);
    return agreement;
}

}  // namespace tessera
