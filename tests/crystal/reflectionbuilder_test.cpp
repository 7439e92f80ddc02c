#include "crystal/reflectionbuilder.h"

#include "crystal/testindexing.h"

#include "crystal/crystalparacal.h"
#include "recordingreport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

TEST(ReflectionBuilder, BuildsTheSphereAndItsNegatives)
{
    CReflectionBuilder builder;
    ASSERT_TRUE(builder.setUnitCell(-8.6, 13.0, 9.3, 95, -112, 88));
    for (const auto& angles : {std::array<double, 3>{120, 60, 60}, {120, 120, 120}, {0, 0, 0}})
        EXPECT_FALSE(builder.setUnitCell(5, 5, 5, angles[0], angles[1], angles[2]));
    CCrystalParaCal cell;
    cell.setUnitCell(8.6, 13.0, 9.3, 95, 112, 88);
    ASSERT_TRUE(builder.build(0.8));
    const auto& vec = builder.reflections();
    const std::set<std::array<int, 3>> setBuilt(vec.begin(), vec.end());
    EXPECT_EQ(setBuilt.size(), vec.size());
    for (size_t n = 0; n < vec.size() / 2; ++n)
        EXPECT_EQ(vec[n + vec.size() / 2], (std::array<int, 3>{-vec[n][0], -vec[n][1], -vec[n][2]}));
    int nWrong = 0;
    for (int h = -9; h <= 9; ++h)
        for (int k = -12; k <= 12; ++k)
            for (int l = -9; l <= 9; ++l) {
                const double dfDStar = cell.calDStar(h, k, l);
                const bool bBuilt = setBuilt.count({h, k, l}) > 0;
                // The limits of the indices are sampled, so that some of the last may be missed.
                nWrong += bBuilt != (dfDStar < 0.8 && dfDStar > 0) && (bBuilt || dfDStar < 0.79);
            }
    EXPECT_EQ(nWrong, 0);
    EXPECT_FALSE(builder.build(1000));

    CRecordingReport report;
    QList<Peak3D> list;
    EXPECT_TRUE(testIndexing({{0.25f, 0, 0}, {0, 0.25f, 0}, {0, 0, 0.25f}}, list, report));
    EXPECT_EQ(list.size(), 250);  // |hkl|² < 16, without the origin
    EXPECT_FALSE(testIndexing({}, list, report));
    EXPECT_EQ(report.marked().last(), "red Unit cell is not ready. Stop.");
    EXPECT_FALSE(testIndexing({{0.1f, 0, 0}, {0, 0.1f, 0}, {0.05f, 0.05f, 1e-7f}}, list, report));
    EXPECT_TRUE(
        report.marked().last().startsWith("red The unit cell is no cell that reflections can be built of: "));
    EXPECT_FALSE(testIndexing({{0.0125f, 0, 0}, {0, 0.0125f, 0}, {0, 0, 0.0125f}}, list, report));
    EXPECT_EQ(report.marked().last(),
              QStringLiteral("red Too many reflections: about %L1 are expected, the limit is %L2.")
                  .arg(2144661)
                  .arg(2000000));
    EXPECT_EQ(list.size(), 250);
    EXPECT_EQ(report.marked().first(), "250 reflection built.");
}
