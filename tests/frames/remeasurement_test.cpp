#include "frames/centroid.h"
#include "frames/directbeamfit.h"
#include "frames/frameseries.h"
#include "frames/intensityextraction.h"
#include "frames/peakhunting.h"
#include "frames/positionrefinement.h"
#include "frames/summedframes.h"

#include <gtest/gtest.h>

namespace {

const QPointF g_ptBeam(81.5, 60.25);
const QList<QPointF> g_listShift{{0, 0}, {1.5, -0.75}, {-2.25, 3}};

/// Frames with a beam 0.4 pixels beside its expected place and two far spots; the last has no peaks.
struct SpotSeries : FrameSeries {
    explicit SpotSeries(double dfBackground = 0)
    {
        const auto lorentzian = [](double dfX, double dfY, double dfA, double dfBx, double dfBy) {
            return dfA / (1 + dfX * dfX / dfBx + dfY * dfY / dfBy);
        };
        for (int n = 0; n < g_listShift.size(); ++n) {
            const QPointF c = beam(n), a = spot(n, 0), b = spot(n, 1);
            add(makeImage(170, 130, [&](int x, int y) {
                return dfBackground + lorentzian(x - c.x() - 0.4, y - c.y(), 2500, 5, 6) +
                       lorentzian(x - a.x(), y - a.y(), 2000, 3, 2) +
                       lorentzian(x - b.x(), y - b.y(), 900, 2, 4);
            }));
            peaks.append(QList<Peak3D>());
            for (int j = 0; j < 2 && n != 2; ++j) {
                Peak3D peak;
                peak.nFrame = n;
                peak.setHKL(1.2 - 3 * j, -0.3, 2 + n);
                peak.dfIPoint = 1234.56;
                peak.nRGroup = 7;
                peak.nID = 40 + j;
                peak.dfX2D = std::round(spot(n, j).x());
                peak.dfY2D = std::round(spot(n, j).y());
                peak.dfX2DCorrected = 1.01 * (peak.dfX2D - c.x());
                peaks[n].append(peak);
            }
        }
        dataSet.m_listShift = g_listShift;
        dataSet.m_dfCenterX = g_ptBeam.x();
        dataSet.m_dfCenterY = g_ptBeam.y();
        dataSet.m_dfRotationAxis = 30;
    }
    static QPointF beam(int n) { return g_ptBeam + g_listShift[n]; }
    static QPointF spot(int n, int j)
    {
        return j ? QPointF(140.8, 105.2 - 0.3 * n) : QPointF(30.3 + n, 22.6);
    }
    QVector<QList<Peak3D>> peaks;
};

TEST(PositionRefinement, FindsTheTruthAndTellsItInBothTables)
{
    for (bool bBackground : {false, true}) {
        SpotSeries series(bBackground ? 50 : 0);
        QFile::remove(series.dataSet.m_listFrameFile[2]);  // a frame without peaks is not needed
        PositionRefinementOptions options;
        options.bConstantBackground = bBackground;
        QStringList listShown;
        options.fnBeforeFit = options.fnAfterFit = [&](int n, const QList<QPointF>& list) {
            listShown.append(QString("%1 %2").arg(n).arg(list[0].x(), 0, 'f', 1));
        };
        CRecordingReport report, reportOnFrame;
        const QVector<QList<Peak3D>> refined = refinePeakPosition(series.dataSet, series.peaks, report,
                                                                  options);
        EXPECT_EQ(listShown, QStringList({"0 30.0", "0 30.3", "1 31.0", "1 31.3"}));
        QVector<QList<Peak3D>> moved = series.peaks;
        options.nJobs = 2;  // the same bits
        const auto results = refinePeakPositionOnFrame(series.dataSet, moved, reportOnFrame, options);
        ASSERT_EQ(refined.size(), 3);
        ASSERT_EQ(results.size(), 3);
        QString strLong, strShort;
        for (int n = 0; n < 2; ++n)
            for (int j = 0; j < 2; ++j) {
                const Peak3D& old = series.peaks[n][j];
                const Peak3D& peak = refined[n][j];
                const std::vector<double>& vecFit = results[n][size_t(j)];
                const QPointF c = SpotSeries::beam(n), p(old.dfX2D, old.dfY2D), d = p - c;
                const QPointF q(peak.dfX2D, peak.dfY2D), r = 1.01 * (q - c), e = q - SpotSeries::spot(n, j);
                EXPECT_LT(std::hypot(e.x(), e.y()), 0.02);  // tails of the other spots
                EXPECT_EQ(QPointF(peak.dfX2DCorrected, peak.dfY2DCorrected), p);
                EXPECT_EQ(peak.point(), (Vec3D{float(vecFit[6]), float(vecFit[8]), float(vecFit[10])}));
                EXPECT_EQ(QPointF(moved[n][j].dfX2D, moved[n][j].dfY2D), q);
                EXPECT_EQ(moved[n][j].dfX2DCorrected, old.dfX2DCorrected);
                const int h = j == 0 ? 1 : -2, l = 2 + n;
                const double dfHkl = std::sqrt(h * h + l * l), dfR = std::hypot(r.x(), r.y());
                const double dfAzimuth = std::fmod(std::atan2(-r.y(), r.x()) * 180 / M_PI + 360, 360);
                // the axis by its direction (cos 30, -sin 30), not by its slope
                const double dfAlong = std::fabs(d.x() * std::sqrt(0.75) - d.y() * 0.5);
                const double dfAcross = std::fabs(d.x() * 0.5 + d.y() * std::sqrt(0.75));
                strLong += QString::asprintf(
                    "%4g %3g %3g %3g %8.1f %6.4f %8.1f %8.2f %8.2f %8.1f %8.1f %8.2f %8.2f %8.2f %8.2f %6.1f "
                    "%8.1f %8.3f %8.3f %8.2f %8.2f %8.4f %8.4f %g %g\n",
                    n + 1., double(h), 0., double(l), 1234.56, dfR * 0.001, dfAcross, c.x(), c.y(), p.x(),
                    p.y(), q.x(), q.y(), r.x(), r.y(), dfAzimuth, std::atan2(dfAcross, dfAlong) * 180 / M_PI,
                    dfR / 1.01 / dfHkl, dfR / dfHkl, q.x() - p.x(), q.y() - p.y(), vecFit[6], vecFit[8],
                    vecFit[10], 7.);
                strShort += QString::asprintf(
                    "%4d %4d %4d %4d %4d %8.1f %8.1f %8.1f %8.1f %8.1f %10.4f %10.4f\n", 2 * n + j + 1, n + 1,
                    h, 0, l, 1234.56, p.x(), p.y(), q.x(), q.y(), vecFit[6], vecFit[8]);
            }
        const QString strStart = "blue >Peak position refinement started.\n";
        const QString strEnd = "blue >Peak position refinement finished.";
        EXPECT_EQ(report.log().toStdString(), (strStart + strLong + '\n' + strEnd).toStdString());
        EXPECT_EQ(reportOnFrame.log().toStdString(), (strStart + strEnd + '\n' + strShort).toStdString());
    }
}

TEST(Remeasurement, EarlyEndsStopAndWrongCounts)
{
    const struct {
        int nStopAfter;  // questions, one before the first frame and one after each
        bool bMissing, bLess, bRunning;
        const char* pLog;
        int nRefined;  // frames
    } aRow[] = {{1, false, false, false, " did not finish.", 1},
                {3, false, false, false, " did not finish.", 3},
                {-1, true, false, false, "failed to load", 1},
                {-1, false, true, false, "red Frame counts do not match.", 0},
                {-1, false, false, true, "", 0}};
    for (const auto& row : aRow)
        for (int nRun = 0; nRun < (row.nStopAfter > 0 ? 4 : 3); ++nRun) {
            SpotSeries series;
            DataSet& dataSet = series.dataSet;
            dataSet.m_bRunning = row.bRunning;
            if (row.bMissing)
                QFile::remove(dataSet.m_listFrameFile[1]);
            if (row.bLess)
                series.peaks.removeLast();
            CRecordingReport report;
            report.m_nStopAfter = row.nStopAfter;
            CPeakFilters filters;
            bool bFinished = true;
            if (nRun == 0)
                EXPECT_EQ(refinePeakPosition(dataSet, series.peaks, report, {}, &bFinished).size(),
                          row.nRefined);
            else if (nRun == 1)
                EXPECT_EQ(refinePeakPositionOnFrame(dataSet, series.peaks, report).size(),
                          row.nRefined ? 3 : 0);
            else if (nRun == 2)
                EXPECT_EQ(extractIntensity(dataSet, series.peaks, {}, {}, filters, report, {}, &bFinished),
                          row.nRefined > 0);
            else
                EXPECT_TRUE(fitDirectBeam(dataSet, report));
            EXPECT_EQ(bFinished, nRun % 2 == 1);
            EXPECT_EQ(series.peaks[0][1].nID, 41);  // of a chain that stands
            EXPECT_TRUE(report.said(row.pLog)) << report.log().toStdString();
            EXPECT_FALSE(report.said(" finished") || dataSet.m_bRunning ||
                         !dataSet.m_listPeakMerged.isEmpty());
            EXPECT_EQ(report.m_listLine.isEmpty(), row.bRunning);
        }
}

// Centres beyond the edge are found there, but a peak on no pixel could not be measured any more.
TEST(PositionRefinement, KeepsPeaksOnTheFrame)
{
    FrameSeries series;
    const QList<QPointF> listTrue{{-0.4, 60}, {-1.6, 180}, {299.3, 120}, {150, 239.8}, {150, 120}};
    series.add(makeImage(300, 240, [&](int x, int y) {
        double df = 0;
        for (const QPointF& pt : listTrue)
            df += 2000 / (1 + std::pow(x - pt.x(), 2) / 2 + std::pow(y - pt.y(), 2) / 2);
        return df;
    }));
    QVector<QList<Peak3D>> peaks(1);
    for (const QPointF& pt : listTrue) {
        Peak3D peak;
        peak.dfX2D = std::clamp(std::round(pt.x()), 0., 299.);
        peak.dfY2D = std::clamp(std::round(pt.y()), 0., 239.);
        peak.setHKL(peaks[0].size(), -1.2, 7);
        peaks[0].append(peak);
    }
    CRecordingReport report;
    CPeakFilters filters;
    refinePeakPositionOnFrame(series.dataSet, peaks, report);
    for (int n : {0, 2, 4})
        EXPECT_NEAR(peaks[0][n].dfX2D, listTrue[n].x(), 0.1) << n;
    EXPECT_EQ(peaks[0][1].dfX2D, 0);
    EXPECT_EQ(peaks[0][3].dfY2D, 239);
    EXPECT_TRUE(
        report.said("red 2 fits left their boxes or the frame; these peaks keep their positions: frame 1 "
                    "(1, -1, 7), frame 1 (3, -1, 7).\n"));
    extractIntensity(series.dataSet, peaks, {}, {}, filters, report);
    EXPECT_TRUE(report.said("Intensity extraction finished."));
}

TEST(DirectBeam, IsFoundAroundItsSaturatedCoreFromAfar)
{
    FrameSeries series;
    series.add(makeImage(170, 130, [](int x, int y) {
        return std::min(9000 / (1 + std::pow(x - 81.3, 2) / 30 + std::pow(y - 60.6, 2) / 40), 4000.);
    }));
    CRecordingReport report;
    for (const QPointF& ptOff : {QPointF(0, 0), QPointF(15, 0), QPointF(-9, 12)}) {
        series.dataSet.m_dfCenterX = 81.3 + ptOff.x();
        series.dataSet.m_dfCenterY = 60.6 + ptOff.y();
        fitDirectBeam(series.dataSet, report, [](const DirectBeamOnFrame& beam) {
            EXPECT_LT(std::hypot(beam.ptFitted.x() - 81.3, beam.ptFitted.y() - 60.6), 0.01);
            EXPECT_NEAR(beam.vecFit[0], 9000, 10);
        });
    }
    EXPECT_EQ(report.log().count(" finished."), 3);
}

TEST(DirectBeam, IsFittedBesideItsExpectedPlaceAndMissingFramesAreSkipped)
{
    SpotSeries series;
    QFile::remove(series.dataSet.m_listFrameFile[1]);
    CRecordingReport report;
    QString strLines;
    EXPECT_TRUE(fitDirectBeam(series.dataSet, report, [&](const DirectBeamOnFrame& beam) {
        const QPointF e = SpotSeries::beam(beam.nFrame), f = beam.ptFitted, d = f - e;
        EXPECT_NEAR(d.x(), 0.4, 0.02);
        EXPECT_NEAR(d.y(), 0, 0.02);
        EXPECT_NEAR(beam.vecFit[2], 5, 0.2);
        strLines += QString::asprintf("%4d %8.1f %8.1f %8.2f %8.2f %8.2f %8.2f %15.1f %10.6f %10.6f %d\n",
                                      beam.nFrame + 1, e.x(), e.y(), f.x(), f.y(), d.x(), d.y(),
                                      beam.vecFit[0], beam.vecFit[2], beam.vecFit[4], 1);
    }));
    EXPECT_EQ(report.log().remove(QRegularExpression("red .*\n")).toStdString(),  // the loader's words
              ("blue >Evaluation of the direct beam started.\n" + strLines +
               "blue >Evaluation of the direct beam finished.")
                  .toStdString());
}

TEST(Centroid, IsTheWeightedMeanOfTheDiscOrTheCentre)
{
    const CImgObj<float> img = makeImage(40, 30, [](int x, int y) { return x < 20 ? x - 3. * (y == 7) : 0; });
    const struct {
        RefIntPara window;
        double dfX, dfY;
    } aRow[] = {{{1, 2, 10, 15}, 502. / 50, 15},  // a ramp: sums of x² and x over five pixels
                {{1, 0, 10, 8}, 472. / 47, (10 * 9 + 30 * 8 + 7 * 7) / 47.},
                {{3, 1, 30, 15}, 30, 15},  // nothing there
                {{1, 2, 2, 15}, 2, 15}};   // the ring crosses the edge
    std::list<double> listX{9, 9}, listY;
    for (const auto& row : aRow) {
        refine2DPeakPosition(listX, listY, img, {row.window});
        ASSERT_TRUE(listX.size() == 1 && listY.size() == 1);
        EXPECT_NEAR(listX.front(), row.dfX, 1e-6);
        EXPECT_NEAR(listY.front(), row.dfY, 1e-6);
    }
}

TEST(IntensityExtraction, RepeatsTheHuntAndLeavesNoOtherReflectionsData)
{
    SpotSeries series(20);
    DataSet& dataSet = series.dataSet;
    PeakHuntingParameters hunting;
    hunting.m_dfPeakRadius = 2, hunting.m_dfIntegrationRadius = 6, hunting.m_dfIntegrationBackground = 2;
    CPeakFilters filters, filtersHunt;
    CRecordingReport report;
    ASSERT_TRUE(runPeakHunting(dataSet, hunting, filtersHunt, report));
    QVector<QList<Peak3D>> peaks = dataSet.m_listPeakFrame.toVector();
    for (QList<Peak3D>& listPeak : peaks)
        for (Peak3D& peak : listPeak)
            peak.dfIPoint = peak.dfI2D = 0, peak.dfX2D += 0.3, peak.nID = 99;
    dataSet.m_vecPeakIndexedOnFrame = peaks;
    dataSet.m_listPeakChain = {{Peak3D()}};
    dataSet.m_vecReflectionFrame = {1, 2};
    hunting.m_dfIntegrationRadius = 9, hunting.m_dfIntegrationBackground = 1;  // not those that count now
    const ExtractionParameters window{6, 2, 1};
    peaks[1][0].dfY2D = 129.5;
    EXPECT_TRUE(extractIntensity(dataSet, peaks, hunting, window, filters, report));
    EXPECT_TRUE(
        report.said("red Some peaks are outside the frame.\nred >Intensity extraction did not finish."));
    EXPECT_TRUE(dataSet.m_listPeakMerged.isEmpty() && dataSet.m_listPeakChain.size() == 1);
    EXPECT_EQ(peaks[0][0].nID, 99);
    EXPECT_TRUE(extractIntensity(dataSet, dataSet.m_vecPeakIndexedOnFrame, hunting, window, filters, report));
    EXPECT_TRUE(dataSet.m_listPeakChain.isEmpty() && dataSet.m_vecReflectionFrame.empty());
    EXPECT_GE(dataSet.m_listPeakMerged.size(), 9);
    EXPECT_EQ(dataSet.m_listPeakMergedShown.size(), dataSet.m_listPeakMerged.size());
    int n = 0;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < dataSet.m_listPeakFrame[i].size(); ++j, ++n)
            for (const Peak3D& peak :
                 {dataSet.m_listPeakMerged.value(n), dataSet.m_vecPeakIndexedOnFrame[i][j]}) {
                EXPECT_EQ(peak.nID, n);
                EXPECT_EQ(peak.dfIPoint, dataSet.m_listPeakFrame[i][j].dfIPoint);
                EXPECT_EQ(peak.dfI2D, dataSet.m_listPeakFrame[i][j].dfI2D);
            }
}

TEST(SummedFrames, AlignsDividesAndNamesEachGroup)
{
    FrameSeries series;
    for (int n = 0; n < 6; ++n)  // a mark that drifts with the shift; the last frame has another size
        series.add(makeImage(n == 5 ? 9 : 8, 6, [&](int x, int y) {
            return x == (3 + n) % 8 && y == 2 ? 1e6 : y == 5 ? (x == 0 ? -90 : x == 7 ? 53 : 0) : 0;
        }));
    series.dataSet.m_listBeamTiltBreak = {0, 1, 0, 1, 2, 1};
    series.dataSet.m_listShift = {{0, 0}, {1.9, -0.7}, {2.2, 0}, {-0.7, 0}, {0, 0}, {0, 0}};
    series.dataSet.m_listOverallTilt = {-1, 0, 0.5, 1, 2, 3};
    CRecordingReport report;
    int nShown = 0;
    EXPECT_FALSE(exportSummedFrames(series.dataSet, series.dir.path(), report, [&](int) { ++nShown; }));
    EXPECT_EQ(nShown, 2);
    EXPECT_TRUE(series.content("003.mrc").isNull() && series.dataSet.m_vecFrameImage.empty());
    EXPECT_TRUE(
        report.log().startsWith("#  1:    2    3\n#  2:    4\n#  3:    6\n"
                                "Data out of range (100000). Break.\n#001:    2    3:    0.250    0.250\n"
                                "#002:    4:    1.000    0.000\nred "));
    EXPECT_TRUE(report.log().endsWith("\nShift #002:  -1   0\nShift #003:  -2   0\nShift #004:   0   0\n"));
    report.m_listLine.clear();
    report.m_listColor.clear();
    exportSummedFrames(series.dataSet, series.dir.filePath("none"), report);
    const QString strFailed = "\nFailed to save image:" + series.dir.filePath("none/00");
    EXPECT_TRUE(report.said(strFailed + "1.mrc\n#001: ") && report.said(strFailed + "2.mrc\n#002: "));
    ImageList vecImage;
    for (const char* pFile : {"001.mrc", "002.mrc"})
        ASSERT_TRUE(ReadMRC(series.dir.filePath(pFile), vecImage));
    const auto at = [&](size_t i, int x, int y) { return vecImage.at(i)->Data()[y * 8 + x]; };
    EXPECT_EQ(at(0, 3, 2), 65535);  // both marks moved back to column 3
    EXPECT_EQ(at(1, 6, 2), 50000);  // a shift of -0.7 truncates to 0
    EXPECT_EQ(at(0, 6, 5), 0);      // 53 - 90, wrapped around the edge
    EXPECT_EQ(at(1, 7, 5), 2);      // 53 / 20, truncated
}

}  // namespace
