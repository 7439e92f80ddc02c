// CDF2: mixed-radix Fourier transform for sides of any length.
#pragma once

#include "imaging/complex.h"

#include <vector>

namespace tessera {

/// Decimation-in-time transform with butterflies for the radices 2, 3, 4, 5, 8 and 10 and a general
/// one for every other prime factor. Values stay in single precision between the passes, rotations
/// and butterflies are computed in double.
///
/// A general butterfly of radix p costs p²/2 steps. Its work vectors have 2000 entries and grow for
/// a larger prime factor, so that every length has a transform.
///
/// CCorrelation takes it for sides that are no power of two. CAcmlFft has any side, too, but rounds
/// otherwise, and shifts would differ from those measured before in their last digits.
///
/// Source: Singleton (1969), IEEE Trans. Audio Electroacoust. 17, 93 (mixed radix, odd factors);
/// Winograd (1978), Math. Comput. 32, 175 (radix 3 and 5).
class CDF2 {
public:
    CDF2();  ///< without tables

    /// One-dimensional transform of n elements from pIn to pOut, which must not overlap.
    ///
    /// @param nDirection  0 forward, kernel exp(−2πi(…)), unscaled; 1 inverse, scaled by 1/n, which
    ///                    leaves pIn conjugated
    /// @return 1, or 0 with nothing done for a null buffer, n < 1 or another direction
    int fft(int n, COMPLEX* pIn, COMPLEX* pOut, int nDirection);

    /// Two-dimensional transform in place, rows first. Directions as in fft.
    /// @return 1; 0 with nothing done for null data, a side below 1 or another direction; 0 with data that
    ///         are of no use (a forward transform leaves them as they were) when there is no memory for the
    ///         tables
    /// @throw const wchar_t* when there is no memory for the temporary image
    int fft2d(int nWidth, int nHeight, COMPLEX* pData, int nDirection);

private:
    struct Z {
        double re;
        double im;
    };

    void Factorize(int n);
    void MakeTables(int n);
    void Permute(const COMPLEX* pIn, COMPLEX* pOut) const;
    void Pass(int nFactor, COMPLEX* pData);
    void Butterfly(int nRadix, Z* pZ);
    void Radix3(Z* pZ) const;
    static void Radix4(Z* pZ);
    void Radix5(Z* pZ) const;
    void Radix8(Z* pZ) const;
    void Radix10(Z* pZ) const;
    void RadixOdd(int nRadix, Z* pZ);

    double m_dfPi;
    double m_dfC3_1, m_dfC3_2;
    double m_dfU5, m_dfC5_1, m_dfC5_2, m_dfC5_3, m_dfC5_4, m_dfC5_5;
    double m_dfC8;

    std::vector<double> m_vecSumRe, m_vecSumIm;  // pair sums and differences of the odd butterfly
    std::vector<double> m_vecDiffRe, m_vecDiffIm;
    std::vector<double> m_vecTrigRe, m_vecTrigIm;        // cos and sin of 2πj/radix, for m_nTrigRadix
    std::vector<double> m_vecTwiddleRe, m_vecTwiddleIm;  // exp(−2πij/length)
    std::vector<Z> m_vecZ;                               // the values of one butterfly
    int m_nTrigRadix = 0;

    int m_nActualRadix[20];
    int m_nSoFarRadix[20];
    int m_nRemainRadix[20];
    int m_nFactors = 0;
    int m_nLength = 0;
};

}  // namespace tessera
