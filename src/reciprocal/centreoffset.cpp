#include "reciprocal/centreoffset.h"

#include "crystal/reflectionindices.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace {

constexpr int UNKNOWNS = 11;
using Row = std::array<double, UNKNOWNS>;

/// Inverts a symmetric positive matrix in place by Gauss and Jordan, on a scale where its diagonal
/// is 1. False when a pivot vanishes: the data do not determine all unknowns.
bool invert(std::array<Row, UNKNOWNS>& matrix)
{
    Row scale;
    for (int i = 0; i < UNKNOWNS; ++i) {
        if (!(matrix[i][i] > 0)) {
            return false;
        }
        scale[i] = 1 / std::sqrt(matrix[i][i]);
    }
    std::array<Row, UNKNOWNS> work;
    std::array<Row, UNKNOWNS> inverse{};
    for (int i = 0; i < UNKNOWNS; ++i) {
        for (int j = 0; j < UNKNOWNS; ++j) {
            work[i][j] = matrix[i][j] * scale[i] * scale[j];
        }
        inverse[i][i] = 1;
    }
    for (int k = 0; k < UNKNOWNS; ++k) {
        int nPivot = k;
        for (int i = k + 1; i < UNKNOWNS; ++i) {
            if (std::abs(work[i][k]) > std::abs(work[nPivot][k])) {
                nPivot = i;
            }
        }
        if (!(std::abs(work[nPivot][k]) > 1e-10)) {
            return false;
        }
        std::swap(work[k], work[nPivot]);
        std::swap(inverse[k], inverse[nPivot]);
        const double dfPivot = 1 / work[k][k];
        for (int j = 0; j < UNKNOWNS; ++j) {
            work[k][j] *= dfPivot;
            inverse[k][j] *= dfPivot;
        }
        for (int i = 0; i < UNKNOWNS; ++i) {
            const double dfFactor = work[i][k];
            if (i == k || dfFactor == 0) {
                continue;
            }
            for (int j = 0; j < UNKNOWNS; ++j) {
                work[i][j] -= dfFactor * work[k][j];
                inverse[i][j] -= dfFactor * inverse[k][j];
            }
        }
    }
    for (int i = 0; i < UNKNOWNS; ++i) {
        for (int j = 0; j < UNKNOWNS; ++j) {
            matrix[i][j] = inverse[i][j] * scale[i] * scale[j];
        }
    }
    return true;
}

}  // namespace

CentreOffset fitCentreOffset(const QList<Peak3D>& listIndexed, double dfPixelSize, double dfRotationAxis)
{
    CentreOffset offset;
    if (listIndexed.size() < 6) {
        return offset;
    }
    const double dfRadian = 3.141592653589793 / 180;
    const double dfCos = std::cos(dfRotationAxis * dfRadian);
    const double dfSin = std::sin(dfRotationAxis * dfRadian);

    std::array<Row, UNKNOWNS> normal{};
    Row right{};
    double dfSquares = 0;
    for (const Peak3D& peak : listIndexed) {
        const double dfTilt = peak.dfFrameTilt * dfRadian;
        // Columns of s·Rx(θ)·Rz(φ) for the two directions of the frame.
        const double dfScale = dfPixelSize;
        const double aX[3] = {dfScale * dfCos, dfScale * dfSin * std::cos(dfTilt), dfScale * dfSin * std::sin(dfTilt)};
        const double aY[3] = {-dfScale * dfSin, dfScale * dfCos * std::cos(dfTilt), dfScale * dfCos * std::sin(dfTilt)};
        const double aPoint[3] = {peak.fX3D, peak.fY3D, peak.fZ3D};
        for (int nAxis = 0; nAxis < 3; ++nAxis) {
            Row row{};
            row[nAxis * 3] = roundedIndex(peak.dfH);
            row[nAxis * 3 + 1] = roundedIndex(peak.dfK);
            row[nAxis * 3 + 2] = roundedIndex(peak.dfL);
            row[9] = aX[nAxis];
            row[10] = aY[nAxis];
            for (int i = 0; i < UNKNOWNS; ++i) {
                for (int j = 0; j < UNKNOWNS; ++j) {
                    normal[i][j] += row[i] * row[j];
                }
                right[i] += row[i] * aPoint[nAxis];
            }
            dfSquares += aPoint[nAxis] * aPoint[nAxis];
        }
    }
    if (!invert(normal)) {
        return offset;
    }
    Row solution{};
    double dfExplained = 0;
    for (int i = 0; i < UNKNOWNS; ++i) {
        for (int j = 0; j < UNKNOWNS; ++j) {
            solution[i] += normal[i][j] * right[j];
        }
        dfExplained += solution[i] * right[i];
    }
    const double dfResidual = std::max(0.0, dfSquares - dfExplained);
    const int nFreedom = 3 * listIndexed.size() - UNKNOWNS;
    const double dfVariance = dfResidual / nFreedom;
    offset.dfX = solution[9];
    offset.dfY = solution[10];
    offset.dfErrorX = std::sqrt(dfVariance * normal[9][9]);
    offset.dfErrorY = std::sqrt(dfVariance * normal[10][10]);
    offset.dfRms = std::sqrt(dfResidual / listIndexed.size());
    offset.bValid = std::isfinite(offset.dfX) && std::isfinite(offset.dfY);
    return offset;
}
