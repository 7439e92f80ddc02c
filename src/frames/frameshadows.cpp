#include "frames/frameshadows.h"

#include "frames/badpixels.h"
#include "frames/blockoutline.h"
#include "frames/gapfilling.h"
#include "imaging/imageview.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace tessera {

namespace {

const float g_fContrast = 3;        // ratio of the brightness beyond the edge of a shadow to that within
const double g_dfNextToAll = 0.85;  // share of the edge; reflections and light of the beam may cover the rest
const int g_nLeastBlocks = 30;      // least number of blocks of a shadow
const double g_dfGreatestShare = 0.45;  // share of the frame; the corners around a round aperture make 0.21
const float g_fThresholdStep = 0.8f;    // ratio of a threshold to the one before it

// The blocks of a frame with their brightness.
struct Grid {
    int nWidth, nHeight;
    std::vector<float> vecLevel;

    bool has(int x, int y) const { return x >= 0 && y >= 0 && x < nWidth && y < nHeight; }
    size_t at(int x, int y) const { return size_t(y) * size_t(nWidth) + size_t(x); }
};

void orderRows(float* pfLess, float* pfMore, size_t n)
{
    for (size_t i = 0; i < n; ++i) {
        const float fLess = std::min(pfLess[i], pfMore[i]);
        pfMore[i] = std::max(pfLess[i], pfMore[i]);
        pfLess[i] = fLess;
    }
}

Grid gridOf(const std::vector<std::vector<float>>& vecFrame, int nWidth, int nHeight)
{
    Grid grid = {
        (nWidth + g_nShadowBlock - 1) / g_nShadowBlock, (nHeight + g_nShadowBlock - 1) / g_nShadowBlock, {}};
    grid.vecLevel.resize(size_t(grid.nWidth) * size_t(grid.nHeight));
    // Many blocks are sorted side by side by exchanges of whole rows of numbers without branches: first the
    // smallest number of each block, then the second smallest, up to the middle one.
    const size_t nFrames = vecFrame.size(), nMany = 256;
    std::vector<float> vecRow(nFrames * nMany);
    for (size_t nFrom = 0; nFrom < grid.vecLevel.size(); nFrom += nMany) {
        const size_t n = std::min(nMany, grid.vecLevel.size() - nFrom);
        for (size_t f = 0; f < nFrames; ++f) {
            std::copy_n(vecFrame[f].data() + nFrom, n, vecRow.data() + f * nMany);
        }
        for (size_t f = 0; f <= nFrames / 2; ++f) {
            for (size_t g = f + 1; g < nFrames; ++g) {
                orderRows(vecRow.data() + f * nMany, vecRow.data() + g * nMany, n);
            }
        }
        std::copy_n(vecRow.data() + nFrames / 2 * nMany, n, grid.vecLevel.data() + nFrom);
    }
    return grid;
}

// The connected blocks below a threshold that a first one belongs to, by their sides. They are removed from
// vecDark.
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

// Whether the blocks just beyond the edge are bright and those just within are dark, along nearly the whole
// edge.
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
    vecMean.reserve(size_t(nAcross) * size_t((nHeight + g_nShadowBlock - 1) / g_nShadowBlock));
    // Sums of the columns within a row of blocks, filled up with zeros to whole blocks.
    std::vector<float> vecSum;
    std::vector<int> vecCount;
    int nEmpty = 0;
    for (int nTop = 0; nTop < nHeight; nTop += g_nShadowBlock) {
        vecSum.assign(size_t(nAcross) * g_nShadowBlock, 0);
        vecCount.assign(size_t(nAcross) * g_nShadowBlock, 0);
        float* const pfSum = vecSum.data();
        int* const pnCount = vecCount.data();
        for (int y = nTop; y < std::min(nTop + g_nShadowBlock, nHeight); ++y) {
            const float* p = viewOf(imgFrame).row(y);
            for (int x = 0; x < nWidth; ++x) {
                pfSum[x] += isUsablePixel(p[x]) ? p[x] : 0;
                pnCount[x] += isUsablePixel(p[x]) ? 1 : 0;
            }
        }
        for (size_t i = 0; i < vecSum.size(); i += g_nShadowBlock) {
            float fSum = 0;
            int nCount = 0;
            for (size_t k = i; k < i + g_nShadowBlock; ++k) {
                fSum += vecSum[k];
                nCount += vecCount[k];
            }
            vecMean.push_back(nCount > 0 ? fSum / float(nCount) : std::numeric_limits<float>::quiet_NaN());
            nEmpty += nCount > 0 ? 0 : 1;
        }
    }
    if (nEmpty > 0) {
        CImgObj<float> img;
        img.Create(nAcross, int(vecMean.size()) / nAcross);
        std::copy(vecMean.begin(), vecMean.end(), img.Data());
        fillBadPixels(img);
        std::copy_n(img.Data(), vecMean.size(), vecMean.begin());
    }
    return vecMean;
}

QList<QPolygonF> findShadows(const std::vector<std::vector<float>>& vecFrame, int nWidth, int nHeight)
{
    if (vecFrame.empty() || nWidth < 8 * g_nShadowBlock || nHeight < 8 * g_nShadowBlock) {
        return {};
    }
    const Grid grid = gridOf(vecFrame, nWidth, nHeight);
    const size_t nMost = size_t(g_dfGreatestShare * double(grid.vecLevel.size()));
    std::vector<float> vecParted = grid.vecLevel;
    std::nth_element(vecParted.begin(), vecParted.begin() + std::ptrdiff_t(nMost), vecParted.end());
    const float fBrightest = vecParted[nMost];
    const float fDarkest = *std::min_element(vecParted.begin(), vecParted.end());
    QList<QPolygonF> listShadow;
    std::vector<char> vecTaken(grid.vecLevel.size());
    size_t nTaken = 0;
    // The thresholds are tried from the darkest upwards, so that a shadow is found before the slope at its
    // edge joins it.
    std::vector<float> vecLevel;
    for (float f = fBrightest; f > 0 && f > fDarkest && vecLevel.size() < 60; f *= g_fThresholdStep) {
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
