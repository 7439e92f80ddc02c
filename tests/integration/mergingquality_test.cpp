// Merging against gemmi's, and what series give that hold next to nothing.

#include "integration/equivalents.h"
#include "integration/integrationjudgement.h"
#include "integration/wilsonplot.h"
#include "tests/integration/syntheticobservations.h"
#include "tests/recordingreport.h"

#include <gemmi/merge.hpp>
#include <gemmi/reciproc.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <random>

namespace tessera {

namespace {

gemmi::UnitCell cellOfGemmi(const CellParameters& cell)
{
    return {cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma};
}

gemmi::Intensities mergedByGemmi(const std::vector<Observation>& list, const char* pszGroup)
{
    gemmi::Intensities intensities;
    intensities.spacegroup = &gemmi::get_spacegroup_by_name(pszGroup);
    for (const Observation& observation : list) {
        intensities.data.push_back(
            {observation.anIndex, 0, 0, observation.corrected(), observation.correctedSigma()});
    }
    intensities.switch_to_asu_indices();
    intensities.merge_in_place(gemmi::DataType::Mean);
    return intensities;
}

}  // namespace

namespace {

/// A series of natrolite merged in its Laue class, by the program and by gemmi.
class MergedNatrolite : public testing::Test {
protected:
    typedef std::array<int, 3> Index;

    static SyntheticSeries series()
    {
        SyntheticOptions options;
        options.bPrimitive = false;
        options.dfElectrons = 40;
        options.dfB = 0.2;
        options.dfDMin = 0.8;
        return syntheticSeries(structureNamed("natrolite"), options);
    }
    void SetUp() override
    {
        symmetry.ops = gemmi::get_spacegroup_by_name("F m m m").operations();
        quality = judgeMerging(list, symmetry, made.lattice.cell, made.series.frameCount(), 0.8);
        merged = mergedByGemmi(list, "F m m m");
        for (const gemmi::Intensities::Refl& one : merged.data) {
            mapMerged[one.hkl] = one;
        }
        const gemmi::ReciprocalAsu asu(merged.spacegroup);
        for (const Observation& observation : list) {
            mapGroup[asu.to_asu(observation.anIndex, symmetry.ops).first].push_back(observation);
        }
    }

    const SyntheticSeries made = series();
    const std::vector<Observation>& list = made.integrated.listObservation;
    ObservationSymmetry symmetry;
    MergingQuality quality;
    gemmi::Intensities merged;
    std::map<Index, gemmi::Intensities::Refl> mapMerged;
    std::map<Index, std::vector<Observation>> mapGroup;  ///< of equivalents
};

}  // namespace

TEST_F(MergedNatrolite, HasGemmisMeans)
{
    ASSERT_EQ(quality.listMerged.size(), merged.data.size());
    for (const MergedReflection& one : quality.listMerged) {
        ASSERT_EQ(mapMerged.count(one.anIndex), 1u);
        EXPECT_NEAR(one.dfIntensity, mapMerged[one.anIndex].value, 1e-9 * std::abs(one.dfIntensity));
        EXPECT_EQ(one.nObserved, mapMerged[one.anIndex].nobs);
    }
}

// With gemmi's means. From three observations on the scatter counts where it is more than the sigmas say.
TEST_F(MergedNatrolite, HasRintAndSigmasOfItsDeviations)
{
    double dfDeviations = 0;
    double dfIntensities = 0;
    std::map<Index, double> mapSquares;  // of the deviations, in sigmas
    for (const auto& [an, listEqual] : mapGroup) {
        for (const Observation& observation : listEqual) {
            const double dfOff = observation.corrected() - mapMerged[an].value;
            mapSquares[an] += std::pow(dfOff / observation.correctedSigma(), 2);
            if (mapMerged[an].nobs > 1) {
                dfDeviations += std::abs(dfOff);
                dfIntensities += observation.corrected();
            }
        }
    }
    EXPECT_NEAR(quality.overall.dfRInt, dfDeviations / dfIntensities, 1e-9);
    for (const MergedReflection& one : quality.listMerged) {
        const double dfScatter = one.nObserved < 3 ? 0 : mapSquares[one.anIndex] / (one.nObserved - 1);
        const double dfSigma = mapMerged[one.anIndex].sigma * std::sqrt(std::max(1.0, dfScatter));
        EXPECT_NEAR(one.dfSigma, dfSigma, 1e-9 * one.dfSigma);
    }
}

TEST_F(MergedNatrolite, HasACcHalfAsTheMeanOfHalvesDrawnAtRandom)
{
    std::mt19937 random(7);
    double dfCorrelation = 0;
    const int nRounds = 100;
    for (int n = 0; n < nRounds; ++n) {
        gemmi::Correlation correlation;
        for (auto& [an, listEqual] : mapGroup) {
            if (listEqual.size() > 1) {
                std::shuffle(listEqual.begin(), listEqual.end(), random);
                const size_t nHalf = listEqual.size() / 2;
                double dfOne = 0;
                double dfOther = 0;
                for (size_t i = 0; i < listEqual.size(); ++i) {
                    (i < nHalf ? dfOne : dfOther) += listEqual[i].corrected() /
                                                     double(i < nHalf ? nHalf : listEqual.size() - nHalf);
                }
                correlation.add_point(dfOne, dfOther);
            }
        }
        dfCorrelation += correlation.coefficient() / nRounds;
    }
    EXPECT_NEAR(quality.overall.dfCcHalf, dfCorrelation, 0.01);
    EXPECT_LT(quality.overall.dfCcHalf, 0.995);  // so that the comparison means something
}

TEST_F(MergedNatrolite, IsCompleteAsGemmiCounts)
{
    EXPECT_EQ(quality.overall.nPossible,
              gemmi::count_reflections(cellOfGemmi(made.lattice.cell), merged.spacegroup, 0.8 / (1 + 1e-6)));
    int nUnique = 0;
    int nPossible = 0;
    for (const ShellQuality& shell : quality.listShell) {
        nUnique += shell.nUnique;
        nPossible += shell.nPossible;
        EXPECT_NEAR(shell.nPossible, quality.overall.nPossible / 10.0, 0.2 * quality.overall.nPossible / 10);
    }
    EXPECT_EQ(nUnique, quality.overall.nUnique);
    EXPECT_EQ(nPossible, quality.overall.nPossible);
    EXPECT_NEAR(quality.listCompletenessByFrame.back(), quality.overall.dfCompleteness, 1e-12);
    EXPECT_LT(quality.listCompletenessByFrame[20], 0.5);
}

TEST(MergingQuality, FrameThatIsWrongStandsOut)
{
    SyntheticOptions options;
    options.bPrimitive = false;
    options.dfElectrons = 30000;
    SyntheticSeries made = syntheticSeries(structureNamed("beryl"), options);
    for (Observation& observation : made.integrated.listObservation) {
        observation.dfIntensity *= std::lround(observation.dfFrame) == 60 ? 2 : 1;
    }
    ObservationSymmetry symmetry;
    symmetry.ops = gemmi::get_spacegroup_by_name("P 6/m m m").operations();
    CRunReport report;
    ScalingOptions none;
    none.bScale = false;
    none.dfRejection = 0;
    scaleObservations(made.integrated.listObservation, symmetry, made.series.frameCount(), none, report);
    const MergingQuality quality = judgeMerging(made.integrated.listObservation, symmetry, made.lattice.cell,
                                                made.series.frameCount());
    for (size_t n = 10; n < 130; ++n) {
        if (n != 60) {
            EXPECT_LT(quality.listFrame[n].dfRInt, 0.7 * quality.listFrame[60].dfRInt) << n;
        }
    }
}

// Replacing the crystal's own atoms by an average one causes the same error in both.
TEST(MergingQuality, WilsonPlotSeesAFallOff)
{
    std::vector<double> listB;
    for (const double dfB : {0.0, 1.5}) {
        SyntheticOptions options;
        options.bPrimitive = false;
        options.dfElectrons = 30000;
        options.fnB = [dfB](double) { return dfB; };
        const SyntheticSeries made = syntheticSeries(structureNamed("pyrope"), options);
        std::vector<Observation> list = made.integrated.listObservation;
        ObservationSymmetry symmetry;
        symmetry.ops = gemmi::get_spacegroup_by_name("I m -3 m").operations();
        CRunReport report;
        ScalingOptions none;
        none.bScale = false;
        scaleObservations(list, symmetry, made.series.frameCount(), none, report);
        const MergingQuality quality = judgeMerging(list, symmetry, made.lattice.cell,
                                                    made.series.frameCount());
        EXPECT_GE(quality.listWilson.size(), 3u);
        listB.push_back(quality.dfWilsonB);
    }
    EXPECT_NEAR(listB[0], 0.5, 1.5);  // all its atoms have 0.5
    EXPECT_NEAR(listB[1] - listB[0], 1.5, 0.15);
}

// Intensities that are the mean of their kind, of atoms that do not move: epsilon times that of a general
// reflection, and 0 where the group forbids them. Epsilons and conditions are those of the International
// Tables: of mmm 2 for each index that is 0, of 222 2 on the axes.
TEST(MergingQuality, WilsonPlotKnowsTheSpaceGroup)
{
    using Index = std::array<int, 3>;
    const auto zeros = [](const Index& an) { return int(std::count(an.begin(), an.end(), 0)); };
    const struct {
        const char* pszGroup;
        std::function<double(const Index&)> fnEpsilon;  ///< 0: absent
    } aGroup[] = {{"P m m m", [&](const Index& an) { return std::exp2(zeros(an)); }},
                  {"P b c a",
                   [&](const Index& an) {
                       const bool bAbsent = (an[0] == 0 && an[1] % 2 != 0) ||
                                            (an[1] == 0 && an[2] % 2 != 0) || (an[2] == 0 && an[0] % 2 != 0);
                       return bAbsent ? 0 : std::exp2(zeros(an));
                   }},
                  {"P 21 21 21", [&](const Index& an) {
                       return zeros(an) < 2 ? 1.0 : (an[0] + an[1] + an[2]) % 2 == 0 ? 2.0 : 0.0;
                   }}};
    const CellParameters cell = {8, 9, 11, 90, 90, 90};
    ObservationSymmetry symmetry;
    symmetry.ops = gemmi::get_spacegroup_by_name("P m m m").operations();
    for (const auto& group : aGroup) {
        std::vector<MergedReflection> list;
        for (int n = 1; n < 9 * 10 * 12; ++n) {
            const Index an = {n / 120, n / 12 % 10, n % 12};
            const double dfSquare = (an[0] * an[0] / 64.0 + an[1] * an[1] / 81.0 + an[2] * an[2] / 121.0) / 4;
            list.push_back({an, group.fnEpsilon(an) * meanSquareScattering(dfSquare), 1, 1});
        }
        const gemmi::GroupOps ops = gemmi::get_spacegroup_by_name(group.pszGroup).operations();
        EXPECT_NEAR(wilsonPlot(list, symmetry, cell, &ops).dfB, 0, 1e-9) << group.pszGroup;
        // Without it, what is wrong stays below what the average atom puts on it.
        EXPECT_NEAR(wilsonPlot(list, symmetry, cell).dfB, 0, 0.5) << group.pszGroup;
    }
}

// Whatever a series holds, the judgement comes to its end, with numbers that are finite where its docstrings
// do not say otherwise.
namespace {

void expectLikelihood(double df)
{
    EXPECT_GE(df, 0);
    EXPECT_LE(df, 1);
}

/// Expects numbers that are finite, and reasons where nothing is.
void expectSound(const IntegrationResult& result, const CRecordingReport& report)
{
    ASSERT_FALSE(result.laue.listCandidate.empty());
    EXPECT_TRUE(std::any_of(result.laue.listCandidate.begin(), result.laue.listCandidate.end(),
                            [](const LaueCandidate& one) { return one.strClass == "-1"; }));
    for (const LaueCandidate& candidate : result.laue.listCandidate) {
        expectLikelihood(candidate.dfLikelihood);
    }
    EXPECT_TRUE(std::isfinite(result.scaling.dfErrorA));
    EXPECT_TRUE(std::isfinite(result.scaling.dfErrorB));
    for (const double df : result.scaling.listFrameScale) {
        EXPECT_TRUE(std::isfinite(df)) << df;
        EXPECT_GT(df, 0);
    }
    for (const SpaceGroupCandidate& candidate : result.spaceGroups.listCandidate) {
        expectLikelihood(candidate.dfLikelihood);
    }
    for (const MergedReflection& merged : result.quality.listMerged) {
        EXPECT_TRUE(std::isfinite(merged.dfIntensity)) << merged.dfIntensity;
        EXPECT_GT(merged.dfSigma, 0);
    }
    if (result.quality.listMerged.empty()) {
        EXPECT_TRUE(report.said("red No reflection was measured"));
        EXPECT_EQ(result.chosen.strClass, QString("-1"));
    }
}

}  // namespace

namespace {

using Change = std::function<void(std::vector<Observation>&)>;

/// What may be wrong with observations, by name.
std::map<std::string, Change> changesForTheWorse()
{
    const double dfNone = std::numeric_limits<double>::quiet_NaN();
    const auto each = [](const std::function<void(Observation&)>& fn) {
        return Change([fn](std::vector<Observation>& list) { std::for_each(list.begin(), list.end(), fn); });
    };
    return {{"empty", [](std::vector<Observation>& list) { list.clear(); }},
            {"one", [](std::vector<Observation>& list) { list.resize(1); }},
            {"two", [](std::vector<Observation>& list) { list.resize(2); }},
            {"flagged", each([](Observation& o) { o.nFlags = FlagMasked; })},
            {"unmeasured", each([](Observation& o) { o.dfSigma = 0; })},
            {"zero", each([](Observation& o) { o.dfIntensity = 0; })},
            {"negative", each([](Observation& o) { o.dfIntensity = -5; })},
            {"equal", each([](Observation& o) { o.dfIntensity = 100; })},
            {"huge", each([](Observation& o) {
                 o.dfIntensity *= 1e27;
                 o.dfSigma *= 1e27;
             })},
            {"beyond", each([](Observation& o) { o.dfIntensity = 1e300; })},
            {"no number", each([dfNone](Observation& o) { o.dfIntensity = dfNone; })},
            {"no frame", each([dfNone](Observation& o) { o.dfFrame = dfNone; })},
            {"far frames", each([](Observation& o) { o.dfFrame *= 1e20; })},
            {"no speed", each([](Observation& o) { o.dfSpeed = 0; })},
            {"one reflection", each([](Observation& o) {
                 o.anIndex = {1, 2, 3};
             })},
            {"origin", each([](Observation& o) {
                 o.anIndex = {0, 0, 0};
             })}};
}

}  // namespace

TEST(Judgement, BadInputGivesNoNonsense)
{
    const SyntheticSeries good = syntheticSeries(structureNamed("anatase"), {});
    for (const auto& [strName, fnChange] : changesForTheWorse()) {
        SCOPED_TRACE(strName);
        IntegratedSeries integrated = good.integrated;
        fnChange(integrated.listObservation);
        CRecordingReport report;
        const IntegrationResult result = judgeIntegration(integrated, good.series, good.lattice, {}, report);
        EXPECT_EQ(result.integrated.listObservation.size(), integrated.listObservation.size());
        expectSound(result, report);
    }
    // No cell, no frames.
    CRunReport report;
    EXPECT_TRUE(judgeIntegration(good.integrated, {}, {}, {}, report).quality.listMerged.empty());
}

}  // namespace tessera
