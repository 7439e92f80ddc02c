// CImageMemory: the memory of images, kept and handed round while a run goes from frame to frame.
#pragma once

#include <cstddef>
#include <memory>

namespace tessera {

/// Large blocks that images have given back, for the next images of the same size.
///
/// Beyond 32 MB malloc takes every block from the system and gives it back at once, whatever its thresholds:
/// a run over frames of 4096 × 4096 then waits as long for pages as it computes. A run therefore has an
/// object of this, which frees all that it keeps at its end; images may outlive it.
class CImageMemory {
public:
    /// @param nMostKept  blocks that are kept at a time; a further one takes the place of the oldest
    explicit CImageMemory(std::size_t nMostKept);
    ~CImageMemory();
    CImageMemory(const CImageMemory&) = delete;
    CImageMemory& operator=(const CImageMemory&) = delete;

    /// Frees what is kept.
    void clear();
    /// Bytes that are kept.
    std::size_t keptBytes() const;

    /// While it stands, large images that this thread makes take their memory from a CImageMemory, and go
    /// back to it from whichever thread they end in. They nest.
    class CUse {
    public:
        explicit CUse(CImageMemory& memory);
        ~CUse();
        CUse(const CUse&) = delete;
        CUse& operator=(const CUse&) = delete;

    private:
        CImageMemory* m_pFormer;
    };

    struct State;

private:
    friend void* takeImageMemory(std::size_t nBytes);
    std::shared_ptr<State> m_pState;
};

/// Memory for an image of nBytes, not set, aligned for every element.
/// @throw std::bad_alloc
void* takeImageMemory(std::size_t nBytes);
/// Gives it back. @param nBytes  as it was taken
void giveImageMemory(void* pMemory, std::size_t nBytes) noexcept;

}  // namespace tessera
