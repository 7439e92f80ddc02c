#include "crystal/expectedreflections.h"

#include "crystal/reflectionindices.h"
#include "tests/crystal/testreflection.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

namespace tessera {

namespace {

using Indices = std::vector<std::array<int, 3>>;

Indices indicesOf(const QList<HKLRef>& list, bool bWithOrigin = true)
{
    Indices indices;
    for (const HKLRef& hkl : list) {
        if (bWithOrigin || hkl.nH != 0 || hkl.nK != 0 || hkl.nL != 0) {
            indices.push_back({hkl.nH, hkl.nK, hkl.nL});
        }
    }
    return indices;
}

// All points of the box, each judged by its direction: swept if the tilt range holds the direction of the
// point or its opposite in the plane normal to the axis.
Indices plainEnumeration(float fDStar, const QList<Vec3D>& cell, double dfLow, double dfHigh)
{
    Indices indices;
    const int nMax[3] = {int(2 * fDStar / length(cell[0])), int(2 * fDStar / length(cell[1])),
                         int(2 * fDStar / length(cell[2]))};
    for (int h = -nMax[0]; h <= nMax[0]; ++h) {
        for (int k = -nMax[1]; k <= nMax[1]; ++k) {
            for (int l = -nMax[2]; l <= nMax[2]; ++l) {
                const Vec3D g = scaled(cell[0], float(h)) + scaled(cell[1], float(k)) +
                                scaled(cell[2], float(l));
                const double dfAngle = std::atan2(double(g.z), double(g.y)) * 180 / std::acos(-1.0);
                bool bSwept = false;
                for (double df : {dfAngle - 180, dfAngle, dfAngle + 180}) {
                    bSwept |= dfLow < df && df < dfHigh && std::fabs(df) <= 180;
                }
                if (bSwept && squaredLength(g) < fDStar * fDStar) {
                    indices.push_back({h, k, l});
                }
            }
        }
    }
    return indices;
}

}  // namespace

TEST(ReflectionIndices, HalvesGoAwayFromZeroAndNothingOverflows)
{
    const struct {
        double dfIndex;
        int nRounded;
    } aRow[] = {{0.5, 1}, {-2.5, -3}, {-1.499, -1}, {1e300, INT_MAX}, {-1e300, INT_MIN}, {std::nan(""), 0}};
    for (const auto& row : aRow) {
        EXPECT_EQ(getRoundedHKLRef({reflection(0, row.dfIndex, 0, 7)})[0].nK, row.nRounded) << row.dfIndex;
    }
    EXPECT_TRUE(isCloseToInteger(Vec3D{1.25f, -1.75f, 0}, 0.25f));
    EXPECT_FALSE(isCloseToInteger(Vec3D{0, 0, -3.2501f}, 0.25f));
    EXPECT_FALSE(isCloseToInteger(Vec3D{std::nanf(""), 0, 0}, 0.5f));
}

TEST(MissingReflections, AreThoseThatALinearSearchDoesNotFind)
{
    std::mt19937 generator(9);
    std::uniform_int_distribution<int> uniform(-12, 12);
    const auto any = [&]() { return HKLRef{uniform(generator), uniform(generator), uniform(generator), 5}; };
    QList<HKLRef> listObserved{{INT_MAX, INT_MIN, 0, 0}};
    QList<HKLRef> listAll = listObserved;
    for (int n = 0; n < 900; ++n) {
        listObserved.append(any());
    }
    QList<HKLRef> listMissing;
    for (int n = 0; n < 3000; ++n) {
        listAll.append(any());
        if (!reflectionExistInList(listAll.last(), listObserved)) {
            listMissing.append(listAll.last());
        }
    }
    EXPECT_EQ(indicesOf(missingReflections(listAll, listObserved)), indicesOf(listMissing));
}

TEST(ExpectedReflections, SameAsThePlainTripleLoop)
{
    const QList<QList<Vec3D>> listCells{
        {{0.11f, 0.02f, -0.01f}, {-0.03f, 0.08f, 0.015f}, {0.005f, -0.01f, 0.13f}},
        {{0.05f, 0, 0}, {0, 0.05f, 0}, {0, 0, 0.05f}},
        {{0.2f, 0, 0}, {0.19f, 0.03f, 0}, {0.1f, 0.02f, 0.04f}}};  // very skew
    const QList<QList<double>> listTilts{{-50, 0, 63}, {63, -50}, {0, 1, 170},
                                         {-179, 179},  {10, 13},  {100, 178.5}};
    QList<Peak3D> listPeak;  // the element at 95 % counts
    for (int n = 0; n < 100; ++n) {
        listPeak.append(reflection(0, 0, 1, 1, 0.61 + ((37 * n) % 100 - 95)));
    }
    CRecordingReport report;
    for (const QList<Vec3D>& cell : listCells) {
        for (const QList<double>& tilts : listTilts) {
            const double dfLow = std::min(tilts.first(), tilts.last()) + 2,
                         dfHigh = std::max(tilts.first(), tilts.last()) - 2;
            const QList<HKLRef> list = calAllReflections2(listPeak, basisFromList(cell), tilts, report);
            EXPECT_EQ(indicesOf(list), plainEnumeration(0.61f, cell, dfLow, dfHigh))
                << dfLow << ' ' << dfHigh;
            EXPECT_EQ(list.isEmpty(), dfLow > dfHigh);
            // The form by slopes has no origin, and agrees where tangents rise.
            const bool bRise = &cell == &listCells[0] && dfLow > -90 && dfHigh < 90;
            EXPECT_TRUE(!bRise || indicesOf(calAllReflections(listPeak, basisFromList(cell), tilts,
                                                              report)) == indicesOf(list, false));
        }
    }
    EXPECT_TRUE(report.m_listLine.isEmpty());
}

TEST(ExpectedReflections, HugeAndBrokenInputIsRefusedNotEnumerated)
{
    CRecordingReport report;
    bool bComplete = false;
    const QList<Peak3D> listPeak{reflection(0, 0, 1, 1, 1)};
    // 8 million points in the sphere, 126 million in the box around it.
    const ReciprocalBasis large{{0.008f, 0, 0}, {0, 0.008f, 0}, {0, 0, 0.008f}};
    EXPECT_GT(calAllReflections2(listPeak, large, {0, 4.1}, report, &bComplete).size(), 1000);
    EXPECT_TRUE(bComplete);
    EXPECT_TRUE(report.m_listLine.isEmpty());
    for (float fStep : {0.f, 1e-9f, 2e-3f, std::nanf("")}) {
        const ReciprocalBasis cell{{fStep, 0, 0}, {0, 2e-3f, 0}, {0, 0, 2e-3f}};
        EXPECT_TRUE(calAllReflections2(listPeak, cell, {-50, 50}, report, &bComplete).isEmpty());
        EXPECT_FALSE(bComplete);
        EXPECT_TRUE(report.marked().last().startsWith("red Too many lattice points"));
    }
}

}  // namespace tessera
