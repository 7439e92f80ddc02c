#include "integration/learnedprofile.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nFine = 3;       // grid points per pixel
const int g_nRegions = 3;    // along each side of the frame
const double g_dfLean = 30;  // weight of the mean profile in a region, in spots

}  // namespace

CLearnedProfile::CLearnedProfile(const QSize& sizeFrame, int nHalf)
    : m_sizeFrame(sizeFrame), m_nHalf(nHalf), m_nSide(2 * nHalf * g_nFine + 1)
{
    m_listRegion.resize(size_t(g_nRegions) * size_t(g_nRegions));
    for (Grid& grid : m_listRegion) {
        grid.listSum.assign(size_t(m_nSide) * size_t(m_nSide), 0);
        grid.listWeight = grid.listSum;
    }
    m_all = m_listRegion.front();
}

int CLearnedProfile::regionOf(double dfX, double dfY) const
{
    const auto third = [](double df, int nSize) {
        return std::clamp(int(std::floor(df * g_nRegions / std::max(nSize, 1))), 0, g_nRegions - 1);
    };
    return third(dfY, m_sizeFrame.height()) * g_nRegions + third(dfX, m_sizeFrame.width());
}

// Distributes a value over the four grid points around it.
void CLearnedProfile::addToGrid(Grid& grid, double dfX, double dfY, double dfValue, double dfWeight) const
{
    const double dfColumn = (dfX + m_nHalf) * g_nFine, dfRow = (dfY + m_nHalf) * g_nFine;
    const int nColumn = int(std::floor(dfColumn)), nRow = int(std::floor(dfRow));
    for (int n = 0; n < 4; ++n) {
        const int nAtX = nColumn + n % 2, nAtY = nRow + n / 2;
        const double dfShare = (1 - std::abs(dfColumn - nAtX)) * (1 - std::abs(dfRow - nAtY));
        if (nAtX >= 0 && nAtY >= 0 && nAtX < m_nSide && nAtY < m_nSide && dfShare > 0) {
            const size_t nAt = size_t(nAtY) * size_t(m_nSide) + size_t(nAtX);
            grid.listSum[nAt] += dfShare * dfWeight * dfValue;
            grid.listWeight[nAt] += dfShare * dfWeight;
        }
    }
}

void CLearnedProfile::add(double dfX, double dfY, int nLeft, int nTop, const std::vector<float>& listWindow)
{
    const int nSide = 2 * m_nHalf + 1;
    double dfTotal = 0;
    for (int n = 0; n < nSide * nSide; ++n) {
        const int nX = nLeft + n % nSide, nY = nTop + n / nSide;
        const double dfAtX = nX - dfX, dfAtY = nY - dfY;
        dfTotal += dfAtX * dfAtX + dfAtY * dfAtY <= m_nHalf * m_nHalf ? double(listWindow[n]) : 0;
    }
    if (!(dfTotal > 0)) {
        return;
    }
    Grid& grid = m_listRegion[size_t(regionOf(dfX, dfY))];
    ++grid.nSpots;
    ++m_nSpots;
    // The relative noise of a profile decreases with the square root of the counts.
    const double dfWeight = std::sqrt(dfTotal);
    for (int n = 0; n < nSide * nSide; ++n) {
        const int nX = nLeft + n % nSide, nY = nTop + n / nSide;
        const double dfAtX = nX - dfX, dfAtY = nY - dfY;
        const double dfValue = double(listWindow[n]) / dfTotal;
        addToGrid(grid, dfAtX, dfAtY, dfValue, dfWeight);
        addToGrid(m_all, dfAtX, dfAtY, dfValue, dfWeight);
    }
}

// Sets the density outside the circle to 0, and normalizes the total to 1.
void CLearnedProfile::normalise(std::vector<double>& listDensity) const
{
    double dfSum = 0;
    for (size_t n = 0; n < listDensity.size(); ++n) {
        const double dfX = double(n % size_t(m_nSide)) / g_nFine - m_nHalf;
        const size_t nRow = n / size_t(m_nSide);
        const double dfY = double(nRow) / g_nFine - m_nHalf;
        if (dfX * dfX + dfY * dfY > m_nHalf * m_nHalf) {
            listDensity[n] = 0;
        }
        dfSum += listDensity[n];
    }
    for (double& df : listDensity) {
        df *= g_nFine * g_nFine / dfSum;
    }
}

void CLearnedProfile::finish(double dfSigma)
{
    m_all.listDensity.resize(m_all.listSum.size());
    for (size_t n = 0; n < m_all.listSum.size(); ++n) {
        const double dfX = double(n % size_t(m_nSide)) / g_nFine - m_nHalf;
        const size_t nRow = n / size_t(m_nSide);
        const double dfY = double(nRow) / g_nFine - m_nHalf;
        const double dfVariance = dfSigma * dfSigma;
        m_all.listDensity[n] = m_nSpots >= g_dfLean && m_all.listWeight[n] > 0
                                   ? m_all.listSum[n] / m_all.listWeight[n]
                                   : std::exp(-(dfX * dfX + dfY * dfY) / (2 * dfVariance)) /
                                         (2 * g_dfPi * dfVariance);
    }
    normalise(m_all.listDensity);
    for (Grid& grid : m_listRegion) {
        const double dfOwn = grid.nSpots / (grid.nSpots + g_dfLean);
        grid.listDensity = m_all.listDensity;
        for (size_t n = 0; n < grid.listSum.size() && m_nSpots >= g_dfLean; ++n) {
            if (grid.listWeight[n] > 0) {
                grid.listDensity[n] += dfOwn * (grid.listSum[n] / grid.listWeight[n] - grid.listDensity[n]);
            }
        }
        normalise(grid.listDensity);
    }
}

double CLearnedProfile::at(int nRegion, double dfX, double dfY) const
{
    const double dfColumn = (dfX + m_nHalf) * g_nFine, dfRow = (dfY + m_nHalf) * g_nFine;
    const int nColumn = int(std::floor(dfColumn)), nRow = int(std::floor(dfRow));
    if (nColumn < 0 || nRow < 0 || nColumn + 1 >= m_nSide || nRow + 1 >= m_nSide) {
        return 0;
    }
    const double dfRight = dfColumn - nColumn, dfBelow = dfRow - nRow;
    const double* p = m_listRegion[nRegion].listDensity.data() + size_t(nRow) * size_t(m_nSide) +
                      size_t(nColumn);
    return (1 - dfBelow) * ((1 - dfRight) * p[0] + dfRight * p[1]) +
           dfBelow * ((1 - dfRight) * p[m_nSide] + dfRight * p[m_nSide + 1]);
}

double CLearnedProfile::within(double dfRadius) const
{
    double dfSum = 0;
    for (size_t n = 0; n < m_all.listDensity.size(); ++n) {
        const double dfX = double(n % size_t(m_nSide)) / g_nFine - m_nHalf;
        const size_t nRow = n / size_t(m_nSide);
        const double dfY = double(nRow) / g_nFine - m_nHalf;
        dfSum += dfX * dfX + dfY * dfY <= dfRadius * dfRadius ? m_all.listDensity[n] : 0;
    }
    return dfSum / (g_nFine * g_nFine);
}

}  // namespace tessera
