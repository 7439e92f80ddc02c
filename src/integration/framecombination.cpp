#include "integration/framecombination.h"

#include "integration/reflectionflags.h"
#include "integration/rockingfit.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tessera {

namespace {

const double g_dfSeenPart = 0.01;  // fraction of a rocking curve below which flags of a frame do not matter
const double g_dfLeastRecorded = 0.1;

/// Sums over the frames of a passage.
struct Totals {
    double dfSum = 0, dfVariance = 0, dfRecorded = 0, dfBackground = 0, dfFrames = 0;
    double dfFit = 0, dfFitWeight = 0, dfFitShare = 0;
};

Totals totalsOf(const std::vector<SpotMeasure>& listMeasure)
{
    Totals totals;
    for (const SpotMeasure& measure : listMeasure) {
        totals.dfSum += measure.dfSum;
        totals.dfVariance += measure.dfSumVariance;
        totals.dfRecorded += measure.dfPart * measure.dfInDisc;
        totals.dfBackground += measure.dfBackground;
        totals.dfFrames += 1;
        if (measure.dfFitVariance > 0) {
            const double dfWeight = measure.dfPart / measure.dfFitVariance;
            totals.dfFit += dfWeight * measure.dfFit;
            totals.dfFitWeight += dfWeight * measure.dfPart;
            totals.dfFitShare += dfWeight * dfWeight * measure.dfPart * measure.dfFitShare;
        }
    }
    return totals;
}

double median(std::vector<double>& list)
{
    const auto middle = list.begin() + std::ptrdiff_t(list.size() / 2);
    std::nth_element(list.begin(), middle, list.end());
    return *middle;
}

}  // namespace

PassageMeasure combineFrames(const std::vector<SpotMeasure>& listMeasure, const std::vector<char>& listBlank,
                             const NoiseModel& noise, const RockingCurve& curve, Observation& observation)
{
    PassageMeasure result;
    std::vector<SpotMeasure> listUsed;
    for (const SpotMeasure& measure : listMeasure) {
        const bool bBlank = listBlank[measure.nFrame] != 0;
        if (measure.dfPart > g_dfSeenPart) {
            observation.nFlags |= measure.nFlags | (bBlank ? FlagBlankFrame : 0u);
        }
        if (!bBlank && measure.nBackground > 0) {
            listUsed.push_back(measure);
        }
    }
    const Totals totals = totalsOf(listUsed);
    observation.dfBackground = totals.dfFrames > 0 ? totals.dfBackground / totals.dfFrames : 0;
    observation.dfRecorded = std::clamp(totals.dfRecorded, 0.0, 1.0);
    if (!(totals.dfRecorded > g_dfLeastRecorded)) {
        return result;
    }
    result.dfSum = totals.dfSum / totals.dfRecorded;
    const double dfOwnVariance = noise.dfGain * std::max(totals.dfSum, 0.0);
    result.dfSumSigma = std::sqrt(totals.dfVariance + dfOwnVariance) / totals.dfRecorded;
    if (totals.dfFitWeight > 0) {
        result.dfFit = totals.dfFit / totals.dfFitWeight;
        const double dfOwn = noise.dfGain * std::max(result.dfFit, 0.0) * totals.dfFitShare /
                             (totals.dfFitWeight * totals.dfFitWeight);
        result.dfFitSigma = std::sqrt(1 / totals.dfFitWeight + dfOwn);
    }
    const double dfTelling = 15;  // sigmas from which a reflection determines the centre of its rocking curve
    if (curve.rotation.kind != RotationKind::Continuous && result.dfSum > dfTelling * result.dfSumSigma) {
        const auto fit = fitRocking(listUsed, curve, observation.dfDStar, noise.dfGain, RockingWidth::Fixed);
        if (fit) {
            result.dfSumSigma *= fit->dfTotal / result.dfSum;
            result.dfSum = fit->dfTotal;
        }
    }
    return result;
}

namespace {

/// The ratio of fits to sums as a function of d*, and its spread, from well-measured observations.
class CFitRatio {
public:
    CFitRatio(const std::vector<PassageMeasure>& listMeasure, const std::vector<Observation>& listObservation)
    {
        std::vector<std::pair<double, double>> list;  // d*, ratio
        std::vector<double> listNoise;                // counting noise of the ratio
        for (size_t n = 0; n < listMeasure.size(); ++n) {
            const PassageMeasure& measure = listMeasure[n];
            if (measure.dfFitSigma > 0 && measure.dfSum > 15 * measure.dfSumSigma && measure.dfFit > 0 &&
                !(listObservation[n].nFlags & g_nExcludingFlags)) {
                list.emplace_back(listObservation[n].dfDStar, measure.dfFit / measure.dfSum);
                listNoise.push_back(measure.dfSumSigma / measure.dfSum);
            }
        }
        std::stable_sort(list.begin(), list.end());
        const size_t nGroups = std::min<size_t>(6, list.size() / 20);
        for (size_t nGroup = 0; nGroup < nGroups; ++nGroup) {
            std::vector<double> listDStar, listRatio;
            for (size_t n = nGroup * list.size() / nGroups; n < (nGroup + 1) * list.size() / nGroups; ++n) {
                listDStar.push_back(list[n].first);
                listRatio.push_back(list[n].second);
            }
            m_listPoint.emplace_back(median(listDStar), median(listRatio));
        }
        std::vector<double> listOff;
        listOff.reserve(list.size());
        for (const auto& [dfDStar, dfRatio] : list) {
            listOff.push_back(std::abs(dfRatio / at(dfDStar) - 1));
        }
        const double dfLeast = 0.02;  // spots on a detector never agree better than this
        if (!listOff.empty()) {
            const double dfSeen = 1.4826 * median(listOff), dfNoise = median(listNoise);
            m_dfSpread = std::sqrt(std::max(dfLeast * dfLeast, dfSeen * dfSeen - dfNoise * dfNoise));
        }
    }

    double at(double dfDStar) const
    {
        if (m_listPoint.empty()) {
            return 1;
        }
        if (dfDStar <= m_listPoint.front().first) {
            return m_listPoint.front().second;
        }
        for (size_t n = 1; n < m_listPoint.size(); ++n) {
            if (dfDStar <= m_listPoint[n].first) {
                const double dfPart = (dfDStar - m_listPoint[n - 1].first) /
                                      std::max(m_listPoint[n].first - m_listPoint[n - 1].first, 1e-12);
                return m_listPoint[n - 1].second +
                       dfPart * (m_listPoint[n].second - m_listPoint[n - 1].second);
            }
        }
        return m_listPoint.back().second;
    }
    double spread() const { return m_dfSpread; }

private:
    std::vector<std::pair<double, double>> m_listPoint;
    double m_dfSpread = 0;
};

}  // namespace

void chooseMeasures(const std::vector<PassageMeasure>& listMeasure, bool bProfileFit,
                    std::vector<Observation>& listObservation)
{
    const CFitRatio ratio(listMeasure, listObservation);
    const double dfFar = 8;  // in spreads of the ratio and in sigmas
    for (size_t n = 0; n < listMeasure.size(); ++n) {
        const PassageMeasure& measure = listMeasure[n];
        Observation& observation = listObservation[n];
        const double dfRatio = ratio.at(observation.dfDStar);
        // For strong reflections the errors of profile and rocking curve exceed the noise.
        const double dfFit = measure.dfFit / dfRatio;
        const double dfFitSigma = std::hypot(measure.dfFitSigma / dfRatio, ratio.spread() * dfFit);
        const bool bWeak = measure.dfFitSigma > 0 && dfFitSigma < measure.dfSumSigma;
        observation.bProfileFit = bProfileFit && bWeak;
        observation.dfIntensity = observation.bProfileFit ? dfFit : measure.dfSum;
        observation.dfSigma = observation.bProfileFit ? dfFitSigma : measure.dfSumSigma;
        const double dfOff = std::abs(dfFit - measure.dfSum);
        if (!bWeak && measure.dfFitSigma > 0 && ratio.spread() > 0 &&
            dfOff > dfFar * std::hypot(ratio.spread() * measure.dfSum, measure.dfSumSigma)) {
            observation.nFlags |= FlagBadProfile;
        }
        if (!std::isfinite(observation.dfIntensity) || !std::isfinite(observation.dfSigma)) {
            observation.nFlags |= FlagNotFinite;
            observation.dfIntensity = observation.dfSigma = 0;
        }
    }
}

}  // namespace tessera
