// The simulator's projection against Bragg's law, and the mapping of the program against it.
#include "reciprocal/mapping.h"
#include "simulate/crystalstructures.h"
#include "simulate/rotationprojection.h"
#include "simulate/simulatedseries.h"
#include "simulate/structurefactor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

const double PI = 3.14159265358979323846;

SimulationParameters parametersOf(const char* pCrystal)
{
    SimulationParameters p;
    p.strCrystal = QLatin1String(pCrystal);
    p.nFrames = 60;
    p.dfTiltStep = 1;
    return p;
}

/// The tilt near dfTilt at which a lattice vector lies on the sphere, by bisection.
bool exactTilt(const CRotationProjection& projection, const Vector3& vec, double dfTilt, double& dfExact)
{
    const auto error = [&](double df) { return projection.excitationError(projection.turned(vec, df)); };
    double dfLow = dfTilt - 3, dfHigh = dfTilt + 3;
    if (error(dfLow) * error(dfHigh) > 0)
        return false;
    for (int i = 0; i < 60; ++i) {
        dfExact = (dfLow + dfHigh) / 2;
        (error(dfLow) * error(dfExact) <= 0 ? dfHigh : dfLow) = dfExact;
    }
    return true;
}

}  // namespace

TEST(Projection, SpotsObeyBraggsLawAndTurnAboutTheAxis)
{
    const double dfLambda = 0.0251, dfPixel = 0.004, dfAxis = 33 * PI / 180;
    const CRotationProjection projection(dfLambda, dfPixel, 33);
    int nChecked = 0;
    for (const Vector3& vec : {Vector3{0.3, 0.5, 0.02}, Vector3{-0.7, 0.2, -0.05}, Vector3{0.1, -0.9, 0.3},
                               Vector3{-0.2, -0.3, -0.15}, Vector3{0.0, 0.4, 0.1}}) {
        double dfTilt = 0;
        const double dfGuess = std::atan2(vec[2], vec[1]) * 180 / PI;
        if (!exactTilt(projection, vec,
                       dfGuess > 90    ? dfGuess - 180
                       : dfGuess < -90 ? dfGuess + 180
                                       : dfGuess,
                       dfTilt))
            continue;
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
    for (double dfAngle : {30.0, 120.0, 75.0}) {  // counter-clockwise on the screen
        const Vector3 vec{0.4 * std::cos(dfAngle * PI / 180), -0.4 * std::sin(dfAngle * PI / 180), 0};
        const auto a = plain.spotOffset(vec), b = distorted.spotOffset(vec);
        const double dfExpected = dfAngle == 30 ? 1 / 0.98 : dfAngle == 120 ? 1 / 1.02 : 1;
        EXPECT_NEAR(std::hypot(b[0], b[1]) / std::hypot(a[0], a[1]), dfExpected, 1e-12) << dfAngle;
    }
}

TEST(Projection, MeanRockingCurveIsTheNumericalMean)
{
    for (const auto& [dfFirst, dfLast] :
         {std::pair(-0.004, 0.009), {0.012, 0.003}, {0.002, 0.002 + 1e-10}, {-0.02, 0.02}}) {
        const double dfWidth = 0.005;
        double dfSum = 0;
        for (int i = 0; i < 4000; ++i)
            dfSum += std::exp(-0.5 *
                              std::pow((dfFirst + (i + 0.5) / 4000 * (dfLast - dfFirst)) / dfWidth, 2));
        EXPECT_NEAR(meanRockingCurve(dfFirst, dfLast, dfWidth), dfSum / 4000, 1e-6);
    }
}

// The whole chain of the mapping, on spots where the crystal stands exactly in Bragg position: every one
// must come back to its lattice point.
TEST(Mapping, BringsSimulatedSpotsBackToTheirLatticePoints)
{
    const struct {
        double dfAxis, dfStretch, dfAzimuth, dfRelaxation;
    } aRow[] = {{-38.5, 0, 0, 0}, {140.5, 1.42, 82, 0}, {90, 3, 10, 0}, {0, 0, 0, 2.5}};
    for (const auto& row : aRow) {
        SimulationParameters p = parametersOf("diopside");
        p.dfAxis = row.dfAxis;
        p.dfStretchAmplitude = row.dfStretch;
        p.dfStretchAzimuth = row.dfAzimuth;
        SimulatedSeries series;
        QString strError;
        ASSERT_TRUE(simulateSeries(p, series, strError)) << strError.toStdString();
        const CRotationProjection projection(p.dfWavelength, p.dfPixelSize, p.dfAxis, p.dfStretchAmplitude,
                                             p.dfStretchAzimuth);
        DataSet data;
        data.m_dfPixelSize = p.dfPixelSize;
        data.m_dfRotationAxis = p.dfAxis;
        data.m_dfStretchAmplitude = p.dfStretchAmplitude;
        data.m_dfStretchAzimuth = p.dfStretchAzimuth + 90;  // as opening a project sets it
        data.m_dfTiltRelaxation = row.dfRelaxation;
        data.m_dfCenterX = p.dfCenterX;
        data.m_dfCenterY = p.dfCenterY;
        QList<Vector3> listExpected;
        for (const TruthSpot& spot : series.listSpot) {
            // A frame of its own for every spot, at the tilt that is exact for it.
            const Vector3 vec = Vector3{double(spot.nH), double(spot.nK), double(spot.nL)} * series.matBasis;
            double dfTilt = 0;
            if (!exactTilt(projection, vec, series.listOverall[spot.nFrame], dfTilt))
                continue;
            const auto offset = projection.spotOffset(projection.turned(vec, dfTilt));
            const auto& shift = series.listShift[spot.nFrame];
            Peak3D peak;
            peak.dfX2D = p.dfCenterX + shift[0] + offset[0];
            peak.dfY2D = p.dfCenterY + shift[1] + offset[1];
            peak.nFrame = data.m_listPeakFrame.size();
            data.m_listPeakFrame.append({peak});
            data.m_listShift.append({shift[0], shift[1]});
            data.m_listOverallTilt.append(dfTilt);
            listExpected.append(vec);
        }
        const int nFrames = listExpected.size();
        ASSERT_GT(nFrames, 300);
        for (int n = 0; n < nFrames; ++n)  // the relaxation is added again by the mapping
            data.m_listOverallTilt[n] -= n * row.dfRelaxation / nFrames;
        MappingParameters mapping;
        mapping.m_bApplyStretching = row.dfStretch > 0;
        CRunReport report;
        ASSERT_TRUE(transformPeaksTo3D(data, mapping, report));
        for (int n = 0; n < nFrames; ++n) {
            const Peak3D& peak = data.m_listPeakFrame[n][0];
            ASSERT_LT(lengthOf(Vector3{peak.fX3D, peak.fY3D, peak.fZ3D} - listExpected[n]), 1e-5)
                << row.dfAxis << ' ' << n;
        }
    }
}

// Summed over its frames a reflection has |F|² times the Lorentz factor, the time that it takes through the
// sphere: counts · step · |ds/dθ| / |F|² is one number for the whole series.
TEST(Series, AReflectionSpreadsOverFramesWithTheLorentzFactor)
{
    SimulationParameters p = parametersOf("kyanite");
    p.dfMosaicity = 0;
    p.dfDrift = 0;
    p.dfTiltStart = -30;
    for (double dfStep : {0.25, 1.0}) {
        p.dfTiltStep = dfStep;
        p.nFrames = int(60 / dfStep);
        SimulatedSeries series;
        QString strError;
        ASSERT_TRUE(simulateSeries(p, series, strError));
        struct Total {
            double dfCounts = 0;
            int nFirst = 1 << 30, nLast = 0, nFrames = 0;
        };
        std::map<std::array<int, 3>, Total> mapTotal;
        for (const auto& list : series.listDrawn)
            for (const TruthSpot& spot : list) {
                Total& total = mapTotal[{spot.nH, spot.nK, spot.nL}];
                total.dfCounts += spot.dfCounts;
                total.nFirst = std::min(total.nFirst, spot.nFrame);
                total.nLast = std::max(total.nLast, spot.nFrame);
                ++total.nFrames;
            }
        const CRotationProjection projection(p.dfWavelength, p.dfPixelSize, p.dfAxis);
        const CStructureFactor crystal(*findCrystalStructure(p.strCrystal));
        std::vector<double> listConstant;
        for (const auto& [index, total] : mapTotal) {
            const Vector3 vec = Vector3{double(index[0]), double(index[1]), double(index[2])} *
                                series.matBasis;
            double dfTilt = 0;
            const double dfMiddle = p.dfTiltStart + (total.nFirst + total.nLast) / 2.0 * dfStep;
            if (total.nFirst < 2 || total.nLast > p.nFrames - 3 || total.dfCounts < 2000 ||
                lengthOf(vec) > 0.9 || std::hypot(vec[1], vec[2]) < 0.3 ||
                !exactTilt(projection, vec, dfMiddle, dfTilt))
                continue;
            EXPECT_EQ(total.nFrames, total.nLast - total.nFirst + 1);
            const double dfSpeed = std::abs(
                                       projection.excitationError(projection.turned(vec, dfTilt + 0.01)) -
                                       projection.excitationError(projection.turned(vec, dfTilt - 0.01))) /
                                   0.02;
            listConstant.push_back(total.dfCounts * dfStep * dfSpeed /
                                   std::norm(crystal.value(index[0], index[1], index[2])));
        }
        ASSERT_GT(listConstant.size(), 100u);
        const auto range = std::minmax_element(listConstant.begin(), listConstant.end());
        EXPECT_LT(*range.second / *range.first, 1.01) << dfStep;
    }
}
