// Crystals of simulated series, from frames to merged intensities.
#include "crystals/crystalmerging.h"
#include "crystals/crystalreading.h"
#include "tests/batch/batchprogram.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <set>

namespace tessera {
namespace {

/// Quartz by chance orientations: its lattice is hexagonal, its intensities are trigonal, so that each run
/// indexes it in one of two ways.
class SeriesTogether : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        const QTemporaryDir dir;
        QStringList listFolder;
        for (int n = 1; n <= 4; ++n) {
            const QString strName = QStringLiteral("q%1").arg(n);
            listFolder.append(dir.filePath(strName));
            ASSERT_EQ(runProgram("tessera-simulate", {"--crystal",     "quartz",
                                                      "--frames",      "60",
                                                      "--tilt-start",  "-30",
                                                      "--tilt-step",   "1",
                                                      "--size",        "256",
                                                      "--pixel-size",  "0.008",
                                                      "--orientation", QString::number(n),
                                                      "--seed",        QString::number(n),
                                                      "--out",         listFolder.last(),
                                                      "--name",        strName})
                          .nStatus,
                      0);
            ASSERT_EQ(runBatch({listFolder.last() + QLatin1Char('/') + strName + QStringLiteral(".ed3d"),
                                "--jobs", "1"})
                          .nStatus,
                      0);
        }
        s_read = readCrystals(listFolder);
        const CrystalGroups groups = groupByCell(s_read.listCrystal);
        s_nGroups = groups.listGroup.size();
        ASSERT_GT(s_nGroups, 0u);
        CRunReport report;
        s_merged = mergeCrystals(s_read.listCrystal, groups.listGroup.front(), {}, report).made;
    }
    static void TearDownTestSuite()
    {
        s_read = {};
        s_merged.reset();
    }
    void SetUp() override { ASSERT_TRUE(s_merged); }

    static inline ReadCrystals s_read;
    static inline size_t s_nGroups = 0;
    static inline std::optional<MergedCrystals> s_merged;
};

TEST_F(SeriesTogether, areReadAsOneGroup)
{
    EXPECT_TRUE(s_read.listUnread.empty());
    EXPECT_EQ(s_read.listCrystal.size(), 4u);
    EXPECT_EQ(s_nGroups, 1u);
}

TEST_F(SeriesTogether, comeIntoOneSetting)
{
    EXPECT_TRUE(s_merged->listLeftOut.empty());
    EXPECT_EQ(s_merged->listSettled.size(), 4u);
    std::set<int> setAlternative;
    for (const SettledCrystal& crystal : s_merged->listSettled) {
        setAlternative.insert(crystal.nAlternative);
        EXPECT_EQ(crystal.nAlternatives, 2);
        EXPECT_GT(crystal.dfCorrelation, 0.98);
        EXPECT_LT(crystal.dfSecond, 0.8);
    }
    EXPECT_EQ(setAlternative.size(), 2u);  // else the test shows nothing: choose other orientations
}

TEST_F(SeriesTogether, areMergedToMoreThanTheBestOfThem)
{
    const IntegrationResult& result = s_merged->result;
    EXPECT_EQ(result.chosen.strClass, QStringLiteral("-3m1"));
    EXPECT_NEAR(result.cell.a, 4.916, 0.01);
    EXPECT_LT(result.quality.overall.dfRInt, 0.03);
    double dfBest = 0;
    for (const Crystal& crystal : s_read.listCrystal) {
        dfBest = std::max(dfBest, crystal.dfCompleteness);
    }
    EXPECT_GT(result.quality.overall.dfCompleteness, dfBest + 0.1);
}

}  // namespace
}  // namespace tessera
