#include "frames/spotmoments.h"

#include "frames/badpixels.h"
#include "frames/median.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

const double g_dfFirstSigma = 1.5;    // first sigma of the weight, pixels
const double g_dfLeastSigma = 0.45;   // narrower spots are single pixels, whose moments mean nothing
const double g_dfGreatestSigma = 12;  // wider spots are halos or parts of rings
// Ratio of the moments along and across; more is a streak or two spots.
const double g_dfGreatestStretch = 2.5;
// A dead pixel in the middle of a usual spot has a tenth of the weight; a gap through a spot has more.
const double g_dfGreatestPartMissing = 0.1;
const double g_dfReach = 3;  // of the window, in sigmas of the weight; 1 % is outside

struct Window {
    double dfX, dfY;  // centre
    double dfSigma;   // of the weight
    int nReach;       // pixels
};

struct Moments {
    double dfSum = 0, dfX = 0, dfY = 0, dfXX = 0, dfXY = 0, dfYY = 0;
    double dfMissing = 0;  // weight of the unusable pixels as a share of all weights
};

float pixel(const CImgObj<float>& img, int nX, int nY)
{
    return img.Data()[qint64(nY) * img.Width() + nX];
}

// Whether window and ring are inside the image.
bool fits(const CImgObj<float>& img, const Window& window)
{
    const int nX = int(std::lround(window.dfX));
    const int nY = int(std::lround(window.dfY));
    const int nReach = window.nReach + 2;
    return nX >= nReach && nY >= nReach && nX + nReach < img.Width() && nY + nReach < img.Height();
}

// Whether three or more pixels are as high as the highest one: saturated, or copied from one another.
bool isFlatTop(const CImgObj<float>& img, int nX, int nY)
{
    float fTop = pixel(img, nX, nY);
    for (int y = nY - 1; y <= nY + 1; ++y) {
        for (int x = nX - 1; x <= nX + 1; ++x) {
            fTop = std::max(fTop, pixel(img, x, y));
        }
    }
    int nTop = 0;
    for (int y = nY - 2; y <= nY + 2; ++y) {
        for (int x = nX - 2; x <= nX + 2; ++x) {
            nTop += pixel(img, x, y) >= fTop ? 1 : 0;
        }
    }
    return nTop >= 3;
}

double ringMedian(const CImgObj<float>& img, const Window& window)
{
    const int nX = int(std::lround(window.dfX));
    const int nY = int(std::lround(window.dfY));
    const int nInner = window.nReach * window.nReach;
    const int nReach = window.nReach + 2;
    std::vector<float> vecRing;
    for (int y = -nReach; y <= nReach; ++y) {
        for (int x = -nReach; x <= nReach; ++x) {
            const int nSquare = x * x + y * y;
            if (nSquare > nInner && nSquare <= nReach * nReach && isUsablePixel(pixel(img, nX + x, nY + y))) {
                vecRing.push_back(pixel(img, nX + x, nY + y));
            }
        }
    }
    return vecRing.empty() ? 0 : double(medianOf(vecRing));
}

std::vector<double> weightsAlong(double dfCentre, const Window& window)
{
    const int nCentre = int(std::lround(dfCentre));
    std::vector<double> vecWeight;
    for (int n = nCentre - window.nReach; n <= nCentre + window.nReach; ++n) {
        vecWeight.push_back(
            std::exp(-0.5 * (n - dfCentre) * (n - dfCentre) / (window.dfSigma * window.dfSigma)));
    }
    return vecWeight;
}

Moments momentsOf(const CImgObj<float>& img, const Window& window)
{
    const double dfBackground = ringMedian(img, window);
    const std::vector<double> vecX = weightsAlong(window.dfX, window);
    const std::vector<double> vecY = weightsAlong(window.dfY, window);
    const int nLeft = int(std::lround(window.dfX)) - window.nReach;
    const int nTop = int(std::lround(window.dfY)) - window.nReach;
    Moments m;
    double dfWeights = 0;
    for (size_t j = 0; j < vecY.size(); ++j) {
        const double dfDY = nTop + double(j) - window.dfY;
        for (size_t i = 0; i < vecX.size(); ++i) {
            const float fPixel = pixel(img, nLeft + int(i), nTop + int(j));
            dfWeights += vecX[i] * vecY[j];
            if (!isUsablePixel(fPixel)) {
                m.dfMissing += vecX[i] * vecY[j];
                continue;
            }
            const double dfDX = nLeft + double(i) - window.dfX;
            const double df = vecX[i] * vecY[j] * (double(fPixel) - dfBackground);
            m.dfSum += df;
            m.dfX += df * dfDX;
            m.dfY += df * dfDY;
            m.dfXX += df * dfDX * dfDX;
            m.dfXY += df * dfDX * dfDY;
            m.dfYY += df * dfDY * dfDY;
        }
    }
    m.dfMissing /= dfWeights;
    return m;
}

bool isStreak(const Moments& m)
{
    const double dfMean = 0.5 * (m.dfXX + m.dfYY) / m.dfSum;
    const double dfHalf = std::hypot(0.5 * (m.dfXX - m.dfYY), m.dfXY) / m.dfSum;
    return dfMean + dfHalf > g_dfGreatestStretch * (dfMean - dfHalf);
}

}  // namespace

std::optional<MeasuredSpot> measureSpot(const CImgObj<float>& img, int nX, int nY)
{
    Window window = {double(nX), double(nY), g_dfFirstSigma, 0};
    const int nSteps = 20;
    for (int nStep = 0; nStep < nSteps; ++nStep) {
        window.nReach = std::max(2, int(std::ceil(g_dfReach * window.dfSigma)));
        if (!fits(img, window) || (nStep == 0 && isFlatTop(img, nX, nY))) {
            return std::nullopt;
        }
        const Moments m = momentsOf(img, window);
        if (!(m.dfSum > 0) || m.dfMissing > g_dfGreatestPartMissing) {
            return std::nullopt;
        }
        const double dfMoment = 0.5 * (m.dfXX + m.dfYY) / m.dfSum;
        const double dfWeight = window.dfSigma * window.dfSigma;
        if (!(dfMoment > 0)) {
            return std::nullopt;
        }
        // If the moment is close to that of the weight itself, the image is nearly flat here, and the
        // weight is widened by at most half.
        const double dfLimit = 1.5 * window.dfSigma;
        const double dfSigma = dfMoment < dfWeight
                                   ? std::min(dfLimit, std::sqrt(dfMoment * dfWeight / (dfWeight - dfMoment)))
                                   : dfLimit;
        window.dfX += std::clamp(m.dfX / m.dfSum, -1.0, 1.0);
        window.dfY += std::clamp(m.dfY / m.dfSum, -1.0, 1.0);
        const double dfAway = std::hypot(window.dfX - nX, window.dfY - nY);
        if (!(dfSigma >= g_dfLeastSigma && dfSigma <= g_dfGreatestSigma && dfAway <= 1 + dfSigma)) {
            return std::nullopt;
        }
        const bool bStill = std::fabs(dfSigma - window.dfSigma) < 0.005 * window.dfSigma;
        window.dfSigma = dfSigma;
        if (bStill) {
            return isStreak(m) ? std::nullopt
                               : std::optional<MeasuredSpot>({window.dfX, window.dfY, dfSigma});
        }
    }
    return std::nullopt;
}

}  // namespace tessera
