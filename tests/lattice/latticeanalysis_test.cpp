// What the look at a lattice says of points whose lattice is known.
#include "lattice/latticeanalysis.h"

#include "lattice/knowncell.h"
#include "tests/lattice/simulatedpoints.h"

#include <gtest/gtest.h>

namespace tessera {
namespace {

const double g_dfReach = 0.6;     // Å⁻¹
const double g_dfError = 0.0015;  // Å⁻¹

/// A body-centred cubic lattice as a search would give it: primitive, or in conventional axes.
struct Garnet {
    LatticeBasis conventional;
    LatticeBasis primitive;
    LatticePoints listPoint;

    explicit Garnet(CSimulatedPoints& points)
    {
        conventional = *basisOfCell({11.459, 11.459, 11.459, 90, 90, 90}) * points.rotation();
        Eigen::Matrix3d mat;
        mat << -0.5, 0.5, 0.5, 0.5, -0.5, 0.5, 0.5, 0.5, -0.5;
        primitive = mat * conventional;
        listPoint = points.reflections(conventional, g_dfReach, g_dfError,
                                       [](int h, int k, int l) { return (h + k + l) % 2 == 0 ? 0.7 : 0.0; });
    }
};

bool isCubeOf(const LatticeBasis& basis, double dfEdge)
{
    const CellParameters cell = cellOf(basis);
    const auto numbers = cell.numbers();
    return std::all_of(numbers.begin(), numbers.begin() + 3,
                       [&](double df) { return std::abs(df - dfEdge) < 1e-3 * dfEdge; }) &&
           std::all_of(numbers.begin() + 3, numbers.end(), [](double df) { return std::abs(df - 90) < 0.1; });
}

}  // namespace

// Whichever axes the cell in force has, its matrix leads to the same conventional cell.
TEST(LatticeAnalysis, TransformationsBelongToTheCellInForce)
{
    CSimulatedPoints points(51);
    const Garnet garnet(points);
    Eigen::Matrix3d matOther;
    matOther << 1, 1, 0, 0, 1, -1, 0, 0, 1;
    for (const LatticeBasis& basis :
         {garnet.primitive, garnet.conventional, LatticeBasis(matOther * garnet.conventional)}) {
        const LatticeAnalysis analysis = analyseLattice(basis, garnet.listPoint);
        ASSERT_TRUE(analysis.proposed);
        EXPECT_EQ(bravaisSymbol(analysis.proposed->symmetry).toStdString(), "cI");
        EXPECT_TRUE(isCubeOf(analysis.proposed->matTransform * basis, 11.459));
        EXPECT_NEAR(std::abs(analysis.proposed->matTransform.determinant()),
                    basis == garnet.primitive ? 2 : 1, 1e-6);
        // every type of the list is a cell of the lattice
        for (const LatticeType& type : analysis.listType) {
            const Eigen::Matrix3d mat = type.matTransform * basis * garnet.primitive.inverse();
            EXPECT_LT((mat - mat.array().round().matrix()).cwiseAbs().maxCoeff(), 1e-2);
        }
        EXPECT_EQ(analysis.lattices.listLattice.size(), 1U);
        EXPECT_EQ(analysis.shareOfOthers(), 0);
        const QString strSaid = tellWholeLattice(analysis.whole).join('\n');
        EXPECT_EQ(strSaid.isEmpty(), basis == garnet.primitive) << strSaid.toStdString();
        EXPECT_TRUE(tellFurtherLattices(analysis.lattices).isEmpty());
    }
}

TEST(LatticeAnalysis, ATwinIsToldWithItsShareAndTurn)
{
    CSimulatedPoints points(52);
    const LatticeBasis first = *basisOfCell({7.3, 9.1, 11.6, 90, 90, 90}) * points.rotation();
    const LatticeBasis second = first *
                                Eigen::AngleAxisd(0.6, Eigen::Vector3d(2, 1, -2) / 3).toRotationMatrix();
    const LatticePoints listFirst = points.reflections(first, g_dfReach, g_dfError, seen(0.7));
    const LatticePoints listSecond = points.reflections(second, g_dfReach, g_dfError, seen(0.4));
    const LatticePoints listPoint = joined(listFirst, listSecond);
    const LatticeAnalysis analysis = analyseLattice(first, listPoint);
    ASSERT_EQ(analysis.lattices.listLattice.size(), 2U);
    const double dfShare = double(listSecond.size()) / double(listPoint.size());
    EXPECT_NEAR(analysis.shareOfOthers(), dfShare, 0.1 * dfShare);
    const QStringList listLine = tellFurtherLattices(analysis.lattices);
    ASSERT_EQ(listLine.size(), 1);
    EXPECT_TRUE(listLine[0].contains(QString::fromUtf8("turned by 34.3"))) << listLine[0].toStdString();
    // a stop leaves the rest as it is
    const LatticeAnalysis stopped = analyseLattice(first, listPoint, {}, [] { return false; });
    EXPECT_EQ(stopped.lattices.listLattice.size(), 1U);
    ASSERT_TRUE(stopped.proposed);
    ASSERT_TRUE(analysis.proposed);
    EXPECT_EQ(bravaisSymbol(stopped.proposed->symmetry), bravaisSymbol(analysis.proposed->symmetry));
}

TEST(LatticeAnalysis, BetweenThePointsLiesALongerCell)
{
    CSimulatedPoints points(53);
    const LatticeBasis longer = *basisOfCell({6.2, 8.3, 20.8, 90, 90, 90}) * points.rotation();
    LatticeBasis average = longer;
    average.row(2) /= 2;
    const LatticePoints listPoint = points.reflections(
        longer, g_dfReach, g_dfError, [](int, int, int l) { return l % 2 == 0 ? 0.8 : 0.25; });
    const LatticeAnalysis analysis = analyseLattice(average, listPoint);
    ASSERT_EQ(analysis.whole.listTaken.size(), 1U);
    EXPECT_TRUE(isOneLattice(analysis.whole.matBasis, longer));
    EXPECT_TRUE(tellWholeLattice(analysis.whole).join('\n').contains("(0, 0, 1/2)"));
    // the types are of the cell in force, which the longer one is to replace by a choice
    EXPECT_TRUE(isOneLattice(analysis.proposed->matTransform * average, average));
}

TEST(LatticeAnalysis, WithoutPointsTheCellSpeaksForItself)
{
    const LatticeAnalysis analysis = analyseLattice(*basisOfCell({5, 5, 8, 90, 90, 120}), {});
    ASSERT_TRUE(analysis.proposed);
    EXPECT_EQ(bravaisSymbol(analysis.proposed->symmetry).toStdString(), "hP");
    EXPECT_TRUE(tellWholeLattice(analysis.whole).isEmpty());
    EXPECT_EQ(analysis.shareOfOthers(), 0);
}

}  // namespace tessera
