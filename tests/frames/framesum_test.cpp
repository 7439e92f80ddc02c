// Frames that are summed and binned as they are read, against sums of whole numbers.
#include "frames/framesum.h"
#include "dataset/seriesreading.h"
#include "frames/firstimage.h"
#include "frames/frameloader.h"
#include "tests/frames/frameseries.h"

#include <limits>

namespace tessera {

namespace {

const float g_fNanPixel = std::numeric_limits<float>::quiet_NaN();

/// Counts that differ from pixel to pixel and frame to frame, some below 0, all sums exact in single
/// precision.
int countAt(int nFrame, int nX, int nY)
{
    return (nX * 7919 + nY * 104729 + nFrame * 1299709) % 60013 - 150;
}

}  // namespace

TEST(FrameSum, IsTheSumOfWholeNumbersBlockByBlock)
{
    const int nWidth = 23, nHeight = 17, nFrames = 3, nBin = 4;
    FrameSeries series;
    for (int n = 0; n < nFrames; ++n) {
        series.add(makeImage(nWidth, nHeight, [n](int nX, int nY) { return countAt(n, nX, nY); }));
    }
    FrameSource source;
    source.listFile = series.dataSet.m_listFrameFile;
    source.nBin = nBin;
    CRecordingReport report;
    ImageList vecImage;
    ASSERT_EQ(loadFirstImage(vecImage, source, report), 1);
    ASSERT_EQ(vecImage.size(), 1u);
    const CImgObj<float>& sum = *vecImage.front();
    ASSERT_EQ(sum.Width(), 5);
    ASSERT_EQ(sum.Height(), 4);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 5; ++x) {
            qint64 nSum = 0;
            for (int i = 0; i < nFrames * nBin * nBin; ++i) {
                nSum += countAt(i / (nBin * nBin), x * nBin + i % nBin, y * nBin + i / nBin % nBin);
            }
            ASSERT_EQ(sum.Data()[y * 5 + x], float(nSum)) << x << ' ' << y;
        }
    }
}

TEST(FrameSum, WhatIsNoMeasurementSpoilsItsOwnBlockAlone)
{
    CImgObj<float> img = makeImage(6, 4, [](int nX, int nY) { return 10 * nY + nX; });
    img.Data()[1 * 6 + 2] = g_fNanPixel;
    img.Data()[3 * 6 + 5] = 65535;
    CFrameSum sum(2, 65535);
    ASSERT_TRUE(sum.add(img));
    ASSERT_TRUE(sum.add(makeImage(6, 4, [](int, int) { return 1; })));
    QString strReason;
    EXPECT_FALSE(sum.add(makeImage(6, 5, [](int, int) { return 1; }), &strReason));
    EXPECT_TRUE(strReason.contains("6 × 5")) << strReason.toStdString();
    const auto pSum = sum.take();
    const float* p = pSum->Data();
    EXPECT_EQ(p[0], 0 + 1 + 10 + 11 + 4);
    EXPECT_TRUE(std::isnan(p[1]));
    EXPECT_EQ(p[2], 4 + 5 + 14 + 15 + 4);
    // One saturated pixel of eight: the sum is known by eight times the limit.
    EXPECT_EQ(p[5], 8 * 65535.0f);
    EXPECT_EQ(p[4], 22 + 23 + 32 + 33 + 4);
    CFrameSum small(7, 0);
    EXPECT_FALSE(small.add(img, &strReason));
    EXPECT_EQ(small.take(), nullptr);
}

TEST(FrameSum, RunsSeeTheChosenFrames)
{
    FrameSeries series;
    DataSet& data = series.dataSet;
    for (int n = 0; n < 7; ++n) {
        series.add(makeImage(8, 8, [n](int nX, int nY) { return nX == 3 && nY == 3 ? 5000 : 1 << n; }));
        data.m_listStageTilt.append(n);
        data.m_listBeamTilt.append(0);
        data.m_listOverallTilt.append(n);
    }
    SeriesChoice choice;
    choice.nBin = choice.nSum = 2;
    choice.listSkipped = {{3, 3}};
    CRecordingReport report;
    ASSERT_TRUE(takeSeriesChoice(data, choice, report));
    data.m_reading.listHotPixel = {QPoint(3, 3)};  // of the files, repaired before it is spread over a block
    const SeriesSnapshot snapshot(data);
    ASSERT_EQ(snapshot.frameCount(), 3);
    const int anSum[] = {4 * (1 + 2), 4 * (8 + 16), 4 * (32 + 64)};
    for (int n = 0; n < 3; ++n) {
        const auto pImage = firstImage(snapshot, n, {}, report);
        ASSERT_NE(pImage, nullptr);
        EXPECT_EQ(pImage->Width(), 4);
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(pImage->Data()[i], float(anSum[n])) << n << ' ' << i;
        }
    }
    // A part that is missing is named, and the frame is none.
    QFile::remove(data.m_reading.listFile[6]);
    EXPECT_EQ(firstImage(snapshot, 2, {}, report), nullptr);
    EXPECT_TRUE(report.reason().contains("f0006.mrc")) << report.reason().toStdString();
}

}  // namespace tessera
