#include "imaging/imagememory.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace tessera {

namespace {

// Blocks from this size on are kept and may get huge pages; malloc serves smaller ones well.
constexpr std::size_t g_nLarge = std::size_t(4) << 20;
// In front of a large block: room for its Front, and whole pages, so that the pixels begin one.
constexpr std::size_t g_nFront = 4096;

struct Front {
    std::shared_ptr<CImageMemory::State> pState;  // where the block goes back to; null: to the system
};
static_assert(sizeof(Front) <= g_nFront);

struct KeptBlock {
    void* pMemory;
    std::size_t nBytes;
};

thread_local CImageMemory* g_pMemory = nullptr;

Front* frontOf(void* pMemory)
{
    return reinterpret_cast<Front*>(static_cast<char*>(pMemory) - g_nFront);
}

void freeLarge(void* pMemory)
{
    std::free(static_cast<char*>(pMemory) - g_nFront);
}

void* allocateLarge(std::size_t nBytes)
{
    const std::size_t nAll = (nBytes + g_nFront + g_nFront - 1) / g_nFront * g_nFront + g_nFront;
    char* pBlock = nAll > nBytes ? static_cast<char*>(std::aligned_alloc(g_nFront, nAll)) : nullptr;
    if (!pBlock) {
        return nullptr;
#ifdef MADV_HUGEPAGE
    }
    // A page of 2 MB means five hundred times fewer page faults, and no misses of the translation buffer when
    // a transform goes down the columns. Where there are no such pages the call does nothing.
    madvise(pBlock + g_nFront, nBytes / g_nFront * g_nFront, MADV_HUGEPAGE);
#endif
    return pBlock + g_nFront;
}

}  // namespace

struct CImageMemory::State {
    std::mutex mutex;
    std::vector<KeptBlock> vecKept;  // the oldest first; never beyond its capacity
    bool bOpen = true;
};

CImageMemory::CImageMemory(std::size_t nMostKept) : m_pState(std::make_shared<State>())
{
    m_pState->vecKept.reserve(std::max<std::size_t>(1, nMostKept));
}

CImageMemory::~CImageMemory()
{
    {
        const std::lock_guard<std::mutex> lock(m_pState->mutex);
        m_pState->bOpen = false;
    }
    clear();
}

void CImageMemory::clear()
{
    const std::lock_guard<std::mutex> lock(m_pState->mutex);
    for (const KeptBlock& block : m_pState->vecKept) {
        freeLarge(block.pMemory);
    }
    m_pState->vecKept.clear();
}

std::size_t CImageMemory::keptBytes() const
{
    const std::lock_guard<std::mutex> lock(m_pState->mutex);
    std::size_t nBytes = 0;
    for (const KeptBlock& block : m_pState->vecKept) {
        nBytes += block.nBytes;
    }
    return nBytes;
}

CImageMemory::CUse::CUse(CImageMemory& memory) : m_pFormer(std::exchange(g_pMemory, &memory)) {}

CImageMemory::CUse::~CUse()
{
    g_pMemory = m_pFormer;
}

void* takeImageMemory(std::size_t nBytes)
{
    if (nBytes < g_nLarge) {
        return ::operator new(nBytes);
    }
    void* pMemory = nullptr;
    if (g_pMemory) {
        CImageMemory::State& state = *g_pMemory->m_pState;
        const std::lock_guard<std::mutex> lock(state.mutex);
        const auto it = std::find_if(state.vecKept.begin(), state.vecKept.end(),
                                     [&](const KeptBlock& block) { return block.nBytes == nBytes; });
        if (it != state.vecKept.end()) {
            pMemory = it->pMemory;
            state.vecKept.erase(it);
        }
    }
    if (!pMemory) {
        pMemory = allocateLarge(nBytes);
    }
    if (!pMemory && g_pMemory) {
        g_pMemory->clear();  // the kept blocks have other sizes
        pMemory = allocateLarge(nBytes);
    }
    if (!pMemory) {
        throw std::bad_alloc();
    }
    new (frontOf(pMemory)) Front{g_pMemory ? g_pMemory->m_pState : nullptr};
    return pMemory;
}

void giveImageMemory(void* pMemory, std::size_t nBytes) noexcept
{
    if (!pMemory || nBytes < g_nLarge) {
        ::operator delete(pMemory);
        return;
    }
    const std::shared_ptr<CImageMemory::State> pState = std::move(frontOf(pMemory)->pState);
    frontOf(pMemory)->~Front();
    if (pState) {
        const std::lock_guard<std::mutex> lock(pState->mutex);
        std::vector<KeptBlock>& vecKept = pState->vecKept;
        if (pState->bOpen) {
            void* const pOldest = vecKept.size() == vecKept.capacity() ? vecKept.front().pMemory : nullptr;
            if (pOldest) {
                vecKept.erase(vecKept.begin());
            }
            vecKept.push_back({pMemory, nBytes});
            pMemory = pOldest;
        }
    }
    if (pMemory) {
        freeLarge(pMemory);
    }
}

}  // namespace tessera
