#include "integration/backgroundplane.h"

#include "frames/median.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nLeastPixels = 20;

struct Start {
    double dfLevel = 0, dfDeviation = 0;
};

/// Median, and a robust standard deviation.
Start startOf(const std::vector<BackgroundPixel>& listPixel)
{
    Start start;
    std::vector<float> list;
    list.reserve(listPixel.size());
    for (const BackgroundPixel& pixel : listPixel) {
        list.push_back(float(pixel.dfCounts));
    }
    start.dfLevel = double(medianOf(list));
    double dfSquares = 0;
    for (float& f : list) {
        f = std::abs(f - float(start.dfLevel));
        dfSquares += double(f) * double(f);
    }
    start.dfDeviation = 1.4826 * double(medianOf(list));
    if (!(start.dfDeviation > 0)) {  // more than half of the pixels have the same count
        start.dfDeviation = std::sqrt(dfSquares / double(list.size()));
    }
    return start;
}

}  // namespace

BackgroundPlane fitBackground(const std::vector<BackgroundPixel>& listPixel, double dfGain)
{
    BackgroundPlane plane;
    if (int(listPixel.size()) < g_nLeastPixels) {
        return plane;
    }
    const Start start = startOf(listPixel);
    plane.vecCoefficient[0] = start.dfLevel;
    double dfDeviation = start.dfDeviation;
    for (int nRound = 0; nRound < 3; ++nRound) {
        const double dfLimit = 4 * dfDeviation + 2 * dfGain;
        // Counts relative to the starting level, so that their squares lose no digits.
        const double dfLevel = plane.vecCoefficient[0] - start.dfLevel;
        const double dfSlopeX = plane.vecCoefficient[1], dfSlopeY = plane.vecCoefficient[2];
        double dfN = 0, dfX = 0, dfY = 0, dfXX = 0, dfXY = 0, dfYY = 0, dfC = 0, dfCX = 0, dfCY = 0, dfCC = 0;
        for (const BackgroundPixel& pixel : listPixel) {
            const double dfCounts = pixel.dfCounts - start.dfLevel;
            const double x = pixel.dfX, y = pixel.dfY;
            if (std::abs(dfCounts - dfLevel - dfSlopeX * x - dfSlopeY * y) > dfLimit) {
                continue;
            }
            dfN += 1;
            dfX += x;
            dfY += y;
            dfXX += x * x;
            dfXY += x * y;
            dfYY += y * y;
            dfC += dfCounts;
            dfCX += dfCounts * x;
            dfCY += dfCounts * y;
            dfCC += dfCounts * dfCounts;
        }
        Eigen::Matrix3d mat;
        mat << dfN, dfX, dfY, dfX, dfXX, dfXY, dfY, dfXY, dfYY;
        const Eigen::Vector3d vec(dfC, dfCX, dfCY);
        // Both slopes must be determined: the smaller eigenvalue of the squares about the mean decides.
        const double dfTold = std::min(dfXX * dfN - dfX * dfX, dfYY * dfN - dfY * dfY) / (dfN * dfN);
        if (dfN < g_nLeastPixels || !(dfTold > 0.1) || !(mat.determinant() > 1e-3 * dfN * dfN * dfN)) {
            return {};
        }
        plane.matCovariance = mat.inverse();
        plane.vecCoefficient = plane.matCovariance * vec;
        plane.dfVariance = std::max(0.0, dfCC - plane.vecCoefficient.dot(vec)) / std::max(dfN - 3, 1.0);
        plane.vecCoefficient[0] += start.dfLevel;
        plane.nPixels = int(dfN);
        dfDeviation = std::sqrt(plane.dfVariance);
    }
    return plane;
}

}  // namespace tessera
