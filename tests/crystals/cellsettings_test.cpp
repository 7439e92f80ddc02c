// Settings of cells: as many as gemmi's search for the symmetry of a lattice finds, and whole indices.
#include "crystals/cellsettings.h"

#include "crystals/cellrelation.h"
#include "crystals/crystalgroups.h"

#define selling sellingOfThisTest  // not inline up to gemmi 0.5.7, so that two sources of a program clash
#include <gemmi/twin.hpp>
#undef selling

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace tessera {
namespace {

struct Lattice {
    const char* szName;
    CellParameters cell;
    char chCentring;
    size_t nRotations;
};

const Lattice g_aLattice[] = {
    {"triclinic", {5.57, 7.13, 7.85, 73.97, 89.98, 78.9}, 'P', 1},
    {"monoclinic P", {5.1, 7.3, 9.2, 90, 104, 90}, 'P', 2},
    {"monoclinic C", {9.74, 8.9, 5.25, 90, 105.9, 90}, 'C', 2},
    {"monoclinic I", {9.74, 8.9, 5.25, 90, 95.9, 90}, 'I', 2},
    {"orthorhombic P", {4.75, 10.2, 5.98, 90, 90, 90}, 'P', 4},
    {"orthorhombic F", {18.3, 18.9, 6.6, 90, 90, 90}, 'F', 4},
    {"orthorhombic A", {5.1, 7.3, 9.2, 90, 90, 90}, 'A', 4},
    {"tetragonal P", {7.84, 7.84, 5.01, 90, 90, 90}, 'P', 8},
    {"tetragonal I", {3.78, 3.78, 9.51, 90, 90, 90}, 'I', 8},
    {"hexagonal", {4.91, 4.91, 5.41, 90, 90, 120}, 'P', 12},
    {"rhombohedral", {4.99, 4.99, 17.06, 90, 90, 120}, 'R', 6},
    {"cubic P", {8.88, 8.88, 8.88, 90, 90, 90}, 'P', 24},
    {"cubic I", {11.46, 11.46, 11.46, 90, 90, 90}, 'I', 24},
    {"cubic F", {5.43, 5.43, 5.43, 90, 90, 90}, 'F', 24},
};

TEST(CellSettings, areTheRotationsOfTheLattice)
{
    for (const Lattice& lattice : g_aLattice) {
        const ReducedCell reduced = reducedCell(lattice.cell, lattice.chCentring);
        const std::vector<CellSetting> list = settingsBetween(reduced.basis, reduced.basis, {0.3, 0.3});
        EXPECT_EQ(list.size(), lattice.nRotations) << lattice.szName;
        const CellParameters& c = lattice.cell;
        const gemmi::UnitCell cell(c.a, c.b, c.c, c.alpha, c.beta, c.gamma);
        EXPECT_EQ(list.size(), gemmi::find_lattice_symmetry(cell, lattice.chCentring, 0.3).sym_ops.size())
            << lattice.szName;
        ASSERT_FALSE(list.empty());
        EXPECT_TRUE(list.front().matAxes.isIdentity()) << lattice.szName;
        std::set<std::vector<int>> setMatrix;
        for (const CellSetting& setting : list) {
            EXPECT_EQ(setting.matAxes.determinant(), 1);
            setMatrix.insert({setting.matAxes.data(), setting.matAxes.data() + 9});
        }
        EXPECT_EQ(setMatrix.size(), list.size());
    }
}

TEST(CellSettings, aReducedCellHasTheSameReflections)
{
    for (const Lattice& lattice : g_aLattice) {
        const ReducedCell reduced = reducedCell(lattice.cell, lattice.chCentring);
        const gemmi::GroupOps ops = gemmi::symops_from_hall(
            (std::string(1, lattice.chCentring) + " 1").c_str());
        const Eigen::Matrix3d matGiven = directBasisOf(lattice.cell).inverse(),
                              matReduced = reduced.basis.inverse();
        EXPECT_GT(reduced.basis.determinant(), 0);
        for (int n = 0; n < 343; ++n) {
            const Eigen::Vector3d vec(n / 49 - 3, n / 7 % 7 - 3, n % 7 - 3);
            const Eigen::Vector3d vecNew = reduced.matIndices * vec;
            EXPECT_NEAR((matReduced * vecNew).norm(), (matGiven * vec).norm(), 1e-9);
            const bool bWhole = (vecNew.array() - vecNew.array().round()).abs().maxCoeff() < 1e-6;
            EXPECT_EQ(bWhole, !ops.is_systematically_absent({int(vec[0]), int(vec[1]), int(vec[2])}))
                << lattice.szName << " " << vec.transpose();
        }
    }
    EXPECT_TRUE(reducedCell({5, 5, 5, 20, 20, 120}, 'P').basis.isZero());
    EXPECT_TRUE(reducedCell({0, 5, 5, 90, 90, 90}, 'P').basis.isZero());
}

/// Cells as they are measured: off by half a per cent, in any setting.
TEST(CellSettings, lieNearWhateverAMeasurementDoesToTheReduction)
{
    std::mt19937 random(5);
    std::normal_distribution<double> normal;
    for (const Lattice& lattice : g_aLattice) {
        const LatticeBasis basis = reducedCell(lattice.cell, lattice.chCentring).basis;
        for (int n = 0; n < 20; ++n) {
            LatticeBasis off = basis;
            for (int i = 0; i < 9; ++i) {
                off(i / 3, i % 3) += 0.005 * basis.row(i / 3).norm() * normal(random);
            }
            const LatticeBasis measured = reducedCell(cellOf(off), 'P').basis;
            const std::vector<CellSetting> list = settingsBetween(measured, basis);
            EXPECT_GE(list.size(), lattice.nRotations) << lattice.szName;
            EXPECT_LT(latticeDistance(measured, basis), 1) << lattice.szName;
            EXPECT_NEAR(latticeDistance(measured, basis), list.empty() ? 10 : list.front().misfit(), 1e-9);
        }
    }
    const LatticeBasis one = reducedCell(g_aLattice[0].cell, 'P').basis;
    EXPECT_GT(latticeDistance(one, reducedCell(g_aLattice[9].cell, 'P').basis), 1);
}

TEST(CellRelation, namesCellsThatHoldOthers)
{
    for (const Lattice& lattice : g_aLattice) {
        const LatticeBasis basis = reducedCell(lattice.cell, lattice.chCentring).basis;
        for (int nTimes = 2; nTimes <= 4; ++nTimes) {
            for (int nAxis = 0; nAxis < 3; ++nAxis) {
                LatticeBasis larger = basis;
                larger.row(nAxis) *= nTimes * 1.01;
                larger.row((nAxis + 1) % 3) += basis.row(nAxis);
                const LatticeBasis reduced = reducedCell(cellOf(larger), 'P').basis;
                const CellRelation relation = relationBetween(reduced, basis);
                EXPECT_EQ(relation.nTimes, nTimes) << lattice.szName << nAxis;
                EXPECT_TRUE(relation.bLarger);
                const CellRelation back = relationBetween(basis, reduced);
                EXPECT_EQ(back.nTimes, nTimes) << lattice.szName << nAxis;
                EXPECT_FALSE(back.bLarger);
            }
        }
        EXPECT_EQ(relationBetween(basis, basis).nTimes, 1);
    }
    const LatticeBasis quartz = reducedCell(g_aLattice[9].cell, 'P').basis,
                       kyanite = reducedCell(g_aLattice[0].cell, 'P').basis;
    EXPECT_EQ(relationBetween(quartz, kyanite).nTimes, 1);
}

/// One in 50 has a doubled edge, one another lattice, and one six numbers that span no cell.
TEST(CrystalGroups, tellWrongCellsWithTheirRelation)
{
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    std::vector<Crystal> listCrystal(50);
    for (Crystal& crystal : listCrystal) {
        crystal.cell = g_aLattice[2].cell;
        crystal.chCentring = 'C';
        crystal.cell.a *= 1 + 0.01 * normal(random);
        crystal.cell.b *= 1 + 0.01 * normal(random);
        crystal.cell.c *= 1 + 0.01 * normal(random);
        crystal.cell.beta += 0.5 * normal(random);
    }
    listCrystal[7].cell.c *= 2;
    listCrystal[20].cell = g_aLattice[9].cell;
    listCrystal[20].chCentring = 'P';
    listCrystal[30].cell.alpha = 10;
    listCrystal[40].chCentring = 'P';  // a centring that was missed
    const CrystalGroups groups = groupByCell(listCrystal);
    ASSERT_EQ(groups.listGroup.size(), 4u);
    EXPECT_EQ(groups.listGroup[0].listMember.size(), 46u);
    EXPECT_EQ(groups.listGroup[1].listMember, std::vector<int>{7});
    EXPECT_EQ(groups.listGroup[2].listMember, std::vector<int>{20});
    EXPECT_EQ(groups.listGroup[3].listMember, std::vector<int>{40});
    EXPECT_EQ(groups.listNoCell, std::vector<int>{30});
    EXPECT_EQ(groups.listInTree.size(), 49u);
    EXPECT_TRUE(groups.listGroup[0].strRelation.isEmpty());
    EXPECT_TRUE(
        groups.listGroup[1].strRelation.contains(QLatin1String("is 2 times as large as that of the group")));
    EXPECT_FALSE(groups.listGroup[2].strRelation.contains(QLatin1String("times")));
    EXPECT_TRUE(groups.listGroup[3].strRelation.contains(QLatin1String("2 times")));
}

}  // namespace
}  // namespace tessera
