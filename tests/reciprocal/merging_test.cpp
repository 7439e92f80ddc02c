#include "reciprocal/merging.h"
#include "reciprocal/mapping.h"
#include "reciprocal/runlog.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

/// A series at one tilt of 0: the frames' plane is z = 0.
DataSet flatSeries(int nFrames)
{
    DataSet data;
    data.m_dfCenterX = 100;
    data.m_dfCenterY = 200;
    for (int n = 0; n < nFrames; ++n) {
        data.m_listOverallTilt.append(0);
        data.m_listShift.append(QPointF(n, 2 * n));
        data.m_listBeamTiltBreak.append(n == 0);
        data.m_listPeakFrame.append(QList<Peak3D>());
    }
    return data;
}

/// A peak at a place relative to the direct beam, with its point in units of pixels.
void addPeak(DataSet& data, int nFrame, double dfX, double dfY, Vec3D vecPixels, double dfI2D)
{
    static int nID = 0;
    nID = data.m_listPeakFrame[0].isEmpty() && nFrame == 0 ? 0 : nID + 1;
    Peak3D peak;
    peak.dfX2D = dfX + 100 + nFrame;
    peak.dfY2D = dfY + 200 + 2 * nFrame;
    peak.setPoint(scaled(vecPixels, 0.001f));
    peak.dfDStar = double(length(peak.point()));
    peak.nFrame = nFrame;
    peak.dfFrameTilt = nFrame;
    peak.dfI2D = dfI2D;
    peak.dfIPoint = 2 * dfI2D;
    peak.nID = nID;
    data.m_listPeakFrame[nFrame].append(peak);
}

PeakMergingResult merge(DataSet& data, const PeakMergingParameters& parameters, CRunReport& report,
                        const std::vector<char>& vecSelected = {})
{
    showPeaksIn3D(data, MappingParameters());
    return peakReduction3D(data, parameters, vecSelected, report);
}

/// The chains as lists of nID, found by the plain walk over all open chains.
QList<QList<int>> plainChains(const DataSet& data, const PeakMergingParameters& parameters)
{
    QList<QList<Peak3D>> listOpen, listClosed;
    const int nFrames = data.m_listPeakFrameShown.size();
    for (int n = 0; n < nFrames; ++n) {
        const double dfTilt =
            (data.m_listOverallTilt[n] + n * data.m_dfTiltRelaxation / nFrames) * 3.141592653589793 / 180;
        QList<QList<Peak3D>> listStay;
        for (const QList<Peak3D>& chain : listOpen) {
            const Peak3D& t = chain.last();
            const double dfD =
                std::fabs(-std::sin(dfTilt) * double(t.fY3D) + std::cos(dfTilt) * double(t.fZ3D));
            (dfD > parameters.m_dfMin3DDistance * data.m_dfPixelSize ? listClosed : listStay).append(chain);
        }
        listOpen = listStay;
        for (Peak3D q : data.m_listPeakFrameShown[n]) {
            q.dfX2D -= data.m_dfCenterX + data.m_listShift[n].x();
            q.dfY2D -= data.m_dfCenterY + data.m_listShift[n].y();
            double dfBest = 1e100;
            int nBest = -1;
            for (int c = 0; c < listStay.size(); ++c) {
                const Peak3D& t = listStay[c].last();
                const double dfSquare =
                    (q.dfX2D - t.dfX2D) * (q.dfX2D - t.dfX2D) + (q.dfY2D - t.dfY2D) * (q.dfY2D - t.dfY2D);
                if (dfSquare < dfBest) {
                    dfBest = dfSquare;
                    nBest = c;
                }
            }
            if (std::sqrt(dfBest) < parameters.m_dfMax2DDistance)
                listOpen[nBest].append(q);
            else
                listOpen.append({q});
        }
    }
    QList<QList<int>> listID;
    for (const QList<Peak3D>& chain : listClosed + listOpen) {
        listID.append(QList<int>());
        for (const Peak3D& peak : chain)
            listID.last().append(peak.nID);
    }
    return listID;
}

}  // namespace

// A reflection over three frames, a streak, and one that leaves the plane and is closed first.
TEST(Merging, KnownChainsBecomeReflectionsAndStreaks)
{
    DataSet data = flatSeries(3);
    addPeak(data, 0, 10, 10, {10, 10, 0}, 4);
    addPeak(data, 0, 50, 50, {50, 50, 0}, 1);
    addPeak(data, 0, -30, 0, {-30, 0, 11}, 3);  // more than 10 pixels from the plane
    addPeak(data, 1, 51, 50, {70, 50, 0}, 1);
    addPeak(data, 1, 11, 10, {11, 12, 0}, 6);
    addPeak(data, 1, 15, 10, {12, 12, 0}, 0);  // exactly 5 pixels from the chain's end: not near enough
    addPeak(data, 2, 52, 50, {90, 50, 0}, 1);
    addPeak(data, 2, 12, 10, {12, 14, 0}, 6);
    addPeak(data, 2, 12, 12, {12, 14, 0}, -5);     // joins the same chain; a weight below 0 doesn't count
    addPeak(data, 2, 80, 80, {80, 80, 0}, 20000);  // 40000 in dfIPoint: outside the limits
    CRunLog log;
    const PeakMergingResult result = merge(data, PeakMergingParameters(), log);
    ASSERT_TRUE(result.bFinished);
    EXPECT_EQ(data.m_nIntensityMode, 1);
    ASSERT_EQ(data.m_listPeakChain.size(), 4);
    EXPECT_EQ(data.m_listPeakChain[0].size(), 1);  // closed first
    EXPECT_EQ(data.m_listPeakChain[0][0].dfX2D, -30);
    EXPECT_EQ(data.m_listPeakChain[1].size(), 3);
    EXPECT_EQ(data.m_listPeakChain[1].last().dfI2D, 6);

    // The last peak lay below the intensity minimum of 0 and was not merged either.
    EXPECT_EQ(result.nOutsideLimits, 2);
    const int nLine = log.find("2 peaks lie outside the intensity or resolution limits");
    ASSERT_GE(nLine, 0);
    EXPECT_EQ(log.m_listLine.last(), "8 peaks in 4 chains found. 5 peaks remained after merging.");
    EXPECT_EQ(nLine, log.m_listLine.size() - 2);

    ASSERT_EQ(data.m_listPeakMerged.size(), 2);  // the chain of weight 0 yields nothing
    const Peak3D& merged = data.m_listPeakMerged[1];
    EXPECT_EQ(merged.nID, 1);
    EXPECT_EQ(merged.nFrame, 1);  // the first of the equally strong
    EXPECT_EQ(merged.dfX2D, 11 + 101);
    EXPECT_EQ(merged.dfY2D, 10 + 202);
    EXPECT_EQ(merged.dfIPoint, 6);
    EXPECT_EQ(merged.dfI2D, 0);
    EXPECT_NEAR(merged.fX3D, 0.001 * (4 * 10 + 6 * 11 + 6 * 12) / 16, 1e-8);
    EXPECT_NEAR(merged.fY3D, 0.001 * (4 * 10 + 6 * 12 + 6 * 14) / 16, 1e-8);
    EXPECT_NEAR(merged.dfDStar, std::hypot(merged.fX3D, merged.fY3D), 1e-8);
    EXPECT_EQ(result.listStreakIndex, QList<int>({2, 3, 4}));
    ASSERT_EQ(data.m_listPeakMergedShown.size(), 5);
    EXPECT_EQ(data.m_listPeakMergedShown[3].dfX2D, 51 + 101);
    EXPECT_EQ(data.m_listPeakMergedShown[3].nID, 2);
}

TEST(Merging, TheIntegralThroughTheFramesIsATrapezoid)
{
    DataSet data = flatSeries(3);
    addPeak(data, 0, 0, 0, {0, 0, 0}, 2);
    addPeak(data, 1, 0, 0, {3, 4, 0}, 8);
    addPeak(data, 2, 0, 0, {3, 4, 5}, 4);
    addPeak(data, 2, 50, 0, {50, 0, 0}, 4);  // a chain of one has no path
    PeakMergingParameters parameters;
    parameters.m_bIntegrateThroughFrames = true;
    CRunLog log;
    for (bool b2D : {true, false}) {
        parameters.m_bIntegrate2D = b2D;
        ASSERT_TRUE(merge(data, parameters, log).bFinished);
        ASSERT_EQ(data.m_listPeakMerged.size(), 1);
        // Steps of 5 pixels each; dfIPoint is twice dfI2D.
        EXPECT_NEAR(data.m_listPeakMerged[0].dfIPoint, 100 * 0.005 * (5 + 6) * (b2D ? 1 : 2), 1e-5);
        EXPECT_NEAR(data.m_listPeakMerged[0].fX3D, 0.001 * (8 * 3 + 4 * 3) / 14, 1e-8);
    }
}

TEST(Merging, LengthLimitsDecideWhatAChainIs)
{
    // Binary fractions, so that a length of exactly the limit is one.
    const struct {
        float fLength;
        int nMerged, nShown;
    } aRow[] = {{16, 1, 1}, {16.001f, 0, 2}, {0, 1, 1}};
    for (const auto& row : aRow) {
        DataSet data = flatSeries(2);
        data.m_dfPixelSize = 1.0 / 1024;
        for (int n = 0; n < 2; ++n) {
            addPeak(data, n, 0, 0, {}, 1);
            data.m_listPeakFrame[n][0].setPoint({n * row.fLength / 1024, 0, 0});
        }
        PeakMergingParameters parameters;
        parameters.m_dfMax3DLength = 16;
        CRunLog log;
        ASSERT_TRUE(merge(data, parameters, log).bFinished);
        EXPECT_EQ(data.m_listPeakMerged.size(), row.nMerged) << row.fLength;
        EXPECT_EQ(data.m_listPeakMergedShown.size(), row.nShown);

        parameters.m_dfMin2DLength = 20;
        parameters.m_dfMax3DLength = 30;
        ASSERT_TRUE(merge(data, parameters, log).bFinished);
        EXPECT_TRUE(data.m_listPeakMergedShown.isEmpty());
        EXPECT_GE(log.find("Abnormal chain length: "), 0);
        EXPECT_GE(log.find(QStringLiteral(", min:%1").arg(20.0 / 1024)), 0);
    }
}

TEST(Merging, FastMatchingFindsTheChainsOfThePlainWalk)
{
    std::mt19937 random(5);
    for (double dfMax2D : {0.0, 1.0, 3.5, 40.0}) {
        DataSet data = flatSeries(30);
        data.m_dfTiltRelaxation = 1;
        for (int n = 0; n < 30; ++n) {
            data.m_listOverallTilt[n] = n - 15;
            for (int i = 0; i < 80; ++i)  // whole pixels in a small field: many equal distances
                addPeak(data, n, int(random() % 60), int(random() % 60),
                        {float(random() % 60), float(random() % 60) - 30, float(random() % 16) - 8}, 1);
        }
        PeakMergingParameters parameters;
        parameters.m_dfMax2DDistance = dfMax2D;
        CRunLog log;
        ASSERT_TRUE(merge(data, parameters, log).bFinished);
        QList<QList<int>> listID;
        for (const QList<Peak3D>& chain : data.m_listPeakChain) {
            listID.append(QList<int>());
            for (const Peak3D& peak : chain)
                listID.last().append(peak.nID);
        }
        EXPECT_TRUE(listID == plainChains(data, parameters)) << dfMax2D;
    }
}

TEST(Merging, SelectionStopAndRefusal)
{
    DataSet data = flatSeries(2);
    addPeak(data, 0, 0, 0, {}, 1);
    addPeak(data, 0, 50, 0, {}, 1);
    addPeak(data, 1, 90, 0, {}, 1);
    data.m_listPeakFrame[1][0].nID = 1000000;  // no flag: kept out
    CRunLog log;
    ASSERT_TRUE(merge(data, PeakMergingParameters(), log, {0, 1, 1}).bFinished);
    ASSERT_EQ(data.m_listPeakMerged.size(), 1);
    EXPECT_EQ(data.m_listPeakMerged[0].dfX2D, 150);
    EXPECT_EQ(log.find("outside"), -1);
    EXPECT_EQ(data.m_listPeakMerged[0].dfFrameFit, 1);  // the curves were fitted

    log.m_nStopAfter = 1;
    EXPECT_FALSE(merge(data, PeakMergingParameters(), log).bFinished);
    EXPECT_EQ(data.m_listPeakMerged.size(), 1);
    log.m_nStopAfter = -1;
    data.m_listShift.removeLast();
    EXPECT_FALSE(merge(data, PeakMergingParameters(), log).bFinished);
    EXPECT_EQ(data.m_listPeakChain.size(), 1);
    EXPECT_EQ(log.m_listColor.last(), Qt::red);
}
