#include "crystal/expectedreflections.h"

#include "crystal/hkl3d.h"
#include "crystal/reflectionindices.h"
#include "crystal/reflectionset.h"
#include "crystal/testreflection.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

namespace {

const QList<Vec3D> g_listTriclinic{{0.11f, 0.02f, -0.01f}, {-0.03f, 0.08f, 0.015f}, {0.005f, -0.01f, 0.13f}};

QList<Peak3D> reaching(double dfDStar)
{
    return {reflection(0, 0, 1, 1, dfDStar)};
}

// All points of the box, each judged by its direction: swept if the tilt range holds the direction of the
// point or its opposite in the plane normal to the axis.
QList<HKLRef> plainEnumeration(float fDStar, const QList<Vec3D>& cell, double dfLow, double dfHigh)
{
    QList<HKLRef> list;
    const int nMax[3] = {int(2 * fDStar / length(cell[0])), int(2 * fDStar / length(cell[1])),
                         int(2 * fDStar / length(cell[2]))};
    for (int h = -nMax[0]; h <= nMax[0]; ++h)
        for (int k = -nMax[1]; k <= nMax[1]; ++k)
            for (int l = -nMax[2]; l <= nMax[2]; ++l) {
                const Vec3D g = scaled(cell[0], float(h)) + scaled(cell[1], float(k)) +
                                scaled(cell[2], float(l));
                if (!(squaredLength(g) < fDStar * fDStar))
                    continue;
                const double dfAngle = std::atan2(double(g.z), double(g.y)) * 180 / std::acos(-1.0);
                bool bSwept = false;
                for (double dfTurn : {-180.0, 0.0, 180.0})
                    bSwept |= dfLow < dfAngle + dfTurn && dfAngle + dfTurn < dfHigh &&
                              std::fabs(dfAngle + dfTurn) <= 180;
                if (bSwept)
                    list.append({h, k, l, 0});
            }
    return list;
}

bool sameList(const QList<HKLRef>& list1, const QList<HKLRef>& list2)
{
    return std::equal(list1.begin(), list1.end(), list2.begin(), list2.end(),
                      [](const HKLRef& r1, const HKLRef& r2) {
                          return r1.nH == r2.nH && r1.nK == r2.nK && r1.nL == r2.nL && r1.dfI == r2.dfI;
                      });
}

}  // namespace

TEST(ReflectionIndices, HalvesGoAwayFromZeroAndNothingOverflows)
{
    const struct {
        double dfIndex;
        int nRounded;
    } aRow[] = {{0.5, 1},     {-0.5, -1}, {2.5, 3},         {-2.5, -3},        {1.499, 1},
                {-1.499, -1}, {-0.4, 0},  {1e300, INT_MAX}, {-1e300, INT_MIN}, {std::nan(""), 0}};
    for (const auto& row : aRow)
        EXPECT_EQ(getRoundedHKLRef({reflection(0, row.dfIndex, 0, 7)})[0].nK, row.nRounded) << row.dfIndex;
    EXPECT_TRUE(isCloseToInteger(Vec3D{0.5f, -1.5f, 2.49f}, 0.5f));
    EXPECT_TRUE(isCloseToInteger(Vec3D{1.25f, 0, 0}, 0.25f));
    EXPECT_FALSE(isCloseToInteger(Vec3D{0, 0, -3.2501f}, 0.25f));
    EXPECT_FALSE(isCloseToInteger(Vec3D{std::nanf(""), 0, 0}, 0.5f));
}

TEST(ReflectionSet, AnswersWhatTheLinearSearchAnswers)
{
    std::mt19937 generator(9);
    std::uniform_int_distribution<int> uniform(-12, 12);
    QList<HKLRef> list{{INT_MAX, INT_MIN, 0, 0}};
    for (int n = 0; n < 900; ++n)
        list.append({uniform(generator), uniform(generator), uniform(generator), 0});
    const CReflectionSet set(list);
    EXPECT_TRUE(set.contains(list[0]));
    for (int n = 0; n < 3000; ++n) {
        const HKLRef hkl{uniform(generator), uniform(generator), uniform(generator), 5};
        ASSERT_EQ(set.contains(hkl), reflectionExistInList(hkl, list));
    }
}

TEST(EffectiveDStar, ElementAtNinetyFivePercent)
{
    QList<Peak3D> list;
    for (int n = 0; n < 100; ++n)
        list.append(reflection(0, 0, 0, 0, (37 * n) % 100));
    EXPECT_EQ(getEffectiveDStar(list), 95.f);
}

TEST(AllReflections, SameAsThePlainTripleLoop)
{
    const QList<QList<Vec3D>> listCells{
        g_listTriclinic,
        {{0.05f, 0, 0}, {0, 0.05f, 0}, {0, 0, 0.05f}},
        {{0.2f, 0, 0}, {0.19f, 0.03f, 0}, {0.1f, 0.02f, 0.04f}}};  // very skew
    const QList<QList<double>> listTilts{{-50, 0, 63}, {63, -50}, {0, 1, 170},
                                         {-179, 179},  {10, 13},  {100, 178.5}};
    CRecordingReport report;
    for (const QList<Vec3D>& cell : listCells)
        for (const QList<double>& tilts : listTilts) {
            const double dfLow = std::min(tilts.first(), tilts.last()) + 2,
                         dfHigh = std::max(tilts.first(), tilts.last()) - 2;
            const QList<HKLRef> list = calAllReflections2(reaching(0.61), cell, tilts, report);
            EXPECT_TRUE(sameList(list, plainEnumeration(0.61f, cell, dfLow, dfHigh)))
                << dfLow << ' ' << dfHigh << ' ' << list.size();
            EXPECT_EQ(list.isEmpty(), dfLow > dfHigh);
        }
    EXPECT_TRUE(report.m_listLine.isEmpty());
}

TEST(AllReflections, SlopeFormAgreesWhereItsTangentsDo)
{
    CRecordingReport report;
    const QList<double> tilts{-50, 63};
    QList<HKLRef> listOffAxis;
    for (const HKLRef& hkl : calAllReflections2(reaching(0.6), g_listTriclinic, tilts, report))
        if (hkl.nH != 0 || hkl.nK != 0 || hkl.nL != 0)
            listOffAxis.append(hkl);
    ASSERT_GT(listOffAxis.size(), 100);
    EXPECT_TRUE(sameList(calAllReflections(reaching(0.6), g_listTriclinic, tilts, report), listOffAxis));
}

TEST(AllReflections, HugeAndBrokenInputIsRefusedNotEnumerated)
{
    CRecordingReport report;
    bool bComplete = false;
    // 8 million points in the sphere, 126 million in the box around it.
    const QList<Vec3D> listLarge{{0.008f, 0, 0}, {0, 0.008f, 0}, {0, 0, 0.008f}};
    EXPECT_GT(calAllReflections2(reaching(1), listLarge, {0, 4.1}, report, &bComplete).size(), 1000);
    EXPECT_TRUE(bComplete && report.m_listLine.isEmpty());
    for (float fStep : {0.f, 1e-9f, 2e-3f, std::nanf("")}) {
        const QList<Vec3D> cell{{fStep, 0, 0}, {0, 2e-3f, 0}, {0, 0, 2e-3f}};
        EXPECT_TRUE(calAllReflections2(reaching(1), cell, {-50, 50}, report, &bComplete).isEmpty());
        EXPECT_FALSE(bComplete);
        EXPECT_TRUE(report.marked().last().startsWith("red Too many lattice points"));
    }
}

TEST(HKL3D, PointsOfTheLattice)
{
    CRecordingReport report;
    QList<Peak3D> list;
    ASSERT_TRUE(showHKL3D({{1, 0, 0, 1, 0}, {-1, 2, 3, 4.5f, 0}}, {{0.5f, 0, 0}, {0, 0.25f, 0}, {0, 0, 1}},
                          list, report));
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(list[1].point(), (Vec3D{-0.5f, 0.5f, 3}));
    EXPECT_NEAR(list[1].dfDStar, std::sqrt(9.5), 1e-6);
    EXPECT_EQ(list[1].dfIPoint, 4.5);
    EXPECT_EQ(list[1].nID, 1);
    EXPECT_EQ(list[1].nFrame, 0);
}
