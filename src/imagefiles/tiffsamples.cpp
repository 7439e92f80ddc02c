#include "imagefiles/tiffsamples.h"

#include "imagefiles/pixelconvert.h"

#include <qfloat16.h>

#include <algorithm>

namespace tessera {

namespace {

constexpr float g_fGreyWeight = 64;                    ///< sum of the weights of the colours
constexpr float g_afColourWeight[] = {19, 2 * 19, 7};  ///< red, green, blue, as for all pictures
constexpr float g_fWhite = 255;

void convertHalves(const uint8_t* p, size_t nCount, bool bSwap, float* pf)
{
    constexpr size_t nBlock = 256;
    qfloat16 aHalf[nBlock];
    for (size_t nDone = 0; nDone < nCount; nDone += nBlock) {
        const size_t n = std::min(nBlock, nCount - nDone);
        std::memcpy(static_cast<void*>(aHalf), p + 2 * nDone, 2 * n);
        if (bSwap) {
            qbswap<2>(aHalf, qsizetype(n), aHalf);
        }
        qFloatFromFloat16(pf + nDone, aHalf, qsizetype(n));
    }
}

/// Converts samples of fewer than 16 bits, which are packed from the high bit of each byte on.
void convertBits(const uint8_t* p, size_t nCount, int nBits, bool bSigned, float* pf)
{
    uint32_t nKept = 0;
    int nKeptBits = 0;
    const int32_t nSign = bSigned ? 1 << (nBits - 1) : 0;
    for (size_t i = 0; i < nCount; ++i) {
        while (nKeptBits < nBits) {
            nKept = (nKept & 0xffffU) << 8 | *p++;
            nKeptBits += 8;
        }
        nKeptBits -= nBits;
        const auto n = int32_t(nKept >> nKeptBits & ((1U << nBits) - 1));
        pf[i] = float((n ^ nSign) - nSign);
    }
}

template <class T>
void convertAs(const uint8_t* p, size_t nCount, bool bSwap, float* pf)
{
    if (bSwap) {
        convertPixels<T, true>(p, nCount, pf);
    } else {
        convertPixels<T, false>(p, nCount, pf);
    }
}

}  // namespace

CTiffRows::CTiffRows(const TiffLayout& layout, bool bSwap, float* pfImage)
    : m_layout(layout), m_bSwap(bSwap), m_pfImage(pfImage)
{
    if (layout.samplesInRow() > 1 || planes() > 1) {
        m_vecRow.resize(size_t(std::min(layout.nSegmentWidth, layout.nWidth)) *
                        size_t(layout.samplesInRow()));
    }
}

void CTiffRows::put(const uint8_t* p, int nX, int nY, int nRows, int nPlane)
{
    const size_t nPixels = size_t(std::min(m_layout.nSegmentWidth, m_layout.nWidth - nX));
    const int nRowsWithin = std::min(nRows, m_layout.nHeight - nY);
    for (int i = 0; i < nRowsWithin; ++i) {
        putRow(p + uint64_t(i) * m_layout.rowBytes(), nPixels, nPlane,
               m_pfImage + size_t(nY + i) * size_t(m_layout.nWidth) + size_t(nX));
    }
}

void CTiffRows::putRow(const uint8_t* p, size_t nPixels, int nPlane, float* pf)
{
    const size_t nSamples = size_t(m_layout.samplesInRow());
    float* const pfRow = m_vecRow.empty() ? pf : m_vecRow.data();
    convert(p, nPixels * nSamples, pfRow);
    if (m_layout.pixels == TiffPixels::Colour && m_layout.bSeparate) {
        for (size_t i = 0; i < nPixels; ++i) {
            pf[i] += g_afColourWeight[nPlane] * pfRow[i];
        }
    } else if (m_layout.pixels == TiffPixels::Colour) {
        for (size_t i = 0; i < nPixels; ++i) {
            const float* const pfPixel = pfRow + i * nSamples;
            pf[i] = g_afColourWeight[0] * pfPixel[0] + g_afColourWeight[1] * pfPixel[1] +
                    g_afColourWeight[2] * pfPixel[2];
        }
    } else if (pfRow != pf) {
        for (size_t i = 0; i < nPixels; ++i) {
            pf[i] = pfRow[i * nSamples];
        }
    }
    if (m_layout.pixels == TiffPixels::Grey) {
        for (size_t i = 0; i < nPixels; ++i) {
            pf[i] = g_fGreyWeight * (m_layout.bWhiteIsZero ? g_fWhite - pf[i] : pf[i]);
        }
    }
}

void CTiffRows::convert(const uint8_t* p, size_t nCount, float* pf) const
{
    constexpr int nFloats = 3, nSigned = 2;
    const bool bFloat = m_layout.nFormat == nFloats, bSigned = m_layout.nFormat == nSigned;
    switch (m_layout.nBits) {
        case 8:
            return bSigned ? convertAs<int8_t>(p, nCount, m_bSwap, pf)
                           : convertAs<uint8_t>(p, nCount, m_bSwap, pf);
        case 16:
            return bFloat    ? convertHalves(p, nCount, m_bSwap, pf)
                   : bSigned ? convertAs<int16_t>(p, nCount, m_bSwap, pf)
                             : convertAs<uint16_t>(p, nCount, m_bSwap, pf);
        case 32:
            return bFloat    ? convertAs<float>(p, nCount, m_bSwap, pf)
                   : bSigned ? convertAs<int32_t>(p, nCount, m_bSwap, pf)
                             : convertAs<uint32_t>(p, nCount, m_bSwap, pf);
        case 64:
            return bFloat    ? convertAs<double>(p, nCount, m_bSwap, pf)
                   : bSigned ? convertAs<int64_t>(p, nCount, m_bSwap, pf)
                             : convertAs<uint64_t>(p, nCount, m_bSwap, pf);
        default:
            return convertBits(p, nCount, m_layout.nBits, bSigned, pf);
    }
}

}  // namespace tessera
