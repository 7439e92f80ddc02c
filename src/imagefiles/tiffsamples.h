// Samples of a TIFF file to float, row by row.
#pragma once

#include "imagefiles/tifflayout.h"

#include <cstdint>
#include <vector>

namespace tessera {

/// Puts rows of segments into an image.
class CTiffRows {
public:
    /// @param bSwap  samples are in the other byte order than this machine's
    /// @param pfImage  width × height, as stored; of several planes that count the sum, so zeros at first
    CTiffRows(const TiffLayout& layout, bool bSwap, float* pfImage);

    /// The planes that have to be put; others don't count.
    int planes() const { return m_layout.bSeparate && m_layout.pixels == TiffPixels::Colour ? 3 : 1; }

    /// Converts rows that lie `rowBytes()` apart, the first at (x, y) of the image, and drops what reaches
    /// out of it.
    void put(const uint8_t* p, int nX, int nY, int nRows, int nPlane);

private:
    /// Samples side by side, as many as `nCount`.
    void convert(const uint8_t* p, size_t nCount, float* pf) const;
    void putRow(const uint8_t* p, size_t nPixels, int nPlane, float* pf);

    const TiffLayout& m_layout;
    const bool m_bSwap;
    float* const m_pfImage;
    std::vector<float> m_vecRow;  ///< samples of a row, where a pixel has several or rows are added
};

}  // namespace tessera
