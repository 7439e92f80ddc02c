#include "integration/seriesintegration.h"

#include "frames/framewalk.h"
#include "frames/jobsformemory.h"
#include "frames/spotsize.h"
#include "integration/expectedspots.h"
#include "integration/framecombination.h"
#include "integration/pixelmask.h"
#include "integration/reflectionflags.h"
#include "integration/resolutionlimit.h"
#include "integration/seriesframes.h"
#include "integration/spotlearning.h"
#include "records/runends.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tessera {

namespace {

const double g_dfSeen = 3;  // sigmas; a series without any such reflection has nothing to merge

using MeasuredFrame = std::vector<std::pair<int, SpotMeasure>>;

/// Why a series cannot be integrated; empty if it can.
QString whatIsMissing(const DataSet& dataSet, const SeriesGeometry& series)
{
    if (dataSet.m_listFrameFile.isEmpty()) {
        return QStringLiteral("There are no frames to integrate.");
    }
    if (series.frameCount() != dataSet.m_listFrameFile.size() ||
        series.listBeam.size() != series.listTilt.size()) {
        return QStringLiteral("The geometry is that of %L1 frames, and the series has %L2.")
            .arg(series.frameCount())
            .arg(dataSet.m_listFrameFile.size());
    }
    if (series.frameCount() < 3) {
        return QStringLiteral(
                   "%L1 frames are too few to integrate: no reflection crosses the Ewald sphere "
                   "within them.")
            .arg(series.frameCount());
    }
    if (series.sizeFrame.isEmpty()) {
        return QStringLiteral("None of the frames can be read.");
    }
    if (series.sizeFrame.width() < 32 || series.sizeFrame.height() < 32) {
        return QStringLiteral("Frames of %1 × %2 pixels are too small to integrate.")
            .arg(series.sizeFrame.width())
            .arg(series.sizeFrame.height());
    }
    if (!(series.geometry.dfWavelength > 0) || !(series.geometry.dfPixelSize > 0)) {
        return QStringLiteral("Wavelength and pixel size must be known to integrate.");
    }
    return {};
}

/// Which flags exclude the observations, and how many each.
QString whyNone(const std::vector<Observation>& listObservation)
{
    QStringList listReason;
    for (unsigned nFlag = FlagSlow; nFlag <= FlagNotFinite; nFlag <<= 1) {
        const auto nCount = std::count_if(
            listObservation.begin(), listObservation.end(),
            [&](const Observation& observation) { return (observation.nFlags & nFlag) != 0; });
        if (nCount > 0) {
            listReason.append(
                QStringLiteral("%1 %2").arg(nCount).arg(reflectionFlagName(ReflectionFlag(nFlag))));
        }
    }
    return QStringLiteral("None of %L1 predicted reflections can be measured: %2.")
        .arg(listObservation.size())
        .arg(listReason.join(QStringLiteral(", ")));
}

PredictionOptions predictionOf(const LearnedSeries& learned, const IntegrationOptions& options)
{
    PredictionOptions prediction;
    prediction.dfMaxDStar = options.dfMaxDStar;
    prediction.dfRockingWidth = learned.curve.dfWidth;
    prediction.dfMosaicity = learned.curve.dfMosaicity;
    // This includes errors of orientation and tilts.
    prediction.dfRockingReach = learned.dfReach +
                                std::min(learned.model.dfRockingOff / learned.curve.dfWidth, 2.0);
    prediction.dfDiscRadius = learned.model.dfDiscRadius;
    prediction.chCentring = options.chCentring;
    prediction.bBeyondEnds = true;
    return prediction;
}

/// The second pass: measures the frames, and combines the frames of each passage once it has ended.
class CSeriesSum {
public:
    CSeriesSum(const DataSet& dataSet, const CPassageGeometry& passages, const LearnedSeries& learned,
               const PredictionOptions& prediction, const std::vector<char>& listMask, int nJobs)
        : m_passages(passages),
          m_learned(learned),
          m_frames(dataSet, passages.series().sizeFrame),
          m_listObservation(predictObservations(passages, prediction, nJobs)),
          m_expected(passages, m_listObservation, learned.curve, learned.correction),
          m_listMeasure(m_listObservation.size())
    {
        m_settings.dfRadius = learned.model.dfDiscRadius;
        m_settings.noise = learned.noise;
        m_settings.pProfile = &*learned.profile;
        m_settings.pMask = &listMask;
        m_settings.dfSaturation = learned.model.dfSaturation;
    }

    RunOutcome run(int nJobs, CRunReport& report)
    {
        CFrameWalk walk(m_passages.frameCount(), StopAsked::AfterEachFrame, report);
        walk.showProgress(ProgressPlace::TaskBarToo);
        const auto makeWorker = [this] {
            return [this, measurer = CSpotMeasurer(m_settings)](int nFrame) mutable {
                return measureFrame(nFrame, measurer);
            };
        };
        return walk.runAhead<MeasuredFrame>(nJobs, makeWorker,
                                            [this](int nFrame, const MeasuredFrame& measured) {
                                                take(nFrame, measured);
                                                return true;
                                            });
    }

    /// The observations that cross within a range of frames.
    /// @param nFirst, nLast  frame numbers
    std::vector<Observation> observations(bool bProfileFit)
    {
        chooseMeasures(m_listMeasure, bProfileFit, m_listObservation);
        std::vector<Observation> list;
        const double dfLast = m_passages.frameCount() - 0.5;
        for (const Observation& observation : m_listObservation) {
            if (observation.dfFrame >= -0.5 && observation.dfFrame <= dfLast) {
                list.push_back(observation);
            }
        }
        return list;
    }

private:
    MeasuredFrame measureFrame(int nFrame, CSpotMeasurer& measurer) const
    {
        MeasuredFrame measured;
        const std::vector<ExpectedSpot> listExpected = m_expected.onFrame(nFrame);
        const SeriesFrame frame = m_frames.read(nFrame);
        if (frame.pImage) {
            measurer.beginFrame(*frame.pImage, listExpected);
        }
        for (const ExpectedSpot& expected : listExpected) {
            SpotMeasure measure;
            measure.nFrame = nFrame;
            measure.dfPart = expected.dfPart;
            if (frame.pImage) {
                measure = measurer.measure(expected, nFrame);
            }
            measured.emplace_back(expected.nObservation, measure);
        }
        return measured;
    }

    void take(int nFrame, const MeasuredFrame& measured)
    {
        for (const auto& [nObservation, measure] : measured) {
            m_mapActive[nObservation].push_back(measure);
            if (m_listObservation[nObservation].nLastFrame == nFrame) {
                finish(nObservation);
            }
        }
    }

    void finish(int nObservation)
    {
        Observation& observation = m_listObservation[nObservation];
        m_listMeasure[nObservation] = combineFrames(m_mapActive[nObservation], m_learned.listBlank,
                                                    m_learned.noise, m_learned.curve, observation);
        m_mapActive.erase(nObservation);
        const int nFrame = std::clamp(int(std::lround(observation.dfFrame)), 0, m_passages.frameCount() - 1);
        const FramePlace& beam = m_passages.series().listBeam[nFrame];
        observation.place = m_learned.correction.corrected(nFrame, observation.place);
        if (std::hypot(observation.place.dfX - beam.dfX, observation.place.dfY - beam.dfY) <
            m_learned.dfGlow) {
            observation.nFlags |= FlagNearBeam;
        }
    }

    const CPassageGeometry& m_passages;
    const LearnedSeries& m_learned;
    const CSeriesFrames m_frames;
    std::vector<Observation> m_listObservation;
    const CExpectedSpots m_expected;
    std::vector<PassageMeasure> m_listMeasure;
    std::map<int, std::vector<SpotMeasure>> m_mapActive;
    MeasureSettings m_settings;
};

/// The saturation level and its source, for the log.
QString fullText(const SpotModel& model)
{
    const QString strFull = QStringLiteral("full at %1 counts").arg(model.dfSaturation, 0, 'f', 0);
    if (!(model.trusted.dfSaturation > 0)) {
        return strFull;
    }
    return model.dfSaturation < model.trusted.dfSaturation
               ? QStringLiteral("%1, by a plateau below the %2 given by the frames (%3)")
                     .arg(strFull)
                     .arg(model.trusted.dfSaturation, 0, 'f', 0)
                     .arg(model.trusted.strSource)
               : QStringLiteral("%1, as given by the frames (%2)").arg(strFull, model.trusted.strSource);
}

void tellModel(const LearnedSeries& learned, CRunReport& report)
{
    const SpotModel& model = learned.model;
    report.addMessage(
        QStringLiteral("Determined from %L1 strong reflections: spots %2 pixels wide (sigma; %3 at the "
                       "edge), discs of %4 pixels, rocking width %5 Å⁻¹ and %6°, summed to %8 widths; "
                       "remaining deviation of the positions %7 pixels.")
            .arg(model.nStrong)
            .arg(model.dfSigma, 0, 'f', 2)
            .arg(model.dfSigmaAtEdge, 0, 'f', 2)
            .arg(model.dfDiscRadius, 0, 'f', 2)
            .arg(model.dfRockingWidth, 0, 'f', 5)
            .arg(model.dfMosaicity, 0, 'f', 3)
            .arg(learned.correction.rest(), 0, 'f', 2)
            .arg(learned.dfReach, 0, 'f', 1));
    report.addMessage(
        QStringLiteral(
            "Detector: %1 counts per electron, read noise %2, %3; the halo of the beam extends to %4 pixels.")
            .arg(model.dfGain, 0, 'f', 3)
            .arg(model.dfReadNoise, 0, 'f', 2)
            .arg(model.dfSaturation > 0 ? fullText(model) : QStringLiteral("no pixel full"))
            .arg(learned.dfGlow, 0, 'f', 0));
    QStringList listBlank;
    for (size_t n = 0; n < learned.listBlank.size(); ++n) {
        if (learned.listBlank[n]) {
            listBlank.append(QString::number(n + 1));
        }
    }
    if (!listBlank.isEmpty()) {
        report.addMessage(QStringLiteral("Blank frames: #%1.").arg(listBlank.join(QStringLiteral(", #"))),
                          Severity::Warning);
    }
}

/// Why there are no intensities to go on with; empty if there are.
QString whatObservationsLack(const std::vector<Observation>& list)
{
    if (list.empty()) {
        return QStringLiteral("No reflection crosses the Ewald sphere during the series.");
    }
    const auto isMeasurement = [](const Observation& observation) {
        return observation.isMeasured() && !(observation.nFlags & g_nExcludingFlags);
    };
    if (!std::any_of(list.begin(), list.end(), isMeasurement)) {
        return whyNone(list);
    }
    const bool bAbove = std::any_of(list.begin(), list.end(), [&](const Observation& observation) {
        return isMeasurement(observation) && observation.dfIntensity > g_dfSeen * observation.dfSigma;
    });
    return bAbove ? QString()
                  : QStringLiteral("None of %L1 predicted reflections is above its background.")
                        .arg(list.size());
}

/// Removes the observations beyond the resolution limit: that of the options, or else that of the data.
void limitResolution(double dfMaxDStar, IntegratedSeries& integrated)
{
    std::vector<Observation>& list = integrated.listObservation;
    integrated.dfMaxDStar = dfMaxDStar > 0 ? dfMaxDStar : resolutionLimit(list);
    list.erase(std::remove_if(list.begin(), list.end(),
                              [&](const Observation& one) { return one.dfDStar > integrated.dfMaxDStar; }),
               list.end());
}

}  // namespace

RunResult<IntegratedSeries> integrateSeries(const DataSet& dataSet, const SeriesGeometry& series,
                                            const IntegrationOptions& options, int nMostJobs,
                                            CRunReport& report)
{
    const QString strMissing = whatIsMissing(dataSet, series);
    if (!strMissing.isEmpty()) {
        return refuseRun(report, strMissing);
    }
    const CPassageGeometry passages(series);
    PredictionOptions furthest;
    furthest.dfMaxDStar = options.dfMaxDStar;
    const QString strTooMuch = whyNotPredicted(passages, furthest);
    if (!strTooMuch.isEmpty()) {
        return refuseRun(report, strTooMuch);
    }
    // Per thread the frame and its discs; once the mask and the lists of the series.
    const FrameMemory memory{6, 2};
    const int nJobs = jobsForMemory(SeriesSnapshot(dataSet), nMostJobs, memory, &report);
    const MeasuredSpotSize measured = measureSpotSize(dataSet, report, nJobs);
    if (!measured.outcome.finished()) {
        return measured.outcome;
    }
    const double dfUsualSigma = 1.5;  // pixels, used if there are no clear spots
    const std::vector<char> listMask = pixelMask(series.sizeFrame, dataSet.m_maskPeakHunting,
                                                 dataSet.m_listHotPixel);
    const double dfSigma = measured.size ? measured.size->dfSigma : dfUsualSigma;
    const RunResult<LearnedSeries> learning = learnSpots(dataSet, passages, options, dfSigma, listMask, nJobs,
                                                         report);
    if (!learning.finished()) {
        return learning.outcome;
    }
    const LearnedSeries& learned = *learning.made;
    tellModel(learned, report);
    CSeriesSum sum(dataSet, passages, learned, predictionOf(learned, options), listMask, nJobs);
    const RunOutcome outcome = sum.run(nJobs, report);
    if (!outcome.finished()) {
        return outcome;
    }
    IntegratedSeries integrated;
    integrated.model = learned.model;
    integrated.listObservation = sum.observations(options.bProfileFit);
    const QString strLack = whatObservationsLack(integrated.listObservation);
    if (!strLack.isEmpty()) {
        return failRun(report, strLack);
    }
    limitResolution(options.dfMaxDStar, integrated);
    report.addMessage(QStringLiteral("%L1 passages integrated to d* = %2 Å⁻¹.")
                          .arg(integrated.listObservation.size())
                          .arg(integrated.dfMaxDStar, 0, 'f', 3));
    return integrated;
}

}  // namespace tessera
