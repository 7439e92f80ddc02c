#include "integration/framemeans.h"

#include "integration/equivalents.h"
#include "integration/errormodel.h"
#include "integration/lorentzfactor.h"
#include "integration/resolutionbins.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

struct Entry {
    double dfFrame = 0;
    double dfSquare = 0;  ///< E², cut
};

/// In the order of the frames.
std::vector<Entry> entriesOf(const std::vector<Observation>& listObservation)
{
    std::vector<double> listDStar;
    std::vector<double> listIntensity;
    std::vector<Entry> listEntry;
    for (const Observation& observation : listObservation) {
        if (isUsable(observation)) {
            listDStar.push_back(observation.dfDStar);
            listIntensity.push_back(observation.corrected());
            listEntry.push_back({observation.dfFrame, 0});
        }
    }
    const CResolutionMean resolutionMean(listDStar, listIntensity);
    const double dfMost = 4;  // a few strong reflections are no measure of a frame
    for (size_t n = 0; n < listEntry.size(); ++n) {
        listEntry[n].dfSquare = std::min(dfMost, listIntensity[n] / resolutionMean.mean(listDStar[n]));
    }
    std::stable_sort(listEntry.begin(), listEntry.end(),
                     [](const Entry& one, const Entry& other) { return one.dfFrame < other.dfFrame; });
    return listEntry;
}

}  // namespace

std::vector<double> frameMeanScales(const std::vector<Observation>& listObservation, int nFrames)
{
    std::vector<double> listScale(size_t(std::max(0, nFrames)), 1.0);
    const std::vector<Entry> listEntry = entriesOf(listObservation);
    const size_t nWindow = 400;
    if (listEntry.size() <= nWindow || listScale.empty()) {
        return listScale;
    }
    std::vector<double> listSum = {0};
    for (const Entry& entry : listEntry) {
        listSum.push_back(listSum.back() + entry.dfSquare);
    }
    const double dfAll = std::max(listSum.back() / double(listEntry.size()), 1e-9);
    double dfLogs = 0;
    for (size_t n = 0; n < listScale.size(); ++n) {
        const auto it = std::lower_bound(
            listEntry.begin(), listEntry.end(), double(n),
            [](const Entry& entry, double dfFrame) { return entry.dfFrame < dfFrame; });
        const auto nPlace = size_t(it - listEntry.begin());
        const size_t nFirst = std::min(nPlace - std::min(nPlace, nWindow / 2), listEntry.size() - nWindow);
        const double dfHere = (listSum[nFirst + nWindow] - listSum[nFirst]) / double(nWindow);
        listScale[n] = std::clamp(dfAll / std::max(dfHere, 1e-9 * dfAll), 0.1, 10.0);
        dfLogs += std::log(listScale[n]) / double(listScale.size());
    }
    for (double& df : listScale) {
        df /= std::exp(dfLogs);
    }
    return listScale;
}

void putFrameScales(const std::vector<double>& listScale, std::vector<Observation>& listObservation)
{
    for (Observation& observation : listObservation) {
        if (listScale.empty() || !std::isfinite(observation.dfFrame)) {
            continue;
        }
        const double dfFrame = std::clamp(observation.dfFrame, 0.0, double(listScale.size() - 1));
        const auto nBefore = size_t(dfFrame);
        const size_t nAfter = std::min(nBefore + 1, listScale.size() - 1);
        const double dfPart = dfFrame - double(nBefore);
        observation.dfScale = (1 - dfPart) * listScale[nBefore] + dfPart * listScale[nAfter];
    }
}

void scaleByFrameMeans(std::vector<Observation>& listObservation, int nFrames)
{
    for (Observation& observation : listObservation) {
        observation.dfScale = 1;
        observation.dfSigmaFactor = 1;
        observation.nFlags &= ~unsigned(FlagOutlier);
    }
    applyLorentzFactor(listObservation);
    putFrameScales(frameMeanScales(listObservation, nFrames), listObservation);
    ObservationSymmetry plain;
    plain.ops = gemmi::symops_from_hall("-P 1");
    const EquivalentGroups groups = groupEquivalents(listObservation, plain);
    applyErrorModel(groups, fitErrorModel(listObservation, groups), listObservation);
}

}  // namespace tessera
