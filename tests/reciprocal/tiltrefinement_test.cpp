#include "reciprocal/tiltrefinement.h"

#include "reciprocal/cubicmodel.h"
#include "reciprocal/expectedframes.h"
#include "reciprocal/mapping.h"

#include <gtest/gtest.h>

#include "reciprocal/perfectseries.h"
#include "recordingreport.h"

#include <cmath>

namespace {

const gemmi::UnitCell g_cell(8.6, 13.0, 9.3, 95, 112, 88);

void distort(QList<Vec3D>& listCell)
{
    listCell[0] = scaled(listCell[0], 1.005f);
    listCell[1] = listCell[1] + scaled(listCell[2], 0.01f);
    listCell[2] = listCell[2] - scaled(listCell[0], 0.004f);
}

}  // namespace

TEST(TiltRefinement, APerfectCrystalHasNoErrorsAndGivesItsCell)
{
    PerfectSeries series(g_cell, 0.8, 0);
    QList<Peak3D> listPeak = series.merged();
    for (const Peak3D& peak : listPeak) {
        double dfTilt = 0;
        ASSERT_TRUE(calculatedTilt(peak, series.data.m_listCell, 0.0251, dfTilt));
        if (double(calDistanceToRotationAxis(beamCentres(series.data), -38.5, peak.nFrame,
                                             {peak.dfX2D, peak.dfY2D})) > 100) {
            EXPECT_NEAR(dfTilt, peak.dfTiltFit, 2e-4);
        }
    }

    distort(series.data.m_listCell);
    const QList<Vec3D> listStart = series.data.m_listCell;
    CRecordingReport report;
    TiltRefinement result;
    const QList<Vec3D> listFound = refineUnitCellUsingFrameNo(listPeak, series.data, report, {}, &result);
    expectSameCell(listFound, g_cell, 1e-4, 0.01);
    EXPECT_LT(result.dfSquaresAfter, 1e-4);
    EXPECT_GT(result.dfSquaresBefore, 10);
    const QStringList listHead{"blue \nRunning unit cell refinement...",
                               "Reciprocal cell volume: ",
                               "Unit cell before refinement:",
                               "a* ",
                               "b* ",
                               "c* ",
                               "Initial values:  0.",
                               "Filtering gvecPeak: ",
                               "Before refinement:",
                               "Refinement returned value: ",
                               "Values after refinement:  0.",
                               "Errors:  0.",
                               "Unit cell after refinement:",
                               "a* ",
                               "b* ",
                               "c* ",
                               "After refinement:",
                               "   h    k    l      Int  FNo     d-RA    TiltO   TiltC1   TiltC2   Delta1   "
                               "Delta2       DD\n",
                               "Sum of Err^2 of tilt before and after: ",
                               "<br>Refined unit cell: a= 8.6"};
    ASSERT_EQ(report.m_listLine.size(), listHead.size());
    for (int n = 0; n < listHead.size(); ++n)
        EXPECT_TRUE(report.marked()[n].startsWith(listHead[n])) << report.marked()[n].left(90).toStdString();

    // A left-handed cell: the indices follow the exchange of a* and b*. Excluded reflections go.
    series.data.m_listCell = {listStart[1], listStart[0], listStart[2]};
    for (Peak3D& peak : listPeak)
        std::swap(peak.dfH, peak.dfK);
    TiltRefinementOptions options;
    const Peak3D peakOut = result.listPeak[0];
    options.listExcluded = {{int(peakOut.dfK), int(peakOut.dfH), int(peakOut.dfL), 0}};
    CRecordingReport reportLeft;
    TiltRefinement left;
    expectSameCell(refineUnitCellUsingFrameNo(listPeak, series.data, reportLeft, options, &left), g_cell,
                   1e-4, 0.01);
    EXPECT_TRUE(reportLeft.said("red Wrong handness in unit cell setting."));
    EXPECT_LT(left.listPeak.size(), result.listPeak.size());

    // Against the tilts of the frames, which are up to half a step off.
    const TiltRefinement coarse = refineBasisVectors(series.merged(), series.data, report);
    EXPECT_TRUE(coarse.bDone);
    EXPECT_TRUE(report.said(QString(" using %1 reflections.").arg(coarse.listPeak.size())));
    series.data.m_listCell.clear();
    EXPECT_TRUE(refineUnitCellUsingFrameNo(listPeak, series.data, report).isEmpty());
    EXPECT_EQ(report.marked().last(), "red Unit cell is not ready.");
}

TEST(CubicModel, TheOrientationOfACubicCrystalIsFound)
{
    const gemmi::UnitCell cell(12, 12, 12, 90, 90, 90);
    PerfectSeries series(cell, 0.8, 0);
    const QList<Vec3D> listTrue = series.data.m_listCell;
    // The cell in force: turned by a degree about the beam, and no longer cubic.
    const CMatrix3 matTurn = rotationZ(1);
    for (Vec3D& v : series.data.m_listCell)
        v = rotated(matTurn, v);
    series.data.m_listCell[1] = series.data.m_listCell[1] + scaled(series.data.m_listCell[0], 0.02f);
    CRecordingReport report;
    for (const QList<Vec3D>& listFound : {testFindCubicCell(series.merged(), series.data, report),
                                          refineCubicUnitCell(series.merged(), series.data, report)}) {
        ASSERT_EQ(listFound.size(), 3);
        for (int n = 0; n < 3; ++n)
            EXPECT_LT(length(listFound[n] - listTrue[n]), 2e-5f) << n;
    }
    for (const char* psz :
         {"blue \nRunning unit cell refinement for garnet...", "\nAlpha:", "\nRefinment result: ", ", fev: ",
          "\ncovfac: ", "\nLen: 12, 12, 12\nDotProduct: ", "blue \nRunning cubic unit refinement..."})
        EXPECT_TRUE(report.said(psz)) << psz;
    // θ = 90°, φ = 0, ψ = 90°: b₀ = −z turned about x, right-handed, is y.
    const double dfHalfPi = std::acos(0.0);
    const QList<Vec3D> listModel = cubicBasisFromAngles(dfHalfPi, 0, dfHalfPi, 10);
    const Vec3D aAxis[3] = {{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}};
    for (int n = 0; n < 3; ++n)
        EXPECT_LT(length(listModel[n] - aAxis[n]), 1e-7f);
}

TEST(ExpectedFrames, TheTableHoldsErrorsBySeries)
{
    PerfectSeries series(g_cell, 0.8, 0);
    series.data.m_listBeamTiltBreak = QList<int>{1};
    for (int n = 1; n < 101; ++n)
        series.data.m_listBeamTiltBreak.append(n % 40 == 0);
    QList<Peak3D> list;
    for (const Peak3D& peak : series.merged())
        if ((peak.nFrame == 42 || peak.nFrame == 45) && std::fabs(peak.dfY2D - 500) > 100)
            list.append(peak);
    list = list.mid(0, 3);
    list[0].dfTiltFit += 0.3;
    list.append(Peak3D());
    QList<Vec3D> listBefore = series.data.m_listCell;
    distort(listBefore);
    CRecordingReport report;
    const QList<ExpectedFrame> listRow =
        calExpectedFrameNo(listBefore, series.data.m_listCell, list, series.data, report);
    ASSERT_EQ(listRow.size(), 3);  // (0, 0, 0) has no tilt
    EXPECT_NEAR(listRow[0].dfErrAfter, 0.3, 5e-4);
    EXPECT_NEAR(listRow[1].dfSeriesMean, 0.1, 5e-4);
    EXPECT_EQ(listRow[1].nPlaceInSeries, listRow[1].peak.nFrame - 40);
    EXPECT_EQ(report.m_listLine[0], "After refinement:");
    EXPECT_TRUE(
        report.m_listLine[1].startsWith("   h    k    l  A      Int  FNo     d-RA    TiltO    TiltF   TiltC1 "
                                        "  TiltC2   Delta1   Delta2       DD "
                                        "     Avg  ErrDiff  d-value    Alpha BTFrame\n"));
    EXPECT_EQ(report.m_listLine[1].count('\n'), 4);
    double dfSquares = 0;
    for (const ExpectedFrame& row : listRow)
        dfSquares += row.dfErrAfter * row.dfErrAfter;
    EXPECT_TRUE(report.m_listLine[3].endsWith(QString(", %1\n").arg(std::sqrt(dfSquares / 3))));
    EXPECT_TRUE(report.m_listLine[4].startsWith("<br>Refined unit cell: a= 8.600"));
    EXPECT_TRUE(calExpectedFrameNo({}, listBefore, list, series.data, report).isEmpty());
    EXPECT_EQ(report.marked().last(), "red Unit cell error.");
}
