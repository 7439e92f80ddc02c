#include "frames/integration.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfFar = 1e9;  // outside every image, but within int

// Rounds half away from zero. NaN and numbers beyond int become a position outside every image.
int roundPosition(double df)
{
    if (!(std::fabs(df) <= g_dfFar)) {
        return df > 0 ? int(g_dfFar) : -int(g_dfFar);
    }
    return int(std::round(df));
}

// For each column of the window the largest |dy| with dx² + dy² <= radius²; -1 where there is none.
void columnReaches(int nRadius, int nColumns, std::vector<int>& vecReach)
{
    vecReach.assign(size_t(nColumns) + 1, -1);
    int nReach = nRadius;
    for (int nDx = 0; nDx <= std::min(nRadius, nColumns); ++nDx) {
        while (qint64(nDx) * nDx + qint64(nReach) * nReach > qint64(nRadius) * nRadius) {
            --nReach;
        }
        vecReach[nDx] = nReach;
    }
}

}  // namespace

QList<double> SampleAtPositions(const CImgObj<float>& img, const QList<double>& listX,
                                const QList<double>& listY)
{
    QList<double> listValue;
    if (listX.size() != listY.size()) {
        return listValue;
    }
    listValue.reserve(listX.size());
    for (int i = 0; i < listX.size(); ++i) {
        const int nX = roundPosition(listX[i]);
        const int nY = roundPosition(listY[i]);
        if (!img.Data() || nX < 0 || nY < 0 || nX >= img.Width() || nY >= img.Height()) {
            return {};
        }
        listValue.append(double(img.Data()[size_t(nY) * size_t(img.Width()) + size_t(nX)]));
    }
    return listValue;
}

void MakeIntegrationWindows(const QList<double>& listX, const QList<double>& listY, int nRadius,
                            int nBackground, std::vector<RefIntPara>& vecWindow)
{
    vecWindow.clear();
    if (listX.size() != listY.size()) {
        return;
    }
    vecWindow.resize(listX.size());
    for (int i = 0; i < listX.size(); ++i) {
        RefIntPara& window = vecWindow[i];
        window.nRadius = std::max(nRadius, 0);
        window.nBackground = std::max(nBackground, 0);
        window.nX = roundPosition(listX[i]);
        window.nY = roundPosition(listY[i]);
    }
}

void IntegratePeaks(const CImgObj<float>& img, std::vector<RefIntPara>& vecWindow)
{
    const qint64 nWidth = img.Width();
    const qint64 nHeight = img.Height();
    std::vector<int> vecDisc, vecWhole;  // reaches of the columns for the last radii
    int nDiscRadius = -1;
    int nWholeRadius = -1;
    for (RefIntPara& window : vecWindow) {
        const int nR = std::max(window.nRadius, 0);
        const qint64 nReach = qint64(nR) + std::max(window.nBackground, 0);
        if (!img.Data() || window.nX - nReach < 0 || window.nX + nReach >= nWidth || window.nY - nReach < 0 ||
            window.nY + nReach >= nHeight) {
            window.fPeakSum = 0.f;
            window.fIntensity = 0.f;
            continue;
        }
        const int nT = int(nReach);  // does not overflow, as the window is inside the image
        if (nR != nDiscRadius || nT != nWholeRadius) {
            columnReaches(nR, nT, vecDisc);
            columnReaches(nT, nT, vecWhole);
            nDiscRadius = nR;
            nWholeRadius = nT;
        }
        float fDisc = 0.f;
        float fRing = 0.f;
        int nDisc = 0;
        int nRing = 0;
        for (int nDx = -nT; nDx <= nT; ++nDx) {
            const int nWhole = vecWhole[size_t(std::abs(nDx))];
            const int nInner = vecDisc[size_t(std::abs(nDx))];
            const float* p = img.Data() + (window.nY - nWhole) * nWidth + window.nX + nDx;
            // The disc cuts the ring of a column into two parts.
            for (int nDy = -nWhole; nDy < -nInner; ++nDy, p += nWidth) {
                fRing += *p;
            }
            for (int nDy = -nInner; nDy <= nInner; ++nDy, p += nWidth) {
                fDisc += *p;
            }
            for (int nDy = std::max(nInner + 1, -nInner); nDy <= nWhole; ++nDy, p += nWidth) {
                fRing += *p;
            }
            const int nColumnDisc = nInner < 0 ? 0 : 2 * nInner + 1;
            nDisc += nColumnDisc;
            nRing += 2 * nWhole + 1 - nColumnDisc;
        }
        window.nBackgroundCount = nRing;
        window.nPeakCount = nDisc;
        window.fBackgroundSum = fRing;
        window.fPeakSum = fDisc;
        const double dfBackground = nRing > 0 ? double(fRing) / nRing : 0.0;
        window.fIntensity = float(double(fDisc) - dfBackground * nDisc);
    }
}

}  // namespace tessera
