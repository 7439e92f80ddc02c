#include "frames/centroid.h"
#include "frames/directbeamfit.h"
#include "frames/intensityextraction.h"
#include "frames/positionrefinement.h"
#include "records/pi.h"
#include "tests/frames/frameseries.h"
#include "tests/reciprocal/testpeaks.h"

namespace tessera {

namespace {

const QPointF g_ptBeam(81.5, 60.25);
const QList<QPointF> g_listShift{{0, 0}, {1.5, -0.75}, {-2.25, 3}};

double lorentzian(double dfX, double dfY, double dfA, double dfBx, double dfBy)
{
    return dfA / (1 + dfX * dfX / dfBx + dfY * dfY / dfBy);
}

double distance(const QPointF& a, const QPointF& b)
{
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

/// Frames with a beam 0.4 pixels beside its expected place and two far spots; the last has no peaks.
struct SpotSeries : FrameSeries {
    explicit SpotSeries(double dfBackground = 0)
    {
        for (int n = 0; n < g_listShift.size(); ++n) {
            const QPointF c = beam(n), a = spot(n, 0), b = spot(n, 1);
            add(makeImage(170, 130, [&](int x, int y) {
                return dfBackground + lorentzian(x - c.x() - 0.4, y - c.y(), 2500, 5, 6) +
                       lorentzian(x - a.x(), y - a.y(), 2000, 3, 2) +
                       lorentzian(x - b.x(), y - b.y(), 900, 2, 4);
            }));
            peaks.append(QList<Peak3D>());
            for (int j = 0; j < 2 && n != 2; ++j) {
                Peak3D peak = peakAt(std::round(spot(n, j).x()), std::round(spot(n, j).y()), n, 1234.56);
                peak.setHKL(1.2 - 3 * j, -0.3, 2 + n);
                peak.nRGroup = 7;
                peak.nID = 40 + j;
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

/// The refinement of the same series to a list of its own and on the frame, without or with a background.
struct RefinedTwice {
    explicit RefinedTwice(bool bBackground) : series(bBackground ? 50 : 0), moved(series.peaks)
    {
        series.removeFrame(2);  // a frame without peaks is not needed
        PositionRefinementOptions options;
        options.bConstantBackground = bBackground;
        options.fnBeforeFit = options.fnAfterFit = [&](int n, const QList<QPointF>& list) {
            listShown.append(QString("%1 %2").arg(n).arg(list[0].x(), 0, 'f', 1));
        };
        refined = refinePeakPosition(series.dataSet, series.peaks, series.report, options).vecPeak;
        options.fnBeforeFit = options.fnAfterFit = {};
        options.nJobs = 2;  // the same bits
        results = refinePeakPositionOnFrame(series.dataSet, moved, reportOnFrame, options);
    }
    bool isWhole() const { return refined.size() == 3 && results.size() == 3; }
    SpotSeries series;
    QVector<QList<Peak3D>> moved, refined;
    QStringList listShown;  ///< by the first one
    CRecordingReport reportOnFrame;
    QVector<std::vector<std::vector<double>>> results;  ///< of the second one
};

const QString g_strStart = "blue >Peak position refinement started.\n";
const QString g_strEnd = "blue >Peak position refinement finished.";

TEST(PositionRefinement, ShowsEachFrameBeforeAndAfterItsFit)
{
    for (bool bBackground : {false, true}) {
        EXPECT_EQ(RefinedTwice(bBackground).listShown, QStringList({"0 30.0", "0 30.3", "1 31.0", "1 31.3"}));
    }
}

TEST(PositionRefinement, FindsTheTruthByEitherWay)
{
    for (bool bBackground : {false, true}) {
        const RefinedTwice twice(bBackground);
        ASSERT_TRUE(twice.isWhole());
        for (int i = 0; i < 4; ++i) {
            const int n = i / 2, j = i % 2;
            const Peak3D &old = twice.series.peaks[n][j], &peak = twice.refined[n][j],
                         &moved = twice.moved[n][j];
            const std::vector<double>& vecFit = twice.results[n][j];
            const QPointF q(peak.dfX2D, peak.dfY2D);
            EXPECT_LT(distance(q, SpotSeries::spot(n, j)), 0.02);  // tails of the other spots
            EXPECT_EQ(QPointF(peak.dfX2DCorrected, peak.dfY2DCorrected), QPointF(old.dfX2D, old.dfY2D));
            EXPECT_EQ(peak.point(), (Vec3D{float(vecFit[6]), float(vecFit[8]), float(vecFit[10])}));
            EXPECT_EQ(QPointF(moved.dfX2D, moved.dfY2D), q);
            EXPECT_EQ(moved.dfX2DCorrected, old.dfX2DCorrected);
        }
    }
}

TEST(PositionRefinement, TellsTheGeometryOfEachPeak)
{
    for (bool bBackground : {false, true}) {
        const RefinedTwice twice(bBackground);
        ASSERT_TRUE(twice.isWhole());
        QString strTable;
        for (int i = 0; i < 4; ++i) {
            const int n = i / 2, j = i % 2;
            const Peak3D &old = twice.series.peaks[n][j], &peak = twice.refined[n][j];
            const std::vector<double>& vecFit = twice.results[n][j];
            const QPointF c = SpotSeries::beam(n), p(old.dfX2D, old.dfY2D), d = p - c;
            const QPointF q(peak.dfX2D, peak.dfY2D), r = 1.01 * (q - c);
            const int h = j == 0 ? 1 : -2, l = 2 + n;
            const double dfHkl = std::sqrt(h * h + l * l), dfR = std::hypot(r.x(), r.y());
            const double dfAzimuth = std::fmod(std::atan2(-r.y(), r.x()) * 180 / g_dfPi + 360, 360);
            // the axis by its direction (cos 30, -sin 30), not by its slope
            const double dfAlong = std::fabs(d.x() * std::sqrt(0.75) - d.y() * 0.5);
            const double dfAcross = std::fabs(d.x() * 0.5 + d.y() * std::sqrt(0.75));
            strTable += QString::asprintf(
                "%4g %3g %3g %3g %8.1f %6.4f %8.1f %8.2f %8.2f %8.1f %8.1f %8.2f %8.2f %8.2f %8.2f %6.1f "
                "%8.1f %8.3f %8.3f %8.2f %8.2f %8.4f %8.4f %g %g\n",
                n + 1., double(h), 0., double(l), 1234.56, dfR * 0.001, dfAcross, c.x(), c.y(), p.x(), p.y(),
                q.x(), q.y(), r.x(), r.y(), dfAzimuth, std::atan2(dfAcross, dfAlong) * 180 / g_dfPi,
                dfR / 1.01 / dfHkl, dfR / dfHkl, q.x() - p.x(), q.y() - p.y(), vecFit[6], vecFit[8],
                vecFit[10], 7.);
        }
        EXPECT_EQ(twice.series.report.log(), g_strStart + strTable + '\n' + g_strEnd);
    }
}

TEST(PositionRefinement, OnTheFrameTellsTheFits)
{
    for (bool bBackground : {false, true}) {
        const RefinedTwice twice(bBackground);
        ASSERT_TRUE(twice.isWhole());
        QString strTable;
        for (int i = 0; i < 4; ++i) {
            const int n = i / 2, j = i % 2;
            const Peak3D &old = twice.series.peaks[n][j], &peak = twice.refined[n][j];
            const std::vector<double>& vecFit = twice.results[n][j];
            strTable += QString::asprintf("%4d %4d %4d %4d %4d %8.1f %8.1f %8.1f %8.1f %8.1f %10.4f %10.4f\n",
                                          i + 1, n + 1, j == 0 ? 1 : -2, 0, 2 + n, 1234.56, old.dfX2D,
                                          old.dfY2D, peak.dfX2D, peak.dfY2D, vecFit[6], vecFit[8]);
        }
        EXPECT_EQ(twice.reportOnFrame.log(), g_strStart + g_strEnd + '\n' + strTable);
    }
}

enum class Measurement { Positions, PositionsOnFrame, Intensities, DirectBeam };

/// How a run ends before its time.
struct EarlyEnd {
    RunEnd end;
    const char* pLog;
    int nFrames;  ///< of the result of the refinement to a list
    const char* pReason;
};

/// Runs a measurement and expects its early end, and that it left everything as it was.
void expectEarlyEnd(Measurement measurement, SpotSeries& series, const EarlyEnd& early)
{
    SCOPED_TRACE(testing::Message() << "measurement " << int(measurement));
    DataSet& dataSet = series.dataSet;
    CRecordingReport& report = series.report;
    std::optional<RunOutcome> outcome;  // the run on the frames in place tells none
    if (measurement == Measurement::Positions) {
        const RefinedPositions refined = refinePeakPosition(dataSet, series.peaks, report);
        EXPECT_EQ(refined.vecPeak.size(), early.nFrames);
        outcome = refined.outcome;
    } else if (measurement == Measurement::PositionsOnFrame) {
        EXPECT_EQ(refinePeakPositionOnFrame(dataSet, series.peaks, report).size(),
                  early.end == RunEnd::Refused ? 0 : 3);
    } else if (measurement == Measurement::Intensities) {
        outcome = extractIntensity(dataSet, series.peaks, {}, {}, series.filters, report);
    } else {
        outcome = fitDirectBeam(dataSet, report);
    }
    if (outcome) {
        EXPECT_EQ(outcome->end, early.end);
        EXPECT_TRUE(outcome->strReason.contains(early.pReason)) << outcome->strReason.toStdString();
        EXPECT_EQ(outcome->strReason.isEmpty(), *early.pReason == '\0');
    }
    EXPECT_EQ(series.peaks[0][1].nID, 41);  // of a chain that still exists
    EXPECT_TRUE(report.said(early.pLog)) << report.log().toStdString();
    EXPECT_FALSE(report.said(" finished"));
    EXPECT_TRUE(dataSet.m_listPeakMerged.isEmpty());
}

const Measurement g_aOfPeaks[] = {Measurement::Positions, Measurement::PositionsOnFrame,
                                  Measurement::Intensities};

TEST(Remeasurement, StopsBetweenFramesWhenAsked)
{
    // Questions, one before the first frame and one after each, and frames of the result.
    for (const auto& [nStopAfter, nFrames] : {std::pair(0, 0), std::pair(1, 1), std::pair(3, 3)}) {
        SCOPED_TRACE(nStopAfter);
        for (Measurement measurement : {Measurement::Positions, Measurement::PositionsOnFrame,
                                        Measurement::Intensities, Measurement::DirectBeam}) {
            SpotSeries series;
            series.report.m_nStopAfter = nStopAfter;
            expectEarlyEnd(measurement, series, {RunEnd::Stopped, " did not finish.", nFrames, ""});
        }
    }
}

TEST(Remeasurement, FailsAtAMissingFrame)
{
    for (Measurement measurement : g_aOfPeaks) {
        SpotSeries series;
        series.removeFrame(1);
        expectEarlyEnd(measurement, series, {RunEnd::Failed, "failed to load", 1, "f0001.mrc: "});
    }
}

TEST(Remeasurement, RefusesPeaksOfAnotherCountOfFrames)
{
    for (Measurement measurement : g_aOfPeaks) {
        SpotSeries series;
        series.peaks.removeLast();
        expectEarlyEnd(measurement, series,
                       {RunEnd::Refused, "red Frame counts do not match.", 0, "Frame counts"});
    }
}

// Centres beyond the edge are found there, but a peak on no pixel could not be measured any more.
TEST(PositionRefinement, KeepsPeaksOnTheFrame)
{
    FrameSeries series;
    const QList<QPointF> listTrue{{-0.4, 60}, {-1.6, 180}, {299.3, 120}, {150, 239.8}, {150, 120}};
    series.add(makeImage(300, 240, [&](int x, int y) {
        double df = 0;
        for (const QPointF& pt : listTrue) {
            df += lorentzian(x - pt.x(), y - pt.y(), 2000, 2, 2);
        }
        return df;
    }));
    QVector<QList<Peak3D>> peaks(1);
    for (const QPointF& pt : listTrue) {
        peaks[0].append(
            peakAt(std::clamp(std::round(pt.x()), 0., 299.), std::clamp(std::round(pt.y()), 0., 239.)));
    }
    for (int n = 0; n < 5; ++n) {
        peaks[0][n].setHKL(n, -1.2, 7);
    }
    const QVector<QList<Peak3D>> refined = refinePeakPosition(series.dataSet, peaks, series.report).vecPeak;
    refinePeakPositionOnFrame(series.dataSet, peaks, series.report);
    for (int n : {1, 3}) {  // what stays where it was has no errors of a fit
        EXPECT_EQ(refined[0][n].fX3D + refined[0][n].fY3D + refined[0][n].fZ3D, -3) << n;
        const QPointF pt(peaks[0][n].dfX2D, peaks[0][n].dfY2D);
        const QString strAt = QString::asprintf(" %8.1f %8.1f", pt.x(), pt.y());
        EXPECT_TRUE(series.report.said(strAt + strAt + "    -1.0000    -1.0000\n")) << n;
    }
    for (int n : {0, 2, 4}) {
        EXPECT_GT(refined[0][n].fX3D, 0) << n;
    }
    for (int n : {0, 2, 4}) {
        EXPECT_NEAR(peaks[0][n].dfX2D, listTrue[n].x(), 0.1) << n;
    }
    EXPECT_EQ(peaks[0][1].dfX2D, 0);
    EXPECT_EQ(peaks[0][3].dfY2D, 239);
    EXPECT_TRUE(
        series.report.said("red 2 fits left their boxes or the frame; these peaks keep their "
                           "positions: frame 1 (1, -1, 7), frame 1 (3, -1, 7).\n"));
    extractIntensity(series.dataSet, peaks, {}, {}, series.filters, series.report);
    EXPECT_TRUE(series.report.said("Intensity extraction finished."));
}

TEST(DirectBeam, IsFittedBesideItsExpectedPlaceAndAroundASaturatedCore)
{
    SpotSeries series;
    series.removeFrame(1);
    QString strLines;
    const auto compare = [&](const DirectBeamOnFrame& beam) {
        const QPointF e = SpotSeries::beam(beam.nFrame), f = beam.ptFitted, d = f - e;
        EXPECT_LT(distance(d, {0.4, 0}), 0.03);
        EXPECT_NEAR(beam.vecFit[2], 5, 0.2);
        strLines += QString::asprintf("%4d %8.1f %8.1f %8.2f %8.2f %8.2f %8.2f %15.1f %10.6f %10.6f %d\n",
                                      beam.nFrame + 1, e.x(), e.y(), f.x(), f.y(), d.x(), d.y(),
                                      beam.vecFit[0], beam.vecFit[2], beam.vecFit[4], 1);
    };
    EXPECT_EQ(fitDirectBeam(series.dataSet, series.report, compare).end, RunEnd::Finished);
    EXPECT_EQ(series.report.log().remove(QRegularExpression("red .*\n")),  // the loader's words
              "blue >Evaluation of the direct beam started.\n" + strLines +
                  "blue >Evaluation of the direct beam finished.");

    FrameSeries saturated;
    saturated.add(makeImage(170, 130, [](int x, int y) {
        return std::min(lorentzian(x - 81.3, y - 60.6, 9000, 30, 40), 4000.);
    }));
    saturated.dataSet.m_dfCenterX = 72;
    saturated.dataSet.m_dfCenterY = 72;
    fitDirectBeam(saturated.dataSet, saturated.report, [&](const DirectBeamOnFrame& beam) {
        EXPECT_LT(distance(beam.ptFitted, {81.3, 60.6}), 0.01);
        EXPECT_NEAR(beam.vecFit[0], 9000, 10);
    });
    EXPECT_EQ(saturated.report.m_listLine.size(), 3);
}

TEST(Centroid, IsTheWeightedMeanOfTheDiscOrTheCentre)
{
    const CImgObj<float> img = makeImage(40, 30, [](int x, int y) { return x < 20 ? x - 3. * (y == 7) : 0; });
    std::list<double> listX{9, 9}, listY;
    refine2DPeakPosition(listX, listY, img,
                         {{1, 2, 10, 15},   // a ramp: sums of x² and x over five pixels
                          {1, 0, 10, 8},    // and a dark row
                          {3, 1, 30, 15},   // nothing there
                          {1, 2, 2, 15}});  // the ring crosses the edge
    const double adfX[] = {502. / 50, 472. / 47, 30, 2};
    const double adfY[] = {15, (10 * 9 + 30 * 8 + 7 * 7) / 47., 15, 15};
    ASSERT_EQ(listX.size(), 4);
    ASSERT_EQ(listY.size(), 4);
    auto itY = listY.begin();
    int n = 0;
    for (double dfX : listX) {
        EXPECT_NEAR(dfX, adfX[n], 1e-6);
        EXPECT_NEAR(*itY++, adfY[n++], 1e-6);
    }
}

TEST(IntensityExtraction, LeavesNoOtherReflectionsData)
{
    SpotSeries series(20);
    DataSet& dataSet = series.dataSet;
    dataSet.m_vecPeakIndexedOnFrame = series.peaks;
    dataSet.m_listPeakChain = {{Peak3D()}};
    dataSet.m_vecReflectionFrame = {1, 2};
    dataSet.m_listReflectionIndexed = {Peak3D()};
    series.peaks[1][0].dfY2D = 129.5;
    const auto extract = [&](QVector<QList<Peak3D>>& vecPeak) {
        return extractIntensity(dataSet, vecPeak, {}, {6, 2, 1}, series.filters, series.report);
    };
    EXPECT_EQ(extract(series.peaks).strReason, "Some peaks are outside the frame.");
    EXPECT_TRUE(series.report.said(
        "red Some peaks are outside the frame.\nred >Intensity extraction did not finish."));
    EXPECT_TRUE(dataSet.m_listPeakMerged.isEmpty());
    EXPECT_EQ(dataSet.m_listPeakChain.size(), 1);
    EXPECT_EQ(dataSet.m_listReflectionIndexed.size(), 1);
    EXPECT_EQ(series.peaks[0][0].nID, 40);
    EXPECT_EQ(extract(dataSet.m_vecPeakIndexedOnFrame).end, RunEnd::Finished);
    EXPECT_TRUE(dataSet.m_listPeakChain.isEmpty());
    EXPECT_TRUE(dataSet.m_vecReflectionFrame.empty());
    EXPECT_TRUE(dataSet.m_listReflectionIndexed.isEmpty());
    ASSERT_EQ(dataSet.m_listPeakMerged.size(), 4);
    for (int n = 0; n < 4; ++n) {
        for (const Peak3D& peak : {dataSet.m_listPeakMerged[n], dataSet.m_listPeakMergedShown[n],
                                   dataSet.m_vecPeakIndexedOnFrame[n / 2][n % 2]}) {
            EXPECT_EQ(peak.nID, n);
            EXPECT_NEAR(peak.dfIPoint, n % 2 ? 850 : 1800, 200);  // the height a third of a pixel aside
        }
    }
}

}  // namespace

}  // namespace tessera
