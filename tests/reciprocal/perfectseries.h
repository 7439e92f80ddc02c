// A perfect crystal on a series: every reflection on the frame of its tilt, at its exact place.
#pragma once

#include "app/dataset/dataset.h"
#include "crystal/cellarithmetic.h"
#include "reciprocal/predictedpositions.h"
#include "reciprocal/simulatedlattice.h"

struct PerfectSeries {
    DataSet data;  // with the true cell in force
    QVector<QList<Peak3D>> vecPeak;

    PerfectSeries(const gemmi::UnitCell& cell, double dfMaxDStar, double dfStretch, int nFrames = 101)
    {
        data.m_dfPixelSize = 0.002;
        data.m_dfRotationAxis = -38.5;
        data.m_dfCenterX = 511.5;
        data.m_dfCenterY = 498.25;
        data.m_dfTiltRelaxation = 0.7;
        data.m_dfStretchAmplitude = dfStretch;
        data.m_dfStretchAzimuth = 25;
        data.m_listCell = reciprocalBasis(cell);
        for (int n = 0; n < nFrames; ++n) {
            data.m_listOverallTilt.append(-0.5 * nFrames + n);
            data.m_listShift.append(QPointF(0.1 * n, -0.05 * n));
        }
        for (int n = 0; n < nFrames; ++n)
            vecPeak.append(predictedPositions(data, n, dfMaxDStar, dfStretch != 0));
        for (QList<Peak3D>& listPeak : vecPeak)
            for (Peak3D& peak : listPeak)
                peak.dfIPoint = 1000;
    }

    // As merged reflections: measured tilt in dfFrameFit, the frame's own in dfFrameTilt.
    QList<Peak3D> merged(double dfNoise = 0, unsigned nSeed = 1) const
    {
        std::mt19937 random(nSeed);
        std::normal_distribution<double> noise(0, dfNoise > 0 ? dfNoise : 1);
        QList<Peak3D> list;
        for (const QList<Peak3D>& listPeak : vecPeak)
            for (Peak3D peak : listPeak) {
                const double dfTilt = peak.dfFrameTilt + (dfNoise > 0 ? noise(random) : 0);
                peak.dfFrameTilt = data.m_listOverallTilt[peak.nFrame];
                peak.dfFrameFit = peak.nFrame + 1 + dfTilt - peak.dfFrameTilt;
                peak.dfTiltFit = dfTilt;
                list.append(peak);
            }
        return list;
    }
};

inline void expectSameCell(const QList<Vec3D>& listBasis, const gemmi::UnitCell& cell, double dfRelative,
                           double dfDegrees)
{
    double a[6];
    ASSERT_TRUE(cellParametersFromList(listBasis, a[0], a[1], a[2], a[3], a[4], a[5]));
    const double aTrue[6] = {cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma};
    for (int n = 0; n < 6; ++n)
        EXPECT_NEAR(a[n], aTrue[n], n < 3 ? dfRelative * aTrue[n] : dfDegrees) << n;
}
