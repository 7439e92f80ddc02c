#include "integration/spotlearning.h"

#include "frames/framewalk.h"
#include "integration/spotlook.h"
#include "records/runends.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>

namespace tessera {

namespace {

// Å⁻¹; four of these on either side are looked at, as crystals have 0.002 to 0.015.
const double g_dfStartWidth = 0.006;
const double g_dfStartReach = 4;

/// Gathers the measurements of the frames, in their order.
class CSpotLearner {
public:
    CSpotLearner(const CPassageGeometry& passages, const std::vector<Observation>& listObservation,
                 const RockingCurve& start, int nHalf)
        : m_passages(passages),
          m_listObservation(listObservation),
          m_start(start),
          m_profile(passages.series().sizeFrame, nHalf)
    {}

    void take(int nFrame, const LookedFrame& looked)
    {
        m_listCounts.push_back(looked.counts);
        for (const LookedSpot& spot : looked.listSpot) {
            takeSpot(nFrame, spot);
        }
        for (const SpotWindow& window : looked.listWindow) {
            m_profile.add(window.dfX, window.dfY, window.pixels.nLeft, window.pixels.nTop,
                          window.pixels.listPixel);
        }
    }

    LearnedSeries learn(const IntegrationOptions& options, double dfStartSigma);

private:
    struct Active {
        std::vector<SpotMeasure> listMeasure;
        bool bStrong = false;
    };

    void takeSpot(int nFrame, const LookedSpot& spot)
    {
        const Observation& observation = m_listObservation[spot.nObservation];
        const SpotMeasure& measure = spot.measure;
        if (measure.nBackground >= 40 && !spot.bStrong) {
            m_listPatch.push_back({measure.dfBackground, measure.dfDifference});
        }
        if (spot.bStrong) {
            m_listOffset.push_back({nFrame, spot.place, {measure.dfOffX, measure.dfOffY}});
            m_listSigma.push_back({observation.dfDStar, measure.dfSigma});
        }
        Active& active = m_mapActive[spot.nObservation];
        active.listMeasure.push_back(measure);
        active.bStrong = active.bStrong || spot.bStrong;
        if (nFrame == observation.nLastFrame) {
            finishSpot(observation, active);
            m_mapActive.erase(spot.nObservation);
        }
    }

    /// Fits the rocking curve of a strong reflection that was recorded completely and in fine steps.
    void finishSpot(const Observation& observation, const Active& active)
    {
        if (!active.bStrong || (observation.nFlags & g_nExcludingFlags)) {
            return;
        }
        // Other reflections may overlap with its tails, but not with its centre.
        std::vector<SpotMeasure> listMeasure;
        for (const SpotMeasure& measure : active.listMeasure) {
            if (!(measure.nFlags & g_nUnfitFlags)) {
                listMeasure.push_back(measure);
            } else if (std::abs(measure.dfExcitation[1]) < 2 * m_start.dfWidth) {
                return;
            }
        }
        const auto fit = fitRocking(listMeasure, m_start, observation.dfDStar, 1, RockingWidth::Fitted);
        const SpotMeasure& middle = active.listMeasure[active.listMeasure.size() / 2];
        const double dfStep = std::abs(middle.dfExcitation[2] - middle.dfExcitation[0]);
        if (fit && fit->dfMisfit < 0.15 && dfStep < 2.5 * fit->dfWidth) {
            m_listWidth.push_back({observation.dfDStar, fit->dfWidth});
            m_listMiddle.push_back(fit->dfOff);
            m_listTail.push_back(tailOf(listMeasure, *fit));
        }
    }

    /// The fraction of the counts on frames that are entirely more than three widths from the centre.
    double tailOf(const std::vector<SpotMeasure>& listMeasure, const RockingFit& fit) const
    {
        double dfTail = 0, dfTotal = 0;
        for (const SpotMeasure& measure : listMeasure) {
            const double dfNearest = std::min(std::abs(measure.dfExcitation[0] - fit.dfOff),
                                              std::abs(measure.dfExcitation[2] - fit.dfOff));
            dfTail += dfNearest > 3 * fit.dfWidth ? measure.dfSum : 0;
            dfTotal += measure.dfSum;
        }
        return dfTail / dfTotal;
    }

    const CPassageGeometry& m_passages;
    const std::vector<Observation>& m_listObservation;
    const RockingCurve m_start;
    CLearnedProfile m_profile;
    std::map<int, Active> m_mapActive;
    std::vector<FrameCounts> m_listCounts;
    std::vector<BackgroundPatch> m_listPatch;
    std::vector<SpotOffset> m_listOffset;
    std::vector<WidthAtDStar> m_listSigma, m_listWidth;
    std::vector<double> m_listMiddle, m_listTail;
};

double medianOr(std::vector<double> list, double dfElse)
{
    if (list.empty()) {
        return dfElse;
    }
    const auto middle = list.begin() + std::ptrdiff_t(list.size() / 2);
    std::nth_element(list.begin(), middle, list.end());
    return *middle;
}

std::vector<double> widthsOf(const std::vector<WidthAtDStar>& list)
{
    std::vector<double> listWidth;
    listWidth.reserve(list.size());
    for (const WidthAtDStar& one : list) {
        listWidth.push_back(one.dfWidth);
    }
    return listWidth;
}

/// The smallest radius that contains nearly all of a spot. Tails beyond three sigmas are left to the
/// correction, as summing them would add more noise than signal.
double discRadius(const CLearnedProfile& profile, double dfSigma)
{
    double dfRadius = 2 * dfSigma;
    while (dfRadius < 3.2 * dfSigma && profile.within(dfRadius) < 0.985) {
        dfRadius += 0.05;
    }
    return std::max(dfRadius, 1.5);
}

LearnedSeries CSpotLearner::learn(const IntegrationOptions& options, double dfStartSigma)
{
    LearnedSeries learned;
    SpotModel& model = learned.model;
    const QSize size = m_passages.series().sizeFrame;
    learned.noise = noiseOfBackgrounds(m_listPatch);
    model.dfGain = learned.noise.dfGain;
    model.dfReadNoise = learned.noise.readNoise();
    model.nStrong = int(m_listWidth.size());
    model.dfSigma = medianOr(widthsOf(m_listSigma), dfStartSigma);
    RockingCurve spot;
    spot.dfWidth = model.dfSigma;
    learnWidth(m_listSigma, spot);
    double dfFarthest = 0;
    for (const WidthAtDStar& one : m_listSigma) {
        dfFarthest = std::max(dfFarthest, one.dfDStar);
    }
    model.dfSigmaAtEdge = spot.widthAt(dfFarthest);

    m_profile.finish(model.dfSigma);
    learned.correction = CSpotOffsets(m_listOffset, m_passages.frameCount(),
                                      std::max(size.width(), size.height()));
    model.dfDiscRadius = options.dfDiscRadius > 0 ? options.dfDiscRadius
                                                  : discRadius(m_profile, model.dfSigma);
    learned.profile = m_profile;

    learned.curve = m_start;
    learnWidth(m_listWidth, learned.curve);
    std::vector<double> listOff;
    for (const double df : m_listMiddle) {
        listOff.push_back(std::abs(df));
    }
    if (options.dfRockingWidth > 0) {
        learned.curve.dfWidth = options.dfRockingWidth;
        learned.curve.dfMosaicity = 0;
    }
    model.dfRockingWidth = learned.curve.dfWidth;
    model.dfMosaicity = learned.curve.dfMosaicity;
    model.dfRockingOff = 1.4826 * medianOr(listOff, 0);

    // If rocking curves have tails beyond a Gaussian, summation extends by one width for each per cent in the
    // tails.
    const double dfTail = m_listTail.size() >= 50 ? medianOr(m_listTail, 0) : 0;
    learned.dfReach = 3 + std::clamp(100 * (dfTail - 0.005), 0.0, 3.0);

    model.trusted = options.trusted;
    model.dfSaturation = fullFrom(options.trusted.dfSaturation, saturationOf(m_listCounts));
    learned.listBlank = blankFrames(m_listCounts);
    learned.dfGlow = glowRadius(m_listCounts, model.dfDiscRadius, model.dfGain);
    return learned;
}

}  // namespace

namespace {

/// The usual reach, or less if lattice points are so close that neighbours along the beam would overlap in
/// the rocking direction.
double startWidth(const DiffractionGeometry& geometry)
{
    double dfClosest = 1e30;
    for (int n = 1; n < 27; ++n) {  // combinations of -1, 0, 1; number 13 is 000
        const std::array<int, 3> anIndex = {n % 3 - 1, n / 3 % 3 - 1, n / 9 - 1};
        DoubleVector point = {};
        for (size_t m = 0; m < 9; ++m) {
            point[m % 3] += anIndex[m / 3] * geometry.aBasis[m / 3][m % 3];
        }
        const double dfLength = std::sqrt(dot(point, point));
        dfClosest = n == 13 ? dfClosest : std::min(dfClosest, dfLength);
    }
    return std::min(g_dfStartWidth, dfClosest / 6);
}

/// The distance to the nearest other spot that nine of ten spots exceed, pixels; 0 without spots.
double closestDistance(const CPassageGeometry& passages, PredictionOptions prediction,
                       const RockingCurve& curve, int nJobs)
{
    prediction.dfRockingWidth = curve.dfWidth;
    prediction.dfMosaicity = curve.dfMosaicity;
    prediction.dfRockingReach = 2;  // neighbours with hardly any intensity need no room
    const std::vector<Observation> list = predictObservations(passages, prediction, nJobs);
    const CExpectedSpots expected(passages, list, curve, {});
    std::vector<double> listClosest;
    for (int nFrame = 0; nFrame < passages.frameCount(); nFrame += std::max(1, passages.frameCount() / 10)) {
        std::vector<FramePlace> listPlace;
        for (const ExpectedSpot& spot : expected.onFrame(nFrame)) {
            listPlace.push_back(spot.place);
        }
        for (size_t n = 0; n < listPlace.size() && listPlace.size() > 1; ++n) {
            double dfClosest = 1e30;
            for (size_t m = 0; m < listPlace.size(); ++m) {
                const double dfX = listPlace[m].dfX - listPlace[n].dfX,
                             dfY = listPlace[m].dfY - listPlace[n].dfY;
                dfClosest = n == m ? dfClosest : std::min(dfClosest, dfX * dfX + dfY * dfY);
            }
            listClosest.push_back(std::sqrt(dfClosest));
        }
    }
    if (listClosest.empty()) {
        return 0;
    }
    const auto tenth = listClosest.begin() + std::ptrdiff_t(listClosest.size() / 10);
    std::nth_element(listClosest.begin(), tenth, listClosest.end());
    return *tenth;
}

}  // namespace

RunResult<LearnedSeries> learnSpots(const DataSet& dataSet, const CPassageGeometry& passages,
                                    const IntegrationOptions& options, double dfStartSigma,
                                    const std::vector<char>& listMask, int nJobs, CRunReport& report)
{
    PredictionOptions prediction;
    prediction.dfMaxDStar = options.dfMaxDStar;
    prediction.dfRockingWidth = startWidth(passages.series().geometry);
    prediction.dfRockingReach = g_dfStartReach;
    prediction.chCentring = options.chCentring;
    prediction.bBeyondEnds = true;
    prediction.dfDiscRadius = 3.2 * dfStartSigma;
    const std::vector<Observation> listObservation = predictObservations(passages, prediction, nJobs);
    if (listObservation.empty()) {
        return failRun(report, QStringLiteral("No reflection crosses the Ewald sphere during the series."));
    }
    const RockingCurve start = rockingCurveOf(prediction, passages.series().rotation);
    const CExpectedSpots expected(passages, listObservation, start, {});
    const CSeriesFrames frames(dataSet, passages.series().sizeFrame);
    MeasureSettings settings;
    settings.dfRadius = prediction.dfDiscRadius;
    settings.pMask = &listMask;
    settings.dfSaturation = options.trusted.dfSaturation;
    const int nHalf = int(std::ceil(4.5 * dfStartSigma));

    // A sample of the reflections suffices: 200 on a frame.
    const int nEvery = 1 + int(expected.spotCount() / (200 * passages.frameCount()));

    CSpotLearner learner(passages, listObservation, start, nHalf);
    CFrameWalk walk(passages.frameCount(), StopAsked::AfterEachFrame, report);
    walk.showProgress(ProgressPlace::TaskBarToo);
    const auto makeWorker = [&] {
        return [&, look = CSpotLook(frames, expected, passages, settings, nHalf, nEvery)](
                   int nFrame) mutable { return look.look(nFrame); };
    };
    int nUnread = 0;
    const RunOutcome outcome = walk.runAhead<LookedFrame>(
        nJobs, makeWorker, [&](int nFrame, const LookedFrame& looked) {
            if (!looked.strFault.isEmpty() && ++nUnread <= 3) {
                report.addMessage(
                    QStringLiteral("Frame #%L1 is left out: %2").arg(nFrame + 1).arg(looked.strFault),
                    Severity::Warning);
            }
            learner.take(nFrame, looked);
            return true;
        });
    if (!outcome.finished()) {
        return outcome;
    }
    if (nUnread == passages.frameCount()) {
        return failRun(report, QStringLiteral("None of the frames can be read."));
    }
    LearnedSeries learned = learner.learn(options, dfStartSigma);
    const double dfClosest = closestDistance(passages, prediction, learned.curve, nJobs);
    double& dfRadius = learned.model.dfDiscRadius;
    if (options.dfDiscRadius <= 0 && dfClosest > 0) {
        // Discs must not overlap; the profile corrects for what a narrow disc leaves out.
        dfRadius = std::min(dfRadius, std::max(dfClosest / 2, 1.7 * learned.model.dfSigma));
    }
    return learned;
}

}  // namespace tessera
