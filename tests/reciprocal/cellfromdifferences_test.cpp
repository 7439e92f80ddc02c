#include "reciprocal/cellfromdifferences.h"

#include "crystal/peakpairs.h"
#include "crystal/reflectionindices.h"
#include "reciprocal/differencegroups.h"
#include "reciprocal/directbeamrefinement.h"

#include <gtest/gtest.h>

#include "tests/reciprocal/perfectseries.h"
#include "tests/reciprocal/testpeaks.h"
#include "tests/recordingreport.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

Peak3D indexed(double h, double k, double l, double dfIntensity, double dfX, double dfY)
{
    Peak3D peak = peakAt(dfX, dfY, 4, dfIntensity);
    peak.setHKL(h, k, l);
    return peak;
}

/// Three peaks: two pairs of one difference whose lengths disagree, and one of equal indices; and a weak one.
class ThreePeaks : public testing::Test {
protected:
    void SetUp() override
    {
        data.m_listCell = {{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}};
        parameters.m_dfRefineDStarLow = 0.1;
        parameters.m_dfRefineDStarHigh = 0.5;
        parameters.m_bOutputPeakList = true;
        parameters.m_referenceCell = {10.4, 9.6, 10, 90, 94.9, 90};
    }
    /// The lines of the log of a refinement.
    QStringList run(const FnRefinePositions& fnRefine = {})
    {
        report.m_listLine.clear();
        refineCellFromDifferenceVectors(vecPeak, data, parameters, report, fnRefine);
        return report.m_listLine;
    }

    const QVector<QList<Peak3D>> vecPeak{{indexed(1, 0.2, 0, 200, 100, 100), indexed(0, 1, 0, 300, 200, 110),
                                          indexed(0, 1, -0.4, 150, 100, 250),
                                          indexed(5, 5, 5, 99, 300, 300)}};
    DataSet data;
    RefinementParameters parameters;
    CRecordingReport report;
    const QString strFirst = "     1    5   1  -1   0 0.100499   1   0   0    200.0  100.0  100.0";
    const QString strThird =
        "     3    5   0   0   0 0.172047   0   1   0    300.0  200.0  110.0   0   1   0    "
        "150.0  100.0  250.0    172.0   54.462    0.000    0.000   0.0000  -100.00%    1";
    const QString strEnd = "    100.5  174.289   71.063   71.063";
};

}  // namespace

TEST(CellFromDifferences, APerfectCrystalGivesItsCellThoughStretched)
{
    PerfectSeries series(gemmi::UnitCell(8.6, 13.0, 9.3, 95, 112, 88), 0.9, 0.3);
    DataSet& data = series.data;
    for (Vec3D& v : data.m_listCell) {
        v = scaled(v, 1.01f);
    }
    data.m_vecPeakIndexedOnFrame = series.vecPeak;
    RefinementParameters parameters;
    parameters.m_dfRefineDStarLow = 0.5;
    std::swap(parameters.m_dfRefineIntensityLow, parameters.m_dfRefineIntensityHigh);
    CRecordingReport report;
    const DifferenceVectorRefinement found = runUnitCellRefinement(data, parameters, report);
    ASSERT_TRUE(found.refinement);
    const double aTrue[6] = {8.6, 13.0, 9.3, 95, 112, 88};
    for (size_t n = 0; n < 6; ++n) {
        EXPECT_NEAR(found.refinement->cell.numbers()[n], aTrue[n], n < 3 ? 1e-3 * aTrue[n] : 0.1) << n;
    }
    report.m_nStopAfter = 50;
    EXPECT_FALSE(runUnitCellRefinement(data, parameters, report).refinement);
    EXPECT_TRUE(report.log().endsWith("red >Unit cell refinement did not finish."));
    runUnitCellRefinement(DataSet(), parameters, report);
    EXPECT_EQ(report.marked().last(), "red No indexed peaks are available. Do merging and indexing first.");
}

TEST_F(ThreePeaks, AreTabledToTheLetter)
{
    const QStringList list = run();
    EXPECT_EQ(list.mid(0, 5),
              (QStringList{"1 groups and 2 difference vectors rejected due to high std in d*.",
                           "Total number of difference vectors for refinement: 1",
                           "    1     0     0     0  5.812382 0.172047", "Unit cell refinement: 1 points.",
                           "Too few peaks for refinement."}));
    // 27 columns, since the cell is close to the reference: d* of that, and the difference in per cent.
    const QStringList listRow = list.last().split('\n');
    ASSERT_EQ(listRow.size(), 4);
    EXPECT_EQ(listRow[0], strFirst + "   0   1   0    300.0  200.0  110.0" + strEnd +
                              "   0.1414    40.72%    2   0.1420    -0.41%");
    EXPECT_EQ(listRow[2], strThird + "   0.0000     0.00%");
    parameters.m_referenceCell->beta = 95.1;
    EXPECT_EQ(run().last().split('\n')[2], strThird);
}

TEST_F(ThreePeaks, AreTabledWithTheirRefinedPositions)
{
    parameters.m_referenceCell->beta = 95.1;
    parameters.m_bRefine2D = true;
    const QStringList list = run([](QVector<QList<Peak3D>> vec) {
        EXPECT_EQ(vec[0].size(), 3);  // the weak one is gone
        for (Peak3D& peak : vec[0]) {
            peak.dfX2DCorrected = peak.dfX2D - 0.5;
            peak.dfY2DCorrected = peak.dfY2D + 0.25;
            peak.setPoint(peak.dfH > 0.5 ? Vec3D{0.03f, 0.04f, 1} : Vec3D{0.12f, 0, 1});
        }
        return vec;
    });
    EXPECT_EQ(list.last().split('\n')[0],
              strFirst +
                  "  0.500 -0.250  0.030  0.040  0.050   0   1   0    300.0    200.0    110.0  0.500 "
                  "-0.250  0.120  0.000  0.120" +
                  strEnd + "  0.130   0.1414    40.72%");
    EXPECT_TRUE(run([](const auto&) { return QVector<QList<Peak3D>>(); }).last().endsWith("did not finish."));
}

TEST_F(ThreePeaks, AStopAndAFlatCellAreTold)
{
    report.m_nAsked = 0;
    run();
    report.m_nStopAfter = report.m_nAsked - 1;  // once the table of pairs is shown
    EXPECT_TRUE(run().last().endsWith(">Unit cell refinement did not finish."));
    report.m_nStopAfter = -1;
    data.m_listCell.clear();
    EXPECT_EQ(run().last(), "Warning: co-planar reciprocal basis vectors!");
}

// Two lengths of one difference 4 pixels apart deviate by 2 pixels; a pixel size of 2⁻¹⁰ leaves that exact.
TEST(CellFromDifferences, ADeviationOfTwoPixelsIsTooMuch)
{
    DataSet data;
    data.m_dfPixelSize = 1.0 / 1024;
    RefinementParameters parameters;
    parameters.m_dfRefineDStarLow = 0.09;
    parameters.m_dfRefineDStarHigh = 0.11;
    CRecordingReport report;
    for (double dfX : {103.99, 104.0}) {
        EXPECT_EQ(refineCellFromDifferenceVectors(
                      {{indexed(1, 0, 0, 200, 0, 0), indexed(2, 0, 0, 200, 100, 0),
                        indexed(1, 1, 0, 200, 0, 500), indexed(2, 1, 0, 200, dfX, 500)}},
                      data, parameters, report)
                      .nGroupsRejected,
                  dfX == 104 ? 1 : 0);
    }
}

TEST(PeakPairs, FollowIndicesAbsencesAndLimits)
{
    CSpaceGroup spaceGroup;
    ASSERT_TRUE(spaceGroup.setSpaceGroup(5));  // C 2: h + k even
    const QVector<QList<Peak3D>> vecPeak{
        {indexed(1, 1, 0, 1, 0, 0), indexed(0.4, -0.4, 0, 1, 5, 0), indexed(1, 2, 0, 1, 100, 0),
         indexed(2, 1.5, 3, 1, 300, 400), indexed(0, 2, 0, 1, 0, 100), indexed(2, 0, 0, 1, 0, 99.9)},
        {indexed(1, 1, 0, 1, 0, 0)},
        {indexed(1, 1, 0, 1, 0, 0), indexed(2, 0, 0, 1, 500, 0)}};
    CRecordingReport report;
    const QVector<QList<PeakPair>> vec = buildPeakPairs(vecPeak, {0.5, 0.1, 0.001}, spaceGroup, report);
    ASSERT_EQ(vec.size(), 2);  // no entry for the frame of one peak
    QStringList list;
    for (const PeakPair& pair : vec[0] + vec[1]) {
        list.append(QString("%1,%2").arg(pair.peakFirst.dfX2D).arg(pair.peakSecond.dfY2D));
    }
    EXPECT_EQ(list, (QStringList{"0,400", "0,100", "300,100", "300,99.9", "0,0"}));
    EXPECT_EQ(report.m_listProgress, (QStringList{"%v/%m 0..3", "1", "2", "3", "end"}));
    // Frame by frame the beam's refinement says the same of them.
    CRecordingReport reportFrames;
    const auto vecMap = refineDirectBeamPosition(vecPeak, {0.5, 0.1, 0.001}, spaceGroup, 1, 20, reportFrames);
    EXPECT_EQ(vecMap[0].adfEnd, refineDirectBeamPosition(vec, 1, 20, 0.001, report)[0].adfEnd);
    EXPECT_EQ(reportFrames.log(), report.log());
    EXPECT_EQ(vecMap.size(), 2);
    EXPECT_EQ(vecMap[0].nPairs, 4);
    EXPECT_EQ(vecMap[1].nPairs, 1);
}

TEST(DifferenceGroups, HoldEqualAndNegatedIndicesInTheOrderOfTheList)
{
    QList<Peak3D> list;
    for (int h : {0, 0, 2, -1, 1, -2, 0, 1}) {
        list.append(reflection(h + 0.4, h < 0 ? 1 : -h, h * 3 - 0.3));
    }
    list.append(reflection(0, -2, 3));
    list.append(reflection(0.3, 2, -3));
    EXPECT_EQ(groupDifferenceVectors(list), QList<QList<int>>({{0, 1, 6}, {2}, {3, 4, 7}, {5}, {8, 9}}));
}

TEST(DirectBeamRefinement, FindsTheMapOfAFrame)
{
    std::mt19937 random(4);
    std::normal_distribution<double> noise(0, 0.3);
    const double aMap[6] = {31.2, -3.3, 5.2, 25.2, -20.1, 18.4};
    QList<PeakPair> aPair[2];  // of the second l is 0 throughout: no start from three pairs
    for (int n = 0; n < 400; ++n) {
        const int h = int(random() % 19) - 9, k = int(random() % 19) - 9;
        const int l = n < 200 ? int(random() % 19) - 9 : 0;
        aPair[n / 200].append(
            {indexed(h + 1, k, l, 3, aMap[0] * h + aMap[2] * k + aMap[4] * l + noise(random),
                     aMap[1] * h + aMap[3] * k + aMap[5] * l + noise(random)),
             indexed(1, 0, 0, 5, 0, 0)});
    }
    CRecordingReport report;
    const auto vec = refineDirectBeamPosition({aPair[0], aPair[1], aPair[0].mid(0, 2), {}}, 0, 0, 0.001,
                                              report);
    ASSERT_EQ(vec.size(), 4);
    for (size_t n = 0; n < 6; ++n) {
        EXPECT_NEAR(vec[0].adfEnd[n], aMap[n], 0.05) << n;
    }
    EXPECT_NEAR(vec[1].adfEnd[3], aMap[3], 0.05);
    EXPECT_NEAR(vec[0].dfSumSquares, 200 * 2 * 0.09, 10);
    for (const char* psz :
         {"\nStarting values: ", "\nEnd values: ", "\nError: ", "\nInfo = ", ", sumErr = "}) {
        EXPECT_EQ(report.log().count(psz), 2) << psz;
    }
    refineDirectBeamPosition({{{indexed(3, 0, 0, 1, 130, 10), indexed(-1, 2, 0, 1, 30, 10)}}}, 10, 0, 1,
                             report);
    EXPECT_EQ(report.m_listLine.last(), "[   4,  -2,   0] ( 110.0,    0.0)");
}

}  // namespace tessera
