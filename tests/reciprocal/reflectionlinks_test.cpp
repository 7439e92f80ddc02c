// Which peaks a reflection is made of, by a merging whose chains are known.
#include "reciprocal/reflectionlinks.h"
#include "reciprocal/mapping.h"
#include "reciprocal/merging.h"
#include "tests/reciprocal/testpeaks.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

namespace tessera {

namespace {

/// Four frames whose beam drifts. Peaks 0 1 3 5 are one reflection on all of them, strongest on the third;
/// 2 and 4 another one on the second and third; 6, on the last, stands alone and has no intensity.
DataSet series()
{
    DataSet data;
    data.m_dfCenterX = 100;
    data.m_dfCenterY = 90;
    int nID = 0;
    for (int n = 0; n < 4; ++n) {
        data.m_listOverallTilt.append(0.05 * n);
        data.m_listShift.append(QPointF(n, 2 * n));
        data.m_listBeamTiltBreak.append(n == 0);
        QList<Peak3D> listPeak{peakAt(150 + n, 100 + 2 * n, n, n == 2 ? 900 : 100 + n)};
        if (n == 1 || n == 2) {
            listPeak.append(peakAt(60 + n, 70 + 2 * n, n, 50 + n));
        }
        if (n == 3) {
            listPeak.append(peakAt(20, 20, n, 0));
        }
        for (Peak3D& peak : listPeak) {
            peak.nID = nID++;
        }
        data.m_listPeakFrame.append(listPeak);
    }
    return data;
}

void mapAndMerge(DataSet& data)
{
    CRecordingReport report;
    ASSERT_TRUE(transformPeaksTo3D(data, MappingParameters(), report));
    showPeaksIn3D(data, MappingParameters());
    PeakMergingParameters merging;
    merging.m_bIntegrate2D = false;
    ASSERT_TRUE(peakReduction3D(data, merging, nullptr, report).outcome.finished());
}

}  // namespace

TEST(ReflectionLinks, BothWaysOverTheFrames)
{
    DataSet data = series();
    mapAndMerge(data);
    ASSERT_EQ(data.m_listPeakMerged.size(), 2);
    const CReflectionLinks links(data);
    const int nA = links.reflectionOf(0), nB = links.reflectionOf(2);
    ASSERT_GE(nA, 0);
    ASSERT_GE(nB, 0);
    ASSERT_NE(nA, nB);
    EXPECT_EQ(links.reflection(nA)->nFrame, 2);
    EXPECT_EQ(links.reflectionOf(5), nA);
    EXPECT_EQ(links.reflectionOf(4), nB);
    EXPECT_EQ(links.reflectionOf(6), -1);
    EXPECT_EQ(links.reflectionOf(77), -1);
    EXPECT_EQ(links.reflection(77), nullptr);
    EXPECT_EQ(links.peaksOf({nA, nB, 77, -1}), std::vector<int>({0, 1, 2, 3, 4, 5}));
    const std::vector<FrameSpot> vecSpot = links.spotsOf(nA);
    ASSERT_EQ(vecSpot.size(), 4u);
    for (int n = 0; n < 4; ++n) {
        EXPECT_EQ(vecSpot[n].nFrame, n);
        EXPECT_EQ(vecSpot[n].ptRaw, QPointF(150 + n, 100 + 2 * n));
    }
    EXPECT_EQ(vecSpot[2].nPeak, 3);

    EXPECT_EQ(links.peakAt(3, {150, 104}, 8), 5);
    EXPECT_EQ(links.peakAt(3, {150, 104}, 3), -1);
    EXPECT_EQ(links.peakAt(9, {150, 104}, 1e9), -1);
    EXPECT_EQ(links.peaksOutwards(2), std::vector<int>({4, 3}));
    Peak3D indexed = *links.reflection(nA);
    EXPECT_EQ(links.reflectionsBut({indexed}), std::vector<int>({nB}));
    indexed.dfX2D += 1;  // of another merging, under the same number
    EXPECT_EQ(links.reflectionsBut({indexed}).size(), 2u);
}

TEST(ReflectionLinks, WhatHasBeenReplacedIsLinkedNoLonger)
{
    DataSet data = series();
    mapAndMerge(data);
    CReflectionLinks links(data);
    EXPECT_TRUE(links.isOf(data));
    EXPECT_FALSE(CReflectionLinks().isOf(data));
    data.m_listPeakChain.detach();  // opened for writing, and nothing written
    data.m_listPeakFrame.detach();
    EXPECT_TRUE(links.isOf(data));

    // After a new mapping the peaks are the same; after another peak search their numbers belong to other
    // peaks.
    data.m_dfRotationAxis = 50;
    CRecordingReport report;
    ASSERT_TRUE(transformPeaksTo3D(data, MappingParameters(), report));
    EXPECT_FALSE(links.isOf(data));
    links = CReflectionLinks(data);
    EXPECT_EQ(links.peaksOf({links.reflectionOf(0)}).size(), 4u);
    data.m_listPeakFrame[1][0].dfIPoint = 12345;
    links = CReflectionLinks(data);
    EXPECT_EQ(links.reflectionOf(1), -1);
    const std::vector<FrameSpot> vecSpot = links.spotsOf(links.reflectionOf(0));
    ASSERT_EQ(vecSpot.size(), 4u);
    EXPECT_EQ(vecSpot[1].nPeak, -1);
    EXPECT_EQ(vecSpot[1].ptRaw, QPointF(151, 102)) << "by the beam of its frame";

    // A list of reflections without chains has their own places.
    data.m_listPeakChain.clear();
    links = CReflectionLinks(data);
    const int nID = data.m_listPeakMergedShown.first().nID;
    ASSERT_EQ(links.spotsOf(nID).size(), 1u);
    EXPECT_EQ(links.spotsOf(nID)[0].nFrame, data.m_listPeakMergedShown.first().nFrame);
}

}  // namespace tessera
