#include "frames/autoregion.h"

#include "frames/badpixels.h"
#include "frames/median.h"
#include "frames/seriessample.h"

#include <QPointF>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

const int g_nFramesLookedAt = 24;
const int g_nMapSide = 256;    // frames are reduced to maps of at most this side
const int g_nSmallBlock = 8;   // side of blocks whose pixels are sorted rather than searched
const int g_nUsualSide = 256;  // of the region, pixels of the frame
const int g_nLeastSide = 16;
const int g_nBeamMargin = 64;  // between the beam anywhere on its way and the region's edge

// A small map of a frame.
struct Map {
    int nWidth = 0;
    int nHeight = 0;
    std::vector<float> vec;

    float& at(int nX, int nY) { return vec[size_t(nY) * size_t(nWidth) + size_t(nX)]; }
    float at(int nX, int nY) const { return vec[size_t(nY) * size_t(nWidth) + size_t(nX)]; }
};

// The median of the usable pixels in a part of a frame; 0 where there are none.
float medianOfPart(const CImgObj<float>& img, int nLeft, int nRight, int nTop, int nBottom,
                   std::vector<float>& vecWork)
{
    vecWork.clear();
    for (int r = std::max(nTop, 0); r < std::min(nBottom, img.Height()); ++r) {
        const float* pRow = img.Data() + size_t(r) * size_t(img.Width());
        for (int c = std::max(nLeft, 0); c < std::min(nRight, img.Width()); ++c) {
            if (isUsablePixel(pRow[c])) {
                vecWork.push_back(pRow[c]);
            }
        }
    }
    return vecWork.empty() ? 0.f : medianOf(vecWork);
}

// The medians of all blocks in a row of small blocks side by side: sorted without branches as far as their
// middle. False, with nothing written, where a pixel is not usable.
bool mediansOfBlocks(const float* pFrame, int nWidth, int nBlock, int nBlocks, float* pMedian,
                     std::vector<float>& vecWork)
{
    const int nPixels = nBlock * nBlock;
    vecWork.resize(size_t(nPixels) * size_t(nBlocks));  // pixel i of all blocks, then pixel i + 1
    const auto line = [&](int i) { return vecWork.data() + size_t(i) * size_t(nBlocks); };
    int nBad = 0;
    for (int i = 0; i < nPixels; ++i) {
        const float* pPixel = pFrame + size_t(i / nBlock) * size_t(nWidth) + i % nBlock;
        float* pLine = line(i);
        for (int n = 0; n < nBlocks; ++n) {
            pLine[n] = pPixel[n * nBlock];
            nBad += isUsablePixel(pLine[n]) ? 0 : 1;
        }
    }
    if (nBad > 0) {
        return false;
    }
    for (int i = 0; i <= nPixels / 2; ++i) {
        float* pLow = line(i);
        for (int j = i + 1; j < nPixels; ++j) {
            float* pHigh = line(j);
            for (int n = 0; n < nBlocks; ++n) {
                const float fLow = pLow[n];
                const float fHigh = pHigh[n];
                pLow[n] = std::min(fLow, fHigh);
                pHigh[n] = std::max(fLow, fHigh);
            }
        }
    }
    std::copy_n(line(nPixels / 2), nBlocks, pMedian);
    return true;
}

// Medians of blocks: single hot pixels are gone, and so are those without a number.
Map reduced(const CImgObj<float>& img, int nBlock)
{
    Map map;
    map.nWidth = img.Width() / nBlock;
    map.nHeight = img.Height() / nBlock;
    map.vec.resize(size_t(map.nWidth) * size_t(map.nHeight));
    std::vector<float> vecWork;
    // at full size the medians of 3 x 3 pixels do the same
    const int nBefore = nBlock > 1 ? 0 : 1;
    const int nAfter = nBlock > 1 ? nBlock : 2;
    for (int nY = 0; nY < map.nHeight; ++nY) {
        const float* pFrame = img.Data() + size_t(nY) * size_t(nBlock) * size_t(img.Width());
        if (nBlock > 1 && nBlock <= g_nSmallBlock &&
            mediansOfBlocks(pFrame, img.Width(), nBlock, map.nWidth, &map.at(0, nY), vecWork)) {
            continue;
        }
        for (int nX = 0; nX < map.nWidth; ++nX) {
            map.at(nX, nY) = medianOfPart(img, nX * nBlock - nBefore, nX * nBlock + nAfter,
                                          nY * nBlock - nBefore, nY * nBlock + nAfter, vecWork);
        }
    }
    return map;
}

// Takes out lines of the detector that stand out of their neighbourhood over the whole frame, such as
// the interpolated rows and columns between the chips.
void flattenLines(Map& map, bool bRows)
{
    const int nLines = bRows ? map.nHeight : map.nWidth;
    const int nLength = bRows ? map.nWidth : map.nHeight;
    std::vector<float> vecMedian, vecLine;
    for (int i = 0; i < nLines; ++i) {
        vecLine.clear();
        for (int j = 0; j < nLength; ++j) {
            vecLine.push_back(bRows ? map.at(j, i) : map.at(i, j));
        }
        vecMedian.push_back(medianOf(vecLine));
    }
    const int nReach = std::max(3, nLines / 20);
    for (int i = 0; i < nLines; ++i) {
        std::vector<float> vecNear(vecMedian.begin() + std::max(i - nReach, 0),
                                   vecMedian.begin() + std::min(i + nReach + 1, nLines));
        const float fExcess = vecMedian[i] - medianOf(vecNear);
        for (int j = 0; j < nLength; ++j) {
            (bRows ? map.at(j, i) : map.at(i, j)) -= fExcess;
        }
    }
}

// Roots of what stands above the background, in units of its spread: the light of the beam's
// surroundings counts beside its core, which may be clipped, wrapped or behind a stop.
void compress(Map& map)
{
    const RobustSpread spread = robustSpread(map.vec);
    const float fMedian = spread.fMedian;
    const float fSpread = std::max(float(spread.dfDeviation), 1e-6f * (1.f + std::fabs(fMedian)));
    for (float& f : map.vec) {
        f = std::sqrt(std::max(f - fMedian, 0.f) / fSpread);
    }
}

// What is kept of a frame.
struct FrameMap {
    int nWidth = 0;  // of the frame
    int nHeight = 0;
    int nBlock = 1;  // side of what is one pixel of the map
    Map map;         // empty for a frame that is too small
};

FrameMap mapOfFrame(const CImgObj<float>& imgFrame)
{
    FrameMap frame;
    frame.nWidth = imgFrame.Width();
    frame.nHeight = imgFrame.Height();
    frame.nBlock = (std::max(frame.nWidth, frame.nHeight) + g_nMapSide - 1) / g_nMapSide;
    if (std::min(frame.nWidth, frame.nHeight) < std::max(g_nLeastSide, frame.nBlock)) {
        return frame;
    }
    frame.map = reduced(imgFrame, frame.nBlock);
    flattenLines(frame.map, true);
    flattenLines(frame.map, false);
    compress(frame.map);
    return frame;
}

Map blurredAlong(const Map& map, const std::vector<float>& vecKernel, bool bX)
{
    Map result = map;
    std::fill(result.vec.begin(), result.vec.end(), 0.f);
    const int nReach = int(vecKernel.size()) - 1;
    for (int nY = 0; nY < map.nHeight; ++nY) {
        float* pSum = &result.at(0, nY);
        for (int d = -nReach; d <= nReach; ++d) {
            const int nSourceY = bX ? nY : nY + d;
            if (nSourceY < 0 || nSourceY >= map.nHeight) {
                continue;
            }
            const int nRight = bX ? d : 0;
            const float* pSource = map.vec.data() + size_t(nSourceY) * size_t(map.nWidth);
            const float fWeight = vecKernel[size_t(std::abs(d))];
            for (int x = std::max(0, -nRight); x < map.nWidth - std::max(0, nRight); ++x) {
                pSum[x] += fWeight * pSource[x + nRight];
            }
        }
    }
    return result;
}

Map blurred(const Map& map, double dfSigma)
{
    std::vector<float> vecKernel;
    for (int i = 0; i <= int(std::ceil(3 * dfSigma)); ++i) {
        vecKernel.push_back(float(std::exp(-0.5 * i * i / (dfSigma * dfSigma))));
    }
    return blurredAlong(blurredAlong(map, vecKernel, true), vecKernel, false);
}

// The first maximum no further than dfReach from a point; the point itself where nothing is above 0.
QPointF maximumNear(const Map& map, const QPointF& ptNear, double dfReach)
{
    QPointF ptBest = ptNear;
    float fBest = 0.f;
    for (int nY = 0; nY < map.nHeight; ++nY) {
        for (int nX = 0; nX < map.nWidth; ++nX) {
            if (map.at(nX, nY) > fBest && std::hypot(nX - ptNear.x(), nY - ptNear.y()) <= dfReach) {
                fBest = map.at(nX, nY);
                ptBest = QPointF(nX, nY);
            }
        }
    }
    return ptBest;
}

// Medians of each entry and its neighbours, up to two on both sides: a strong reflection beside the beam
// on a frame or two does not count. The ends follow the slope behind them where their own values do.
// Source: Tukey (1977), Exploratory Data Analysis, ch. 7 (running medians, end-value rule).
std::vector<float> smoothedTrack(const std::vector<float>& vec)
{
    std::vector<float> vecResult = vec;
    const int n = int(vec.size());
    for (int i = 1; i < n - 1; ++i) {
        const int nReach = std::min({2, i, n - 1 - i});
        std::vector<float> vecNear(vec.begin() + i - nReach, vec.begin() + i + nReach + 1);
        vecResult[i] = medianOf(vecNear);
    }
    const auto smoothEnd = [&](int nEnd, int nNext, int nThird) {
        const float fNext = vecResult[nNext];
        std::vector<float> vecThree{vec[nEnd], fNext, 3 * fNext - 2 * vecResult[nThird]};
        vecResult[nEnd] = medianOf(vecThree);
    };
    if (n > 2) {
        smoothEnd(0, 1, 2);
        smoothEnd(n - 1, n - 2, n - 3);
    }
    return vecResult;
}

// The even side of the region, for frames of a least side and a beam that wanders over dfWander pixels.
int regionSide(int nFrameSide, double dfWander)
{
    int nSide = g_nUsualSide;
    while (nSide < nFrameSide && dfWander + 2 * g_nBeamMargin > nSide) {
        nSide *= 2;
    }
    return nSide <= nFrameSide ? nSide : nFrameSide - nFrameSide % 2;
}

}  // namespace

bool findBeamRegion(const DataSet& dataSet, CRunReport& report, QRect& rcRegion, int nJobs)
{
    int nWidth = 0;
    int nHeight = 0;
    int nBlock = 1;
    std::vector<Map> vecMap;
    bool bRead = false;
    const auto take = [&](FrameMap& frame) {
        bRead = true;
        if (vecMap.empty()) {
            nWidth = frame.nWidth;
            nHeight = frame.nHeight;
            nBlock = frame.nBlock;
        }
        if (!frame.map.vec.empty() && frame.nWidth == nWidth && frame.nHeight == nHeight) {
            vecMap.push_back(std::move(frame.map));
        }
    };
    if (!forEachSampledFrame<FrameMap>(
            dataSet, g_nFramesLookedAt, nJobs, report, [] { return mapOfFrame; }, take)) {
        return false;
    }
    if (vecMap.empty()) {
        report.fail(
            bRead ? QStringLiteral(
                        "The direct beam was not searched: on frames of %L1×%L2 pixels it needs sides of "
                        "at least %L3. Give the region (--region).")
                        .arg(nWidth)
                        .arg(nHeight)
                        .arg(std::max(g_nLeastSide, nBlock))
                  : QStringLiteral("The direct beam was not searched: no frame could be read."));
        return false;
    }

    // Each frame has one vote, spread over its map; the beam gets it from all, a reflection from few.
    const int nMapSide = std::max(vecMap[0].nWidth, vecMap[0].nHeight);
    Map mapVotes = vecMap[0];
    std::fill(mapVotes.vec.begin(), mapVotes.vec.end(), 0.f);
    for (const Map& map : vecMap) {
        const Map mapWide = blurred(map, std::max(1.5, 0.03 * nMapSide));
        const float fMost = *std::max_element(mapWide.vec.begin(), mapWide.vec.end());
        for (size_t i = 0; i < mapVotes.vec.size() && fMost > 0; ++i) {
            mapVotes.vec[i] += mapWide.vec[i] / fMost;
        }
    }
    if (!(*std::max_element(mapVotes.vec.begin(), mapVotes.vec.end()) > 0)) {
        report.fail(QStringLiteral("The direct beam was not found: the frames looked at are blank."));
        return false;
    }
    const QPoint ptMiddle(mapVotes.nWidth / 2, mapVotes.nHeight / 2);
    const QPointF ptCoarse = maximumNear(mapVotes, QPointF(ptMiddle), nMapSide);

    std::vector<float> vecX, vecY;
    for (const Map& map : vecMap) {
        const QPointF pt = maximumNear(blurred(map, std::max(1.0, 0.015 * nMapSide)), ptCoarse,
                                       0.2 * nMapSide);
        vecX.push_back(float((pt.x() + 0.5) * nBlock - 0.5));
        vecY.push_back(float((pt.y() + 0.5) * nBlock - 0.5));
    }
    vecX = smoothedTrack(vecX);
    vecY = smoothedTrack(vecY);
    const auto rangeX = std::minmax_element(vecX.begin(), vecX.end());
    const auto rangeY = std::minmax_element(vecY.begin(), vecY.end());
    const double dfWander = double(std::max(*rangeX.second - *rangeX.first, *rangeY.second - *rangeY.first));
    const double dfX = 0.5 * double(*rangeX.first + *rangeX.second);
    const double dfY = 0.5 * double(*rangeY.first + *rangeY.second);
    report.addMessage(QStringLiteral("Direct beam found near (%L1, %L2), within %L3 pixels over the series.")
                          .arg(dfX, 0, 'f', 0)
                          .arg(dfY, 0, 'f', 0)
                          .arg(dfWander, 0, 'f', 0),
                      Severity::Info);

    const int nSide = regionSide(std::min(nWidth, nHeight), dfWander);
    const auto start = [nSide](double dfCentre, int nLength) {
        return std::max(0, std::min(int(std::lround(dfCentre)) - nSide / 2, nLength - nSide));
    };
    rcRegion = QRect(start(dfX, nWidth), start(dfY, nHeight), nSide, nSide);
    return true;
}

}  // namespace tessera
