// The whole judgement on crystals of many Laue classes, whose truth is known.

#include "tests/integration/syntheticobservations.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

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

}  // namespace

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
        EXPECT_EQ(result.chosen.strClass, GetParam().pszLaue) << qPrintable(report.log());
        std::cout << GetParam().pszCrystal << " " << made.listTrue.size() << "\n"
                  << qPrintable(report.log()) << "\n";
        for (const auto& op : result.laue.listOperation)
            std::cout << qPrintable(op.strOperation) << " n" << op.nOrder << " pairs " << op.nPairs << " cc "
                      << op.dfCorrelation << " R " << op.dfR << " L " << op.dfLikelihood << "\n";
        for (const auto& op : result.laue.listCandidate)
            std::cout << qPrintable(op.strClass) << " " << op.chCentring << " L " << op.dfLikelihood << " R "
                      << op.dfRInt << " cc " << op.dfCcHalf << "\n";
        for (const auto& c : result.spaceGroups.listCondition)
            std::cout << qPrintable(c.strCondition) << " n " << c.nForbidden << " ratio " << c.dfRatio
                      << " +- " << c.dfRatioError << " L " << c.dfLikelihood << "\n";
    }
}

INSTANTIATE_TEST_SUITE_P(Crystals, JudgementOfCrystal,
                         testing::Values(Case{"silicon", "m-3m", 227, 3}, Case{"pyrope", "m-3m", 230, 1},
                                         Case{"sodalite", "m-3m", 218, 3}, Case{"beryl", "6/mmm", 192, 3},
                                         Case{"quartz", "-3m1", 154, 3}, Case{"calcite", "-3m", 167, 3},
                                         Case{"akermanite", "4/mmm", 113, 3},
                                         Case{"anatase", "4/mmm", 141, 3}, Case{"forsterite", "mmm", 62, 3},
                                         Case{"natrolite", "mmm", 43, 3}, Case{"diopside", "2/m", 15, 3},
                                         Case{"kyanite", "-1", 2, 3}, Case{"pyrite", "m-3", 205, 3},
                                         Case{"scheelite", "4/m", 88, 3}, Case{"apatite", "6/m", 176, 3},
                                         Case{"dolomite", "-3", 148, 3}, Case{"antimonate", "-31m", 162, 9}),
                         [](const auto& one) { return std::string(one.param.pszCrystal); });

}  // namespace tessera
