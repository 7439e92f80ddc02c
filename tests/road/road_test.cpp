// All stages on simulated series, from frames to cell and indices, compared with the truth.
#include "simulate/seriescomparison.h"
#include "tests/batch/batchprogram.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>

namespace tessera {

namespace {

struct RoadCase {
    const char* pCrystal;
    const char* pOptions;  ///< of the simulator
    const char* pBatchOptions;
    int nReflections;  ///< indexed peaks on the frames, at least
};

std::ostream& operator<<(std::ostream& stream, const RoadCase& road)
{
    return stream << road.pCrystal << ' ' << road.pOptions;
}

class Road : public testing::TestWithParam<RoadCase> {};

const char* const g_pRefine = "--to refine --constant-background";

QStringList words(const char* p)
{
    return QString::fromLatin1(p).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

}  // namespace

TEST_P(Road, LeadsFromFramesToTheTrueCellAndIndices)
{
    const RoadCase& road = GetParam();
    QTemporaryDir dir;
    const BatchOutcome simulated = runProgram(
        "tessera-simulate",
        QStringList{"--crystal", road.pCrystal, "--out", dir.path()} + words(road.pOptions));
    ASSERT_EQ(simulated.nStatus, 0) << simulated.strText.toStdString();
    const BatchOutcome outcome = runBatch(
        QStringList{dir.filePath("series.ed3d"), "--json", dir.filePath("summary.json")} +
        words(road.pBatchOptions));
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    QString strError;
    const auto compared = compareSeriesFiles(dir.filePath("series_truth.json"), dir.filePath("series"),
                                             dir.filePath("summary.json"), strError);
    ASSERT_TRUE(compared) << strError.toStdString();
    const SeriesComparison& c = *compared;
    SCOPED_TRACE(comparisonToText(c).toStdString());
    const auto expectNear = [](const CellErrors& errors, double dfMost) {  // per cent, degrees
        for (int i = 0; i < 3; ++i) {
            EXPECT_LT(std::max(std::abs(errors.adfLength[i]), std::abs(errors.adfAngle[i])), dfMost);
        }
    };
    EXPECT_TRUE(c.lattice.isRight());
    EXPECT_TRUE(c.bRefined);
    expectNear(c.lattice.errors, 0.5);
    expectNear(c.refined, 0.1);
    EXPECT_EQ(c.mapPairs.size(), words(road.pBatchOptions).contains("refine") ? 3u : 0u);
    for (const auto& pairs : c.mapPairs) {
        expectNear(pairs.second, 0.1);
    }
    EXPECT_GE(c.nIndexed, road.nReflections);
    EXPECT_GE(c.rightShare(), 0.99);
    EXPECT_GE(c.foundShare(1), 0.9);
    EXPECT_GE(c.foundShare(2), 0.99);
}

// An ellipse and a barrel. Told by project or options the cell is right, untold it is far off; and the
// refined project of the untold series, taken again, begins where the first run ended.
TEST(RoadOfALens, IsThatOfItsProject)
{
    const QStringList listOption = {"--ellipse-amplitude",  "1.2",   "--ellipse-azimuth",    "30",
                                    "--third-order-radial", "2.125", "--third-order-radius", "256"};
    for (const char* pszTold : {"project", "options", "nowhere"}) {
        SCOPED_TRACE(pszTold);
        const bool bProject = pszTold == QLatin1String("project");
        const bool bTold = pszTold != QLatin1String("nowhere");
        QTemporaryDir dir;
        const BatchOutcome simulated = runProgram(
            "tessera-simulate",
            QStringList{"--out", dir.path(), "--frames", "100", "--ellipse-amp", "1.2", "--ellipse-azimuth",
                        "30", "--barrel", "2", "--told-distortion", bProject ? "on" : "off"});
        ASSERT_EQ(simulated.nStatus, 0) << simulated.strText.toStdString();
        const auto run = [&](const QString& strName, const QStringList& listMore) {
            const QString strSummary = dir.filePath(strName + ".json");
            const BatchOutcome outcome = runBatch(
                QStringList{dir.filePath(strName + ".ed3d"), "--json", strSummary} + listMore);
            EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
            QFile file(strSummary);
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            return QJsonDocument::fromJson(file.readAll()).object()["geometry"].toObject();
        };
        const QJsonObject first = run("series", bTold && !bProject ? listOption : QStringList());
        QString strError;
        const auto compared = compareSeriesFiles(dir.filePath("series_truth.json"), dir.filePath("series"),
                                                 dir.filePath("series.json"), strError);
        ASSERT_TRUE(compared) << strError.toStdString();
        const SeriesComparison& c = *compared;
        SCOPED_TRACE(comparisonToText(c).toStdString());
        const CellErrors& errors = c.lattice.errors;
        double dfWorst = 0;  // per cent, degrees
        for (int i = 0; i < 3; ++i) {
            dfWorst = std::max({dfWorst, std::abs(errors.adfLength[i]), std::abs(errors.adfAngle[i])});
        }
        EXPECT_EQ(dfWorst < 0.1, bTold) << dfWorst;
        EXPECT_GE(c.foundShare(1), 0.99);
        if (bTold) {
            continue;
        }
        EXPECT_GT(dfWorst, 1);
        const QJsonObject again = run("series_refined", {"--from", "peaks"});
        EXPECT_TRUE(QFile::exists(dir.filePath("series_refined2.ed3d")));
        const double dfRms = first["rmsPixels"].toDouble();
        EXPECT_LT(again["before"].toObject()["rmsPixels"].toDouble(), 1.02 * dfRms);
        EXPECT_LT(again["rmsPixels"].toDouble(), 1.02 * dfRms);
        EXPECT_GE(again["after"].toObject()["peaks"].toInt(), first["after"].toObject()["peaks"].toInt());
    }
}

// Lattice, options of the simulation and the stages, least reflections.
const RoadCase g_aRoad[] = {
    {"beryl", "--format dm3 --axis 141.5", "", 3000},  // hexagonal P
    {"anatase", "--format png8 --axis 90", "", 400},   // tetragonal I
    {"diopside", "--drift 15", g_pRefine, 1200},       // monoclinic C
    {"kyanite", "--orientation 7", g_pRefine, 1400},   // triclinic
#ifndef __SANITIZE_ADDRESS__   // five times as slow; formats, lenses and lattices have tests of their own
    {"silicon", "", "", 250},  // cubic F
    {"pyrope", "--format mrcu16", "", 3000},                            // cubic I
    {"calcite", "--format mrcfloat", "", 700},                          // rhombohedral R
    {"akermanite", "--spot-shape moffat", g_pRefine, 2000},             // tetragonal P
    {"natrolite", "--stretch-amp 1.5 --stretch-azimuth 65", "", 3000},  // orthorhombic F
    {"forsterite", "--beam-tilt 10", "", 1500},                         // orthorhombic P
#endif
};

INSTANTIATE_TEST_SUITE_P(Crystals, Road, testing::ValuesIn(g_aRoad),
                         [](const testing::TestParamInfo<RoadCase>& one) {
                             return std::string(one.param.pCrystal);
                         });

}  // namespace tessera
