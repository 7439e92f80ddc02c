// The whole judgement on crystals of many Laue classes, whose truth is known.

#include "tests/integration/syntheticobservations.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

struct Case {
    const char* pszCrystal;
    const char* pszLaue;
    int nGroup;   ///< true number, or one that shares its absences
    int nWithin;  ///< place in the ranking that it must have at the worst
};

std::ostream& operator<<(std::ostream& stream, const Case& one)
{
    return stream << one.pszCrystal;
}

class JudgementOfCrystal : public testing::TestWithParam<Case> {};

/// How many groups are more likely than that of a number; all of them where it is not listed.
int groupsBefore(const SpaceGroupRanking& ranking, int nNumber)
{
    for (const SpaceGroupCandidate& candidate : ranking.listCandidate) {
        if (candidate.nNumber == nNumber) {
            return int(std::count_if(ranking.listCandidate.begin(), ranking.listCandidate.end(),
                                     [&](const SpaceGroupCandidate& other) {
                                         return other.dfLikelihood > candidate.dfLikelihood;
                                     }));
        }
    }
    return 230;
}

}  // namespace

// Silicon has some twenty unique reflections, two of which each of its conditions forbids.
//
// Each once indexed by its primitive cell and once by the cell of the source, faded unevenly, with multiple
// scattering in the absences.
TEST_P(JudgementOfCrystal, FindsLaueClassAndGroup)
{
    SyntheticOptions options;
    options.dfB = 0.05;
    options.dfStep = 0.5;
    options.fnFading = [](double dfFrame) { return 1 + 0.3 * std::sin(dfFrame / 40); };
    options.bForbidden = true;
    for (const bool bPrimitive : {true, false}) {
        options.bPrimitive = bPrimitive;
        const SyntheticSeries made = syntheticSeries(structureNamed(GetParam().pszCrystal), options);
        CRecordingReport report;
        const IntegrationResult result = judgeIntegration(made.integrated, made.series, made.lattice, {},
                                                          report);
        EXPECT_EQ(result.chosen.strClass, QString(GetParam().pszLaue)) << qPrintable(report.log());
        EXPECT_LT(groupsBefore(result.spaceGroups, GetParam().nGroup), GetParam().nWithin)
            << qPrintable(report.log());
        EXPECT_LT(result.quality.overall.dfRInt, 0.09);
        EXPECT_GT(result.quality.overall.dfCcHalf, 0.99);
        // In P 1 the only equivalents are Friedel mates, which are on the same frames, so that scales do not
        // change their agreement.
        EXPECT_LT(result.quality.overall.dfRInt,
                  result.unscaled.overall.dfRInt * (result.chosen.nOperations > 1 ? 1 : 1.1));
        double dfSum = 0;
        for (const LaueCandidate& candidate : result.laue.listCandidate) {
            dfSum += candidate.dfLikelihood;
        }
        EXPECT_NEAR(dfSum, 1, 1e-9);
    }
}

INSTANTIATE_TEST_SUITE_P(Crystals, JudgementOfCrystal,
                         testing::Values(Case{"silicon", "m-3m", 227, 6}, Case{"pyrope", "m-3m", 230, 1},
                                         Case{"sodalite", "m-3m", 218, 3}, Case{"beryl", "6/mmm", 192, 3},
                                         Case{"quartz", "-3m1", 154, 3}, Case{"calcite", "-3m", 167, 3},
                                         Case{"akermanite", "4/mmm", 113, 3},
                                         Case{"anatase", "4/mmm", 141, 3}, Case{"forsterite", "mmm", 62, 3},
                                         Case{"natrolite", "mmm", 43, 3}, Case{"diopside", "2/m", 15, 3},
                                         Case{"kyanite", "-1", 2, 3}, Case{"pyrite", "m-3", 205, 3},
                                         Case{"scheelite", "4/m", 88, 3}, Case{"apatite", "6/m", 176, 3},
                                         Case{"dolomite", "-3", 148, 3}, Case{"antimonate", "-31m", 162, 9}),
                         [](const auto& one) { return std::string(one.param.pszCrystal); });

TEST(Judgement, WhatWasAskedForIsTakenOrRefused)
{
    SyntheticOptions options;
    options.dfDMin = 1;
    const SyntheticSeries made = syntheticSeries(structureNamed("anatase"), options);
    JudgementOptions wishes;
    CRecordingReport report;
    wishes.strLaueClass = "4/m";
    EXPECT_EQ(judgeIntegration(made.integrated, made.series, made.lattice, wishes, report).chosen.strClass,
              QString("4/m"));
    wishes = {};
    wishes.nSpaceGroup = 88;  // of 4/m, with the absences of a part of anatase's own
    const IntegrationResult result = judgeIntegration(made.integrated, made.series, made.lattice, wishes,
                                                      report);
    EXPECT_EQ(result.chosen.strClass, QString("4/m"));
    ASSERT_TRUE(result.spaceGroup.has_value());
    EXPECT_EQ(result.spaceGroup->nNumber, 88);
    EXPECT_FALSE(report.said("red "));
    wishes = {};
    wishes.strLaueClass = "m-3m";
    EXPECT_EQ(judgeIntegration(made.integrated, made.series, made.lattice, wishes, report).chosen.strClass,
              QString("4/mmm"));
    EXPECT_TRUE(report.said("red The lattice does not have the Laue class m-3m: 4/mmm is used."));
    // The tetragonal cell shares the error of its edges: 0.001 each in force, which is not the setting.
    EXPECT_GT(result.cellErrors.a, 0);
    EXPECT_EQ(result.cellErrors.a, result.cellErrors.b);
    EXPECT_EQ(result.cellErrors.alpha, 0);
}

// What the forecast says of a series cut short, against the same series when it goes on.
TEST(Judgement, ForecastOfCompletenessComesTrue)
{
    SyntheticOptions options;
    options.dfDMin = 0.9;
    options.dfFirstTilt = -50;
    options.dfLastTilt = 10;
    const CrystalStructure structure = structureNamed("kyanite");
    const SyntheticSeries made = syntheticSeries(structure, options);
    CRunReport report;
    JudgementOptions wishes;
    wishes.dfGoal = 0.7;
    wishes.dfDMin = 0.9;
    const CompletenessForecast forecast =
        judgeIntegration(made.integrated, made.series, made.lattice, wishes, report).forecast;
    EXPECT_LT(forecast.dfNow, 0.6);
    ASSERT_TRUE(std::isfinite(forecast.dfMoreAtEnd));
    ASSERT_TRUE(std::isfinite(forecast.dfMoreAtStart));
    EXPECT_TRUE(forecast.strText.contains(QString("%1 more degrees").arg(std::ceil(forecast.dfMoreAtEnd))));
    for (const bool bAtEnd : {true, false}) {
        SyntheticOptions longer = options;
        (bAtEnd ? longer.dfLastTilt : longer.dfFirstTilt) += bAtEnd ? std::ceil(forecast.dfMoreAtEnd)
                                                                    : -std::ceil(forecast.dfMoreAtStart);
        const SyntheticSeries more = syntheticSeries(structure, longer);
        const IntegrationResult result = judgeIntegration(more.integrated, more.series, more.lattice, wishes,
                                                          report);
        EXPECT_NEAR(result.quality.overall.dfCompleteness, 0.7, 0.02) << bAtEnd;
    }
}

}  // namespace tessera
