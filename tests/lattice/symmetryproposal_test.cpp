// The proposed type for cells as they come out of an indexing, of crystals whose symmetry is known.
#include "lattice/symmetryproposal.h"

#include "geometry/angles.h"
#include "lattice/knowncell.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tessera {
namespace {

std::string proposalOf(const LatticeBasis& basis)
{
    const auto proposed = symmetryInKeeping(bestOfEachType(latticeSymmetries(basis)));
    return proposed ? bravaisSymbol(*proposed).toStdString() : "none";
}

/// Edges and angles off by normal errors: a share, and the angle of the same size.
LatticeBasis measured(CellParameters cell, double dfError, std::mt19937& random)
{
    std::normal_distribution<double> normal(0, dfError);
    for (double* pLength : {&cell.a, &cell.b, &cell.c}) {
        *pLength *= 1 + normal(random);
    }
    for (double* pAngle : {&cell.alpha, &cell.beta, &cell.gamma}) {
        *pAngle += degrees(normal(random));
    }
    return *basisOfCell(cell);
}

}  // namespace

// Primitive cells from the indexing of real series; their misfits are due to errors of the geometry.
TEST(SymmetryProposal, MeasuredCellsGetTheSymmetryOfTheirCrystals)
{
    struct Case {
        const char* pszCrystal;
        CellParameters cell;
        std::string strType;
    };
    const std::vector<Case> listCase = {
        {"lysozyme", {38.126, 77.393, 78.918, 90.92, 90.63, 89.65}, "tP"},
        {"garnet", {10.393, 10.423, 10.467, 70.14, 70.92, 108.77}, "cI"},
        {"kyanite", {7.126, 7.852, 5.572, 89.99, 101.11, 106.03}, "aP"},  // Winter & Ghose (1979)
    };
    for (const Case& one : listCase) {
        EXPECT_EQ(proposalOf(*basisOfCell(one.cell)), one.strType) << one.pszCrystal;
    }
    EXPECT_FALSE(symmetryInKeeping({}));
}

// Symmetries that a crystal all but has: nothing in the errors of the measurement excuses them.
TEST(SymmetryProposal, PseudosymmetryIsNotTakenForSymmetry)
{
    std::mt19937 random(5);
    Eigen::Matrix3d matFaces;  // a primitive basis of F
    matFaces << 0, 0.5, 0.5, 0.5, 0, 0.5, 0.5, 0.5, 0;
    int nOrthorhombic = 0, nMonoclinic = 0;
    const int nCells = 50;
    for (int n = 0; n < nCells; ++n) {
        // natrolite, whose a and b differ by 1.9 %
        nOrthorhombic += proposalOf(matFaces * measured({18.29, 18.64, 6.59, 90, 90, 90}, 0.002, random)) ==
                         "oF";
        nMonoclinic += proposalOf(measured({6.1, 9.4, 7.7, 90, 90.6, 90}, 0.001, random)) == "mP";
    }
    EXPECT_GE(nOrthorhombic, nCells * 9 / 10);
    EXPECT_GE(nMonoclinic, nCells * 9 / 10);
}

}  // namespace tessera
