#include "reciprocal/cellhunting.h"
#include "reciprocal/basisvectors.h"
#include "reciprocal/differencevectors.h"
#include "reciprocal/plainloops.h"
#include "reciprocal/runlog.h"
#include "reciprocal/simulatedlattice.h"

#include "crystal/cellarithmetic.h"

#include <gtest/gtest.h>

#include <gemmi/cellred.hpp>

#include <array>
#include <limits>

namespace {

std::array<double, 6> niggliCell(const gemmi::UnitCell& cell, char cCentring)
{
    gemmi::GruberVector gruber(cell, cCentring);
    gruber.niggli_reduce(1e-3);
    return gruber.cell_parameters();
}

bool all(int, int, int)
{
    return true;
}

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
    const gemmi::UnitCell cell(9, 11, 13, 85, 95, 102);
    const QList<Peak3D> aList[] = {randomCloud(900, 3), randomCloud(60, 4),
                                   simulatedReflections(reciprocalBasis(cell), 0.55, 1e-3, all)};
    for (const QList<Peak3D>& list : aList) {
        const QList<Peak3D> listFast = calDifferenceVectors(list, 1 / 1.5f, 1 / 30.f, report);
        const QList<Peak3D> listPlain = plainDifferenceVectors(list, 1 / 1.5f, 1 / 30.f, 300000);
        ASSERT_EQ(listFast.size(), listPlain.size());
        EXPECT_EQ(listFast.size() == 300000, list.size() > 700);
        EXPECT_TRUE(bitsOf(listFast) == bitsOf(listPlain));
    }
}

TEST(DifferenceVectors, LimitsAreIncluded)
{
    CRunReport report;
    const QList<Peak3D> list = {vectorRecord(0, 0, 0), vectorRecord(0.25f, 0, 0), vectorRecord(0.75f, 0, 0)};
    const QList<Peak3D> listVector = calDifferenceVectors(list, 0.5f, 0.25f, report);
    ASSERT_EQ(listVector.size(), 4);
    EXPECT_EQ(listVector[0].fX3D, -0.25f);
    EXPECT_EQ(listVector[1].fX3D, 0.25f);
    EXPECT_EQ(listVector[2].dfDStar, 0.5);
    EXPECT_TRUE(calDifferenceVectors({}, 1, 0, report).isEmpty());
}

TEST(AveragedVectors, AreThoseOfThePlainWalkToTheLastBit)
{
    CRunReport report;
    const gemmi::UnitCell cell(8, 10, 12, 85, 95, 102);
    const QList<Peak3D> listLattice = simulatedReflections(reciprocalBasis(cell), 0.3, 2e-3, all);
    const auto wholeNumbers = [](QList<Peak3D> list, double dfFactor) {
        for (Peak3D& peak : list)
            peak.dfIPoint *= dfFactor;
        return list;
    };
    const QList<Peak3D> aList[] = {
        randomCloud(6000, 7), calDifferenceVectors(listLattice, 1 / 3.f, 1 / 30.f, report),
        wholeNumbers(calDifferenceVectors(listLattice, 1 / 3.f, 1 / 30.f, report), 1.0 / 3),  // no floats
    };
    for (const QList<Peak3D>& list : aList)
        for (float fTolerance : {0.01f, 0.03f, 0.3f, 0.f}) {
            if (fTolerance > 0.1f && list.size() > 10000)
                continue;  // the plain walk would take minutes
            const QList<Peak3D> listFast = averageDifferenceVectors(list, fTolerance, report);
            const QList<Peak3D> listPlain = plainAveragedVectors(list, fTolerance);
            ASSERT_EQ(listFast.size(), listPlain.size()) << fTolerance << " " << list.size();
            EXPECT_TRUE(bitsOf(listFast) == bitsOf(listPlain)) << fTolerance << " " << list.size();
        }
}

TEST(AveragedVectors, StrangeInputEndsInSomeList)
{
    CRunReport report;
    const float fNaN = std::numeric_limits<float>::quiet_NaN();
    const float fInf = std::numeric_limits<float>::infinity();
    QList<Peak3D> list = randomCloud(50, 1);
    for (float f : {fNaN, fInf, -fInf, 1e30f, -1e30f})
        list.append({vectorRecord(f, 0, 0), vectorRecord(0.1f, f, f)});
    list.append(vectorRecord(1e6f, 1e6f, -1e6f));
    EXPECT_GT(averageDifferenceVectors(list, 0.01f, report).size(), 0);
    for (Peak3D& peak : list)
        peak.dfIPoint = 0;
    averageDifferenceVectors(list, 0.01f, report);
    EXPECT_TRUE(averageDifferenceVectors({}, 0.01f, report).isEmpty());
    const QList<Peak3D> listVector = calDifferenceVectors(list, 1, 0.01f, report);
    for (const Peak3D& peak : listVector)
        EXPECT_TRUE(std::isfinite(peak.fX3D));
}

TEST(BasisVectors, AreShortestAcuteAndRightHanded)
{
    // A third vector of the wrong hand exchanges b and c.
    QList<Vec3D> list = findBasisVectors({vectorRecord(0.1f, 0, 0), vectorRecord(-0.1f, 0, 0),
                                          vectorRecord(-0.02f, 0, 0.15f), vectorRecord(0.02f, -0.2f, 0.01f)});
    ASSERT_EQ(list.size(), 3);
    EXPECT_EQ(list[0], Vec3D({0.1f, 0, 0}));
    EXPECT_EQ(list[1], Vec3D({0.02f, -0.2f, 0.01f}));
    EXPECT_EQ(list[2], Vec3D({0.02f, 0, -0.15f}));
    EXPECT_GT(dot(cross(list[0], list[1]), list[2]), 0);

    list =
        findBasisVectors({vectorRecord(0.1f, 0, 0), vectorRecord(0, 0.2f, 0), vectorRecord(0.1f, 0.2f, 0)});
    EXPECT_EQ(list.size(), 2);  // one plane
    list = findBasisVectors({vectorRecord(0.1f, 0, 0), vectorRecord(0.2f, 0, 0), vectorRecord(-0.3f, 0, 0)});
    ASSERT_EQ(list.size(), 2);  // one line: the last one tried, as it stands
    EXPECT_EQ(list[1], Vec3D({-0.3f, 0, 0}));
    EXPECT_TRUE(findBasisVectors({vectorRecord(0.1f, 0, 0), vectorRecord(0, 0.2f, 0)}).isEmpty());
}

TEST(CellHunting, FindsTheReducedCellOfSimulatedCrystals)
{
    const struct {
        double a, b, c, al, be, ga;
        char cCentring;
        double dfNoise;
    } aRow[] = {{7.3, 9.1, 12.4, 81, 77, 68, 'P', 0},      {7.3, 9.1, 12.4, 81, 77, 68, 'P', 1.5e-3},
                {11.2, 7.7, 14.3, 90, 106, 90, 'C', 1e-3}, {10.9, 10.9, 10.9, 90, 90, 90, 'F', 1e-3},
                {9.2, 10.4, 15.1, 90, 90, 90, 'I', 1e-3},  {5.2, 5.2, 14.1, 90, 90, 120, 'P', 1e-3}};
    for (const auto& row : aRow) {
        const gemmi::UnitCell cell(row.a, row.b, row.c, row.al, row.be, row.ga);
        const auto allowed = [&](int h, int k, int l) {
            const bool bSame = (h + k) % 2 == 0 && (k + l) % 2 == 0;
            return row.cCentring == 'C'   ? (h + k) % 2 == 0
                   : row.cCentring == 'I' ? (h + k + l) % 2 == 0
                                          : row.cCentring == 'P' || bSame;
        };
        DataSet data;
        CRunLog log;
        const QList<Peak3D> list = simulatedReflections(reciprocalBasis(cell), 0.6, row.dfNoise, allowed);
        ASSERT_TRUE(runUnitCellHunting(data, list, CellHuntingParameters(), log, false));
        ASSERT_EQ(data.m_listCell.size(), 3);
        EXPECT_TRUE(data.m_listCell == data.m_listCellFound);
        EXPECT_GT(dot(cross(data.m_listCell[0], data.m_listCell[1]), data.m_listCell[2]), 0);
        double a, b, c, al, be, ga;
        ASSERT_TRUE(cellParametersFromList(data.m_listCell, a, b, c, al, be, ga));
        const std::array<double, 6> aFound = niggliCell(gemmi::UnitCell(a, b, c, al, be, ga), 'P');
        const std::array<double, 6> aTruth = niggliCell(cell, row.cCentring);
        for (size_t n = 0; n < 3; ++n)
            EXPECT_NEAR(aFound[n], aTruth[n], 0.01 * aTruth[n]) << row.cCentring << row.a;
        // Noise moves the angles of a centred cell between equivalent reduced cells; but each vector must be
        // an allowed reflection, and the three must span the whole lattice, no more and no less.
        const QList<Vec3D> listTruth = reciprocalBasis(cell);
        CBasisSolver solver;
        solver.setBasis(listTruth[0], listTruth[1], listTruth[2]);
        gemmi::Mat33 matIndex;
        for (int n = 0; n < 3; ++n) {
            const Vec3D hkl = solver.solve(data.m_listCell[n]);
            EXPECT_TRUE(isCloseToInteger(hkl, 0.03f)) << row.cCentring << row.a;
            EXPECT_TRUE(
                allowed(roundIndex(double(hkl.x)), roundIndex(double(hkl.y)), roundIndex(double(hkl.z))));
            matIndex[n][0] = roundedIndex(double(hkl.x));
            matIndex[n][1] = roundedIndex(double(hkl.y));
            matIndex[n][2] = roundedIndex(double(hkl.z));
        }
        EXPECT_EQ(matIndex.determinant(), row.cCentring == 'P' ? 1 : row.cCentring == 'F' ? 4 : 2);
        ASSERT_EQ(log.m_listLine.size(), 4);
        EXPECT_TRUE(log.m_listLine[0].endsWith(">Calculating difference vectors..."));
        EXPECT_TRUE(log.m_listLine[3].contains("Found unit cell: a="));
        EXPECT_EQ(log.m_listColor[1], Qt::blue);
    }
}

TEST(CellHunting, OnePlaneGetsAThirdAxisAtRightAngles)
{
    const QList<Vec3D> listBasis = reciprocalBasis(gemmi::UnitCell(8, 11, 5, 90, 90, 100));
    DataSet data;
    CRunLog log;
    ASSERT_TRUE(runUnitCellHunting(
        data, simulatedReflections(listBasis, 0.7, 0, [](int, int, int l) { return l == 0; }),
        CellHuntingParameters(), log, false));
    EXPECT_NEAR(length(data.m_listCell[2] - cross(data.m_listCell[0], data.m_listCell[1])), 0, 1e-9);
}

TEST(CellHunting, WithoutAResultTheFormerCellStays)
{
    DataSet data;
    data.m_listCell = data.m_listCellFound = reciprocalBasis(gemmi::UnitCell(5, 6, 7, 90, 90, 90));
    const QList<Vec3D> listBefore = data.m_listCell;
    const QList<Peak3D> listLattice = simulatedReflections(listBefore, 0.6, 0, all);
    QList<Peak3D> listDark = listLattice;
    for (Peak3D& peak : listDark)
        peak.dfIPoint = 0;
    CRunLog logStop;
    logStop.m_nStopAfter = 2;
    const struct {
        QList<Peak3D> list;
        CRunLog log;
        const char* szLine;
    } aRow[] = {{{}, CRunLog(), "> No reflections were selected for unit cell hunting."},
                {listLattice.mid(0, 2), CRunLog(), "Unit cell not found."},
                {listDark, CRunLog(), "Unit cell not found."},
                {listLattice, logStop, ">Calculating difference vectors..."}};
    for (auto row : aRow) {
        EXPECT_FALSE(runUnitCellHunting(data, row.list, CellHuntingParameters(), row.log, true));
        EXPECT_TRUE(row.log.m_listLine.last().endsWith(row.szLine)) << row.szLine;
        EXPECT_TRUE(data.m_listCell == listBefore && data.m_listCellFound == listBefore);
    }
}

TEST(Selection, TakesTheReflectionsWhoseIDTheGroupShows)
{
    const auto withID = [](int nID) {
        Peak3D peak;
        peak.nID = nID;
        return peak;
    };
    const QList<Peak3D> listMerged = {withID(7), withID(0), withID(3), withID(2000000000)};
    const QList<Peak3D> listView = {withID(3), withID(-4), withID(5), withID(7), withID(0)};
    QList<Peak3D> list;
    CRunLog log;
    ASSERT_TRUE(selectReflectionsForProcessing(listMerged, listView, {0, 1, 2, 3, 99, -1}, list, log));
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(list[0].nID, 7);
    EXPECT_EQ(list[1].nID, 3);
    EXPECT_EQ(log.m_listLine, QStringList("ID: -4 out of range."));
    EXPECT_FALSE(selectReflectionsForProcessing(listMerged, {}, {0}, list, log));
    EXPECT_EQ(list.size(), 2);
}
