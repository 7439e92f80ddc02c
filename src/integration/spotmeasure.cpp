#include "integration/spotmeasure.h"

#include "frames/badpixels.h"
#include "integration/reflectionflags.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// Fraction of its rocking curve below which a neighbour does not disturb.
const double g_dfCountingPart = 0.02;
const unsigned char g_nSomeDisc = 0x80;

/// The pixels within a distance of a place, limited to the frame.
struct PixelRange {
    PixelRange(const FramePlace& place, double dfReach, const CImgObj<float>& img)
        : nLeft(std::max(0, int(std::ceil(place.dfX - dfReach)))),
          nRight(std::min(img.Width() - 1, int(std::floor(place.dfX + dfReach)))),
          nTop(std::max(0, int(std::ceil(place.dfY - dfReach)))),
          nBottom(std::min(img.Height() - 1, int(std::floor(place.dfY + dfReach))))
    {}
    int nLeft, nRight, nTop, nBottom;
};

}  // namespace

void CSpotMeasurer::claim(const FramePlace& place, double dfRadius, bool bOverlaps)
{
    const PixelRange range(place, dfRadius, *m_pImg);
    for (int y = range.nTop; y <= range.nBottom; ++y) {
        for (int x = range.nLeft; x <= range.nRight; ++x) {
            const double dfX = x - place.dfX, dfY = y - place.dfY;
            if (dfX * dfX + dfY * dfY <= dfRadius * dfRadius) {
                unsigned char& n = m_listClaim[size_t(y) * size_t(m_pImg->Width()) + size_t(x)];
                const unsigned char nMost = g_nSomeDisc - 1;
                n = g_nSomeDisc | std::min<unsigned char>(nMost, (n & nMost) + (bOverlaps ? 1 : 0));
            }
        }
    }
}

void CSpotMeasurer::beginFrame(const CImgObj<float>& img, const std::vector<ExpectedSpot>& listSpot)
{
    m_pImg = &img;
    m_listClaim.assign(size_t(img.Width()) * size_t(img.Height()), 0);
    for (const ExpectedSpot& spot : listSpot) {
        claim(spot.place, m_settings.dfRadius, spot.dfPart >= g_dfCountingPart);
    }
}

// Collects the pixels of the disc and of the background, and sets flags.
void CSpotMeasurer::collect(const ExpectedSpot& spot, SpotMeasure& measure)
{
    const double dfDisc = m_settings.dfRadius + 0.5;
    const double dfInner = m_settings.dfRadius + 1;
    const double dfOuter = dfInner + std::max(5.0, m_settings.dfRadius);
    const PixelRange range(spot.place, dfOuter, *m_pImg);
    const int nOwn = spot.dfPart >= g_dfCountingPart ? 1 : 0;
    m_listDisc.clear();
    m_listBackground.clear();
    const FramePlace& place = spot.place;
    if (place.dfX - m_settings.dfRadius < 0 || place.dfY - m_settings.dfRadius < 0 ||
        place.dfX + m_settings.dfRadius > m_pImg->Width() - 1 ||
        place.dfY + m_settings.dfRadius > m_pImg->Height() - 1) {
        measure.nFlags |= FlagOffFrame;
    }
    for (int y = range.nTop; y <= range.nBottom; ++y) {
        for (int x = range.nLeft; x <= range.nRight; ++x) {
            const double dfX = x - place.dfX, dfY = y - place.dfY;
            const double dfSquare = dfX * dfX + dfY * dfY;
            const bool bInDisc = dfSquare < dfDisc * dfDisc;
            if (dfSquare > dfOuter * dfOuter || (!bInDisc && dfSquare < dfInner * dfInner)) {
                continue;
            }
            const size_t nAt = size_t(y) * size_t(m_pImg->Width()) + size_t(x);
            const float f = m_pImg->Data()[nAt];
            const bool bMasked = m_settings.pMask && (*m_settings.pMask)[nAt];
            const bool bUsable = isUsablePixel(f);
            const bool bFull = m_settings.dfSaturation > 0 && double(f) >= m_settings.dfSaturation;
            if (bInDisc) {
                const double dfDistance = std::sqrt(dfSquare);
                const double dfWeight = std::min(1.0, dfDisc - dfDistance);
                const int nDiscs = m_listClaim[nAt] & (g_nSomeDisc - 1);
                const bool bShared = dfDistance <= m_settings.dfRadius && nDiscs > nOwn;
                measure.nFlags |= (bMasked ? FlagMasked : 0u) | (bUsable ? 0u : FlagNotFinite) |
                                  (bFull ? FlagSaturated : 0u) | (bShared ? FlagOverlap : 0u);
                if (bUsable && !bMasked) {
                    m_listDisc.push_back({dfX, dfY, double(f), dfWeight});
                }
            } else if (bUsable && !bMasked && !bFull && m_listClaim[nAt] == 0) {
                m_listBackground.push_back({dfX, dfY, double(f)});
            }
        }
    }
}

// On many detectors neighbouring pixels share electrons, but pixels two apart hardly do.
double CSpotMeasurer::varianceOfDifferences() const
{
    const double dfLimit = 5 * std::sqrt(2 * m_plane.dfVariance);
    double dfSquares = 0;
    int nPairs = 0;
    for (size_t n = 2; n < m_listBackground.size(); ++n) {
        const BackgroundPixel &one = m_listBackground[n - 2], &other = m_listBackground[n];
        const double df = one.dfCounts - other.dfCounts;
        if (one.dfY == other.dfY && other.dfX - one.dfX < 2.5 && std::abs(df) <= dfLimit) {
            dfSquares += df * df;
            ++nPairs;
        }
    }
    return nPairs > 0 ? dfSquares / (2 * nPairs) : m_plane.dfVariance;
}

void CSpotMeasurer::sum(SpotMeasure& measure) const
{
    Eigen::Vector3d vecBackground = Eigen::Vector3d::Zero();
    double dfSquares = 0;
    for (const DiscPixel& pixel : m_listDisc) {
        measure.dfSum += pixel.dfWeight * (pixel.dfCounts - m_plane.at(pixel.dfX, pixel.dfY));
        vecBackground += pixel.dfWeight * Eigen::Vector3d(1, pixel.dfX, pixel.dfY);
        dfSquares += pixel.dfWeight * pixel.dfWeight;
    }
    measure.dfSumVariance = measure.dfVariance *
                            (dfSquares + vecBackground.dot(m_plane.matCovariance * vecBackground));
}

void CSpotMeasurer::fit(const ExpectedSpot& spot, SpotMeasure& measure) const
{
    const int nRegion = m_settings.pProfile->regionOf(spot.place.dfX, spot.place.dfY);
    Eigen::Vector3d vecBackground = Eigen::Vector3d::Zero();
    double dfProduct = 0, dfSquares = 0, dfCubes = 0, dfInDisc = 0;
    for (const DiscPixel& pixel : m_listDisc) {
        const double dfShape = m_settings.pProfile->at(nRegion, pixel.dfX, pixel.dfY);
        dfProduct += dfShape * (pixel.dfCounts - m_plane.at(pixel.dfX, pixel.dfY));
        dfSquares += dfShape * dfShape;
        dfCubes += dfShape * dfShape * dfShape;
        dfInDisc += pixel.dfWeight * dfShape;
        vecBackground += dfShape * Eigen::Vector3d(1, pixel.dfX, pixel.dfY);
    }
    if (!(dfSquares > 0) || !(dfInDisc > 0.05)) {
        return;
    }
    measure.dfInDisc = dfInDisc;
    measure.dfFit = dfProduct / dfSquares;
    measure.dfFitVariance = measure.dfVariance *
                            (dfSquares + vecBackground.dot(m_plane.matCovariance * vecBackground)) /
                            (dfSquares * dfSquares);
    measure.dfFitShare = dfCubes / (dfSquares * dfSquares);
}

SpotMeasure CSpotMeasurer::measure(const ExpectedSpot& spot, int nFrame)
{
    SpotMeasure measure;
    measure.nFrame = nFrame;
    measure.dfPart = spot.dfPart;
    std::copy(std::begin(spot.dfExcitation), std::end(spot.dfExcitation), measure.dfExcitation);
    collect(spot, measure);
    m_plane = fitBackground(m_listBackground, m_settings.noise ? m_settings.noise->dfGain : 0);
    if (m_plane.nPixels == 0) {
        measure.nFlags |= FlagBadBackground;
        return measure;
    }
    measure.dfBackground = m_plane.at(0, 0);
    measure.nBackground = m_plane.nPixels;
    measure.dfVariance = m_plane.dfVariance;
    if (m_settings.noise) {
        // Curvature of the background is not detector noise, but it is an error of the fitted plane. The
        // variance of n pixels has a relative error of √(2/n).
        const double dfModel = m_settings.noise->variance(measure.dfBackground);
        const bool bBent = m_plane.dfVariance > dfModel * (1 + 3 * std::sqrt(2.0 / m_plane.nPixels));
        measure.dfVariance = bBent ? m_plane.dfVariance : dfModel;
    } else {
        measure.dfDifference = varianceOfDifferences();
    }
    sum(measure);
    if (m_settings.pProfile) {
        fit(spot, measure);
    }
    return measure;
}

bool CSpotMeasurer::findCentroid(const ExpectedSpot& spot, SpotMeasure& measure) const
{
    double dfX = 0, dfY = 0, dfVariance = m_settings.dfRadius * m_settings.dfRadius / 9;
    const double dfMost = std::max(1.5, 0.6 * m_settings.dfRadius);
    for (int nRound = 0; nRound < 12; ++nRound) {
        const FramePlace place = {spot.place.dfX + dfX, spot.place.dfY + dfY};
        const PixelRange range(place, m_settings.dfRadius, *m_pImg);
        double dfSum = 0, dfSumX = 0, dfSumY = 0, dfSquares = 0;
        for (int y = range.nTop; y <= range.nBottom; ++y) {
            for (int x = range.nLeft; x <= range.nRight; ++x) {
                const double dfAtX = x - place.dfX, dfAtY = y - place.dfY;
                const double dfSquare = dfAtX * dfAtX + dfAtY * dfAtY;
                const double dfCounts = double(
                                            m_pImg->Data()[size_t(y) * size_t(m_pImg->Width()) + size_t(x)]) -
                                        m_plane.at(x - spot.place.dfX, y - spot.place.dfY);
                const double dfWeight = std::exp(-dfSquare / (2 * dfVariance)) * dfCounts;
                dfSum += dfWeight;
                dfSumX += dfWeight * dfAtX;
                dfSumY += dfWeight * dfAtY;
                dfSquares += dfWeight * dfSquare;
            }
        }
        if (!(dfSum > 0)) {
            return false;
        }
        // A Gaussian window as wide as the spot halves both the displacement and the variance.
        dfX += 2 * dfSumX / dfSum;
        dfY += 2 * dfSumY / dfSum;
        const double dfSeen = dfSquares / dfSum / 2;
        const double dfSpot = 1 / (1 / std::max(dfSeen, 0.05) - 1 / dfVariance);
        dfVariance = std::clamp(dfSpot > 0 ? dfSpot : 4 * dfVariance, 0.1,
                                m_settings.dfRadius * m_settings.dfRadius / 4);
        if (!(std::hypot(dfX, dfY) < dfMost)) {
            return false;
        }
    }
    measure.dfOffX = dfX;
    measure.dfOffY = dfY;
    measure.dfSigma = std::sqrt(dfVariance);
    return true;
}

PixelWindow CSpotMeasurer::window(const ExpectedSpot& spot, int nHalf) const
{
    const int nX = int(std::lround(spot.place.dfX)), nY = int(std::lround(spot.place.dfY));
    const int nLeft = nX - nHalf;
    const int nTop = nY - nHalf;
    const int nSide = 2 * nHalf + 1;
    if (nLeft < 0 || nTop < 0 || nLeft + nSide > m_pImg->Width() || nTop + nSide > m_pImg->Height()) {
        return {};
    }
    PixelWindow window = {nLeft, nTop, {}};
    window.listPixel.reserve(size_t(nSide) * size_t(nSide));
    for (int y = nTop; y < nTop + nSide; ++y) {
        for (int x = nLeft; x < nLeft + nSide; ++x) {
            const size_t nAt = size_t(y) * size_t(m_pImg->Width()) + size_t(x);
            const float f = m_pImg->Data()[nAt];
            const double dfX = x - spot.place.dfX, dfY = y - spot.place.dfY;
            const bool bOwn = dfX * dfX + dfY * dfY <= m_settings.dfRadius * m_settings.dfRadius;
            if (!isUsablePixel(f) || (!bOwn && m_listClaim[nAt] != 0) ||
                (m_settings.pMask && (*m_settings.pMask)[nAt])) {
                return {};
            }
            window.listPixel.push_back(f - float(m_plane.at(x - spot.place.dfX, y - spot.place.dfY)));
        }
    }
    return window;
}

}  // namespace tessera
