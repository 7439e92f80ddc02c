#include "imaging/acmlfft.h"

#include <fftw3.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <mutex>

namespace {

// Lines that go through the scratch buffer together: eight COMPLEX are one cache line, so gathering
// eight columns reads every line of memory once.
constexpr int nBlock = 8;

// FFTW's planner keeps global tables; only execution is thread safe.
std::mutex g_mutexPlanner;

fftwf_complex* asFftw(COMPLEX* p)
{
    return reinterpret_cast<fftwf_complex*>(p);
}

// Transforms of nBlock lines of one length, forward and backward, between two aligned buffers of the
// holder. Lines stand at multiples of a padded stride: a stride of a high power of two would crowd
// the lines of a block into the same cache sets.
struct LinePlan {
    int nLength = 0;
    int nStride = 0;
    fftwf_plan planForward = nullptr;
    fftwf_plan planBackward = nullptr;

    LinePlan() = default;
    LinePlan(const LinePlan&) = delete;
    LinePlan& operator=(const LinePlan&) = delete;
    ~LinePlan()
    {
        const std::lock_guard<std::mutex> lock(g_mutexPlanner);
        if (planForward)
            fftwf_destroy_plan(planForward);
        if (planBackward)
            fftwf_destroy_plan(planBackward);
    }

    bool make(COMPLEX* pIn, COMPLEX* pOut)
    {
        const std::lock_guard<std::mutex> lock(g_mutexPlanner);
        const auto plan = [&](int nSign) {
            return fftwf_plan_many_dft(1, &nLength, nBlock, asFftw(pIn), nullptr, 1, nStride, asFftw(pOut),
                                       nullptr, 1, nStride, nSign, FFTW_ESTIMATE);
        };
        planForward = plan(FFTW_FORWARD);
        planBackward = plan(FFTW_BACKWARD);
        return planForward && planBackward;
    }
};

int paddedStride(int nLength)
{
    return (nLength + 7) / 8 * 8 + 8;
}

struct FftwFree {
    void operator()(COMPLEX* p) const { fftwf_free(p); }
};
using Scratch = std::unique_ptr<COMPLEX, FftwFree>;

Scratch allocateScratch(std::size_t nCount)
{
    Scratch pScratch(reinterpret_cast<COMPLEX*>(fftwf_alloc_complex(nCount)));
    if (pScratch)
        std::memset(static_cast<void*>(pScratch.get()), 0, nCount * sizeof(COMPLEX));
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
    if (m_pComm && nWidth == m_nWidth && nHeight == m_nHeight)
        return 2;
    Free();
    if (nWidth < 1 || nHeight < 1 || std::int64_t(nWidth) * nHeight > INT32_MAX)
        return 0;
    auto pPlan = std::make_unique<Plan>();
    pPlan->row.nLength = nWidth;
    pPlan->row.nStride = paddedStride(nWidth);
    pPlan->column.nLength = nHeight;
    pPlan->column.nStride = paddedStride(nHeight);
    const std::size_t nCount = std::size_t(nBlock) *
                               std::size_t(std::max(pPlan->row.nStride, pPlan->column.nStride));
    pPlan->pIn = allocateScratch(nCount);
    pPlan->pOut = allocateScratch(nCount);
    if (!pPlan->pIn || !pPlan->pOut)
        return 0;
    if (!pPlan->row.make(pPlan->pIn.get(), pPlan->pOut.get()) ||
        !pPlan->column.make(pPlan->pIn.get(), pPlan->pOut.get()))
        return 0;
    m_pComm = std::move(pPlan);
    m_nWidth = nWidth;
    m_nHeight = nHeight;
    return 1;
}

int CAcmlFft::Transform(COMPLEX* pData, int nWidth, int nHeight, int nDirection)
{
    if (!pData || !Init(nWidth, nHeight))
        return 0;
    const bool bForward = nDirection == -1;
    const std::size_t nRowLength = std::size_t(nWidth);
    COMPLEX* pIn = m_pComm->pIn.get();
    COMPLEX* pOut = m_pComm->pOut.get();

    // A block at the end may be short; what the unused lines hold is transformed along and dropped.
    const int nRowStride = m_pComm->row.nStride;
    for (int y = 0; y < nHeight; y += nBlock) {
        const int nLines = std::min(nBlock, nHeight - y);
        for (int i = 0; i < nLines; i++)
            std::memcpy(pIn + i * nRowStride, pData + std::size_t(y + i) * nRowLength,
                        nRowLength * sizeof(COMPLEX));
        fftwf_execute(bForward ? m_pComm->row.planForward : m_pComm->row.planBackward);
        for (int i = 0; i < nLines; i++)
            std::memcpy(pData + std::size_t(y + i) * nRowLength, pOut + i * nRowStride,
                        nRowLength * sizeof(COMPLEX));
    }

    const float fScale = bForward ? 1.f : float(1.0 / (double(nWidth) * nHeight));
    const int nColumnStride = m_pComm->column.nStride;
    for (int x = 0; x < nWidth; x += nBlock) {
        const int nLines = std::min(nBlock, nWidth - x);
        COMPLEX* pColumns = pData + x;
        for (int y = 0; y < nHeight; y++)
            for (int i = 0; i < nLines; i++)
                pIn[i * nColumnStride + y] = pColumns[std::size_t(y) * nRowLength + std::size_t(i)];
        fftwf_execute(bForward ? m_pComm->column.planForward : m_pComm->column.planBackward);
        for (int y = 0; y < nHeight; y++)
            for (int i = 0; i < nLines; i++) {
                const COMPLEX value = pOut[i * nColumnStride + y];
                pColumns[std::size_t(y) * nRowLength + std::size_t(i)] = {value.re * fScale,
                                                                          value.im * fScale};
            }
    }
    return 1;
}

void CAcmlFft::Free()
{
    m_pComm.reset();
    m_nWidth = 0;
    m_nHeight = 0;
}
