#include "imaging/cdf2.h"

#include "imaging/imageview.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

namespace tessera {

namespace {

constexpr int g_nWorkEntries = 2000;

}  // namespace

CDF2::CDF2()
    : m_vecSumRe(g_nWorkEntries),
      m_vecSumIm(g_nWorkEntries),
      m_vecDiffRe(g_nWorkEntries),
      m_vecDiffIm(g_nWorkEntries),
      m_vecTrigRe(g_nWorkEntries),
      m_vecTrigIm(g_nWorkEntries)
{
    m_dfPi = 4.0 * std::atan(1.0);
    m_dfC3_1 = std::cos(2.0 * m_dfPi / 3.0) - 1.0;
    m_dfC3_2 = std::sin(2.0 * m_dfPi / 3.0);
    m_dfU5 = 2.0 * m_dfPi / 5.0;
    m_dfC5_1 = (std::cos(m_dfU5) + std::cos(2.0 * m_dfU5)) / 2.0 - 1.0;
    m_dfC5_2 = (std::cos(m_dfU5) - std::cos(2.0 * m_dfU5)) / 2.0;
    m_dfC5_3 = -std::sin(m_dfU5);
    m_dfC5_4 = -(std::sin(m_dfU5) + std::sin(2.0 * m_dfU5));
    m_dfC5_5 = std::sin(m_dfU5) - std::sin(2.0 * m_dfU5);
    m_dfC8 = 1.0 / std::sqrt(2.0);
}

void CDF2::Factorize(int n)
{
    int anFactor[20];
    m_nFactors = 0;
    int nRest = n;
    for (int nRadix : {10, 8, 5, 4, 3, 2}) {
        while (nRest % nRadix == 0) {
            anFactor[m_nFactors++] = nRadix;
            nRest /= nRadix;
        }
    }
    // 8 × 2 costs more than 4 × 4.
    if (m_nFactors > 0 && anFactor[m_nFactors - 1] == 2) {
        for (int i = m_nFactors - 2; i >= 0; --i) {
            if (anFactor[i] == 8) {
                anFactor[i] = anFactor[m_nFactors - 1] = 4;
                break;
            }
        }
    }
    for (int nDivisor = 2; nRest > 1 && std::sqrt(double(nRest)) + 1.0 > nDivisor; ++nDivisor) {
        while (nRest % nDivisor == 0) {
            anFactor[m_nFactors++] = nDivisor;
            nRest /= nDivisor;
        }
    }
    if (nRest > 1) {
        anFactor[m_nFactors++] = nRest;
    }

    std::reverse(anFactor, anFactor + m_nFactors);
    int nSoFar = 1;
    for (int i = 0; i < m_nFactors; ++i) {
        m_nActualRadix[i] = anFactor[i];
        m_nSoFarRadix[i] = nSoFar;
        nSoFar *= anFactor[i];
        m_nRemainRadix[i] = n / nSoFar;
    }
}

void CDF2::MakeTables(int n)
{
    if (n == m_nLength) {
        return;
    }
    m_nLength = 0;
    Factorize(n);
    m_vecTwiddleRe.resize(n);
    m_vecTwiddleIm.resize(n);
    for (int i = 0; i < n; ++i) {
        const double dfAngle = 2.0 * m_dfPi * i / n;
        m_vecTwiddleRe[i] = std::cos(dfAngle);
        m_vecTwiddleIm[i] = -std::sin(dfAngle);
    }
    int nLargest = 10;
    for (int i = 0; i < m_nFactors; ++i) {
        nLargest = std::max(nLargest, m_nActualRadix[i]);
    }
    if (m_vecZ.size() < std::size_t(nLargest)) {
        m_vecZ.resize(nLargest);
    }
    if (m_vecSumRe.size() < std::size_t(nLargest)) {
        for (auto* pVec :
             {&m_vecSumRe, &m_vecSumIm, &m_vecDiffRe, &m_vecDiffIm, &m_vecTrigRe, &m_vecTrigIm}) {
            pVec->resize(nLargest);
        }
    }
    m_nLength = n;
}

// Digit reversal: the place Σ dᵢ·soFarᵢ takes the element Σ dᵢ·remainᵢ. Counts up the digits of the
// place, the first factor fastest, and moves the source index along.
void CDF2::Permute(const COMPLEX* pIn, COMPLEX* pOut) const
{
    int anDigit[20] = {};
    int nSource = 0;
    for (int nPlace = 0; nPlace < m_nLength; ++nPlace) {
        pOut[nPlace] = pIn[nSource];
        for (int i = 0; i < m_nFactors; ++i) {
            nSource += m_nRemainRadix[i];
            if (++anDigit[i] < m_nActualRadix[i]) {
                break;
            }
            nSource -= m_nActualRadix[i] * m_nRemainRadix[i];
            anDigit[i] = 0;
        }
    }
}

void CDF2::Radix3(Z* z) const
{
    const Z sum{z[1].re + z[2].re, z[1].im + z[2].im};
    const Z diff{m_dfC3_2 * (z[1].re - z[2].re), m_dfC3_2 * (z[1].im - z[2].im)};
    z[0] = {z[0].re + sum.re, z[0].im + sum.im};
    const Z mid{z[0].re + m_dfC3_1 * sum.re, z[0].im + m_dfC3_1 * sum.im};
    z[1] = {mid.re + diff.im, mid.im - diff.re};
    z[2] = {mid.re - diff.im, mid.im + diff.re};
}

void CDF2::Radix4(Z* z)
{
    const Z a{z[0].re + z[2].re, z[0].im + z[2].im};
    const Z b{z[0].re - z[2].re, z[0].im - z[2].im};
    const Z c{z[1].re + z[3].re, z[1].im + z[3].im};
    const Z d{z[1].re - z[3].re, z[1].im - z[3].im};
    z[0] = {a.re + c.re, a.im + c.im};
    z[1] = {b.re + d.im, b.im - d.re};
    z[2] = {a.re - c.re, a.im - c.im};
    z[3] = {b.re - d.im, b.im + d.re};
}

void CDF2::Radix5(Z* z) const
{
    const Z t1{z[1].re + z[4].re, z[1].im + z[4].im};
    const Z t2{z[2].re + z[3].re, z[2].im + z[3].im};
    const Z t3{z[1].re - z[4].re, z[1].im - z[4].im};
    const Z t4{z[2].re - z[3].re, z[2].im - z[3].im};
    const Z t5{t1.re + t2.re, t1.im + t2.im};
    z[0] = {z[0].re + t5.re, z[0].im + t5.im};
    const Z m2{m_dfC5_2 * (t1.re - t2.re), m_dfC5_2 * (t1.im - t2.im)};
    const Z m3{m_dfC5_3 * (t3.re - t4.re), m_dfC5_3 * (t3.im - t4.im)};
    const Z s{z[0].re + m_dfC5_1 * t5.re, z[0].im + m_dfC5_1 * t5.im};
    const Z even1{s.re + m2.re, s.im + m2.im};
    const Z even2{s.re - m2.re, s.im - m2.im};
    const Z odd1{m3.re + m_dfC5_4 * t4.re, m3.im + m_dfC5_4 * t4.im};
    const Z odd2{m3.re + m_dfC5_5 * t3.re, m3.im + m_dfC5_5 * t3.im};
    z[1] = {even1.re - odd1.im, even1.im + odd1.re};
    z[4] = {even1.re + odd1.im, even1.im - odd1.re};
    z[2] = {even2.re - odd2.im, even2.im + odd2.re};
    z[3] = {even2.re + odd2.im, even2.im - odd2.re};
}

void CDF2::Radix8(Z* z) const
{
    Z even[4] = {z[0], z[2], z[4], z[6]};
    Z odd[4] = {z[1], z[3], z[5], z[7]};
    Radix4(even);
    Radix4(odd);
    odd[1] = {m_dfC8 * (odd[1].re + odd[1].im), m_dfC8 * (odd[1].im - odd[1].re)};
    odd[2] = {odd[2].im, -odd[2].re};
    odd[3] = {m_dfC8 * (odd[3].im - odd[3].re), -m_dfC8 * (odd[3].re + odd[3].im)};
    for (int i = 0; i < 4; ++i) {
        z[i] = {even[i].re + odd[i].re, even[i].im + odd[i].im};
        z[i + 4] = {even[i].re - odd[i].re, even[i].im - odd[i].im};
    }
}

// Good's mapping: 2 and 5 have no common factor, so no twiddles stand between the two stages.
void CDF2::Radix10(Z* z) const
{
    Z a[5] = {z[0], z[2], z[4], z[6], z[8]};
    Z b[5] = {z[5], z[7], z[9], z[1], z[3]};
    Radix5(a);
    Radix5(b);
    for (int i = 0; i < 10; ++i) {
        const double dfSign = i % 2 ? -1.0 : 1.0;
        z[i] = {a[i % 5].re + dfSign * b[i % 5].re, a[i % 5].im + dfSign * b[i % 5].im};
    }
}

void CDF2::RadixOdd(int nRadix, Z* z)
{
    const int nPairs = (nRadix - 1) / 2;
    double* pSumRe = m_vecSumRe.data();
    double* pSumIm = m_vecSumIm.data();
    double* pDiffRe = m_vecDiffRe.data();
    double* pDiffIm = m_vecDiffIm.data();
    if (m_nTrigRadix != nRadix) {
        for (int j = 0; j < nRadix; ++j) {
            m_vecTrigRe[j] = std::cos(2.0 * m_dfPi * j / nRadix);
            m_vecTrigIm[j] = std::sin(2.0 * m_dfPi * j / nRadix);
        }
        m_nTrigRadix = nRadix;
    }
    const double* pCos = m_vecTrigRe.data();
    const double* pSin = m_vecTrigIm.data();

    const Z first = z[0];
    for (int j = 1; j <= nPairs; ++j) {
        pSumRe[j] = z[j].re + z[nRadix - j].re;
        pSumIm[j] = z[j].im + z[nRadix - j].im;
        pDiffRe[j] = z[j].re - z[nRadix - j].re;
        pDiffIm[j] = z[j].im - z[nRadix - j].im;
        z[0].re += pSumRe[j];
        z[0].im += pSumIm[j];
    }
    for (int k = 1; k <= nPairs; ++k) {
        Z even = first;
        Z odd{0.0, 0.0};
        int nAngle = 0;  // j·k mod radix
        for (int j = 1; j <= nPairs; ++j) {
            nAngle += k;
            if (nAngle >= nRadix) {
                nAngle -= nRadix;
            }
            even.re += pSumRe[j] * pCos[nAngle];
            even.im += pSumIm[j] * pCos[nAngle];
            odd.re += pDiffRe[j] * pSin[nAngle];
            odd.im += pDiffIm[j] * pSin[nAngle];
        }
        z[k] = {even.re + odd.im, even.im - odd.re};
        z[nRadix - k] = {even.re - odd.im, even.im + odd.re};
    }
}

void CDF2::Butterfly(int nRadix, Z* z)
{
    switch (nRadix) {
        case 2: {
            const Z second = z[1];
            z[1] = {z[0].re - second.re, z[0].im - second.im};
            z[0] = {z[0].re + second.re, z[0].im + second.im};
            break;
        }
        case 3:
            Radix3(z);
            break;
        case 4:
            Radix4(z);
            break;
        case 5:
            Radix5(z);
            break;
        case 8:
            Radix8(z);
            break;
        case 10:
            Radix10(z);
            break;
        default:
            RadixOdd(nRadix, z);
    }
}

void CDF2::Pass(int nFactor, COMPLEX* pData)
{
    const int nRadix = m_nActualRadix[nFactor];
    const int nSoFar = m_nSoFarRadix[nFactor];
    const int nRemain = m_nRemainRadix[nFactor];
    Z* z = m_vecZ.data();
    for (int nBlock = 0; nBlock < nRemain; ++nBlock) {
        // A block is as many lines as the radix, each as long as what has been transformed so far.
        const ImageView<COMPLEX> block{pData + std::ptrdiff_t(nBlock) * nSoFar * nRadix, nSoFar, nRadix};
        for (int k = 0; k < nSoFar; ++k) {
            for (int j = 0; j < nRadix; ++j) {
                const COMPLEX value = block.at(k, j);
                // j·k < radix × soFar, so the index stays below the length
                const std::size_t nTwiddle = std::size_t(j) * std::size_t(k) * std::size_t(nRemain);
                const double dfCos = m_vecTwiddleRe[nTwiddle];
                const double dfSin = m_vecTwiddleIm[nTwiddle];
                z[j] = {value.re * dfCos - value.im * dfSin, value.re * dfSin + value.im * dfCos};
            }
            Butterfly(nRadix, z);
            for (int j = 0; j < nRadix; ++j) {
                block.at(k, j) = {float(z[j].re), float(z[j].im)};
            }
        }
    }
}

int CDF2::fft(int n, COMPLEX* pIn, COMPLEX* pOut, int nDirection)
{
    if (!pIn || !pOut || n < 1 || (nDirection != 0 && nDirection != 1)) {
        return 0;
    }
    MakeTables(n);
    if (nDirection == 1) {
        for (int i = 0; i < n; ++i) {
            pIn[i].im = -pIn[i].im;
        }
    }
    Permute(pIn, pOut);
    for (int i = 0; i < m_nFactors; ++i) {
        Pass(i, pOut);
    }
    if (nDirection == 1) {
        const double dfScale = 1.0 / n;
        for (int i = 0; i < n; ++i) {
            pOut[i] = {float(pOut[i].re * dfScale), float(-pOut[i].im * dfScale)};
        }
    }
    return 1;
}

int CDF2::fft2d(int nWidth, int nHeight, COMPLEX* pData, int nDirection)
{
    if (!pData || nWidth < 1 || nHeight < 1 || (nDirection != 0 && nDirection != 1)) {
        return 0;
    }
    const ImageView<COMPLEX> image{pData, nWidth, nHeight};
    std::unique_ptr<COMPLEX[]> pRows(new (std::nothrow) COMPLEX[image.count()]);
    if (!pRows) {
        throw L"Eorror in CDF2::fft2d\n";
    }
    const ImageView<COMPLEX> rows{pRows.get(), nWidth, nHeight};
    try {
        std::vector<COMPLEX> vecIn(static_cast<std::size_t>(nHeight)), vecOut(vecIn.size());
        for (int y = 0; y < nHeight; ++y) {
            fft(nWidth, image.row(y), rows.row(y), nDirection);
        }
        for (int x = 0; x < nWidth; ++x) {
            for (int y = 0; y < nHeight; ++y) {
                vecIn[y] = rows.at(x, y);
            }
            fft(nHeight, vecIn.data(), vecOut.data(), nDirection);
            for (int y = 0; y < nHeight; ++y) {
                image.at(x, y) = vecOut[y];
            }
        }
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return 1;
}

}  // namespace tessera
