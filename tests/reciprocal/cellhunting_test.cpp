#include "reciprocal/cellhunting.h"
#include "reciprocal/basisvectors.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/checkedcellhunting.h"
#include "reciprocal/differencevectors.h"
#include "reciprocal/reflectionselection.h"
#include "reciprocal/vectoraveraging.h"
#include "tests/reciprocal/plainloops.h"
#include "tests/reciprocal/simulatedlattice.h"
#include "tests/reciprocal/testpeaks.h"
#include "tests/recordingreport.h"

#include "dataset/unitcellfile.h"
#include "records/pi.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace tessera {

namespace {

Peak3D vectorRecord(float fX, float fY, float fZ)
{
    Peak3D peak;
    placeAt(peak, {fX, fY, fZ});
    peak.dfIPoint = 1;
    return peak;
}

/// A cloud without a lattice; integer intensities give many equal weights.
QList<Peak3D> randomCloud(int nCount, unsigned nSeed)
{
    std::mt19937 random(nSeed);
    const auto coordinate = [&] { return float(random() % 20001) / 20000.f * 0.8f - 0.4f; };
    QList<Peak3D> listPeak;
    for (int n = 0; n < nCount; ++n) {
        const float fX = coordinate(), fY = coordinate(), fZ = coordinate();
        listPeak.append(vectorRecord(fX, fY, fZ));
        listPeak.last().dfIPoint = double(1 + random() % 40);
    }
    return listPeak;
}

}  // namespace

TEST(DifferenceVectors, KeepTheStrongestInTheOrderOfThePlainWay)
{
    CRunReport report;
    for (int nCount : {900, 60}) {
        const QList<Peak3D> list = randomCloud(nCount, 3);
        const QList<Peak3D> listFast = recordsOf(calDifferenceVectors(list, 1 / 1.5f, 1 / 30.f, report));
        EXPECT_EQ(listFast.size() == 300000, nCount == 900);
        EXPECT_EQ(bitsOf(listFast), bitsOf(plainDifferenceVectors(list, 1 / 1.5f, 1 / 30.f, 300000)));
    }
    // The limits are included.
    const QList<Peak3D> list = {vectorRecord(0, 0, 0), vectorRecord(0.25f, 0, 0), vectorRecord(0.75f, 0, 0)};
    QList<double> listX;
    for (const DifferenceVector& vector : calDifferenceVectors(list, 0.5f, 0.25f, report)) {
        listX.append(double(vector.v.x));
    }
    EXPECT_EQ(listX, QList<double>({-0.25, 0.25, -0.5, 0.5}));
}

TEST(AveragedVectors, AreThoseOfThePlainWalkToTheLastBit)
{
    CRunReport report;
    const gemmi::UnitCell cell(8, 10, 12, 85, 95, 102);
    const QList<Peak3D> listLattice = recordsOf(calDifferenceVectors(
        simulatedReflections(reciprocalBasis(cell), 0.3, 2e-3, all), 1 / 3.f, 1 / 30.f, report));
    QList<Peak3D> listNoFloats = listLattice;
    for (Peak3D& peak : listNoFloats) {
        peak.dfIPoint /= 3;
    }
    // Weights of both signs and none, points that are no numbers, are endless or far away.
    QList<Peak3D> listStrange = randomCloud(3000, 9);
    for (int n = 0; n < listStrange.size(); n += 3) {
        listStrange[n].dfIPoint = n % 2 ? 0 : -listStrange[n].dfIPoint;
    }
    for (float f : {NAN, INFINITY, -INFINITY, 1e30f, 1e6f}) {
        listStrange << vectorRecord(f, 0, 0) << vectorRecord(0.1f, f, -f);
    }
    QList<Peak3D> listDark = listStrange;
    for (Peak3D& peak : listDark) {
        peak.dfIPoint = 0;
    }
    for (const QList<Peak3D>& list :
         {randomCloud(6000, 7), listLattice, listNoFloats, listStrange, listDark, {}}) {
        for (float fTolerance : {0.01f, 0.03f, 0.3f, 0.f}) {
            if (fTolerance > 0.1f && list.size() > 10000) {
                continue;  // the plain walk would take minutes
            }
            const std::vector<uint64_t> vecPlain = bitsOf(plainAveragedVectors(list, fTolerance));
            for (int nJobs : {1, 2, 3, 5}) {
                EXPECT_EQ(bitsOf(averageDifferenceVectors(vectorsOf(list), fTolerance, report, nJobs)),
                          vecPlain)
                    << fTolerance << " " << list.size() << " " << nJobs;
            }
        }
    }
    for (const DifferenceVector& vector : calDifferenceVectors(listStrange, 1, 0.01f, report)) {
        EXPECT_TRUE(std::isfinite(vector.v.x));
    }
}

TEST(BasisVectors, AreShortestAcuteAndRightHandedWithinTheLimits)
{
    // A third vector of the wrong hand exchanges b and c.
    QList<Vec3D> list = findBasisVectors({vectorRecord(0.1f, 0, 0), vectorRecord(-0.1f, 0, 0),
                                          vectorRecord(-0.02f, 0, 0.15f), vectorRecord(0.02f, 0.2f, 0.02f)});
    EXPECT_EQ(list, QList<Vec3D>({{0.1f, 0, 0}, {-0.02f, -0.2f, -0.02f}, {0.02f, 0, -0.15f}}));
    // All vectors are on one line: the last one is returned unchanged.
    list = findBasisVectors({vectorRecord(0.1f, 0, 0), vectorRecord(0.2f, 0, 0), vectorRecord(-0.3f, 0, 0)});
    EXPECT_EQ(list, QList<Vec3D>({{0.1f, 0, 0}, {-0.3f, 0, 0}}));
    EXPECT_TRUE(findBasisVectors({vectorRecord(0.1f, 0, 0), vectorRecord(0, 0.2f, 0)}).isEmpty());

    const auto at = [](double dfAngle, double dfHeight, float fLength) {
        const float fFlat = float(std::sqrt(1 - dfHeight * dfHeight)) * fLength;
        return vectorRecord(fFlat * float(std::cos(dfAngle * g_dfPi / 180)),
                            fFlat * float(std::sin(dfAngle * g_dfPi / 180)), float(dfHeight) * fLength);
    };
    for (double dfAngle : {29.0, 31.0, 149.0, 151.0}) {
        list = findBasisVectors({at(0, 0, 0.1f), at(dfAngle, 0, 0.2f), at(90, 0, 0.3f), at(0, 1, 0.4f)});
        ASSERT_EQ(list.size(), 3);
        EXPECT_EQ(std::min(length(list[1]), length(list[2])) < 0.25f, std::fabs(dfAngle - 90) < 60);
    }
    for (double dfTriple : {0.19, 0.21, -0.21, -0.19}) {  // with a and b at right angles it is the height
        EXPECT_EQ(findBasisVectors({at(0, 0, 0.1f), at(90, 0, 0.2f), at(45, dfTriple, 0.3f)}).size(),
                  std::fabs(dfTriple) > 0.2 ? 3 : 2);
    }
}

// Each vector must be an allowed reflection, and the three must span the whole lattice, no more and no less.
TEST(CellHunting, FindsABasisOfSimulatedCrystals)
{
    const struct {
        gemmi::UnitCell cell;
        bool (*isAllowed)(int, int, int);
        int nDeterminant;
    } aRow[] = {{{7.3, 9.1, 12.4, 81, 77, 68}, all, 1},
                {{11.2, 7.7, 14.3, 90, 106, 90}, [](int h, int k, int) { return (h + k) % 2 == 0; }, 2},
                {{10.9, 10.9, 10.9, 90, 90, 90},
                 [](int h, int k, int l) { return (h + k) % 2 == 0 && (k + l) % 2 == 0; },
                 4}};
    for (const auto& row : aRow) {
        const QList<Vec3D> listTruth = reciprocalBasis(row.cell);
        DataSet data;
        CRecordingReport log;
        ASSERT_TRUE(runUnitCellHunting(data, simulatedReflections(listTruth, 0.6, 1.5e-3, row.isAllowed),
                                       CellHuntingParameters(), log)
                        .finished());
        EXPECT_EQ(data.m_listCell, data.m_listCellFound);
        CBasisSolver solver;
        solver.setBasis(listTruth[0], listTruth[1], listTruth[2]);
        gemmi::Mat33 matIndex;
        for (int n = 0; n < 3; ++n) {
            const Vec3D hkl = solver.solve(data.m_listCell.value(n));
            EXPECT_TRUE(isCloseToInteger(hkl, 0.03f)) << row.cell.a;
            const int aIndex[] = {roundIndex(double(hkl.x)), roundIndex(double(hkl.y)),
                                  roundIndex(double(hkl.z))};
            EXPECT_TRUE(row.isAllowed(aIndex[0], aIndex[1], aIndex[2]));
            std::copy(aIndex, aIndex + 3, matIndex[n]);
        }
        EXPECT_EQ(matIndex.determinant(), row.nDeterminant) << row.cell.a;  // right-handed, too
        EXPECT_TRUE(log.log().startsWith("blue >Calculating difference vectors...\nblue >Total difference"));
        EXPECT_TRUE(log.m_listLine.last().contains("Found unit cell: a="));
    }
}

// Pairs far apart from each other, so that each gives one vector of the search.
TEST(CellHunting, VectorsWithinAHundredthFormOnePile)
{
    for (float fApart : {0.0095f, 0.0105f}) {
        QList<Peak3D> listPair;
        for (const Vec3D& v : {Vec3D{0.1f, 0, 0}, {0.1f, fApart, 0}, {0, 0.2f, 0}, {0, 0, 0.3f}}) {
            const float fFrom = float(listPair.size());
            listPair << vectorRecord(fFrom, 0, 0) << vectorRecord(fFrom + v.x, v.y, v.z);
        }
        DataSet data;
        CRecordingReport log;
        ASSERT_TRUE(runUnitCellHunting(data, listPair, CellHuntingParameters(), log).finished());
        EXPECT_NEAR(std::fabs(data.m_listCell[0].y), fApart < 0.01f ? fApart / 2 : 0, 1e-6) << fApart;
        // Edges from 4 Å on: the longest vector is none of them.
        ASSERT_TRUE(runUnitCellHunting(data, listPair, {4, 30}, log).finished());
        EXPECT_NEAR(length(data.m_listCell[2]), 0.02, 1e-3);
    }
}

TEST(CellHunting, OnePlaneGetsAThirdAxisAtRightAngles)
{
    const QList<Peak3D> list = simulatedReflections(reciprocalBasis(gemmi::UnitCell(8, 11, 5, 90, 90, 100)),
                                                    0.7, 0, [](int, int, int l) { return l == 0; });
    DataSet data;
    CRecordingReport log;
    ASSERT_TRUE(runUnitCellHunting(data, list, CellHuntingParameters(), log).finished());
    EXPECT_NEAR(length(data.m_listCell[2] - cross(data.m_listCell[0], data.m_listCell[1])), 0, 1e-9);
    const QList<Vec3D> listBefore = data.m_listCell;  // a search without a result leaves it
    QList<Peak3D> listDark = list;
    for (Peak3D& peak : listDark) {
        peak.dfIPoint = 0;
    }
    for (const QList<Peak3D>& listPoor : {list.mid(0, 2), listDark}) {
        const RunOutcome outcome = runUnitCellHunting(data, listPoor, CellHuntingParameters(), log);
        EXPECT_EQ(outcome.end, RunEnd::Failed);
        EXPECT_EQ(log.marked().last(), "red " + outcome.strReason);
    }
    CellHuntingParameters reversed;
    std::swap(reversed.m_dfCellRangeMin, reversed.m_dfCellRangeMax);
    EXPECT_FALSE(runUnitCellHunting(data, list, reversed, log).finished());
    EXPECT_EQ(
        log.marked().last(),
        QStringLiteral("red No edge is both longer than \"Min.\", 30 Å, and shorter than \"Max.\", 3 Å."));
    EXPECT_EQ(data.m_listCell, listBefore);
    EXPECT_EQ(data.m_listCellFound, listBefore);
}

// Every tenth reflection has a satellite, whose vector is shorter than any of the lattice.
TEST(CheckedCellHunting, SearchesAgainWithoutAVectorThatIsNone)
{
    const gemmi::UnitCell cell(5.3, 6.1, 7.4, 81, 77, 68);
    const QList<Vec3D> listTruth = reciprocalBasis(cell);
    QList<Peak3D> list = simulatedReflections(listTruth, 0.8, 1e-3, all);
    for (int n = list.size() - 1; n >= 0; n -= 10) {
        list.append(list[n]);
        placeAt(list.last(), list[n].point() + scaled(listTruth[2], 0.45f));
    }
    DataSet data;
    CRecordingReport log;
    ASSERT_TRUE(runUnitCellHunting(data, list, CellHuntingParameters(), log).finished());
    EXPECT_LT(indexedShare(cellInForce(data).value(), list, 0.05f, log), 0.5);
    adviseOnCell(data, list, CellHuntingParameters(), 0.05, log);
    const QString strAdvice = log.m_listLine.last().section("If it is wrong, search with a \"Max.\" of ", 1);
    const double dfMax = strAdvice.section(' ', 0, 0).toDouble();
    EXPECT_GT(1 / dfMax, length(data.m_listCell[0]));  // which is left out
    EXPECT_LT(1 / dfMax, length(data.m_listCell[1]));
    ASSERT_TRUE(runCheckedCellHunting(data, list, CellHuntingParameters(), 0.05, log).finished());
    EXPECT_TRUE(log.said("% of the reflections fit this cell. Searching again"));
    EXPECT_NEAR(1 / std::fabs(dot(cross(data.m_listCell[0], data.m_listCell[1]), data.m_listCell[2])),
                cell.volume, 0.02 * cell.volume);
    EXPECT_GT(indexedShare(cellInForce(data).value(), list, 0.05f, log), 0.7);
    EXPECT_EQ(runCheckedCellHunting(data, {}, CellHuntingParameters(), 0.05, log).end, RunEnd::Refused);

    // A row in space has no third axis, so none to leave out; the first of equally poor cells is kept.
    list.clear();
    for (int n = 0; n < 9; ++n) {
        list.append(vectorRecord(0.1f * float(n), 0, 0));
    }
    ASSERT_TRUE(runCheckedCellHunting(data, list, CellHuntingParameters(), 0.05, log).finished());
    EXPECT_TRUE(log.said("Searching again, for edges up to 9.50 Å."));
    EXPECT_NEAR(length(data.m_listCell[0]), 0.1, 1e-6);
}

TEST(CellCommit, TakesATransformedCellToListsAndFile)
{
    QTemporaryDir dir;
    DataSet data;
    data.m_strProjectDir = dir.path();
    data.m_strProjectName = "p";
    data.m_listCell = reciprocalBasis(gemmi::UnitCell(10, 6, 7, 90, 90, 90));
    data.m_vecPeakIndexedOnFrame = {{Peak3D()}};
    data.m_vecReflectionFrame = {3};
    CRecordingReport log;
    EXPECT_TRUE(commitTransformedCell(data));
    EXPECT_TRUE(saveProjectCell(data, log));
    EXPECT_TRUE(log.m_listLine.isEmpty());
    EXPECT_EQ(data.m_listCellFound, data.m_listCell);
    EXPECT_TRUE(data.m_vecPeakIndexedOnFrame.isEmpty());
    EXPECT_TRUE(data.m_vecReflectionFrame.empty());
    EXPECT_NEAR(length(readUnitCellFile(dir.filePath("p.uc")).value(0) - data.m_listCell[0]), 0, 1e-7f);
    data.m_strProjectDir = dir.filePath("none");
    EXPECT_FALSE(saveProjectCell(data, log));
    EXPECT_TRUE(log.said("Failed to save file"));
    log.m_listLine.clear();
    data.m_strProjectDir.clear();
    EXPECT_FALSE(saveProjectCell(data, log)) << "no data set is open";
    EXPECT_TRUE(log.m_listLine.isEmpty());
}

TEST(Selection, TakesTheReflectionsWhoseIDTheGroupShows)
{
    const auto withIDs = [](const QList<int>& listID) {
        QList<Peak3D> list;
        for (int nID : listID) {
            list.append(reflection(0, 0, 0, 1, nID));
        }
        return list;
    };
    QList<Peak3D> list;
    CRecordingReport log;
    ASSERT_TRUE(selectReflectionsForProcessing(withIDs({7, 0, 3, 2000000000}), withIDs({3, -4, 5, 7, 0}),
                                               {0, 1, 2, 3, 99, -1}, list, log));
    EXPECT_EQ(idsOf(list), QList<int>({7, 3}));
    EXPECT_EQ(log.m_listLine, QStringList("ID: -4 out of range."));
}

}  // namespace tessera
