// CFrameSum: sums frames, and blocks of their pixels.
#pragma once

#include "imaging/imgobj.h"

#include <QString>

#include <memory>
#include <vector>

namespace tessera {

/// Sums images of one size. Only one image of the size of the result is in memory. Sums of whole counts are
/// exact up to 2^24, the limit of single precision.
///
/// A pixel of the result is the sum of nBin × nBin pixels of each image. Columns and rows left over at the
/// right and at the bottom are ignored. If one of the pixels is unusable (isUsablePixel()), the sum is NaN.
/// If one is saturated, the sum is at least as large as if all were, so that it can be recognized by the
/// same multiple of the limit.
class CFrameSum {
public:
    /// @param nBin          at least 1
    /// @param dfSaturation  counts from which a pixel is saturated; 0: unknown
    CFrameSum(int nBin, double dfSaturation) : m_nBin(nBin), m_dfSaturation(dfSaturation) {}

    /// Adds an image.
    /// @param pstrReason  may be null; takes on failure what is wrong
    /// @return false, with the sum as it was, for an image of another size than the first one, or smaller
    ///         than a block
    /// @throw std::bad_alloc
    [[nodiscard]] bool add(const CImgObj<float>& image, QString* pstrReason = nullptr);

    /// Returns the sum; null if no image was added. The object must not be used afterwards.
    std::unique_ptr<CImgObj<float>> take();

private:
    void addRow(const CImgObj<float>& image, int nRow);

    int m_nBin;
    double m_dfSaturation;
    int m_nWidth = 0, m_nHeight = 0;  // of the images that are added
    int m_nAdded = 0;
    std::unique_ptr<CImgObj<float>> m_pSum;
    std::vector<char> m_vecSaturated;
};

}  // namespace tessera
