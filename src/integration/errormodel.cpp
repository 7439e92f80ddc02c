#include "integration/errormodel.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// The deviations in groups of at least two observations, group by group, with the bin of each group.
struct Deviations {
    std::vector<int> listStart;  ///< start of each group in the lists below, and the end of the last
    std::vector<double> listIntensity;
    std::vector<double> listSigma;
    std::vector<double> listMean;  ///< robust mean of each group
    std::vector<int> listBin;      ///< bin of each group
    int nBins = 0;
};

double medianOf(std::vector<double> listValue)
{
    const auto it = listValue.begin() + std::ptrdiff_t(listValue.size() / 2);
    std::nth_element(listValue.begin(), it, listValue.end());
    return *it;
}

double weightedMean(const Deviations& all, size_t nGroup, const ErrorModel& errors, double* pdfWeight)
{
    double dfAbove = 0;
    double dfBelow = 0;
    for (int n = all.listStart[nGroup]; n < all.listStart[nGroup + 1]; ++n) {
        const double dfWeight = 1 / errors.variance(all.listSigma[n], all.listMean[nGroup]);
        dfAbove += dfWeight * all.listIntensity[n];
        dfBelow += dfWeight;
    }
    *pdfWeight = dfBelow;
    return dfAbove / dfBelow;
}

Deviations collectDeviations(const std::vector<Observation>& listObservation, const EquivalentGroups& groups)
{
    Deviations all;
    for (int nGroup = 0; nGroup < groups.count(); ++nGroup) {
        const size_t nBefore = all.listIntensity.size();
        for (int n = groups.listStart[nGroup]; n < groups.listStart[size_t(nGroup) + 1]; ++n) {
            const Observation& observation = listObservation[size_t(groups.listMember[n])];
            if ((observation.nFlags & FlagOutlier) == 0) {
                all.listIntensity.push_back(observation.corrected());
                all.listSigma.push_back(observation.dfSigma * observation.dfLorentz * observation.dfScale);
            }
        }
        if (all.listIntensity.size() < nBefore + 2) {
            all.listIntensity.resize(nBefore);
            all.listSigma.resize(nBefore);
            continue;
        }
        all.listStart.push_back(int(nBefore));
        all.listMean.push_back(0);
        const auto itFirst = all.listIntensity.begin() + std::ptrdiff_t(nBefore);
        std::vector<double> listValue(itFirst, all.listIntensity.end());
        std::sort(listValue.begin(), listValue.end());
        const size_t nSize = listValue.size();
        all.listMean.back() = (listValue[(nSize - 1) / 2] + listValue[nSize / 2]) / 2;
    }
    all.listStart.push_back(int(all.listIntensity.size()));
    return all;
}

/// Assigns the groups to bins by mean intensity, with about equal numbers of deviations.
void sortIntoBins(Deviations& all)
{
    const size_t nGroups = all.listMean.size();
    std::vector<size_t> listOrder(nGroups);
    for (size_t n = 0; n < nGroups; ++n) {
        listOrder[n] = n;
    }
    std::stable_sort(listOrder.begin(), listOrder.end(),
                     [&](size_t one, size_t other) { return all.listMean[one] < all.listMean[other]; });
    const int nDeviations = int(all.listIntensity.size());
    const int nInBin = 30;
    const int nMostBins = 20;
    all.nBins = std::clamp(nDeviations / nInBin, 1, nMostBins);
    all.listBin.assign(nGroups, 0);
    double dfBefore = 0;
    for (const size_t nGroup : listOrder) {
        all.listBin[nGroup] = std::min(all.nBins - 1, int(dfBefore * all.nBins / nDeviations));
        dfBefore += all.listStart[nGroup + 1] - all.listStart[nGroup];
    }
}

/// The result for a value of B: the scatter of the log variances over the bins, and the best A.
struct Evenness {
    double dfMisfit = 0;
    double dfA = 1;
    bool bKnown = false;
};

/// Mean square.
double varianceOf(const std::vector<double>& listDeviation, DeviationWidth width)
{
    std::vector<double> listAbsolute;
    listAbsolute.reserve(listDeviation.size());
    for (const double df : listDeviation) {
        listAbsolute.push_back(std::abs(df));
    }
    const double dfSigma = 1.4826 * medianOf(std::move(listAbsolute));
    if (width == DeviationWidth::Core) {
        return dfSigma * dfSigma;
    }
    double dfSum = 0;
    for (const double df : listDeviation) {
        const double dfClipped = std::min(std::abs(df), 4 * dfSigma);
        dfSum += dfClipped * dfClipped;
    }
    return dfSum / double(listDeviation.size());
}

Evenness evennessOf(const Deviations& all, double dfB, DeviationWidth width)
{
    const ErrorModel errors = {1, dfB};
    std::vector<std::vector<double>> listBin(static_cast<size_t>(all.nBins));
    for (size_t nGroup = 0; nGroup < all.listMean.size(); ++nGroup) {
        double dfWeight = 0;
        const double dfMean = weightedMean(all, nGroup, errors, &dfWeight);
        for (int n = all.listStart[nGroup]; n < all.listStart[nGroup + 1]; ++n) {
            const double dfVariance = errors.variance(all.listSigma[n], all.listMean[nGroup]) - 1 / dfWeight;
            if (dfVariance > 0) {
                listBin[size_t(all.listBin[nGroup])].push_back((all.listIntensity[n] - dfMean) /
                                                               std::sqrt(dfVariance));
            }
        }
    }
    Evenness evenness;
    double dfCount = 0;
    double dfSum = 0;
    double dfSquares = 0;
    for (const std::vector<double>& listDeviation : listBin) {
        const double dfVariance = listDeviation.empty() ? 0 : varianceOf(listDeviation, width);
        if (dfVariance > 0 && std::isfinite(dfVariance)) {
            const double dfLog = std::log(dfVariance);
            const double dfNumber = double(listDeviation.size());
            dfCount += dfNumber;
            dfSum += dfNumber * dfLog;
            dfSquares += dfNumber * dfLog * dfLog;
        }
    }
    if (dfCount > 0) {
        evenness.bKnown = true;
        evenness.dfA = std::clamp(std::exp(dfSum / dfCount / 2), 0.1, 100.0);
        evenness.dfMisfit = std::max(0.0, dfSquares - dfSum * dfSum / dfCount);
    }
    return evenness;
}

/// The B with the smallest scatter, from a coarse scan and a ternary search between the neighbours of the
/// best step.
double bestB(const Deviations& all, DeviationWidth width)
{
    const double dfSmallest = 0.002;
    const int nSteps = 38;  // of the scan, up to B = 2
    const double dfFactor = 1.2;
    double dfBest = 0;
    double dfMisfit = evennessOf(all, 0, width).dfMisfit;
    double df = dfSmallest;
    for (int n = 0; n < nSteps; ++n, df *= dfFactor) {
        const double dfOther = evennessOf(all, df, width).dfMisfit;
        if (dfOther < dfMisfit) {
            dfMisfit = dfOther;
            dfBest = df;
        }
    }
    if (dfBest == 0) {
        return 0;
    }
    double dfLow = dfBest / dfFactor;
    double dfHigh = dfBest * dfFactor;
    for (int n = 0; n < 12; ++n) {
        const double dfOne = dfLow + (dfHigh - dfLow) / 3;
        const double dfTwo = dfHigh - (dfHigh - dfLow) / 3;
        if (evennessOf(all, dfOne, width).dfMisfit < evennessOf(all, dfTwo, width).dfMisfit) {
            dfHigh = dfTwo;
        } else {
            dfLow = dfOne;
        }
    }
    return (dfLow + dfHigh) / 2;
}

}  // namespace

std::vector<double> groupMeans(const std::vector<Observation>& listObservation,
                               const EquivalentGroups& groups, const ErrorModel& errors)
{
    std::vector<double> listMean;
    std::vector<double> listValue;
    for (int nGroup = 0; nGroup < groups.count(); ++nGroup) {
        listValue.clear();
        const auto nFirst = size_t(groups.listStart[nGroup]);
        const auto nEnd = size_t(groups.listStart[size_t(nGroup) + 1]);
        for (size_t n = nFirst; n < nEnd; ++n) {
            const Observation& observation = listObservation[size_t(groups.listMember[n])];
            if ((observation.nFlags & FlagOutlier) == 0) {
                listValue.push_back(observation.corrected());
            }
        }
        if (listValue.empty()) {
            listMean.push_back(0);
            continue;
        }
        std::sort(listValue.begin(), listValue.end());
        const double dfMedian = (listValue[(listValue.size() - 1) / 2] + listValue[listValue.size() / 2]) / 2;
        double dfAbove = 0;
        double dfBelow = 0;
        for (size_t n = nFirst; n < nEnd; ++n) {
            const Observation& observation = listObservation[size_t(groups.listMember[n])];
            if ((observation.nFlags & FlagOutlier) == 0) {
                const double dfSigma = observation.dfSigma * observation.dfLorentz * observation.dfScale;
                const double dfWeight = 1 / errors.variance(dfSigma, dfMedian);
                dfAbove += dfWeight * observation.corrected();
                dfBelow += dfWeight;
            }
        }
        listMean.push_back(dfAbove / dfBelow);
    }
    return listMean;
}

ErrorModel fitErrorModel(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                         DeviationWidth width)
{
    Deviations all = collectDeviations(listObservation, groups);
    const size_t nFewest = 20;
    const size_t nFewestForB = 90;
    if (all.listIntensity.size() < nFewest) {
        return {};
    }
    sortIntoBins(all);
    ErrorModel errors;
    if (all.listIntensity.size() >= nFewestForB) {
        errors.dfB = bestB(all, width);
    }
    const Evenness evenness = evennessOf(all, errors.dfB, width);
    return evenness.bKnown ? ErrorModel{evenness.dfA, errors.dfB} : ErrorModel{};
}

void applyErrorModel(const EquivalentGroups& groups, const ErrorModel& errors,
                     std::vector<Observation>& listObservation)
{
    const std::vector<double> listMean = groupMeans(listObservation, groups, errors);
    for (size_t n = 0; n < listObservation.size(); ++n) {
        Observation& observation = listObservation[n];
        observation.dfSigmaFactor = 1;
        if (!isUsable(observation, 0)) {
            continue;
        }
        const int nGroup = groups.listGroup[n];
        const double dfMean = nGroup >= 0 ? listMean[nGroup] : observation.corrected();
        const double dfSigma = observation.correctedSigma();
        observation.dfSigmaFactor = std::sqrt(errors.variance(dfSigma, dfMean)) / dfSigma;
    }
}

}  // namespace tessera
