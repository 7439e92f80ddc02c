#include "exchange/untrustedareas.h"

#include <algorithm>

namespace tessera {

namespace {

struct Run {
    int nFrom = 0, nTo = 0;  ///< columns; the end is excluded
    bool operator==(const Run& other) const { return nFrom == other.nFrom && nTo == other.nTo; }
};

std::vector<Run> runsOfRow(const char* pRow, int nWidth)
{
    std::vector<Run> list;
    for (int x = 0; x < nWidth; ++x) {
        if (pRow[x] && (x == 0 || !pRow[x - 1])) {
            list.push_back({x, x});
        }
        if (pRow[x]) {
            list.back().nTo = x + 1;
        }
    }
    return list;
}

/// The rectangles of a mask, in the order of their first rows.
std::vector<QRect> rectangles(const std::vector<char>& listMask, const QSize& size)
{
    std::vector<QRect> list;
    std::vector<size_t> listOpen;  // rectangles that extend to the row before
    for (int y = 0; y < size.height(); ++y) {
        std::vector<size_t> listNext;
        for (const Run& run : runsOfRow(listMask.data() + size_t(y) * size_t(size.width()), size.width())) {
            const auto open = std::find_if(listOpen.begin(), listOpen.end(), [&](size_t n) {
                return run == Run{list[n].left(), list[n].right() + 1};
            });
            if (open != listOpen.end()) {
                list[*open].setBottom(y);
                listNext.push_back(*open);
            } else {
                listNext.push_back(list.size());
                list.emplace_back(run.nFrom, y, run.nTo - run.nFrom, 1);
            }
        }
        listOpen = std::move(listNext);
    }
    return list;
}

/// Blocks of nBlock × nBlock pixels, masked where one of these is.
std::vector<char> blocksOf(const std::vector<char>& listMask, const QSize& size, int nBlock,
                           QSize& sizeBlocks)
{
    sizeBlocks = {(size.width() + nBlock - 1) / nBlock, (size.height() + nBlock - 1) / nBlock};
    std::vector<char> list(size_t(sizeBlocks.width()) * size_t(sizeBlocks.height()), 0);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            if (listMask[size_t(y) * size_t(size.width()) + size_t(x)]) {
                list[size_t(y / nBlock) * size_t(sizeBlocks.width()) + size_t(x / nBlock)] = 1;
            }
        }
    }
    return list;
}

}  // namespace

std::vector<QRect> rectanglesOfMask(const std::vector<char>& listMask, const QSize& size, size_t nMost)
{
    const QRect rcFrame({0, 0}, size);
    if (listMask.size() != size_t(size.width()) * size_t(size.height())) {
        return {};
    }
    std::vector<QRect> list = rectangles(listMask, size);
    for (int nBlock = 2; list.size() > nMost && nBlock < std::max(size.width(), size.height()); nBlock *= 2) {
        QSize sizeBlocks;
        const std::vector<char> listBlock = blocksOf(listMask, size, nBlock, sizeBlocks);
        list = rectangles(listBlock, sizeBlocks);
        for (QRect& rc : list) {
            rc = QRect(rc.left() * nBlock, rc.top() * nBlock, rc.width() * nBlock, rc.height() * nBlock) &
                 rcFrame;
        }
    }
    return list;
}

std::vector<char> movedMask(const std::vector<char>& listMask, const QSize& size,
                            const std::vector<FramePlace>& listMoved)
{
    if (listMoved.empty() || listMask.size() != size_t(size.width()) * size_t(size.height())) {
        return listMask;
    }
    int nLeft = 0, nRight = 0, nTop = 0, nBottom = 0;  // the greatest moves to each side
    for (const FramePlace& moved : listMoved) {
        nLeft = std::max(nLeft, int(-moved.dfX));
        nRight = std::max(nRight, int(moved.dfX));
        nTop = std::max(nTop, int(-moved.dfY));
        nBottom = std::max(nBottom, int(moved.dfY));
    }
    const int nWidth = size.width(), nHeight = size.height();
    std::vector<char> list(listMask.size(), 0);
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            char& chTarget = list[size_t(y) * size_t(nWidth) + size_t(x)];
            if (x < nRight || x >= nWidth - nLeft || y < nBottom || y >= nHeight - nTop) {
                chTarget = 1;
            }
            if (!listMask[size_t(y) * size_t(nWidth) + size_t(x)]) {
                continue;
            }
            for (int yTo = std::max(0, y - nTop); yTo <= std::min(nHeight - 1, y + nBottom); ++yTo) {
                const size_t nRow = size_t(yTo) * size_t(nWidth);
                const auto row = list.begin() + std::ptrdiff_t(nRow);
                std::fill(row + std::max(0, x - nLeft), row + std::min(nWidth - 1, x + nRight) + 1, char(1));
            }
        }
    }
    return list;
}

}  // namespace tessera
