// Settings by intensities: alternatives of the indexing that only the intensities tell apart.
#include "crystals/crystalsettings.h"

#include "crystals/crystalgroups.h"
#include "tests/crystals/simulatedcrystals.h"

#include <gtest/gtest.h>

namespace tessera {
namespace {

Eigen::Matrix3i matrix(std::array<int, 9> an)
{
    Eigen::Matrix3i mat;
    mat << an[0], an[1], an[2], an[3], an[4], an[5], an[6], an[7], an[8];
    return mat;
}

struct Ambiguity {
    const char* szName;
    CellParameters cell;
    const char* szHall;  ///< of the Laue class
    std::vector<std::array<int, 9>> listAlternative;
    double dfDMin;
};

/// Merohedry of each kind, a monoclinic cell that is orthorhombic by its numbers, and one whose edges are
/// equal by chance.
const Ambiguity g_aAmbiguity[] = {
    {"-3m1 in a hexagonal lattice",
     {4.91, 4.91, 5.41, 90, 90, 120},
     "-P 3 2\"",
     {{-1, 0, 0, 0, -1, 0, 0, 0, 1}},
     0.75},
    {"-3 in a hexagonal lattice",
     {9.1, 9.1, 5.41, 90, 90, 120},
     "-P 3",
     {{-1, 0, 0, 0, -1, 0, 0, 0, 1}, {0, 1, 0, 1, 0, 0, 0, 0, -1}, {0, -1, 0, -1, 0, 0, 0, 0, -1}},
     1.0},
    {"4/m", {7.5, 7.5, 10.1, 90, 90, 90}, "-P 4", {{0, 1, 0, 1, 0, 0, 0, 0, -1}}, 1.0},
    {"m-3", {9.2, 9.2, 9.2, 90, 90, 90}, "-P 2 2 3", {{0, 1, 0, 1, 0, 0, 0, 0, -1}}, 0.9},
    {"2/m with a right angle", {6.1, 7.3, 8.9, 90, 90.3, 90}, "-P 2y", {{1, 0, 0, 0, -1, 0, 0, 0, -1}}, 1.0},
    {"mmm with equal edges", {6.1, 6.15, 8.9, 90, 90, 90}, "-P 2 2", {{0, 1, 0, -1, 0, 0, 0, 0, 1}}, 0.9},
};

/// Whether all crystals came into one setting of the truth: images of a general index are equivalent then.
void expectOneSetting(const SettledCrystals& settled, const std::vector<CrystalTruth>& listTruth,
                      const std::vector<Crystal>& listCrystal, const CCompound& compound, const char* szName)
{
    // From the setting of the group back to the truth by way of the first crystal: the result must be a
    // symmetry operation.
    const std::array<int, 3> anGeneral = {3, 5, 11};
    const auto toGroup = [&](const SettledCrystal& crystal) -> Eigen::Matrix3d {
        return crystal.matIndices * listTruth[crystal.nCrystal].matIndices.cast<double>();
    };
    ASSERT_EQ(settled.listSettled.size(), listCrystal.size()) << szName;
    const Eigen::Matrix3d matFirst = toGroup(settled.listSettled.front());
    for (const SettledCrystal& crystal : settled.listSettled) {
        const Eigen::Matrix3d mat = matFirst.inverse() * toGroup(crystal);
        const auto anImage = wholeIndex(mat, anGeneral);
        ASSERT_TRUE(anImage);
        EXPECT_EQ(compound.representative(*anImage), compound.representative(anGeneral))
            << szName << ", crystal " << crystal.nCrystal;
        EXPECT_GT(crystal.dfCorrelation, 0.8);
        EXPECT_LT(crystal.dfSecond, crystal.dfCorrelation);
    }
}

SettledCrystals settled(const std::vector<Crystal>& listCrystal, int nJobs = 1)
{
    CRunReport report;
    const CrystalGroups groups = groupByCell(listCrystal);
    SettlingOptions options;
    options.nJobs = nJobs;
    return settleCrystals(listCrystal, groups.listGroup.front().listMember,
                          groups.listGroup.front().reference, options, report);
}

struct Many {
    std::vector<CrystalTruth> listTruth;
    std::vector<Crystal> listCrystal;
};

Many inAnySetting(const Ambiguity& ambiguity, const CCompound& compound, int nCrystals, double dfWedge,
                  std::mt19937& random, const char* szLaueClass)
{
    Many many;
    for (int n = 0; n < nCrystals; ++n) {
        CrystalTruth truth;
        const size_t nAlternative = random() % (ambiguity.listAlternative.size() + 1);
        if (nAlternative > 0) {
            truth.matIndices = matrix(ambiguity.listAlternative[nAlternative - 1]);
        }
        truth.dfScale = std::exp(double(random() % 1000) / 250 - 2);
        truth.dfWedge = dfWedge;
        many.listTruth.push_back(truth);
        many.listCrystal.push_back(simulatedCrystal(compound, truth, random));
        many.listCrystal.back().strLaueClass = QLatin1String(szLaueClass);
    }
    return many;
}

TEST(CrystalSettings, bringAllAlternativesTogether)
{
    for (const Ambiguity& ambiguity : g_aAmbiguity) {
        const CCompound compound(ambiguity.cell, ambiguity.szHall, ambiguity.dfDMin, 4);
        for (unsigned nSeed = 1; nSeed <= 5; ++nSeed) {
            std::mt19937 random(nSeed);
            const Many many = inAnySetting(ambiguity, compound, 12, 50, random, "m-3m");
            const SettledCrystals result = settled(many.listCrystal);
            expectOneSetting(result, many.listTruth, many.listCrystal, compound, ambiguity.szName);
            EXPECT_EQ(result.listSettled.front().nAlternatives, int(ambiguity.listAlternative.size()) + 1)
                << ambiguity.szName << " by " << qPrintable(result.strLaueClass);
        }
    }
}

/// A slice of 15 degrees shares next to nothing with others, unless equivalents count.
TEST(CrystalSettings, bringNarrowSlicesTogetherByTheirSymmetry)
{
    for (const Ambiguity& ambiguity : {g_aAmbiguity[0], g_aAmbiguity[2], g_aAmbiguity[3]}) {
        const CCompound compound(ambiguity.cell, ambiguity.szHall, ambiguity.dfDMin, 4);
        std::mt19937 random(8);
        Many many = inAnySetting(ambiguity, compound, 4, 70, random, "m-3m");
        const Many narrow = inAnySetting(ambiguity, compound, 20, 15, random, "m-3m");
        many.listTruth.insert(many.listTruth.end(), narrow.listTruth.begin(), narrow.listTruth.end());
        many.listCrystal.insert(many.listCrystal.end(), narrow.listCrystal.begin(), narrow.listCrystal.end());
        expectOneSetting(settled(many.listCrystal), many.listTruth, many.listCrystal, compound,
                         ambiguity.szName);
    }
}

/// Crystals in unlike settings look more symmetric together than each of them does.
TEST(CrystalSettings, takeNoHigherClassThanTheRunsHaveFound)
{
    const Ambiguity& quartz = g_aAmbiguity[0];
    const CCompound compound(quartz.cell, quartz.szHall, quartz.dfDMin, 4);
    std::mt19937 random(2);
    const Many many = inAnySetting(quartz, compound, 6, 60, random, "-3m1");
    EXPECT_EQ(settled(many.listCrystal).strLaueClass, QStringLiteral("-3m1"));
    const Many low = inAnySetting(quartz, compound, 6, 60, random, "-1");
    EXPECT_EQ(settled(low.listCrystal).strLaueClass, QStringLiteral("-1"));
    expectOneSetting(settled(low.listCrystal), low.listTruth, low.listCrystal, compound, "as triclinic");
}

TEST(CrystalSettings, doNotDependOnThreads)
{
    const Ambiguity& quartz = g_aAmbiguity[0];
    const CCompound compound(quartz.cell, quartz.szHall, quartz.dfDMin, 4);
    std::mt19937 random(2);
    const Many many = inAnySetting(quartz, compound, 9, 60, random, "-3m1");
    const SettledCrystals one = settled(many.listCrystal, 1), three = settled(many.listCrystal, 3);
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(one.listSettled[i].dfCorrelation, three.listSettled[i].dfCorrelation);
        for (int j = 0; j < 9; ++j) {
            EXPECT_EQ(one.distances.at(i, j), three.distances.at(i, j));
        }
    }
}

/// All indices reversed are the same reflections under Friedel's law, so a crystal of the other hand needs no
/// setting of its own.
TEST(CrystalSettings, areTheSameForReversedIndices)
{
    const CCompound compound({5.57, 7.13, 7.85, 73.97, 89.98, 78.9}, "-P 1", 0.9, 4);
    std::mt19937 random(2);
    Crystal crystal = simulatedCrystal(compound, {}, random);
    const std::vector<FriedelIntensity> list = friedelMerged(crystal.listIntensity,
                                                             Eigen::Matrix3d::Identity());
    for (ScaledIntensity& one : crystal.listIntensity) {
        one.anIndex = {-one.anIndex[0], -one.anIndex[1], -one.anIndex[2]};
    }
    const std::vector<FriedelIntensity> listReversed = friedelMerged(crystal.listIntensity,
                                                                     Eigen::Matrix3d::Identity());
    ASSERT_EQ(list.size(), listReversed.size());
    for (size_t n = 0; n < list.size(); ++n) {
        EXPECT_EQ(list[n].anIndex, listReversed[n].anIndex);
        EXPECT_EQ(list[n].dfIntensity, listReversed[n].dfIntensity);
    }
    EXPECT_NEAR(correlationOf(list, listReversed).dfCorrelation, 1, 1e-12);
}

}  // namespace
}  // namespace tessera
