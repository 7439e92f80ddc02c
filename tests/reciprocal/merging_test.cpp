#include "reciprocal/merging.h"
#include "reciprocal/mapping.h"
#include "reciprocal/nearestpeak.h"
#include "tests/reciprocal/testpeaks.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <utility>
#include <vector>

namespace tessera {

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
    Peak3D peak = peakAt(dfX + 100 + nFrame, dfY + 200 + 2 * nFrame, nFrame, 2 * dfI2D);
    peak.setPoint(scaledDouble(vecPixels, data.m_dfPixelSize));
    peak.dfI2D = dfI2D;
    for (const QList<Peak3D>& listPeak : data.m_listPeakFrame) {
        peak.nID += listPeak.size();
    }
    data.m_listPeakFrame[nFrame].append(peak);
}

PeakMergingResult merge(DataSet& data, const PeakMergingParameters& parameters, CRunReport& report,
                        const std::vector<char>* pvecSelected = nullptr)
{
    showPeaksIn3D(data, MappingParameters());
    return peakReduction3D(data, parameters, pvecSelected, report);
}

QList<QList<int>> idsOfChains(const QList<QList<Peak3D>>& listChain)
{
    QList<QList<int>> listID;
    for (const QList<Peak3D>& chain : listChain) {
        listID.append(idsOf(chain));
    }
    return listID;
}

/// A reflection over three frames, a streak, and one that leaves the plane and is closed first.
DataSet seriesOfChains()
{
    DataSet data = flatSeries(3);
    addPeak(data, 0, 10, 10, {10, 10, 0}, 4);
    addPeak(data, 0, 50, 50, {50, 50, 0}, 1);
    addPeak(data, 0, -30, 0, {-30, 0, 11}, 0);  // more than 10 pixels from the plane
    addPeak(data, 1, 51, 50, {70, 50, 0}, 1);
    addPeak(data, 1, 11, 11, {11, 12, 0}, 6);
    addPeak(data, 1, 10, 15, {12, 12, 0}, 0);  // exactly 5 pixels from the chain's end: not near enough
    addPeak(data, 2, 52, 50, {90, 50, 0}, 1);
    addPeak(data, 2, 17, 10, {12, 14, 0}, 6);
    addPeak(data, 2, 12, 12, {12, 14, 0}, -5);     // below the least intensity
    addPeak(data, 2, 80, 80, {80, 80, 0}, 20000);  // 40000 in dfIPoint: above the greatest
    addPeak(data, 1, 14, 10, {11, 12, 0}, 2);      // a second one of the frame, which leads the chain on
    addPeak(data, 1, 12, 18, {12, 12, 0}, 0);      // near one that began on this very frame
    return data;
}

}  // namespace

TEST(Merging, KnownChainsBecomeReflectionsAndStreaks)
{
    DataSet data = seriesOfChains();
    CRecordingReport log;
    const PeakMergingResult result = merge(data, PeakMergingParameters(), log);
    ASSERT_TRUE(result.outcome.finished());
    EXPECT_EQ(idsOfChains(data.m_listPeakChain),
              QList<QList<int>>({{2}, {0, 4, 10, 7}, {1, 3, 6}, {5}, {11}}));
    EXPECT_EQ(data.m_listPeakChain[0][0].dfX2D, -30);
    EXPECT_EQ(log.m_listLine.mid(log.m_listLine.size() - 3),
              QStringList({"2 peaks lie outside the intensity or resolution limits and were not merged.",
                           "3 chains were dropped, as no peak of theirs has a positive intensity.",
                           "10 peaks in 5 chains found. 4 peaks remained after merging."}));
    EXPECT_EQ(idsOf(data.m_listPeakMerged), QList<int>({1}));  // chains of weight 0 yield nothing
    EXPECT_GT(data.m_listPeakMerged[0].dfFrameFit, 0);         // the curves were fitted
    EXPECT_EQ(result.listStreakIndex, QList<int>({1, 2, 3}));
    EXPECT_EQ(idsOf(data.m_listPeakMergedShown), QList<int>({1, 2, 2, 2}));
    EXPECT_EQ(data.m_listPeakMergedShown[2].dfX2D, 51 + 101);
}

// Flags by nID: one without a flag is kept out, and no flags at all select nothing. A merge that is stopped,
// or lacks a shift or a tilt, leaves what the last one made.
TEST(Merging, TakesThePeaksOfItsFlagsAndKeepsTheLastResult)
{
    DataSet data = seriesOfChains();
    CRecordingReport log;
    const std::vector<char> vecSome = {0, 0, 1, 0, 0, 1, 1}, vecNone;
    ASSERT_TRUE(merge(data, PeakMergingParameters(), log, &vecNone).outcome.finished());
    EXPECT_TRUE(data.m_listPeakChain.isEmpty());
    EXPECT_TRUE(data.m_listPeakMerged.isEmpty());
    ASSERT_TRUE(merge(data, PeakMergingParameters(), log, &vecSome).outcome.finished());
    for (int nStop : {0, 1, 2, 3}) {
        log.m_nStopAfter = nStop;
        EXPECT_EQ(merge(data, PeakMergingParameters(), log).outcome.end, RunEnd::Stopped) << nStop;
    }
    log.m_nStopAfter = -1;
    data.m_listShift.removeLast();
    EXPECT_EQ(merge(data, PeakMergingParameters(), log).outcome.end, RunEnd::Refused);
    data.m_listShift.append(QPointF());
    data.m_listOverallTilt.removeLast();
    EXPECT_EQ(merge(data, PeakMergingParameters(), log).outcome.end, RunEnd::Refused);
    EXPECT_EQ(log.m_listSeverity.count(Severity::Error), 2);
    EXPECT_EQ(idsOfChains(data.m_listPeakChain), QList<QList<int>>({{2}, {5}, {6}}));
}

namespace {

/// A chain whose two intensities have nothing to do with each other and whose tilt jumps back, and one of a
/// single peak, which has no path.
DataSet seriesOfOneChain()
{
    DataSet data = flatSeries(4);
    data.m_listOverallTilt = {-3, 5, -1, 7};
    const double adfI2D[] = {2, 8, 8, -9}, adfIPoint[] = {7, 1, 3, 0};
    const Vec3D avecPoint[] = {{0, 0, 0}, {3, 4, 0}, {3, 4, 12}, {3, 4, 8}};
    for (int n = 0; n < 4; ++n) {
        addPeak(data, n, 10 + n, 20 + n, avecPoint[n], adfI2D[n]);
        Peak3D& peak = data.m_listPeakFrame[n][0];
        peak.dfIPoint = adfIPoint[n];
        peak.dfFrameTilt = data.m_listOverallTilt[n];
        peak.dfX2DCorrected = 30 + n;
        peak.dfY2DCorrected = 40 + n;
    }
    addPeak(data, 3, 400, 400, {300, 300, 0}, 1);
    return data;
}

}  // namespace

TEST(Merging, EveryWayOfReducingAChain)
{
    DataSet data = seriesOfOneChain();
    // The path goes 13 pixels to the third peak, 12 from it to the second and 8 to the last.
    const auto path = [](double dfA, double dfB, double dfC, double dfD) {
        return 0.65 * (dfA + dfC) + 0.6 * (dfC + dfB) + 0.4 * (dfB + dfD);
    };
    const struct {
        bool bLine, b2D;
        double dfI, dfZ;
        int nBest;
    } aRow[] = {{false, true, 8, 96 / 18.0, 1},  // the first of the equally strong
                {false, false, 7, 36 / 11.0, 0},
                {true, true, path(2, 8, 8, -9), 36 / 11.0, 0},
                {true, false, path(7, 1, 3, 0), 36 / 11.0, 0}};
    for (const auto& row : aRow) {
        PeakMergingParameters parameters;
        parameters.m_dfMin3DDistance = 1000;
        parameters.m_bIntegrateThroughFrames = row.bLine;
        parameters.m_bIntegrate2D = row.b2D;
        CRecordingReport log;
        ASSERT_TRUE(merge(data, parameters, log).outcome.finished());
        EXPECT_EQ(data.m_nIntensityMode, int(row.b2D));
        EXPECT_FALSE(log.said("chains were dropped")) << "of one peak, for a path: not by its intensity";
        ASSERT_EQ(data.m_listPeakMerged.size(), row.bLine ? 1 : 2);
        const Peak3D& merged = data.m_listPeakMerged[0];
        const Peak3D& best = data.m_listPeakFrame[row.nBest][0];
        EXPECT_NEAR(merged.dfIPoint, row.dfI, 1e-5) << row.bLine << row.b2D;
        EXPECT_NEAR(merged.fZ3D, 0.001 * row.dfZ, 1e-8) << row.bLine << row.b2D;
        EXPECT_NEAR(merged.dfDStar, length(merged.point()), 1e-9);
        for (double Peak3D::*p : {&Peak3D::dfFrameTilt, &Peak3D::dfX2D, &Peak3D::dfY2D,
                                  &Peak3D::dfX2DCorrected, &Peak3D::dfY2DCorrected}) {
            EXPECT_EQ(merged.*p, best.*p);
        }
        EXPECT_EQ(merged.nFrame, row.nBest);
        EXPECT_EQ(merged.dfI2D, 0);
    }
}

TEST(Merging, LengthLimitsDecideWhatAChainIs)
{
    // Binary fractions, so that a length of exactly the limit is one.
    const struct {
        float fLength;
        double dfMin, dfMax;
        int nMerged, nShown;
    } aRow[] = {{16, 0, 16, 1, 1}, {16.001f, 0, 16, 0, 2}, {0, 0, 16, 1, 1}, {16, 20, 30, 0, 0}};
    for (const auto& row : aRow) {
        DataSet data = flatSeries(2);
        data.m_dfPixelSize = 1.0 / 1024;
        for (int n = 0; n < 2; ++n) {
            addPeak(data, n, 0, 0, {n * row.fLength, 0, 0}, 1);
        }
        PeakMergingParameters parameters;
        parameters.m_dfMin2DLength = row.dfMin;
        parameters.m_dfMax3DLength = row.dfMax;
        CRecordingReport log;
        ASSERT_TRUE(merge(data, parameters, log).outcome.finished());
        EXPECT_EQ(data.m_listPeakMerged.size(), row.nMerged) << row.fLength;
        EXPECT_EQ(data.m_listPeakMergedShown.size(), row.nShown);
        EXPECT_EQ(log.said("Abnormal chain length: 0.015625, min:0.0195313"), row.dfMin > row.fLength);
    }
}

TEST(Merging, AChainIsOverWhenThePlaneHasLeftItsLastPeak)
{
    for (double dfOff : {-5.8, -5.7, 5.7, 5.8}) {  // of 100 pixels the limit of 10 is 5.74 degrees
        DataSet data = flatSeries(2);
        data.m_dfPixelSize = 0.002;
        data.m_dfTiltRelaxation = 2;
        data.m_listOverallTilt = {30, 29 + dfOff};
        for (int n = 0; n < 2; ++n) {
            addPeak(data, n, 0, 0, {0, 86.6025f, 50}, 1);
        }
        CRecordingReport log;
        ASSERT_TRUE(merge(data, PeakMergingParameters(), log).outcome.finished());
        EXPECT_EQ(data.m_listPeakChain.size(), std::fabs(dfOff) > 5.75 ? 2 : 1) << dfOff;
    }
}

// Whole numbers in a small field: many equal distances, and some of the limit exactly.
TEST(NearestPeak, IsTheFirstOfTheNearestBelowTheLimit)
{
    std::mt19937 random(5);
    for (double dfMax : {0.0, 1.0, 3.5, 5.0, 40.0}) {
        CNearestPeak nearest(dfMax);
        std::vector<std::pair<int, int>> vecPlace;
        for (int n = 0; n < 80; ++n) {
            vecPlace.emplace_back(int(random() % 60), int(random() % 60));
            nearest.add(vecPlace[n].first, vecPlace[n].second, n);
        }
        nearest.add(NAN, 0, 99);
        nearest.prepare();
        for (int n = 0; n < 3600; ++n) {
            int nBest = -1;
            double dfBest = dfMax;
            for (size_t i = 0; i < vecPlace.size(); ++i) {
                const double df = std::hypot(vecPlace[i].first - n / 60, vecPlace[i].second - n % 60);
                if (df < dfBest) {
                    dfBest = df;
                    nBest = int(i);
                }
            }
            ASSERT_EQ(nearest.find(n / 60, n % 60), nBest) << dfMax << " " << n;
        }
    }
}

}  // namespace tessera
