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
        if (row.relation == LatticeMatch::None) {
            continue;
        }
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

TEST(SeriesComparison, TellsHuntedPeaksAtSpotsAtTheBeamAndAtNothing)
{
    SimulatedSeries series;
    series.parameters.nFrames = 2;
    series.parameters.nSize = 200;
    series.parameters.dfCenterX = 50;
    series.parameters.dfCenterY = 60;
    series.parameters.dfSpotSigma = 2;
    series.matBasis = g_matBasis;
    series.matPrimitive = g_matPrimitive;
    series.listShift = {{0, 0}, {10, -5}};
    series.listSpot = {{0, 100, 100, 1, 1, 0, 900, 25, 0}, {0, 120, 100, 5, 5, 5, 3, 0.6, 0}};
    const std::vector<ReadPeak> listPeak = {{0, 100, 100, 0, 0, 0},    // a spot
                                            {0, 103.9, 100, 0, 0, 0},  // once more, within two sigma
                                            {0, 104.1, 100, 0, 0, 0},  // beyond
                                            {0, 120, 101, 0, 0, 0},    // a faint one
                                            {0, 50, 61, 0, 0, 0},      // the beam
                                            {1, 60, 55, 0, 0, 0},      // the beam after its drift
                                            {1, 50, 60, 0, 0, 0},      // where it was before
                                            {7, 100, 100, 0, 0, 0}};   // no such frame
    const SeriesComparison c = compareWithTruth(series, listPeak, {}, nullptr);
    EXPECT_EQ(c.dfRadius, 4);
    EXPECT_EQ(c.nPeaksAtBeam, 2);
    EXPECT_EQ(c.nPeaksTrue, 3);
    EXPECT_EQ(c.nPeaksRepeated, 1);
    EXPECT_DOUBLE_EQ(c.precision(), 0.5);
    EXPECT_DOUBLE_EQ(c.recall(), 1);
    EXPECT_EQ(compareWithTruth(series, {}, {}, nullptr).precision(), 0);
    // By chance: four of the peaks lie on the frame with two discs of 16 pi on 40000 pixels.
    EXPECT_NEAR(c.dfChance, 4.0 / 6 * 2 * 16 * 3.14159265 / 40000, 1e-5);
}

TEST(SeriesComparison, HoldsTheCellAgainstEitherOfTwoCrystals)
{
    const Matrix3 matTurn = {Vector3{0.6, 0.8, 0}, Vector3{-0.8, 0.6, 0}, Vector3{0, 0, 1}};
    SimulatedSeries series;
    series.parameters.nFrames = 1;
    series.parameters.dfSecondShare = 0.5;
    series.matBasis = g_matBasis;
    series.matSecondBasis = g_matBasis * matTurn;
    series.matPrimitive = g_matPrimitive;
    series.listShift = {{0, 0}};
    series.listSpot = {{0, 100, 100, 1, 1, 0, 900, 25, 0, 0},
                       {0, 150, 100, 2, 0, 0, 90, 12, 0, 0},
                       {0, 100, 200, 2, 0, 0, 90, 12, 0, 1},
                       {0, 150, 200, 1, 1, 0, 90, 7, 0, 1},
                       {0, 151, 100, 1, 1, 0, 30, 5, 0, 1}};  // beside a stronger one of the first
    // On the primitive basis: 110 is 1 0 0, 200 is 1 -1 0.
    const std::vector<ReadPeak> listIndexed = {
        {0, 100, 100, 1, 0, 0}, {0, 150, 100, 1, 0, 0}, {0, 100, 200, 1, -1, 0}, {0, 150, 201, 1, -1, 0}};
    const std::vector<ReadPeak> listPeak(listIndexed.begin(), listIndexed.begin() + 3);
    for (int nFound = 0; nFound < 2; ++nFound) {
        const Matrix3 matFound = g_matPrimitive * series.basis(nFound);
        const SeriesComparison c = compareWithTruth(series, listPeak, listIndexed, &matFound);
        EXPECT_TRUE(c.lattice.isRight());
        EXPECT_EQ(c.nFoundLattice, nFound);
        ASSERT_EQ(c.listLattice.size(), 2u);
        EXPECT_EQ(c.listLattice[nFound].match.relation, LatticeMatch::Same);
        EXPECT_EQ(c.listLattice[1 - nFound].match.relation, LatticeMatch::None);
        const LatticeShare &first = c.listLattice[0], &second = c.listLattice[1];
        EXPECT_EQ(first.nSpots, 2);
        EXPECT_EQ(first.nFound, 2);
        EXPECT_EQ(second.nSpots, 3);
        EXPECT_EQ(second.nFound, 2);
        EXPECT_EQ(first.nHunted, 2);
        EXPECT_EQ(second.nHunted, 1);
        // The second row names the faint spot of the second crystal: right when that one was found.
        EXPECT_EQ(first.nIndexed, nFound == 0 ? 2 : 1);
        EXPECT_EQ(first.nRight, nFound == 0 ? 1 : 0);
        EXPECT_EQ(second.nIndexed, nFound == 0 ? 2 : 3);
        EXPECT_EQ(second.nRight, nFound == 0 ? 0 : 2);
        EXPECT_EQ(c.nIndexedRight, nFound == 0 ? 1 : 2);
        EXPECT_EQ(c.nIndexedWrong, nFound == 0 ? 3 : 2);
    }
}

}  // namespace tessera
