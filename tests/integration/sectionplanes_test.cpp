// Planes of reciprocal space by their names, their lattice points, and the operations of the Laue classes.
#include "integration/laueoperations.h"
#include "integration/reciprocalsection.h"

#include <gtest/gtest.h>

namespace tessera {

namespace {

SectionPlane planeNamed(const char* pszName)
{
    const std::optional<SectionPlane> found = sectionPlane(pszName);
    EXPECT_TRUE(found) << pszName;
    return found.value_or(SectionPlane());
}

/// The number of lattice points up to 0.8 Å⁻¹ in a plane, by testing the definition of the plane for each
/// point.
size_t pointsInPlane(const SectionPlane& section, const SectionBasis& basis)
{
    size_t nPoints = 0;
    for (int h = -20; h <= 20; ++h) {
        for (int k = -30; k <= 30; ++k) {
            for (int l = -40; l <= 40; ++l) {
                double dfSquare = 0;
                for (size_t i = 0; i < 3; ++i) {
                    const double df = h * basis[0][i] + k * basis[1][i] + l * basis[2][i];
                    dfSquare += df * df;
                }
                const auto& [u, v, w] = section.anZone;
                nPoints += u * h + v * k + w * l == section.nLayer && dfSquare <= 0.64;
            }
        }
    }
    return nPoints;
}

}  // namespace

TEST(SectionPlanes, HaveTheirNames)
{
    const struct {
        const char* pszText;
        std::array<int, 3> anZone;
        int nLayer;
        const char* pszFile;
    } aGood[] = {{"hk0", {0, 0, 1}, 0, "hk0"},
                 {"h-12l", {0, 1, 0}, -12, "h-12l"},
                 {"3kl", {1, 0, 0}, 3, "3kl"},
                 {" [1 1 0]", {1, 1, 0}, 0, "uvw_1_1_0_layer_0"},
                 {"[1 -2 3]=-4", {1, -2, 3}, -4, "uvw_1_-2_3_layer_-4"}};
    for (const auto& good : aGood) {
        const SectionPlane found = planeNamed(good.pszText);
        EXPECT_EQ(found.anZone, good.anZone) << good.pszText;
        EXPECT_EQ(found.nLayer, good.nLayer) << good.pszText;
        EXPECT_EQ(sectionFileWord(found), good.pszFile);
        EXPECT_TRUE(sectionPlane(found.strName)) << "its own name";
    }
    for (const char* pszBad : {"", "hkl", "hk", "h00", "kh0", "hk+1", "hk1.5", "hk1000", "[1 1]", "[0 0 0]",
                               "[2 2 0]", "[21 1 0]", "HK0"}) {
        QString strReason;
        EXPECT_FALSE(sectionPlane(pszBad, &strReason)) << pszBad;
        EXPECT_FALSE(strReason.isEmpty()) << pszBad;
    }
}

TEST(SectionPlanes, TheirFramesObeyTheDefinitionOfAZone)
{
    // A triclinic basis with nothing special.
    const SectionBasis basis = {DoubleVector{0.11, 0.01, -0.02}, {0.03, 0.08, 0.01}, {-0.01, 0.02, 0.05}};
    for (const char* pszName : {"hk2", "h-1l", "0kl", "[1 1 0]=3", "[2 -3 5]=-2"}) {
        const SectionPlane section = planeNamed(pszName);
        const std::optional<SectionFrame> frame = sectionFrame(section, basis);
        ASSERT_TRUE(frame);
        ReciprocalSection empty;
        empty.plane = section;
        empty.frame = *frame;
        empty.basis = basis;
        empty.nSide = 401;
        empty.dfStep = 0.005;
        empty.dfMaxDStar = 0.8;
        empty.listValue.resize(401 * 401, 0);
        const std::vector<std::array<int, 3>> listIndex = latticeOfSection(empty, 100000);
        const size_t nExpected = pointsInPlane(section, basis);
        EXPECT_EQ(listIndex.size(), nExpected) << pszName;
        EXPECT_GT(nExpected, 20U);
        for (const std::array<int, 3>& an : listIndex) {
            const auto pt = placeOnSection(empty, {double(an[0]), double(an[1]), double(an[2])});
            ASSERT_TRUE(pt);
            const SectionReading reading = readSection(empty, *pt);
            for (size_t i = 0; i < 3; ++i) {
                EXPECT_NEAR(reading.indices[i], an[i], 1e-9) << pszName;
            }
        }
    }
}

TEST(LaueOperations, MakeTheGroupsOfTheirClasses)
{
    const std::pair<const char*, size_t> aOrder[] = {
        {"-1", 2},    {"2/m", 4},   {"mmm", 8},  {"4/m", 8},    {"4/mmm", 16}, {"-3", 6},
        {"-3m1", 12}, {"-31m", 12}, {"6/m", 12}, {"6/mmm", 24}, {"m-3", 24},   {"m-3m", 48}};
    for (const auto& [pszClass, nOrder] : aOrder) {
        EXPECT_EQ(laueOperations(pszClass).size(), nOrder) << pszClass;
    }
    EXPECT_TRUE(laueOperations("4").empty());
}

}  // namespace tessera
