// CImgObj<T>: the one image type, a row-major raster that owns its buffer.
#pragma once

#include "imaging/imagememory.h"

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace tessera {

/// A rectangular raster of one element type, without metadata.
///
/// Element (x, y), x the column to the right and y the row downwards, stands at index
/// y × Width() + x; there is no padding. The element count is below 2^31. An empty image has a null
/// buffer and width and height 0.
///
/// Images do not copy by construction or assignment: copying goes through Copy(), so that a copy of
/// some megabytes is always seen in the code. Moving leaves the source empty.
template <typename T>
class CImgObj {
    static_assert(std::is_trivially_copyable<T>::value, "images are copied and cleared as raw memory");

public:
    CImgObj() = default;  ///< empty
    ~CImgObj() { Release(); }
    CImgObj(const CImgObj&) = delete;
    CImgObj& operator=(const CImgObj&) = delete;
    CImgObj(CImgObj&& other) noexcept { swap(other); }  ///< leaves the source empty
    CImgObj& operator=(CImgObj&& other) noexcept
    {
        if (this != &other) {
            Release();
            swap(other);
        }
        return *this;
    }

    /// The buffer, null when empty.
    T* Data() { return m_pData; }
    const T* Data() const { return m_pData; }  ///< the same to read
    int Width() const { return m_nWidth; }     ///< columns
    int Height() const { return m_nHeight; }   ///< rows

    /// Makes the image nWidth × nHeight elements large.
    ///
    /// With the present size nothing happens: buffer and contents stay, so that a run over like
    /// frames allocates its work images once. Otherwise the former contents are gone and the new
    /// ones are uninitialised. A side below 1, or 2^31 elements and more, leaves the image empty.
    /// @return 1, or 0 for a size that cannot be had
    /// @throw std::bad_alloc when memory runs out; the image is empty then
    int Create(int nWidth, int nHeight)
    {
        if (nWidth == m_nWidth && nHeight == m_nHeight) {
            return 1;
        }
        Release();
        if (nWidth < 1 || nHeight < 1 || std::int64_t(nWidth) * nHeight > INT32_MAX) {
            return 0;
        }
        m_pData = static_cast<T*>(takeImageMemory(std::size_t(nWidth) * std::size_t(nHeight) * sizeof(T)));
        m_nWidth = nWidth;
        m_nHeight = nHeight;
        return 1;
    }

    /// Frees the buffer, or gives it back to a run that keeps it (CImageMemory); the image is empty
    /// afterwards.
    void Release()
    {
        giveImageMemory(m_pData, Count() * sizeof(T));
        m_pData = nullptr;
        m_nWidth = 0;
        m_nHeight = 0;
    }

    /// Sets every element to zero bits; nothing to do on an empty image.
    void Clear()
    {
        if (m_pData) {
            std::memset(static_cast<void*>(m_pData), 0, Count() * sizeof(T));
        }
    }

    /// Takes size and contents from a tightly packed buffer outside this image.
    ///
    /// The same type is copied as one block, another is converted by plain assignment.
    /// @return 1, or 0 with a null source (the image stays as it was) or a size that Create refuses
    template <typename U>
    int Set(const U* pSource, int nWidth, int nHeight)
    {
        if (!pSource || !Create(nWidth, nHeight)) {
            return 0;
        }
        if constexpr (std::is_same<T, U>::value) {
            if (m_pData) {
                std::memmove(static_cast<void*>(m_pData), pSource, Count() * sizeof(T));
            }
        } else {
            const std::size_t nCount = Count();
            for (std::size_t i = 0; i < nCount; ++i) {
                m_pData[i] = static_cast<T>(pSource[i]);
            }
        }
        return 1;
    }

    /// Becomes a copy of another image. @return 1, or 0 for a null or empty source; then nothing changes
    int Copy(const CImgObj& imgSource)
    {
        return Set(imgSource.m_pData, imgSource.m_nWidth, imgSource.m_nHeight);
    }
    int Copy(const CImgObj* pSource) { return pSource ? Copy(*pSource) : 0; }  ///< the same; 0 for null

    /// A copy of the rectangle of w × h elements with its top left corner at (x, y).
    /// @return an empty image when w or h is below 1 or the rectangle sticks out anywhere: no clipping
    CImgObj<float> SubImage(int x, int y, int w, int h) const
    {
        CImgObj<float> imgResult;
        const bool bInside = x >= 0 && y >= 0 && w > 0 && h > 0 && std::int64_t(x) + w <= m_nWidth &&
                             std::int64_t(y) + h <= m_nHeight;
        if (!bInside || !imgResult.Create(w, h)) {
            return imgResult;
        }
        for (int r = 0; r < h; ++r) {
            const T* pSource = m_pData + std::size_t(y + r) * std::size_t(m_nWidth) + x;
            float* pTarget = imgResult.Data() + std::size_t(r) * std::size_t(w);
            if constexpr (std::is_same<T, float>::value) {
                std::memcpy(pTarget, pSource, std::size_t(w) * sizeof(float));
            } else {
                for (int c = 0; c < w; ++c) {
                    pTarget[c] = static_cast<float>(pSource[c]);
                }
            }
        }
        return imgResult;
    }

private:
    std::size_t Count() const { return std::size_t(m_nWidth) * std::size_t(m_nHeight); }
    void swap(CImgObj& other) noexcept
    {
        std::swap(m_pData, other.m_pData);
        std::swap(m_nWidth, other.m_nWidth);
        std::swap(m_nHeight, other.m_nHeight);
    }

    T* m_pData = nullptr;
    int m_nWidth = 0;
    int m_nHeight = 0;
};

}  // namespace tessera
