// Scales, error model and outliers against a truth that is known.

#include "integration/scaling.h"
#include "integration/equivalents.h"
#include "tests/integration/syntheticobservations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace tessera {

namespace {

ObservationSymmetry symmetryNamed(const char* pszGroup)
{
    ObservationSymmetry symmetry;
    symmetry.ops = gemmi::get_spacegroup_by_name(pszGroup).operations();
    return symmetry;
}

Observation measured(const std::array<int, 3>& anIndex, double dfFrame, double dfIntensity, double dfSigma)
{
    Observation observation;
    observation.anIndex = anIndex;
    observation.dfFrame = dfFrame;
    observation.dfDStar = std::hypot(anIndex[0], anIndex[1], anIndex[2]) / 10;
    observation.dfSpeed = 0.01;
    observation.dfIntensity = dfIntensity;
    observation.dfSigma = dfSigma;
    return observation;
}

SyntheticOptions fadingCrystal()
{
    SyntheticOptions options;
    options.dfStep = 0.5;
    options.bPrimitive = false;
    options.dfElectrons = 3000;
    options.fnFading = [](double dfFrame) {
        return std::exp(0.7 * dfFrame / 280 + 0.2 * std::sin(dfFrame / 30));
    };
    options.fnB = [](double dfFrame) { return 1.2 * dfFrame / 280; };
    options.dfA = 1.4;
    options.dfB = 0.03;
    return options;
}

}  // namespace

namespace {

/// The mean square deviation from the truth, in sigmas, after a common factor.
double chiSquareOf(const SyntheticSeries& made)
{
    double dfChi = 0;
    double dfAbove = 0;
    double dfBelow = 0;
    for (size_t n = 0; n < made.listTrue.size(); ++n) {
        const Observation& observation = made.integrated.listObservation[n];
        const double dfWeight = 1 / std::pow(observation.correctedSigma(), 2);
        dfAbove += dfWeight * observation.corrected() * made.listTrue[n];
        dfBelow += dfWeight * made.listTrue[n] * made.listTrue[n];
    }
    for (size_t n = 0; n < made.listTrue.size(); ++n) {
        const Observation& observation = made.integrated.listObservation[n];
        const double df = (observation.corrected() - dfAbove / dfBelow * made.listTrue[n]) /
                          observation.correctedSigma();
        dfChi += df * df / double(made.listTrue.size());
    }
    return dfChi;
}

}  // namespace

TEST(Scaling, ScaleDecayAndErrorModelAreRecovered)
{
    SyntheticOptions options = fadingCrystal();
    SyntheticSeries made = syntheticSeries(structureNamed("pyrope"), options);
    CRunReport report;
    const ScalingResult result = scaleObservations(made.integrated.listObservation, symmetryNamed("I m -3 m"),
                                                   made.series.frameCount(), {}, report);
    // What the scales should be, but for a factor that is common to all.
    std::vector<double> listLog;
    for (const Observation& observation : made.integrated.listObservation) {
        const double dfTrue = std::log(options.fnFading(observation.dfFrame)) +
                              options.fnB(observation.dfFrame) * observation.dfDStar * observation.dfDStar /
                                  2;
        listLog.push_back(std::log(observation.dfScale) - dfTrue);
    }
    const double dfMean = std::accumulate(listLog.begin(), listLog.end(), 0.0) / double(listLog.size());
    double dfSquares = 0;
    for (const double df : listLog) {
        dfSquares += (df - dfMean) * (df - dfMean) / double(listLog.size());
    }
    EXPECT_LT(std::sqrt(dfSquares), 0.01);
    EXPECT_NEAR(result.listFrameDecay.back(), 1.2, 0.15);
    EXPECT_EQ(result.listFrameDecay.front(), 0);
    EXPECT_NEAR(result.dfErrorA, 1.4, 0.1);
    EXPECT_NEAR(result.dfErrorB, 0.03, 0.006);
    EXPECT_LT(result.listRejected.size(), made.listTrue.size() / 500);
    EXPECT_NEAR(chiSquareOf(made), 1, 0.15) << "of the truth, which the fit has not seen";
}

TEST(Scaling, OutliersAreFoundAndGoodOnesKept)
{
    SyntheticOptions options = fadingCrystal();
    options.dfOutliers = 0.03;
    SyntheticSeries made = syntheticSeries(structureNamed("beryl"), options);
    CRunReport report;
    const ObservationSymmetry symmetry = symmetryNamed("P 6/m m m");
    std::vector<Observation>& list = made.integrated.listObservation;
    const ScalingResult result = scaleObservations(list, symmetry, made.series.frameCount(), {}, report);
    const EquivalentGroups groups = groupEquivalents(list, symmetry, FriedelMates::Equivalent,
                                                     g_nExcludingFlags & ~FlagOutlier);
    int nGoodLost = 0;
    int nFound = 0;
    int nToFind = 0;
    for (size_t n = 0; n < list.size(); ++n) {
        const bool bRejected = (list[n].nFlags & FlagOutlier) != 0;
        const bool bOutlier = made.setOutlier.count(int(n)) > 0;
        // A weak reflection that lost its intensity is no outlier that anyone could tell.
        const double dfShould = list[n].dfIntensity / (list[n].dfIntensity < 0 ? -1 : 10);
        if (bOutlier && groups.sizeOf(groups.listGroup[n]) > 4 && dfShould > 15 * list[n].dfSigma) {
            ++nToFind;
            nFound += bRejected ? 1 : 0;
        }
        nGoodLost += bRejected && !bOutlier ? 1 : 0;
    }
    EXPECT_GT(nToFind, 50);
    EXPECT_GE(nFound, 0.95 * nToFind);
    EXPECT_LT(nGoodLost, 0.005 * double(list.size()));
    ASSERT_FALSE(result.listRejected.empty());
    for (const RejectedObservation& rejected : result.listRejected) {
        EXPECT_NE(list[rejected.nObservation].nFlags & FlagOutlier, 0u);
        EXPECT_GT(std::abs(rejected.dfDeviation), 3.5);
        EXPECT_FALSE(rejected.strWhy.isEmpty());
    }
    EXPECT_NEAR(result.dfErrorA, 1.4, 0.15);
}

// 24 observations, those late in the series twice as strong in the mean, but no surer than that: a fade of
// two may be chance.
TEST(Scaling, FewReflectionsDoNotBendTheScale)
{
    std::vector<Observation> list;
    for (int n = 0; n < 12; ++n) {
        list.push_back(measured({n + 1, 1, 0}, 5 + n % 2, n % 3 == 0 ? 200 : 50, 60));
        list.push_back(measured({-n - 1, 1, 0}, 90 + n % 2, n % 2 == 0 ? 350 : 50, 60));
    }
    CRunReport report;
    const ScalingResult result = scaleObservations(list, symmetryNamed("P 1 2/m 1"), 100, {}, report);
    EXPECT_EQ(result.nUsed, 24);
    for (const double df : result.listFrameScale) {
        EXPECT_GT(df, 0.7);
        EXPECT_LT(df, 1.45);
    }
    // The logarithms are even about 0 over the frames that hold reflections.
    EXPECT_NEAR(result.listFrameScale[5] * result.listFrameScale[90], 1, 0.05);
}

TEST(Scaling, PairsStayUnlessTheyAreWildlyApart)
{
    const auto rejectedOf = [](double dfOne, double dfOther) {
        // Ten good pairs keep the error model at (1, 0).
        std::vector<Observation> list;
        for (int n = 0; n < 10; ++n) {
            for (const int nSign : {-1, 1}) {
                list.push_back(measured({nSign * (n + 1), 0, 0}, 10, 1000 + nSign * 7, 10));
            }
        }
        list.push_back(measured({0, 1, 0}, 10, dfOne, 10));
        list.push_back(measured({0, -1, 0}, 10, dfOther, 10));
        CRunReport report;
        std::vector<int> listRejected;
        ScalingOptions options;
        options.bScale = false;
        for (const RejectedObservation& one :
             scaleObservations(list, symmetryNamed("P -1"), 20, options, report).listRejected) {
            listRejected.push_back(one.nObservation);
        }
        return listRejected;
    };
    EXPECT_EQ(rejectedOf(1000, 1080), std::vector<int>{});    // 5.7 sigmas apart
    EXPECT_EQ(rejectedOf(1000, 3000), std::vector<int>{21});  // the greater goes
    EXPECT_EQ(rejectedOf(-50, 5000), std::vector<int>{21});
}

TEST(Scaling, FramesWithoutTheCrystalAreRejectedAndNamed)
{
    SyntheticOptions options;
    options.bPrimitive = false;
    options.fnFading = [](double dfFrame) { return dfFrame > 125 ? 15.0 : 1.0; };
    SyntheticSeries made = syntheticSeries(structureNamed("beryl"), options);
    CRunReport report;
    const ScalingResult result = scaleObservations(
        made.integrated.listObservation, symmetryNamed("P 6/m m m"), made.series.frameCount(), {}, report);
    int nLate = 0;
    int nRejectedLate = 0;
    for (const Observation& observation : made.integrated.listObservation) {
        nLate += observation.dfFrame > 130 ? 1 : 0;
        nRejectedLate += observation.dfFrame > 130 && (observation.nFlags & FlagOutlier) != 0 ? 1 : 0;
        if (observation.dfFrame < 115) {
            EXPECT_LT(observation.dfScale, 2);
        }
    }
    EXPECT_GT(nRejectedLate, 0.95 * nLate);
    EXPECT_TRUE(result.listRejected.back().strWhy.contains("less than a fifth"));
}

}  // namespace tessera
