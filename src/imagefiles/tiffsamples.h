// TIFF samples: converts samples of a TIFF file to float, row by row.
#pragma once

#include "imagefiles/tifflayout.h"

#include <cstdint>
#include <vector>

namespace tessera {

/// Converts rows of segments and puts them into an image.
class CTiffRows {
public:
    /// @param layout   must outlive the object
    /// @param bSwap    samples are not in the byte order of this machine
    /// @param pfImage  takes width × height pixels as stored. Several planes are added, so it must be zero
    ///                 at first
    CTiffRows(const TiffLayout& layout, bool bSwap, float* pfImage);

    /// The number of planes that must be put; further ones are not used.
    int planes() const { return m_layout.bSeparate && m_layout.pixels == TiffPixels::Colour ? 3 : 1; }

    /// Converts rows that are `rowBytes()` apart, of which the first begins at (x, y) of the image. Pixels
    /// outside the image are dropped.
    void put(const uint8_t* p, int nX, int nY, int nRows, int nPlane);

private:
    /// Converts `nCount` samples.
    void convert(const uint8_t* p, size_t nCount, float* pf) const;
    void putRow(const uint8_t* p, size_t nPixels, int nPlane, float* pf);

    const TiffLayout& m_layout;
    const bool m_bSwap;
    float* const m_pfImage;
    std::vector<float> m_vecRow;  ///< samples of a row, if a pixel has several or rows are added
};

}  // namespace tessera
