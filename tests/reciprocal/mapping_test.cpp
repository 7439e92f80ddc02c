#include "reciprocal/mapping.h"
#include "reciprocal/outsiders.h"
#include "recordingreport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

DataSet seriesOf(int nFrames)
{
    DataSet data;
    data.m_dfCenterX = 512.25;
    data.m_dfCenterY = 500.5;
    for (int n = 0; n < nFrames; ++n) {
        data.m_listOverallTilt.append(-20.0 + 3.5 * n);
        data.m_listShift.append(QPointF(0.5 * n, -0.25 * n));
        data.m_listPeakFrame.append(QList<Peak3D>());
    }
    return data;
}

Peak3D peakAt(double dfX, double dfY)
{
    Peak3D peak;
    peak.dfX2D = dfX;
    peak.dfY2D = dfY;
    peak.setHKL(1, 2, 3);
    return peak;
}

}  // namespace

// Bragg's law in double precision: no sphere, no projection.
TEST(Mapping, FollowsBraggsLawAndTheTiltAboutTheAxis)
{
    for (double dfAxis : {0.0, 37.5, -120.0, 90.0})
        for (double dfRelaxation : {0.0, 2.0}) {
            DataSet data = seriesOf(10);
            data.m_dfRotationAxis = dfAxis;
            data.m_dfTiltRelaxation = dfRelaxation;
            for (int n = 0; n < 10; ++n)
                for (double dfX : {3.0, 212.0, 512.25, 1020.0})  // and on the direct beam
                    for (double dfY : {9.0, 500.5, 777.0})
                        data.m_listPeakFrame[n].append(peakAt(dfX, dfY));
            CRecordingReport log;
            ASSERT_TRUE(transformPeaksTo3D(data, MappingParameters(), log));
            for (int n = 0; n < 10; ++n) {
                ASSERT_EQ(data.m_listPeakFrame[n].size(), 12);
                for (const Peak3D& peak : data.m_listPeakFrame[n]) {
                    const double dfX = (peak.dfX2D - 512.25 - 0.5 * n) * data.m_dfPixelSize;
                    const double dfY = (peak.dfY2D - 500.5 + 0.25 * n) * data.m_dfPixelSize;
                    const double dfTwoTheta = std::atan(std::hypot(dfX, dfY) * data.m_dfWavelength);
                    const double dfLength = 2 * std::sin(dfTwoTheta / 2) / data.m_dfWavelength;
                    const double dfInPlane = std::sin(dfTwoTheta) / data.m_dfWavelength;
                    const double dfAzimuth = std::atan2(dfY, dfX) + dfAxis * M_PI / 180;
                    const double dfLift = dfLength * std::sin(dfTwoTheta / 2);
                    const double dfTilt = (-20 + 3.5 * n + n * dfRelaxation / 10) * M_PI / 180;
                    const double dfFlatY = dfInPlane * std::sin(dfAzimuth);
                    EXPECT_NEAR(peak.fX3D, dfInPlane * std::cos(dfAzimuth), 8e-6);  // float step at 1/λ: 4e-6
                    EXPECT_NEAR(peak.fY3D, dfFlatY * std::cos(dfTilt) - dfLift * std::sin(dfTilt), 8e-6);
                    EXPECT_NEAR(peak.fZ3D, dfFlatY * std::sin(dfTilt) + dfLift * std::cos(dfTilt), 8e-6);
                    EXPECT_NEAR(peak.dfDStar, dfLength, 8e-6);
                    EXPECT_EQ(peak.dfFrameTilt, -20 + 3.5 * n);
                    EXPECT_EQ(std::fabs(peak.dfH) + std::fabs(peak.dfK) + std::fabs(peak.dfL), 0);
                }
            }
        }
}

TEST(Mapping, TheLimitsAreIncluded)
{
    const struct {
        double dfI, dfDStar;
        bool bShown;
    } aRow[] = {{0, 0.5, true},     {32768, 1, true}, {32768.01, 0.5, false},    {-0.01, 0.5, false},
                {5, 1.0001, false}, {5, 0, true},     {std::nan(""), 0.5, false}};
    for (const auto& row : aRow) {
        Peak3D peak;
        peak.dfIPoint = row.dfI;
        peak.dfDStar = row.dfDStar;
        const PeaksShown shown = filterPeaksShown({{}, {peak}, {}}, MappingParameters());
        EXPECT_EQ(shown.m_listPeakFlat.size(), int(row.bShown)) << row.dfI << " " << row.dfDStar;
        ASSERT_EQ(shown.m_listPeakFrameShown.size(), 3);
        EXPECT_EQ(shown.m_listPeakFrameShown[1].size(), int(row.bShown));
    }
}

// An ellipse of half axes 1 + a and 1 - a, its long one turned counter-clockwise on the screen.
TEST(Stretching, MakesAnEllipseTurnedAsSeenOnTheScreen)
{
    for (double dfAzimuth : {0.0, 30.0, 135.0})
        for (double dfFrom : {0.0, 90.0}) {
            const double dfRad = (dfAzimuth + dfFrom) * M_PI / 180;
            DataSet data = seriesOf(1);
            data.m_dfStretchAmplitude = 20;
            data.m_dfStretchAzimuth = dfAzimuth;
            data.m_listPeakFrame[0] = {peakAt(512.25 + 10 * std::cos(dfRad), 500.5 - 10 * std::sin(dfRad))};
            MappingParameters parameters;
            parameters.m_bApplyStretching = true;
            CRecordingReport log;
            ASSERT_TRUE(transformPeaksTo3D(data, parameters, log));
            const double dfHalf = dfFrom > 0 ? 8 : 12;
            EXPECT_NEAR(data.m_listPeakFrame[0][0].dfX2DCorrected, dfHalf * std::cos(dfRad), 1e-10);
            EXPECT_NEAR(data.m_listPeakFrame[0][0].dfY2DCorrected, -dfHalf * std::sin(dfRad), 1e-10);
        }
}

TEST(FrameGeometry, DistanceAndAngleToTheAxisAreThoseOfTheLine)
{
    const BeamCentres centres = {{QPointF(), QPointF(3, -4)}, 100, 200};
    for (double dfAxis : {-180.0, -135.0, -90.0, -30.0, 0.0, 45.0, 89.0, 90.0, 91.0, 180.0})
        for (double dfX : {-7.0, 0.0, 20.0})
            for (double dfY : {-11.0, 6.0}) {
                const double dfRad = dfAxis * M_PI / 180;
                const double dfAlong = dfX * std::cos(dfRad) - dfY * std::sin(dfRad);
                const double dfAcross = std::fabs(dfX * std::sin(dfRad) + dfY * std::cos(dfRad));
                const QPointF ptRaw = calPeak2DPosFrame(centres, 1, QPointF(dfX, dfY));
                EXPECT_EQ(ptRaw, QPointF(103 + dfX, 196 + dfY));
                EXPECT_EQ(calPeak2DPosCenterCorrected(centres, 1, ptRaw), QPointF(dfX, dfY));
                EXPECT_NEAR(calDistanceToRotationAxis(centres, dfAxis, 1, ptRaw), dfAcross, 1e-4) << dfAxis;
                EXPECT_NEAR(calAngleToRotationAxis(centres, dfAxis, 1, peakAt(ptRaw.x(), ptRaw.y())),
                            std::atan2(dfAcross, std::fabs(dfAlong)) * 180 / M_PI, 1e-4)
                    << dfAxis << " " << dfX << " " << dfY;
            }
}

TEST(Outsiders, TheWedgeHasTwoSidesAndAMargin)
{
    const struct {
        double dfAngle;
        bool bInside;
    } aRow[] = {{27.9, true},  {28.1, false}, {-27.9, true}, {-28.1, false}, {-152.1, true},
                {152.1, true}, {90, false},   {180, true},   {151.9, false}};
    for (const auto& row : aRow) {
        Peak3D peak;
        peak.setPoint({0.3f, float(0.2 * std::cos(row.dfAngle * M_PI / 180)),
                       float(0.2 * std::sin(row.dfAngle * M_PI / 180))});
        QList<Peak3D> list = {peak};
        removeOutsiderReflections(list, {30, 0, -30}, {Vec3D(), Vec3D(), Vec3D()});
        EXPECT_EQ(!list.isEmpty(), row.bInside) << row.dfAngle;
    }
}
