#include "frames/blockoutline.h"

#include <QPoint>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace tessera {

namespace {

using Loop = std::vector<QPoint>;

// The region and the blocks that touch it, also those at the corners: flags on a grid with a margin of one
// block.
struct Flags {
    int nWidth, nHeight;
    std::vector<char> vecIn;

    bool in(int x, int y) const
    {
        return x >= 0 && y >= 0 && x < nWidth && y < nHeight && vecIn[size_t(y) * size_t(nWidth) + size_t(x)];
    }
};

Flags widened(const std::vector<size_t>& vecBlock, int nWidth, int nHeight)
{
    Flags flags = {nWidth + 2, nHeight + 2, {}};
    flags.vecIn.resize(size_t(flags.nWidth) * size_t(flags.nHeight));
    for (size_t n : vecBlock) {
        const int nX = int(n % size_t(nWidth)) + 1, nY = int(n / size_t(nWidth)) + 1;
        for (int y = nY - 1; y <= nY + 1; ++y) {
            for (int x = nX - 1; x <= nX + 1; ++x) {
                flags.vecIn[size_t(y) * size_t(flags.nWidth) + size_t(x)] = 1;
            }
        }
    }
    return flags;
}

// Closed paths along the sides of the blocks with the region on the right, which is clockwise around the
// region on the screen and anticlockwise around holes.
std::vector<Loop> loopsAround(const Flags& flags)
{
    const auto order = [](const QPoint& a, const QPoint& b) {
        return a.y() != b.y() ? a.y() < b.y() : a.x() < b.x();
    };
    std::multimap<QPoint, QPoint, decltype(order)> mapSide(order);
    for (int y = 0; y < flags.nHeight; ++y) {
        for (int x = 0; x < flags.nWidth; ++x) {
            if (!flags.in(x, y)) {
                continue;
            }
            const QPoint pt(x, y), ptRight(x + 1, y), ptLow(x, y + 1), ptFar(x + 1, y + 1);
            if (!flags.in(x, y - 1)) {
                mapSide.emplace(pt, ptRight);
            }
            if (!flags.in(x + 1, y)) {
                mapSide.emplace(ptRight, ptFar);
            }
            if (!flags.in(x, y + 1)) {
                mapSide.emplace(ptFar, ptLow);
            }
            if (!flags.in(x - 1, y)) {
                mapSide.emplace(ptLow, pt);
            }
        }
    }
    std::vector<Loop> vecLoop;
    while (!mapSide.empty()) {
        Loop loop = {mapSide.begin()->first};
        for (auto it = mapSide.begin(); it != mapSide.end(); it = mapSide.find(loop.back())) {
            loop.push_back(it->second);
            mapSide.erase(it);
        }
        vecLoop.push_back(std::move(loop));
    }
    return vecLoop;  // the first path begins at the topmost corner, so it is the outer one
}

double distanceFromLine(const QPoint& pt, const QPoint& ptFrom, const QPoint& ptTo)
{
    const QPoint ptAlong = ptTo - ptFrom, ptAway = pt - ptFrom;
    const double dfLength = std::hypot(ptAlong.x(), ptAlong.y());
    return dfLength > 0
               ? std::fabs(double(ptAlong.x()) * ptAway.y() - double(ptAlong.y()) * ptAway.x()) / dfLength
               : std::hypot(ptAway.x(), ptAway.y());
}

// Marks the corners that are needed. Source: Douglas & Peucker (1973), Cartographica 10, 112.
void markCorners(const Loop& loop, std::vector<char>& vecKept)
{
    const double dfTolerance = 0.75;  // blocks, less than the widening of the region
    std::vector<std::pair<size_t, size_t>> vecPiece = {{0, loop.size() - 1}};
    while (!vecPiece.empty()) {
        const auto [nFrom, nTo] = vecPiece.back();
        vecPiece.pop_back();
        double dfFurthest = dfTolerance;
        size_t nCorner = 0;
        for (size_t i = nFrom + 1; i < nTo; ++i) {
            const double df = distanceFromLine(loop[i], loop[nFrom], loop[nTo]);
            if (df > dfFurthest) {
                dfFurthest = df;
                nCorner = i;
            }
        }
        if (nCorner > 0) {
            vecKept[nCorner] = 1;
            vecPiece.emplace_back(nFrom, nCorner);
            vecPiece.emplace_back(nCorner, nTo);
        }
    }
}

}  // namespace

QPolygonF blockOutline(const std::vector<size_t>& vecBlock, int nWidth, int nHeight, int nSide)
{
    QPolygonF polygon;
    const auto inPixels = [&](const QPoint& pt) {
        return QPointF((pt.x() - 1) * nSide - 0.5, (pt.y() - 1) * nSide - 0.5);
    };
    for (const Loop& loop : loopsAround(widened(vecBlock, nWidth, nHeight))) {
        std::vector<char> vecKept(loop.size());
        vecKept.front() = vecKept.back() = 1;
        markCorners(loop, vecKept);
        for (size_t i = 0; i < loop.size(); ++i) {
            if (vecKept[i]) {
                polygon.append(inPixels(loop[i]));
            }
        }
        polygon.append(polygon.first());  // the seams to the holes begin and end here
    }
    return polygon;
}

}  // namespace tessera
