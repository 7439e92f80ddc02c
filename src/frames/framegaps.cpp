#include "frames/framegaps.h"

#include "frames/badpixels.h"
#include "frames/blockoutline.h"
#include "imaging/imageview.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <numeric>
#include <utility>

namespace tessera {

namespace {

const int g_nLeastSide = 16;          // pixels, longer side of an area
const size_t g_nMostRectangles = 64;  // for one area; a detector of 8 × 4 modules has some 30

/// For each run the number of its area: the least number of a run that is connected with it by sides or
/// corners.
std::vector<size_t> areasOf(const std::vector<PixelRun>& vecRun)
{
    std::vector<size_t> vecParent(vecRun.size());
    std::iota(vecParent.begin(), vecParent.end(), size_t(0));
    const auto root = [&](size_t n) {
        while (vecParent[n] != n) {
            n = vecParent[n] = vecParent[vecParent[n]];
        }
        return n;
    };
    size_t nAbove = 0;  // first run of the row above that can touch a run of this row
    for (size_t n = 0; n < vecRun.size(); ++n) {
        while (vecRun[nAbove].nY < vecRun[n].nY - 1 ||
               (vecRun[nAbove].nY == vecRun[n].nY - 1 && vecRun[nAbove].nLast < vecRun[n].nFirst - 1)) {
            ++nAbove;
        }
        for (size_t m = nAbove; vecRun[m].nY < vecRun[n].nY && vecRun[m].nFirst <= vecRun[n].nLast + 1; ++m) {
            const size_t nOne = root(m), nOther = root(n);
            vecParent[std::max(nOne, nOther)] = std::min(nOne, nOther);
        }
    }
    for (size_t n = 0; n < vecParent.size(); ++n) {
        vecParent[n] = root(n);
    }
    return vecParent;
}

QPolygonF rectangle(const PixelRun& run, int nTop, int nBottom)
{
    const double dfLeft = run.nFirst - 0.5, dfRight = run.nLast + 0.5;
    return QPolygonF(
        {{dfLeft, nTop - 0.5}, {dfRight, nTop - 0.5}, {dfRight, nBottom + 0.5}, {dfLeft, nBottom + 0.5}});
}

/// Combines runs with the same columns in successive rows to rectangles.
QList<QPolygonF> rectanglesOf(const std::vector<PixelRun>& vecRun)
{
    std::map<std::pair<int, int>, std::pair<int, int>>
        mapOpen;  // first and last column, with the first and the last row
    QList<QPolygonF> listRectangle;
    const auto close = [&](const std::pair<int, int>& columns, const std::pair<int, int>& rows) {
        listRectangle.append(rectangle({0, columns.first, columns.second}, rows.first, rows.second));
    };
    for (const PixelRun& run : vecRun) {
        const auto [it, bNew] = mapOpen.try_emplace({run.nFirst, run.nLast}, run.nY, run.nY);
        if (!bNew && it->second.second < run.nY - 1) {
            close(it->first, it->second);
            it->second.first = run.nY;
        }
        it->second.second = run.nY;
    }
    for (const auto& [columns, rows] : mapOpen) {
        close(columns, rows);
    }
    return listRectangle;
}

QPolygonF outlineOf(const std::vector<PixelRun>& vecRun, int nWidth, int nHeight)
{
    std::vector<size_t> vecPixel;
    for (const PixelRun& run : vecRun) {
        for (int x = run.nFirst; x <= run.nLast; ++x) {
            vecPixel.push_back(size_t(run.nY) * size_t(nWidth) + size_t(x));
        }
    }
    return blockOutline(vecPixel, nWidth, nHeight, 1);
}

}  // namespace

std::vector<PixelRun> unusableRuns(const CImgObj<float>& img)
{
    std::vector<PixelRun> vecRun;
    const int nWidth = img.Width();
    for (int y = 0; y < img.Height(); ++y) {
        const float* p = viewOf(img).row(y);
        // Most rows have no such pixel, so each row is first checked by counting without branches.
        int nBad = 0;
        for (int x = 0; x < nWidth; ++x) {
            nBad += isUsablePixel(p[x]) ? 0 : 1;
        }
        for (int x = 0; nBad > 0 && x < nWidth; ++x) {
            if (isUsablePixel(p[x])) {
                continue;
            }
            const int nFirst = x;
            while (x + 1 < nWidth && !isUsablePixel(p[x + 1])) {
                ++x;
            }
            vecRun.push_back({y, nFirst, x});
        }
    }
    return vecRun;
}

std::vector<PixelRun> commonRuns(const std::vector<PixelRun>& vecOne, const std::vector<PixelRun>& vecOther)
{
    std::vector<PixelRun> vecCommon;
    for (size_t i = 0, j = 0; i < vecOne.size() && j < vecOther.size();) {
        const PixelRun &one = vecOne[i], &other = vecOther[j];
        const int nFirst = std::max(one.nFirst, other.nFirst), nLast = std::min(one.nLast, other.nLast);
        if (one.nY == other.nY && nFirst <= nLast) {
            vecCommon.push_back({one.nY, nFirst, nLast});
        }
        const bool bOneEnds = std::pair(one.nY, one.nLast) < std::pair(other.nY, other.nLast);
        i += bOneEnds ? 1 : 0;
        j += bOneEnds ? 0 : 1;
    }
    return vecCommon;
}

QList<QPolygonF> gapAreas(const std::vector<PixelRun>& vecRun, int nWidth, int nHeight)
{
    std::map<size_t, std::vector<PixelRun>> mapArea;
    const std::vector<size_t> vecArea = areasOf(vecRun);
    for (size_t n = 0; n < vecRun.size(); ++n) {
        mapArea[vecArea[n]].push_back(vecRun[n]);
    }
    QList<QPolygonF> listArea;
    for (const auto& [nArea, vecOwn] : mapArea) {
        int nLeft = nWidth, nRight = -1;
        for (const PixelRun& run : vecOwn) {
            nLeft = std::min(nLeft, run.nFirst);
            nRight = std::max(nRight, run.nLast);
        }
        if (std::max(nRight - nLeft, vecOwn.back().nY - vecOwn.front().nY) + 1 < g_nLeastSide) {
            continue;
        }
        const QList<QPolygonF> listRectangle = rectanglesOf(vecOwn);
        if (size_t(listRectangle.size()) <= g_nMostRectangles) {
            listArea += listRectangle;
        } else {
            listArea.append(outlineOf(vecOwn, nWidth, nHeight));
        }
    }
    return listArea;
}

bool isGapPixel(const CImgObj<float>& img, int nX, int nY)
{
    const auto isUnusable = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < img.Width() && y < img.Height() &&
               !isUsablePixel(viewOf(img).at(x, y));
    };
    int nUnusable = 0;
    for (int y = nY - 1; y <= nY + 1; ++y) {
        for (int x = nX - 1; x <= nX + 1; ++x) {
            nUnusable += isUnusable(x, y) ? 1 : 0;
        }
    }
    return isUnusable(nX, nY) && nUnusable > 1;
}

}  // namespace tessera
