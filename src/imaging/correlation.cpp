#include "imaging/correlation.h"

#include "imaging/imageregion.h"
#include "imaging/imageshifts.h"
#include "imaging/imageview.h"
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

constexpr int g_nBox = 10;  // side of the box that is enlarged around the peak
constexpr int g_nHalfBox = 5;
constexpr int g_nEnlarge = 40;

bool isPowerOfTwo(int n)
{
    return n > 0 && (n & (n - 1)) == 0;
}

bool isUsableSize(int nWidth, int nHeight)
{
    return nWidth > 0 && nHeight > 0 && std::int64_t(nWidth) * nHeight <= INT32_MAX;
}

enum class ZeroPoint { AtCorner, AtCentre };

// Natural to centred layout, or back. For even sides both are the swap of quadrants; with an odd side
// they differ by one element.
template <typename T>
void moveZeroPoint(T* pData, int nWidth, int nHeight, ZeroPoint to)
{
    if (nWidth % 2 == 0 && nHeight % 2 == 0) {
        ShiftCenter(pData, nWidth, nHeight);
    } else if (to == ZeroPoint::AtCentre) {
        CyclicShift(pData, nWidth, nHeight, nWidth / 2, nHeight / 2);
    } else {
        CyclicShift(pData, nWidth, nHeight, -(nWidth / 2), -(nHeight / 2));
    }
}

std::unique_ptr<COMPLEX[]> copyOf(const ImageView<const COMPLEX>& image)
{
    std::unique_ptr<COMPLEX[]> pCopy(new COMPLEX[image.count()]);
    std::copy_n(image.p, image.count(), pCopy.get());
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

// The box on one axis: its corner, and the shift of the map that brings a peak near an edge inside.
struct BoxOnAxis {
    int nCorner = 0;
    int nWrap = 0;
};

BoxOnAxis boxOnAxis(int nPeak, int nSize)
{
    if (nPeak - g_nHalfBox < 0) {
        return {0, g_nHalfBox - nPeak};
    }
    if (nPeak - g_nHalfBox + g_nBox > nSize - 1) {
        return {nSize - g_nBox, nSize - nPeak - g_nHalfBox - 1};
    }
    return {nPeak - g_nHalfBox, 0};
}

// Whether the finite values differ by no more than the rounding of a float.
bool isFlat(const ImageView<const float>& map)
{
    float fMin = INFINITY;
    float fMax = -INFINITY;
    for (std::size_t i = 0; i < map.count(); ++i) {
        if (!std::isfinite(map.p[i])) {
            continue;
        }
        fMin = std::min(fMin, map.p[i]);
        fMax = std::max(fMax, map.p[i]);
    }
    return !(double(fMax) - double(fMin) >
             4 * FLT_EPSILON * double(std::max(std::abs(fMin), std::abs(fMax))));
}

float intoSide(float f, int nSize)
{
    f = std::fmod(f, float(nSize));
    return f < 0.f ? f + float(nSize) : f;
}

using Box = std::array<float, g_nBox * g_nBox>;

// The box with its corner at (x, y) in a map that goes on periodically.
Box periodicBox(const ImageView<const float>& map, int x, int y)
{
    const auto wrapped = [](int n, int nSize) { return (n % nSize + nSize) % nSize; };
    Box afBox;
    for (int r = 0; r < g_nBox; ++r) {
        for (int c = 0; c < g_nBox; ++c) {
            afBox[r * g_nBox + c] = map.at(wrapped(x + c, map.nWidth), wrapped(y + r, map.nHeight));
        }
    }
    return afBox;
}

// A pixel of the enlarged box.
struct FinePlace {
    int nX = 0;
    int nY = 0;
};

// The maximum of the enlarged box no more than a pixel of the map away from its middle.
FinePlace maximumNearMiddle(const Box& afBox)
{
    constexpr int nSide = g_nBox * g_nEnlarge;
    constexpr int nFirst = g_nHalfBox * g_nEnlarge - g_nEnlarge;
    constexpr int nLength = 2 * g_nEnlarge + 1;
    std::vector<float> vecEnlarged(nSide * nSide);
    ResizeBicubic(vecEnlarged.data(), nSide, nSide, afBox.data(), g_nBox, g_nBox);
    std::vector<float> vecMiddle(nLength * nLength);
    CopyRegion(vecEnlarged.data(), nSide, nSide, vecMiddle.data(), nFirst, nFirst, nLength, nLength);
    FinePlace place;
    FindMaximum(vecMiddle.data(), nLength, nLength, nullptr, &place.nX, &place.nY);
    return {place.nX + nFirst, place.nY + nFirst};
}

}  // namespace

std::unique_ptr<COMPLEX[]> CCorrelation::CrossSpectrum(int nWidth, int nHeight, const COMPLEX* pA,
                                                       const COMPLEX* pB) const
{
    if (!pA || !pB || !isUsableSize(nWidth, nHeight)) {
        return nullptr;
    }
    const ImageView<const COMPLEX> a{pA, nWidth, nHeight}, b{pB, nWidth, nHeight};
    std::unique_ptr<COMPLEX[]> pResult(new COMPLEX[a.count()]);
    const ImageView<COMPLEX> result{pResult.get(), nWidth, nHeight};
    const auto compute = [&](int c, int r) {
        return result.at(c, r) = crossElement(a.at(c, r), b.at(c, r), m_nMethod);
    };
    // Spectra of real images: the element opposite to the zero frequency is the conjugate. Only rows 0
    // and, at an even height, height/2 are their own mirrors.
    for (int r = 1; r <= (nHeight - 1) / 2; ++r) {
        for (int c = 1; c < nWidth; ++c) {
            const COMPLEX value = compute(c, r);
            result.at(nWidth - c, nHeight - r) = {value.re, -value.im};
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
    } catch (const wchar_t*) {
        // fft2d() throws this when memory runs out; callers get std::bad_alloc, which they catch.
    }
    if (!bDone) {  // fails only for lack of memory; without the transform the shift would be wrong
        throw std::bad_alloc();
    }
}

std::unique_ptr<COMPLEX[]> CCorrelation::CorrelationMap(int nWidth, int nHeight, const COMPLEX* pA,
                                                        const COMPLEX* pB, bool bInverse, bool bTransformed)
{
    if (!pA || !pB || !isUsableSize(nWidth, nHeight)) {
        return nullptr;
    }
    const auto pCopyA = copyOf({pA, nWidth, nHeight});
    const auto pCopyB = copyOf({pB, nWidth, nHeight});
    for (COMPLEX* pCopy : {pCopyA.get(), pCopyB.get()}) {
        if (bTransformed) {
            moveZeroPoint(pCopy, nWidth, nHeight, ZeroPoint::AtCorner);
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
    if (isFlat({pMap, nWidth, nHeight})) {
        fDX = fDY = 0.f;
        return 0;
    }

    if (nWidth < g_nBox || nHeight < g_nBox) {
        // The box may contain periodic copies of the peak, and the edge pixels raise those at the edges.
        const int nCornerX = nX - g_nHalfBox, nCornerY = nY - g_nHalfBox;
        const FinePlace fine = maximumNearMiddle(periodicBox({pMap, nWidth, nHeight}, nCornerX, nCornerY));
        fDX = intoSide(float(fine.nX) / float(g_nEnlarge) + float(nCornerX), nWidth);
        fDY = intoSide(float(fine.nY) / float(g_nEnlarge) + float(nCornerY), nHeight);
        return 1;
    }

    const BoxOnAxis boxX = boxOnAxis(nX, nWidth), boxY = boxOnAxis(nY, nHeight);
    if (boxX.nWrap != 0 || boxY.nWrap != 0) {
        CyclicShift(pMap, nWidth, nHeight, boxX.nWrap, boxY.nWrap);
    }
    Box afBox;
    CopyRegion(pMap, nWidth, nHeight, afBox.data(), boxX.nCorner, boxY.nCorner, g_nBox, g_nBox);
    FinePlace fine;
    FindResizedMaximum(g_nBox * g_nEnlarge, g_nBox * g_nEnlarge, afBox.data(), g_nBox, g_nBox, &fine.nX,
                       &fine.nY);
    fDX = float(fine.nX) / float(g_nEnlarge) + float(boxX.nCorner) - float(boxX.nWrap);
    fDY = float(fine.nY) / float(g_nEnlarge) + float(boxY.nCorner) - float(boxY.nWrap);
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
    const std::size_t nCount = ImageView<float>{nullptr, nWidth, nHeight}.count();
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
    moveZeroPoint(pMap.get(), nWidth, nHeight, ZeroPoint::AtCentre);
    dfPeak = dfValue;
    dfShiftX = fDX;
    dfShiftY = fDY;
    return pMap;
}

}  // namespace tessera
