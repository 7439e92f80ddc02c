// CFrameSum: frames added up, block of pixels by block, as they are read.
#pragma once

#include "imaging/imgobj.h"

#include <QString>

#include <memory>
#include <vector>

namespace tessera {

/// Holds one image of the size of the result, whatever is added. Sums of whole counts are exact up to 2^24,
/// as single precision is.
///
/// A pixel of the result is the sum of nBin × nBin pixels of each image; columns and rows that are left over
/// on the right and at the bottom do not count. With one unusable pixel among its own (isUsablePixel()) it is
/// NaN. With one that reaches the saturation it is at least as large as if all did, so that it is known by
/// the same multiple of that limit.
class CFrameSum {
public:
    /// @param nBin          at least 1
    /// @param dfSaturation  counts; 0: none
    CFrameSum(int nBin, double dfSaturation) : m_nBin(nBin), m_dfSaturation(dfSaturation) {}

    /// @param pstrReason  may be null
    /// @return false, with the sum as it was, for an image of another size than the first, or one smaller
    ///         than a block
    /// @throw std::bad_alloc
    [[nodiscard]] bool add(const CImgObj<float>& image, QString* pstrReason = nullptr);

    /// The sum; null before the first image. Afterwards the object is good for nothing else.
    std::unique_ptr<CImgObj<float>> take();

private:
    void addRow(const CImgObj<float>& image, int nRow);

    int m_nBin;
    double m_dfSaturation;
    int m_nWidth = 0, m_nHeight = 0;  // of what is added
    int m_nAdded = 0;
    std::unique_ptr<CImgObj<float>> m_pSum;
    std::vector<char> m_vecSaturated;
};

}  // namespace tessera
