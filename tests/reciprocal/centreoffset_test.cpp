// The fit of the direct beam on spots that a crystal makes on frames, mapped with a beam that is wrong.
#include "reciprocal/centreoffset.h"
#include "reciprocal/mapping.h"
#include "recordingreport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

/// Mapped reflections, each on a frame of its own at the tilt where it meets the Ewald sphere.
QList<Peak3D> mappedCrystal(double dfX, double dfY, double dfAxis, double dfNoisePixels = 0)
{
    const double aBasis[3][3] = {{0.1, 0.01, 0.02}, {-0.02, 0.09, 0.015}, {0.01, -0.03, 0.12}};
    DataSet data;
    data.m_dfPixelSize = 0.003;
    data.m_dfRotationAxis = dfAxis;
    data.m_dfCenterX = 500 - dfX;
    data.m_dfCenterY = 510 - dfY;
    QList<Vec3D> listHKL;
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0, dfNoisePixels > 0 ? dfNoisePixels : 1);
    const double dfK = 1 / data.m_dfWavelength, dfPhi = dfAxis * M_PI / 180;
    for (int h = -3; h <= 3; ++h)
        for (int k = -3; k <= 3; ++k)
            for (int l = -2; l <= 2; ++l) {
                double r[3];
                for (int i = 0; i < 3; ++i)
                    r[i] = h * aBasis[0][i] + k * aBasis[1][i] + l * aBasis[2][i];
                // Height over the plane: −y sin θ + z cos θ = |r|²λ/2.
                const double dfHeight = (r[0] * r[0] + r[1] * r[1] + r[2] * r[2]) / (2 * dfK);
                const double dfCos = dfHeight / std::hypot(r[1], r[2]);
                if (!(std::fabs(dfCos) <= 1))
                    continue;
                double dfTheta = std::acos(dfCos) - std::atan2(r[1], r[2]);
                if (std::cos(dfTheta) < 0)
                    dfTheta = -std::acos(dfCos) - std::atan2(r[1], r[2]);
                dfTheta = std::remainder(dfTheta, 2 * M_PI);
                const double dfScale = dfK / (dfK - dfHeight) / data.m_dfPixelSize;
                const double dfU = dfScale * r[0];
                const double dfV = dfScale * (r[1] * std::cos(dfTheta) + r[2] * std::sin(dfTheta));
                Peak3D peak;
                peak.dfX2D = 500 + dfU * std::cos(dfPhi) + dfV * std::sin(dfPhi);
                peak.dfY2D = 510 - dfU * std::sin(dfPhi) + dfV * std::cos(dfPhi);
                if (dfNoisePixels > 0) {
                    peak.dfX2D += noise(random);
                    peak.dfY2D += noise(random);
                }
                data.m_listPeakFrame.append({peak});
                data.m_listOverallTilt.append(dfTheta * 180 / M_PI);
                data.m_listShift.append(QPointF());
                listHKL.append({float(h) + 0.02f, float(k) - 0.03f, float(l) + 0.01f});
            }
    CRecordingReport log;
    EXPECT_TRUE(transformPeaksTo3D(data, MappingParameters(), log));
    QList<Peak3D> list;
    for (int n = 0; n < listHKL.size(); ++n) {
        list.append(data.m_listPeakFrame[n][0]);
        list.last().setHKL(double(listHKL[n].x), double(listHKL[n].y), double(listHKL[n].z));
    }
    return list;
}

}  // namespace

TEST(CentreOffset, ComesBackWhateverTheAxisAndInSpiteOfWrongIndices)
{
    for (double dfAxis : {0.0, 33.0, 90.0, -140.5})
        for (int nWrong : {0, 8}) {
            QList<Peak3D> list = mappedCrystal(1.7, -0.6, dfAxis);
            ASSERT_GT(list.size(), 200);
            for (int n = 0; n < nWrong; ++n)
                list[20 + 23 * n].dfH += 1;
            const CentreOffset offset = fitCentreOffset(list, 0.003, dfAxis);
            ASSERT_TRUE(offset.bValid);
            EXPECT_NEAR(offset.dfX, 1.7, 0.01) << dfAxis << " " << nWrong;
            EXPECT_NEAR(offset.dfY, -0.6, 0.01) << dfAxis << " " << nWrong;
            EXPECT_LT(offset.dfRms, 1e-4);
        }
}

TEST(CentreOffset, HasHonestErrors)
{
    const CentreOffset offset = fitCentreOffset(mappedCrystal(0, 0, 33, 1), 0.003, 33);
    ASSERT_TRUE(offset.bValid);
    // One pixel in two of three directions, on some 240 points.
    const double dfExpected = std::sqrt(2.0 / 3 / 240);
    for (double dfError : {offset.dfErrorX, offset.dfErrorY, offset.lengthError()}) {
        EXPECT_GT(dfError, dfExpected * 0.7);
        EXPECT_LT(dfError, dfExpected * 2.5);
    }
    EXPECT_LT(offset.length(), 3 * offset.lengthError());
    EXPECT_NEAR(offset.dfRms, 0.003 * std::sqrt(2.0), 0.0004);
}

TEST(CentreOffset, SaysWhenTheDataDoNotTell)
{
    const QList<Peak3D> list = mappedCrystal(1, 1, 10);
    QList<Peak3D> listRow = list, listPlane = list;
    for (Peak3D& peak : listRow)
        peak.dfK = peak.dfL = 0;
    for (Peak3D& peak : listPlane)
        peak.setHKL(peak.dfH, peak.dfK, 0);
    for (const QList<Peak3D>& listBad : {QList<Peak3D>(), list.mid(0, 5), listRow, listPlane})
        EXPECT_FALSE(fitCentreOffset(listBad, 0.003, 10).bValid);
}
