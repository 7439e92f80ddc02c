// Intensities of simulated series against their truth, the flags, and what cannot be integrated.
#include "integration/passagegeometry.h"
#include "simulate/frameimage.h"
#include "simulate/framewriter.h"
#include "simulate/spotprofile.h"
#include "tests/integration/simulatedintegration.h"

#include <QFile>

#include <cstring>

namespace tessera {

namespace {

const Observation* find(const IntegratedSeries& integrated, const std::array<int, 3>& anIndex)
{
    for (const Observation& o : integrated.listObservation) {
        if (o.anIndex == anIndex) {
            return &o;
        }
    }
    return nullptr;
}

/// The strongest without a flag that crosses some frames from both ends.
Observation strongest(const IntegratedSeries& integrated)
{
    Observation best;
    for (const Observation& o : integrated.listObservation) {
        if (o.nFlags == 0 && o.dfIntensity > best.dfIntensity && o.dfFrame > 15 && o.dfFrame < 60) {
            best = o;
        }
    }
    return best;
}

void overwrite(const CSimulatedFrames& frames, int nFrame, const std::vector<float>& listPixel)
{
    const SimulationParameters& p = frames.m_series.parameters;
    EXPECT_EQ(writeFrame(frames.m_data.m_listFrameFile[nFrame], listPixel, p.nSize, p.nSize, p.format),
              QString());
}

void expectGood(const CSimulatedFrames& frames, const IntegratedSeries& result, const char* pszWhat)
{
    const Agreement agreement = agreementWithTruth(result, frames.m_series);
    EXPECT_GE(agreement.dfCorrelation, 0.998) << pszWhat;
    EXPECT_LE(agreement.dfR, 0.06) << pszWhat;
    EXPECT_GE(agreement.dfChi, 0.7) << pszWhat;
    EXPECT_LE(agreement.dfChi, 1.5) << pszWhat;
    EXPECT_GE(agreement.nMeasured, 0.97 * agreement.nCrossed) << pszWhat;
    EXPECT_GE(agreement.nMeasured, 60) << pszWhat;
}

/// Counts of spots of a crystal that stands still, from its own formula, in place of those of one that turns.
void standStill(CSimulatedFrames& frames, double dfPrecession)
{
    const SimulationParameters& p = frames.m_series.parameters;
    const CStructureFactor crystal(*findCrystalStructure(p.strCrystal));
    for (auto& listSpot : frames.m_series.listDrawn) {
        for (TruthSpot& spot : listSpot) {
            const Vector3 g = Vector3{double(spot.nH), double(spot.nK), double(spot.nL)} *
                              frames.m_series.matBasis;
            const double dfWidth = std::hypot(p.dfRocking, radians(p.dfMosaicity) * lengthOf(g));
            double dfMean = 0;
            for (int n = 0; n < 720; ++n) {
                const double x = spot.dfExcitation +
                                 radians(dfPrecession) * lengthOf(g) * std::cos(radians(n / 2.0));
                dfMean += std::exp(-x * x / (2 * dfWidth * dfWidth)) / 720;
            }
            spot.dfCounts = 400 * std::norm(crystal.value(spot.nH, spot.nK, spot.nL)) * dfMean;
        }
    }
    frames.m_geometry.rotation = dfPrecession > 0 ? RotationMode{RotationKind::Precession, dfPrecession}
                                                  : RotationMode{RotationKind::Stepped, 0};
}

}  // namespace

TEST(SeriesIntegration, MeasuresWhatTheSimulatorDrew)
{
    CSimulatedFrames frames(smallCrystal());
    frames.write();
    IntegratedSeries result;
    ASSERT_TRUE(integrated(frames, result).finished());
    expectGood(frames, result, "continuous");
    EXPECT_NEAR(result.model.dfSigma, 1.5, 0.05);
    EXPECT_NEAR(result.model.dfRockingWidth, 0.005, 0.0004);
    EXPECT_NEAR(result.model.dfGain, 1, 0.2);
    EXPECT_EQ(result.model.dfSaturation, 0);
    EXPECT_GT(result.model.nStrong, 20);
    EXPECT_TRUE(std::is_sorted(
        result.listObservation.begin(), result.listObservation.end(),
        [](const Observation& one, const Observation& other) { return one.dfFrame < other.dfFrame; }));
    // Absences of 41/amd come out around 0, as often below as above.
    int nBelow = 0, nAbsent = 0;
    for (const Observation& o : result.listObservation) {
        if ((o.anIndex[0] + o.anIndex[1] + o.anIndex[2]) % 2 != 0 && o.nFlags == 0) {
            ++nAbsent;
            nBelow += o.dfIntensity < 0 ? 1 : 0;
        }
    }
    EXPECT_GT(nAbsent, 30);
    EXPECT_NEAR(nBelow, nAbsent / 2.0, 1.5 * std::sqrt(nAbsent));
}

TEST(SeriesIntegration, DoesSoWithPlacesThatAreALittleOffAndOtherFrames)
{
    // A pattern off its beam and distorted; fewer counts on narrow spots.
    SimulationParameters p = smallCrystal();
    p.dfWander = 1.0;
    p.lens.dfRadial = -0.6;
    CSimulatedFrames distorted(p);
    distorted.write();
    IntegratedSeries result;
    ASSERT_TRUE(integrated(distorted, result).finished());
    expectGood(distorted, result, "distorted");

    p = smallCrystal();
    p.dfExposure = 600;
    p.dfSpotSigma = 1.1;
    p.format = SimulatedFormat::MrcFloat;
    CSimulatedFrames weak(p);
    weak.write();
    ASSERT_TRUE(integrated(weak, result).finished());
    expectGood(weak, result, "weak");

    // Eight bits: a grey step is four counts, so that most of the background is rounding.
    p = smallCrystal();
    p.dfExposure = 2000;
    p.format = SimulatedFormat::Png8;
    CSimulatedFrames grey(p);
    grey.write();
    ASSERT_TRUE(integrated(grey, result).finished());
    const Agreement agreement = agreementWithTruth(result, grey.m_series);
    EXPECT_GE(agreement.dfCorrelation, 0.995);
    EXPECT_LE(agreement.dfR, 0.08);
    EXPECT_NEAR(agreement.dfChi, 1.1, 0.4);
    EXPECT_EQ(result.model.dfSaturation, 64 * 255);  // what readers make of white
}

TEST(SeriesIntegration, FitsTheCurveWhereTheCrystalStandsStill)
{
    for (const double dfPrecession : {0.0, 0.4}) {
        CSimulatedFrames frames(smallCrystal());
        standStill(frames, dfPrecession);
        frames.write();
        IntegratedSeries result;
        ASSERT_TRUE(integrated(frames, result).finished());
        const Agreement agreement = agreementWithTruth(result, frames.m_series);
        EXPECT_GE(agreement.dfCorrelation, 0.998) << dfPrecession;
        EXPECT_LE(agreement.dfR, 0.06) << dfPrecession;
        EXPECT_GE(agreement.nMeasured, 0.97 * agreement.nCrossed) << dfPrecession;
        EXPECT_NEAR(result.model.dfRockingWidth, 0.005, 0.001) << dfPrecession;
    }
}

TEST(SeriesIntegration, FlagsWhatIsNoMeasurement)
{
    CSimulatedFrames frames(smallCrystal());
    frames.write();
    IntegratedSeries whole;
    ASSERT_TRUE(integrated(frames, whole).finished());
    const Observation spot = strongest(whole);
    const int nFrame = int(std::lround(spot.dfFrame));

    // A mask over one spot, and nothing changes elsewhere.
    const QPointF pt(spot.place.dfX, spot.place.dfY);
    frames.m_data.m_maskPeakHunting.listPolygon = {QPolygonF(QRectF(pt - QPointF(2, 2), QSizeF(4, 4)))};
    IntegratedSeries result;
    ASSERT_TRUE(integrated(frames, result).finished());
    EXPECT_TRUE(find(result, spot.anIndex)->nFlags & FlagMasked);
    EXPECT_GE(agreementWithTruth(result, frames.m_series).nMeasured,
              agreementWithTruth(whole, frames.m_series).nMeasured - 6);
    frames.m_data.m_maskPeakHunting.listPolygon.clear();

    // A blank frame in the middle of the passage, a frame with noise only, and a missing frame.
    const SimulationParameters& p = frames.m_series.parameters;
    const std::vector<float> listNothing(size_t(p.nSize) * size_t(p.nSize), 0.f);
    overwrite(frames, nFrame, listNothing);
    ASSERT_TRUE(integrated(frames, result).finished());
    EXPECT_TRUE(find(result, spot.anIndex)->nFlags & FlagBlankFrame);
    for (const Observation& o : result.listObservation) {
        EXPECT_TRUE(std::isfinite(o.dfIntensity));
        EXPECT_TRUE(std::isfinite(o.dfSigma));
        const bool bFar = o.nFirstFrame > nFrame || o.nLastFrame < nFrame;
        EXPECT_FALSE(bFar && (o.nFlags & FlagBlankFrame));
    }
    QFile::remove(frames.m_data.m_listFrameFile[nFrame]);
    CRecordingReport report;
    ASSERT_TRUE(integrated(frames, result, report).finished());
    EXPECT_TRUE(find(result, spot.anIndex)->nFlags & FlagBlankFrame);
    EXPECT_TRUE(report.said(QStringLiteral("Frame #%1 is left out").arg(nFrame + 1)))
        << report.log().toStdString();
}

TEST(SeriesIntegration, FindsWhereTheDetectorIsFull)
{
    SimulationParameters p = smallCrystal();
    p.dfSaturation = 1500;
    CSimulatedFrames frames(p);
    frames.write();
    IntegratedSeries result;
    ASSERT_TRUE(integrated(frames, result).finished());
    EXPECT_EQ(result.model.dfSaturation, 1500);
    int nFull = 0;
    for (const Observation& o : result.listObservation) {
        nFull += o.nFlags & FlagSaturated ? 1 : 0;
    }
    EXPECT_GT(nFull, 5);
    EXPECT_LT(nFull, int(result.listObservation.size()) / 2);
    const Agreement agreement = agreementWithTruth(result, frames.m_series);
    EXPECT_GE(agreement.dfCorrelation, 0.995);
    EXPECT_LE(agreement.dfChi, 1.6);
    // The given limit is above the value at which the detector saturates.
    IntegrationOptions options;
    options.trusted = {65535, QStringLiteral("type of the pixels")};
    CRecordingReport report;
    ASSERT_TRUE(integrated(frames, result, report, options).finished());
    EXPECT_EQ(result.model.dfSaturation, 1500);
    EXPECT_TRUE(report.said(QStringLiteral(
        "full at 1500 counts, by a plateau below the 65535 given by the frames (type of the pixels)")))
        << report.log().toStdString();
}

TEST(SeriesIntegration, TakesTheRangeThatTheFramesTell)
{
    CSimulatedFrames frames(smallCrystal());
    frames.write();
    IntegratedSeries whole, result;
    ASSERT_TRUE(integrated(frames, whole).finished());
    IntegrationOptions options;
    options.trusted = {1500, QStringLiteral("CutOff")};
    CRecordingReport report;
    ASSERT_TRUE(integrated(frames, result, report, options).finished());
    EXPECT_EQ(whole.model.dfSaturation, 0);
    EXPECT_EQ(result.model.dfSaturation, 1500);
    EXPECT_TRUE(report.said(QStringLiteral("full at 1500 counts, as given by the frames (CutOff)")))
        << report.log().toStdString();
    int nFull = 0;
    for (const Observation& o : result.listObservation) {
        nFull += o.nFlags & FlagSaturated ? 1 : 0;
    }
    EXPECT_GT(nFull, 5);
    EXPECT_LT(nFull, int(result.listObservation.size()) / 2);
}

TEST(SeriesIntegration, IsTheSameForAnyNumberOfJobsAndStops)
{
    CSimulatedFrames frames(smallCrystal());
    frames.write();
    IntegratedSeries one, four;
    ASSERT_TRUE(integrated(frames, one, 1).finished());
    ASSERT_TRUE(integrated(frames, four, 4).finished());
    ASSERT_EQ(one.listObservation.size(), four.listObservation.size());
    for (size_t n = 0; n < one.listObservation.size(); ++n) {
        const Observation &a = one.listObservation[n], &b = four.listObservation[n];
        EXPECT_EQ(a.anIndex, b.anIndex);
        EXPECT_EQ(std::memcmp(&a.dfIntensity, &b.dfIntensity, sizeof(double)), 0);
        EXPECT_EQ(std::memcmp(&a.dfSigma, &b.dfSigma, sizeof(double)), 0);
        EXPECT_EQ(a.nFlags, b.nFlags);
    }
    CRecordingReport counting;
    IntegratedSeries result;
    ASSERT_TRUE(integrated(frames, result, counting).finished());
    for (const int nAfter : {0, 5, counting.m_nAsked / 2, counting.m_nAsked - 1}) {
        CRecordingReport report;
        report.m_nStopAfter = nAfter;
        const auto stopped = integrateSeries(frames.m_data, frames.m_geometry, {}, 2, report);
        EXPECT_EQ(int(stopped.outcome.end), int(RunEnd::Stopped));
        EXPECT_FALSE(stopped.made);
    }
}

namespace {

/// Expects that the integration does not come about, for a reason with some words, and gives nothing.
void expectRefused(const DataSet& data, const SeriesGeometry& geometry, const char* pszWords)
{
    CRunReport report;
    const auto result = integrateSeries(data, geometry, {}, 2, report);
    EXPECT_FALSE(result.finished()) << pszWords;
    EXPECT_TRUE(result.outcome.strReason.contains(pszWords)) << result.outcome.strReason.toStdString();
}

void overwriteAll(const CSimulatedFrames& frames, float fValue)
{
    const SimulationParameters& p = frames.m_series.parameters;
    for (int n = 0; n < p.nFrames; ++n) {
        overwrite(frames, n, std::vector<float>(size_t(p.nSize) * size_t(p.nSize), fValue));
    }
}

}  // namespace

TEST(SeriesIntegration, SaysWhatIsWrongWithTheGeometry)
{
    CSimulatedFrames frames(smallCrystal());
    frames.write();
    expectRefused({}, {}, "no frames");
    expectRefused(frames.m_data, {}, "geometry is that of 0 frames");
    DataSet two;
    two.m_listFrameFile = frames.m_data.m_listFrameFile.mid(0, 2);
    SeriesGeometry geometry = frames.m_geometry;
    geometry.listTilt.resize(2);
    geometry.listBeam.resize(2);
    expectRefused(two, geometry, "too few");
    // Tilts that hardly change: all that cross at all are slow.
    geometry = frames.m_geometry;
    for (size_t n = 0; n < geometry.listTilt.size(); ++n) {
        geometry.listTilt[n] = 0.01 * double(n);
    }
    expectRefused(frames.m_data, geometry, "slow");
    geometry.listTilt.assign(geometry.listTilt.size(), 5);
    expectRefused(frames.m_data, geometry, "No reflection crosses");
    geometry = frames.m_geometry;
    geometry.sizeFrame = {};
    expectRefused(frames.m_data, geometry, "can be read");
}

TEST(SeriesIntegration, SaysWhatIsWrongWithTheFrames)
{
    CSimulatedFrames frames(smallCrystal());
    frames.write();
    DataSet masked;
    masked.m_listFrameFile = frames.m_data.m_listFrameFile;
    masked.m_maskPeakHunting.listPolygon = {QPolygonF(QRectF(-1, -1, 300, 300))};
    expectRefused(masked, frames.m_geometry, "masked");
    overwriteAll(frames, 0);
    expectRefused(frames.m_data, frames.m_geometry, "above its background");
    overwriteAll(frames, 30000);
    expectRefused(frames.m_data, frames.m_geometry, "saturated");
}

TEST(SeriesIntegration, GivesNumbersOnFramesBelowZero)
{
    CSimulatedFrames frames(smallCrystal());
    frames.write();
    for (int n = 0; n < frames.m_series.parameters.nFrames; ++n) {
        std::vector<float> listPixel = renderFrame(frames.m_series, n);
        for (float& f : listPixel) {
            f -= 20000;
        }
        overwrite(frames, n, listPixel);
    }
    CRunReport report;
    IntegratedSeries result;
    if (integrated(frames, result, report).finished()) {
        for (const Observation& o : result.listObservation) {
            EXPECT_TRUE(std::isfinite(o.dfIntensity)) << o.dfIntensity;
            EXPECT_TRUE(std::isfinite(o.dfSigma)) << o.dfSigma;
        }
    }
}

TEST(SeriesIntegration, LooksAtOneReflection)
{
    CSimulatedFrames frames(smallCrystal());
    frames.write();
    IntegratedSeries result;
    ASSERT_TRUE(integrated(frames, result).finished());
    const Observation spot = strongest(result);
    CRunReport report;
    const auto looked = lookAtObservation(frames.m_data, frames.m_geometry, result.model, spot, report);
    ASSERT_TRUE(looked);
    const ObservationProfile& profile = *looked;
    const size_t nFrames = profile.listWindow.size();
    EXPECT_EQ(profile.listRocking.size(), nFrames);
    EXPECT_LE(profile.nFirstFrame, spot.nFirstFrame);
    double dfSum = 0, dfModel = 0, dfOff = 0;
    for (size_t n = 0; n < nFrames; ++n) {
        EXPECT_EQ(profile.listWindow[n].size(), size_t(profile.nSide * profile.nSide));
        dfSum += profile.listRocking[n];
        dfModel += profile.listModel[n];
        dfOff += std::abs(profile.listRocking[n] - profile.listModel[n]);
    }
    EXPECT_NEAR(dfSum, spot.dfIntensity, 0.05 * spot.dfIntensity);
    EXPECT_NEAR(dfModel, spot.dfIntensity, 0.01 * spot.dfIntensity);
    EXPECT_LT(dfOff, 0.15 * spot.dfIntensity);
    EXPECT_LT(profile.listExcitation.front() * profile.listExcitation.back(), 0);
    QFile::remove(frames.m_data.m_listFrameFile[int(spot.dfFrame)]);
    EXPECT_FALSE(lookAtObservation(frames.m_data, frames.m_geometry, result.model, spot, report));
    EXPECT_FALSE(report.reason().isEmpty());
}

}  // namespace tessera
