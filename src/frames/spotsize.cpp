#include "frames/spotsize.h"

#include "frames/badpixels.h"
#include "frames/median.h"
#include "frames/serieslook.h"
#include "frames/spotdistance.h"
#include "frames/spotmoments.h"
#include "imaging/imageview.h"
#include "records/runends.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessera {

namespace {

const int g_nTile = 32;             // side of the tiles whose background and noise are measured, pixels
const double g_dfDeviations = 7;    // standard deviations of the noise above which a maximum is a spot
const float g_fMeasurable = 10;     // standard deviations above which a spot can be measured
const size_t g_nMostMeasured = 40;  // spots of a frame; the strongest are the best
const size_t g_nMostSpots = 300;    // spots of a frame, for their distances
const int g_nLeastSpots = 10;       // spots of the series
const double g_dfFewOnFrame = 3;    // spots; with fewer the frame is analysed again with larger pixels

struct Candidate {
    int nX, nY;
    float fHeight;  // above the background, in standard deviations of the noise
};

// Smooths with the weights 1, 2, 1 in both directions. Unusable pixels count as 0. The edge stays 0.
void smooth(const CImgObj<float>& img, CImgObj<float>& imgSmooth)
{
    const int nWidth = img.Width(), nHeight = img.Height();
    imgSmooth.Create(nWidth, nHeight);
    std::fill_n(imgSmooth.Data(), nWidth, 0.f);
    std::fill_n(viewOf(imgSmooth).row(nHeight - 1), nWidth, 0.f);
    std::vector<float> vecColumn(static_cast<size_t>(nWidth));
    for (int y = 1; y + 1 < nHeight; ++y) {
        const float* pf = viewOf(img).row(y);
        for (int x = 0; x < nWidth; ++x) {
            vecColumn[x] = pf[x - nWidth] + 2 * pf[x] + pf[x + nWidth];
        }
        float* pfSmooth = viewOf(imgSmooth).row(y);
        pfSmooth[0] = pfSmooth[nWidth - 1] = 0;
        for (int x = 1; x + 1 < nWidth; ++x) {
            const float* p = vecColumn.data() + x;
            pfSmooth[x] = (p[-1] + 2 * p[0] + p[1]) * 0.0625f;
        }
    }
}

// The spread of every eighth pixel of a rectangle, alternating from row to row.
RobustSpread spreadWithin(const CImgObj<float>& img, int nLeft, int nTop, int nSide)
{
    std::vector<float> vec(size_t(nSide / 4 + 1) * size_t(nSide / 2 + 1));
    size_t nTaken = 0;
    const int nRight = std::min(nLeft + nSide, img.Width() - 1);
    const int nBottom = std::min(nTop + nSide, img.Height() - 1);
    for (int y = nTop; y < nBottom; y += 4) {
        for (int x = nLeft + (y / 4) % 2; x < nRight; x += 2) {
            const float f = viewOf(img).at(x, y);
            vec[nTaken] = f;
            nTaken += isUsablePixel(f) ? 1 : 0;
        }
    }
    vec.resize(nTaken);
    return robustSpread(std::move(vec));
}

bool isMaximum(const float* pf, int nWidth)
{
    return pf[0] > pf[-1] && pf[0] >= pf[1] && pf[0] > pf[-nWidth - 1] && pf[0] > pf[-nWidth] &&
           pf[0] > pf[-nWidth + 1] && pf[0] >= pf[nWidth - 1] && pf[0] >= pf[nWidth] &&
           pf[0] >= pf[nWidth + 1];
}

// The maxima of the smoothed frame far above the noise of their tile, the highest first.
std::vector<Candidate> candidatesOf(const CImgObj<float>& imgSmooth)
{
    const int nWidth = imgSmooth.Width(), nHeight = imgSmooth.Height();
    // The noise of a tile is taken to be at least the median of all tiles, as the pixels of some tiles are
    // all equal.
    std::vector<RobustSpread> vecTile;
    std::vector<float> vecDeviation;
    for (int nTop = 1; nTop + 1 < nHeight; nTop += g_nTile) {
        for (int nLeft = 1; nLeft + 1 < nWidth; nLeft += g_nTile) {
            vecTile.push_back(spreadWithin(imgSmooth, nLeft, nTop, g_nTile));
            vecDeviation.push_back(float(vecTile.back().dfDeviation));
        }
    }
    std::vector<Candidate> vecCandidate;
    if (vecTile.empty()) {
        return vecCandidate;
    }
    const double dfFloor = std::max(double(medianOf(vecDeviation)), 1e-20);
    size_t nTile = 0;
    for (int nTop = 1; nTop + 1 < nHeight; nTop += g_nTile) {
        for (int nLeft = 1; nLeft + 1 < nWidth; nLeft += g_nTile, ++nTile) {
            const double dfDeviation = std::max(vecTile[nTile].dfDeviation, dfFloor);
            const float fLeast = float(double(vecTile[nTile].fMedian) + g_dfDeviations * dfDeviation);
            for (int y = nTop; y < std::min(nTop + g_nTile, nHeight - 1); ++y) {
                const float* pf = viewOf(imgSmooth).row(y);
                const int nRight = std::min(nLeft + g_nTile, nWidth - 1);
                // Hardly any row of a tile has a spot, so each is first checked by counting without
                // branches.
                int nHigh = 0;
                for (int x = nLeft; x < nRight; ++x) {
                    nHigh += pf[x] > fLeast ? 1 : 0;
                }
                for (int x = nLeft; nHigh > 0 && x < nRight; ++x) {
                    if (pf[x] > fLeast && isMaximum(pf + x, nWidth)) {
                        vecCandidate.push_back(
                            {x, y, float((double(pf[x]) - double(vecTile[nTile].fMedian)) / dfDeviation)});
                    }
                }
            }
        }
    }
    std::stable_sort(vecCandidate.begin(), vecCandidate.end(),
                     [](const Candidate& a, const Candidate& b) { return a.fHeight > b.fHeight; });
    return vecCandidate;
}

FrameSpots spotsAtOneScale(const CImgObj<float>& img)
{
    FrameSpots spots;
    CImgObj<float> imgSmooth;
    smooth(img, imgSmooth);
    const std::vector<Candidate> vecCandidate = candidatesOf(imgSmooth);
    std::vector<MeasuredSpot> vecMeasured;
    for (size_t i = 0; i < std::min(vecCandidate.size(), 4 * g_nMostMeasured); ++i) {
        if (vecCandidate[i].fHeight < g_fMeasurable) {
            break;
        }
        const auto spot = measureSpot(img, vecCandidate[i].nX, vecCandidate[i].nY);
        const bool bKnown = spot &&
                            std::any_of(vecMeasured.begin(), vecMeasured.end(), [&](const auto& known) {
                                return std::hypot(known.dfX - spot->dfX, known.dfY - spot->dfY) <
                                       known.dfSigma;
                            });
        if (spot && !bKnown) {
            vecMeasured.push_back(*spot);
            spots.vecSigma.push_back(spot->dfSigma);
        }
        if (vecMeasured.size() == g_nMostMeasured) {
            break;
        }
    }
    for (size_t i = 0; i < std::min(vecCandidate.size(), 4 * g_nMostSpots); ++i) {
        spots.vecSpot.emplace_back(vecCandidate[i].nX, vecCandidate[i].nY);
    }
    return spots;
}

// Sums 2 × 2 pixels; the last row or column of an odd number is left out.
void halve(const CImgObj<float>& img, CImgObj<float>& imgHalf)
{
    const int nWidth = img.Width() / 2, nHeight = img.Height() / 2;
    imgHalf.Create(nWidth, nHeight);
    for (int y = 0; y < nHeight; ++y) {
        const float* pf = viewOf(img).row(2 * y);
        float* pfHalf = viewOf(imgHalf).row(y);
        for (int x = 0; x < nWidth; ++x) {
            pfHalf[x] = pf[2 * x] + pf[2 * x + 1] + pf[2 * x + img.Width()] + pf[2 * x + 1 + img.Width()];
        }
    }
}

double quantile(std::vector<double> vec, double dfShare)
{
    const size_t n = std::min(vec.size() - 1, size_t(dfShare * double(vec.size())));
    std::nth_element(vec.begin(), vec.begin() + std::ptrdiff_t(n), vec.end());
    return vec[n];
}

}  // namespace

FrameSpots spotsOfFrame(const CImgObj<float>& imgFrame)
{
    FrameSpots spots;
    const int nLeastSide = 16;  // needed for a window
    CImgObj<float> imgFormer, imgHalf;
    const CImgObj<float>* pImg = &imgFrame;
    for (int nScale = 1; nScale <= 4 && std::min(pImg->Width(), pImg->Height()) >= nLeastSide; nScale *= 2) {
        FrameSpots found = spotsAtOneScale(*pImg);
        if (nScale == 1 || found.vecSigma.size() > spots.vecSigma.size()) {
            for (double& dfSigma : found.vecSigma) {
                dfSigma *= nScale;
            }
            for (QPointF& ptSpot : found.vecSpot) {
                ptSpot = nScale * ptSpot + QPointF(0.5, 0.5) * (nScale - 1);
            }
            spots = std::move(found);
        }
        if (double(spots.vecSigma.size()) >= g_dfFewOnFrame) {
            break;
        }
        halve(*pImg, imgHalf);
        imgFormer = std::move(imgHalf);
        imgHalf = CImgObj<float>();
        pImg = &imgFormer;
    }
    return spots;
}

std::optional<SpotSize> spotSizeOf(const std::vector<FrameSpots>& vecFrame)
{
    SpotSize size;
    std::vector<double> vecSigma;
    for (const FrameSpots& frame : vecFrame) {
        vecSigma.insert(vecSigma.end(), frame.vecSigma.begin(), frame.vecSigma.end());
        size.nFrames += frame.vecSigma.empty() ? 0 : 1;
    }
    size.nSpots = int(vecSigma.size());
    // Spots of one series have similar widths. If the middle half of the widths spans more than a factor of
    // 2.5, the maxima are noise and parts of rings.
    const double dfGreatestSpan = 2.5;
    if (size.nSpots < g_nLeastSpots || quantile(vecSigma, 0.75) > dfGreatestSpan * quantile(vecSigma, 0.25)) {
        return std::nullopt;
    }
    size.dfSigma = quantile(vecSigma, 0.5);
    std::vector<std::vector<QPointF>> vecSpots;
    vecSpots.reserve(vecFrame.size());
    for (const FrameSpots& frame : vecFrame) {
        vecSpots.push_back(frame.vecSpot);
    }
    size.dfClosest = closestDistance(vecSpots, 2.5 * size.dfSigma);
    return size;
}

MeasuredSpotSize measureSpotSize(const DataSet& dataSet, CRunReport& report, int nJobs)
{
    const std::optional<SeriesLook> look = lookAtSeries(dataSet, {false, true}, report, nJobs);
    if (!look) {
        return {report.reason().isEmpty() ? RunOutcome{RunEnd::Stopped, {}} : failedAsSaid(report), {}};
    }
    return {{}, look->size};
}

}  // namespace tessera
