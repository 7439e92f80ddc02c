// Orientations of known cells, against the rotation that the points were made with.
#include "lattice/knowncell.h"

#include "lattice/latticeturn.h"
#include "tests/lattice/simulatedpoints.h"

#include <gtest/gtest.h>

#include <limits>

namespace tessera {
namespace {

double turnOff(const LatticeBasis& truth, const LatticeBasis& found)
{
    const auto turn = turnBetween(truth, found, 0.08);
    return turn ? turn->dfAngle : 360;
}

struct KnownCase {
    const char* pszName;
    CellParameters cell;
    double dfMostDStar;
    double dfSeen;   // share of the reflections
    double dfNoise;  // points of noise by points of the crystal
    double dfScale;  // of the true edges, by the known ones
};

TEST(KnownCell, OrientationIsFoundAmongNoiseAndOffScale)
{
    const std::vector<KnownCase> listCase = {
        {"kyanite", {7.1262, 7.852, 5.5724, 89.99, 101.11, 106.03}, 0.9, 0.5, 0.2, 1},
        {"kyanite, few points, half noise", {7.1262, 7.852, 5.5724, 89.99, 101.11, 106.03}, 0.9, 0.08, 1, 1},
        {"garnet, scale off", {11.459, 11.459, 11.459, 90, 90, 90}, 0.9, 0.1, 0.3, 1.03},
        {"quartz", {4.916, 4.916, 5.4054, 90, 90, 120}, 1.0, 0.6, 0.3, 0.98},
        {"lysozyme", {79.1, 79.1, 37.9, 90, 90, 90}, 0.35, 0.05, 0.5, 1.01},
        {"thin plate of a long axis", {4.1, 6.2, 61, 90, 95, 90}, 0.6, 0.2, 0.5, 1},
    };
    CSimulatedPoints points(11);
    for (const KnownCase& one : listCase) {
        for (int nRun = 0; nRun < 3; ++nRun) {
            const LatticeBasis truth = one.dfScale * *basisOfCell(one.cell) * points.rotation();
            const double dfError = 0.02 / one.cell.c;
            LatticePoints listPoint = points.reflections(truth, one.dfMostDStar, dfError, seen(one.dfSeen));
            listPoint = joined(listPoint,
                               points.noise(int(one.dfNoise * double(listPoint.size())), one.dfMostDStar));
            const auto found = orientKnownCell(one.cell, listPoint);
            ASSERT_TRUE(found) << one.pszName << ' ' << listPoint.size();
            EXPECT_LT(turnOff(truth, found->matRotated), 0.5) << one.pszName << ' ' << listPoint.size();
            EXPECT_LT(turnOff(truth, found->matRefined), 0.5) << one.pszName;
            EXPECT_NEAR(found->dfScale, one.dfScale, 0.005) << one.pszName;
            EXPECT_GT(found->fitRefined.share(), 0.9 / (1 + one.dfNoise)) << one.pszName;
            // The metric of the cell is kept, in the order in which it was given.
            const auto aKept = cellOf(found->matRotated).numbers();
            const auto aRefined = cellOf(found->matRefined).numbers();
            for (size_t n = 0; n < 6; ++n) {
                EXPECT_NEAR(aKept[n], one.cell.numbers()[n], 1e-9) << one.pszName;
                const double dfScale = n < 3 ? one.dfScale : 1;
                EXPECT_NEAR(aRefined[n] / dfScale, one.cell.numbers()[n], 0.02 * one.cell.numbers()[n])
                    << one.pszName;
            }
            EXPECT_GT(found->matRotated.determinant(), 0) << one.pszName;
        }
    }
}

TEST(KnownCell, NoiseAndPointsThatTellNothingHaveNone)
{
    const CellParameters cell = {7.1262, 7.852, 5.5724, 89.99, 101.11, 106.03};
    CSimulatedPoints points(12);
    for (const int nPoints : {5, 12, 100, 1000, 5000}) {
        EXPECT_FALSE(orientKnownCell(cell, points.noise(nPoints, 0.9))) << nPoints;
    }
    EXPECT_FALSE(orientKnownCell({31, 42, 53, 91, 92, 93}, points.noise(1000, 0.9)));
    // The points of another crystal.
    const LatticeBasis other = *basisOfCell({9.6, 10.9, 6.3, 90, 90, 90}) * points.rotation();
    EXPECT_FALSE(orientKnownCell(cell, points.reflections(other, 0.5, 0.002, seen(0.7))));
    const double dfNaN = std::numeric_limits<double>::quiet_NaN();
    for (const LatticePoints& listPoint :
         {LatticePoints(), LatticePoints(50, Eigen::Vector3d::Zero()), LatticePoints(50, {dfNaN, 0.1, 0.1}),
          LatticePoints(50, {1e200, -1e308, 1e308})}) {
        EXPECT_FALSE(orientKnownCell(cell, listPoint));
    }
    const LatticePoints listGood = points.reflections(*basisOfCell(cell), 0.9, 0.002, seen(0.5));
    for (const CellParameters& none : {CellParameters{},
                                       {7, 8, 9, 60, 60, 170},
                                       {7, 8, dfNaN, 90, 90, 90},
                                       {7, 8, 9e9, 90, 90, 90},
                                       {-7, 8, 9, 90, 90, 90}}) {
        EXPECT_FALSE(orientKnownCell(none, listGood));
    }
}

// One row and one plane of the very crystal: whatever is said of them, the numbers are sound.
TEST(KnownCell, RowsAndPlanesAreBorne)
{
    const CellParameters cell = {7, 8, 9, 90, 100, 90};
    CSimulatedPoints points(13);
    const LatticeBasis truth = *basisOfCell(cell) * points.rotation();
    const Eigen::Matrix3d matReciprocal = truth.inverse();
    LatticePoints listRow;
    LatticePoints listPlane;
    for (int n = -100; n <= 100; ++n) {
        listRow.push_back(matReciprocal * Eigen::Vector3d(n % 9, 0, 0));
        listPlane.push_back(matReciprocal * Eigen::Vector3d(n % 9, n % 7, 0));
    }
    for (const LatticePoints& listPoint : {listRow, listPlane}) {
        const auto found = orientKnownCell(cell, listPoint);
        if (found) {
            EXPECT_TRUE(found->matRefined.allFinite());
            EXPECT_NEAR(found->matRotated.determinant(), basisOfCell(cell)->determinant(), 1e-6);
        }
    }
}

}  // namespace
}  // namespace tessera
