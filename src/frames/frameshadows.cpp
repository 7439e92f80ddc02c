#include "frames/frameshadows.h"

#include "frames/badpixels.h"
#include "frames/blockoutline.h"
#include "frames/median.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const float g_fContrast = 3;            // of the brightness beyond the edge of a shadow to that within
const double g_dfNextToAll = 0.85;      // of an edge; reflections and the beam's light may fall on the rest
const int g_nLeastBlocks = 30;          // of a shadow
const double g_dfGreatestShare = 0.45;  // of the frame: the corners around a round aperture make 0.21
const float g_fThresholdStep = 0.8f;    // from one brightness that parts to the next

// Blocks of the frame with their brightness.
struct Grid {
    int nWidth, nHeight;
    std::vector<float> vecLevel;

    bool has(int x, int y) const { return x >= 0 && y >= 0 && x < nWidth && y < nHeight; }
    size_t at(int x, int y) const { return size_t(y) * size_t(nWidth) + size_t(x); }
};

Grid gridOf(const std::vector<std::vector<float>>& vecFrame, int nWidth, int nHeight)
{
    Grid grid = {
        (nWidth + g_nShadowBlock - 1) / g_nShadowBlock, (nHeight + g_nShadowBlock - 1) / g_nShadowBlock, {}};
    grid.vecLevel.resize(size_t(grid.nWidth) * size_t(grid.nHeight));
    std::vector<float> vec;
    for (size_t i = 0; i < grid.vecLevel.size(); ++i) {
        vec.clear();
        for (const std::vector<float>& vecBlock : vecFrame) {
            vec.push_back(vecBlock[i]);
        }
        grid.vecLevel[i] = medianOf(vec);
    }
    return grid;
}

// The blocks below a brightness that hang together with a first one, by their sides. They are taken off.
std::vector<size_t> takeRegion(const Grid& grid, std::vector<char>& vecDark, size_t nFirst)
{
    std::vector<size_t> vecRegion = {nFirst};
    vecDark[nFirst] = 0;
    for (size_t i = 0; i < vecRegion.size(); ++i) {
        const int x = int(vecRegion[i] % size_t(grid.nWidth)), y = int(vecRegion[i] / size_t(grid.nWidth));
        const int aStep[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
        for (const auto& step : aStep) {
            if (grid.has(x + step[0], y + step[1]) && vecDark[grid.at(x + step[0], y + step[1])]) {
                vecDark[grid.at(x + step[0], y + step[1])] = 0;
                vecRegion.push_back(grid.at(x + step[0], y + step[1]));
            }
        }
    }
    return vecRegion;
}

// Whether it is bright a block beyond the region's edge, and dark a block within, along next to all of it.
bool hasSharpEdge(const Grid& grid, const std::vector<size_t>& vecRegion)
{
    std::vector<char> vecIn(grid.vecLevel.size());
    for (size_t n : vecRegion) {
        vecIn[n] = 1;
    }
    int nEdge = 0, nSharp = 0;
    const int aStep[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
    for (size_t n : vecRegion) {
        const int x = int(n % size_t(grid.nWidth)), y = int(n / size_t(grid.nWidth));
        for (const auto& step : aStep) {
            if (!grid.has(x + step[0], y + step[1]) || vecIn[grid.at(x + step[0], y + step[1])]) {
                continue;
            }
            const bool bBeyond = grid.has(x + 2 * step[0], y + 2 * step[1]);
            const float fOut = grid.vecLevel[bBeyond ? grid.at(x + 2 * step[0], y + 2 * step[1])
                                                     : grid.at(x + step[0], y + step[1])];
            const bool bWithin = grid.has(x - step[0], y - step[1]) &&
                                 vecIn[grid.at(x - step[0], y - step[1])];
            const float fIn = grid.vecLevel[bWithin ? grid.at(x - step[0], y - step[1]) : n];
            ++nEdge;
            nSharp += fOut > 0 && fOut >= g_fContrast * fIn ? 1 : 0;
        }
    }
    return nEdge > 0 && nSharp >= g_dfNextToAll * nEdge;
}

}  // namespace

std::vector<float> blockMeans(const CImgObj<float>& imgFrame)
{
    const int nWidth = imgFrame.Width(), nHeight = imgFrame.Height();
    const int nAcross = (nWidth + g_nShadowBlock - 1) / g_nShadowBlock;
    std::vector<float> vecMean;
    std::vector<float> vecSum;
    std::vector<int> vecCount;
    for (int nTop = 0; nTop < nHeight; nTop += g_nShadowBlock) {
        vecSum.assign(size_t(nAcross), 0);
        vecCount.assign(size_t(nAcross), 0);
        for (int y = nTop; y < std::min(nTop + g_nShadowBlock, nHeight); ++y) {
            const float* p = imgFrame.Data() + qint64(y) * nWidth;
            for (int x = 0; x < nWidth; ++x) {
                const bool bGood = isUsablePixel(p[x]);
                vecSum[size_t(x / g_nShadowBlock)] += bGood ? p[x] : 0;
                vecCount[size_t(x / g_nShadowBlock)] += bGood ? 1 : 0;
            }
        }
        for (size_t i = 0; i < vecSum.size(); ++i) {
            vecMean.push_back(vecCount[i] > 0 ? vecSum[i] / float(vecCount[i]) : 0);
        }
    }
    return vecMean;
}

QList<QPolygonF> findShadows(const std::vector<std::vector<float>>& vecFrame, int nWidth, int nHeight)
{
    if (vecFrame.empty() || nWidth < 8 * g_nShadowBlock || nHeight < 8 * g_nShadowBlock) {
        return {};
    }
    const Grid grid = gridOf(vecFrame, nWidth, nHeight);
    std::vector<float> vecSorted = grid.vecLevel;
    std::sort(vecSorted.begin(), vecSorted.end());
    const size_t nMost = size_t(g_dfGreatestShare * double(vecSorted.size()));
    QList<QPolygonF> listShadow;
    std::vector<char> vecTaken(grid.vecLevel.size());
    size_t nTaken = 0;
    // From the darkest level upwards, so that a shadow does not take the slope of its edge along.
    std::vector<float> vecLevel;
    for (float f = vecSorted[nMost]; f > 0 && f > vecSorted[0] && vecLevel.size() < 60;
         f *= g_fThresholdStep) {
        vecLevel.push_back(f);
    }
    std::reverse(vecLevel.begin(), vecLevel.end());
    for (const float fLevel : vecLevel) {
        std::vector<char> vecDark(grid.vecLevel.size());
        size_t nDark = 0;
        for (size_t i = 0; i < vecDark.size(); ++i) {
            vecDark[i] = grid.vecLevel[i] < fLevel && !vecTaken[i] ? 1 : 0;
            nDark += size_t(vecDark[i]);
        }
        if (nDark < size_t(g_nLeastBlocks)) {
            continue;
        }
        for (size_t i = 0; i < vecDark.size(); ++i) {
            if (!vecDark[i]) {
                continue;
            }
            const std::vector<size_t> vecRegion = takeRegion(grid, vecDark, i);
            if (vecRegion.size() < size_t(g_nLeastBlocks) || nTaken + vecRegion.size() > nMost ||
                !hasSharpEdge(grid, vecRegion)) {
                continue;
            }
            nTaken += vecRegion.size();
            for (size_t n : vecRegion) {
                vecTaken[n] = 1;
            }
            listShadow.append(blockOutline(vecRegion, grid.nWidth, grid.nHeight, g_nShadowBlock));
        }
    }
    return listShadow;
}

}  // namespace tessera
