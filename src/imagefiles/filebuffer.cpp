#include "imagefiles/filebuffer.h"

namespace tessera {

namespace {

constexpr size_t g_nMostKept = size_t(72) << 20;  ///< bytes, for a frame of 4096 x 4096 floats with its tags

/// The block that this thread keeps. It is plain data, which can be used even while the thread ends.
struct KeptBlock {
    uint8_t* pBlock;
    size_t nSize;
    bool bClosed;
};
thread_local KeptBlock g_kept = {nullptr, 0, false};

/// Frees the kept block at the end of the thread. Blocks that are released later are freed at once.
struct KeptBlockOwner {
    ~KeptBlockOwner()
    {
        delete[] g_kept.pBlock;
        g_kept = {nullptr, 0, true};
    }
    void touch() {}
};
thread_local KeptBlockOwner g_owner;

void giveBack(uint8_t* pBlock, size_t nSize)
{
    if (g_kept.bClosed || nSize > g_nMostKept) {
        delete[] pBlock;
        return;
    }
    g_owner.touch();  // constructs the thread-local object, so that it will be destroyed
    delete[] g_kept.pBlock;
    g_kept.pBlock = pBlock;
    g_kept.nSize = nSize;
}

}  // namespace

std::shared_ptr<uint8_t> makeFileBuffer(size_t nSize)
{
    uint8_t* pBlock = nullptr;
    size_t nBlock = nSize;
    // A much larger block is not kept occupied by a small file.
    if (g_kept.pBlock && g_kept.nSize >= nSize && g_kept.nSize / 4 <= nSize) {
        pBlock = g_kept.pBlock;
        nBlock = g_kept.nSize;
        g_kept.pBlock = nullptr;
        g_kept.nSize = 0;
    } else {
        pBlock = new uint8_t[nSize];
    }
    return std::shared_ptr<uint8_t>(pBlock, [nBlock](uint8_t* p) { giveBack(p, nBlock); });
}

}  // namespace tessera
