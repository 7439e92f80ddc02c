#include "integration/mergedgroups.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

MergedGroup mergeOne(const std::vector<Observation>& listObservation, const int* pnFirst, const int* pnEnd)
{
    MergedGroup group;
    group.nObserved = int(pnEnd - pnFirst);
    double dfWeights = 0;
    double dfWeighted = 0;
    for (const int* pn = pnFirst; pn != pnEnd; ++pn) {
        const Observation& observation = listObservation[*pn];
        const double df = observation.corrected();
        const double dfSigma = observation.correctedSigma();
        const double dfWeight = 1 / (dfSigma * dfSigma);
        dfWeights += dfWeight;
        dfWeighted += dfWeight * df;
        group.dfIntensities += df;
    }
    group.dfIntensity = dfWeighted / dfWeights;
    double dfSquares = 0;
    for (const int* pn = pnFirst; pn != pnEnd; ++pn) {
        const Observation& observation = listObservation[*pn];
        const double df = observation.corrected() - group.dfIntensity;
        const double dfNormalized = df / observation.correctedSigma();
        group.dfDeviations += std::abs(df);
        dfSquares += dfNormalized * dfNormalized;
    }
    if (group.nObserved > 1) {
        group.dfScatter = dfSquares / (group.nObserved - 1) / dfWeights;
    }
    const int nFewest = 3;  // two observations may agree by chance
    group.dfSigma = std::sqrt(group.nObserved < nFewest ? 1 / dfWeights
                                                        : std::max(1 / dfWeights, group.dfScatter));
    return group;
}

}  // namespace

std::vector<MergedGroup> mergeGroups(const std::vector<Observation>& listObservation,
                                     const EquivalentGroups& groups)
{
    std::vector<MergedGroup> listMerged;
    listMerged.reserve(groups.count());
    const int* pnMember = groups.listMember.data();
    for (size_t n = 0; n < size_t(groups.count()); ++n) {
        listMerged.push_back(
            mergeOne(listObservation, pnMember + groups.listStart[n], pnMember + groups.listStart[n + 1]));
    }
    return listMerged;
}

void CAgreement::add(const MergedGroup& group)
{
    m_nObserved += group.nObserved;
    ++m_nUnique;
    m_dfIOverSigma += group.dfIntensity / group.dfSigma;
    if (group.nObserved < 2) {
        return;
    }
    ++m_nSeveral;
    const double dfOthers = group.nObserved - 1;
    m_dfDeviations += group.dfDeviations;
    m_dfMeas += group.dfDeviations * std::sqrt(group.nObserved / dfOthers);
    m_dfPim += group.dfDeviations * std::sqrt(1 / dfOthers);
    m_dfIntensities += group.dfIntensities;
    const double dfBefore = group.dfIntensity - m_dfMean;
    m_dfMean += dfBefore / m_nSeveral;
    m_dfSquares += dfBefore * (group.dfIntensity - m_dfMean);
    m_dfHalfVariance += 2 * group.dfScatter;
}

double CAgreement::ccHalf() const
{
    if (m_nSeveral < 3) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double dfOfMeans = m_dfSquares / (m_nSeveral - 1);
    const double dfHalf = m_dfHalfVariance / m_nSeveral / 2;
    return ratio(dfOfMeans - dfHalf, dfOfMeans + dfHalf);
}

}  // namespace tessera
