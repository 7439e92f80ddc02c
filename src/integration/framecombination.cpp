#include "integration/framecombination.h"

#include "integration/reflectionflags.h"
#include "integration/rockingfit.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tessera {

namespace {

// A frame that recorded a smaller fraction of the rocking curve hardly changes the intensity, so that its
// defects do not exclude the observation.
const double g_dfLeastPartForFlags = 0.01;
// With a smaller fraction recorded, the whole intensity would be more extrapolated than measured.
const double g_dfLeastRecorded = 0.1;
// A reflection of so many sigmas is strong: its rocking curve determines its own centre, and its ratio of fit
// to sum is known to some per cent.
const double g_dfStrong = 15;

/// Sums over the frames of a passage.
///
/// A frame that records the part p of the whole intensity I has a fit f = p·I with the variance σ², from the
/// background alone. The least-squares estimate of I is Σ w·f / Σ w·p with w = p/σ², and its variance is
/// 1 / Σ w·p. To this the counts of the spot itself add gain · I · Σ w²·p·share / (Σ w·p)², where gain · p ·
/// I · share is what they add to σ² (SpotMeasure::dfFitShare).
struct Totals {
    double dfSum = 0;         // counts in the discs above the background
    double dfVariance = 0;    // of that sum without the counts of the spot itself, counts²
    double dfRecorded = 0;    // fraction of the whole spot and rocking curve
    double dfBackground = 0;  // counts per pixel, summed over the frames
    int nFrames = 0;
    double dfFit = 0;        // Σ w·f
    double dfFitWeight = 0;  // Σ w·p; 0 if there is no fit
    double dfFitShare = 0;   // Σ w²·p·share
};

Totals totalsOf(const std::vector<SpotMeasure>& listMeasure)
{
    Totals totals;
    for (const SpotMeasure& measure : listMeasure) {
        totals.dfSum += measure.dfSum;
        totals.dfVariance += measure.dfSumVariance;
        totals.dfRecorded += measure.dfPart * measure.dfInDisc;
        totals.dfBackground += measure.dfBackground;
        ++totals.nFrames;
        if (measure.dfFitVariance > 0) {
            const double dfWeight = measure.dfPart / measure.dfFitVariance;
            totals.dfFit += dfWeight * measure.dfFit;
            totals.dfFitWeight += dfWeight * measure.dfPart;
            totals.dfFitShare += dfWeight * dfWeight * measure.dfPart * measure.dfFitShare;
        }
    }
    return totals;
}

/// The median of a list that is not empty, the upper one of two. Changes the order of the list.
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
        if (measure.dfPart > g_dfLeastPartForFlags) {
            observation.nFlags |= measure.nFlags | (bBlank ? FlagBlankFrame : 0u);
        }
        if (!bBlank && measure.nBackground > 0) {
            listUsed.push_back(measure);
        }
    }
    const Totals totals = totalsOf(listUsed);
    observation.dfBackground = totals.nFrames > 0 ? totals.dfBackground / totals.nFrames : 0;
    observation.dfRecorded = std::clamp(totals.dfRecorded, 0.0, 1.0);
    if (!(totals.dfRecorded > g_dfLeastRecorded)) {
        return result;
    }
    result.dfSum = totals.dfSum / totals.dfRecorded;
    // The electrons of the spot itself have a counting noise, too: gain times counts.
    const double dfOwnVariance = noise.dfGain * std::max(totals.dfSum, 0.0);
    result.dfSumSigma = std::sqrt(totals.dfVariance + dfOwnVariance) / totals.dfRecorded;
    if (totals.dfFitWeight > 0) {
        result.dfFit = totals.dfFit / totals.dfFitWeight;
        const double dfOwnFitVariance = noise.dfGain * std::max(result.dfFit, 0.0) * totals.dfFitShare /
                                        (totals.dfFitWeight * totals.dfFitWeight);
        result.dfFitSigma = std::sqrt(1 / totals.dfFitWeight + dfOwnFitVariance);
    }
    // Where the crystal stands still, the frames sample the rocking curve at some points, and the fractions
    // that they record depend on its exact centre. In continuous rotation they integrate it.
    if (curve.rotation.kind != RotationKind::Continuous && result.dfSum > g_dfStrong * result.dfSumSigma) {
        const auto fit = fitRocking(listUsed, curve, observation.dfDStar, noise.dfGain, RockingWidth::Fixed);
        if (fit) {
            result.dfSumSigma *= fit->dfTotal / result.dfSum;  // the same relative error
            result.dfSum = fit->dfTotal;
        }
    }
    return result;
}

namespace {

/// The ratio of fits to sums as a function of d*, and its spread, from strong observations without defects: a
/// line from point to point through the medians of groups of neighbouring d*.
class CFitRatio {
public:
    CFitRatio(const std::vector<PassageMeasure>& listMeasure, const std::vector<Observation>& listObservation)
    {
        std::vector<std::pair<double, double>> list;  // d*, ratio
        std::vector<double> listNoise;                // sigma of the ratio due to that of the sum, relative
        for (size_t n = 0; n < listMeasure.size(); ++n) {
            const PassageMeasure& measure = listMeasure[n];
            if (measure.dfFitSigma > 0 && measure.dfSum > g_dfStrong * measure.dfSumSigma &&
                measure.dfFit > 0 && !(listObservation[n].nFlags & g_nExcludingFlags)) {
                list.emplace_back(listObservation[n].dfDStar, measure.dfFit / measure.dfSum);
                listNoise.push_back(measure.dfSumSigma / measure.dfSum);
            }
        }
        std::stable_sort(list.begin(), list.end());
        // At least 20 observations give a median that is better than the spread; the ratio changes so slowly
        // with d* that six groups are enough. With fewer than 20 in all there is none, and the ratio is 1.
        const size_t nGroups = std::min<size_t>(6, list.size() / 20);
        for (size_t nGroup = 0; nGroup < nGroups; ++nGroup) {
            std::vector<double> listDStar, listRatio;
            for (size_t n = nGroup * list.size() / nGroups; n < (nGroup + 1) * list.size() / nGroups; ++n) {
                listDStar.push_back(list[n].first);
                listRatio.push_back(list[n].second);
            }
            m_listPoint.emplace_back(median(listDStar), median(listRatio));
        }
        std::vector<double> listDeviation;  // from the ratio at the same d*, relative
        listDeviation.reserve(list.size());
        for (const auto& [dfDStar, dfRatio] : list) {
            listDeviation.push_back(std::abs(dfRatio / at(dfDStar) - 1));
        }
        const double dfLeast = 0.02;  // relative; spots on a detector never agree better than this
        if (!listDeviation.empty()) {
            // 1.4826 times the median of absolute deviations is the sigma of a normal distribution.
            const double dfSeen = 1.4826 * median(listDeviation), dfNoise = median(listNoise);
            m_dfSpread = std::sqrt(std::max(dfLeast * dfLeast, dfSeen * dfSeen - dfNoise * dfNoise));
        }
    }

    /// The ratio at a d*, beyond the first and the last point that of this point.
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
                // The small number is against a division by 0 where two groups have the same d*.
                const double dfPart = (dfDStar - m_listPoint[n - 1].first) /
                                      std::max(m_listPoint[n].first - m_listPoint[n - 1].first, 1e-12);
                return m_listPoint[n - 1].second +
                       dfPart * (m_listPoint[n].second - m_listPoint[n - 1].second);
            }
        }
        return m_listPoint.back().second;
    }
    /// The relative standard deviation of the ratio beyond noise; 0 without strong observations.
    double spread() const { return m_dfSpread; }

private:
    std::vector<std::pair<double, double>> m_listPoint;  ///< d* in Å⁻¹, ascending, and ratio
    double m_dfSpread = 0;
};

}  // namespace

void chooseMeasures(const std::vector<PassageMeasure>& listMeasure, bool bProfileFit,
                    std::vector<Observation>& listObservation)
{
    const CFitRatio ratio(listMeasure, listObservation);
    // A greater disagreement, in units of spread and noise together, is no chance in any series.
    const double dfFar = 8;
    for (size_t n = 0; n < listMeasure.size(); ++n) {
        const PassageMeasure& measure = listMeasure[n];
        Observation& observation = listObservation[n];
        const double dfRatio = ratio.at(observation.dfDStar);
        // The spread adds what errors of the profile do to the fit, which exceed the noise of strong
        // reflections.
        const double dfFit = measure.dfFit / dfRatio;
        const double dfFitSigma = std::hypot(measure.dfFitSigma / dfRatio, ratio.spread() * dfFit);
        const bool bFitIsBetter = measure.dfFitSigma > 0 && dfFitSigma < measure.dfSumSigma;
        observation.bProfileFit = bProfileFit && bFitIsBetter;
        observation.dfIntensity = observation.bProfileFit ? dfFit : measure.dfSum;
        observation.dfSigma = observation.bProfileFit ? dfFitSigma : measure.dfSumSigma;
        const double dfDifference = std::abs(dfFit - measure.dfSum);
        if (!bFitIsBetter && measure.dfFitSigma > 0 && ratio.spread() > 0 &&
            dfDifference > dfFar * std::hypot(ratio.spread() * measure.dfSum, measure.dfSumSigma)) {
            observation.nFlags |= FlagBadProfile;
        }
        if (!std::isfinite(observation.dfIntensity) || !std::isfinite(observation.dfSigma)) {
            observation.nFlags |= FlagNotFinite;
            observation.dfIntensity = observation.dfSigma = 0;
        }
    }
}

}  // namespace tessera
