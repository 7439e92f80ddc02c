// Distortions, offsets and deliberately wrong projects of simulated series, and the judgement of a refined
// geometry.
#include "geometry/rotationgeometry.h"
#include "records/pi.h"
#include "simulate/cellsetting.h"
#include "simulate/frameimage.h"
#include "simulate/secondlattice.h"
#include "simulate/seriescomparison.h"
#include "simulate/structurefactor.h"
#include "simulate/truthfile.h"
#include "tests/batch/batchprogram.h"

#include <gtest/gtest.h>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

namespace tessera {

namespace {

// A point of the frame by its distance from the beam and its angle on the screen.
std::array<double, 2> onScreen(double dfRadius, double dfAngle)
{
    return {dfRadius * std::cos(dfAngle * g_dfPi / 180), -dfRadius * std::sin(dfAngle * g_dfPi / 180)};
}

void expectPoint(const std::array<double, 2>& pt, double dfRadius, double dfAngle)
{
    EXPECT_NEAR(pt[0], onScreen(dfRadius, dfAngle)[0], 1e-9) << dfRadius << ' ' << dfAngle;
    EXPECT_NEAR(pt[1], onScreen(dfRadius, dfAngle)[1], 1e-9) << dfRadius << ' ' << dfAngle;
}

SimulationParameters smallSeries()
{
    SimulationParameters p;
    p.strCrystal = QStringLiteral("diopside");
    p.nFrames = 20;
    p.nSize = 256;
    p.dfPixelSize = 0.008;
    p.dfCenterX = 129;
    p.dfCenterY = 127;
    p.dfDrift = 3;
    return p;
}

SimulatedSeries simulated(const SimulationParameters& p)
{
    QString strError;
    auto series = simulateSeries(p, strError);
    EXPECT_TRUE(series) << strError.toStdString();
    return std::move(series).value_or(SimulatedSeries());
}

SimulationParameters distortedSeries()
{
    SimulationParameters p = smallSeries();
    p.lens = {1.2, 20, -2, 0.5, 0};
    p.dfWander = 1;
    p.nJumpEvery = 8;
    p.dfJump = 2;
    p.dfStretchAmplitude = 1.5;
    p.dfStretchAzimuth = 65;
    p.dfToldAxisOffset = 2;
    p.bStretchTold = false;
    return p;
}

QJsonArray numbers(std::initializer_list<double> list)
{
    QJsonArray array;
    for (double df : list) {
        array.append(df);
    }
    return array;
}

QJsonArray numbers(const std::array<double, 6>& adf)
{
    return numbers({adf[0], adf[1], adf[2], adf[3], adf[4], adf[5]});
}

void writeText(const QString& strFile, const QByteArray& text)
{
    QFile file(strFile);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}
}  // namespace

TEST(LensDistortion, MovesPointsAsItsDefinitionSays)
{
    const LensDistortion ellipse{1.2, 30, 0, 0, 0};
    expectPoint(distorted(onScreen(200, 30), ellipse), 200 * 1.012, 30);
    expectPoint(distorted(onScreen(200, 120), ellipse), 200 * 0.988, 120);
    // Halfway it moves along the circle, towards the azimuth: a right-angled triangle.
    expectPoint(distorted(onScreen(200, 75), ellipse), 200 * std::hypot(1, 0.012),
                75 - std::atan(0.012) * 180 / g_dfPi);
    const LensDistortion barrel{0, 0, -2, 0, 250}, spiral{0, 0, 0, 3, 250};
    expectPoint(distorted(onScreen(250, 40), barrel), 245, 40);
    expectPoint(distorted(onScreen(125, 40), barrel), 125 - 5.0 / 8, 40);
    expectPoint(distorted(onScreen(250, 40), spiral), 250 * std::hypot(1, 0.03),
                40 + std::atan(0.03) * 180 / g_dfPi);
    // Nothing from beyond the reach comes within the distance, and what lies at it may just do so.
    const LensDistortion both{1.2, 30, -2, 0, 250};
    expectPoint(distorted(onScreen(undistortedReach(360, both), 120), both), 360, 120);
    EXPECT_EQ(undistortedReach(360, LensDistortion{0, 0, 2, 1, 250}), 360);
    EXPECT_FALSE(std::isfinite(undistortedReach(360, LensDistortion{0, 0, -20, 0, 250})));
}

TEST(TrueGeometry, SpotsAreThoseOfThePlainSeriesMovedAndTheBeamStays)
{
    const SimulationParameters p = distortedSeries();
    SimulationParameters plainParameters = smallSeries();
    plainParameters.dfStretchAmplitude = p.dfStretchAmplitude;
    plainParameters.dfStretchAzimuth = p.dfStretchAzimuth;
    const SimulatedSeries plain = simulated(plainParameters), series = simulated(p);
    EXPECT_TRUE(plain.listPatternOffset.empty());
    EXPECT_EQ(series.listShift, plain.listShift);
    EXPECT_EQ(series.parameters.lens.dfRadius, 128);
    ASSERT_EQ(series.listPatternOffset.size(), 20u);
    int nSame = 0;
    for (size_t n = 0; n < 20; ++n) {
        const double dfBeamX = p.dfCenterX + series.listShift[n][0];
        const double dfBeamY = p.dfCenterY + series.listShift[n][1];
        for (const TruthSpot& spot : series.listDrawn[n]) {
            for (const TruthSpot& other : plain.listDrawn[n]) {
                if (spot.nH != other.nH || spot.nK != other.nK || spot.nL != other.nL) {
                    continue;
                }
                const auto pt = distorted({other.dfX - dfBeamX, other.dfY - dfBeamY}, series.parameters.lens);
                EXPECT_NEAR(spot.dfX, dfBeamX + series.listPatternOffset[n][0] + pt[0], 1e-9);
                EXPECT_NEAR(spot.dfY, dfBeamY + series.listPatternOffset[n][1] + pt[1], 1e-9);
                // The mean |F|² is that up to 1 Å⁻¹, which both series reach; counts do not depend on the
                // lens.
                EXPECT_NEAR(spot.dfCounts, other.dfCounts, 1e-9 * other.dfCounts);
                ++nSame;
            }
        }
        // The summit of the frame is the direct beam, where the shifts say.
        const std::vector<double> listPixel = expectedFrame(series, int(n));
        const long nTop = std::max_element(listPixel.begin(), listPixel.end()) - listPixel.begin();
        const long nRow = nTop / 256, nColumn = nTop % 256;
        EXPECT_NEAR(double(nColumn), dfBeamX, 0.55);
        EXPECT_NEAR(double(nRow), dfBeamY, 0.55);
    }
    EXPECT_GT(nSame, 500);
    // A barrel draws in what lay beyond the frame.
    SimulationParameters barrel = smallSeries();
    barrel.lens.dfRadial = -5;
    EXPECT_GT(simulated(barrel).listSpot.size(), simulated(smallSeries()).listSpot.size());
}

TEST(TrueGeometry, ThePatternWandersSmoothlyAndJumps)
{
    SimulationParameters p = smallSeries();
    p.nFrames = 60;
    p.dfWander = 1;
    const auto listWander = simulated(p).listPatternOffset;
    p.nJumpEvery = 8;
    p.dfJump = 2;
    const auto listBoth = simulated(p).listPatternOffset;
    double dfFarthest = 0, dfStep = 0, dfSumX = 0;
    for (size_t n = 0; n < 60; ++n) {
        const auto& pt = listWander[n];
        dfFarthest = std::max(dfFarthest, std::hypot(pt[0], pt[1]));
        dfSumX += pt[0];
        if (n > 0) {
            dfStep = std::max(dfStep, std::hypot(pt[0] - listWander[n - 1][0], pt[1] - listWander[n - 1][1]));
        }
        EXPECT_NEAR(std::hypot(listBoth[n][0] - pt[0], listBoth[n][1] - pt[1]), n % 8 == 4 ? 2 : 0, 1e-9)
            << n;
    }
    EXPECT_NEAR(dfFarthest, 1, 1e-9);
    EXPECT_NEAR(dfSumX, 0, 1e-9);
    EXPECT_LT(dfStep, 0.35);
}

TEST(TrueGeometry, StandsInTheTruthFileAndNotInTheProject)
{
    QTemporaryDir dir;
    const QString strFile = dir.filePath(QStringLiteral("truth.json"));
    const SimulatedSeries series = simulated(distortedSeries());
    ASSERT_EQ(writeTruthFile(strFile, series), QString());
    SimulatedSeries read;
    QString strError;
    ASSERT_TRUE(readTruthFile(strFile, read, strError)) << strError.toStdString();
    const SimulationParameters &p = series.parameters, &q = read.parameters;
    EXPECT_EQ(q.lens.dfEllipseAmplitude, 1.2);
    EXPECT_EQ(q.lens.dfEllipseAzimuth, 20);
    EXPECT_EQ(q.lens.dfRadial, -2);
    EXPECT_EQ(q.lens.dfSpiral, 0.5);
    EXPECT_EQ(q.lens.dfRadius, 128);
    EXPECT_EQ(read.listPatternOffset, series.listPatternOffset);
    EXPECT_EQ(q.dfAxis, p.dfAxis);
    EXPECT_EQ(q.dfStretchAmplitude, 1.5);
    EXPECT_EQ(q.toldAxis(), p.toldAxis());
    EXPECT_FALSE(q.bStretchTold);
    const QString strProject = projectText(series);
    EXPECT_TRUE(strProject.contains(QStringLiteral("ROTATIONAXIS -36.5000\n")));
    EXPECT_TRUE(strProject.contains(QStringLiteral("STRETCHINGAMP 0.0000\n")));

    // The truth file of a series without distortions and offsets has none of their keys.
    ASSERT_EQ(writeTruthFile(strFile, simulated(smallSeries())), QString());
    QFile file(strFile);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonObject root = QJsonDocument::fromJson(file.readAll()).object();
    for (const char* pKey : {"ellipse", "thirdOrder", "patternOffsets", "told"}) {
        EXPECT_FALSE(root.contains(QLatin1String(pKey))) << pKey;
    }
    EXPECT_EQ(root[QStringLiteral("rotationAxis")].toDouble(), -38.5);
}

TEST(TrueGeometry, OptionsThatMakeNoSenseAreRefused)
{
    QTemporaryDir dir;
    const struct {
        const char* pOptions;
        int nStatus;
    } aRow[] = {{"--ellipse-amp 60", 2},
                {"--ellipse-azimuth 30", 2},
                {"--barrel 30", 2},
                {"--barrel 2 --distortion-radius -5", 2},
                {"--distortion-radius 100", 2},
                {"--jump 2", 2},
                {"--jump-every -3 --jump 2", 2},
                {"--wander -1", 2},
                {"--told-stretch maybe", 2},
                {"--barrel 2 --spiral 1 --ellipse-amp 1.2 --told-stretch off --told-axis-offset 2", 0}};
    for (const auto& row : aRow) {
        QStringList listArgument{"--out", dir.path(), "--frames", "1", "--size", "64"};
        listArgument += QString::fromLatin1(row.pOptions).split(QLatin1Char(' '));
        const BatchOutcome outcome = runProgram("tessera-simulate", listArgument);
        EXPECT_EQ(outcome.nStatus, row.nStatus) << row.pOptions << outcome.strText.toStdString();
        EXPECT_EQ(QDir(dir.path()).isEmpty(), row.nStatus != 0) << row.pOptions;
    }
    SimulatedSeries series;
    QString strError;
    ASSERT_TRUE(readTruthFile(dir.filePath(QStringLiteral("series_truth.json")), series, strError));
    EXPECT_EQ(series.parameters.lens.dfRadial, -2);  // a barrel draws in
    EXPECT_EQ(series.parameters.lens.dfSpiral, 1);
    EXPECT_EQ(series.parameters.lens.dfRadius, 32);
}

TEST(RefinedGeometry, CellsAreJudgedInTheirOwnSetting)
{
    const SimulatedSeries truth = simulated(smallSeries());
    const Matrix3 aSetting[] = {{Vector3{1, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}},
                                {Vector3{1, 2, 0}, Vector3{0, 1, -1}, Vector3{0, 0, -1}},
                                inverseOf(truth.matPrimitive)};  // the conventional cell
    for (const Matrix3& mat : aSetting) {
        const std::array<double, 6> adfTrue = cellOfReciprocalBasis(mat * truth.matPrimitive *
                                                                    truth.matBasis);
        std::array<double, 6> adfFound = adfTrue;
        adfFound[0] *= 1.002;
        adfFound[1] -= 0.01;
        adfFound[4] += 0.06;
        const QJsonObject geometry{
            {"cell", QJsonObject{{"parameters", numbers(adfFound)},
                                 {"standardErrors", numbers({0.01, 0.005, 0.01, 0.02, 0.02, 0})}}},
            {"constrained", QJsonObject{{"parameters", numbers(adfTrue)}}}};
        const RefinedGeometry result = judgeGeometry(geometry, nullptr, truth, 0);
        ASSERT_TRUE(result.cell.bMatch);
        EXPECT_EQ(result.cell.nVolumeRatio, std::lround(1 / std::abs(determinantOf(mat))));
        EXPECT_NEAR(result.cell.errors.adfLength[0], 0.2, 1e-6);
        EXPECT_NEAR(result.cell.errors.adfLength[1], -1 / adfTrue[1], 1e-6);
        EXPECT_NEAR(result.cell.errors.adfAngle[1], 0.06, 1e-6);
        EXPECT_NEAR(result.cell.errors.adfAngle[2], 0, 1e-6);
        EXPECT_NEAR(*result.cell.aRatio[1], 4, 1e-6);
        EXPECT_NEAR(*result.cell.aRatio[4], 9, 1e-6);
        EXPECT_FALSE(result.cell.aRatio[5]);
        EXPECT_NEAR(*result.cell.meanRatio(), (std::pow(0.2 * adfTrue[0], 2) + 4 + 9) / 5, 1e-5);
        EXPECT_TRUE(result.constrained.bMatch);
        EXPECT_FALSE(result.constrained.meanRatio());
        EXPECT_FALSE(result.orientationError);
    }
    // Halved edges are no description of the lattice.
    std::array<double, 6> adfHalf = truth.adfCell;
    adfHalf[2] /= 2;
    EXPECT_FALSE(trueCellInSettingOf(adfHalf, truth.matBasis, truth.matPrimitive).bFound);
}

TEST(RefinedGeometry, WhatItTakesForTrueUndoesTheDistortion)
{
    const SimulatedSeries truth = simulated(distortedSeries());
    const QJsonObject none{{"amplitude", 0}, {"azimuth", 0}};
    const RefinedGeometry result = judgeGeometry(
        {{"stretching", none},
         {"ellipse", none},
         {"thirdOrder", QJsonObject{{"radial", 0}, {"spiral", 0}, {"radius", 128}}}},
        nullptr, truth, 0);
    EXPECT_NEAR(result.ellipse->error(), 1.2, 1e-9);
    const double dfTwice = 2 * result.ellipse->dfTrueAzimuth * g_dfPi / 180, dfA = 0.012;
    const double dfRadial = -result.mapError.at(QStringLiteral("radial")) / 100;
    const double dfSpiral = -result.mapError.at(QStringLiteral("spiral")) / 100;
    for (int nAngle = 0; nAngle < 360; nAngle += 30) {
        const auto pt = onScreen(120, nAngle), ptSeen = distorted(pt, truth.parameters.lens);
        // With y up; clockwise goes from x towards -y.
        const double x = ptSeen[0], y = -ptSeen[1], dfSquare = (x * x + y * y) / (128 * 128);
        const double dfX = x + dfA * (std::cos(dfTwice) * x + std::sin(dfTwice) * y) +
                           dfSquare * (dfRadial * x + dfSpiral * y);
        const double dfY = y + dfA * (std::sin(dfTwice) * x - std::cos(dfTwice) * y) +
                           dfSquare * (dfRadial * y - dfSpiral * x);
        EXPECT_GT(std::hypot(x - pt[0], y + pt[1]), 0.8);
        EXPECT_LT(std::hypot(dfX - pt[0], dfY + pt[1]), 0.25);
    }
    // The program itself undoes the stretching at the azimuth that is taken for true.
    const CRotationProjection plain(0.0251, 0.004, 0), stretched(0.0251, 0.004, 0, 1.5, 65);
    const auto pt = plain.spotOffset({0.3, 0.5, 0}), ptSeen = stretched.spotOffset({0.3, 0.5, 0});
    const QPointF ptBack = applyStretching({ptSeen[0], ptSeen[1]}, result.stretching->dfTrueAmplitude,
                                           result.stretching->dfTrueAzimuth);
    EXPECT_NEAR(ptBack.x(), pt[0], 1e-9);
    EXPECT_NEAR(ptBack.y(), pt[1], 1e-9);
}

namespace {

/// The files of a series with a lens, and the summary of a run that is compared with its truth.
class GeometryOfFiles : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(writeTruthFile(strTruth, truth), QString());
        writeText(strBase + QStringLiteral(".pk"), "");
    }
    QJsonObject compared(const QByteArray& summary) const
    {
        const QString strSummary = dir.filePath(QStringLiteral("s.json"));
        writeText(strSummary, summary);
        QString strError;
        const SeriesComparison comparison =
            compareSeriesFiles(strTruth, strBase, strSummary, strError).value_or(SeriesComparison());
        EXPECT_EQ(strError, QString());
        EXPECT_FALSE(comparisonToText(comparison).isEmpty());
        return comparisonToJson(comparison)[QStringLiteral("geometry")].toObject();
    }

    QTemporaryDir dir;
    const SimulatedSeries truth = simulated(distortedSeries());
    const QString strTruth = dir.filePath(QStringLiteral("t.json")),
                  strBase = dir.filePath(QStringLiteral("s"));
};

}  // namespace

TEST_F(GeometryOfFiles, MayBeMissing)
{
    EXPECT_TRUE(compared("{}").isEmpty());
    EXPECT_TRUE(
        compared("{\"geometry\": {\"cell\": {\"parameters\": [1, 2]}, \"axis\": null, \"centre\": [1]}}")
            .isEmpty());
}

// The true lattice in another setting, turned by a quarter of a degree about y.
TEST_F(GeometryOfFiles, IsReadFromTheFiles)
{
    const Matrix3 matTurn = rotationAbout({0, 1, 0}, 0.25);
    QByteArray text;
    for (const Vector3& row : Matrix3{Vector3{0, 1, 1}, Vector3{1, 0, 0}, Vector3{0, 0, -1}} *
                                  truth.matPrimitive * truth.matBasis) {
        const Vector3 vec = matTurn * row;
        text += "x* " + QByteArray::number(vec[0], 'g', 12) + ' ' + QByteArray::number(vec[1], 'g', 12) +
                ' ' + QByteArray::number(vec[2], 'g', 12) + '\n';
    }
    writeText(strBase + QStringLiteral("_refined.uc"), text);
    const QJsonObject geometry = compared(
        "{\"geometry\": {\"axis\": 321.6, \"axisOutOfPlane\": 0.2, \"tiltScale\": 1.001, \"rmsPixels\": 0.4,"
        "\"stretching\": {\"amplitude\": 1.5, \"azimuth\": 155}, \"ellipse\": {\"amplitude\": 1.2, "
        "\"azimuth\": 20}, \"thirdOrder\": {\"radial\": 0.5, \"spiral\": 0, \"radius\": 64}, \"fixed\": "
        "[\"axis\"],"
        "\"centre\": [0.5, -0.5]}}");
    EXPECT_TRUE(geometry[QStringLiteral("basisRight")].toBool());
    EXPECT_NEAR(geometry[QStringLiteral("orientationErrorDegrees")].toDouble(), 0.25, 1e-6);
    EXPECT_NEAR(geometry[QStringLiteral("orientationTurnDegrees")].toArray().at(1).toDouble(), 0.25, 1e-6);
    EXPECT_NEAR(geometry[QStringLiteral("stretching")][QStringLiteral("errorPercent")].toDouble(), 0, 1e-9);
    EXPECT_NEAR(geometry[QStringLiteral("ellipse")][QStringLiteral("errorPercent")].toDouble(), 2.4, 1e-9);
    const QJsonObject errors = geometry[QStringLiteral("errors")].toObject();
    EXPECT_NEAR(errors[QStringLiteral("axis")].toDouble(), 0.1, 1e-9);
    EXPECT_NEAR(errors[QStringLiteral("axisOutOfPlane")].toDouble(), 0.2, 1e-9);
    EXPECT_NEAR(errors[QStringLiteral("tiltScale")].toDouble(), 0.1, 1e-9);
    // Of 64 pixels 0.5 % are at 128 pixels 2 %, which undo the barrel.
    EXPECT_NEAR(errors[QStringLiteral("radial")].toDouble(), 0, 1e-9);
    EXPECT_NEAR(errors[QStringLiteral("spiral")].toDouble(), -0.5, 1e-9);
    double dfMean = 0;
    for (const auto& pt : truth.listPatternOffset) {
        dfMean += pt[0] / 20;
    }
    EXPECT_NEAR(errors[QStringLiteral("centreX")].toDouble(), 0.5 - dfMean, 1e-9);
    EXPECT_EQ(geometry[QStringLiteral("rmsPixels")].toDouble(), 0.4);
    EXPECT_EQ(geometry[QStringLiteral("fixed")].toArray().size(), 1);
}

}  // namespace tessera
