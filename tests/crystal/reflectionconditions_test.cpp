#include "crystal/reflectionconditions.h"

#include "crystal/recordingreport.h"

#include <gtest/gtest.h>
#include <QLocale>

TEST(ReflectionStatistics, TablesOfParity)
{
    // Even l on 00l: two even, one odd; (0, 0, 0) counts as even everywhere.
    const QList<Peak3D> list{reflection(0, 0, 2, 10), reflection(0, 0, -3, 10), reflection(0, 0, 0.02, 10),
                             reflection(1, 1, 0, 10), reflection(0, 0, 5, 1)};
    RecordingReport report;
    outputReflectionStatistics(list, 2.0, report);
    ASSERT_EQ(report.listLine.size(), 2 * 7 + 4 + 3 * 3 + 3);
    EXPECT_EQ(report.listLine[0], "Reflection condition for hkl:");
    EXPECT_EQ(report.listLine[1], "            2n  2n+1 Total\n--------------------------");
    EXPECT_EQ(report.listLine[2], "  h+k+l:     4     1     5");
    EXPECT_EQ(report.listColor[2], Qt::red);  // 4/1.1
    EXPECT_EQ(report.listLine[5], "    h+l:     3     2     5");
    EXPECT_EQ(report.listColor[5], Qt::black);
    EXPECT_EQ(report.listLine[6], "\nReflection condition for 0kl:");
    EXPECT_EQ(report.listLine.mid(21, 3), (QStringList{"\nReflection condition for h00:", report.listLine[1],
                                                       "      h:     1     0     1"}));
    EXPECT_EQ(report.listColor[23], Qt::red);  // 1/0.1
    EXPECT_EQ(report.listLine[27], "\nReflection condition for 00l:");
    EXPECT_EQ(report.listLine[29], "      l:     3     1     4");  // -3 is odd, the weak 5 counts as even
    EXPECT_EQ(report.listColor[29], Qt::red);

    RecordingReport reportEmpty;
    outputReflectionStatistics({}, 0, reportEmpty);
    EXPECT_EQ(reportEmpty.listLine[2], "  h+k+l:     0     0     0");
    EXPECT_FALSE(reportEmpty.listColor.contains(Qt::red));
}

TEST(ClassifyReflections, SortsByAbsence)
{
    CSpaceGroup spaceGroup;
    ASSERT_TRUE(spaceGroup.setSpaceGroup(14));
    const QList<Peak3D> list{reflection(0, 1.01, 0), reflection(0, 2, 0),   reflection(1, 0, 1),
                             reflection(0, 0, 0),    reflection(0.2, 3, 0), reflection(1, 1, 1)};
    const auto listBoth = classifyReflections(spaceGroup, list, 0.05);
    ASSERT_EQ(listBoth.size(), 2);
    ASSERT_EQ(listBoth[0].size(), 2);
    EXPECT_EQ(listBoth[0][1].dfL, 1);
    ASSERT_EQ(listBoth[1].size(), 2);
    EXPECT_EQ(listBoth[1][0].dfK, 1.01);
    EXPECT_TRUE(classifyReflections(spaceGroup, {}, 0.05).isEmpty());
}

TEST(TestReflectionConditions, OneLineForEachGroup)
{
    QLocale::setDefault(QLocale::c());
    const QList<Peak3D> list{reflection(1, 1, 1, 100), reflection(2, 0, 0, 50), reflection(1, 0, 0, 3),
                             reflection(0, 0, 2.3, 1e6)};
    CSpaceGroup spaceGroup;
    RecordingReport report;
    testReflectionConditions(list, 0.1, spaceGroup, report);
    ASSERT_EQ(report.listLine.size(), 232);
    EXPECT_EQ(report.listLine[0],
              "\nNo.  SG.Symbol       Ratio.cnt (Alwd/Fbdn)   Ratio.Avg.Int (      Alwd/      Fbdn)");
    EXPECT_EQ(report.listLine[1], QString(report.listLine[0].size(), '-'));
    EXPECT_EQ(report.listLine[2],
              "  1        P 1               ∞ (   3/   0)               ∞ (      51.0/       0.0)");
    // F centring forbids (1, 0, 0) alone; I centring (1, 1, 1) and (1, 0, 0).
    EXPECT_EQ(report.listLine[226],
              "225   F m -3 m             2.0 (   2/   1)            25.0 (      75.0/       3.0)");
    EXPECT_EQ(report.listLine[230],
              "229   I m -3 m             0.5 (   1/   2)             1.0 (      50.0/      51.5)");
    EXPECT_EQ(spaceGroup.nNumber, 230);
    EXPECT_EQ(report.nProgress, 230);
    RecordingReport reportEmpty;
    testReflectionConditions({}, 0.1, spaceGroup, reportEmpty);
    EXPECT_EQ(
        reportEmpty.listLine,
        QStringList{"Reflection conditions will not be tested because the number of reflections is 0."});
}
