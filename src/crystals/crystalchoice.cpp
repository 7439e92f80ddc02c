#include "crystals/crystalchoice.h"

#include "integration/mergedgroups.h"
#include "integration/resolutionbins.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

double median(std::vector<double> list)
{
    const auto itMiddle = list.begin() + std::ptrdiff_t(list.size() / 2);
    std::nth_element(list.begin(), itMiddle, list.end());
    return *itMiddle;
}

}  // namespace

CLeaveOneOut::CLeaveOneOut(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                           int nCrystals)
    : m_listSums(size_t(groups.count())), m_listParts(size_t(nCrystals))
{
    for (size_t nGroup = 0; nGroup < m_listSums.size(); ++nGroup) {
        Sums& sums = m_listSums[nGroup];
        const auto forEach = [&](auto fn) {
            for (int n = groups.listStart[nGroup]; n < groups.listStart[nGroup + 1]; ++n) {
                const Observation& one = listObservation[size_t(groups.listMember[n])];
                fn(one, 1 / (one.correctedSigma() * one.correctedSigma()));
            }
        };
        forEach([&](const Observation& one, double dfWeight) {
            ++sums.nObserved;
            sums.dfWeight += dfWeight;
            sums.dfMean += dfWeight * one.corrected();
        });
        sums.dfMean /= sums.dfWeight;
        forEach([&](const Observation& one, double dfWeight) {
            std::vector<Part>& listPart = m_listParts[one.nFirstFrame];
            if (listPart.empty() || listPart.back().nGroup != int(nGroup)) {
                listPart.push_back({int(nGroup)});
            }
            const double dfOff = one.corrected() - sums.dfMean;
            Part& part = listPart.back();
            ++part.nObserved;
            part.dfWeight += dfWeight;
            part.dfWeighted += dfWeight * dfOff;
            part.dfSquares += dfWeight * dfOff * dfOff;
            sums.dfWeighted += dfWeight * dfOff;
            sums.dfSquares += dfWeight * dfOff * dfOff;
        });
        m_dfMiddle += sums.dfMean / double(m_listSums.size());
    }
    for (const Sums& sums : m_listSums) {
        add(sums, 1, m_all);
    }
}

void CLeaveOneOut::add(const Sums& sums, int nSign, Totals& totals) const
{
    if (sums.nObserved < 2 || !(sums.dfWeight > 0)) {
        return;
    }
    const double dfShift = sums.dfWeighted / sums.dfWeight;
    const double dfMean = sums.dfMean + dfShift - m_dfMiddle;
    const double dfSquares = std::max(0.0, sums.dfSquares - sums.dfWeight * dfShift * dfShift);
    totals.nGroups += nSign;
    totals.dfMeans += nSign * dfMean;
    totals.dfSquares += nSign * dfMean * dfMean;
    totals.dfScatter += nSign * dfSquares / (sums.nObserved - 1) / sums.dfWeight;
}

CLeaveOneOut::Variances CLeaveOneOut::variancesOf(const Totals& totals)
{
    const int nFewest = 3;
    if (totals.nGroups < nFewest) {
        return {std::nan(""), std::nan("")};
    }
    return {(totals.dfSquares - totals.dfMeans * totals.dfMeans / totals.nGroups) / (totals.nGroups - 1),
            totals.dfScatter / totals.nGroups};
}

double CLeaveOneOut::ccHalf(const Totals& totals)
{
    const Variances variances = variancesOf(totals);
    const double dfSum = variances.dfOfMeans + variances.dfHalf;
    return dfSum > 0 ? (variances.dfOfMeans - variances.dfHalf) / dfSum : std::nan("");
}

void CLeaveOneOut::addChange(const Part& part, Totals& totals) const
{
    Sums sums = m_listSums[part.nGroup];
    add(sums, -1, totals);
    sums.nObserved -= part.nObserved;
    sums.dfWeight -= part.dfWeight;
    sums.dfWeighted -= part.dfWeighted;
    sums.dfSquares -= part.dfSquares;
    add(sums, 1, totals);
}

double CLeaveOneOut::ccHalfWithout(int nCrystal) const
{
    Totals totals = m_all;
    for (const Part& part : m_listParts[nCrystal]) {
        addChange(part, totals);
    }
    return ccHalf(totals);
}

CLeaveOneOut::Gain CLeaveOneOut::gainOf(int nCrystal) const
{
    const Variances all = variancesOf(m_all);
    Totals without = m_all;
    double dfSquares = 0;
    for (const Part& part : m_listParts[nCrystal]) {
        Totals change;
        addChange(part, change);
        without.nGroups += change.nGroups;
        without.dfMeans += change.dfMeans;
        without.dfSquares += change.dfSquares;
        without.dfScatter += change.dfScatter;
        const double dfOfGroup = (change.dfSquares / all.dfOfMeans - change.dfScatter / all.dfHalf) /
                                 (2 * m_all.nGroups);
        dfSquares += dfOfGroup * dfOfGroup;
    }
    const Variances other = variancesOf(without);
    return {(std::log(all.dfOfMeans / all.dfHalf) - std::log(other.dfOfMeans / other.dfHalf)) / 2,
            std::sqrt(dfSquares)};
}

std::vector<Observation> amplitudesOf(const std::vector<Observation>& listObservation,
                                      const EquivalentGroups& groups)
{
    const std::vector<MergedGroup> listMerged = mergeGroups(listObservation, groups);
    std::vector<double> listDStar, listIntensity;
    for (size_t n = 0; n < listMerged.size(); ++n) {
        listDStar.push_back(listObservation[size_t(groups.listMember[size_t(groups.listStart[n])])].dfDStar);
        listIntensity.push_back(listMerged[n].dfIntensity);
    }
    const CResolutionMean resolutionMean(listDStar, listIntensity);
    std::vector<Observation> list(listObservation);
    for (size_t n = 0; n < list.size(); ++n) {
        Observation& one = list[n];
        const int nGroup = groups.listGroup[n];
        const double dfMean = nGroup < 0 ? 1 : resolutionMean.mean(listDStar[nGroup]);
        const double dfSquare = one.corrected() / dfMean, dfSigma = one.correctedSigma() / dfMean;
        one.dfLorentz = one.dfScale = one.dfSigmaFactor = 1;
        one.dfIntensity = std::copysign(std::sqrt(std::abs(dfSquare)), dfSquare);
        // By the amplitude of the group, as weights that follow their own observation would pull the mean.
        one.dfSigma = nGroup < 0
                          ? 0
                          : dfSigma / (2 * std::sqrt(std::max(listIntensity[nGroup] / dfMean, dfSigma)));
    }
    return list;
}

int harmfulCrystal(const std::vector<CLeaveOneOut::Gain>& listGain)
{
    std::vector<double> listFinite;
    for (const CLeaveOneOut::Gain& gain : listGain) {
        if (std::isfinite(gain.dfGain)) {
            listFinite.push_back(gain.dfGain);
        }
    }
    const size_t nLeast = 3;
    if (listFinite.size() <= nLeast) {
        return -1;
    }
    const double dfMiddle = median(listFinite);
    std::vector<double> listOff;
    listOff.reserve(listFinite.size());
    for (const double df : listFinite) {
        listOff.push_back(std::abs(df - dfMiddle));
    }
    const double dfSigma = 1.4826 * median(listOff);  // of a normal distribution
    const double dfSeen = 0.01;                       // of z: below it nobody sees a difference
    const double dfLimit = std::min({-dfSeen, -dfMiddle, dfMiddle - 3 * dfSigma});
    int nWorst = -1;
    for (size_t n = 0; n < listGain.size(); ++n) {
        const CLeaveOneOut::Gain& gain = listGain[n];
        if (std::isfinite(gain.dfGain) && gain.dfGain < std::min(dfLimit, -3 * gain.dfError) &&
            (nWorst < 0 || gain.dfGain < listGain[nWorst].dfGain)) {
            nWorst = int(n);
        }
    }
    return nWorst;
}

}  // namespace tessera
