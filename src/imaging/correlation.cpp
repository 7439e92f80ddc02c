#include "imaging/correlation.h"

#include "imaging/imageregion.h"
#include "imaging/imageshifts.h"
#include "imaging/maximumsearch.h"
#include "imaging/resizebicubic.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace tessera {

namespace {

constexpr int nBox = 10;  // side of the box that is enlarged around the peak
constexpr int nHalfBox = 5;
constexpr int nEnlarge = 40;

bool isPowerOfTwo(int n)
{
    return n > 0 && (n & (n - 1)) == 0;
}

bool isUsableSize(int nWidth, int nHeight)
{
    return nWidth > 0 && nHeight > 0 && std::int64_t(nWidth) * nHeight <= INT32_MAX;
}

// Natural to centred layout, or back. For even sides both are the swap of quadrants; with an odd side
// they differ by one element.
template <typename T>
void moveZeroPoint(T* pData, int nWidth, int nHeight, bool bToCentre)
{
    if (nWidth % 2 == 0 && nHeight % 2 == 0) {
        ShiftCenter(pData, nWidth, nHeight);
    } else if (bToCentre) {
        CyclicShift(pData, nWidth, nHeight, nWidth / 2, nHeight / 2);
    } else {
        CyclicShift(pData, nWidth, nHeight, -(nWidth / 2), -(nHeight / 2));
    }
}

std::unique_ptr<COMPLEX[]> copyOf(const COMPLEX* pData, std::size_t nCount)
{
    std::unique_ptr<COMPLEX[]> pCopy(new COMPLEX[nCount]);
    std::copy(pData, pData + nCount, pCopy.get());
    return pCopy;
}

float amplitude(float fRe, float fIm)
{
    const float fSquare = fRe * fRe + fIm * fIm;
    if (std::isinf(fSquare)) {
        return float(std::sqrt(double(fRe) * fRe + double(fIm) * fIm));
    }
    return std::sqrt(fSquare);
}

COMPLEX crossElement(const COMPLEX& a, const COMPLEX& b, int nMethod)
{
    const float fRe = a.re * b.re + a.im * b.im;
    const float fIm = a.re * b.im - a.im * b.re;
    if (fRe == 0.f && fIm == 0.f) {  // most of a low-passed spectrum; the weight of 0 is 0
        return {fRe, fIm};
    }
    if (nMethod == 1) {
        const float fDivisor = std::sqrt(amplitude(fRe, fIm)) + 10000.f;
        return {fRe / fDivisor, fIm / fDivisor};
    }
    if (nMethod == 2) {
        const float fDivisor = amplitude(fRe, fIm) + 100000000.f;
        return {fRe / fDivisor, fIm / fDivisor};
    }
    return {fRe, fIm};
}

// Corner of the box on one axis, and the shift that brings a peak near an edge inside.
void boxOnAxis(int nPeak, int nSize, int& nCorner, int& nWrap)
{
    nCorner = nPeak - nHalfBox;
    nWrap = 0;
    if (nCorner < 0) {
        nCorner = 0;
        nWrap = nHalfBox - nPeak;
    } else if (nCorner + nBox > nSize - 1) {
        nCorner = nSize - nBox;
        nWrap = nSize - nPeak - nHalfBox - 1;
    }
}

// Whether the finite values differ by no more than the rounding of a float.
bool isFlat(const float* pData, std::size_t nCount)
{
    float fMin = INFINITY;
    float fMax = -INFINITY;
    for (std::size_t i = 0; i < nCount; ++i) {
        if (!std::isfinite(pData[i])) {
            continue;
        }
        fMin = std::min(fMin, pData[i]);
        fMax = std::max(fMax, pData[i]);
    }
    return !(double(fMax) - double(fMin) >
             4 * FLT_EPSILON * double(std::max(std::abs(fMin), std::abs(fMax))));
}

float intoSide(float f, int nSize)
{
    f = std::fmod(f, float(nSize));
    return f < 0.f ? f + float(nSize) : f;
}

}  // namespace

std::unique_ptr<COMPLEX[]> CCorrelation::CrossSpectrum(int nWidth, int nHeight, const COMPLEX* pA,
                                                       const COMPLEX* pB) const
{
    if (!pA || !pB || !isUsableSize(nWidth, nHeight)) {
        return nullptr;
    }
    const std::size_t nRow = std::size_t(nWidth);
    std::unique_ptr<COMPLEX[]> pResult(new COMPLEX[nRow * std::size_t(nHeight)]);
    const auto compute = [&](int c, int r) {
        const std::size_t nIndex = std::size_t(r) * nRow + std::size_t(c);
        return pResult[nIndex] = crossElement(pA[nIndex], pB[nIndex], m_nMethod);
    };
    // Spectra of real images: the element opposite to the zero frequency is the conjugate. Only rows 0
    // and, at an even height, height/2 are their own mirrors.
    for (int r = 1; r <= (nHeight - 1) / 2; ++r) {
        for (int c = 1; c < nWidth; ++c) {
            const COMPLEX value = compute(c, r);
            pResult[std::size_t(nHeight - r) * nRow + std::size_t(nWidth - c)] = {value.re, -value.im};
        }
    }
    for (int c = 1; c < nWidth; ++c) {
        compute(c, 0);
        if (nHeight % 2 == 0) {
            compute(c, nHeight / 2);
        }
    }
    for (int r = 0; r < nHeight; ++r) {
        compute(0, r);
    }
    return pResult;
}

void CCorrelation::Transform(COMPLEX* pData, int nWidth, int nHeight, bool bForward)
{
    bool bDone = false;
    try {
        bDone = isPowerOfTwo(nWidth) && isPowerOfTwo(nHeight)
                    ? m_fft.Transform(pData, nWidth, nHeight, bForward ? -1 : 1) != 0
                    : m_df2.fft2d(nWidth, nHeight, pData, bForward ? 0 : 1) != 0;
    } catch (const wchar_t*) {  // not what the slots of a window expect
    }
    if (!bDone) {  // only memory can be missing; what is not transformed would give some other shift
        throw std::bad_alloc();
    }
}

std::unique_ptr<COMPLEX[]> CCorrelation::CorrelationMap(int nWidth, int nHeight, const COMPLEX* pA,
                                                        const COMPLEX* pB, bool bInverse, bool bTransformed)
{
    if (!pA || !pB || !isUsableSize(nWidth, nHeight)) {
        return nullptr;
    }
    const std::size_t nCount = std::size_t(nWidth) * std::size_t(nHeight);
    const auto pCopyA = copyOf(pA, nCount);
    const auto pCopyB = copyOf(pB, nCount);
    for (COMPLEX* pCopy : {pCopyA.get(), pCopyB.get()}) {
        if (bTransformed) {
            moveZeroPoint(pCopy, nWidth, nHeight, false);
        } else {
            Transform(pCopy, nWidth, nHeight, true);
        }
    }
    auto pResult = CrossSpectrum(nWidth, nHeight, pCopyA.get(), pCopyB.get());
    if (bInverse) {
        Transform(pResult.get(), nWidth, nHeight, false);
    }
    return pResult;
}

int CCorrelation::FindCorrelationPeak(float* pMap, int nWidth, int nHeight, double& dfPeak, float& fDX,
                                      float& fDY) const
{
    if (!pMap || !isUsableSize(nWidth, nHeight)) {
        return 0;
    }
    int nX = 0;
    int nY = 0;
    FindMaximum(pMap, nWidth, nHeight, &dfPeak, &nX, &nY);
    if (isFlat(pMap, std::size_t(nWidth) * std::size_t(nHeight))) {
        fDX = fDY = 0.f;
        return 0;
    }

    const bool bSmall = nWidth < nBox || nHeight < nBox;
    int nCornerX = nX - nHalfBox;
    int nCornerY = nY - nHalfBox;
    int nWrapX = 0;
    int nWrapY = 0;
    std::array<float, nBox * nBox> afBox;
    if (bSmall) {
        const auto wrapped = [](int n, int nSize) { return (n % nSize + nSize) % nSize; };
        for (int r = 0; r < nBox; ++r) {
            for (int c = 0; c < nBox; ++c) {
                afBox[std::size_t(r) * std::size_t(nBox) + std::size_t(c)] =
                    pMap[std::size_t(wrapped(nCornerY + r, nHeight)) * std::size_t(nWidth) +
                         std::size_t(wrapped(nCornerX + c, nWidth))];
            }
        }
    } else {
        boxOnAxis(nX, nWidth, nCornerX, nWrapX);
        boxOnAxis(nY, nHeight, nCornerY, nWrapY);
        if (nWrapX != 0 || nWrapY != 0) {
            CyclicShift(pMap, nWidth, nHeight, nWrapX, nWrapY);
        }
        CopyRegion(pMap, nWidth, nHeight, afBox.data(), nCornerX, nCornerY, nBox, nBox);
    }

    constexpr int nSide = nBox * nEnlarge;
    int nFineX = 0;
    int nFineY = 0;
    if (bSmall) {
        // The box may hold the peak more than once, and the edge pixels raise its copies at the edges.
        constexpr int nCentre = nHalfBox * nEnlarge;
        std::vector<float> vecEnlarged(std::size_t(nSide) * std::size_t(nSide));
        ResizeBicubic(vecEnlarged.data(), nSide, nSide, afBox.data(), nBox, nBox);
        std::vector<float> vecCentre(std::size_t(2 * nEnlarge + 1) * std::size_t(2 * nEnlarge + 1));
        CopyRegion(vecEnlarged.data(), nSide, nSide, vecCentre.data(), nCentre - nEnlarge, nCentre - nEnlarge,
                   2 * nEnlarge + 1, 2 * nEnlarge + 1);
        FindMaximum(vecCentre.data(), 2 * nEnlarge + 1, 2 * nEnlarge + 1, nullptr, &nFineX, &nFineY);
        nFineX += nCentre - nEnlarge;
        nFineY += nCentre - nEnlarge;
    } else {
        FindResizedMaximum(nSide, nSide, afBox.data(), nBox, nBox, &nFineX, &nFineY);
    }
    fDX = float(nFineX) / float(nEnlarge) + float(nCornerX) - float(nWrapX);
    fDY = float(nFineY) / float(nEnlarge) + float(nCornerY) - float(nWrapY);
    if (bSmall) {
        fDX = intoSide(fDX, nWidth);
        fDY = intoSide(fDY, nHeight);
    }
    return 1;
}

std::unique_ptr<float[]> Correlate(const COMPLEX* pA, const COMPLEX* pB, int nWidth, int nHeight, int nMethod,
                                   double& dfPeak, double& dfShiftX, double& dfShiftY, bool bTransformed,
                                   bool* pbPeakFound)
{
    if (nMethod < 0 || nMethod > 2) {
        return nullptr;
    }
    CCorrelation correlation;
    correlation.SetMethod(nMethod);
    auto pComplexMap = correlation.CorrelationMap(nWidth, nHeight, pA, pB, true, bTransformed);
    if (!pComplexMap) {
        return nullptr;
    }
    const std::size_t nCount = std::size_t(nWidth) * std::size_t(nHeight);
    std::unique_ptr<float[]> pMap(new float[nCount]);
    for (std::size_t i = 0; i < nCount; ++i) {
        pMap[i] = pComplexMap[i].re;
    }
    pComplexMap.reset();

    double dfValue = 0.0;
    float fDX = 0.f;
    float fDY = 0.f;
    std::vector<float> vecSearch(pMap.get(), pMap.get() + nCount);  // the search moves its map
    const int nFound = correlation.FindCorrelationPeak(vecSearch.data(), nWidth, nHeight, dfValue, fDX, fDY);
    if (pbPeakFound) {
        *pbPeakFound = nFound != 0;
    }
    const int nMiddleX = nWidth / 2, nMiddleY = nHeight / 2;
    if (fDX > float(nMiddleX)) {
        fDX -= float(nWidth);
    }
    if (fDY > float(nMiddleY)) {
        fDY -= float(nHeight);
    }
    moveZeroPoint(pMap.get(), nWidth, nHeight, true);
    dfPeak = dfValue;
    dfShiftX = fDX;
    dfShiftY = fDY;
    return pMap;
}

}  // namespace tessera
