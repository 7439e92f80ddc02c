// The fit of the direct beam on spots that a crystal makes on frames, mapped with a beam that is wrong.
#include "reciprocal/centreoffset.h"
#include "reciprocal/mapping.h"
#include "tests/reciprocal/perfectseries.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tessera {

namespace {

/// Reflections mapped with the beam off by (dfX, dfY), each at the tilt where it meets the Ewald sphere.
QList<Peak3D> mappedCrystal(double dfX, double dfY, double dfAxis, double dfNoisePixels = 0)
{
    PerfectSeries series(gemmi::UnitCell(8.6, 13.0, 9.3, 95, 112, 88), 0.5, 0, 101, dfAxis);
    DataSet& data = series.data;
    data.m_dfCenterX -= dfX;
    data.m_dfCenterY -= dfY;
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0, 1);
    QList<Peak3D> list;
    for (const QList<Peak3D>& listPeak : series.vecPeak) {
        for (const Peak3D& spot : listPeak) {
            Peak3D peak = spot;
            peak.dfX2D += dfNoisePixels * noise(random);
            peak.dfY2D += dfNoisePixels * noise(random);
            mapPeakTo3D(peak, frameCentre(beamCentres(data), peak.nFrame), rotationZ(dfAxis),
                        rotationX(peak.dfFrameTilt), data, false);
            peak.setHKL(spot.dfH + 0.02, spot.dfK - 0.03, spot.dfL + 0.01);
            list.append(peak);
        }
    }
    return list;
}

}  // namespace

TEST(CentreOffset, ComesBackWhateverTheAxisAndInSpiteOfWrongIndices)
{
    for (double dfAxis : {0.0, 33.0, 90.0, -140.5}) {
        for (int nWrong : {0, 8}) {
            QList<Peak3D> list = mappedCrystal(1.7, -0.6, dfAxis);
            ASSERT_GT(list.size(), 200);
            for (int n = 0; n < nWrong; ++n) {
                list[20 + 23 * n].dfH += 1;
            }
            const std::optional<CentreOffset> offset = fitCentreOffset(list, 0.002, dfAxis);
            ASSERT_TRUE(offset);
            EXPECT_NEAR(offset->dfX, 1.7, 0.01) << dfAxis << " " << nWrong;
            EXPECT_NEAR(offset->dfY, -0.6, 0.01) << dfAxis << " " << nWrong;
            EXPECT_LT(offset->dfRms, 1e-4);
        }
    }
}

TEST(CentreOffset, HasHonestErrorsAndSaysWhenTheDataDoNotTell)
{
    const QList<Peak3D> list = mappedCrystal(0, 0, 33, 1);
    const std::optional<CentreOffset> offset = fitCentreOffset(list, 0.002, 33);
    ASSERT_TRUE(offset);
    const double dfExpected = std::sqrt(2.0 / 3 / list.size());  // one pixel in two of three directions
    for (double dfError : {offset->dfErrorX, offset->dfErrorY, offset->lengthError()}) {
        EXPECT_GT(dfError, dfExpected * 0.7);
        EXPECT_LT(dfError, dfExpected * 2.5);
    }
    EXPECT_LT(offset->length(), 3 * offset->lengthError());
    EXPECT_NEAR(offset->dfRms, 0.002 * std::sqrt(2.0), 0.0003);

    QList<Peak3D> listRow = list, listPlane = list;
    for (Peak3D& peak : listRow) {
        peak.dfK = peak.dfL = 0;
    }
    for (Peak3D& peak : listPlane) {
        peak.dfL = 0;
    }
    for (const QList<Peak3D>& listBad : {QList<Peak3D>(), list.mid(0, 5), listRow, listPlane}) {
        EXPECT_FALSE(fitCentreOffset(listBad, 0.002, 33));
    }
}

}  // namespace tessera
