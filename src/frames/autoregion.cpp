#include "frames/autoregion.h"

#include "frames/badpixels.h"
#include "frames/median.h"
#include "frames/seriessample.h"
#include "imaging/imageview.h"

#include <QPointF>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace tessera {

namespace {

const int g_nFramesLookedAt = 24;
const int g_nMapSide = 256;    // the longer side of a map is at most this long
const int g_nSmallBlock = 8;   // blocks up to this side get their median by sorting, larger ones by selection
const int g_nUsualSide = 256;  // side of the region, pixels of the frame
const int g_nLeastSide = 16;   // shorter side of a frame, pixels
const int g_nBeamMargin = 64;  // pixels between every position of the beam and the edge of the region

// A frame reduced to one number for each block of pixels.
struct Map {
    int nWidth = 0;
    int nHeight = 0;
    std::vector<float> vec;

    float& at(int nX, int nY) { return vec[size_t(nY) * size_t(nWidth) + size_t(nX)]; }
    float at(int nX, int nY) const { return vec[size_t(nY) * size_t(nWidth) + size_t(nX)]; }
};

enum class MapLines { Rows, Columns };

// The median of the usable pixels in a rectangle of a frame; 0 where it has none. The rectangle, which ends
// before nRight and nBottom, may reach beyond the frame.
float medianOfPart(const CImgObj<float>& img, int nLeft, int nRight, int nTop, int nBottom,
                   std::vector<float>& vecWork)
{
    vecWork.clear();
    for (int r = std::max(nTop, 0); r < std::min(nBottom, img.Height()); ++r) {
        const float* pRow = viewOf(img).row(r);
        for (int c = std::max(nLeft, 0); c < std::min(nRight, img.Width()); ++c) {
            if (isUsablePixel(pRow[c])) {
                vecWork.push_back(pRow[c]);
            }
        }
    }
    return vecWork.empty() ? 0.f : medianOf(vecWork);
}

// The medians of all blocks of a row of small blocks. The blocks are sorted up to their middle elements by
// exchanges without branches, which the compiler vectorizes across the blocks.
// @return false, with nothing written to pMedian, where a pixel is not usable
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

// The map of the medians of the blocks. The median removes single hot pixels and ignores unusable ones.
Map reduced(const CImgObj<float>& img, int nBlock)
{
    Map map;
    map.nWidth = img.Width() / nBlock;
    map.nHeight = img.Height() / nBlock;
    map.vec.resize(size_t(map.nWidth) * size_t(map.nHeight));
    std::vector<float> vecWork;
    // Blocks of one pixel could not remove hot pixels: at full size the median of 3 x 3 pixels is taken.
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

// Subtracts from each row (or column) the excess of its median over the median of the lines around it. This
// removes lines of the detector that are brighter or darker over the whole frame, such as the interpolated
// rows and columns between the chips.
void flattenLines(Map& map, MapLines lines)
{
    const bool bRows = lines == MapLines::Rows;
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

// Replaces each value by the square root of its excess over the background in units of the background's
// spread. The root gives the halo of the beam weight beside its core, which may be saturated, wrapped around
// in 16 bits, or hidden behind a beam stop.
void compress(Map& map)
{
    const RobustSpread spread = robustSpread(map.vec);
    const float fMedian = spread.fMedian;
    const float fSpread = std::max(float(spread.dfDeviation), 1e-6f * (1.f + std::fabs(fMedian)));
    for (float& f : map.vec) {
        f = std::sqrt(std::max(f - fMedian, 0.f) / fSpread);
    }
}

struct FrameMap {
    int nWidth = 0;  // of the frame
    int nHeight = 0;
    int nBlock = 1;  // side of a block, pixels of the frame
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
    flattenLines(frame.map, MapLines::Rows);
    flattenLines(frame.map, MapLines::Columns);
    compress(frame.map);
    return frame;
}

Map blurredAlong(const Map& map, const std::vector<float>& vecKernel, MapLines lines)
{
    const bool bX = lines == MapLines::Rows;
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
    return blurredAlong(blurredAlong(map, vecKernel, MapLines::Rows), vecKernel, MapLines::Columns);
}

// The place of the greatest value within dfReach of a point, the first in reading order of equal ones; the
// point itself where no value is above 0.
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

// The running median over each entry and up to two neighbours on both sides. It ignores a strong reflection
// that was taken for the beam on one or two frames. An end becomes the median of itself, its neighbour and
// the value extrapolated from the next two.
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

// The side of the region, an even number: twice the usual one and so on until the range of the beam and its
// margins fit, but no more than the shorter side of the frame.
int regionSide(int nFrameSide, double dfWander)
{
    int nSide = g_nUsualSide;
    while (nSide < nFrameSide && dfWander + 2 * g_nBeamMargin > nSide) {
        nSide *= 2;
    }
    return nSide <= nFrameSide ? nSide : nFrameSide - nFrameSide % 2;
}

struct SeriesMaps {
    int nWidth = 0;  // of the first frame
    int nHeight = 0;
    int nBlock = 1;
    std::vector<Map> vec;  // of the frames of that size
};

// The maps of some frames; nothing, with a red line where the user did not stop, when there is none.
std::optional<SeriesMaps> mapsOfSeries(const DataSet& dataSet, CRunReport& report, int nJobs)
{
    SeriesMaps maps;
    bool bRead = false;
    const auto take = [&](FrameMap& frame) {
        bRead = true;
        if (maps.vec.empty()) {
            maps.nWidth = frame.nWidth;
            maps.nHeight = frame.nHeight;
            maps.nBlock = frame.nBlock;
        }
        if (!frame.map.vec.empty() && frame.nWidth == maps.nWidth && frame.nHeight == maps.nHeight) {
            maps.vec.push_back(std::move(frame.map));
        }
    };
    if (!forEachSampledFrame<FrameMap>(
            dataSet, g_nFramesLookedAt, nJobs, report, [] { return mapOfFrame; }, take)) {
        return std::nullopt;
    }
    if (maps.vec.empty()) {
        report.fail(
            bRead ? QStringLiteral(
                        "The direct beam was not searched: on frames of %L1×%L2 pixels it needs sides of "
                        "at least %L3. Give the region (--region).")
                        .arg(maps.nWidth)
                        .arg(maps.nHeight)
                        .arg(std::max(g_nLeastSide, maps.nBlock))
                  : QStringLiteral("The direct beam was not searched: no frame could be read."));
        return std::nullopt;
    }
    return maps;
}

int longSide(const Map& map)
{
    return std::max(map.nWidth, map.nHeight);
}

// The sum of the blurred maps, each scaled to a maximum of 1, so that all frames count alike. The direct beam
// adds up over all frames, a reflection over the few frames on which it appears.
Map votesOf(const std::vector<Map>& vecMap)
{
    Map mapVotes = vecMap[0];
    std::fill(mapVotes.vec.begin(), mapVotes.vec.end(), 0.f);
    for (const Map& map : vecMap) {
        const Map mapWide = blurred(map, std::max(1.5, 0.03 * longSide(vecMap[0])));
        const float fMost = *std::max_element(mapWide.vec.begin(), mapWide.vec.end());
        for (size_t i = 0; i < mapVotes.vec.size() && fMost > 0; ++i) {
            mapVotes.vec[i] += mapWide.vec[i] / fMost;
        }
    }
    return mapVotes;
}

struct BeamTrack {
    double dfX = 0;  // middle of its range, pixels of the frame
    double dfY = 0;
    double dfWander = 0;  // the larger extent of the range, pixels of the frame
};

BeamTrack trackBeam(const SeriesMaps& maps, const QPointF& ptCoarse)
{
    const int nMapSide = longSide(maps.vec[0]);
    std::vector<float> vecX, vecY;
    for (const Map& map : maps.vec) {
        const QPointF pt = maximumNear(blurred(map, std::max(1.0, 0.015 * nMapSide)), ptCoarse,
                                       0.2 * nMapSide);
        vecX.push_back(float((pt.x() + 0.5) * maps.nBlock - 0.5));
        vecY.push_back(float((pt.y() + 0.5) * maps.nBlock - 0.5));
    }
    vecX = smoothedTrack(vecX);
    vecY = smoothedTrack(vecY);
    const auto rangeX = std::minmax_element(vecX.begin(), vecX.end());
    const auto rangeY = std::minmax_element(vecY.begin(), vecY.end());
    BeamTrack track;
    track.dfWander = double(std::max(*rangeX.second - *rangeX.first, *rangeY.second - *rangeY.first));
    track.dfX = 0.5 * double(*rangeX.first + *rangeX.second);
    track.dfY = 0.5 * double(*rangeY.first + *rangeY.second);
    return track;
}

}  // namespace

std::optional<QRect> findBeamRegion(const DataSet& dataSet, CRunReport& report, int nJobs)
{
    const std::optional<SeriesMaps> maps = mapsOfSeries(dataSet, report, nJobs);
    if (!maps) {
        return std::nullopt;
    }
    const Map mapVotes = votesOf(maps->vec);
    if (!(*std::max_element(mapVotes.vec.begin(), mapVotes.vec.end()) > 0)) {
        report.fail(QStringLiteral("The direct beam was not found: the frames looked at are blank."));
        return std::nullopt;
    }
    const QPoint ptMiddle(mapVotes.nWidth / 2, mapVotes.nHeight / 2);
    const BeamTrack track = trackBeam(*maps, maximumNear(mapVotes, QPointF(ptMiddle), longSide(mapVotes)));
    report.addMessage(QStringLiteral("Direct beam found near (%L1, %L2), within %L3 pixels over the series.")
                          .arg(track.dfX, 0, 'f', 0)
                          .arg(track.dfY, 0, 'f', 0)
                          .arg(track.dfWander, 0, 'f', 0),
                      Severity::Info);

    const int nSide = regionSide(std::min(maps->nWidth, maps->nHeight), track.dfWander);
    const auto start = [nSide](double dfCentre, int nLength) {
        return std::max(0, std::min(int(std::lround(dfCentre)) - nSide / 2, nLength - nSide));
    };
    return QRect(start(track.dfX, maps->nWidth), start(track.dfY, maps->nHeight), nSide, nSide);
}

}  // namespace tessera
