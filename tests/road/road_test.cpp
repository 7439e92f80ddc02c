// All stages on simulated series, from frames to cell and indices, compared with the truth.
#include "simulate/seriescomparison.h"
#include "tests/batch/batchprogram.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <memory>

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

namespace {

/// A series of frames through a lens with an ellipse and a barrel, and what is made of it.
struct LensSeries {
    explicit LensSeries(bool bToldByProject)
    {
        const BatchOutcome simulated = runProgram(
            "tessera-simulate",
            QStringList{"--out", dir.path(), "--frames", "100", "--ellipse-amp", "1.2", "--ellipse-azimuth",
                        "30", "--barrel", "2", "--told-distortion", bToldByProject ? "on" : "off"});
        EXPECT_EQ(simulated.nStatus, 0) << simulated.strText.toStdString();
    }
    /// Runs the stages on a project of the folder, and returns what their summary tells of the geometry.
    QJsonObject run(const QString& strName, const QStringList& listMore = {}) const
    {
        const QString strSummary = dir.filePath(strName + ".json");
        const BatchOutcome outcome = runBatch(
            QStringList{dir.filePath(strName + ".ed3d"), "--json", strSummary} + listMore);
        EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        QFile file(strSummary);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QJsonDocument::fromJson(file.readAll()).object()["geometry"].toObject();
    }
    /// Checks that the spots were found, and returns the largest error of the cell, per cent or degrees; NaN,
    /// which is in no range, where there is nothing to compare.
    double worstError() const
    {
        QString strError;
        const auto compared = compareSeriesFiles(dir.filePath("series_truth.json"), dir.filePath("series"),
                                                 dir.filePath("series.json"), strError);
        EXPECT_TRUE(compared) << strError.toStdString();
        if (!compared) {
            return std::nan("");
        }
        EXPECT_GE(compared->foundShare(1), 0.99) << comparisonToText(*compared).toStdString();
        const CellErrors& errors = compared->lattice.errors;
        double dfWorst = 0;
        for (int i = 0; i < 3; ++i) {
            dfWorst = std::max({dfWorst, std::abs(errors.adfLength[i]), std::abs(errors.adfAngle[i])});
        }
        return dfWorst;
    }
    QTemporaryDir dir;
};

/// One run on a series of whose lens nothing is told.
class RoadOfAnUntoldLens : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_pSeries = std::make_unique<LensSeries>(false);
        s_first = s_pSeries->run("series");
        s_dfWorst = s_pSeries->worstError();
    }
    static void TearDownTestSuite() { s_pSeries.reset(); }
    inline static std::unique_ptr<LensSeries> s_pSeries;
    inline static QJsonObject s_first;
    inline static double s_dfWorst = 0;
};

}  // namespace

TEST(RoadOfALens, IsRightWhereTheProjectTellsIt)
{
    const LensSeries series(true);
    series.run("series");
    EXPECT_LT(series.worstError(), 0.1);
}

TEST(RoadOfALens, IsRightWhereOptionsTellIt)
{
    const LensSeries series(false);
    series.run("series", {"--ellipse-amplitude", "1.2", "--ellipse-azimuth", "30", "--third-order-radial",
                          "2.125", "--third-order-radius", "256"});
    EXPECT_LT(series.worstError(), 0.1);
}

TEST_F(RoadOfAnUntoldLens, IsFarOff)
{
    EXPECT_GT(s_dfWorst, 1);
}

TEST_F(RoadOfAnUntoldLens, BeginsAgainWhereTheFirstRunEnded)
{
    const QJsonObject again = s_pSeries->run("series_refined", {"--from", "peaks"});
    EXPECT_TRUE(QFile::exists(s_pSeries->dir.filePath("series_refined2.ed3d")));
    const double dfRms = s_first["rmsPixels"].toDouble();
    EXPECT_LT(again["before"].toObject()["rmsPixels"].toDouble(), 1.02 * dfRms);
    EXPECT_LT(again["rmsPixels"].toDouble(), 1.02 * dfRms);
    EXPECT_GE(again["after"].toObject()["peaks"].toInt(), s_first["after"].toObject()["peaks"].toInt());
}

// Lattice, options of the simulation and the stages, least reflections.
const RoadCase g_aRoad[] = {
    {"beryl", "--format dm3 --axis 141.5", "", 3000},  // hexagonal P
    {"anatase", "--format png8 --axis 90", "", 400},   // tetragonal I
    {"diopside", "--drift 15", g_pRefine, 1200},       // monoclinic C
    {"kyanite", "--orientation 7", g_pRefine, 1400},   // triclinic
// A sanitizer makes them five times as slow; formats, lenses and lattices have tests of their own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    {"silicon", "", "", 250},                                           // cubic F
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
