// Pixels that a detector marks as no measurement: bridged, told as areas, and without peaks of their own.
#include "frames/badpixels.h"
#include "frames/framedefects.h"
#include "frames/framehunt.h"
#include "frames/gapfilling.h"
#include "frames/hotpixels.h"
#include "frames/shiftevaluation.h"
#include "frames/spotmoments.h"
#include "frames/summedframes.h"
#include "tests/frames/frameseries.h"

#include <limits>

namespace tessera {

namespace {

const float g_fUnusable = std::numeric_limits<float>::quiet_NaN();

/// A cross of two gaps, each six pixels wide, as between the four modules of a detector.
bool isInCross(int x, int y)
{
    return (x >= 97 && x <= 102) || (y >= 117 && y <= 122);
}

/// Makes pixels unusable, as a reader does with what a format marks as no measurement.
void cut(CImgObj<float>& img, const std::function<bool(int, int)>& fnIsGap)
{
    for (int i = 0; i < img.Width() * img.Height(); ++i) {
        if (fnIsGap(i % img.Width(), i / img.Width())) {
            img.Data()[i] = g_fUnusable;
        }
    }
}

/// A frame of 220 × 240 pixels with Poisson noise: spots of sigma 1.5 pixels on a net of 19 × 23 pixels, over
/// a background that is steep near the beam at (103, 124). The shift moves beam and net together.
CImgObj<float> spots(unsigned nSeed, const QPointF& ptShift = {})
{
    std::mt19937 random(nSeed);
    return makeImage(220, 240, [&](int x, int y) {
        const double dfX = x - ptShift.x() - 103, dfY = y - ptShift.y() - 124;
        double df = 20 + 6000 / (1 + (dfX * dfX + dfY * dfY) / 60);
        // std::remainder() is the distance from the nearest point of the net, negative on its left.
        df += 900 * gaussian(std::remainder(dfX, 19), std::remainder(dfY, 23), 1.5);
        return double(std::poisson_distribution<int>(df)(random));
    });
}

TEST(Gaps, AreBridgedByWhatLiesAroundThem)
{
    // Where there are usable pixels on both sides, interpolation along rows and columns restores a plane.
    const auto plane = [](int x, int y) { return 5 + 3.0 * x - 2.0 * y; };
    CImgObj<float> img = makeImage(60, 50, plane);
    cut(img, [](int x, int y) {
        return x == 20 || x == 21 || (y >= 30 && y < 37) || (x > 40 && x < 50 && y > 5 && y < 20) ||
               (x == 3 && y == 3);
    });
    img.Data()[5 * 60 + 30] = HUGE_VALF;
    // Two columns, seven rows without their crossing with these, a block, and two single pixels.
    EXPECT_EQ(fillBadPixels(img), 2 * 50 + 58 * 7 + 9 * 14 + 2);
    for (int i = 0; i < 60 * 50; ++i) {
        ASSERT_NEAR(double(img.Data()[i]), plane(i % 60, i / 60), 2e-3) << i % 60 << " " << i / 60;
    }
    EXPECT_EQ(fillBadPixels(img), 0);
    // At the edge the nearest usable pixel is continued; a frame without any usable pixel becomes 0.
    img = makeImage(8, 8, [](int x, int) { return x < 5 ? 7 : HUGE_VAL; });
    EXPECT_EQ(fillBadPixels(img), 24);
    EXPECT_TRUE(std::all_of(img.Data(), img.Data() + 64, [](float f) { return f == 7; }));
    img = makeImage(4, 4, [](int, int) { return double(g_fUnusable); });
    EXPECT_EQ(fillBadPixels(img), 16);
    EXPECT_TRUE(std::all_of(img.Data(), img.Data() + 16, [](float f) { return f == 0; }));
    // A hot pixel beside a gap becomes the mean of its usable neighbours.
    img = makeImage(5, 5, [](int x, int y) { return x > 2 ? double(g_fUnusable) : 10 * x + y; });
    repairHotPixels(img, {{2, 2}, {4, 2}});
    EXPECT_EQ(img.Data()[2 * 5 + 2], float((11 + 12 + 13 + 21 + 23) / 5.0));
}

/// Unusable on all frames: the cross, a disc, two clusters smaller than 16 pixels, and a triangle, whose
/// sloping side would need too many rectangles, so that its area is an outline.
bool isMarked(int x, int y)
{
    return isInCross(x, y) || std::hypot(x - 170, y - 40) < 25 || (x >= 4 && x < 8 && y >= 4 && y < 8) ||
           (x == 30 && y == 200) || (y >= 140 && y < 220 && x >= 120 && x <= y - 20);
}

/// What six frames that are so marked have in common.
FrameDefects markedDefects()
{
    std::vector<FrameSigns> vecSigns;
    for (unsigned n = 0; n < 6; ++n) {
        CImgObj<float> img = spots(n, QPointF(3.0 * n, 5.0 * n));
        // Part of another row on each frame is no defect, as the frames do not have it in common.
        cut(img, [&](int x, int y) { return isMarked(x, y) || (y == 150 + int(n) && x < 90); });
        vecSigns.push_back(signsOfFrame(img));
    }
    return defectsOf(vecSigns);
}

TEST(Gaps, AreAreasThatTheFramesHaveInCommon)
{
    const FrameDefects defects = markedDefects();
    const MaskData mask = maskOfDefects(defects);
    EXPECT_EQ(mask.listPolygon, defects.listGap);  // neither shadows nor fixed lines beside
    // Three rectangles of the cross, those of the disc, the outline of the triangle.
    EXPECT_LT(defects.listGap.size(), 40);
    int nWrong = 0, nWidened = 0;
    for (int y = 0; y < 240; ++y) {
        for (int x = 0; x < 220; ++x) {
            const bool bMasked = std::any_of(mask.listPolygon.begin(), mask.listPolygon.end(),
                                             [&](const QPolygonF& polygon) {
                                                 return polygon.containsPoint(QPointF(x, y), mask.fillRule);
                                             });
            const bool bTooSmall = (x < 8 && y < 8) || (x == 30 && y == 200);
            // An outline is widened by a pixel and simplified, so here the mask may reach further.
            const bool bNearTriangle = x > 115 && y > 135;
            nWidened += bNearTriangle && bMasked && !isMarked(x, y) ? 1 : 0;
            nWrong += (!bNearTriangle || isMarked(x, y)) && bMasked != (isMarked(x, y) && !bTooSmall) ? 1 : 0;
        }
    }
    EXPECT_EQ(nWrong, 0);
    EXPECT_LT(nWidened, 2 * (80 + 80 + 114));  // the sides of the triangle, two pixels wide
}

TEST(Gaps, AreToldByTheNumbersOfTheirAreasAndPixels)
{
    qint64 nMarked = 0;
    for (int i = 0; i < 220 * 240; ++i) {
        nMarked += isMarked(i % 220, i / 220) ? 1 : 0;
    }
    const FrameDefects defects = markedDefects();
    EXPECT_EQ(defects.nUnusable, nMarked);
    const QStringList listLine = tellDefects(defects);
    ASSERT_EQ(listLine.size(), 1) << listLine.join('|').toStdString();
    EXPECT_TRUE(listLine[0].contains(QStringLiteral("%1 areas").arg(defects.listGap.size())))
        << listLine[0].toStdString();
    EXPECT_TRUE(listLine[0].contains(QString::number(nMarked))) << listLine[0].toStdString();
}

TEST(Gaps, CommonOnesAreThoseOfAPlainLookAtEachPixel)
{
    // Of these frames only the size counts; every pixel is set below.
    CImgObj<float> imgOne = spots(7), imgOther = spots(8), imgBoth = spots(9);
    std::mt19937 random(5);
    for (int i = 0; i < 220 * 240; ++i) {
        const bool bOne = random() % 3 == 0, bOther = random() % 2 == 0;
        imgOne.Data()[i] = bOne ? g_fUnusable : 1;
        imgOther.Data()[i] = bOther ? g_fUnusable : 1;
        imgBoth.Data()[i] = bOne && bOther ? g_fUnusable : 1;
    }
    qint64 nCommon = 0, nWanted = 0;
    for (const PixelRun& run : commonRuns(unusableRuns(imgOne), unusableRuns(imgOther))) {
        nCommon += run.pixelCount();
        for (int x = run.nFirst; x <= run.nLast; ++x) {
            EXPECT_TRUE(std::isnan(imgBoth.Data()[run.nY * 220 + x]));
        }
    }
    for (const PixelRun& run : unusableRuns(imgBoth)) {
        nWanted += run.pixelCount();
    }
    EXPECT_EQ(nCommon, nWanted);
}

TEST(Gaps, HaveNoPeaksAndLeaveThoseFurtherAwayAlone)
{
    CPeakFilters filters;
    FrameHuntWork work;
    PeakHuntingParameters parameters = radii(1.5, 3);
    parameters.m_dfPeakThreshold = 60;
    for (unsigned nSeed = 0; nSeed < 4; ++nSeed) {
        const CImgObj<float> imgWhole = spots(nSeed);
        CImgObj<float> imgCut;
        imgCut.Copy(imgWhole);
        cut(imgCut, isInCross);
        imgCut.Data()[200 * 220 + 10] = g_fUnusable;  // a single dead pixel, (10, 200)
        const FramePeaks whole = huntFrame(imgWhole, parameters, {}, filters, work);
        const FramePeaks found = huntFrame(imgCut, parameters, {}, filters, work);
        EXPECT_EQ(found.nBadPixels, 6 * 220 + 6 * 240 - 36 + 1);  // the crossing counts once
        int nSame = 0, nFar = 0;  // far: more than 8 pixels from both bars of the cross
        for (int n = 0; n < whole.listX.size(); ++n) {
            const double dfX = whole.listX[n], dfY = whole.listY[n];
            nFar += std::max(97 - dfX, dfX - 102) > 8 && std::max(117 - dfY, dfY - 122) > 8 ? 1 : 0;
        }
        for (int n = 0; n < found.listX.size(); ++n) {
            for (int m = 0; m < whole.listX.size(); ++m) {
                nSame += found.listX[n] == whole.listX[m] && found.listY[n] == whole.listY[m] ? 1 : 0;
            }
            EXPECT_FALSE(isInCross(int(found.listX[n]), int(found.listY[n])));
        }
        EXPECT_GT(nFar, 60);
        EXPECT_GE(nSame, nFar);
        EXPECT_EQ(nSame, found.listX.size());  // the gap makes no peak that the whole frame does not have
    }
    // If half of a spot is in a gap, neither its width nor its position can be measured.
    CImgObj<float> img = makeImage(60, 60, [](int x, int y) { return 900 * gaussian(x - 30, y - 30, 1.5); });
    EXPECT_TRUE(measureSpot(img, 30, 30));
    cut(img, [](int x, int) { return x == 31 || x == 32; });
    EXPECT_FALSE(measureSpot(img, 30, 30));
}

TEST(Gaps, AreToldOnceAndDoNotHoldTheDriftBack)
{
    FrameSeries series;
    QList<QPointF> listDrift;
    for (int n = 0; n < 6; ++n) {
        listDrift.append(QPointF(1.7 * n, -1.1 * n));
        CImgObj<float> img = spots(unsigned(n), listDrift.last() + QPointF(14, 11));
        cut(img, [&](int x, int y) { return isInCross(x, y) || (n == 4 && x == 140 && y == 140); });
        series.add(img);
    }
    ASSERT_TRUE(runShiftEvaluation(series.dataSet, QRectF(46, 66, 128, 128), series.report).finished());
    for (int n = 0; n < 6; ++n) {
        const QPointF ptOff = series.dataSet.m_listShift[n] - listDrift[n];
        EXPECT_LT(std::hypot(ptOff.x(), ptOff.y()), 0.3) << n;
    }
    // The number is reported whenever it changes: frame #5 has one dead pixel more, and #6 lacks it again.
    const QString strLog = series.report.log();
    EXPECT_EQ(strLog.count("pixels without a usable number"), 3) << strLog.toStdString();  // #1, #5, #6
    EXPECT_EQ(strLog.count("Frame #2 and those after it have the same number of such pixels"), 1);
}

TEST(Gaps, TakeNoPartInSums)
{
    FrameSeries series;
    for (int n = 0; n < 4; ++n) {
        CImgObj<float> img = makeImage(6, 4, [](int x, int) { return 200 * (x + 1); });
        // In column 1 the gap grows from frame to frame; column 3 is unusable on all frames.
        cut(img, [&](int x, int y) { return (x == 1 && y <= n) || x == 3; });
        series.add(img);
    }
    DataSet& data = series.dataSet;
    data.m_listShift = QList<QPointF>({{0, 0}, {0, 0}, {0, 0}, {0, 0}});
    data.m_listOverallTilt = QList<double>({0, 0, 0, 0});
    data.m_listBeamTiltBreak = QList<int>({1, 0, 0, 0});
    ASSERT_TRUE(exportSummedFrames(data, series.dir.path(), series.report).finished());
    ImageList vecImage;
    ASSERT_EQ(ReadMRC(series.dir.filePath("001.mrc"), vecImage), 1);
    const CImgObj<float>& img = *vecImage.at(0);
    for (int i = 0; i < 24; ++i) {
        const bool bNever = i % 6 == 3 || i == 1;  // the first pixel of column 1 is in all gaps
        // Four frames of 200 * (x + 1), divided by 20 as every sum. Where a gap leaves fewer frames, theirs
        // count for all.
        EXPECT_EQ(img.Data()[i], bNever ? 0 : 40 * (i % 6 + 1)) << i;
    }
}

}  // namespace

}  // namespace tessera
