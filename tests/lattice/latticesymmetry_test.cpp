// Bravais types of lattices whose truth is known, in settings that hide it.
#include "geometry/angles.h"
#include "lattice/conventionalsetting.h"
#include "lattice/symmetrytable.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <random>

namespace tessera {
namespace {

LatticeBasis basisOf(const CellParameters& cell)
{
    Eigen::Matrix3d metric;
    const double dfAB = cell.a * cell.b * std::cos(radians(cell.gamma));
    const double dfAC = cell.a * cell.c * std::cos(radians(cell.beta));
    const double dfBC = cell.b * cell.c * std::cos(radians(cell.alpha));
    metric << cell.a * cell.a, dfAB, dfAC, dfAB, cell.b * cell.b, dfBC, dfAC, dfBC, cell.c * cell.c;
    return metric.llt().matrixL();
}

/// Rows of a primitive cell along the conventional axes: International Tables A, table 5.1.3.1.
Eigen::Matrix3d primitiveRows(char chCentring)
{
    Eigen::Matrix3d mat = Eigen::Matrix3d::Identity();
    if (chCentring == 'C') {
        mat << 0.5, 0.5, 0, -0.5, 0.5, 0, 0, 0, 1;
    } else if (chCentring == 'I') {
        mat << -0.5, 0.5, 0.5, 0.5, -0.5, 0.5, 0.5, 0.5, -0.5;
    } else if (chCentring == 'F') {
        mat << 0, 0.5, 0.5, 0.5, 0, 0.5, 0.5, 0.5, 0;
    } else if (chCentring == 'R') {
        mat << 2, 1, 1, -1, 1, 1, -1, -2, 1;
        mat /= 3;
    }
    return mat;
}

const char* const g_apszSymbol[] = {"aP", "mP", "mC", "oP", "oC", "oI", "oF",
                                    "tP", "tI", "hR", "hP", "cP", "cI", "cF"};

class CLatticeMaker {
public:
    explicit CLatticeMaker(unsigned nSeed) : m_random(nSeed) {}

    double uniform(double dfLow, double dfHigh)
    {
        return dfLow + (dfHigh - dfLow) * (double(m_random()) + 0.5) / 4294967296.0;
    }

    CellParameters cell(const QString& strSymbol)
    {
        CellParameters cell{uniform(4, 30), uniform(4, 30), uniform(4, 30), 90, 90, 90};
        const QChar chFamily = strSymbol.at(0);
        if (chFamily == 'a') {
            cell.alpha = uniform(70, 110);
            cell.beta = uniform(70, 110);
            cell.gamma = uniform(70, 110);
        } else if (chFamily == 'm') {
            cell.beta = uniform(91, 120);
        } else if (chFamily == 't' || chFamily == 'h') {
            cell.b = cell.a;
            cell.gamma = chFamily == 'h' ? 120 : 90;
        } else if (chFamily == 'c') {
            cell.b = cell.c = cell.a;
        }
        return cell;
    }

    Eigen::Matrix3d turn()
    {
        const Eigen::Vector4d v(uniform(-1, 1), uniform(-1, 1), uniform(-1, 1), uniform(-1, 1));
        return Eigen::Quaterniond(v).normalized().toRotationMatrix();
    }

    /// Integers with the determinant 1.
    Eigen::Matrix3d setting()
    {
        Eigen::Matrix3d mat = Eigen::Matrix3d::Identity();
        for (int n = 0; n < 6; ++n) {
            const int nRow = int(m_random() % 3);
            mat.row(nRow) += (m_random() % 2 == 0 ? 1 : -1) * mat.row((nRow + 1 + int(m_random() % 2)) % 3);
        }
        return mat;
    }

    /// Identity but for errors in each element.
    Eigen::Matrix3d strain(double dfError)
    {
        std::normal_distribution<double> normal(0, dfError);
        return Eigen::Matrix3d::Identity() + Eigen::Matrix3d::NullaryExpr([&] { return normal(m_random); });
    }

private:
    std::mt19937 m_random;
};

/// Whether the conventional basis spans the very cell that the lattice was made of: whole numbers lead from
/// one to the other.
bool isCellOf(const LatticeSymmetry& symmetry, const LatticeBasis& conventional)
{
    const Eigen::Matrix3d mat = symmetry.basisMeasured * conventional.inverse();
    const Eigen::Matrix3d matWhole = mat.array().round();
    return (mat - matWhole).cwiseAbs().maxCoeff() < 1e-6 && std::abs(matWhole.determinant() - 1) < 1e-6;
}

/// Of the edges, whatever their order.
double worstRatio(const CellParameters& cell, const CellParameters& other)
{
    std::array<double, 3> aEdge = {cell.a, cell.b, cell.c};
    std::array<double, 3> aOther = {other.a, other.b, other.c};
    std::sort(aEdge.begin(), aEdge.end());
    std::sort(aOther.begin(), aOther.end());
    double dfWorst = 0;
    for (size_t n = 0; n < 3; ++n) {
        dfWorst = std::max(dfWorst, std::abs(aEdge[n] / aOther[n] - 1));
    }
    return dfWorst;
}

struct Tally {
    int nCells = 0, nListed = 0, nProposed = 0, nHigher = 0, nLower = 0;
};

/// Lattices of all types with errors, each element of the strain with this standard deviation.
std::map<QString, Tally> tallyOfTypes(int nCells, double dfError, const SymmetryLimits& limits)
{
    CLatticeMaker maker(7);
    std::map<QString, Tally> mapTally;
    for (int n = 0; n < nCells; ++n) {
        const QString strSymbol = QString::fromLatin1(g_apszSymbol[n % 14]);
        const CellParameters truth = maker.cell(strSymbol);
        const LatticeBasis conventional = basisOf(truth) * maker.turn() * maker.strain(dfError);
        const LatticeBasis basis = maker.setting() * primitiveRows(strSymbol.at(1).toLatin1()) * conventional;
        const auto isTrue = [&](const LatticeSymmetry& symmetry) {
            // Edges across a twofold axis can be chosen in several ways.
            const bool bUnique = strSymbol.at(0) != 'a' && strSymbol.at(0) != 'm';
            return bravaisSymbol(symmetry) == strSymbol && isCellOf(symmetry, conventional) &&
                   (!bUnique || worstRatio(truth, symmetry.cellConstrained) < 5 * dfError);
        };
        const auto list = latticeSymmetries(basis, limits);
        const auto proposed = proposedSymmetry(list, {100 * dfError, degrees(dfError * std::sqrt(2))});
        Tally& tally = mapTally[strSymbol];
        ++tally.nCells;
        const auto it = std::find_if(list.begin(), list.end(), isTrue);
        if (it == list.end() || !proposed) {
            continue;
        }
        ++tally.nListed;
        tally.nProposed += isTrue(*proposed) ? 1 : 0;
        tally.nHigher += proposed->nRotations > it->nRotations ? 1 : 0;
        tally.nLower += proposed->nRotations < it->nRotations ? 1 : 0;
    }
    return mapTally;
}

// Of 1000 lattices a few lie by chance within three standard deviations of a higher symmetry, and a few
// errors are larger than that.
TEST(LatticeSymmetry, TrueTypeIsListedAndProposedForRandomLatticesWithErrors)
{
    Tally sum;
    for (const auto& [strSymbol, tally] : tallyOfTypes(1008, 0.003, {5, 5, 5})) {
        EXPECT_EQ(tally.nListed, tally.nCells) << qPrintable(strSymbol);
        EXPECT_GE(tally.nProposed, 0.88 * tally.nCells) << qPrintable(strSymbol);
        sum.nCells += tally.nCells;
        sum.nProposed += tally.nProposed;
        sum.nHigher += tally.nHigher;
        sum.nLower += tally.nLower;
    }
    std::printf("%d lattices: proposed the true type for %d, a higher one for %d, a lower one for %d\n",
                sum.nCells, sum.nProposed, sum.nHigher, sum.nLower);
    EXPECT_GT(sum.nProposed, 0.95 * sum.nCells);
    EXPECT_LT(sum.nLower, 0.02 * sum.nCells);
    // Errors of 2 % move a cell by several degrees; the limits have to let it through.
    for (const auto& [strSymbol, tally] : tallyOfTypes(280, 0.02, {15, 15, 15})) {
        EXPECT_EQ(tally.nListed, tally.nCells) << qPrintable(strSymbol);
    }
}

std::vector<LatticeSymmetry> symmetriesOf(const CellParameters& cell, const SymmetryLimits& limits)
{
    return latticeSymmetries(basisOf(cell), limits);
}

int count(const std::vector<LatticeSymmetry>& list, const QString& strSymbol)
{
    return int(std::count_if(list.begin(), list.end(), [&](const LatticeSymmetry& symmetry) {
        return bravaisSymbol(symmetry) == strSymbol;
    }));
}

// The point group 432 has three subgroups 422, four 32, one 222 along the edges and three across, and nine
// twofold axes; each gives a lattice, of a kind that depends on the centring.
TEST(LatticeSymmetry, CubicLatticeHasTheLatticesOfAllSubgroups)
{
    const auto listP = symmetriesOf({6, 6, 6, 90, 90, 90}, {0.1, 0.1, 0.1});
    EXPECT_EQ(listP.size(), 22U);
    const std::map<QString, int> mapP = {{"cP", 1}, {"tP", 3}, {"hR", 4}, {"oP", 1},
                                         {"oC", 3}, {"mP", 3}, {"mC", 6}, {"aP", 1}};
    for (const auto& [strSymbol, nCount] : mapP) {
        EXPECT_EQ(count(listP, strSymbol), nCount) << qPrintable(strSymbol);
    }
    EXPECT_EQ(bestOfEachType(listP).size(), mapP.size());
    const auto listF = symmetriesOf({6, 6, 6, 60, 60, 60}, {0.1, 0.1, 0.1});
    EXPECT_EQ(bravaisSymbol(listF.front()), "cF");
    EXPECT_NEAR(listF.front().cellMeasured.a, 6 * std::sqrt(2), 1e-9);
    EXPECT_EQ(count(listF, "tI"), 3);
    EXPECT_EQ(count(listF, "hR"), 4);
    EXPECT_EQ(count(listF, "oF"), 1);
    EXPECT_EQ(count(listF, "oI"), 3);
}

// Cells as indexing gives them, of crystals whose symmetry is known.
TEST(LatticeSymmetry, MeasuredCellsListTheSymmetryOfTheirCrystals)
{
    const auto listGarnet = symmetriesOf({10.39, 10.44, 10.46, 108.5, 109.5, 110}, {3, 1.5, 1.5});
    ASSERT_FALSE(listGarnet.empty());
    EXPECT_EQ(bravaisSymbol(listGarnet.front()), "cI");
    EXPECT_NEAR(listGarnet.front().cellConstrained.a, 10.43 * 2 / std::sqrt(3), 0.05);
    for (size_t n = 1; n < listGarnet.size(); ++n) {
        EXPECT_GE(listGarnet[n - 1].nRotations, listGarnet[n].nRotations);
    }
    const auto listLysozyme = symmetriesOf({38.1, 77.4, 78.9, 90.8, 89, 91.2}, {2, 2, 2});
    ASSERT_FALSE(listLysozyme.empty());
    EXPECT_EQ(bravaisSymbol(listLysozyme.front()), "tP");
    EXPECT_NEAR(listLysozyme.front().cellConstrained.a, std::sqrt((77.4 * 77.4 + 78.9 * 78.9) / 2), 1e-6);
    EXPECT_NEAR(listLysozyme.front().dfMisfitAngles, 1.2, 1e-6);
    EXPECT_EQ(bravaisSymbol(*proposedSymmetry(listLysozyme, {0.4, 0.5})), "tP");
    EXPECT_EQ(bravaisSymbol(*proposedSymmetry(listLysozyme, {0.2, 0.5})), "oP");
    EXPECT_EQ(bravaisSymbol(*proposedSymmetry(listLysozyme, {0.2, 0.1})), "aP");
    EXPECT_FALSE(proposedSymmetry({}, {1, 1}));
}

/// Whether the numbers of a constrained cell are those of its system, in their standard order.
bool isStandard(const LatticeSymmetry& symmetry)
{
    const CellParameters& cell = symmetry.cellConstrained;
    const auto isNear = [](double df, double dfOther) { return std::abs(df - dfOther) < 1e-9 * dfOther; };
    const bool bRight = isNear(cell.alpha, 90) && isNear(cell.beta, 90) && isNear(cell.gamma, 90);
    const double dfOne = 1 + 1e-9;
    switch (symmetry.system) {
        case LatticeSystem::Monoclinic:
            return isNear(cell.alpha, 90) && isNear(cell.gamma, 90) && cell.beta > 90 - 1e-9 &&
                   cell.beta < 121 && (symmetry.chCentring == 'C' || cell.a < cell.c * dfOne);
        case LatticeSystem::Orthorhombic:
            return bRight && cell.a < cell.b * dfOne &&
                   (symmetry.chCentring == 'C' || cell.b < cell.c * dfOne);
        case LatticeSystem::Tetragonal:
            return bRight && isNear(cell.a, cell.b);
        case LatticeSystem::Cubic:
            return bRight && isNear(cell.a, cell.b) && isNear(cell.b, cell.c);
        case LatticeSystem::Triclinic:
            return (cell.alpha < 90 && cell.beta < 90 && cell.gamma < 90) ||
                   (cell.alpha >= 90 - 1e-3 && cell.beta >= 90 - 1e-3 && cell.gamma >= 90 - 1e-3);
        default:
            return isNear(cell.a, cell.b) && isNear(cell.alpha, 90) && isNear(cell.beta, 90) &&
                   isNear(cell.gamma, 120);
    }
}

// The vectors of the primitive cell that the centring has by the tables, obverse setting included, must be a
// basis of the lattice.
TEST(LatticeSymmetry, CellsAreStandardAndHoldTheWholeLattice)
{
    CLatticeMaker maker(11);
    for (int n = 0; n < 140; ++n) {
        const QString strSymbol = QString::fromLatin1(g_apszSymbol[n % 14]);
        const LatticeBasis basis = maker.setting() * primitiveRows(strSymbol.at(1).toLatin1()) *
                                   basisOf(maker.cell(strSymbol)) * maker.turn() * maker.strain(0.005);
        const double dfHand = n % 2 == 0 ? 1 : -1;
        for (const LatticeSymmetry& symmetry : latticeSymmetries(dfHand * basis, {5, 5, 5})) {
            SCOPED_TRACE(qPrintable(symmetryTable({symmetry}).last()));
            const Eigen::Matrix3d mat = primitiveRows(symmetry.chCentring) *
                                        symmetry.matTransform.cast<double>();
            EXPECT_LT((mat - mat.array().round().matrix()).norm(), 1e-9);
            EXPECT_NEAR(mat.determinant(), dfHand, 1e-9);
            EXPECT_GT(symmetry.basisMeasured.determinant(), 0);
            EXPECT_TRUE(isStandard(symmetry));
            EXPECT_LT((symmetry.basisConstrained - symmetry.basisMeasured).norm(),
                      0.06 * symmetry.basisMeasured.norm());
        }
    }
}

TEST(LatticeSymmetry, WhatSpansNoCellHasNoSymmetry)
{
    const LatticeBasis box = LatticeBasis::Identity();
    const double dfNaN = std::numeric_limits<double>::quiet_NaN();
    LatticeBasis flat = 5 * box;
    flat.row(2) = flat.row(0) + flat.row(1);
    flat(2, 2) += 1e-7;
    LatticeBasis infinite = box;
    infinite(1, 2) = std::numeric_limits<double>::infinity();
    for (const LatticeBasis& basis :
         {LatticeBasis(0 * box), LatticeBasis(1e-3 * box), LatticeBasis(1e6 * box), LatticeBasis(dfNaN * box),
          flat, infinite, LatticeBasis(1e-200 * box)}) {
        EXPECT_TRUE(latticeSymmetries(basis).empty());
    }
    // Needles and plates fit many oblique axes; the list stays one of lattices.
    CLatticeMaker maker(3);
    for (int n = 0; n < 100; ++n) {
        const LatticeBasis basis = LatticeBasis::NullaryExpr(
            [&] { return std::pow(10, maker.uniform(-1.5, 5)) * maker.uniform(-1, 1); });
        for (const LatticeSymmetry& symmetry : latticeSymmetries(basis, {10, 100, 100})) {
            EXPECT_TRUE(isStandard(symmetry)) << qPrintable(symmetryTable({symmetry}).last());
        }
    }
}

TEST(LatticeSymmetry, WindowsMatrixAndBasisLeadToTheConventionalCell)
{
    const LatticeBasis primitive = primitiveRows('I') * basisOf({7.1, 7.15, 9.3, 90.3, 89.8, 90.2});
    const ReciprocalBasis basis = reciprocalBasisOf(primitive);
    const LatticeSymmetry symmetry = latticeSymmetries(primitive).front();
    ASSERT_EQ(bravaisSymbol(symmetry), "tI");
    const LatticeBasis direct = latticeBasisOf(inConventionalSetting(basis, symmetry));
    EXPECT_LT((direct - symmetry.basisMeasured).norm(), 1e-5);
    CRecordingReport report;
    for (const TransformationSpace space : {TransformationSpace::Real, TransformationSpace::Reciprocal}) {
        const auto found = transformUnitCell(basis, transformationMatrix(symmetry, space), space, report);
        ASSERT_TRUE(found);
        EXPECT_LT((latticeBasisOf(*found) - symmetry.basisMeasured).norm(), 1e-5);
    }
}

TEST(LatticeSymmetry, TableHasALineForEachTypeAndIsPlainWithoutItsTags)
{
    const auto list = bestOfEachType(symmetriesOf({38.1, 77.4, 78.9, 90.8, 89, 91.2}, {2, 2, 2}));
    const QStringList listLine = symmetryTable(list, proposedSymmetry(list, {0.2, 0.5}));
    ASSERT_EQ(listLine.size(), 7);
    EXPECT_EQ(listLine[2],
              "*oP orthorhombic P   38.100   77.400   78.900  90.00  90.00  90.00"
              "      0.00      1.20      1.55  a, b, c");
    for (int n = 0; n < listLine.size(); ++n) {
        EXPECT_EQ(listLine[n].count('*'), n == 2 ? 1 : 0);
        EXPECT_EQ(listLine[n].lastIndexOf(QRegularExpression("  \\S")), listLine[0].indexOf("  new axes"));
    }
    QString strHtml = symmetryTableHtml(list, proposedSymmetry(list, {0.2, 0.5}));
    EXPECT_EQ(strHtml.remove(QRegularExpression("<[^>]*>")), listLine.join('\n'));
}

}  // namespace
}  // namespace tessera
