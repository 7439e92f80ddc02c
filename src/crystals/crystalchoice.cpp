#include "crystals/crystalchoice.h"

#include <algorithm>
#include <cmath>
#include <limits>

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
                const Observation& one = listObservation[size_t(groups.listMember[size_t(n)])];
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
            std::vector<Part>& listPart = m_listParts[size_t(one.nFirstFrame)];
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

double CLeaveOneOut::ccHalf(const Totals& totals)
{
    const int nFewest = 3;
    if (totals.nGroups < nFewest) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double dfOfMeans = (totals.dfSquares - totals.dfMeans * totals.dfMeans / totals.nGroups) /
                             (totals.nGroups - 1);
    const double dfHalf = totals.dfScatter / totals.nGroups;
    return dfOfMeans + dfHalf > 0 ? (dfOfMeans - dfHalf) / (dfOfMeans + dfHalf)
                                  : std::numeric_limits<double>::quiet_NaN();
}

double CLeaveOneOut::ccHalfWithout(int nCrystal) const
{
    Totals totals = m_all;
    for (const Part& part : m_listParts[size_t(nCrystal)]) {
        Sums sums = m_listSums[size_t(part.nGroup)];
        add(sums, -1, totals);
        sums.nObserved -= part.nObserved;
        sums.dfWeight -= part.dfWeight;
        sums.dfWeighted -= part.dfWeighted;
        sums.dfSquares -= part.dfSquares;
        add(sums, 1, totals);
    }
    return ccHalf(totals);
}

int harmfulCrystal(const std::vector<double>& listGain)
{
    std::vector<double> listFinite;
    std::copy_if(listGain.begin(), listGain.end(), std::back_inserter(listFinite),
                 [](double df) { return std::isfinite(df); });
    const size_t nLeast = 3;
    if (listFinite.size() <= nLeast) {
        return -1;
    }
    const double dfMiddle = median(listFinite);
    std::vector<double> listOff;
    for (const double df : listFinite) {
        listOff.push_back(std::abs(df - dfMiddle));
    }
    const double dfSigma = 1.4826 * median(listOff);  // of a normal distribution
    const double dfSeen = 0.01;                       // of z: below it nobody sees a difference
    const double dfLimit = std::min({-dfSeen, -dfMiddle, dfMiddle - 3 * dfSigma});
    int nWorst = -1;
    for (size_t n = 0; n < listGain.size(); ++n) {
        if (std::isfinite(listGain[n]) && listGain[n] < dfLimit &&
            (nWorst < 0 || listGain[n] < listGain[size_t(nWorst)])) {
            nWorst = int(n);
        }
    }
    return nWorst;
}

double fisherOf(double dfCorrelation)
{
    const double dfNearOne = 0.999999;
    return std::atanh(std::clamp(dfCorrelation, -dfNearOne, dfNearOne));
}

}  // namespace tessera
