// A perfect crystal on a series: every reflection on the frame of its tilt, at its exact place.
#pragma once

#include "crystal/cellarithmetic.h"
#include "dataset/dataset.h"
#include "reciprocal/predictedpositions.h"
#include "tests/reciprocal/simulatedlattice.h"

namespace tessera {

struct PerfectSeries {
    DataSet data;  // with the true cell in force
    QVector<QList<Peak3D>> vecPeak;

    PerfectSeries(const gemmi::UnitCell& cell, double dfMaxDStar, double dfStretch, int nFrames = 101,
                  double dfAxis = -38.5, double dfWavelength = 0.0251,
                  const SeriesDistortion& distortion = {})
    {
        data.m_dfWavelength = dfWavelength;
        data.m_dfPixelSize = 0.002;
        data.m_dfRotationAxis = dfAxis;
        data.m_dfCenterX = 511.5;
        data.m_dfCenterY = 498.25;
        data.m_dfTiltRelaxation = 0.7;
        data.m_dfStretchAmplitude = dfStretch;
        data.m_dfStretchAzimuth = 25;
        data.m_distortion = distortion;
        data.m_listCell = reciprocalBasis(cell);
        for (int n = 0; n < nFrames; ++n) {
            data.m_listOverallTilt.append(-0.5 * nFrames + n);
            data.m_listShift.append(QPointF(0.1 * n, -0.05 * n));
        }
        for (int n = 0; n < nFrames; ++n) {
            vecPeak.append(predictedPositions(data, n, dfMaxDStar, dfStretch != 0));
        }
        for (QList<Peak3D>& listPeak : vecPeak) {
            for (Peak3D& peak : listPeak) {
                peak.dfIPoint = 1000;
            }
        }
    }

    // As merged reflections: the frame's own tilt in dfFrameTilt, the measured one as a place between frames.
    QList<Peak3D> merged() const
    {
        QList<Peak3D> list;
        for (const QList<Peak3D>& listPeak : vecPeak) {
            for (Peak3D peak : listPeak) {
                peak.dfTiltFit = peak.dfFrameTilt;
                peak.dfFrameTilt = data.m_listOverallTilt[peak.nFrame];
                peak.dfFrameFit = peak.nFrame + 1 + peak.dfTiltFit - peak.dfFrameTilt;
                list.append(peak);
            }
        }
        return list;
    }
};

}  // namespace tessera
