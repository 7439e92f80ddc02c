// The whole road on simulated series: frames in, cell and indices out, held against the truth.
#include "simulate/seriescomparison.h"

#include <gtest/gtest.h>
#include <QProcess>
#include <QTemporaryDir>

namespace {

int runProgram(const char* pName, const QStringList& listArgument, QString& strOutput)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(TESSERA_BIN_DIR "/") + QLatin1String(pName), listArgument);
    const bool bEnded = process.waitForFinished(600000) && process.exitStatus() == QProcess::NormalExit;
    process.kill();
    strOutput = QString::fromUtf8(process.readAll());
    return bEnded ? process.exitCode() : -1;
}

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
    QString strOutput;
    ASSERT_EQ(runProgram("tessera-simulate",
                         QStringList{QStringLiteral("--crystal"), QLatin1String(road.pCrystal),
                                     QStringLiteral("--out"), dir.path()} +
                             words(road.pOptions),
                         strOutput),
              0)
        << strOutput.toStdString();
    ASSERT_EQ(runProgram("tessera-batch",
                         QStringList{dir.filePath(QStringLiteral("series.ed3d")), QStringLiteral("--json"),
                                     dir.filePath(QStringLiteral("summary.json"))} +
                             words(road.pBatchOptions),
                         strOutput),
              0)
        << strOutput.toStdString();
    SeriesComparison c;
    QString strError;
    ASSERT_TRUE(compareSeriesFiles(dir.filePath(QStringLiteral("series_truth.json")),
                                   dir.filePath(QStringLiteral("series")),
                                   dir.filePath(QStringLiteral("summary.json")), c, strError))
        << strError.toStdString();
    SCOPED_TRACE(comparisonToText(c).toStdString());
    const auto expectNear = [](const CellErrors& errors, double dfMost) {  // per cent, degrees
        for (int i = 0; i < 3; ++i)
            EXPECT_LT(std::max(std::abs(errors.adfLength[i]), std::abs(errors.adfAngle[i])), dfMost);
    };
    EXPECT_TRUE(c.lattice.isRight() && c.bRefined);
    expectNear(c.lattice.errors, 0.5);
    expectNear(c.refined, 0.1);
    EXPECT_EQ(c.mapPairs.size(), words(road.pBatchOptions).contains(QStringLiteral("refine")) ? 3u : 0u);
    for (const auto& pairs : c.mapPairs)
        expectNear(pairs.second, 0.1);
    EXPECT_GE(c.nIndexed, road.nReflections);
    EXPECT_GE(c.rightShare(), 0.99);
    EXPECT_GE(c.foundShare(1), 0.9);
    EXPECT_GE(c.foundShare(2), 0.99);
}

INSTANTIATE_TEST_SUITE_P(
    Crystals, Road,
    testing::Values(RoadCase{"silicon", "", "", 250},                                // cubic F
                    RoadCase{"pyrope", "--format mrcu16", "", 3000},                 // cubic I
                    RoadCase{"beryl", "--format dm3 --axis 141.5", "", 3000},        // hexagonal P
                    RoadCase{"calcite", "--format mrcfloat", "", 700},               // rhombohedral R
                    RoadCase{"akermanite", "--spot-shape moffat", g_pRefine, 2000},  // tetragonal P
                    RoadCase{"anatase", "--axis 90", "", 400},                       // tetragonal I
                    RoadCase{"natrolite", "--stretch-amp 1.5 --stretch-azimuth 65", "",
                             3000},                                            // orthorhombic F
                    RoadCase{"forsterite", "--beam-tilt 10", "", 1500},        // orthorhombic P
                    RoadCase{"diopside", "--drift 15", g_pRefine, 1200},       // monoclinic C
                    RoadCase{"kyanite", "--orientation 7", g_pRefine, 1400}),  // triclinic
    [](const testing::TestParamInfo<RoadCase>& one) { return std::string(one.param.pCrystal); });
