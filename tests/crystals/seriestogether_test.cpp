// Crystals of simulated series, from frames to merged intensities.
#include "crystals/crystalmerging.h"
#include "crystals/crystalreading.h"
#include "tests/batch/batchprogram.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>

namespace tessera {
namespace {

/// Quartz by chance orientations: its lattice is hexagonal, its intensities are trigonal, so that each run
/// indexes it in one of two ways.
TEST(SeriesTogether, quartzComesIntoOneSetting)
{
    const QTemporaryDir dir;
    const QString strBin = QStringLiteral(TESSERA_BIN_DIR);
    QStringList listFolder;
    for (int n = 1; n <= 4; ++n) {
        const QString strName = QStringLiteral("q%1").arg(n);
        listFolder.append(dir.filePath(strName));
        QProcess simulate, batch;
        ASSERT_EQ(outcomeOf(simulate, strBin + QStringLiteral("/tessera-simulate"),
                            {"--crystal",     "quartz",
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
        ASSERT_EQ(outcomeOf(batch, strBin + QStringLiteral("/tessera-batch"),
                            {listFolder.last() + QLatin1Char('/') + strName + QStringLiteral(".ed3d"),
                             "--jobs", "1"})
                      .nStatus,
                  0);
    }
    const ReadCrystals read = readCrystals(listFolder);
    EXPECT_TRUE(read.listUnread.empty());
    ASSERT_EQ(read.listCrystal.size(), 4u);
    const CrystalGroups groups = groupByCell(read.listCrystal);
    ASSERT_EQ(groups.listGroup.size(), 1u);
    CRunReport report;
    const auto result = mergeCrystals(read.listCrystal, groups.listGroup.front(), {}, report);
    ASSERT_TRUE(result.finished());
    const MergedCrystals& merged = *result.made;
    EXPECT_TRUE(merged.listLeftOut.empty());
    EXPECT_EQ(merged.result.chosen.strClass, QStringLiteral("-3m1"));
    std::set<int> setAlternative;
    double dfBest = 0;
    for (const SettledCrystal& crystal : merged.listSettled) {
        setAlternative.insert(crystal.nAlternative);
        EXPECT_EQ(crystal.nAlternatives, 2);
        EXPECT_GT(crystal.dfCorrelation, 0.98);
        EXPECT_LT(crystal.dfSecond, 0.8);
        dfBest = std::max(dfBest, read.listCrystal[crystal.nCrystal].dfCompleteness);
    }
    EXPECT_EQ(setAlternative.size(), 2u);  // else the test shows nothing: choose other orientations
    EXPECT_LT(merged.result.quality.overall.dfRInt, 0.03);
    EXPECT_GT(merged.result.quality.overall.dfCompleteness, dfBest + 0.1);
    EXPECT_NEAR(merged.result.cell.a, 4.916, 0.01);
}

}  // namespace
}  // namespace tessera
