#include "imaging/acmlfft.h"

#include "imaging/fftwplanner.h"
#include "imaging/imageview.h"

#include <fftw3.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <type_traits>
#include <vector>

namespace tessera {

namespace {

// Lines that go through the scratch buffer together: eight COMPLEX are one cache line, so gathering
// eight columns reads every line of memory once.
constexpr int g_nBlock = 8;

fftwf_complex* asFftw(COMPLEX* p)
{
    return reinterpret_cast<fftwf_complex*>(p);
}

struct PlanDestroy {
    void operator()(fftwf_plan plan) const
    {
        const std::lock_guard<std::mutex> lock(fftwPlannerMutex());
        fftwf_destroy_plan(plan);
    }
};
using PlanHandle = std::unique_ptr<std::remove_pointer_t<fftwf_plan>, PlanDestroy>;

// Transforms of g_nBlock lines of one length, forward and backward, between two aligned buffers of the
// holder. Lines stand at multiples of a padded stride: a stride of a high power of two would crowd
// the lines of a block into the same cache sets.
struct LinePlan {
    int nLength = 0;
    int nStride = 0;
    PlanHandle planForward;
    PlanHandle planBackward;
    PlanHandle planReal;  // forward, from real lines to the halves of their spectra

    bool make(COMPLEX* pIn, COMPLEX* pOut)
    {
        const std::lock_guard<std::mutex> lock(fftwPlannerMutex());
        requireRoomToPlan();
        const auto plan = [&](int nSign) {
            return fftwf_plan_many_dft(1, &nLength, g_nBlock, asFftw(pIn), nullptr, 1, nStride, asFftw(pOut),
                                       nullptr, 1, nStride, nSign, FFTW_ESTIMATE);
        };
        planForward.reset(plan(FFTW_FORWARD));
        planBackward.reset(plan(FFTW_BACKWARD));
        return planForward && planBackward;
    }

    bool makeReal(COMPLEX* pIn, COMPLEX* pOut)
    {
        const std::lock_guard<std::mutex> lock(fftwPlannerMutex());
        if (!planReal) {
            requireRoomToPlan();
            planReal.reset(fftwf_plan_many_dft_r2c(1, &nLength, g_nBlock, reinterpret_cast<float*>(pIn),
                                                   nullptr, 1, nStride, asFftw(pOut), nullptr, 1, nStride,
                                                   FFTW_ESTIMATE));
        }
        return planReal != nullptr;
    }
};

int paddedStride(int nLength)
{
    return (nLength + 7) / 8 * 8 + 8;
}

// How spectra lie in memory. Eight columns are a block, with a gap behind it that belongs to nobody: at
// heights of a high power of two all blocks of a row would else stand in the same few sets of the caches. The
// columns 0 … nWidth/2 take N blocks.
//
//   spectrum and filter  | 0 … 7 | 8 … 15 | …                                N blocks, column after column
//   work space           | 0 … 7 | −7 … 0 | 8 … 15 | −15 … −8 | …            2 N blocks, row after row
//
// Column after column: the elements y = 0 … nHeight − 1 of the first, then those of the second. Row after
// row: the elements of the eight columns at y = 0, then those at y = 1.
template <class T>
class BlockedColumns {
public:
    BlockedColumns(T* p, int nHeight) : m_p(p), m_nHeight(nHeight) {}

    static std::size_t blockLength(int nHeight)
    {
        return std::size_t(g_nBlock) * (std::size_t(nHeight) + std::size_t(g_nBlock));
    }
    T* block(int n) const { return m_p + std::size_t(n) * blockLength(m_nHeight); }
    // A block as an image, either with one row for each column of the spectrum, or with one row for each of
    // its rows.
    ImageView<T> byColumn(int n) const { return {block(n), m_nHeight, g_nBlock}; }
    ImageView<T> byRow(int n) const { return {block(n), g_nBlock, m_nHeight}; }
    // Where the tile of the rows y … y + 7 and the columns 8 n … 8 n + 7 begins, for the image that stays in
    // the work space: n counts all 2 N blocks of it.
    T* tile(int n, int y) const { return byRow(n).row(y / g_nBlock * g_nBlock); }

private:
    T* m_p;
    int m_nHeight;
};

int blockCount(int nWidth)
{
    return nWidth / 2 / g_nBlock + 1;
}

// The lines of a scratch buffer.
using Lines = ImageView<COMPLEX>;

// To the lines of a scratch buffer from the rows of a block, each line a column.
void takeRows(const ImageView<COMPLEX>& block, const Lines& lines)
{
    for (int y = 0; y < block.nHeight; ++y) {
        const COMPLEX* pRow = block.row(y);
        for (int i = 0; i < g_nBlock; ++i) {
            lines.row(i)[y] = pRow[i];
        }
    }
}

// Copies the lines back into the rows of the block.
void putRows(const Lines& lines, const ImageView<COMPLEX>& block)
{
    for (int y = 0; y < block.nHeight; ++y) {
        COMPLEX* pRow = block.row(y);
        for (int i = 0; i < g_nBlock; ++i) {
            pRow[i] = lines.row(i)[y];
        }
    }
}

// The columns of a block times those of the filter.
void filterColumns(const ImageView<const COMPLEX>& spectrum, const ImageView<const COMPLEX>& filter,
                   const Lines& lines)
{
    const int nHeight = spectrum.nWidth;
    for (int i = 0; i < g_nBlock; ++i) {
        COMPLEX* pColumn = lines.row(i);
        const COMPLEX* pf = spectrum.row(i);
        const COMPLEX* ps = filter.row(i);
        for (int y = 0; y < nHeight; ++y) {
            pColumn[y] = {pf[y].re * ps[y].re - pf[y].im * ps[y].im,
                          pf[y].re * ps[y].im + pf[y].im * ps[y].re};
        }
    }
}

// The columns that mirror those of a block, in ascending order, times the filter, which is even: F(−x, −y) is
// the conjugate of F(x, y).
void filterMirroredColumns(const ImageView<const COMPLEX>& spectrum, const ImageView<const COMPLEX>& filter,
                           const Lines& lines)
{
    const int nHeight = spectrum.nWidth;
    for (int i = 0; i < g_nBlock; ++i) {
        COMPLEX* pColumn = lines.row(g_nBlock - 1 - i);
        const COMPLEX* pf = spectrum.row(i);
        const COMPLEX* ps = filter.row(i);
        pColumn[0] = {pf[0].re * ps[0].re + pf[0].im * ps[0].im, pf[0].re * ps[0].im - pf[0].im * ps[0].re};
        for (int y = 1; y < nHeight; ++y) {
            const COMPLEX f = pf[nHeight - y];
            const COMPLEX s = ps[nHeight - y];
            pColumn[y] = {f.re * s.re + f.im * s.im, f.re * s.im - f.im * s.re};
        }
    }
}

struct FftwFree {
    void operator()(COMPLEX* p) const { fftwf_free(p); }
};
using Scratch = std::unique_ptr<COMPLEX, FftwFree>;

// Nearly all copies are of whole blocks: for those the compiler knows the size.
void copyUpToBlock(const COMPLEX* pSource, int nCount, COMPLEX* pTarget)
{
    if (nCount == g_nBlock) {
        std::memcpy(pTarget, pSource, g_nBlock * sizeof(COMPLEX));
    } else if (nCount > 0) {
        std::copy_n(pSource, nCount, pTarget);
    }
}

// The rows y … y + nLines − 1 of the work space, whole: the columns of each block in their places from the
// left, those that mirror them from the right.
void gatherRows(const BlockedColumns<const COMPLEX>& work, int nWidth, int y, int nLines, const Lines& lines)
{
    const int nColumns = nWidth / 2 + 1;
    const int nMirrored = (nWidth + 1) / 2;  // 0 and, at even widths, nWidth/2 are their own mirrors
    for (int n = 0; n < blockCount(nWidth); ++n) {
        const int x = n * g_nBlock;
        const COMPLEX* pRow = work.byRow(2 * n).row(y);
        const COMPLEX* pMirror = work.byRow(2 * n + 1).row(y);
        const int nUsed = std::min(g_nBlock, nColumns - x);
        const int nFirst = x == 0 ? 1 : 0;
        const int nLast = std::min(g_nBlock, nMirrored - x);
        for (int i = 0; i < nLines; ++i, pRow += g_nBlock, pMirror += g_nBlock) {
            COMPLEX* pLine = lines.row(i);
            copyUpToBlock(pRow, nUsed, pLine + x);
            copyUpToBlock(pMirror + g_nBlock - nLast, nLast - nFirst, pLine + nWidth - x - nLast + 1);
        }
    }
}

Scratch allocateScratch(std::size_t nCount)
{
    Scratch pScratch(reinterpret_cast<COMPLEX*>(fftwf_alloc_complex(nCount)));
    if (pScratch) {
        std::memset(static_cast<void*>(pScratch.get()), 0, nCount * sizeof(COMPLEX));
    }
    return pScratch;
}

}  // namespace

struct CAcmlFft::Plan {
    Scratch pIn;
    Scratch pOut;
    LinePlan row;
    LinePlan column;

    Lines in(const LinePlan& plan) const { return {pIn.get(), plan.nStride, g_nBlock}; }
    Lines out(const LinePlan& plan) const { return {pOut.get(), plan.nStride, g_nBlock}; }
    // The lines that a transform of real numbers takes: as long, of floats.
    ImageView<float> realIn(const LinePlan& plan) const
    {
        return {reinterpret_cast<float*>(pIn.get()), plan.nStride, g_nBlock};
    }
};

CAcmlFft::CAcmlFft() = default;
CAcmlFft::~CAcmlFft() = default;

int CAcmlFft::Init(int nWidth, int nHeight)
{
    if (m_pComm && nWidth == m_nWidth && nHeight == m_nHeight) {
        return 2;
    }
    Free();
    if (nWidth < 1 || nHeight < 1 || std::int64_t(nWidth) * nHeight > INT32_MAX) {
        return 0;
    }
    auto pPlan = std::make_unique<Plan>();
    pPlan->row.nLength = nWidth;
    pPlan->row.nStride = paddedStride(nWidth);
    pPlan->column.nLength = nHeight;
    pPlan->column.nStride = paddedStride(nHeight);
    const std::size_t nCount = std::size_t(g_nBlock) *
                               std::size_t(std::max(pPlan->row.nStride, pPlan->column.nStride));
    pPlan->pIn = allocateScratch(nCount);
    pPlan->pOut = allocateScratch(nCount);
    if (!pPlan->pIn || !pPlan->pOut) {
        return 0;
    }
    if (!pPlan->row.make(pPlan->pIn.get(), pPlan->pOut.get()) ||
        !pPlan->column.make(pPlan->pIn.get(), pPlan->pOut.get())) {
        return 0;
    }
    m_pComm = std::move(pPlan);
    m_nWidth = nWidth;
    m_nHeight = nHeight;
    return 1;
}

int CAcmlFft::Transform(COMPLEX* pData, int nWidth, int nHeight, int nDirection)
{
    if (!pData || !Init(nWidth, nHeight)) {
        return 0;
    }
    const bool bForward = nDirection == -1;
    const ImageView<COMPLEX> image{pData, nWidth, nHeight};

    // The last block may be incomplete; its unused lines are transformed as well and then discarded.
    const LinePlan& row = m_pComm->row;
    const Lines rowsIn = m_pComm->in(row), rowsOut = m_pComm->out(row);
    for (int y = 0; y < nHeight; y += g_nBlock) {
        const int nLines = std::min(g_nBlock, nHeight - y);
        for (int i = 0; i < nLines; ++i) {
            std::copy_n(image.row(y + i), nWidth, rowsIn.row(i));
        }
        fftwf_execute((bForward ? row.planForward : row.planBackward).get());
        for (int i = 0; i < nLines; ++i) {
            std::copy_n(rowsOut.row(i), nWidth, image.row(y + i));
        }
    }

    const float fScale = bForward ? 1.f : float(1.0 / (double(nWidth) * nHeight));
    const LinePlan& column = m_pComm->column;
    const Lines columnsIn = m_pComm->in(column), columnsOut = m_pComm->out(column);
    for (int x = 0; x < nWidth; x += g_nBlock) {
        const int nLines = std::min(g_nBlock, nWidth - x);
        for (int y = 0; y < nHeight; ++y) {
            const COMPLEX* pRow = image.row(y) + x;
            for (int i = 0; i < nLines; ++i) {
                columnsIn.row(i)[y] = pRow[i];
            }
        }
        fftwf_execute((bForward ? column.planForward : column.planBackward).get());
        for (int y = 0; y < nHeight; ++y) {
            COMPLEX* pRow = image.row(y) + x;
            for (int i = 0; i < nLines; ++i) {
                const COMPLEX value = columnsOut.row(i)[y];
                pRow[i] = {value.re * fScale, value.im * fScale};
            }
        }
    }
    return 1;
}

std::size_t CAcmlFft::HalfCount(int nWidth, int nHeight)
{
    return std::size_t(blockCount(nWidth)) * BlockedColumns<COMPLEX>::blockLength(nHeight);
}

std::size_t CAcmlFft::HalfIndex(int nX, int nY, int nHeight)
{
    return std::size_t(nX / g_nBlock) * BlockedColumns<COMPLEX>::blockLength(nHeight) +
           std::size_t(nX % g_nBlock) * std::size_t(nHeight) + std::size_t(nY);
}

int CAcmlFft::TransformReal(const FnFillRow& fnRow, int nWidth, int nHeight, COMPLEX* pHalf)
{
    if (!pHalf || !Init(nWidth, nHeight)) {
        return 0;
    }
    if (!m_pComm->row.makeReal(m_pComm->pIn.get(), m_pComm->pOut.get())) {
        return 0;
    }

    // The rows of the image go row after row into the blocks, then each block is transformed and lies column
    // after column.
    const BlockedColumns<COMPLEX> half(pHalf, nHeight);
    const int nColumns = nWidth / 2 + 1;
    const ImageView<float> rowsIn = m_pComm->realIn(m_pComm->row);
    const Lines rowsOut = m_pComm->out(m_pComm->row);
    for (int y = 0; y < nHeight; y += g_nBlock) {
        const int nLines = std::min(g_nBlock, nHeight - y);
        for (int i = 0; i < nLines; ++i) {
            fnRow(y + i, rowsIn.row(i));
        }
        fftwf_execute(m_pComm->row.planReal.get());
        for (int n = 0; n < blockCount(nWidth); ++n) {
            const int nUsed = std::min(g_nBlock, nColumns - n * g_nBlock);
            COMPLEX* pTarget = half.byRow(n).row(y);
            for (int i = 0; i < nLines; ++i, pTarget += g_nBlock) {
                copyUpToBlock(rowsOut.row(i) + n * g_nBlock, nUsed, pTarget);
                std::fill(pTarget + nUsed, pTarget + g_nBlock, COMPLEX{0.f, 0.f});
            }
        }
    }
    const Lines columnsIn = m_pComm->in(m_pComm->column), columnsOut = m_pComm->out(m_pComm->column);
    for (int n = 0; n < blockCount(nWidth); ++n) {
        takeRows(half.byRow(n), columnsIn);
        fftwf_execute(m_pComm->column.planForward.get());
        for (int i = 0; i < g_nBlock; ++i) {
            std::copy_n(columnsOut.row(i), nHeight, half.byColumn(n).row(i));
        }
    }
    return 1;
}

void CAcmlFft::FilterColumns(const COMPLEX* pHalf, const COMPLEX* pFilter, COMPLEX* pWork)
{
    const BlockedColumns<const COMPLEX> half(pHalf, m_nHeight), filter(pFilter, m_nHeight);
    const BlockedColumns<COMPLEX> work(pWork, m_nHeight);
    const Lines in = m_pComm->in(m_pComm->column), out = m_pComm->out(m_pComm->column);
    const auto transformInto = [&](int n) {
        fftwf_execute(m_pComm->column.planBackward.get());
        putRows(out, work.byRow(n));
    };
    // The spectrum may be the upper half of the work space, with its block n being block N + n there. Blocks
    // 2 n and 2 n + 1 are below it or, for the last n, at its place, which has been read by then.
    for (int n = 0; n < blockCount(m_nWidth); ++n) {
        filterColumns(half.byColumn(n), filter.byColumn(n), in);
        if (n == 0) {
            in.at(0, 0) = {0.f, 0.f};
        }
        transformInto(2 * n);
        filterMirroredColumns(half.byColumn(n), filter.byColumn(n), in);
        transformInto(2 * n + 1);
    }
}

template <class FnRows>
void CAcmlFft::TransformFilteredRows(const COMPLEX* pWork, const FnRows& fnRows)
{
    const BlockedColumns<const COMPLEX> work(pWork, m_nHeight);
    const Lines in = m_pComm->in(m_pComm->row), out = m_pComm->out(m_pComm->row);
    for (int y = 0; y < m_nHeight; y += g_nBlock) {
        const int nLines = std::min(g_nBlock, m_nHeight - y);
        gatherRows(work, m_nWidth, y, nLines, in);
        fftwf_execute(m_pComm->row.planBackward.get());
        fnRows(y, nLines, out);
    }
}

int CAcmlFft::TransformFiltered(const COMPLEX* pHalf, const COMPLEX* pFilter, int nWidth, int nHeight,
                                COMPLEX* pWork, const FilteredImage& imgS, const FilteredImage& imgB)
{
    if (!pHalf || !pFilter || !pWork || !Init(nWidth, nHeight)) {
        return 0;
    }
    FilterColumns(pHalf, pFilter, pWork);
    const float fScale = float(1.0 / (double(nWidth) * nHeight));
    TransformFilteredRows(pWork, [&](int y, int nLines, const Lines& rows) {
        for (int i = 0; i < nLines; ++i) {
            const COMPLEX* pRow = rows.row(i);
            if (imgS.pData) {
                float* pTarget = ImageView<float>{imgS.pData, nWidth, nHeight}.row(y + i);
                for (int x = 0; x < nWidth; ++x) {
                    pTarget[x] = pRow[x].re * fScale + imgS.fConstant;
                }
            }
            if (imgB.pData) {
                float* pTarget = ImageView<float>{imgB.pData, nWidth, nHeight}.row(y + i);
                for (int x = 0; x < nWidth; ++x) {
                    pTarget[x] = pRow[x].im * fScale + imgB.fConstant;
                }
            }
        }
    });
    return 1;
}

int CAcmlFft::FilterInPlace(COMPLEX* pWork, const COMPLEX* pFilter, int nWidth, int nHeight, KeptImage keptS,
                            float fConstantB, const FnTakeRow& fnRowB)
{
    if (!pWork || !pFilter || !Init(nWidth, nHeight)) {
        return 0;
    }
    FilterColumns(pWork + HalfCount(nWidth, nHeight), pFilter, pWork);
    const float fScale = float(1.0 / (double(nWidth) * nHeight));
    const BlockedColumns<COMPLEX> work(pWork, nHeight);
    std::vector<float> vecRow(nWidth, 0.f);
    TransformFilteredRows(pWork, [&](int y, int nLines, const Lines& rows) {
        // The tiles of these rows have been read: half of each takes the other image.
        for (int x = 0; keptS.bWanted && x < nWidth; x += g_nBlock) {
            float* pTile = reinterpret_cast<float*>(work.tile(x / g_nBlock, y));
            const int nUsed = std::min(g_nBlock, nWidth - x);
            for (int i = 0; i < nLines; ++i, pTile += g_nBlock) {
                const COMPLEX* pRow = rows.row(i) + x;
                for (int j = 0; j < nUsed; ++j) {
                    pTile[j] = pRow[j].re * fScale + keptS.fConstant;
                }
            }
        }
        for (int i = 0; i < nLines; ++i) {
            const COMPLEX* pRow = rows.row(i);
            for (int x = 0; x < nWidth; ++x) {
                vecRow[x] = pRow[x].im * fScale + fConstantB;
            }
            fnRowB(y + i, vecRow.data());
        }
    });
    return 1;
}

float CAcmlFft::KeptPixel(const COMPLEX* pWork, int nX, int nY, int nHeight)
{
    const COMPLEX* pTile = BlockedColumns<const COMPLEX>(pWork, nHeight).tile(nX / g_nBlock, nY);
    return reinterpret_cast<const float*>(pTile)[nY % g_nBlock * g_nBlock + nX % g_nBlock];
}

void CAcmlFft::Free()
{
    m_pComm.reset();
    m_nWidth = 0;
    m_nHeight = 0;
}

}  // namespace tessera
