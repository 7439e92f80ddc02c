// The judgement of intensities: lines made from the truth with a known noise, in settings that the metric
// allows.
#include "simulate/intensityjudgement.h"
#include "records/pi.h"
#include "simulate/cellsetting.h"
#include "simulate/equivalentindices.h"
#include "simulate/randomsource.h"
#include "simulate/structurefactor.h"
#include "simulate/symmetryjudgement.h"

#include <QFile>
#include <QJsonArray>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <iterator>

namespace tessera {

namespace {

SimulatedSeries truthOf(const char* pCrystal)
{
    SimulationParameters p;
    p.strCrystal = QString::fromLatin1(pCrystal);
    p.nFrames = 120;
    p.nSize = 440;
    p.dfCenterX = p.dfCenterY = 220;
    QString strError;
    auto series = simulateSeries(p, strError);
    EXPECT_TRUE(series) << qPrintable(strError);
    return std::move(series).value_or(SimulatedSeries());
}

// Lines of the reflections that crossed the sphere, with indices on axes that are integer combinations of the
// true ones (the rows of the matrix): indices transform like axes. Sigmas are multiplied by a factor.
std::vector<ReflectionLine> lines(const SimulatedSeries& truth, const Matrix3& matAxes, double dfSigmaFactor)
{
    std::map<std::array<int, 3>, double> mapValue;
    for (size_t i = 0; i < truth.listReflection.size(); ++i) {
        const Reflection& r = truth.listReflection[i];
        mapValue[{r.nH, r.nK, r.nL}] = r.dfSquareF * truth.listArea[i];
    }
    CRandomSource random(2, 0);
    std::vector<ReflectionLine> list;
    for (const Crossing& crossing : truth.listCrossing) {
        if (crossing.bInside) {
            const Vector3 vec = matAxes *
                                Vector3{double(crossing.nH), double(crossing.nK), double(crossing.nL)};
            const double dfTrue = 37 * mapValue.at({crossing.nH, crossing.nK, crossing.nL});
            const double dfSigma = 0.5 + 0.03 * dfTrue;
            list.push_back({{int(std::lround(vec[0])), int(std::lround(vec[1])), int(std::lround(vec[2]))},
                            dfTrue + dfSigma * random.normal(),
                            dfSigmaFactor * dfSigma});
        }
    }
    return list;
}

std::array<double, 6> cellOn(const SimulatedSeries& truth, const Matrix3& matAxes)
{
    return cellOfReciprocalBasis(transposed(inverseOf(matAxes)) * truth.matBasis);
}

const Matrix3 g_matSame{Vector3{1, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}};

}  // namespace

TEST(IntensityJudgement, FindsTheSettingOfTheLines)
{
    const struct {
        const char* pCrystal;
        Matrix3 matAxes;
        const char* pCase;
    } aRow[] = {
        {"quartz", g_matSame, "as published"},
        {"quartz", {Vector3{-1, 0, 0}, Vector3{0, -1, 0}, Vector3{0, 0, 1}}, "half a turn, not in -3m"},
        {"diopside", {Vector3{-1, 0, -1}, Vector3{0, -1, 0}, Vector3{0, 0, 1}}, "I in place of C"},
        {"diopside", {Vector3{.5, .5, 0}, Vector3{-.5, .5, 0}, Vector3{0, 0, 1}}, "primitive"},
        {"kyanite", {Vector3{-1, 0, 0}, Vector3{0, -1, 0}, Vector3{0, 0, -1}}, "inverted"},
        {"forsterite", {Vector3{0, 1, 0}, Vector3{0, 0, 1}, Vector3{1, 0, 0}}, "P n m a"}};
    for (const auto& row : aRow) {
        const SimulatedSeries truth = truthOf(row.pCrystal);
        std::array<double, 6> adfCell = cellOn(truth, row.matAxes);
        adfCell[0] *= 1.0004;
        adfCell[4] += 0.05;
        const auto list = lines(truth, row.matAxes, 1);
        ASSERT_GT(list.size(), 50u);
        for (const auto listed : {ListedReflections::EachIndex, ListedReflections::Merged}) {
            const IntensityJudgement j = judgeIntensities(list, adfCell, truth, 0, listed);
            ASSERT_TRUE(j.bRead) << row.pCase;
            EXPECT_GT(j.dfCorrelation, 0.999) << row.pCase;
            EXPECT_EQ(j.nOffTruth, 0) << row.pCase;
            EXPECT_NEAR(j.dfMeanSquare, 1, 0.25) << row.pCase;
            EXPECT_NEAR(j.dfScale / 37, 1, 0.01) << row.pCase;
            EXPECT_NEAR(j.dfR / j.dfRForetold, 1, 0.25) << row.pCase;
            EXPECT_EQ(j.completenessOfAll(), 1) << row.pCase;
            EXPECT_EQ(j.nLines, int(list.size()));
            EXPECT_LT(j.nCrossed, listed == ListedReflections::Merged ? 0.7 * j.nLines : j.nLines + 1)
                << row.pCase;
        }
    }
}

namespace {

/// Good lines of kyanite, of which something can be made that is wrong.
class LinesOfKyanite : public testing::Test {
protected:
    IntensityJudgement judge(const std::vector<ReflectionLine>& listLine) const
    {
        return judgeIntensities(listLine, truth.adfCell, truth, 0, ListedReflections::EachIndex);
    }
    double dStar(const ReflectionLine& line) const
    {
        const Vector3 vec{double(line.anIndex[0]), double(line.anIndex[1]), double(line.anIndex[2])};
        return lengthOf(vec * truth.matBasis);
    }

    const SimulatedSeries truth = truthOf("kyanite");
    const std::vector<ReflectionLine> list = lines(truth, g_matSame, 1);
    const IntensityJudgement good = judge(list);
};

}  // namespace

TEST_F(LinesOfKyanite, SigmasOfHalfTheDeviationsAreTold)
{
    const IntensityJudgement halved = judge(lines(truth, g_matSame, 0.5));
    EXPECT_NEAR(halved.dfMeanSquare, 4 * good.dfMeanSquare, 0.05);
    EXPECT_NEAR(halved.dfMedianSquare, 4 * good.dfMedianSquare, 0.2);
    EXPECT_NEAR(halved.dfMedianRatio, 2 * good.dfMedianRatio, 1e-9);
    EXPECT_GT(halved.dfR, 1.5 * halved.dfRForetold);
}

TEST_F(LinesOfKyanite, WhatIsMissingIsTold)
{
    std::vector<ReflectionLine> listHalf;
    for (size_t i = 0; i < list.size(); i += 2) {
        listHalf.push_back(list[i]);
    }
    const IntensityJudgement half = judge(listHalf);
    EXPECT_NEAR(half.completenessOfAll(), 0.5, 0.01);
    EXPECT_NEAR(half.completenessWithin(), 0.5, 0.01);
    // All to a limit.
    std::vector<ReflectionLine> listInner;
    std::copy_if(list.begin(), list.end(), std::back_inserter(listInner),
                 [&](const ReflectionLine& line) { return dStar(line) < 0.8; });
    const IntensityJudgement inner = judge(listInner);
    EXPECT_EQ(inner.completenessWithin(), 1);
    EXPECT_LT(inner.completenessOfAll(), 0.9);
    EXPECT_NEAR(inner.dfDMin, 1 / 0.8, 0.03);
    EXPECT_LT(half.nCrossedObserved, good.nCrossedObserved);
    EXPECT_GT(half.dfCorrelation, 0.999);
}

// An intensity beside its index, one without a sigma; a fall-off that was not taken out.
TEST_F(LinesOfKyanite, LinesThatAreWrongAreTold)
{
    std::vector<ReflectionLine> listBad = list;
    listBad[0] = {{40, 0, 0}, 50, 1};
    listBad[1].dfSigma = 0;
    for (ReflectionLine& line : listBad) {
        line.dfIntensity *= std::exp(-1.5 * dStar(line) * dStar(line) / 2);
    }
    const IntensityJudgement bad = judge(listBad);
    EXPECT_EQ(bad.nOffTruth, 1);
    EXPECT_EQ(bad.nWithoutSigma, 1);
    EXPECT_NEAR(bad.dfDecayLeft, 1.5, 0.2);
    EXPECT_NEAR(good.dfDecayLeft, 0, 0.2);
    EXPECT_GT(bad.dfMeanSquare, 5);
    ASSERT_EQ(bad.listWorst.size(), 10u);
    EXPECT_GE(std::abs(bad.listWorst[0].deviation()), std::abs(bad.listWorst[1].deviation()));
}

TEST_F(LinesOfKyanite, IntensitiesOfSomethingElseDoNotAgree)
{
    std::vector<ReflectionLine> listShuffled = list;
    for (size_t i = 0; i < list.size(); ++i) {
        listShuffled[i].dfIntensity = list[(7 * i + 3) % list.size()].dfIntensity;
    }
    EXPECT_LT(judge(listShuffled).dfCorrelation, 0.5);
    const IntensityJudgement other = judgeIntensities(list, {8, 8, 9, 90, 90, 90}, truth, 0,
                                                      ListedReflections::EachIndex);
    EXPECT_FALSE(other.bRead);
    EXPECT_FALSE(other.strWhy.isEmpty());
}

TEST(IntensityJudgement, ForetellsRByTheSigmas)
{
    // Strong: |dF| = sigma / 2F, and the mean deviation of a normal distribution is sqrt(2/pi) of its sigma.
    EXPECT_NEAR(foretoldR({{10000, 50}}), std::sqrt(2 / g_dfPi) * 50 / (2 * 10000), 1e-5);
    // Weak ones against throws of the dice.
    const std::vector<std::array<double, 2>> listTrue = {{3, 1}, {0.5, 1}, {0, 1}, {20, 4}, {7, 0.5}};
    CRandomSource random(3, 0);
    double dfDeviation = 0, dfSum = 0;
    for (int n = 0; n < 400000; ++n) {
        for (const auto& [dfTrue, dfSigma] : listTrue) {
            const double df = dfTrue + dfSigma * random.normal();
            if (df > 2 * dfSigma) {
                dfDeviation += std::abs(std::sqrt(df) - std::sqrt(dfTrue));
                dfSum += std::sqrt(df);
            }
        }
    }
    EXPECT_NEAR(foretoldR(listTrue), dfDeviation / dfSum, 5e-4);
}

TEST(IntensityJudgement, ReadsFilesAndRefusesBrokenOnes)
{
    QTemporaryDir dir;
    const auto write = [&](const char* pName, const QByteArray& text) {
        QFile file(dir.filePath(QString::fromLatin1(pName)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    };
    const auto path = [&](const char* pName) { return dir.filePath(QString::fromLatin1(pName)); };
    QString strError;
    write("good.hkl",
          "   1  -2   3  -12.50    3.25\n-100-101-102 1234.5    0.00   1\n   0   0   0    0.00    "
          "0.00\nTITL\n");
    const auto list = readReflectionLines(path("good.hkl"), strError);
    ASSERT_TRUE(list);
    ASSERT_EQ(list->size(), 2u);
    EXPECT_EQ(list->at(0).anIndex, (std::array<int, 3>{1, -2, 3}));
    EXPECT_EQ(list->at(0).dfIntensity, -12.5);
    EXPECT_EQ(list->at(0).dfSigma, 3.25);
    EXPECT_EQ(list->at(1).anIndex, (std::array<int, 3>{-100, -101, -102}));
    EXPECT_EQ(list->at(1).dfIntensity, 1234.5);
    for (const char* pText :
         {"   1  -2   3  -12.50    3.25\n", "   1  -2   3  -12.50\n   0   0   0    0.00    0.00\n",
          "   1  -2   x  -12.50    3.25\n   0   0   0    0.00    0.00\n",
          "   1  -2   3     nan    3.25\n   0   0   0    0.00    0.00\n", ""}) {
        write("bad.hkl", pText);
        EXPECT_FALSE(readReflectionLines(path("bad.hkl"), strError)) << pText;
    }
    write("a.ins", "TITL x\nCELL 0.0251 5.1 6.2(1) 7 90 91.5 90\n");
    EXPECT_EQ(readCellOfStructureFile(path("a.ins")), (std::array<double, 6>{5.1, 6.2, 7, 90, 91.5, 90}));
    write("a.cif",
          "data_x\n_cell_length_a 5.25(3)\n_cell_length_b   6.2\n_cell_length_c 7.1\n_cell_angle_alpha 90\n"
          "_cell_angle_beta 91.50(2)\n_cell_angle_gamma 90\n");
    EXPECT_EQ(readCellOfStructureFile(path("a.cif")), (std::array<double, 6>{5.25, 6.2, 7.1, 90, 91.5, 90}));
    write("b.cif", "data_x\n_cell_length_a 5.25(3)\n");
    EXPECT_FALSE(readCellOfStructureFile(path("b.cif")));
}

TEST(SymmetryJudgement, KnowsTheLaueClassesAndTakesEitherHand)
{
    const std::map<QString, QString> mapClass = {
        {"silicon", "m-3m"},   {"pyrope", "m-3m"},   {"sodalite", "m-3m"},    {"beryl", "6/mmm"},
        {"quartz", "-3m"},     {"calcite", "-3m"},   {"akermanite", "4/mmm"}, {"anatase", "4/mmm"},
        {"forsterite", "mmm"}, {"natrolite", "mmm"}, {"diopside", "2/m"},     {"kyanite", "-1"}};
    for (const auto& [strCrystal, strClass] : mapClass) {
        EXPECT_EQ(CEquivalentIndices(strCrystal).laueClass(), strClass) << qPrintable(strCrystal);
    }
    const auto group = [](const char* pName, int nNumber) {
        return QJsonObject{{"name", pName}, {"number", nNumber}};
    };
    SymmetryJudgement j = judgeSymmetry(
        {{"laueClass", "-3m1"},
         {"spaceGroups", QJsonArray{group("P 3 2 1", 150), group("P 31 2 1", 152)}},
         {"rInt", 0.1}},
        "quartz");
    EXPECT_TRUE(j.bClassRight);
    EXPECT_EQ(j.nGroupRank, 2);
    EXPECT_EQ(j.dfRInt, 0.1);
    j = judgeSymmetry(
        {{"laueClass", "m-3"},
         {"laueClasses", QJsonArray{QJsonObject{{"class", "m-3"}}, QJsonObject{{"class", "m-3m"}}}},
         {"spaceGroups", QJsonArray{"I a -3 d:1", "I 41 3 2"}}},
        "pyrope");
    EXPECT_FALSE(j.bClassRight);
    EXPECT_EQ(j.nClassRank, 2);
    EXPECT_EQ(j.nGroupRank, 1);
    EXPECT_EQ(
        judgeSymmetry({{"laueClass", "mmm"}, {"spaceGroups", QJsonArray{group("P n m a", 63)}}}, "forsterite")
            .nGroupRank,
        0);
    EXPECT_FALSE(judgeSymmetry({{"integrated", false}}, "quartz").bRead);
    // Six equivalents of a general reflection of quartz and their inverses have one that stands for all.
    const CEquivalentIndices equivalents(QStringLiteral("quartz"));
    for (const auto& anIndex : {std::array<int, 3>{1, 2, 3}, {2, 1, -3}, {2, -3, 3}, {-1, -2, -3}}) {
        EXPECT_EQ(equivalents.standFor(anIndex), equivalents.standFor({1, 2, 3}));
    }
    EXPECT_NE(equivalents.standFor({2, 1, 3}), equivalents.standFor({1, 2, 3}));
}

}  // namespace tessera
