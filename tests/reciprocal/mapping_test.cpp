#include "reciprocal/mapping.h"
#include "dataset/peaklistfile.h"
#include "geometry/axisline.h"
#include "reciprocal/outsiders.h"
#include "tests/reciprocal/testpeaks.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace tessera {

namespace {

const double g_dfRadians = std::acos(-1.0) / 180;

/// Ten frames, the first peak of each with indices, with an axis and a stretching of 8 % at 25 degrees.
DataSet seriesOfAxis(double dfAxis, double dfRelaxation)
{
    DataSet data;
    data.m_dfStretchAmplitude = 8;
    data.m_dfStretchAzimuth = 25;
    data.m_dfCenterX = 512.25;
    data.m_dfCenterY = 500.5;
    data.m_dfRotationAxis = dfAxis;
    data.m_dfTiltRelaxation = dfRelaxation;
    for (int n = 0; n < 10; ++n) {
        data.m_listOverallTilt.append(-20.0 + 3.5 * n);
        data.m_listShift.append(QPointF(0.5 * n, -0.25 * n));
        data.m_listPeakFrame.append(QList<Peak3D>());
        for (double dfX : {3.0, 212.0, 512.25, 1020.0}) {  // and on the direct beam
            for (double dfY : {9.0, 500.5, 777.0}) {
                data.m_listPeakFrame[n].append(peakAt(dfX, dfY));
            }
        }
        data.m_listPeakFrame[n][0].setHKL(1, 2, 3);
    }
    return data;
}

/// Bragg's law in double precision: no sphere, no projection. The stretching by the angle between the peak
/// and the azimuth of the greatest stretching.
void expectBragg(const DataSet& data, const Peak3D& peak, int n, bool bStretched)
{
    const double dfRawX = peak.dfX2D - 512.25 - 0.5 * n, dfRawY = peak.dfY2D - 500.5 + 0.25 * n;
    const double dfAlong = dfRawX * std::cos(25 * g_dfRadians) - dfRawY * std::sin(25 * g_dfRadians);
    const double dfPart = dfAlong / std::max(1e-9, std::hypot(dfRawX, dfRawY));
    const double dfScale = 1 + (bStretched ? 0.08 * (2 * dfPart * dfPart - 1) : 0);
    EXPECT_NEAR(peak.dfX2DCorrected, dfRawX * dfScale, 1e-9);
    EXPECT_NEAR(peak.dfY2DCorrected, dfRawY * dfScale, 1e-9);
    const double dfX = dfRawX * dfScale * data.m_dfPixelSize, dfY = dfRawY * dfScale * data.m_dfPixelSize;
    const double dfTwoTheta = std::atan(std::hypot(dfX, dfY) * data.m_dfWavelength);
    const double dfLength = 2 * std::sin(dfTwoTheta / 2) / data.m_dfWavelength;
    const double dfInPlane = std::sin(dfTwoTheta) / data.m_dfWavelength;
    const double dfAzimuth = std::atan2(dfY, dfX) + data.m_dfRotationAxis * g_dfRadians;
    const double dfLift = dfLength * std::sin(dfTwoTheta / 2);
    const double dfTilt = (-20 + 3.5 * n + n * data.m_dfTiltRelaxation / 10) * g_dfRadians;
    const double dfFlatY = dfInPlane * std::sin(dfAzimuth);
    EXPECT_NEAR(peak.fX3D, dfInPlane * std::cos(dfAzimuth), 8e-6);  // float step at 1/λ: 4e-6
    EXPECT_NEAR(peak.fY3D, dfFlatY * std::cos(dfTilt) - dfLift * std::sin(dfTilt), 8e-6);
    EXPECT_NEAR(peak.fZ3D, dfFlatY * std::sin(dfTilt) + dfLift * std::cos(dfTilt), 8e-6);
    EXPECT_NEAR(peak.dfDStar, dfLength, dfLength == 0 ? 0 : 8e-6);
    EXPECT_EQ(peak.dfFrameTilt, -20 + 3.5 * n);
}

}  // namespace

TEST(Mapping, FollowsBraggsLawAndTheTiltAboutTheAxis)
{
    for (double dfAxis : {0.0, 37.5, -120.0, 90.0}) {
        for (double dfRelaxation : {0.0, 2.0}) {
            SCOPED_TRACE(testing::Message() << "axis " << dfAxis << ", relaxation " << dfRelaxation);
            DataSet data = seriesOfAxis(dfAxis, dfRelaxation);
            MappingParameters parameters;
            parameters.m_bApplyStretching = dfAxis > 0;
            CRecordingReport log;
            ASSERT_TRUE(transformPeaksTo3D(data, parameters, log));
            for (int n = 0; n < 10; ++n) {
                ASSERT_EQ(data.m_listPeakFrame[n].size(), 12);
                for (const Peak3D& peak : data.m_listPeakFrame[n]) {
                    expectBragg(data, peak, n, parameters.m_bApplyStretching);
                    EXPECT_EQ(peak.dfH, 0);
                    EXPECT_EQ(peak.dfK, 0);
                    EXPECT_EQ(peak.dfL, 0);
                }
            }
        }
    }
}

TEST(Mapping, WantsShiftsAndTiltsOfEachFrame)
{
    DataSet data = seriesOfAxis(37.5, 0);
    const MappingParameters parameters;
    CRecordingReport log;
    data.m_listShift.removeLast();
    EXPECT_FALSE(transformPeaksTo3D(data, parameters, log));
    data.m_listShift.append(QPointF());
    data.m_listOverallTilt.removeLast();
    EXPECT_FALSE(transformPeaksTo3D(data, parameters, log));
    EXPECT_EQ(log.m_listSeverity, QList<Severity>({Severity::Error, Severity::Error}));
}

TEST(Mapping, IsDueWhenAnythingThatItUsedIsAnother)
{
    DataSet data;
    MappingParameters parameters;
    CRecordingReport log;
    data.m_listFrameFile = QStringList{"a", "b"};
    const auto readList = [&] {
        EXPECT_EQ(readPeakListBytes(data, "1 0 0 10.0 20.0 100.0\n2 1 0 11.0 20.0 5.0\n", "list", log), 1);
    };
    readList();
    data.m_listOverallTilt = {1, 2};
    EXPECT_FALSE(needsMapping(data, parameters)) << "without shifts it can't be";
    data.m_listShift = {{0, 0}, {1, 1}};
    const std::function<void()> aChange[] = {[&] {},
                                             [&] { readList(); },
                                             [&] {
                                                 data.m_listShift[1] = {1, 1.01};
                                             },
                                             [&] { data.m_listOverallTilt[0] = 1.5; },
                                             [&] { data.m_dfCenterX += 1; },
                                             [&] { data.m_dfCenterY += 1; },
                                             [&] { data.m_dfWavelength *= 2; },
                                             [&] { data.m_dfPixelSize *= 2; },
                                             [&] { data.m_dfRotationAxis += 1; },
                                             [&] { data.m_dfTiltRelaxation += 1; },
                                             [&] {
                                                 data.m_dfStretchAmplitude = 3;
                                                 EXPECT_FALSE(needsMapping(data, parameters)) << "not in use";
                                                 parameters.m_bApplyStretching = true;
                                             },
                                             [&] { data.m_dfStretchAzimuth = 4; }};
    for (const auto& fnChange : aChange) {
        fnChange();
        EXPECT_TRUE(needsMapping(data, parameters)) << &fnChange - aChange;
        ASSERT_TRUE(transformPeaksTo3D(data, parameters, log));
        EXPECT_FALSE(needsMapping(data, parameters)) << &fnChange - aChange;
    }
    clearDataSet(data);
    EXPECT_FALSE(data.m_peakMapping);
}

TEST(Mapping, TheLimitsAreIncluded)
{
    const struct {
        double dfI, dfDStar;
        bool bShown;
    } aRow[] = {{0, 0.5, true},     {32768, 1, true}, {32768.01, 0.5, false},    {-0.01, 0.5, false},
                {5, 1.0001, false}, {5, 0, true},     {std::nan(""), 0.5, false}};
    for (const auto& row : aRow) {
        Peak3D peak = peakAt(0, 0, 1, row.dfI);
        peak.dfDStar = row.dfDStar;
        const PeaksShown shown = filterPeaksShown({{}, {peak}, {}}, MappingParameters());
        ASSERT_EQ(shown.m_listPeakFrameShown.size(), 3);
        EXPECT_EQ(shown.m_listPeakFrameShown[1].size(), int(row.bShown)) << row.dfI << " " << row.dfDStar;
        EXPECT_EQ(shown.m_listPeakFlat.size(), int(row.bShown));
    }
}

TEST(FrameGeometry, DistanceAndAngleToTheAxisAreThoseOfTheLine)
{
    const BeamCentres centres = {{QPointF(), QPointF(3, -4)}, 100, 200};
    for (double dfAxis : {-180.0, -135.0, -90.0, -30.0, 0.0, 45.0, 89.0, 90.0, 91.0, 180.0}) {
        for (double dfX : {-7.0, 0.0, 20.0}) {
            for (double dfY : {-11.0, 6.0}) {
                const double df = dfAxis * g_dfRadians;
                const double dfAlong = dfX * std::cos(df) - dfY * std::sin(df);
                const double dfAcross = std::fabs(dfX * std::sin(df) + dfY * std::cos(df));
                const QPointF ptRaw = calPeak2DPosFrame(centres, 1, QPointF(dfX, dfY));
                EXPECT_EQ(ptRaw, QPointF(103 + dfX, 196 + dfY));
                EXPECT_EQ(calPeak2DPosCenterCorrected(centres, 1, ptRaw), QPointF(dfX, dfY));
                EXPECT_NEAR(calDistanceToRotationAxis(centres, dfAxis, 1, ptRaw), dfAcross, 1e-4) << dfAxis;
                EXPECT_NEAR(calAngleToRotationAxis(centres, dfAxis, 1, peakAt(ptRaw.x(), ptRaw.y())),
                            std::atan2(dfAcross, std::fabs(dfAlong)) / g_dfRadians, 1e-4)
                    << dfAxis << " " << dfX << " " << dfY;
            }
        }
    }
    EXPECT_EQ(calAngleToRotationAxis(centres, 30, 1, peakAt(103, 196)), 60);  // on the beam
}

TEST(Outsiders, TheWedgeHasTwoSidesAndAMargin)
{
    QList<Peak3D> list;
    const double adfAngle[] = {27.9, -27.9, -152.1, 152.1, 180, /* outside */ 28.1, -28.1, 90, 151.9};
    for (double dfAngle : adfAngle) {
        list.append(reflection(0, 0, 0, 1, list.size()));
        list.last().setPoint({0.3f, float(0.2 * std::cos(dfAngle * g_dfRadians)),
                              float(0.2 * std::sin(dfAngle * g_dfRadians))});
    }
    removeOutsiderReflections(list, {30, 0, -30}, ReciprocalBasis());
    EXPECT_EQ(idsOf(list), QList<int>({0, 1, 2, 3, 4}));
}

TEST(AxisLine, MeetsTheEdgesWhereTheTableSays)
{
    const struct {
        QPointF ptCentre;
        double dfAxis;
        QSize sizeFrame;
        bool bShown;
        QLineF line;
    } aRow[] = {
        {{101.25, 49.5}, 0, {200, 100}, true, {0, 49.5, 200, 49.5}},
        {{101.25, 49.5}, 90, {200, 100}, true, {101.25, 0, 101.25, 100}},
        {{100, 50}, 45, {200, 100}, true, {150, 0, 50, 100}},  // up to the right, as y runs down
        {{60, 60}, 45, {100, 100}, true, {100, 20, 20, 100}},  // right edge before bottom
        {{50, 50}, 45, {100, 100}, true, {100, 0, 0, 100}},    // two corners, each cut twice
        {{0, 100}, 45, {200, 100}, true, {100, 0, 0, 100}},    // out of one corner
        {{-10, -20}, 45, {200, 100}, false, {}},               // passes by
        {{-30, 30}, 45, {200, 100}, true, {0, 0, 0, 0}},       // touches a corner alone
        {{-10, 30}, -45, {200, 100}, true, {0, 40, 60, 100}},  // from a beam beside the frame
        {{100, 50}, 45, {0, 100}, false, {}},
        {{std::nan(""), 50}, 45, {200, 100}, false, {}},
    };
    for (const auto& row : aRow) {
        const std::optional<QLineF> line = axisLine(row.ptCentre, row.dfAxis, row.sizeFrame);
        ASSERT_EQ(line.has_value(), row.bShown) << row.dfAxis;
        if (line) {
            EXPECT_EQ(*line, row.line) << row.ptCentre.x() << " " << row.dfAxis << ": " << line->x1() << " "
                                       << line->y1() << " " << line->x2() << " " << line->y2();
        }
    }
}

}  // namespace tessera
