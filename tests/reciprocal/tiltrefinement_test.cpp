#include "reciprocal/tiltrefinement.h"

#include "reciprocal/cubicmodel.h"
#include "reciprocal/expectedframes.h"
#include "reciprocal/mapping.h"

#include <gtest/gtest.h>

#include "tests/reciprocal/perfectseries.h"
#include "tests/recordingreport.h"

#include <cmath>

namespace tessera {

namespace {

const gemmi::UnitCell g_cell(8.6, 13.0, 9.3, 95, 112, 88);

void distort(QList<Vec3D>& listCell)
{
    listCell[0] = scaled(listCell[0], 1.005f);
    listCell[1] = listCell[1] + scaled(listCell[2], 0.01f);
}

void expectTrueCell(const ReciprocalBasis& basis)
{
    const std::optional<CellParameters> cell = cellParameters(basis);
    ASSERT_TRUE(cell);
    const double aTrue[6] = {g_cell.a, g_cell.b, g_cell.c, g_cell.alpha, g_cell.beta, g_cell.gamma};
    for (size_t n = 0; n < 6; ++n) {
        EXPECT_NEAR(cell->numbers()[n], aTrue[n], n < 3 ? 1e-3 : 0.01) << n;
    }
}

const double g_dfRadians = std::acos(-1.0) / 180;

QPointF fromBeam(const Peak3D& p, const DataSet& data)
{
    return QPointF(p.dfX2D, p.dfY2D) - frameCentre(beamCentres(data), p.nFrame);
}

// From the axis by its normal, rather than by its slope.
double distance(const Peak3D& p, const DataSet& data)
{
    const QPointF d = fromBeam(p, data);
    const double dfAxis = data.m_dfRotationAxis * g_dfRadians;
    return std::fabs(d.x() * std::sin(dfAxis) + d.y() * std::cos(dfAxis));
}

}  // namespace

TEST(TiltRefinement, APerfectCrystalHasNoErrorsAndGivesItsCell)
{
    PerfectSeries series(g_cell, 0.8, 0);
    QList<Peak3D> listPeak = series.merged();
    distort(series.data.m_listCell);
    CRecordingReport report;
    const TiltRefinement result = refineUnitCellUsingFrameNo(listPeak, series.data, report).value();
    expectTrueCell(result.basis);
    EXPECT_LT(result.dfSquaresAfter, result.dfSquaresBefore);
    QStringList listStart;
    for (const QString& strLine : report.marked()) {
        listStart.append(strLine.left(17));
    }
    EXPECT_EQ(listStart.filter(QRegularExpression("^(?!.\\*)")),
              (QStringList{"blue \nRunning uni", "Reciprocal cell v", "Unit cell before ",
                           "Initial values:  ", "Filtering gvecPea", "Before refinement", "Refinement return",
                           "Values after refi", "Errors:  0.000000", "Unit cell after r", "After refinement:",
                           "   h    k    l   ", "Sum of Err^2 of t", "<br>Refined unit "}));
}

// A row of twelve columns: the frame's tilt, and deltas from it rather than from the tilt that was fitted.
TEST(TiltRefinement, TablesTheTiltsOfTheFrames)
{
    PerfectSeries series(g_cell, 0.8, 0);
    distort(series.data.m_listCell);
    CRecordingReport report;
    const TiltRefinement result = refineUnitCellUsingFrameNo(series.merged(), series.data, report).value();
    const Peak3D& p = result.listPeak[3];
    const double dfBefore = calculatedTilt(p, result.basisBefore, {0.0251}).value();
    const double dfAfter = calculatedTilt(p, result.basis, {0.0251}).value();
    const double dfDelta1 = std::fabs(p.dfFrameTilt - dfBefore),
                 dfDelta2 = std::fabs(p.dfFrameTilt - dfAfter);
    EXPECT_GT(std::fabs(p.dfTiltFit - p.dfFrameTilt), 0.01);
    EXPECT_EQ(report.m_listLine[report.find("TiltC1")].split('\n')[4],
              QString::asprintf("%4d %4d %4d   1000.0 %4d %8.1f %8.2f %8.2f %8.2f %8.2f %8.2f %8.2f",
                                int(p.dfH), int(p.dfK), int(p.dfL), p.nFrame + 1, distance(p, series.data),
                                p.dfFrameTilt, dfBefore, dfAfter, dfDelta1, dfDelta2, dfDelta1 - dfDelta2));
}

// The indices follow the exchange of a* and b*. Excluded reflections go.
TEST(TiltRefinement, OfALeftHandedCellExchangesItsVectors)
{
    PerfectSeries series(g_cell, 0.8, 0);
    QList<Peak3D> listPeak = series.merged();
    distort(series.data.m_listCell);
    CRecordingReport report;
    const TiltRefinement result = refineUnitCellUsingFrameNo(listPeak, series.data, report).value();
    series.data.m_listCell.swapItemsAt(0, 1);
    for (Peak3D& peak : listPeak) {
        std::swap(peak.dfH, peak.dfK);
    }
    TiltRefinementOptions options;
    const Peak3D peakOut = result.listPeak[0];
    options.listExcluded = {{int(peakOut.dfK), int(peakOut.dfH), int(peakOut.dfL), 0}};
    const TiltRefinement left = refineUnitCellUsingFrameNo(listPeak, series.data, report, options).value();
    expectTrueCell(left.basis);
    EXPECT_TRUE(report.said("red Wrong handness in unit cell setting."));
    EXPECT_TRUE(left.bExchanged);
    EXPECT_LT(left.listPeak.size(), result.listPeak.size());
}

// They are up to half a step off.
TEST(TiltRefinement, CanGoByTheTiltsOfTheFrames)
{
    PerfectSeries series(g_cell, 0.8, 0);
    const QList<Peak3D> listPeak = series.merged();
    CRecordingReport report;
    const TiltRefinement coarse = refineBasisVectors(listPeak, series.data, report).value();
    EXPECT_TRUE(report.said(QString(" using %1 reflections.").arg(coarse.listPeak.size())));
    series.data.m_listCell.clear();
    EXPECT_FALSE(refineUnitCellUsingFrameNo(listPeak, series.data, report));
    EXPECT_EQ(report.marked().last(), "red Unit cell is not ready.");
}

// With the wavelength of 200 kV the cell of another voltage would come out wrong by the ratio, without
// errors.
TEST(TiltRefinement, TakesTheWavelengthOfTheDataSet)
{
    for (double dfWavelength : {0.0197, 0.0251, 0.0335, 0.02508, 0.0}) {
        PerfectSeries series(g_cell, 0.8, 0, 101, -38.5, dfWavelength > 0 ? dfWavelength : 0.0251);
        series.data.m_dfWavelength = dfWavelength;
        CRecordingReport report;
        TiltRefinementOptions options;
        options.dfWavelength = wavelengthOfTilts(series.data, report);
        const bool bOther = dfWavelength == 0.0197 || dfWavelength == 0.0335;
        EXPECT_EQ(options.dfWavelength, bOther ? dfWavelength : 0.0251);
        EXPECT_EQ(report.log(), bOther
                                    ? QStringLiteral("Tilts are calculated with the wavelength of the data "
                                                     "set, %1 Å.")
                                          .arg(dfWavelength)
                                    : QString());
        distort(series.data.m_listCell);
        if (dfWavelength != 0.02508) {  // which differs from 0.0251 in the fourth digit
            expectTrueCell(
                refineUnitCellUsingFrameNo(series.merged(), series.data, report, options).value().basis);
        }
    }
}

TEST(CubicModel, TheOrientationOfACubicCrystalIsFound)
{
    PerfectSeries series(gemmi::UnitCell(12, 12, 12, 90, 90, 90), 0.8, 0);
    const QList<Vec3D> listTrue = series.data.m_listCell;
    for (Vec3D& v : series.data.m_listCell) {
        v = rotated(rotationZ(1), v);
    }
    distort(series.data.m_listCell);
    CRecordingReport report;
    for (const auto& found : {testFindCubicCell(series.merged(), series.data, report),
                              refineCubicUnitCell(series.merged(), series.data, report)}) {
        const QList<Vec3D> listFound = found.value().toList();
        for (int n = 0; n < 3; ++n) {
            EXPECT_LT(length(listFound[n] - listTrue[n]), 2e-5f) << n;
        }
    }
    for (const char* psz : {"\nAlpha:", "\nRefinment result: ", ", fev: ", "\ncovfac: ",
                            "\nLen: 12, 12, 12\nDotProduct: ", "blue \nRunning cubic unit refinement..."}) {
        EXPECT_TRUE(report.said(psz)) << psz;
    }
}

namespace {

/// Three reflections of a frame in the second of three series, the first 0.3 degrees off, and one of no
/// indices.
class ExpectedFrames : public testing::Test {
protected:
    ExpectedFrames() : m_series(g_cell, 0.8, 0), m_listBefore(m_series.data.m_listCell)
    {
        for (int n = 0; n < 101; ++n) {
            m_series.data.m_listBeamTiltBreak.append(n % 40 == 0);
        }
        for (const Peak3D& peak : m_series.merged()) {
            if (peak.nFrame == 42 && m_list.size() < 3) {
                m_list.append(peak);
            }
        }
        m_list[0].dfTiltFit += 0.3;
        m_list.append(Peak3D());
        distort(m_listBefore);
    }
    /// The rows, with a refinement from the distorted cell to the true one.
    QList<ExpectedFrame> rows(bool bExchanged = false)
    {
        const QList<ExpectedFrame> listRow = calExpectedFrameNo(
            m_listBefore, m_series.data.m_listCell, m_list, m_series.data, m_report, {}, bExchanged);
        EXPECT_EQ(listRow.size(), 3);  // (0, 0, 0) has no tilt
        return listRow;
    }
    PerfectSeries m_series;
    QList<Vec3D> m_listBefore;
    QList<Peak3D> m_list;
    CRecordingReport m_report;
};

}  // namespace

TEST_F(ExpectedFrames, HaveErrorsBySeries)
{
    const QList<ExpectedFrame> listRow = rows();
    ASSERT_EQ(listRow.size(), 3);
    EXPECT_NEAR(listRow[0].dfErrAfter, 0.3, 5e-4);
    EXPECT_NEAR(listRow[1].dfSeriesMean, 0.1, 5e-4);
    EXPECT_EQ(listRow[1].nPlaceInSeries, 2);
    EXPECT_TRUE(m_report.m_listLine[3].contains(", 0.173"));  // 0.3/√3
}

TEST_F(ExpectedFrames, TheTableHasItsHead)
{
    rows();
    EXPECT_TRUE(m_report.m_listLine[1].startsWith(
        "   h    k    l  A      Int  FNo     d-RA    TiltO    TiltF   TiltC1 "
        "  TiltC2   Delta1   Delta2       DD "
        "     Avg  ErrDiff  d-value    Alpha BTFrame\n"));
    EXPECT_EQ(m_report.m_listLine[1].count('\n'), 4);
}

TEST_F(ExpectedFrames, TheTableHasTheNumbersOfTheRows)
{
    ASSERT_TRUE(m_series.data.m_spaceGroup.setSpaceGroup(38));  // A m m 2: k + l even
    const QList<ExpectedFrame> listRow = rows(true);
    const QStringList listLine = m_report.m_listLine[1].split('\n');
    ASSERT_EQ(listLine.size(), 5);
    for (int n = 0; n < 3; ++n) {
        const ExpectedFrame& row = listRow[n];
        const Peak3D& p = row.peak;
        const QPointF d = fromBeam(p, m_series.data);
        const double dfD = 1 / std::sqrt(g_cell.calculate_1_d2({int(p.dfH), int(p.dfK), int(p.dfL)}));
        EXPECT_EQ(listLine[n + 1],
                  QString::asprintf("%4d %4d %4d %2d   1000.0   43 %8.1f %8.2f %8.3f %8.3f %8.3f %8.3f %8.3f "
                                    "%8.3f %8.3f %8.3f %8.3f %8.1f        2",
                                    int(p.dfH), int(p.dfK), int(p.dfL), int(p.dfH + p.dfL) % 2 == 0,
                                    distance(p, m_series.data), m_series.data.m_listOverallTilt[42],
                                    p.dfTiltFit, row.dfTiltBefore, row.dfTiltAfter,
                                    p.dfTiltFit - row.dfTiltBefore, p.dfTiltFit - row.dfTiltAfter,
                                    std::fabs(row.dfErrBefore) - std::fabs(row.dfErrAfter), row.dfSeriesMean,
                                    row.dfErrAfter - row.dfSeriesMean, dfD,
                                    std::fmod(std::atan2(-d.y(), d.x()) / g_dfRadians + 360, 360)));
    }
}

TEST_F(ExpectedFrames, AreNoneWithoutACell)
{
    EXPECT_TRUE(calExpectedFrameNo({}, m_listBefore, m_list, m_series.data, m_report).isEmpty());
    EXPECT_EQ(m_report.marked().last(), "red Unit cell error.");
}

}  // namespace tessera
