// Merging of crystals: scales, mean cell, and rejection of crystals.
#include "crystals/crystalmerging.h"

#include "crystals/crystalchoice.h"
#include "integration/mergedgroups.h"
#include "tests/crystals/simulatedcrystals.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace tessera {
namespace {

const CellParameters g_kyanite = {5.57, 7.13, 7.85, 73.97, 89.98, 78.9};
const CellParameters g_quartz = {4.91, 4.91, 5.41, 90, 90, 120};

std::vector<Crystal> manyOf(const CCompound& compound, int nCrystals, std::mt19937& random,
                            CrystalTruth truth = {})
{
    std::vector<Crystal> list;
    for (int n = 0; n < nCrystals; ++n) {
        truth.dfScale = std::exp(double(random() % 1000) / 250 - 2);
        truth.dfNoise = 0.05 + double(random() % 100) / 1000;
        list.push_back(simulatedCrystal(compound, truth, random));
    }
    return list;
}

/// Another structure in the same cell.
Crystal alien(const CellParameters& cell, const char* szHall, double dfDMin, unsigned nSeed,
              std::mt19937& random)
{
    return simulatedCrystal(CCompound(cell, szHall, dfDMin, nSeed), {}, random);
}

MergedCrystals mergedOf(const std::vector<Crystal>& listCrystal, const CrystalMergeOptions& options = {})
{
    CRunReport report;
    const CrystalGroups groups = groupByCell(listCrystal);
    EXPECT_EQ(groups.listGroup.size(), 1u);
    auto merged = mergeCrystals(listCrystal, groups.listGroup.front(), options, report);
    EXPECT_TRUE(merged.finished()) << qPrintable(merged.outcome.strReason);
    return std::move(merged.made).value_or(MergedCrystals());
}

std::set<int> leftOut(const MergedCrystals& merged)
{
    std::set<int> set;
    for (const LeftOutCrystal& left : merged.listLeftOut) {
        EXPECT_FALSE(left.strReason.isEmpty());
        EXPECT_TRUE(set.insert(left.nCrystal).second);
    }
    return set;
}

TEST(CrystalScales, areFoundToWhatTheNoiseAllows)
{
    const CCompound compound(g_kyanite, "-P 1", 0.8, 4);
    std::mt19937 random(6);
    std::vector<std::vector<FriedelIntensity>> listMean;
    std::vector<CrystalTruth> listTruth;
    for (int n = 0; n < 15; ++n) {
        CrystalTruth truth;
        truth.dfScale = std::exp(double(random() % 1000) / 150 - 3);
        truth.dfB = double(random() % 100) / 50 - 1;
        truth.dfNoise = n % 3 == 0 ? 0.6 : 0.1;  // every third is weak: most of it below 3 sigma
        listTruth.push_back(truth);
        listMean.push_back(friedelMerged(simulatedCrystal(compound, truth, random).listIntensity,
                                         Eigen::Matrix3d::Identity()));
    }
    std::vector<const std::vector<FriedelIntensity>*> listPointer;
    for (const auto& list : listMean) {
        listPointer.push_back(&list);
    }
    const std::vector<CrystalScale> listScale = scaleCrystals(listPointer, directBasisOf(g_kyanite));
    double dfLog = 0, dfB = 0;
    for (size_t n = 0; n < listTruth.size(); ++n) {
        dfLog += std::log(listScale[n].dfScale * listTruth[n].dfScale) / double(listTruth.size());
        dfB += (listScale[n].dfB - listTruth[n].dfB) / double(listTruth.size());
    }
    for (size_t n = 0; n < listTruth.size(); ++n) {
        const double dfMiddle = 0.2;  // s² in the middle of the data, where scale and B do not correlate
        const double dfOff = std::log(listScale[n].factor(dfMiddle) * listTruth[n].dfScale) -
                             2 * listTruth[n].dfB * dfMiddle - dfLog - 2 * dfB * dfMiddle;
        // A third of disagreement is what weights are for; so many reflections bring it to about 2 %, and to
        // 5 % where the noise is larger.
        EXPECT_GT(listScale[n].nCommon, 200);
        EXPECT_NEAR(dfOff, 0, n % 3 == 0 ? 0.12 : 0.05) << n;
        EXPECT_NEAR(listScale[n].dfB - listTruth[n].dfB - dfB, 0, n % 3 == 0 ? 0.5 : 0.2) << n;
    }
}

TEST(CrystalScales, ofCrystalsThatShareNothingAreThoseOfTheirMeans)
{
    const std::vector<FriedelIntensity> one = {{{1, 0, 0}, 100, 1}, {{0, 1, 0}, 300, 1}},
                                        other = {{{0, 0, 1}, 20, 1}};
    const std::vector<CrystalScale> listScale = scaleCrystals({&one, &other}, directBasisOf(g_kyanite));
    EXPECT_NEAR(listScale[1].dfScale / listScale[0].dfScale, 10, 1e-9);
    EXPECT_EQ(listScale[0].dfB, 0);
    EXPECT_TRUE(scaleCrystals({}, directBasisOf(g_kyanite)).empty());
}

TEST(CrystalChoice, leavesOneOutAsMergingWithoutItDoes)
{
    std::mt19937 random(1);
    std::normal_distribution<double> normal;
    std::vector<Observation> listObservation;
    for (int n = 0; n < 400; ++n) {
        Observation observation;
        observation.anIndex = {n % 7 + 1, n % 5, n % 3};
        observation.nFirstFrame = n % 6;
        observation.dfIntensity = 100 * observation.anIndex[0] + 10 * normal(random);
        observation.dfSigma = 5 + n % 4;
        listObservation.push_back(observation);
    }
    ObservationSymmetry symmetry;
    symmetry.ops = gemmi::symops_from_hall("-P 1");
    const CLeaveOneOut leaveOneOut(listObservation, groupEquivalents(listObservation, symmetry), 6);
    const auto ccHalf = [&](const std::vector<Observation>& list) {
        CAgreement agreement;
        for (const MergedGroup& group : mergeGroups(list, groupEquivalents(list, symmetry))) {
            agreement.add(group);
        }
        return agreement.ccHalf();
    };
    EXPECT_NEAR(leaveOneOut.ccHalf(), ccHalf(listObservation), 1e-10);
    for (int nCrystal = 0; nCrystal < 6; ++nCrystal) {
        std::vector<Observation> list;
        std::copy_if(listObservation.begin(), listObservation.end(), std::back_inserter(list),
                     [&](const Observation& one) { return one.nFirstFrame != nCrystal; });
        EXPECT_NEAR(leaveOneOut.ccHalfWithout(nCrystal), ccHalf(list), 1e-10);
        EXPECT_NEAR(leaveOneOut.gainOf(nCrystal).dfGain,
                    std::atanh(ccHalf(listObservation)) - std::atanh(ccHalf(list)), 1e-9);
    }
    using Gains = std::vector<CLeaveOneOut::Gain>;
    EXPECT_EQ(harmfulCrystal(Gains{{0.1, 0.01}, {0.12, 0.01}, {-2, 0.1}}), -1);  // of three none is chosen
    EXPECT_EQ(harmfulCrystal(Gains{{0.1, 0.01}, {0.12, 0.01}, {0.11, 0.01}, {-2, 0.1}}), 3);
    EXPECT_EQ(harmfulCrystal(Gains{{0.1, 0.01}, {0.12, 0.01}, {0.11, 0.01}, {-2, 1}}), -1);
    EXPECT_EQ(harmfulCrystal(Gains{{0.1, 0}, {0.12, 0}, {std::nan(""), 0}, {0.09, 0}, {-0.005, 0}}), -1);
    EXPECT_EQ(harmfulCrystal({}), -1);
}

TEST(CrystalMerging, leavesOutNoneOfGoodOnes)
{
    const CCompound kyanite(g_kyanite, "-P 1", 0.9, 4), quartz(g_quartz, "-P 3 2\"", 0.8, 4);
    for (unsigned nSeed = 1; nSeed <= 6; ++nSeed) {
        std::mt19937 random(nSeed);
        for (const int nCrystals : {2, 4, 12, 40}) {
            CrystalTruth truth;
            truth.dfWedge = nCrystals < 5 ? 100 : 60;
            const MergedCrystals merged = mergedOf(manyOf(kyanite, nCrystals, random, truth));
            EXPECT_TRUE(merged.listLeftOut.empty())
                << nCrystals << qPrintable(merged.listLeftOut.front().strReason);
            EXPECT_EQ(merged.listJoint.size(), size_t(nCrystals - 1));
            truth.nMost = 60;  // few reflections, which equivalents make enough
            std::vector<Crystal> listFew = manyOf(quartz, nCrystals, random, truth);
            for (Crystal& crystal : listFew) {
                crystal.strLaueClass = QStringLiteral("-3m1");
            }
            EXPECT_TRUE(mergedOf(listFew).listLeftOut.empty()) << nCrystals;
        }
    }
}

TEST(CrystalMerging, leavesOutWhatIsAnotherCompoundWithTheReason)
{
    const CCompound kyanite(g_kyanite, "-P 1", 0.9, 4), other(g_kyanite, "-P 1", 0.9, 99);
    for (unsigned nSeed = 1; nSeed <= 4; ++nSeed) {
        std::mt19937 random(nSeed);
        std::vector<Crystal> list = manyOf(kyanite, 12, random);
        for (const Crystal& crystal : manyOf(other, 4, random)) {
            list.push_back(crystal);
        }
        list.push_back(alien(g_kyanite, "-P 1", 0.9, 7, random));
        CrystalTruth few;
        few.nMost = 5;
        list.push_back(simulatedCrystal(kyanite, few, random));
        const MergedCrystals merged = mergedOf(list);
        EXPECT_EQ(leftOut(merged), (std::set<int>{12, 13, 14, 15, 16, 17}));
        ASSERT_EQ(merged.listOtherKind.size(), 1u);
        EXPECT_EQ(merged.listOtherKind.front(), (std::vector<int>{12, 13, 14, 15}));
        for (const LeftOutCrystal& left : merged.listLeftOut) {
            EXPECT_EQ(left.strReason.contains(QLatin1String("too few")), left.nCrystal == 17);
            EXPECT_EQ(left.strReason.contains(QLatin1String("alike in 4 crystals")),
                      left.nCrystal >= 12 && left.nCrystal < 16);
        }
        EXPECT_GT(merged.result.quality.overall.dfCcHalf, 0.98);
    }
}

/// A crystal with much noise is still of the compound, but lowers the agreement of the merged intensities.
TEST(CrystalMerging, leavesOutWhatLowersTheAgreement)
{
    const CCompound kyanite(g_kyanite, "-P 1", 0.9, 4), other(g_kyanite, "-P 1", 0.9, 99);
    for (const int nCrystals : {5, 12, 40}) {
        std::mt19937 random(3);
        CrystalTruth truth;
        truth.dfWedge = nCrystals < 12 ? 120 : 60;
        std::vector<Crystal> list = manyOf(kyanite, nCrystals, random, truth);
        Crystal& bad = list[1];
        for (ScaledIntensity& one : bad.listIntensity) {  // two crystals on top of one another
            one.dfIntensity += 0.8 * other.intensity(one.anIndex) * one.dfIntensity /
                               kyanite.intensity(one.anIndex);
        }
        const MergedCrystals merged = mergedOf(list);
        EXPECT_EQ(leftOut(merged), std::set<int>{1}) << nCrystals;
        ASSERT_EQ(merged.listLeftOut.size(), 1u);
        EXPECT_GT(merged.listLeftOut.front().dfWithout, merged.listLeftOut.front().dfBefore);
        EXPECT_TRUE(merged.listLeftOut.front().strReason.contains(QLatin1String("CC1/2 rises")));
        CrystalMergeOptions keep;
        keep.bKeepAll = true;
        EXPECT_TRUE(mergedOf(list, keep).listLeftOut.empty());
        // The rejection of outliers would hide what its single observations do.
        EXPECT_LT(mergedOf(list, keep).result.scaled.overall.dfCcHalf, merged.result.scaled.overall.dfCcHalf);
    }
}

TEST(CrystalMerging, givesTheTrueIntensitiesAndTheMeanCell)
{
    const CCompound quartz(g_quartz, "-P 3 2\"", 0.75, 4);
    std::mt19937 random(9);
    std::vector<Crystal> list;
    for (int n = 0; n < 10; ++n) {
        CrystalTruth truth;
        truth.matIndices(0, 0) = truth.matIndices(1, 1) = n % 2 == 0 ? 1 : -1;
        truth.dfScale = 1 + n;
        list.push_back(simulatedCrystal(quartz, truth, random));
        list.back().strLaueClass = QStringLiteral("-3m1");
    }
    const MergedCrystals merged = mergedOf(list);
    EXPECT_EQ(merged.result.chosen.strClass, QStringLiteral("-3m1"));
    EXPECT_TRUE(merged.listLeftOut.empty());
    EXPECT_NEAR(merged.result.cell.a, 4.91, 0.02);
    EXPECT_NEAR(merged.result.cell.c, 5.41, 0.02);
    EXPECT_NEAR(merged.cellSpread.a, 0.004 * 4.91, 0.6 * 0.004 * 4.91);
    EXPECT_NEAR(merged.cellSpread.alpha, 0, 1e-6);
    // The setting of the truth is free between the two that the lattice allows.
    double dfBest = 1;
    for (const int nSign : {1, -1}) {
        double dfSum = 0, dfDifferences = 0, dfScale = 0;
        for (const int nRound : {0, 1}) {
            for (const MergedReflection& one : merged.result.quality.listMerged) {
                const std::array<int, 3> an = {nSign * one.anIndex[0], nSign * one.anIndex[1],
                                               one.anIndex[2]};
                const double dfTrue = std::sqrt(quartz.intensity(an)),
                             dfFound = std::sqrt(std::max(0.0, one.dfIntensity));
                if (nRound == 0) {
                    dfScale += dfFound;
                    dfSum += dfTrue;
                } else {
                    dfDifferences += std::abs(dfFound * dfSum / dfScale - dfTrue);
                }
            }
        }
        dfBest = std::min(dfBest, dfDifferences / dfSum);
    }
    EXPECT_LT(dfBest, 0.05);  // about 25 observations of 10 % on I each, and one B
    EXPECT_GT(merged.result.quality.overall.dfCompleteness, 0.85);
}

TEST(CrystalMerging, countsFramesOnceAndOfRunsOnThemTheLastOne)
{
    const CCompound kyanite(g_kyanite, "-P 1", 0.9, 4);
    std::mt19937 random(9);
    std::vector<Crystal> list = manyOf(kyanite, 6, random);
    for (size_t n = 0; n < list.size(); ++n) {
        for (int nFrame = 0; nFrame < 10; ++nFrame) {
            list[n].frames.listNumber.push_back(nFrame);
            list[n].frames.listHash.push_back(QByteArray(1, char('a' + nFrame)) + char('0' + n));
        }
        list[n].strEnded = QStringLiteral("2026-01-0%1").arg(n + 1);
    }
    list[4].frames = list[2].frames;
    list[4].listIntensity = list[2].listIntensity;
    EXPECT_EQ(leftOut(mergedOf(list)), std::set<int>{2});
    list[2].strEnded = QStringLiteral("2026-01-09");
    EXPECT_EQ(leftOut(mergedOf(list)), std::set<int>{4});
    list[2].frames.listNumber.resize(5);  // an earlier run on half of them, which ended last
    list[2].frames.listHash.resize(5);
    const MergedCrystals merged = mergedOf(list);
    EXPECT_EQ(leftOut(merged), std::set<int>{2});
    EXPECT_TRUE(merged.listLeftOut.front().strReason.startsWith("It shares 5 of its 5 frames with /"))
        << qPrintable(merged.listLeftOut.front().strReason);
    list[4].frames = {};
    EXPECT_TRUE(mergedOf(list).listLeftOut.empty());
}

TEST(CrystalMerging, warnsOfAClassThatTheIntensitiesDoNotHave)
{
    const CCompound quartz(g_quartz, "-P 3 2\"", 1.0, 3);  // -3m1 in a lattice of 6/mmm
    std::mt19937 random(5);
    // One alone: of several the class that was asked for would also choose the settings.
    CrystalTruth truth;
    truth.dfWedge = 120;
    const std::vector<Crystal> list = manyOf(quartz, 1, random, truth);
    const CrystalGroup group = groupByCell(list).listGroup.front();
    for (const auto& [strClass, bWarns] : {std::pair("6/mmm", true), std::pair("-3m1", false)}) {
        CrystalMergeOptions options;
        options.bKeepAll = true;
        options.judgement.strLaueClass = QLatin1String(strClass);
        CRecordingReport report;
        const auto merged = mergeCrystals(list, group, options, report);
        ASSERT_TRUE(merged.finished());
        EXPECT_EQ(merged.made->result.chosen.strClass, QLatin1String(strClass));
        EXPECT_EQ(report.m_listLine.filter(QStringLiteral("is not that of the intensities")).size(),
                  bWarns ? 1 : 0)
            << strClass;
    }
}

/// Under a class that is too high the alternatives of the indices count as one setting, and crystals of both
/// together look as if they had it. Only within each of them one sees that they do not.
TEST(CrystalMerging, warnsOfAClassThatMixesAlternativesOfTheIndices)
{
    std::mt19937 random(5);
    struct Case {
        const char *szHall, *szClass;
        bool bWarns;
    };
    for (const Case& one :
         {Case{"-P 3 2\"", "6/mmm", true}, Case{"-P 3 2\"", "-3m1", false}, Case{"-P 6 2", "6/mmm", false}}) {
        const CCompound compound(g_quartz, one.szHall, 1.0, 3);
        CrystalTruth truth;
        truth.dfWedge = 120;
        std::vector<Crystal> list;
        for (int n = 0; n < 8; ++n) {
            truth.matIndices(0, 0) = truth.matIndices(1, 1) = n % 2 == 0 ? 1 : -1;
            list.push_back(simulatedCrystal(compound, truth, random));
        }
        CrystalMergeOptions options;
        options.judgement.strLaueClass = QLatin1String(one.szClass);
        CRecordingReport report;
        ASSERT_TRUE(mergeCrystals(list, groupByCell(list).listGroup.front(), options, report).finished());
        EXPECT_EQ(report.said("do not agree within the single crystals, whose intensities have -3m1"),
                  one.bWarns)
            << one.szHall << one.szClass << report.log().toStdString();
    }
}

TEST(CrystalMerging, warnsWhereManyObservationsAreOutliers)
{
    const CCompound quartz(g_quartz, "-P 3 2\"", 0.8, 4);  // its equivalents show which of them is wrong
    for (const int nEach : {8, 1000000}) {                 // every eighth, or none
        std::mt19937 random(3);
        CrystalTruth truth;
        truth.dfWedge = 150;
        std::vector<Crystal> list = manyOf(quartz, 8, random, truth);
        for (Crystal& crystal : list) {
            for (size_t n = size_t(random() % 8); n < crystal.listIntensity.size(); n += size_t(nEach)) {
                crystal.listIntensity[n].dfIntensity *= 30;
            }
        }
        CRecordingReport report;
        CrystalMergeOptions options;
        options.bKeepAll = true;
        options.judgement.strLaueClass = QStringLiteral("-3m1");
        ASSERT_TRUE(mergeCrystals(list, groupByCell(list).listGroup.front(), options, report).finished());
        EXPECT_EQ(report.said("are rejected as outliers"), nEach == 8) << report.log().toStdString();
    }
}

TEST(CrystalMerging, stopsAndTellsWhatCannotBe)
{
    struct Stopping : CRunReport {
        int nLeft = 0;
        bool goOn() override { return --nLeft > 0; }
    };
    const CCompound kyanite(g_kyanite, "-P 1", 1.1, 4);
    std::mt19937 random(9);
    const std::vector<Crystal> list = manyOf(kyanite, 5, random);
    const CrystalGroup group = groupByCell(list).listGroup.front();
    for (const int nCalls : {1, 3, 7, 12}) {
        Stopping report;
        report.nLeft = nCalls;
        const auto merged = mergeCrystals(list, group, {}, report);
        EXPECT_EQ(merged.outcome.end, RunEnd::Stopped) << nCalls;
        EXPECT_FALSE(merged.made) << nCalls;
    }
    CRunReport report;
    EXPECT_EQ(mergeCrystals(list, CrystalGroup(), {}, report).outcome.end, RunEnd::Failed);
    const MergedCrystals one = mergedOf({list.front()});
    EXPECT_EQ(one.listUsed, std::vector<char>{1});
    EXPECT_EQ(one.result.quality.overall.nObserved, int(list.front().listIntensity.size()));
}

}  // namespace
}  // namespace tessera
