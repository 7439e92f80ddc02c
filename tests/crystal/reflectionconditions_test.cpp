#include "crystal/reflectionconditions.h"

#include "tests/crystal/testreflection.h"

#include <gtest/gtest.h>

namespace tessera {

TEST(ReflectionStatistics, TablesOfParity)
{
    const struct {
        int h, k, l, nCount;
    } aKind[] = {{1, 1, 1, 1},   {2, 1, 1, 2},  {1, 2, 1, 3},  {1, 1, 2, 5},   {0, 1, 1, 7},
                 {0, 1, 2, 11},  {0, 2, 1, 13}, {0, 2, 2, 17}, {1, 0, 1, 19},  {1, 0, 2, 23},
                 {2, 0, 1, 29},  {1, 1, 0, 31}, {1, 2, 0, 37}, {2, 1, 0, 41},  {1, 0, 0, 43},
                 {2, 0, 0, 200}, {0, 1, 0, 47}, {0, 2, 0, 53}, {0, 0, -3, 59}, {0, 0, 2, 300}};
    QList<Peak3D> list{reflection(0, 0, 5, 1), reflection(0, 0, 5, 1)};  // weak ones count as even
    for (const auto& kind : aKind) {
        for (int n = 0; n < kind.nCount; ++n) {
            list.append(reflection(kind.h + 0.1, kind.k - 0.1, kind.l, 10));
        }
    }
    const struct {
        const char *pszClass, *pszTest;  // null: the class before
        int nEven, nOdd, nTotal;
        bool bRed;
    } aRow[] = {{"hkl", "h+k+l:", 639, 304, 943, true}, {nullptr, "h+k:", 710, 233, 943, true},
                {nullptr, "k+l:", 685, 258, 943, true}, {nullptr, "h+l:", 694, 249, 943, true},
                {"0kl", "k+l:", 379, 130, 509, true},   {nullptr, "k:", 444, 65, 509, true},
                {nullptr, "l:", 430, 79, 509, true},    {"h0l", "h+l:", 521, 154, 675, true},
                {nullptr, "h:", 590, 85, 675, true},    {nullptr, "l:", 568, 107, 675, true},
                {"hk0", "h+k:", 284, 168, 452, false},  {nullptr, "h:", 341, 111, 452, true},
                {nullptr, "k:", 333, 119, 452, true},   {"h00", "h:", 200, 43, 243, true},
                {"0k0", "k:", 53, 47, 100, false},      {"00l", "l:", 302, 59, 361, true}};
    QStringList listExpected;
    for (const auto& row : aRow) {
        if (row.pszClass) {
            listExpected
                << QString("%1Reflection condition for %2:").arg(&row == aRow ? "" : "\n", row.pszClass)
                << "            2n  2n+1 Total\n--------------------------";
        }
        listExpected << (row.bRed ? "red " : "") + QString::asprintf("%8s %5d %5d %5d", row.pszTest,
                                                                     row.nEven, row.nOdd, row.nTotal);
    }
    CRecordingReport report;
    outputReflectionStatistics(list, 2.0, report);
    EXPECT_EQ(report.marked(), listExpected);
}

// 2/1.1 is black, 3/1.1 red (0kl: above), 0/0.1 black.
TEST(ReflectionStatistics, ColoursAtTheirEdge)
{
    CRecordingReport reportEdge;
    outputReflectionStatistics({reflection(1, 1, 1), reflection(2, 1, 1), reflection(2, 2, 1)}, 0,
                               reportEdge);
    EXPECT_EQ(reportEdge.marked()[3], "    h+k:     2     1     3");
    EXPECT_EQ(reportEdge.marked()[8], "    k+l:     0     0     0");
}

TEST(ClassifyReflections, SortsByAbsence)
{
    CSpaceGroup spaceGroup;
    ASSERT_TRUE(spaceGroup.setSpaceGroup(14));
    const QList<Peak3D> list{reflection(0, 1.04, 0), reflection(0, 2, 0.06), reflection(1, 0, 1),
                             reflection(0, 0, 0),    reflection(0.04, 2, 0), reflection(1, 1, 1)};
    const QList<QList<Peak3D>> listBoth = classifyReflections(spaceGroup, list, 0.05);
    ASSERT_EQ(listBoth.size(), 2);
    ASSERT_EQ(listBoth[0].size(), 2);
    ASSERT_EQ(listBoth[1].size(), 2);
    EXPECT_EQ(listBoth[0][0].dfH, 0.04);
    EXPECT_EQ(listBoth[0][1].dfK, 1);
    EXPECT_EQ(listBoth[1][0].dfK, 1.04);
    EXPECT_EQ(listBoth[1][1].dfK, 0);
    EXPECT_TRUE(classifyReflections(spaceGroup, {}, 0.05).isEmpty());
}

TEST(TestReflectionConditions, OneLineForEachGroupAndNoStopping)
{
    speakGerman();
    const QList<Peak3D> list{reflection(1, 1, 1, 3100), reflection(2, 0, 0, 50), reflection(1, 0, 0, 3),
                             reflection(0, 0, 2.3, 1e6)};
    CSpaceGroup spaceGroup;
    CRecordingReport report;
    report.m_nStopAfter = 0;
    testReflectionConditions(list, 0.1, spaceGroup, report);
    ASSERT_EQ(report.m_listLine.size(), 232);
    // F centring forbids (1, 0, 0) alone; I centring (1, 1, 1) and (1, 0, 0).
    const std::pair<int, QString> aRow[] = {
        {0, "\nNo.  SG.Symbol       Ratio.cnt (Alwd/Fbdn)   Ratio.Avg.Int (      Alwd/      Fbdn)"},
        {1, QString(report.m_listLine[0].size(), '-')},
        {2, "  1        P 1               ∞ (   3/   0)               ∞ (   1.051,0/       0,0)"},
        {226, "225   F m -3 m             2.0 (   2/   1)           525.0 (   1.575,0/       3,0)"},
        {230, "229   I m -3 m             0.5 (   1/   2)             0.0 (      50,0/   1.551,5)"}};
    for (const auto& row : aRow) {
        EXPECT_EQ(report.m_listLine[row.first], row.second);
    }
    EXPECT_EQ(spaceGroup.nNumber, 230);
    EXPECT_EQ(report.m_nAsked, 230);
    EXPECT_EQ(report.m_listProgress.first() + report.m_listProgress.value(230) + report.m_listProgress.last(),
              "%v/%m 0..230230end");
}

}  // namespace tessera
