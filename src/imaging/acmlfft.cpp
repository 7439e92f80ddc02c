#include "imaging/acmlfft.h"

#include "imaging/fftwplanner.h"

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
constexpr int nBlock = 8;

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

// Transforms of nBlock lines of one length, forward and backward, between two aligned buffers of the
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
            return fftwf_plan_many_dft(1, &nLength, nBlock, asFftw(pIn), nullptr, 1, nStride, asFftw(pOut),
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
            planReal.reset(fftwf_plan_many_dft_r2c(1, &nLength, nBlock, reinterpret_cast<float*>(pIn),
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

// Elements from one block of nBlock columns to the next. The lines between them belong to nobody: at heights
// of a high power of two all blocks of a row would else stand in the same few sets of the caches.
std::size_t blockStride(int nHeight)
{
    return std::size_t(nBlock) * (std::size_t(nHeight) + std::size_t(nBlock));
}

// Where a tile of the rows y ... y + 7 and the columns 8n ... 8n + 7 lies, for the image that stays in the
// work space: n counts all blocks of it.
std::size_t tileStart(std::size_t n, int nY, int nHeight)
{
    return n * blockStride(nHeight) + std::size_t(nY / nBlock * nBlock) * std::size_t(nBlock);
}

struct FftwFree {
    void operator()(COMPLEX* p) const { fftwf_free(p); }
};
using Scratch = std::unique_ptr<COMPLEX, FftwFree>;

// Nearly all copies are of whole blocks: for those the compiler knows the size.
void copyUpToBlock(const COMPLEX* pSource, int nCount, COMPLEX* pTarget)
{
    if (nCount == nBlock) {
        std::memcpy(pTarget, pSource, nBlock * sizeof(COMPLEX));
    } else if (nCount > 0) {
        std::copy_n(pSource, nCount, pTarget);
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
    const std::size_t nCount = std::size_t(nBlock) *
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
    const std::size_t nRowLength = std::size_t(nWidth);
    COMPLEX* pIn = m_pComm->pIn.get();
    COMPLEX* pOut = m_pComm->pOut.get();

    // A block at the end may be short; what the unused lines hold is transformed along and dropped.
    const int nRowStride = m_pComm->row.nStride;
    for (int y = 0; y < nHeight; y += nBlock) {
        const int nLines = std::min(nBlock, nHeight - y);
        for (int i = 0; i < nLines; ++i) {
            std::memcpy(pIn + i * nRowStride, pData + std::size_t(y + i) * nRowLength,
                        nRowLength * sizeof(COMPLEX));
        }
        fftwf_execute((bForward ? m_pComm->row.planForward : m_pComm->row.planBackward).get());
        for (int i = 0; i < nLines; ++i) {
            std::memcpy(pData + std::size_t(y + i) * nRowLength, pOut + i * nRowStride,
                        nRowLength * sizeof(COMPLEX));
        }
    }

    const float fScale = bForward ? 1.f : float(1.0 / (double(nWidth) * nHeight));
    const int nColumnStride = m_pComm->column.nStride;
    for (int x = 0; x < nWidth; x += nBlock) {
        const int nLines = std::min(nBlock, nWidth - x);
        COMPLEX* pColumns = pData + x;
        for (int y = 0; y < nHeight; ++y) {
            for (int i = 0; i < nLines; ++i) {
                pIn[i * nColumnStride + y] = pColumns[std::size_t(y) * nRowLength + std::size_t(i)];
            }
        }
        fftwf_execute((bForward ? m_pComm->column.planForward : m_pComm->column.planBackward).get());
        for (int y = 0; y < nHeight; ++y) {
            for (int i = 0; i < nLines; ++i) {
                const COMPLEX value = pOut[i * nColumnStride + y];
                pColumns[std::size_t(y) * nRowLength + std::size_t(i)] = {value.re * fScale,
                                                                          value.im * fScale};
            }
        }
    }
    return 1;
}

std::size_t CAcmlFft::HalfCount(int nWidth, int nHeight)
{
    return std::size_t(nWidth / 2 / nBlock + 1) * blockStride(nHeight);
}

std::size_t CAcmlFft::HalfIndex(int nX, int nY, int nHeight)
{
    return std::size_t(nX / nBlock) * blockStride(nHeight) + std::size_t(nX % nBlock) * std::size_t(nHeight) +
           std::size_t(nY);
}

int CAcmlFft::TransformReal(const FnFillRow& fnRow, int nWidth, int nHeight, COMPLEX* pHalf)
{
    if (!pHalf || !Init(nWidth, nHeight)) {
        return 0;
    }
    COMPLEX* pIn = m_pComm->pIn.get();
    COMPLEX* pOut = m_pComm->pOut.get();
    const int nRowStride = m_pComm->row.nStride;
    if (!m_pComm->row.makeReal(pIn, pOut)) {
        return 0;
    }

    // Block after block of nBlock columns: at first row after row within each, so that the columns of a block
    // lie together, then column after column.
    const int nColumns = nWidth / 2 + 1;
    for (int y = 0; y < nHeight; y += nBlock) {
        const int nLines = std::min(nBlock, nHeight - y);
        for (int i = 0; i < nLines; ++i) {
            fnRow(y + i, reinterpret_cast<float*>(pIn) + std::ptrdiff_t(i) * nRowStride);
        }
        fftwf_execute(m_pComm->row.planReal.get());
        for (int x = 0; x < nColumns; x += nBlock) {
            COMPLEX* pTarget = pHalf + HalfIndex(x, 0, nHeight) + std::size_t(y) * nBlock;
            const int nUsed = std::min(nBlock, nColumns - x);
            for (int i = 0; i < nLines; ++i, pTarget += nBlock) {
                copyUpToBlock(pOut + std::ptrdiff_t(i) * nRowStride + x, nUsed, pTarget);
                std::fill(pTarget + nUsed, pTarget + nBlock, COMPLEX{0.f, 0.f});
            }
        }
    }
    const int nStride = m_pComm->column.nStride;
    for (int x = 0; x < nColumns; x += nBlock) {
        COMPLEX* pBlock = pHalf + HalfIndex(x, 0, nHeight);
        for (int y = 0; y < nHeight; ++y) {
            for (int i = 0; i < nBlock; ++i) {
                pIn[i * nStride + y] = pBlock[y * nBlock + i];
            }
        }
        fftwf_execute(m_pComm->column.planForward.get());
        for (int i = 0; i < nBlock; ++i) {
            std::copy_n(pOut + std::ptrdiff_t(i) * nStride, nHeight, pBlock + std::ptrdiff_t(i) * nHeight);
        }
    }
    return 1;
}

void CAcmlFft::FilterColumns(const COMPLEX* pHalf, const COMPLEX* pFilter, COMPLEX* pWork)
{
    COMPLEX* pIn = m_pComm->pIn.get();
    COMPLEX* pOut = m_pComm->pOut.get();
    const int nHeight = m_nHeight;
    const int nStride = m_pComm->column.nStride;
    const int nColumns = m_nWidth / 2 + 1;
    const std::size_t nBlockStride = blockStride(nHeight);

    // The work space takes two blocks for each of the spectrum, row after row: its columns x … x + 7, and
    // those that mirror them, −x − 7 … −x. What it takes for block n of N lies below block N + n and ends in
    // it at the last, after that was read: so the spectrum may be the upper half of the work space.
    const auto transformInto = [&](COMPLEX* pBlock) {
        fftwf_execute(m_pComm->column.planBackward.get());
        for (int y = 0; y < nHeight; ++y) {
            for (int i = 0; i < nBlock; ++i) {
                pBlock[y * nBlock + i] = pOut[i * nStride + y];
            }
        }
    };
    for (int x = 0; x < nColumns; x += nBlock) {
        const std::size_t nStart = HalfIndex(x, 0, nHeight);
        const COMPLEX* pF = pHalf + nStart;
        const COMPLEX* pS = pFilter + nStart;
        COMPLEX* pBlock = pWork + 2 * nStart;
        for (int i = 0; i < nBlock; ++i) {
            COMPLEX* pColumn = pIn + std::ptrdiff_t(i) * nStride;
            const COMPLEX* pf = pF + std::ptrdiff_t(i) * nHeight;
            const COMPLEX* ps = pS + std::ptrdiff_t(i) * nHeight;
            for (int y = 0; y < nHeight; ++y) {
                pColumn[y] = {pf[y].re * ps[y].re - pf[y].im * ps[y].im,
                              pf[y].re * ps[y].im + pf[y].im * ps[y].re};
            }
        }
        if (x == 0) {
            pIn[0] = {0.f, 0.f};
        }
        transformInto(pBlock);
        for (int i = 0; i < nBlock; ++i) {
            COMPLEX* pColumn = pIn + std::ptrdiff_t(nBlock - 1 - i) * nStride;
            const COMPLEX* pf = pF + std::ptrdiff_t(i) * nHeight;
            const COMPLEX* ps = pS + std::ptrdiff_t(i) * nHeight;
            pColumn[0] = {pf[0].re * ps[0].re + pf[0].im * ps[0].im,
                          pf[0].re * ps[0].im - pf[0].im * ps[0].re};
            for (int y = 1; y < nHeight; ++y) {
                const COMPLEX f = pf[nHeight - y];
                const COMPLEX s = ps[nHeight - y];
                pColumn[y] = {f.re * s.re + f.im * s.im, f.re * s.im - f.im * s.re};
            }
        }
        transformInto(pBlock + nBlockStride);
    }
}

template <class FnRows>
void CAcmlFft::TransformFilteredRows(const COMPLEX* pWork, const FnRows& fnRows)
{
    COMPLEX* pIn = m_pComm->pIn.get();
    COMPLEX* pOut = m_pComm->pOut.get();
    const int nWidth = m_nWidth, nHeight = m_nHeight;
    const int nColumns = nWidth / 2 + 1;
    const int nRowStride = m_pComm->row.nStride;
    const int nMirrored = (nWidth + 1) / 2;  // 0 and, at even widths, nWidth/2 are their own mirrors
    for (int y = 0; y < nHeight; y += nBlock) {
        const int nLines = std::min(nBlock, nHeight - y);
        for (int x = 0; x < nColumns; x += nBlock) {
            const COMPLEX* pBlock = pWork + 2 * HalfIndex(x, 0, nHeight) + std::size_t(y) * nBlock;
            const COMPLEX* pMirror = pBlock + blockStride(nHeight);
            const int nUsed = std::min(nBlock, nColumns - x);
            const int nFirst = x == 0 ? 1 : 0;
            const int nLast = std::min(nBlock, nMirrored - x);
            for (int i = 0; i < nLines; ++i, pBlock += nBlock, pMirror += nBlock) {
                COMPLEX* pRow = pIn + std::ptrdiff_t(i) * nRowStride;
                copyUpToBlock(pBlock, nUsed, pRow + x);
                copyUpToBlock(pMirror + nBlock - nLast, nLast - nFirst, pRow + nWidth - x - nLast + 1);
            }
        }
        fftwf_execute(m_pComm->row.planBackward.get());
        fnRows(y, nLines, pOut, nRowStride);
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
    TransformFilteredRows(pWork, [&](int y, int nLines, const COMPLEX* pRows, int nStride) {
        for (int i = 0; i < nLines; ++i) {
            const COMPLEX* pRow = pRows + std::ptrdiff_t(i) * nStride;
            const std::size_t nStart = std::size_t(y + i) * std::size_t(nWidth);
            if (imgS.pData) {
                for (int x = 0; x < nWidth; ++x) {
                    imgS.pData[nStart + std::size_t(x)] = pRow[x].re * fScale + imgS.fConstant;
                }
            }
            if (imgB.pData) {
                for (int x = 0; x < nWidth; ++x) {
                    imgB.pData[nStart + std::size_t(x)] = pRow[x].im * fScale + imgB.fConstant;
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
    std::vector<float> vecRow(std::size_t(nWidth), 0.f);
    TransformFilteredRows(pWork, [&](int y, int nLines, const COMPLEX* pRows, int nStride) {
        // The tiles of these rows have been read: half of each takes the other image.
        for (int x = 0; keptS.bWanted && x < nWidth; x += nBlock) {
            float* pTile = reinterpret_cast<float*>(pWork + tileStart(std::size_t(x / nBlock), y, nHeight));
            const int nUsed = std::min(nBlock, nWidth - x);
            for (int i = 0; i < nLines; ++i, pTile += nBlock) {
                const COMPLEX* p = pRows + std::ptrdiff_t(i) * nStride + x;
                for (int j = 0; j < nUsed; ++j) {
                    pTile[j] = p[j].re * fScale + keptS.fConstant;
                }
            }
        }
        for (int i = 0; i < nLines; ++i) {
            const COMPLEX* pRow = pRows + std::ptrdiff_t(i) * nStride;
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
    const COMPLEX* pTile = pWork + tileStart(std::size_t(nX / nBlock), nY, nHeight);
    return reinterpret_cast<const float*>(pTile)[nY % nBlock * nBlock + nX % nBlock];
}

void CAcmlFft::Free()
{
    m_pComm.reset();
    m_nWidth = 0;
    m_nHeight = 0;
}

}  // namespace tessera
