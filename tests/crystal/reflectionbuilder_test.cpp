#include "crystal/reflectionbuilder.h"

#include "crystal/crystalparacal.h"
#include "recordingreport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

TEST(ReflectionBuilder, BuildsTheSphereAndItsNegatives)
{
    CReflectionBuilder builder;
    EXPECT_FALSE(builder.build(1));
    ASSERT_TRUE(builder.setUnitCell(-8.6, 13.0, 9.3, 95, -112, 88));
    for (const auto& angles : {std::array<double, 3>{120, 60, 60}, {40, 100, 60}, {120, 120, 120}, {0, 0, 0}})
        EXPECT_FALSE(builder.setUnitCell(5, 5, 5, angles[0], angles[1], angles[2]));
    EXPECT_EQ(builder.m_dfA, 8.6);  // the old cell stands
    CCrystalParaCal cell;
    cell.setUnitCell(8.6, 13.0, 9.3, 95, 112, 88);
    EXPECT_NEAR(builder.m_dfVolume, cell.getVolume(), 1e-9);

    ASSERT_TRUE(builder.build(0.8));
    const auto& vec = builder.reflections();
    const std::set<std::array<int, 3>> setBuilt(vec.begin(), vec.end());
    EXPECT_EQ(setBuilt.size(), vec.size());
    const size_t nHalf = vec.size() / 2;
    for (size_t n = 0; n < nHalf; ++n) {
        EXPECT_GE(vec[n][0], 0);
        EXPECT_EQ(vec[n + nHalf], (std::array<int, 3>{-vec[n][0], -vec[n][1], -vec[n][2]}));
    }
    int nInside = 0, nMissed = 0;
    for (int h = -9; h <= 9; ++h)
        for (int k = -12; k <= 12; ++k)
            for (int l = -9; l <= 9; ++l) {
                const bool bInside = cell.calDStar(h, k, l) < 0.8 && (h != 0 || k != 0 || l != 0);
                nInside += bInside;
                if (setBuilt.count({h, k, l}) != size_t(bInside)) {
                    EXPECT_GT(cell.calDStar(h, k, l), 0.79);  // the limits of the indices are sampled
                    EXPECT_TRUE(bInside);
                    ++nMissed;
                }
            }
    EXPECT_LT(nMissed, 5);
    EXPECT_EQ(int(vec.size()), nInside - nMissed);
    EXPECT_FALSE(builder.build(1000));

    CRecordingReport report;
    QList<Peak3D> list;
    EXPECT_TRUE(testIndexing({{0.25f, 0, 0}, {0, 0.25f, 0}, {0, 0, 0.25f}}, list, report));
    EXPECT_EQ(report.m_listLine, QStringList("250 reflection built."));  // |hkl|² < 16, without the origin
    EXPECT_EQ(list.size(), 250);
    EXPECT_EQ(list[0].dfIPoint, 100);
    EXPECT_FALSE(testIndexing({}, list, report));
    EXPECT_EQ(report.marked().last(), "red Unit cell is not ready. Stop.");
}
