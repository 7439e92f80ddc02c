#include "reciprocal/predictedpositions.h"

#include "reciprocal/mapping.h"

#include <gtest/gtest.h>

#include "tests/reciprocal/perfectseries.h"

#include <cmath>
#include <map>

namespace tessera {

namespace {

typedef std::map<std::array<int, 4>, int> Counts;  ///< by frame, h, k, l

/// Walks over all lattice points at all tilts, and expects that each crossing has been counted once: a
/// reflection crosses where its excitation error changes sign. Returns how many there are.
int expectCrossings(const DataSet& data, const SeriesDistortion& distortion, Counts& mapCount)
{
    const double dfOut = distortion.dfAxisOutOfPlane * std::acos(-1.0) / 180;
    const int nFrames = data.m_listShift.size();
    const double dfStep = 1 + 0.7 / nFrames;
    int nCrossings = 0;
    for (const Peak3D& peak : simulatedReflections(data.m_listCell, 0.9, 0, all)) {
        for (int n = 0; n < nFrames; ++n) {
            const auto error = [&](double dfTilt) {
                const double df = dfTilt * std::acos(-1.0) / 180;
                // Rodrigues about (cos, 0, sin): what lies along the axis stays
                const double dfAlong = std::sin(dfOut) * (std::cos(dfOut) * double(peak.fX3D) +
                                                          std::sin(dfOut) * double(peak.fZ3D));
                return 2 / data.m_dfWavelength *
                           (dfAlong + std::cos(df) * (double(peak.fZ3D) - dfAlong) -
                            std::sin(df) * std::cos(dfOut) * double(peak.fY3D)) -
                       peak.dfDStar * peak.dfDStar;
            };
            const double dfTilt = relaxedTilt(data, n, nFrames);
            const double dfFrom = error(dfTilt - dfStep / 2), dfTo = error(dfTilt + dfStep / 2);
            if ((dfFrom < 0) == (dfTo < 0) || std::min(std::fabs(dfFrom), std::fabs(dfTo)) < 1e-4) {
                continue;  // none, or so close to the border that rounding decides
            }
            ++nCrossings;
            EXPECT_EQ((mapCount[{n, int(peak.dfH), int(peak.dfK), int(peak.dfL)}]), 1)
                << n << ": " << peak.dfH << ' ' << peak.dfK << ' ' << peak.dfL;
        }
    }
    return nCrossings;
}

}  // namespace

// The mapping brings each position back to its lattice point.
TEST(PredictedPositions, AreThoseOfTheMappingAndComplete)
{
    const gemmi::UnitCell cell(8.6, 13.0, 9.3, 95, 112, 88);
    const SeriesDistortion lens = {1.5, 40, 3, 0.8, 0.7, 130, 400, 2.5};
    for (const auto& [dfStretch, distortion] :
         {std::pair(0.0, SeriesDistortion()), std::pair(2.0, SeriesDistortion()), std::pair(2.0, lens)}) {
        const PerfectSeries series(cell, 0.9, dfStretch, 101, -38.5, 0.0251, distortion);
        const DataSet& data = series.data;
        const int nFrames = data.m_listShift.size();
        const CMatrix3 matAxis = rotationZ(data.m_dfRotationAxis);
        Counts mapCount;
        for (int n = 0; n < nFrames; ++n) {
            for (const Peak3D& peak : series.vecPeak[n]) {
                Peak3D mapped = peak;
                mapPeakTo3D(mapped, frameCentre(beamCentres(data), n), matAxis,
                            rotationAboutAxis(peak.dfFrameTilt, distortion.dfAxisOutOfPlane), data,
                            dfStretch != 0);
                EXPECT_LT(length(mapped.point() - peak.point()), 2e-5f);
                EXPECT_LE(std::fabs(peak.dfFrameTilt - relaxedTilt(data, n, nFrames)), 0.51);
                ++mapCount[{n, int(peak.dfH), int(peak.dfK), int(peak.dfL)}];
            }
        }

        const int nSlow = expectCrossings(data, distortion, mapCount);
        int nFast = 0;
        for (const auto& entry : mapCount) {
            nFast += entry.second;
        }
        EXPECT_GT(nSlow, 1000);
        EXPECT_NEAR(nFast, nSlow, 0.005 * nSlow);
    }
}

TEST(PredictedPositions, OfGapsAndHopelessCells)
{
    PerfectSeries series(gemmi::UnitCell(8.6, 13.0, 9.3, 95, 112, 88), 0.9, 0, 5);
    series.data.m_dfTiltRelaxation = 0;
    series.data.m_listOverallTilt = {-2, -1, 10, 10, 11};  // a gap, and one tilt twice
    const auto predict = [&](int nFrame) { return predictedPositions(series.data, nFrame, 0.9); };
    EXPECT_GT(predict(2).size(), 10);
    EXPECT_EQ(predict(2).size(), predict(3).size());
    for (const Peak3D& peak : predict(1)) {
        EXPECT_LE(std::fabs(peak.dfFrameTilt + 1), 0.5);
    }
    series.data.m_listCell[2] = series.data.m_listCell[1];
    EXPECT_TRUE(predict(2).isEmpty());
    EXPECT_TRUE(predict(5).isEmpty());
    series.data.m_listCell = {{1e-7f, 0, 0}, {0, 1e-7f, 0}, {0, 0, 1e-7f}};
    EXPECT_TRUE(predict(2).isEmpty());
}

}  // namespace tessera
