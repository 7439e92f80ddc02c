// Series with two crystals, and of supercells: closed forms, and the same structure written another way.
#include "simulate/secondlattice.h"
#include "simulate/seriescomparison.h"
#include "simulate/supercell.h"
#include "simulate/truthfile.h"
#include "tests/batch/batchprogram.h"

#include <gtest/gtest.h>
#include <QTemporaryDir>

#include <map>
#include <tuple>

namespace tessera {

namespace {

SimulationParameters smallSeries()
{
    SimulationParameters p;
    p.strCrystal = QStringLiteral("kyanite");
    p.nFrames = 24;
    p.dfTiltStart = -10;
    p.nSize = 256;
    p.dfPixelSize = 0.008;
    p.dfCenterX = 129;
    p.dfCenterY = 127;
    p.dfDrift = 0;
    return p;
}

SimulatedSeries simulated(const SimulationParameters& p)
{
    QString strError;
    auto series = simulateSeries(p, strError);
    EXPECT_TRUE(series) << strError.toStdString();
    return std::move(series).value_or(SimulatedSeries());
}

using Key = std::tuple<int, int, int, int>;  // frame and indices
std::map<Key, TruthSpot> spotsOf(const SimulatedSeries& series, int nLattice)
{
    std::map<Key, TruthSpot> map;
    for (const auto& listSpot : series.listDrawn) {
        for (const TruthSpot& spot : listSpot) {
            if (spot.nLattice == nLattice) {
                map[Key(spot.nFrame, spot.nH, spot.nK, spot.nL)] = spot;
            }
        }
    }
    return map;
}

}  // namespace

TEST(SecondLattice, TurnedAboutTheRotationAxisIsTheFirstOneSomeFramesLater)
{
    SimulationParameters p = smallSeries();
    const auto mapAlone = spotsOf(simulated(p), 0);
    p.dfSecondShare = 0.25;
    ASSERT_TRUE(parseTurn(QStringLiteral("-4.25,x"), p));  // five steps of 0.85 degrees
    const SimulatedSeries series = simulated(p);
    const auto mapFirst = spotsOf(series, 0), mapSecond = spotsOf(series, 1);
    ASSERT_EQ(mapFirst.size(), mapAlone.size());
    for (const auto& [key, spot] : mapAlone) {
        EXPECT_EQ(mapFirst.at(key).dfCounts, spot.dfCounts);
    }
    int nSame = 0;
    for (const auto& [key, spot] : mapSecond) {
        const auto it = mapFirst.find(Key(spot.nFrame + 5, spot.nH, spot.nK, spot.nL));
        if (it == mapFirst.end()) {
            EXPECT_GE(spot.nFrame, p.nFrames - 5);
            continue;
        }
        ++nSame;
        EXPECT_NEAR(spot.dfX, it->second.dfX, 1e-6);
        EXPECT_NEAR(spot.dfY, it->second.dfY, 1e-6);
        EXPECT_NEAR(spot.dfCounts, 0.25 * it->second.dfCounts, 1e-6 * it->second.dfCounts);
    }
    EXPECT_GT(nSame, 500);
}

TEST(SecondLattice, TurnsThatMakeNoSenseAreNotRead)
{
    SimulationParameters p = smallSeries();
    for (const char* pBad : {"", "c", "5,", "5,q", "5,c,1", "nan", "1e999"}) {
        EXPECT_FALSE(parseTurn(QLatin1String(pBad), p)) << pBad;
        EXPECT_FALSE(p.bSecondTurned) << pBad;
    }
}

namespace {

/// Parameters of three frames with a second crystal turned so, or by chance.
SimulationParameters turnedSeries(const char* pTurn)
{
    SimulationParameters p = smallSeries();
    p.nFrames = 3;
    p.dfSecondShare = 0.45;
    EXPECT_EQ(parseTurn(QLatin1String(pTurn), p), *pTurn != 0);
    return p;
}

const char* const g_aTurn[] = {"", "7.5", "7.5,c", "7.5,c*", "180,b"};

}  // namespace

TEST(SecondLattice, IsTurnedAsTold)
{
    for (const char* pTurn : g_aTurn) {
        SCOPED_TRACE(pTurn);
        const SimulationParameters turned = turnedSeries(pTurn);
        const SimulatedSeries series = simulated(turned);
        const Matrix3 matDirect = transposed(inverseOf(series.matBasis));
        const Matrix3 matDirectSecond = transposed(inverseOf(series.matSecondBasis));
        // The same crystal: the metric stays, and what it was turned about.
        for (size_t i = 0; i < 3; ++i) {
            for (size_t j = 0; j < 3; ++j) {
                EXPECT_NEAR(dotProduct(matDirect[i], matDirect[j]),
                            dotProduct(matDirectSecond[i], matDirectSecond[j]), 1e-9);
            }
        }
        if (*pTurn) {
            EXPECT_NEAR(turnBetween(series.matBasis, series.matSecondBasis), turned.dfSecondTurn, 1e-5);
        }
        EXPECT_EQ(lengthOf(matDirect[2] - matDirectSecond[2]) < 1e-9,
                  turned.strSecondAxis == QLatin1String("c"));
        EXPECT_EQ(lengthOf(series.matBasis[2] - series.matSecondBasis[2]) < 1e-9,
                  turned.strSecondAxis == QLatin1String("c*"));
    }
}

TEST(SecondLattice, IsReadBack)
{
    QTemporaryDir dir;
    const QString strFile = dir.filePath(QStringLiteral("truth.json"));
    for (const char* pTurn : g_aTurn) {
        SCOPED_TRACE(pTurn);
        const SimulatedSeries series = simulated(turnedSeries(pTurn));
        ASSERT_EQ(writeTruthFile(strFile, series), QString());
        SimulatedSeries read;
        QString strError;
        ASSERT_TRUE(readTruthFile(strFile, read, strError)) << strError.toStdString();
        EXPECT_EQ(read.latticeCount(), 2);
        EXPECT_EQ(read.matSecondBasis, series.matSecondBasis);
        ASSERT_EQ(read.listSpot.size(), series.listSpot.size());
        int nSecond = 0;
        for (size_t i = 0; i < read.listSpot.size(); ++i) {
            EXPECT_EQ(read.listSpot[i].nLattice, series.listSpot[i].nLattice);
            nSecond += read.listSpot[i].nLattice;
        }
        EXPECT_GT(nSecond, 50);
    }
}

TEST(Supercell, ReflectionsLieOnItsLatticeAndHaveTheirShare)
{
    const CStructureFactor crystal(*findCrystalStructure(QStringLiteral("natrolite")));  // F d d 2
    for (int nAxis = 0; nAxis < 3; ++nAxis) {
        for (int nMultiple : {2, 3}) {
            const Supercell supercell{nMultiple, nAxis, 0.02};
            std::array<double, 6> adfCell = cellOfReciprocalBasis(crystal.reciprocalBasis());
            adfCell[nAxis] *= nMultiple;
            const Matrix3 matBasis = reciprocalBasisOfCell(adfCell);
            // One centring of F stays: that of the face across the axis.
            const Matrix3 matPrimitive = supercellPrimitive(crystal, supercell);
            EXPECT_NEAR(determinantOf(matPrimitive), 2, 1e-9);
            const Matrix3 matIndices = inverseOf(matPrimitive);
            double adfSum[2] = {0, 0};
            for (const Reflection& r : supercellReflections(crystal, supercell, 0.5)) {
                const Vector3 vec{double(r.nH), double(r.nK), double(r.nL)};
                EXPECT_NEAR(r.dfDStar, lengthOf(vec * matBasis), 1e-9);
                for (double df : vec* matIndices) {
                    EXPECT_NEAR(df, std::round(df), 1e-9);
                }
                Vector3 vecAverage = vec;
                vecAverage[nAxis] /= nMultiple;
                const bool bOfAverage = std::abs(vecAverage[nAxis] - std::round(vecAverage[nAxis])) < 1e-9;
                adfSum[bOfAverage] += r.dfSquareF;
                if (bOfAverage) {
                    const double dfWanted = std::norm(crystal.value(int(std::lround(vecAverage[0])),
                                                                    int(std::lround(vecAverage[1])),
                                                                    int(std::lround(vecAverage[2]))));
                    EXPECT_NEAR(r.dfSquareF, dfWanted, 1e-9 * (1 + dfWanted));
                }
            }
            // As many of either kind for each cell more, on average at the share.
            EXPECT_NEAR(adfSum[0] / adfSum[1] / (nMultiple - 1), 0.02, 0.002) << nAxis << ' ' << nMultiple;
        }
    }
}

TEST(Supercell, LeavesTheAverageSpotsAndTellsTheDoubledCell)
{
    SimulationParameters p = smallSeries();
    const SimulatedSeries plain = simulated(p);
    p.nSupercell = 2;
    p.nSupercellAxis = 1;
    const SimulatedSeries super = simulated(p);
    const auto mapSuper = spotsOf(super, 0);
    double dfOdd = 0, dfEven = 0;
    for (const auto& [key, spot] : mapSuper) {
        (spot.nK % 2 == 0 ? dfEven : dfOdd) += spot.dfCounts;
    }
    EXPECT_NEAR(dfOdd / dfEven, 0.02, 0.006);  // 24 frames meet but some reflections
    for (const auto& [key, spot] : spotsOf(plain, 0)) {
        const TruthSpot& same = mapSuper.at(Key(spot.nFrame, spot.nH, 2 * spot.nK, spot.nL));
        EXPECT_NEAR(same.dfCounts, spot.dfCounts, 1e-9 * spot.dfCounts);
        EXPECT_NEAR(same.dfX, spot.dfX, 1e-9);
    }
    EXPECT_NEAR(cellOfReciprocalBasis(super.matBasis)[1], 2 * 7.852, 1e-6);
    EXPECT_NEAR(super.adfCell[1], 2 * 7.852, 1e-9);
    const LatticeMatch match = matchLattice(plain.matBasis, super.matBasis, super.matPrimitive);
    EXPECT_EQ(match.relation, LatticeMatch::Subcell);
    EXPECT_EQ(match.nIndex, 2);
    QString strError;
    p.nSupercell = 5;
    EXPECT_FALSE(simulateSeries(p, strError));
    EXPECT_FALSE(strError.isEmpty());
}

TEST(SecondLattice, OptionsThatMakeNoSenseAreRefused)
{
    QTemporaryDir dir;
    const struct {
        const char* pOptions;
        int nStatus;
    } aRow[] = {{"--second-turn 4", 2},
                {"--second-lattice 0.5 --second-turn 4,q", 2},
                {"--second-lattice -1", 2},
                {"--supercell 5", 2},
                {"--supercell-axis b", 2},
                {"--odd-share 0.1", 2},
                {"--supercell 2 --odd-share 0", 2},
                {"--supercell 2 --supercell-axis d", 2},
                {"--supercell 2 --supercell-axis b --second-lattice 0.5 --second-turn 4,a*", 0}};
    for (const auto& row : aRow) {
        QStringList listArgument{"--out", dir.path(), "--frames", "1", "--size", "64"};
        listArgument += QString::fromLatin1(row.pOptions).split(QLatin1Char(' '));
        const BatchOutcome outcome = runProgram("tessera-simulate", listArgument);
        EXPECT_EQ(outcome.nStatus, row.nStatus) << row.pOptions << outcome.strText.toStdString();
        EXPECT_EQ(QDir(dir.path()).isEmpty(), row.nStatus != 0) << row.pOptions;
    }
    SimulatedSeries series;
    QString strError;
    ASSERT_TRUE(readTruthFile(dir.filePath(QStringLiteral("series_truth.json")), series, strError));
    EXPECT_NEAR(turnBetween(series.matBasis, series.matSecondBasis), 4, 1e-6);
    EXPECT_NEAR(series.adfCell[1], 2 * 18.6407, 1e-9);
}

}  // namespace tessera
