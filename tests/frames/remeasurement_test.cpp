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
const QList<QPointF> g_listShift{{0, 0}, {1.5, -0.75}, {-2.25, 3}, {0.5, 0.5}};

double lorentzian(double dfX, double dfY, double dfA, double dfBx, double dfBy)
{
    return dfA / (1 + dfX * dfX / dfBx + dfY * dfY / dfBy);
}

/// Frames with a beam 0.4 pixels beside its expected place and two far spots; frame 2 has no peak and no
/// file.
struct SpotSeries : FrameSeries {
    explicit SpotSeries(double dfBackground = 0)
    {
        for (int n = 0; n < g_listShift.size(); ++n) {
            const QPointF ptBeam = g_ptBeam + g_listShift[n];
            add(makeImage(170, 130, [&](int x, int y) {
                return dfBackground +
                       lorentzian(x - ptBeam.x() - 0.4, y - ptBeam.y(), 2500, 5, 6) * (n != 2) +
                       lorentzian(x - spot(n, 0).x(), y - spot(n, 0).y(), 2000, 3, 2) * (n != 2) +
                       lorentzian(x - spot(n, 1).x(), y - spot(n, 1).y(), 900, 2, 4) * (n != 2);
            }));
            peaks.append(QList<Peak3D>());
            for (int j = 0; j < 2 && n != 2; ++j) {
                Peak3D peak;
                peak.nFrame = n;
                peak.setHKL(1.2 - 3 * j, -0.3, 2 + n);
                peak.dfIPoint = 1234.56;
                peak.nRGroup = 7;
                peak.dfX2D = std::round(spot(n, j).x());
                peak.dfY2D = std::round(spot(n, j).y());
                peak.dfX2DCorrected = 1.01 * (peak.dfX2D - ptBeam.x());
                peak.dfY2DCorrected = 1.01 * (peak.dfY2D - ptBeam.y());
                peaks[n].append(peak);
            }
        }
        QFile::remove(dataSet.m_listFrameFile[2]);
        dataSet.m_listShift = g_listShift;
        dataSet.m_dfCenterX = g_ptBeam.x();
        dataSet.m_dfCenterY = g_ptBeam.y();
        dataSet.m_dfRotationAxis = 30;
    }
    static QPointF spot(int nFrame, int j)
    {
        return j == 0 ? QPointF(30.3 + nFrame, 22.6) : QPointF(140.8, 105.2 - 0.3 * nFrame);
    }
    QVector<QList<Peak3D>> peaks;
};

TEST(PositionRefinement, FindsTheTruthAndTellsItInBothTables)
{
    for (bool bBackground : {false, true}) {
        SpotSeries series(bBackground ? 50 : 0);
        PositionRefinementOptions options;
        options.bConstantBackground = bBackground;
        options.nJobs = bBackground ? 3 : 1;
        QStringList listShown;
        const auto show = [&](const char* p) {
            return [&listShown, p](int n, const QList<QPointF>& list) {
                listShown.append(QString("%1%2 %3").arg(p).arg(n).arg(list[0].x(), 0, 'f', 1));
            };
        };
        options.fnBeforeFit = show("before");
        options.fnAfterFit = show("after");
        CRecordingReport report, reportOnFrame;
        const QVector<QList<Peak3D>> refined =
            refinePeakPosition(series.dataSet, series.peaks, report, options);
        EXPECT_EQ(listShown, QStringList({"before0 30.0", "after0 30.3", "before1 31.0", "after1 31.3",
                                          "before3 33.0", "after3 33.3"}));
        QVector<QList<Peak3D>> moved = series.peaks;
        options.nJobs = 2;
        const auto results = refinePeakPositionOnFrame(series.dataSet, moved, reportOnFrame, options);
        ASSERT_EQ(refined.size(), 4);
        ASSERT_EQ(results.size(), 4);
        QString strLong, strShort;
        int nNumber = 0;
        for (int n = 0; n < 4; ++n) {
            ASSERT_EQ(refined[n].size(), n == 2 ? 0 : 2);
            for (int j = 0; j < refined[n].size(); ++j) {
                const Peak3D& old = series.peaks[n][j];
                const Peak3D& peak = refined[n][j];
                const std::vector<double>& vecFit = results[n][size_t(j)];
                // the tails of the other spots bend a fit without background by some hundredths
                EXPECT_NEAR(peak.dfX2D, SpotSeries::spot(n, j).x(), 0.02);
                EXPECT_NEAR(peak.dfY2D, SpotSeries::spot(n, j).y(), 0.02);
                EXPECT_EQ(QPointF(peak.dfX2DCorrected, peak.dfY2DCorrected), QPointF(old.dfX2D, old.dfY2D));
                EXPECT_EQ(peak.fX3D, float(vecFit[6]));  // the same for two ways and numbers of jobs
                EXPECT_EQ(peak.fY3D, float(vecFit[8]));
                EXPECT_EQ(peak.fZ3D, float(vecFit[10]));
                EXPECT_EQ(moved[n][j].dfX2D, peak.dfX2D);
                EXPECT_EQ(moved[n][j].dfY2D, peak.dfY2D);
                EXPECT_EQ(moved[n][j].dfX2DCorrected, old.dfX2DCorrected);
                const QPointF c = g_ptBeam + g_listShift[n], p(old.dfX2D, old.dfY2D), d = p - c;
                const QPointF q(peak.dfX2D, peak.dfY2D), r = 1.01 * (q - c);
                const int h = j == 0 ? 1 : -2, l = 2 + n;
                const double dfHkl = std::sqrt(h * h + l * l), dfR = std::hypot(r.x(), r.y());
                const double dfAzimuth = std::fmod(std::atan2(-r.y(), r.x()) * 180 / M_PI + 360, 360);
                // distance and angle to the axis by its direction (cos 30, -sin 30), not by its slope
                const double dfAlong = d.x() * std::sqrt(0.75) - d.y() * 0.5;
                const double dfAcross = std::fabs(d.x() * 0.5 + d.y() * std::sqrt(0.75));
                strLong += QString::asprintf(
                    "%4g %3g %3g %3g %8.1f %6.4f %8.1f %8.2f %8.2f %8.1f %8.1f %8.2f %8.2f %8.2f %8.2f %6.1f "
                    "%8.1f "
                    "%8.3f %8.3f %8.2f %8.2f %8.4f %8.4f %g %g\n",
                    n + 1., double(h), 0., double(l), 1234.56, dfR * 0.001, dfAcross, c.x(), c.y(), p.x(),
                    p.y(), q.x(), q.y(), r.x(), r.y(), dfAzimuth,
                    std::atan2(dfAcross, std::fabs(dfAlong)) * 180 / M_PI, dfR / 1.01 / dfHkl, dfR / dfHkl,
                    q.x() - p.x(), q.y() - p.y(), vecFit[6], vecFit[8], vecFit[10], 7.);
                strShort += QString::asprintf(
                    "%4d %4d %4d %4d %4d %8.1f %8.1f %8.1f %8.1f %8.1f %10.4f %10.4f\n", ++nNumber, n + 1, h,
                    0, l, 1234.56, p.x(), p.y(), q.x(), q.y(), vecFit[6], vecFit[8]);
            }
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
        int nStopAfter;
        bool bMissing, bLess, bRunning;
        const char* pLog;
        int nRefined, nMerged;  // frames refined, peaks of the merged list afterwards
    } aRow[] = {{2, false, false, false, " did not finish.", 2, 1},
                {-1, true, false, false, "failed to load", 1, 1},
                {-1, false, true, false, "red Frame counts do not match.", 0, 1},
                {-1, false, false, true, "", 0, 1}};
    for (const auto& row : aRow) {
        SpotSeries series;
        QFile::copy(series.dataSet.m_listFrameFile[0], series.dataSet.m_listFrameFile[2]);
        series.dataSet.m_listPeakMerged = {Peak3D()};
        if (row.bMissing)
            QFile::remove(series.dataSet.m_listFrameFile[1]);
        if (row.bLess)
            series.peaks.removeLast();
        for (int nRun = 0; nRun < 3; ++nRun) {
            series.dataSet.m_bRunning = row.bRunning;
            CRecordingReport report;
            report.m_nStopAfter = row.nStopAfter;
            QVector<QList<Peak3D>> peaks = series.peaks;
            CPeakFilters filters;
            if (nRun == 0)
                EXPECT_EQ(refinePeakPosition(series.dataSet, peaks, report).size(), row.nRefined);
            else if (nRun == 1)
                EXPECT_EQ(refinePeakPositionOnFrame(series.dataSet, peaks, report).size(),
                          row.nRefined ? 4 : 0);
            else
                EXPECT_EQ(extractIntensity(series.dataSet, peaks, {}, {}, filters, report), row.nRefined > 0);
            EXPECT_TRUE(report.said(row.pLog)) << report.log().toStdString();
            EXPECT_FALSE(report.said(" finished"));
            EXPECT_EQ(report.m_listLine.isEmpty(), row.bRunning);
            EXPECT_FALSE(series.dataSet.m_bRunning);
            EXPECT_EQ(series.dataSet.m_listPeakMerged.size(), row.nMerged);
        }
    }
}

TEST(DirectBeam, IsFittedBesideItsExpectedPlaceAndMissingFramesAreSkipped)
{
    SpotSeries series;
    CRecordingReport report;
    QStringList listExpected{"blue >Evaluation of the direct beam started."};
    EXPECT_TRUE(fitDirectBeam(series.dataSet, report, [&](const DirectBeamOnFrame& beam) {
        const QPointF e = g_ptBeam + g_listShift[beam.nFrame];
        EXPECT_NEAR(beam.ptFitted.x(), e.x() + 0.4, 0.02);
        EXPECT_NEAR(beam.ptFitted.y(), e.y(), 0.02);
        EXPECT_NEAR(beam.vecFit[2], 5, 0.2);
        listExpected.append(QString::asprintf(
            "%4d %8.1f %8.1f %8.2f %8.2f %8.2f %8.2f %15.1f %10.6f %10.6f %d", beam.nFrame + 1, e.x(), e.y(),
            beam.ptFitted.x(), beam.ptFitted.y(), beam.ptFitted.x() - e.x(), beam.ptFitted.y() - e.y(),
            beam.vecFit[0], beam.vecFit[2], beam.vecFit[4], 1));
    }));
    listExpected.append("blue >Evaluation of the direct beam finished.");
    QStringList listSaid = report.log().split('\n');
    EXPECT_EQ(listSaid.removeAll(""), 0);
    for (int i = listSaid.size() - 1; i >= 0; --i)
        if (listSaid[i].startsWith("red "))
            listSaid.removeAt(i);  // the loader's words on frame 2
    EXPECT_EQ(listSaid.join('\n').toStdString(), listExpected.join('\n').toStdString());
}

TEST(Centroid, IsTheWeightedMeanOfTheDiscOrTheCentre)
{
    const CImgObj<float> img = makeImage(40, 30, [](int x, int y) { return x < 20 ? x - 3. * (y == 7) : 0; });
    const auto window = [](int x, int y, int nR, int nB) {
        RefIntPara para;
        para.nX = x, para.nY = y, para.nRadius = nR, para.nBackground = nB;
        return para;
    };
    std::list<double> listX{9, 9}, listY;
    // a ramp x: Σx²/Σx over the 5 pixels of radius 1 around 10, less the dent of row 7
    refine2DPeakPosition(listX, listY, img,
                         {window(10, 15, 1, 2), window(10, 8, 1, 0), window(30, 15, 3, 1),
                          window(2, 15, 1, 2), window(10, 27, 2, 1)});
    const double aX[] = {502. / 50, 472. / 47, 30, 2, 10},
                 aY[] = {15, (10 * 9 + 30 * 8 + 7 * 7) / 47., 15, 15, 27};
    ASSERT_EQ(listX.size(), 5u);
    ASSERT_EQ(listY.size(), 5u);
    for (int i = 0; i < 5; ++i) {
        EXPECT_NEAR(*std::next(listX.begin(), i), aX[i], 1e-6) << i;
        EXPECT_NEAR(*std::next(listY.begin(), i), aY[i], 1e-6) << i;
    }
}

TEST(IntensityExtraction, RepeatsTheHuntAndLeavesNoOtherReflectionsData)
{
    SpotSeries series(20);
    QFile::copy(series.dataSet.m_listFrameFile[0], series.dataSet.m_listFrameFile[2]);
    PeakHuntingParameters hunting;
    hunting.m_dfPeakRadius = 2, hunting.m_dfIntegrationRadius = 6, hunting.m_dfIntegrationBackground = 2;
    CPeakFilters filters, filtersHunt;
    CRecordingReport report;
    ASSERT_TRUE(runPeakHunting(series.dataSet, hunting, filtersHunt, report));
    DataSet& dataSet = series.dataSet;
    dataSet.m_vecPeakIndexedOnFrame = dataSet.m_listPeakFrame.toVector();
    for (QList<Peak3D>& listPeak : dataSet.m_vecPeakIndexedOnFrame)
        for (Peak3D& peak : listPeak)
            peak.dfIPoint = peak.dfI2D = 0, peak.dfX2D += 0.3, peak.nID = 99;
    dataSet.m_listPeakChain = {{Peak3D()}};
    dataSet.m_vecReflectionFrame = {1, 2};
    const ExtractionParameters window{6, 2, 1};
    QVector<QList<Peak3D>> outside = dataSet.m_vecPeakIndexedOnFrame;
    outside[1][0].dfY2D = 129.5;
    EXPECT_TRUE(extractIntensity(dataSet, outside, hunting, window, filters, report));
    EXPECT_TRUE(
        report.said("red Some peaks are outside the frame.\nred >Intensity extraction did not finish."));
    EXPECT_TRUE(dataSet.m_listPeakMerged.isEmpty() && dataSet.m_listPeakChain.size() == 1);
    EXPECT_TRUE(extractIntensity(dataSet, dataSet.m_vecPeakIndexedOnFrame, hunting, window, filters, report));
    EXPECT_TRUE(report.log().endsWith("\nblue >Intensity extraction finished."));
    EXPECT_TRUE(dataSet.m_listPeakChain.isEmpty() && dataSet.m_vecReflectionFrame.empty());
    ASSERT_GE(dataSet.m_listPeakMerged.size(), 9);
    EXPECT_EQ(dataSet.m_listPeakMergedShown.size(), dataSet.m_listPeakMerged.size());
    int n = 0;
    for (int nFrame = 0; nFrame < 4; ++nFrame)
        for (int j = 0; j < dataSet.m_listPeakFrame[nFrame].size(); ++j, ++n)
            for (const Peak3D& peak :
                 {dataSet.m_listPeakMerged[n], dataSet.m_vecPeakIndexedOnFrame[nFrame][j]}) {
                EXPECT_EQ(peak.nID, n);
                EXPECT_EQ(peak.dfIPoint, dataSet.m_listPeakFrame[nFrame][j].dfIPoint);
                EXPECT_EQ(peak.dfI2D, dataSet.m_listPeakFrame[nFrame][j].dfI2D);
            }
    EXPECT_EQ(n, dataSet.m_listPeakMerged.size());
}

TEST(SummedFrames, AlignsDividesAndNamesEachGroup)
{
    FrameSeries series;
    for (int n = 0; n < 6; ++n)  // a mark that drifts with the shift; frame 5 has another size
        series.add(makeImage(n == 5 ? 9 : 8, 6, [&](int x, int y) {
            return x == (3 + n) % 8 && y == 2 ? 1e6 : x == 0 && y == 5 ? -90 : x == 7 && y == 5 ? 53 : 0;
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
                                "Data out of range (100000). Break.\n"
                                "#001:    2    3:    0.250    0.250\n#002:    4:    1.000    0.000\nred "))
        << report.log().toStdString();
    EXPECT_TRUE(report.log().endsWith("\nShift #002:  -1   0\nShift #003:  -2   0\nShift #004:   0   0\n"));
    ImageList vecImage;
    ASSERT_TRUE(ReadMRC(series.dir.filePath("001.mrc"), vecImage) &&
                ReadMRC(series.dir.filePath("002.mrc"), vecImage));
    ASSERT_EQ(vecImage.size(), 2u);
    const auto at = [&](int i, int x, int y) { return vecImage[size_t(i)]->Data()[y * 8 + x]; };
    EXPECT_EQ(at(0, 3, 2), 65535);  // both marks moved back to column 3
    EXPECT_EQ(at(1, 6, 2), 50000);  // a shift of -0.7 truncates to 0
    EXPECT_EQ(at(0, 0, 5), 0);      // below 0
    EXPECT_EQ(at(0, 6, 5), 0);      // 53 - 90, wrapped around the edge
    EXPECT_EQ(at(1, 7, 5), 2);      // 53 / 20, truncated
}

}  // namespace
