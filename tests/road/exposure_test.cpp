// How simulated frames are exposed: turned, stepped and precessed series, fading crystals, the gain.
#include "records/pi.h"
#include "simulate/crossings.h"
#include "simulate/exposuremode.h"
#include "simulate/frameimage.h"
#include "simulate/truthfile.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <tuple>

namespace tessera {

namespace {

SimulatedSeries made(const std::function<void(SimulationParameters&)>& fnChange)
{
    SimulationParameters p;
    p.strCrystal = QStringLiteral("natrolite");
    p.nFrames = 60;
    p.nSize = 400;
    p.dfCenterX = p.dfCenterY = 200.3;
    p.dfTiltStart = -12;
    p.dfTiltStep = 0.4;
    p.dfDrift = 2;
    p.nHotPixels = 0;
    fnChange(p);
    QString strError;
    auto series = simulateSeries(p, strError);
    EXPECT_TRUE(series) << qPrintable(strError);
    return std::move(series).value_or(SimulatedSeries());
}

CRotationProjection projectionOf(const SimulationParameters& p)
{
    return CRotationProjection(p.dfWavelength, p.dfPixelSize, p.dfAxis);
}

// Counts of all spots of a reflection and the mean of their frames, from the frames.
std::map<std::tuple<int, int, int>, std::array<double, 2>> summed(const SimulatedSeries& series)
{
    std::map<std::tuple<int, int, int>, std::array<double, 2>> mapSum;
    for (const auto& list : series.listDrawn) {
        for (const TruthSpot& spot : list) {
            auto& sum = mapSum[{spot.nH, spot.nK, spot.nL}];
            sum[0] += spot.dfCounts;
            sum[1] += spot.dfCounts * spot.nFrame;
        }
    }
    return mapSum;
}

}  // namespace

namespace {

const struct {
    const char* pMode;
    std::function<void(SimulationParameters&)> fnChange;
} g_aMode[] = {{"continuous", [](SimulationParameters&) {}},
               {"stepped", [](SimulationParameters& p) { p.bStepped = true; }},
               {"precession", [](SimulationParameters& p) { p.dfPrecession = 0.6; }},
               {"downwards", [](SimulationParameters& p) {
                    p.dfTiltStart = 12;
                    p.dfTiltStep = -0.4;
                }}};

/// The recorded passages of reflections that pass but once and are bright enough to be on the frames.
std::vector<Crossing> lonePassages(const SimulatedSeries& series)
{
    std::map<std::tuple<int, int, int>, int> mapPassages;
    for (const Crossing& crossing : series.listCrossing) {
        ++mapPassages[{crossing.nH, crossing.nK, crossing.nL}];
    }
    std::vector<Crossing> listLone;
    for (const Crossing& crossing : series.listCrossing) {
        if (crossing.bInside && crossing.dfCounts >= 50 &&
            mapPassages[{crossing.nH, crossing.nK, crossing.nL}] == 1) {
            listLone.push_back(crossing);
        }
    }
    EXPECT_GT(listLone.size(), 100U);
    return listLone;
}

std::string nameOfPassage(const Crossing& crossing)
{
    return std::to_string(crossing.nH) + " " + std::to_string(crossing.nK) + " " +
           std::to_string(crossing.nL);
}

}  // namespace

TEST(Exposure, FramesOfAPassageAddUpToTheAreaOfTheRockingCurve)
{
    for (const auto& row : g_aMode) {
        SCOPED_TRACE(row.pMode);
        const SimulatedSeries series = made(row.fnChange);
        const auto mapSum = summed(series);
        for (const Crossing& crossing : lonePassages(series)) {
            const auto it = mapSum.find({crossing.nH, crossing.nK, crossing.nL});
            ASSERT_NE(it, mapSum.end());
            // Slow passages bend: the excitation error is no line in the tilt.
            EXPECT_NEAR(it->second[0] / crossing.dfCounts, 1, 0.03) << nameOfPassage(crossing);
            EXPECT_NEAR(it->second[1] / it->second[0], crossing.dfFrame, 0.25) << nameOfPassage(crossing);
        }
    }
}

TEST(Exposure, PassagesAreToldAtTheTiltOfTheSphere)
{
    for (const auto& row : g_aMode) {
        SCOPED_TRACE(row.pMode);
        const SimulatedSeries series = made(row.fnChange);
        const CRotationProjection projection = projectionOf(series.parameters);
        for (const Crossing& crossing : lonePassages(series)) {
            const Vector3 vec = Vector3{double(crossing.nH), double(crossing.nK), double(crossing.nL)} *
                                series.matBasis;
            const double dfTilt = series.listOverall[0] + crossing.dfFrame * series.parameters.dfTiltStep;
            EXPECT_NEAR(projection.excitationError(projection.turned(vec, dfTilt)), 0, 2e-5)
                << nameOfPassage(crossing);
        }
        EXPECT_GT(std::count_if(series.listCrossing.begin(), series.listCrossing.end(),
                                [](const Crossing& crossing) { return !crossing.bInside; }),
                  20);
    }
}

// Against a walk in small steps: a passage is whole when the excitation error runs from beyond one limit to
// beyond the other while frames are recorded.
TEST(Exposure, PassagesAreToldAsRecordedWhole)
{
    for (bool bStepped : {false, true}) {
        const SimulatedSeries series = made([&](SimulationParameters& p) {
            p.bStepped = bStepped;
            p.nBlankFrame = 21;
        });
        const SimulationParameters& p = series.parameters;
        const CRotationProjection projection = projectionOf(p);
        const double dfHalf = bStepped ? 0 : p.dfTiltStep / 2;
        int nDiffer = 0, nBlank = 0;
        for (const Crossing& crossing : series.listCrossing) {
            const Vector3 vec = Vector3{double(crossing.nH), double(crossing.nK), double(crossing.nL)} *
                                series.matBasis;
            const double dfReach = 3 * std::hypot(p.dfRocking, p.dfMosaicity * g_dfPi / 180 * lengthOf(vec));
            bool abBeyond[2] = {false, false}, bBlank = false;
            for (int nSide : {0, 1}) {
                double dfTilt = series.listOverall[0] + crossing.dfFrame * p.dfTiltStep;
                while (!abBeyond[nSide] && dfTilt >= series.listOverall.front() - dfHalf &&
                       dfTilt <= series.listOverall.back() + dfHalf) {
                    abBeyond[nSide] = std::abs(projection.excitationError(projection.turned(vec, dfTilt))) >
                                      dfReach;
                    bBlank = bBlank || std::lround((dfTilt - series.listOverall[0]) / p.dfTiltStep) == 20;
                    dfTilt += nSide == 0 ? 0.005 : -0.005;
                }
            }
            const double dfMost = p.nSize - 1 - 3 * p.dfSpotSigma, dfLeast = 3 * p.dfSpotSigma;
            const bool bOnFrame = crossing.dfX >= dfLeast && crossing.dfX <= dfMost &&
                                  crossing.dfY >= dfLeast && crossing.dfY <= dfMost;
            const auto& shift =
                series.listShift[size_t(std::max(0L, std::min(59L, std::lround(crossing.dfFrame))))];
            const bool bOnBeam = std::hypot(crossing.dfX - p.dfCenterX - shift[0],
                                            crossing.dfY - p.dfCenterY - shift[1]) <
                                 6 * p.dfBeamSigma + 3 * p.dfSpotSigma;
            const bool bInside = abBeyond[0] && abBeyond[1] && bOnFrame && !bOnBeam && !bBlank;
            nBlank += bBlank;
            nDiffer += bInside != crossing.bInside;
        }
        EXPECT_LE(nDiffer, int(series.listCrossing.size()) / 100);  // the walk has steps
        EXPECT_GT(nBlank, 20);
    }
}

TEST(Exposure, PrecessionGivesTwoPeaksWhereTheConeTouchesTheSphere)
{
    SimulationParameters p;
    p.dfPrecession = 1;
    p.dfRocking = 0.0005;
    p.dfMosaicity = 0;
    const CRotationProjection projection = projectionOf(p);
    const CExposureMode mode(p, projection);
    const double dfG = 0.5, dfReach = mode.precessionReach(dfG);
    EXPECT_NEAR(dfReach, dfG * g_dfPi / 180, 1e-6);
    const CSpherePath path({0, 0, dfG}, p.dfWavelength);
    const auto curve = [&](double dfExcitation) {
        return mode.recordedMean({0, 0, dfG}, path.tiltOf(0, dfExcitation, 0), dfG);
    };
    // Far from the edges the beam spends the share ds / (pi sqrt(A² - s²)) of its turn at an excitation
    // error.
    for (double dfShare : {0.0, 0.4, -0.7}) {
        EXPECT_NEAR(curve(dfShare * dfReach) / (std::sqrt(2 * g_dfPi) * p.dfRocking /
                                                (g_dfPi * dfReach * std::sqrt(1 - dfShare * dfShare))),
                    1, 0.02)
            << dfShare;
    }
    EXPECT_GT(curve(dfReach - p.dfRocking), 2 * curve(0));
    EXPECT_GT(curve(-dfReach + p.dfRocking), 2 * curve(0));
    EXPECT_LT(curve(dfReach + 4 * p.dfRocking), 0.001 * curve(0));
    // The area stays that of the curve without precession.
    double dfArea = 0;
    const double dfStep = p.dfRocking / 4;
    for (double df = -dfReach - 6 * p.dfRocking; df < dfReach + 6 * p.dfRocking; df += dfStep) {
        dfArea += curve(df) * dfStep;
    }
    EXPECT_NEAR(dfArea / (std::sqrt(2 * g_dfPi) * p.dfRocking), 1, 0.002);
}

TEST(Exposure, CrystalsFadeWobbleAndMissAFrame)
{
    const SimulatedSeries plain = made([](SimulationParameters&) {});
    const SimulatedSeries faded = made([](SimulationParameters& p) {
        p.dfFade = 0.5;
        p.dfFadeB = 2;
        p.nBlankFrame = 10;
    });
    EXPECT_TRUE(faded.listDrawn[9].empty());
    const std::vector<double> listBlank = expectedFrame(faded, 9);
    EXPECT_EQ(std::count(listBlank.begin(), listBlank.end(), 0.0), std::ptrdiff_t(listBlank.size()));
    int nCompared = 0;
    for (const TruthSpot& spot : faded.listDrawn.back()) {
        const auto& list = plain.listDrawn.back();
        const auto it = std::find_if(list.begin(), list.end(), [&](const TruthSpot& other) {
            return std::tie(spot.nH, spot.nK, spot.nL) == std::tie(other.nH, other.nK, other.nL);
        });
        ASSERT_NE(it, list.end());
        const double dfDStar = lengthOf(Vector3{double(spot.nH), double(spot.nK), double(spot.nL)} *
                                        plain.matBasis);
        EXPECT_NEAR(spot.dfCounts / it->dfCounts, 0.5 * std::exp(-2 * dfDStar * dfDStar / 2), 1e-9);
        ++nCompared;
    }
    EXPECT_GT(nCompared, 20);
    const SimulatedSeries wobbling = made([](SimulationParameters& p) { p.dfScaleWobble = 0.3; });
    const auto [itLeast, itMost] = std::minmax_element(wobbling.listScale.begin(), wobbling.listScale.end());
    EXPECT_GE(*itLeast, 0.7);
    EXPECT_LE(*itMost, 1.3);
    EXPECT_GT(*itMost - *itLeast, 0.2);
    for (size_t n = 1; n < wobbling.listScale.size(); ++n) {
        EXPECT_LT(std::abs(wobbling.listScale[n] - wobbling.listScale[n - 1]), 0.08);
    }
}

TEST(Exposure, GainMakesTheNoiseOfFewerElectrons)
{
    for (double dfGain : {1.0, 6.0}) {
        const SimulatedSeries series = made([&](SimulationParameters& p) {
            p.dfGain = dfGain;
            p.dfReadNoise = 0;
            p.dfBackground = 300;
            p.dfExposure = 0;
            p.dfBeamCounts = 0;
        });
        const std::vector<double> listMean = expectedFrame(series, 3);
        const std::vector<float> listPixel = renderFrame(series, 3);
        double dfDeviation = 0, dfSquare = 0;
        for (size_t i = 0; i < listMean.size(); ++i) {
            const double df = (double(listPixel[i]) - listMean[i]) / std::sqrt(listMean[i]);
            dfDeviation += df / double(listMean.size());
            dfSquare += df * df / double(listMean.size());
        }
        EXPECT_NEAR(dfDeviation, 0, 0.03);
        EXPECT_NEAR(dfSquare, dfGain, 0.03 * dfGain);
    }
}

TEST(Exposure, ForbiddenReflectionsOfTheGlidePlanesGetTheirShare)
{
    const SimulatedSeries series = made([](SimulationParameters& p) {
        p.strCrystal = QStringLiteral("pyrope");
        p.nFrames = 1;
        p.dfForbidden = 0.1;
    });
    std::map<std::tuple<int, int, int>, double> mapValue;
    for (const Reflection& r : series.listReflection) {
        EXPECT_EQ((r.nH + r.nK + r.nL) % 2, 0);  // the centring stays
        mapValue[{r.nH, r.nK, r.nL}] = r.dfSquareF;
    }
    EXPECT_EQ(mapValue.size(), series.listReflection.size());
    // 0kl with k odd, and hhl with 2h + l not a multiple of 4: International Tables, I a -3 d.
    EXPECT_GT((mapValue[{0, 1, 3}]), 0);
    EXPECT_GT((mapValue[{1, 1, 4}]), 0);
    EXPECT_LT((mapValue[{0, 1, 3}]), 0.3 * mapValue.at(std::make_tuple(4, 0, 0)));
    const SimulatedSeries plain = made([](SimulationParameters& p) {
        p.strCrystal = QStringLiteral("pyrope");
        p.nFrames = 1;
    });
    for (const Reflection& r : plain.listReflection) {
        EXPECT_EQ((mapValue[{r.nH, r.nK, r.nL}]), r.dfSquareF);
        EXPECT_FALSE(r.nH == 0 && r.nK % 2 != 0);
    }
}

TEST(Exposure, TruthOfIntensitiesIsReadBack)
{
    const SimulatedSeries series = made([](SimulationParameters& p) {
        p.dfPrecession = 0.5;
        p.dfFade = 0.6;
        p.dfSecondShare = 0.5;
    });
    QTemporaryDir dir;
    const QString strFile = dir.filePath(QStringLiteral("s_truth.json"));
    ASSERT_EQ(writeTruthFile(strFile, series), QString());
    SimulatedSeries read;
    QString strError;
    ASSERT_TRUE(readTruthFile(strFile, read, strError)) << qPrintable(strError);
    EXPECT_EQ(read.parameters.dfPrecession, 0.5);
    EXPECT_EQ(read.listScale, series.listScale);
    ASSERT_EQ(read.listReflection.size(), series.listReflection.size());
    ASSERT_EQ(read.listCrossing.size(), series.listCrossing.size());
    for (size_t i = 0; i < series.listReflection.size(); ++i) {
        const Reflection &a = read.listReflection[i], &b = series.listReflection[i];
        EXPECT_EQ(std::tie(a.nH, a.nK, a.nL), std::tie(b.nH, b.nK, b.nL));
        EXPECT_NEAR(a.dfSquareF, b.dfSquareF, 1e-7 * b.dfSquareF);
        EXPECT_NEAR(a.dfDStar, b.dfDStar, 1e-9);
        EXPECT_NEAR(read.listArea[i], series.listArea[i], 1e-6);
    }
    for (size_t i = 0; i < series.listCrossing.size(); ++i) {
        const Crossing &a = read.listCrossing[i], &b = series.listCrossing[i];
        EXPECT_EQ(std::tie(a.nH, a.nK, a.nL, a.bInside, a.nLattice),
                  std::tie(b.nH, b.nK, b.nL, b.bInside, b.nLattice));
        EXPECT_NEAR(a.dfFrame, b.dfFrame, 6e-4);
        EXPECT_NEAR(a.dfSignalToNoise, b.dfSignalToNoise, 6e-3);
    }
}

}  // namespace tessera
