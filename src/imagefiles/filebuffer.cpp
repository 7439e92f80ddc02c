#include "imagefiles/filebuffer.h"

namespace tessera {

namespace {

constexpr size_t g_nMostKept = size_t(72) << 20;  ///< a frame of 4096 x 4096 floats and the tags around it

/// The block that this thread keeps. Plain data, so that it can still be asked while the thread ends.
struct KeptBlock {
    uint8_t* pBlock;
    size_t nSize;
    bool bClosed;
};
thread_local KeptBlock t_kept = {nullptr, 0, false};

/// Frees the kept block at the end of the thread; blocks that come back later are freed at once.
struct KeptBlockOwner {
    ~KeptBlockOwner()
    {
        delete[] t_kept.pBlock;
        t_kept = {nullptr, 0, true};
    }
    void touch() {}
};
thread_local KeptBlockOwner t_owner;

void giveBack(uint8_t* pBlock, size_t nSize)
{
    if (t_kept.bClosed || nSize > g_nMostKept) {
        delete[] pBlock;
        return;
    }
    t_owner.touch();  // a thread-local object is made, and so later destroyed, at its first use
    delete[] t_kept.pBlock;
    t_kept.pBlock = pBlock;
    t_kept.nSize = nSize;
}

}  // namespace

std::shared_ptr<uint8_t> makeFileBuffer(size_t nSize)
{
    uint8_t* pBlock = nullptr;
    size_t nBlock = nSize;
    // a much larger block is not held up by a small file
    if (t_kept.pBlock && t_kept.nSize >= nSize && t_kept.nSize / 4 <= nSize) {
        pBlock = t_kept.pBlock;
        nBlock = t_kept.nSize;
        t_kept.pBlock = nullptr;
        t_kept.nSize = 0;
    } else {
        pBlock = new uint8_t[nSize];
    }
    return std::shared_ptr<uint8_t>(pBlock, [nBlock](uint8_t* p) { giveBack(p, nBlock); });
}

}  // namespace tessera
