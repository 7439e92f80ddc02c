// The drift of the beam from distances whose offsets are known.

#include "refinement/framedrift.h"
#include "refinement/smoothcurve.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tessera {

namespace {

/// Peaks of a frame about an offset; their chains are those of no other frame.
void addFrame(std::vector<FrameDistance>& listDistance, int nFrame, int nPeaks, const FramePlace& offset,
              std::mt19937& random)
{
    std::normal_distribution<double> normal(0, 0.3);
    for (int n = 0; n < nPeaks; ++n) {
        const FramePlace off = {offset.dfX + normal(random), offset.dfY + normal(random)};
        listDistance.push_back({nFrame, int(listDistance.size()), off});
    }
}

FrameDrift driftOf(const std::vector<FrameDistance>& listDistance, int nFrames)
{
    CRecordingReport report;
    return frameDrift(listDistance, nFrames, report);
}

}  // namespace

/// The natural spline through (0, 0), (1, 1), (2, 0) has the second derivative -3 in the middle.
TEST(SmoothCurve, naturalSpline)
{
    CSmoothCurve curve(10, 12, 2);
    curve.fit({10, 11, 12}, {{0, 5}, {1, 5}, {0, 5}}, {1, 1, 1});
    EXPECT_NEAR(curve.at(10.5).dfX, 0.6875, 1e-4);
    EXPECT_NEAR(curve.at(11).dfX, 1, 1e-4);
    EXPECT_NEAR(curve.at(11.25).dfY, 5, 1e-4);
    EXPECT_NEAR(curve.at(40).dfX, curve.at(12).dfX, 1e-12) << "kept beyond the last knot";
    CSmoothCurve gap(0, 90, 9);
    gap.fit({0, 10, 80, 90}, {{0, 0}, {1, 0}, {8, 0}, {9, 0}}, {1, 1, 1, 1});
    EXPECT_NEAR(gap.at(45).dfX, 4.5, 1e-3) << "straight where there are no frames";
    CSmoothCurve constant(3, 3, 5);
    constant.fit({3, 3}, {{1, 2}, {3, 4}}, {3, 1});
    EXPECT_NEAR(constant.at(0).dfX, 1.5, 1e-9);
}

TEST(FrameDrift, jumpsButNotByFewOrFalsePeaks)
{
    std::mt19937 random(1);
    std::vector<FrameDistance> listDistance;
    for (int nFrame = 0; nFrame < 60; ++nFrame) {
        const bool bFew = nFrame == 20, bJump = nFrame == 30 || nFrame == 31;
        addFrame(listDistance, nFrame, bFew ? 3 : 12, bFew || bJump ? FramePlace{2, -1} : FramePlace(),
                 random);
    }
    // Five false peaks of seventeen, all to one side.
    addFrame(listDistance, 45, 5, {6, 0}, random);
    listDistance.push_back({70, 0, {9, 9}});  // no frame of the series
    listDistance.push_back({5, 0, {std::nan(""), 0}});
    const FrameDrift drift = driftOf(listDistance, 62);
    ASSERT_EQ(drift.listOffset.size(), 62u);
    EXPECT_EQ(drift.nJumps, 2);
    EXPECT_EQ(drift.nIntervals, 0);
    const FramePlace& usual = drift.listOffset[0];
    for (const int nFrame : {20, 45, 61}) {
        EXPECT_NEAR(drift.listOffset[nFrame].dfX, usual.dfX, 0.05) << nFrame;
    }
    for (const int nFrame : {30, 31}) {
        EXPECT_NEAR(drift.listOffset[nFrame].dfX - usual.dfX, 2, 0.3) << nFrame;
        EXPECT_NEAR(drift.listOffset[nFrame].dfY - usual.dfY, -1, 0.3) << nFrame;
    }
}

TEST(FrameDrift, smoothDriftAndScatter)
{
    std::mt19937 random(2);
    std::normal_distribution<double> normal(0, 0.25);
    std::vector<FrameDistance> listNothing, listSmooth, listScatter;
    std::vector<FramePlace> listTrue;
    for (int nFrame = 0; nFrame < 120; ++nFrame) {
        addFrame(listNothing, nFrame, 20, {}, random);
        addFrame(listSmooth, nFrame, 20, {std::sin(nFrame / 20.0), 0.01 * nFrame}, random);
        listTrue.push_back({normal(random), normal(random)});
        addFrame(listScatter, nFrame, 20, listTrue.back(), random);
    }
    EXPECT_TRUE(driftOf(listNothing, 120).listOffset.empty());
    EXPECT_TRUE(driftOf({}, 120).listOffset.empty());
    const FrameDrift smooth = driftOf(listSmooth, 120);
    ASSERT_EQ(smooth.listOffset.size(), 120u);
    EXPECT_EQ(smooth.nJumps, 0);
    double dfMeanX = 0, dfMeanY = 0;
    for (int n = 0; n < 120; ++n) {
        dfMeanX += std::sin(n / 20.0) / 120;
        dfMeanY += 0.01 * n / 120;
    }
    for (int n = 0; n < 120; ++n) {
        EXPECT_NEAR(smooth.listOffset[n].dfX, std::sin(n / 20.0) - dfMeanX, 0.1) << n;
        EXPECT_NEAR(smooth.listOffset[n].dfY, 0.01 * n - dfMeanY, 0.1) << n;
    }
    const FrameDrift scatter = driftOf(listScatter, 120);
    EXPECT_NEAR(scatter.dfScatter, 0.25, 0.05);
    double dfSum = 0;
    for (size_t n = 0; n < 120; ++n) {
        dfSum += std::pow(scatter.listOffset[n].dfX - listTrue[n].dfX, 2);
    }
    EXPECT_LT(std::sqrt(dfSum / 120), 0.1) << "of a scatter of 0.25";
}

}  // namespace tessera
