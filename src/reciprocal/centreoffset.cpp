#include "reciprocal/centreoffset.h"

#include "crystal/reflectionindices.h"
#include "geometry/angles.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace tessera {

namespace {

constexpr size_t g_nUnknowns = 11;
constexpr double g_dfRadian = g_dfPi / 180;
using Row = std::array<double, g_nUnknowns>;

/// Inverts a symmetric positive matrix in place by Gauss and Jordan, on a scale where its diagonal
/// is 1. False when a pivot vanishes: the data do not determine all unknowns.
bool invert(std::array<Row, g_nUnknowns>& matrix)
{
    Row scale;
    for (size_t i = 0; i < g_nUnknowns; ++i) {
        if (!(matrix[i][i] > 0)) {
            return false;
        }
        scale[i] = 1 / std::sqrt(matrix[i][i]);
    }
    std::array<Row, g_nUnknowns> work;
    std::array<Row, g_nUnknowns> inverse{};
    for (size_t i = 0; i < g_nUnknowns; ++i) {
        for (size_t j = 0; j < g_nUnknowns; ++j) {
            work[i][j] = matrix[i][j] * scale[i] * scale[j];
        }
        inverse[i][i] = 1;
    }
    for (size_t k = 0; k < g_nUnknowns; ++k) {
        size_t nPivot = k;
        for (size_t i = k + 1; i < g_nUnknowns; ++i) {
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
        for (size_t j = 0; j < g_nUnknowns; ++j) {
            work[k][j] *= dfPivot;
            inverse[k][j] *= dfPivot;
        }
        for (size_t i = 0; i < g_nUnknowns; ++i) {
            const double dfFactor = work[i][k];
            if (i == k || dfFactor == 0) {
                continue;
            }
            for (size_t j = 0; j < g_nUnknowns; ++j) {
                work[i][j] -= dfFactor * work[k][j];
                inverse[i][j] -= dfFactor * inverse[k][j];
            }
        }
    }
    for (size_t i = 0; i < g_nUnknowns; ++i) {
        for (size_t j = 0; j < g_nUnknowns; ++j) {
            matrix[i][j] = inverse[i][j] * scale[i] * scale[j];
        }
    }
    return true;
}

/// One reflection's part of the fit: its three rows of coefficients and its point.
struct Equations {
    Row aRow[3] = {};
    double aPoint[3] = {};
};

Equations equationsOf(const Peak3D& peak, double dfPixelSize, double dfAxis)
{
    // Columns of s·Rx(θ)·Rz(φ) for the two directions of the frame.
    const double dfTilt = peak.dfFrameTilt * g_dfRadian;
    const double dfCos = dfPixelSize * std::cos(dfAxis);
    const double dfSin = dfPixelSize * std::sin(dfAxis);
    const double aX[3] = {dfCos, dfSin * std::cos(dfTilt), dfSin * std::sin(dfTilt)};
    const double aY[3] = {-dfSin, dfCos * std::cos(dfTilt), dfCos * std::sin(dfTilt)};
    Equations equations;
    equations.aPoint[0] = double(peak.fX3D);
    equations.aPoint[1] = double(peak.fY3D);
    equations.aPoint[2] = double(peak.fZ3D);
    for (size_t n = 0; n < 3; ++n) {
        equations.aRow[n][n * 3] = roundedIndex(peak.dfH);
        equations.aRow[n][n * 3 + 1] = roundedIndex(peak.dfK);
        equations.aRow[n][n * 3 + 2] = roundedIndex(peak.dfL);
        equations.aRow[n][9] = aX[n];
        equations.aRow[n][10] = aY[n];
    }
    return equations;
}

/// One round. vecDistance: how far each point is missed, Å⁻¹.
std::optional<CentreOffset> fitOnce(const std::vector<Equations>& vecEquations,
                                    std::vector<double>& vecDistance)
{
    if (vecEquations.size() < 6) {
        return std::nullopt;
    }
    std::array<Row, g_nUnknowns> normal{};
    Row right{};
    for (const Equations& equations : vecEquations) {
        for (size_t n = 0; n < 3; ++n) {
            for (size_t i = 0; i < g_nUnknowns; ++i) {
                for (size_t j = 0; j < g_nUnknowns; ++j) {
                    normal[i][j] += equations.aRow[n][i] * equations.aRow[n][j];
                }
                right[i] += equations.aRow[n][i] * equations.aPoint[n];
            }
        }
    }
    if (!invert(normal)) {
        return std::nullopt;
    }
    Row solution{};
    for (size_t i = 0; i < g_nUnknowns; ++i) {
        for (size_t j = 0; j < g_nUnknowns; ++j) {
            solution[i] += normal[i][j] * right[j];
        }
    }

    double dfSquares = 0;
    vecDistance.clear();
    for (const Equations& equations : vecEquations) {
        double dfSquare = 0;
        for (size_t n = 0; n < 3; ++n) {
            double dfMissed = equations.aPoint[n];
            for (size_t i = 0; i < g_nUnknowns; ++i) {
                dfMissed -= solution[i] * equations.aRow[n][i];
            }
            dfSquare += dfMissed * dfMissed;
        }
        vecDistance.push_back(std::sqrt(dfSquare));
        dfSquares += dfSquare;
    }
    const double dfVariance = dfSquares / double(3 * vecEquations.size() - g_nUnknowns);
    CentreOffset offset;
    offset.dfX = solution[9];
    offset.dfY = solution[10];
    offset.dfErrorX = std::sqrt(dfVariance * normal[9][9]);
    offset.dfErrorY = std::sqrt(dfVariance * normal[10][10]);
    offset.dfRms = std::sqrt(dfSquares / double(vecEquations.size()));
    if (!std::isfinite(offset.dfX) || !std::isfinite(offset.dfY)) {
        return std::nullopt;
    }
    return offset;
}

}  // namespace

std::optional<CentreOffset> fitCentreOffset(const QList<Peak3D>& listPeak, double dfPixelSize,
                                            double dfRotationAxis)
{
    std::vector<Equations> vecEquations;
    for (const Peak3D& peak : listPeak) {
        vecEquations.push_back(equationsOf(peak, dfPixelSize, dfRotationAxis * g_dfRadian));
    }
    std::vector<double> vecDistance;
    const std::optional<CentreOffset> offset = fitOnce(vecEquations, vecDistance);
    if (!offset) {
        return std::nullopt;
    }
    std::vector<Equations> vecNear;
    for (size_t n = 0; n < vecEquations.size(); ++n) {
        if (vecDistance[n] <= 3 * offset->dfRms) {
            vecNear.push_back(vecEquations[n]);
        }
    }
    const std::optional<CentreOffset> offsetNear = fitOnce(vecNear, vecDistance);
    return offsetNear ? offsetNear : offset;
}

}  // namespace tessera
