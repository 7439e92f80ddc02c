// Messages about a cell that replaces another one, for points of a cubic lattice.
#include "road/formercell.h"

#include <gtest/gtest.h>

namespace {

using namespace tessera;

QList<Vec3D> cubicCell(float fEdge)
{
    const float f = 1 / fEdge;
    return {{f, 0, 0}, {0, f, 0}, {0, 0, f}};
}

/// All points of a cubic lattice of 5 Å up to 1 Å⁻¹, as peaks of one frame.
DataSet latticePeaks()
{
    DataSet data;
    QList<Peak3D> listPeak;
    for (int h = -5; h <= 5; ++h) {
        for (int k = -5; k <= 5; ++k) {
            for (int l = -5; l <= 5; ++l) {
                Peak3D peak;
                peak.setPoint({0.2f * float(h), 0.2f * float(k), 0.2f * float(l)});
                peak.dfDStar = double(length(peak.point()));
                peak.dfX2DCorrected = 100;  // away from the direct beam
                peak.nID = listPeak.size();
                peak.nFrame = 0;
                peak.dfIPoint = 100;
                if (peak.dfDStar > 0.1 && peak.dfDStar < 1.01) {
                    listPeak.append(peak);
                }
            }
        }
    }
    data.m_listPeakFrame.append(listPeak);
    data.m_peakMapping = PeakMapping();
    return data;
}

TEST(FormerCell, OnlyAClearlyPoorerOneIsTold)
{
    DataSet data = latticePeaks();
    data.m_listCell = cubicCell(5.7f);
    EXPECT_TRUE(tellPoorerCell(data, cubicCell(5)).contains(QStringLiteral("explains fewer peaks")));
    EXPECT_EQ(tellPoorerCell(data, {}), QString()) << "there was none";
    data.m_listCell = {cubicCell(5)[1], cubicCell(5)[2], cubicCell(5)[0]};
    EXPECT_EQ(tellPoorerCell(data, cubicCell(5)), QString()) << "the same lattice, other axes";
    EXPECT_EQ(tellPoorerCell(data, cubicCell(5.7f)), QString()) << "a better one";
}

}  // namespace
