#include "crystal/testindexing.h"

#include "crystal/reflectionbuilder.h"
#include "tests/reciprocal/simulatedlattice.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

#include <set>

namespace tessera {

TEST(TestIndexing, BuildsTheSphereAndItsNegativesOrSaysWhyNot)
{
    const QList<Vec3D> listBasis = reciprocalBasis(gemmi::UnitCell(8.6, 13.0, 9.3, 95, 112, 88));
    const struct {
        QList<Vec3D> listCell;
        QString strMessage;
    } aRow[] = {{listBasis, " reflection built."},
                {{}, "red Unit cell is not ready. Stop."},
                {{{0.1f, 0, 0}, {0, 0.1f, 0}, {0.05f, 0.05f, 1e-7f}},
                 "red The unit cell is no cell that reflections can be built of: "},
                {{{0.0125f, 0, 0}, {0, 0.0125f, 0}, {0, 0, 0.0125f}}, "red Too many reflections: about 2"}};
    QList<Peak3D> list;
    for (const auto& row : aRow) {
        CRecordingReport report;
        EXPECT_EQ(testIndexing(basisFromList(row.listCell), list, report), &row == aRow);
        EXPECT_TRUE(report.marked().last().contains(row.strMessage)) << report.log().toStdString();
    }
    std::set<std::array<int, 3>> setBuilt;
    for (int n = 0; n < list.size(); ++n) {
        const Peak3D &peak = list[n], &mate = list[(n + list.size() / 2) % list.size()];
        EXPECT_EQ(mate.point(), -peak.point());
        EXPECT_EQ(peak.nID, n);
        EXPECT_EQ(peak.dfIPoint, 100);
        EXPECT_EQ(peak.nFrame, 0);
        EXPECT_TRUE(setBuilt.insert({int(peak.dfH), int(peak.dfK), int(peak.dfL)}).second);
    }
    for (int n = 0; n < 27 * 27 * 27; ++n) {
        const int h = n / 729 - 13, k = n / 27 % 27 - 13, l = n % 27 - 13;
        const float fDStar = length(scaled(listBasis[0], h) + scaled(listBasis[1], k) +
                                    scaled(listBasis[2], l));
        const bool bBuilt = setBuilt.count({h, k, l}) > 0, bInside = fDStar < 1 && fDStar > 0;
        // The limits of the indices are sampled, so that some of the last may be missed.
        EXPECT_TRUE(bBuilt == bInside || (!bBuilt && fDStar > 0.99f)) << h << ' ' << k << ' ' << l;
    }
    CReflectionBuilder builder;  // takes the sizes of all numbers
    EXPECT_TRUE(builder.setUnitCell(-5, 5, 5, 90, -90, 90));
    EXPECT_FALSE(builder.setUnitCell(5, 5, 5, 120, 60, 60));
}

}  // namespace tessera
