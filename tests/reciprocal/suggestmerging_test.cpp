#include "reciprocal/suggestmerging.h"
#include "reciprocal/suggestlimits.h"
#include "records/pi.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// Frames with a beam at (200, 200) that drifts, and a square lattice of peaks that turns around it.
DataSet seriesOf(double dfSpacing, int nRimPeaks, double dfRim)
{
    DataSet dataSet;
    dataSet.m_dfPixelSize = 0.004;
    dataSet.m_dfCenterX = dataSet.m_dfCenterY = 200;
    for (int n = 0; n < 12; ++n) {
        const QPointF ptShift(0.5 * n, -0.3 * n);
        dataSet.m_listShift.append(ptShift);
        QList<Peak3D> listPeak;
        const auto add = [&](double dfX, double dfY, double dfHeight) {
            Peak3D peak;
            peak.dfX2D = std::round(200 + ptShift.x() + dfX);
            peak.dfY2D = std::round(200 + ptShift.y() + dfY);
            peak.dfIPoint = dfHeight;
            listPeak.append(peak);
        };
        for (int i = 0; i < nRimPeaks; ++i) {
            add(dfRim * std::cos(i * 2 * g_dfPi / nRimPeaks), dfRim * std::sin(i * 2 * g_dfPi / nRimPeaks),
                1e5);
        }
        const double dfCos = std::cos(0.1 * n), dfSin = std::sin(0.1 * n);
        for (int h = -3; h <= 3; ++h) {
            for (int k = -3; k <= 3; ++k) {
                if (h != 0 || k != 0) {
                    add(dfSpacing * (h * dfCos - k * dfSin), dfSpacing * (h * dfSin + k * dfCos), 100 + h);
                }
            }
        }
        dataSet.m_listPeakFrame.append(listPeak);
    }
    return dataSet;
}

TEST(SuggestMerging, StaysBelowTheWayToTheNextPeak)
{
    const DataSet dataSet = seriesOf(9, 0, 0);
    const double dfClosest = closestDistanceOfPeaks(dataSet.m_listPeakFrame);
    EXPECT_NEAR(dfClosest, 9, 1);  // whole pixels
    const Suggestion dense = suggestMerging(dfClosest);
    ASSERT_EQ(dense.size(), 2);
    EXPECT_EQ(dense[0].member, ParameterMember(&PeakMergingParameters::m_dfMin3DDistance));
    EXPECT_LT(dense[1].dfValue, dfClosest / 2);
    // For all directions of the next spot relative to the plane of the frame: if it is near enough on the
    // frame to join the chain, it is beyond the distance that closes the chain, the nearest one only just.
    double dfNearest = dfClosest;
    for (double dfDegrees = 0; dfDegrees <= 90; dfDegrees += 0.05) {
        const double dfAngle = dfDegrees * g_dfPi / 180;
        if (dfClosest * std::cos(dfAngle) <= dense[1].dfValue) {
            dfNearest = std::min(dfNearest, dfClosest * std::sin(dfAngle));
        }
    }
    EXPECT_GE(dfNearest, dense[0].dfValue - 0.01);
    EXPECT_LE(dfNearest, dense[0].dfValue + 0.02);
    const Suggestion sparse = suggestMerging(40);
    EXPECT_EQ(sparse[0].dfValue, PeakMergingParameters().m_dfMin3DDistance);
    EXPECT_EQ(sparse[1].dfValue, PeakMergingParameters().m_dfMax2DDistance);
    EXPECT_EQ(closestDistanceOfPeaks({}), 0);
    EXPECT_TRUE(suggestMerging(0).isEmpty());
}

TEST(SuggestLimits, LeavesOutTheRimOfABroadBeamAndNothingElse)
{
    const DataSet broad = seriesOf(24, 9, 8);
    const double dfClosest = closestDistanceOfPeaks(broad.m_listPeakFrame);
    EXPECT_NEAR(dfClosest, 24, 1);  // the rim does not move, and does not count
    const double dfRadius = radiusOfBeamPeaks(broad, dfClosest);
    EXPECT_GE(dfRadius, 8);
    EXPECT_LE(dfRadius, 10);
    const Suggestion limits = suggestLimits(broad, dfClosest);
    ASSERT_EQ(limits.size(), 1);
    EXPECT_GE(limits[0].dfValue, 8 * 0.004);
    EXPECT_LT(limits[0].dfValue, 24 * 0.004);
    EXPECT_TRUE(suggestLimits(seriesOf(24, 1, 0), 24).isEmpty());  // the one peak of a sound beam
    EXPECT_TRUE(suggestLimits(seriesOf(24, 0, 0), 24).isEmpty());
    EXPECT_TRUE(suggestLimits(DataSet(), 24).isEmpty());
    EXPECT_TRUE(suggestLimits(broad, 0).isEmpty());
}

}  // namespace

}  // namespace tessera
