// The comparison of a found lattice and of indexed peaks with the truth.
#include "simulate/seriescomparison.h"
#include "simulate/structurefactor.h"

#include <gtest/gtest.h>

namespace tessera {

namespace {

// A C-centred cell and its primitive basis.
const Matrix3 g_matBasis = reciprocalBasisOfCell({9.746, 8.899, 5.251, 90, 105.63, 90});
const Matrix3 g_matPrimitive{Vector3{1, 1, 0}, Vector3{-1, 1, 0}, Vector3{0, 0, 1}};

}  // namespace

TEST(LatticeMatch, TellsBasesOfOneLatticeFromOthers)
{
    const Matrix3 matPrimitive = g_matPrimitive * g_matBasis;
    const struct {
        const char* pCase;
        Matrix3 matFound;
        LatticeMatch::Relation relation;
        int nIndex;
    } aRow[] = {
        {"other basis", Matrix3{Vector3{1, 2, 0}, Vector3{0, 1, -1}, Vector3{0, 0, -1}} * matPrimitive,
         LatticeMatch::Same, 1},
        {"conventional", g_matBasis, LatticeMatch::Centred, 2},
        {"axis doubled", Matrix3{Vector3{0.5, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}} * matPrimitive,
         LatticeMatch::Supercell, 2},
        {"axis halved", Matrix3{Vector3{1, 0, 0}, Vector3{0, 2, 0}, Vector3{0, 0, 1}} * matPrimitive,
         LatticeMatch::Subcell, 2},
        {"co-planar", {matPrimitive[0], matPrimitive[1], matPrimitive[0]}, LatticeMatch::None, 0},
        {"unrelated", Matrix3{Vector3{1.3, 0, 0.4}, Vector3{0, 0.7, 0}, Vector3{0.2, 0, 1.4}} * matPrimitive,
         LatticeMatch::None, 0}};
    for (const auto& row : aRow) {
        const LatticeMatch match = matchLattice(row.matFound, g_matBasis, g_matPrimitive);
        EXPECT_EQ(match.relation, row.relation) << row.pCase;
        EXPECT_EQ(match.nIndex, row.nIndex) << row.pCase;
        EXPECT_EQ(match.isRight(),
                  row.relation == LatticeMatch::Same || row.relation == LatticeMatch::Centred);
        if (row.relation == LatticeMatch::None)
            continue;
        // Indices brought over name the same vector.
        const Vector3 vecIndex{2, -3, 1};
        EXPECT_LT(lengthOf(vecIndex * row.matFound - vecIndex * match.matToTrue * g_matBasis), 1e-12)
            << row.pCase;
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(match.errors.adfLength[i], 0, 1e-9) << row.pCase;
            EXPECT_NEAR(match.errors.adfAngle[i], 0, 1e-9) << row.pCase;
        }
    }
}

TEST(LatticeMatch, TellsErrorsInTheTrueSetting)
{
    Matrix3 matOff = reciprocalBasisOfCell({9.746 * 1.01, 8.899, 5.251, 90, 106.13, 90});
    const LatticeMatch match = matchLattice(
        Matrix3{Vector3{0, 1, 1}, Vector3{1, 0, 0}, Vector3{0, 0, 1}} * (g_matPrimitive * matOff), g_matBasis,
        g_matPrimitive);
    ASSERT_EQ(match.relation, LatticeMatch::Same);
    EXPECT_NEAR(match.errors.adfLength[0], 1, 1e-9);
    EXPECT_NEAR(match.errors.adfLength[1], 0, 1e-9);
    EXPECT_NEAR(match.errors.adfAngle[1], 0.5, 1e-9);
}

TEST(SeriesComparison, CountsRightWrongStrayAndFound)
{
    SimulatedSeries series;
    series.parameters.nFrames = 2;
    series.matBasis = g_matBasis;
    series.matPrimitive = g_matPrimitive;
    series.listSpot = {{0, 100, 100, 1, 1, 0, 900, 25, 0},
                       {0, 101, 100, 5, 5, 5, 3, 0.6, 0},  // a faint one nearer to the peak below
                       {0, 150, 100, 2, 0, 0, 90, 12, 0},
                       {1, 100, 100, 0, 2, 1, 60, 6, 0},
                       {1, 10, 10, 3, 1, 0, 10, 2, 0}};
    // On the primitive basis (1,1,0), (-1,1,0), (0,0,1): 110 is 1 0 0, 200 is 1 -1 0, 021 is 1 1 1.
    const std::vector<ReadPeak> listIndexed = {{0, 101.5, 100, 1, 0, 0},  // right
                                               {0, 150, 98, 1, 1, 0},     // wrong
                                               {1, 101, 101, 1, 1, 1},    // right
                                               {1, 10, 15, 1, 0, 0},      // stray
                                               {5, 10, 10, 1, 0, 0}};     // no such frame
    const Matrix3 matFound = g_matPrimitive * g_matBasis;
    const SeriesComparison c = compareWithTruth(series, listIndexed, listIndexed, &matFound);
    EXPECT_EQ(c.nIndexed, 5);
    EXPECT_EQ(c.nIndexedRight, 2);
    EXPECT_EQ(c.nIndexedWrong, 1);
    EXPECT_EQ(c.nIndexedStray, 2);
    EXPECT_EQ(c.anSpots, (std::array<int, 3>{3, 2, 1}));
    EXPECT_EQ(c.anFound, (std::array<int, 3>{3, 2, 1}));
    EXPECT_EQ(compareWithTruth(series, {}, {}, &matFound).anFound[0], 0);
    // Without a cell nothing is right, whatever the indices say.
    EXPECT_EQ(compareWithTruth(series, listIndexed, listIndexed, nullptr).nIndexedRight, 0);
}

}  // namespace tessera
