// The simulator's projection against Bragg's law and the Lorentz factor.
#include "records/pi.h"
#include "simulate/crystalstructures.h"
#include "simulate/rotationprojection.h"
#include "simulate/simulatedseries.h"
#include "simulate/structurefactor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace tessera {

namespace {

/// The tilt near dfTilt at which a lattice vector lies on the sphere, by bisection.
bool exactTilt(const CRotationProjection& projection, const Vector3& vec, double dfTilt, double& dfExact)
{
    const auto error = [&](double df) { return projection.excitationError(projection.turned(vec, df)); };
    double dfLow = dfTilt - 3, dfHigh = dfTilt + 3;
    if (error(dfLow) * error(dfHigh) > 0) {
        return false;
    }
    for (int i = 0; i < 60; ++i) {
        dfExact = (dfLow + dfHigh) / 2;
        (error(dfLow) * error(dfExact) <= 0 ? dfHigh : dfLow) = dfExact;
    }
    return true;
}

}  // namespace

TEST(Projection, SpotsObeyBraggsLawAndTurnAboutTheAxis)
{
    const double dfLambda = 0.0251, dfPixel = 0.004, dfAxis = 33 * g_dfPi / 180;
    const CRotationProjection projection(dfLambda, dfPixel, 33);
    int nChecked = 0;
    for (const Vector3& vec : {Vector3{0.3, 0.5, 0.02}, Vector3{-0.7, 0.2, -0.05}, Vector3{0.1, -0.9, 0.3},
                               Vector3{-0.2, -0.3, -0.15}, Vector3{0.0, 0.4, 0.1}}) {
        double dfTilt = 0;
        const double dfGuess = std::atan2(vec[2], vec[1]) * 180 / g_dfPi;
        if (!exactTilt(projection, vec, std::remainder(dfGuess, 180), dfTilt)) {
            continue;
        }
        ++nChecked;
        const Vector3 vecTurned = projection.turned(vec, dfTilt);
        // |k + g| = |k| with the beam along -z.
        EXPECT_NEAR(lengthOf(vecTurned + Vector3{0, 0, -1 / dfLambda}), 1 / dfLambda, 1e-9);
        const auto pt = projection.spotOffset(vecTurned);
        const double dfTwoTheta = std::atan(std::hypot(pt[0], pt[1]) * dfPixel * dfLambda);
        EXPECT_NEAR(2 * std::sin(dfTwoTheta / 2) / dfLambda, lengthOf(vec), 1e-9);
        // What lies along the axis does not change with the tilt: on the frame, (cos, -sin).
        const double dfAlong = (pt[0] * std::cos(dfAxis) - pt[1] * std::sin(dfAxis)) * dfPixel;
        EXPECT_NEAR(dfAlong * std::cos(dfTwoTheta), vec[0], 1e-9);
        // A crystal turned further by a positive angle takes +y towards -z, away from the source.
        EXPECT_LT(projection.turned({0, 1, 0}, 10)[2], 0);
    }
    EXPECT_GE(nChecked, 4);
}

TEST(Projection, DistortionLengthensAlongItsAzimuthAsSeenOnTheScreen)
{
    const CRotationProjection plain(0.0251, 0.004, 0), distorted(0.0251, 0.004, 0, 2, 30);
    for (const auto& [dfAngle, dfShrink] : {std::pair(30.0, 0.98), {120.0, 1.02}, {75.0, 1.0}}) {
        const Vector3 vec{0.4 * std::cos(dfAngle * g_dfPi / 180), -0.4 * std::sin(dfAngle * g_dfPi / 180), 0};
        const auto a = plain.spotOffset(vec), b = distorted.spotOffset(vec);
        EXPECT_NEAR(std::hypot(a[0], a[1]) / std::hypot(b[0], b[1]), dfShrink, 1e-12) << dfAngle;
    }
}

namespace {

/// A reflection that crosses the sphere well within a series, with its spots on all frames together.
struct SpreadReflection {
    double dfCounts = 0;
    int nFirst = 1 << 30, nLast = 0, nFrames = 0;
    double dfSpeed = 0;    ///< of the excitation error, Å⁻¹ per degree
    double dfSquareF = 0;  ///< of the structure factor
};

/// Passages of a series from -30 to 30 degrees in such steps.
std::vector<SpreadReflection> passages(double dfStep)
{
    SimulationParameters p;
    p.strCrystal = QStringLiteral("kyanite");
    p.dfMosaicity = p.dfDrift = 0;
    p.dfTiltStart = -30;
    p.dfTiltStep = dfStep;
    p.nFrames = int(60 / dfStep);
    QString strError;
    const SimulatedSeries series = simulateSeries(p, strError).value_or(SimulatedSeries());
    EXPECT_EQ(strError, QString());
    std::map<std::array<int, 3>, SpreadReflection> mapPassage;
    for (const auto& list : series.listDrawn) {
        for (const TruthSpot& spot : list) {
            SpreadReflection& passage = mapPassage[{spot.nH, spot.nK, spot.nL}];
            passage.dfCounts += spot.dfCounts;
            passage.nFirst = std::min(passage.nFirst, spot.nFrame);
            passage.nLast = std::max(passage.nLast, spot.nFrame);
            ++passage.nFrames;
        }
    }
    const CRotationProjection projection(p.dfWavelength, p.dfPixelSize, p.dfAxis);
    const CStructureFactor crystal(*findCrystalStructure(p.strCrystal));
    std::vector<SpreadReflection> listPassage;
    for (auto& [index, passage] : mapPassage) {
        const Vector3 vec = Vector3{double(index[0]), double(index[1]), double(index[2])} * series.matBasis;
        double dfTilt = 0;
        const double dfMiddle = p.dfTiltStart + (passage.nFirst + passage.nLast) / 2.0 * dfStep;
        if (passage.nFirst < 2 || passage.nLast > p.nFrames - 3 || passage.dfCounts < 2000 ||
            lengthOf(vec) > 0.9 || std::hypot(vec[1], vec[2]) < 0.3 ||
            !exactTilt(projection, vec, dfMiddle, dfTilt)) {
            continue;
        }
        const auto error = [&](double df) { return projection.excitationError(projection.turned(vec, df)); };
        passage.dfSpeed = std::abs(error(dfTilt + 0.01) - error(dfTilt - 0.01)) / 0.02;
        passage.dfSquareF = std::norm(crystal.value(index[0], index[1], index[2]));
        listPassage.push_back(passage);
    }
    EXPECT_GT(listPassage.size(), 100u);
    return listPassage;
}

}  // namespace

TEST(Series, AReflectionIsOnFramesInARow)
{
    for (double dfStep : {0.25, 1.0}) {
        for (const SpreadReflection& passage : passages(dfStep)) {
            EXPECT_EQ(passage.nFrames, passage.nLast - passage.nFirst + 1) << dfStep;
        }
    }
}

// Summed over its frames a reflection has |F|² times the Lorentz factor, the time that it takes through the
// sphere: counts · step · |ds/dθ| / |F|² is one number for the whole series.
TEST(Series, AReflectionHasTheLorentzFactorOverItsFrames)
{
    for (double dfStep : {0.25, 1.0}) {
        std::vector<double> listConstant;
        for (const SpreadReflection& passage : passages(dfStep)) {
            listConstant.push_back(passage.dfCounts * dfStep * passage.dfSpeed / passage.dfSquareF);
        }
        ASSERT_FALSE(listConstant.empty());
        const auto range = std::minmax_element(listConstant.begin(), listConstant.end());
        EXPECT_LT(*range.second / *range.first, 1.01) << dfStep;
    }
}

}  // namespace tessera
