#include "reciprocal/merging.h"
#include "reciprocal/mapping.h"
#include "recordingreport.h"

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
    int nID = 0;
    for (const QList<Peak3D>& listPeak : data.m_listPeakFrame)
        nID += listPeak.size();
    Peak3D peak;
    peak.dfX2D = dfX + 100 + nFrame;
    peak.dfY2D = dfY + 200 + 2 * nFrame;
    peak.setPoint(scaled(vecPixels, 0.001f));
    peak.nFrame = nFrame;
    peak.dfI2D = dfI2D;
    peak.dfIPoint = 2 * dfI2D;
    peak.nID = nID;
    data.m_listPeakFrame[nFrame].append(peak);
}

PeakMergingResult merge(DataSet& data, const PeakMergingParameters& parameters, CRunReport& report,
                        const std::vector<char>* pvecSelected = nullptr)
{
    showPeaksIn3D(data, MappingParameters());
    return peakReduction3D(data, parameters, pvecSelected, report);
}

QList<QList<int>> idsOf(const QList<QList<Peak3D>>& listChain)
{
    QList<QList<int>> listID;
    for (const QList<Peak3D>& chain : listChain) {
        listID.append(QList<int>());
        for (const Peak3D& peak : chain)
            listID.last().append(peak.nID);
    }
    return listID;
}

/// The chains, found by the plain walk over all open chains.
QList<QList<Peak3D>> plainChains(const DataSet& data, const PeakMergingParameters& parameters)
{
    QList<QList<Peak3D>> listOpen, listClosed;
    const int nFrames = data.m_listPeakFrameShown.size();
    for (int n = 0; n < nFrames; ++n) {
        const double dfTilt = (data.m_listOverallTilt[n] + n * data.m_dfTiltRelaxation / nFrames) * M_PI /
                              180;
        QList<QList<Peak3D>> listStay;
        for (const QList<Peak3D>& chain : listOpen) {
            const Peak3D& t = chain.last();
            const double dfD = std::fabs(-std::sin(dfTilt) * double(t.fY3D) +
                                         std::cos(dfTilt) * double(t.fZ3D));
            (dfD > parameters.m_dfMin3DDistance * data.m_dfPixelSize ? listClosed : listStay).append(chain);
        }
        listOpen = listStay;
        for (Peak3D q : data.m_listPeakFrameShown[n]) {
            q.dfX2D -= data.m_dfCenterX + data.m_listShift[n].x();
            q.dfY2D -= data.m_dfCenterY + data.m_listShift[n].y();
            double dfBest = 1e100;
            int nBest = -1;
            for (int c = 0; c < listStay.size(); ++c) {
                const double dfX = q.dfX2D - listStay[c].last().dfX2D;
                const double dfY = q.dfY2D - listStay[c].last().dfY2D;
                if (dfX * dfX + dfY * dfY < dfBest) {
                    dfBest = dfX * dfX + dfY * dfY;
                    nBest = c;
                }
            }
            if (std::sqrt(dfBest) < parameters.m_dfMax2DDistance)
                listOpen[nBest].append(q);
            else
                listOpen.append({q});
        }
    }
    return listClosed + listOpen;
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
    addPeak(data, 2, 12, 12, {12, 14, 0}, -5);     // below the least intensity
    addPeak(data, 2, 80, 80, {80, 80, 0}, 20000);  // 40000 in dfIPoint: above the greatest
    CRecordingReport log;
    const PeakMergingResult result = merge(data, PeakMergingParameters(), log);
    ASSERT_TRUE(result.bFinished);
    EXPECT_EQ(data.m_nIntensityMode, 1);
    EXPECT_EQ(idsOf(data.m_listPeakChain), QList<QList<int>>({{2}, {0, 4, 7}, {1, 3, 6}, {5}}));
    EXPECT_EQ(data.m_listPeakChain[0][0].dfX2D, -30);
    EXPECT_EQ(result.nOutsideLimits, 2);
    EXPECT_EQ(log.m_listLine.mid(log.m_listLine.size() - 2),
              QStringList({"2 peaks lie outside the intensity or resolution limits and were not merged.",
                           "8 peaks in 4 chains found. 5 peaks remained after merging."}));

    ASSERT_EQ(data.m_listPeakMerged.size(), 2);  // the chain of weight 0 yields nothing
    EXPECT_EQ(data.m_listPeakMerged[1].nID, 1);
    EXPECT_GT(data.m_listPeakMerged[1].dfFrameFit, 0);  // the curves were fitted
    EXPECT_EQ(result.listStreakIndex, QList<int>({2, 3, 4}));
    ASSERT_EQ(data.m_listPeakMergedShown.size(), 5);
    EXPECT_EQ(data.m_listPeakMergedShown[3].dfX2D, 51 + 101);
    EXPECT_EQ(data.m_listPeakMergedShown[3].nID, 2);
}

// A chain whose two intensities have nothing to do with each other and whose tilt jumps back.
TEST(Merging, EveryWayOfReducingAChain)
{
    QList<Peak3D> list;
    const struct {
        double dfTilt, dfI2D, dfIPoint;
        Vec3D vecPoint;
    } aPeak[] = {{-3, 2, 7, {0, 0, 0}}, {5, 8, 1, {3, 4, 0}}, {-1, 8, 3, {3, 4, 12}}, {7, -9, -2, {9, 9, 9}}};
    for (const auto& peak : aPeak) {
        Peak3D member;
        member.setPoint(peak.vecPoint);
        member.dfI2D = peak.dfI2D;
        member.dfIPoint = peak.dfIPoint;
        member.dfFrameTilt = peak.dfTilt;
        member.nFrame = list.size();
        member.dfX2D = member.dfX2DCorrected = 10 + list.size();
        member.dfY2D = member.dfY2DCorrected = 20 + list.size();
        member.nID = member.nRGroup = 6;
        member.setHKL(1, 2, 3);
        list.append(member);
    }
    const BeamCentres centres = {{QPointF(), QPointF(1, 2), QPointF(), QPointF()}, 100, 200};
    const QList<Peak3D> listThree = list.mid(0, 3);
    const auto path = [](double dfA, double dfC,
                         double dfB) {  // 13 to the third peak, 12 from it to the second
        return 100 * ((dfA + dfC) * 13 / 2 + (dfC + dfB) * 12 / 2);
    };
    const struct {
        bool bLine;
        int nMode;
        QList<Peak3D> list;
        double dfI, dfZ;
        int nBest;
    } aRow[] = {{false, 1, list, 8, 8 * 12 / 18.0, 1},
                {false, 0, list, 7, 3 * 12 / 11.0, 0},
                {true, 1, listThree, path(2, 8, 8), 36 / 11.0, 0},
                {true, 0, listThree, path(7, 3, 1), 36 / 11.0, 0}};
    for (const auto& row : aRow) {
        Peak3D merged;
        merged.setHKL(9, 9, 9);
        ASSERT_TRUE((row.bLine ? mergeReflectionsLineIntegration : mergeReflectionsMax)(merged, row.list,
                                                                                        centres, row.nMode));
        const Peak3D& best = list[row.nBest];
        EXPECT_NEAR(merged.dfIPoint, row.dfI, 1e-3) << row.bLine << row.nMode;
        EXPECT_NEAR(merged.fZ3D, row.dfZ, 1e-5) << row.bLine << row.nMode;
        EXPECT_NEAR(merged.dfDStar, length(merged.point()), 1e-6);
        EXPECT_EQ(merged.nFrame, best.nFrame);  // the first of the equally strong
        EXPECT_EQ(merged.dfFrameTilt, best.dfFrameTilt);
        EXPECT_EQ(merged.dfX2D, best.dfX2D + 100 + centres.m_listShift[row.nBest].x());
        EXPECT_EQ(merged.dfY2D, best.dfY2D + 200 + centres.m_listShift[row.nBest].y());
        EXPECT_EQ(merged.dfX2DCorrected, best.dfX2DCorrected);
        EXPECT_EQ(merged.dfY2DCorrected, best.dfY2DCorrected);
        EXPECT_EQ(merged.dfI2D + merged.dfH + merged.dfK + merged.dfL + merged.nID + merged.nRGroup, 0);
    }

    // And the merge takes the way that the page asks for.
    for (int n = 0; n < 4; ++n) {
        DataSet data = flatSeries(2);
        addPeak(data, 0, 0, 0, {0, 0, 0}, 5);
        addPeak(data, 1, 0, 0, {4, 0, 0}, 1);
        data.m_listPeakFrame[1][0].dfIPoint = 30;
        PeakMergingParameters parameters;
        parameters.m_bIntegrateThroughFrames = n & 2;
        parameters.m_bIntegrate2D = n & 1;
        CRecordingReport log;
        ASSERT_TRUE(merge(data, parameters, log).bFinished);
        const double aIntensity[] = {30, 5, 100 * 0.004 * 40 / 2, 100 * 0.004 * 6 / 2};
        EXPECT_NEAR(data.m_listPeakMerged.value(0).dfIPoint, aIntensity[n], 1e-5) << n;
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
            addPeak(data, n, 0, 0, {}, 1);
            data.m_listPeakFrame[n][0].setPoint({n * row.fLength / 1024, 0, 0});
        }
        PeakMergingParameters parameters;
        parameters.m_dfMin2DLength = row.dfMin;
        parameters.m_dfMax3DLength = row.dfMax;
        CRecordingReport log;
        ASSERT_TRUE(merge(data, parameters, log).bFinished);
        EXPECT_EQ(data.m_listPeakMerged.size(), row.nMerged) << row.fLength;
        EXPECT_EQ(data.m_listPeakMergedShown.size(), row.nShown);
        EXPECT_EQ(log.said("Abnormal chain length: 0.015625, min:0.0195313"), row.dfMin > row.fLength);
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
        CRecordingReport log;
        ASSERT_TRUE(merge(data, parameters, log).bFinished);
        EXPECT_TRUE(idsOf(data.m_listPeakChain) == idsOf(plainChains(data, parameters))) << dfMax2D;
    }
}

TEST(Merging, TakesTheSelectedPeaks)
{
    DataSet data = flatSeries(2);
    addPeak(data, 0, 0, 0, {}, 1);
    addPeak(data, 0, 50, 0, {}, 1);
    addPeak(data, 1, 90, 0, {}, 1);
    data.m_listPeakFrame[1][0].nID = 1000000;
    const std::vector<char> vecSome = {0, 1, 1}, vecNone;
    const struct {
        const std::vector<char>* pvecSelected;
        int nMerged;
    } aRow[] = {{nullptr, 3}, {&vecNone, 0}, {&vecSome, 1}};  // an nID without a flag is kept out
    CRecordingReport log;
    for (const auto& row : aRow) {
        ASSERT_TRUE(merge(data, PeakMergingParameters(), log, row.pvecSelected).bFinished);
        EXPECT_EQ(data.m_listPeakMerged.size(), row.nMerged);
    }
    EXPECT_EQ(data.m_listPeakMerged[0].dfX2D, 150);
}
