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
thread_local KeptBlock t_kept = {nullptr, 0, false};

/// Frees the kept block at the end of the thread. Blocks that are released later are freed at once.
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
    t_owner.touch();  // constructs the thread-local object, so that it will be destroyed
    delete[] t_kept.pBlock;
    t_kept.pBlock = pBlock;
    t_kept.nSize = nSize;
}

}  // namespace

std::shared_ptr<uint8_t> makeFileBuffer(size_t nSize)
{
    uint8_t* pBlock = nullptr;
    size_t nBlock = nSize;
    // A much larger block is not kept occupied by a small file.
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
