#include "imaging/logcontrast.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace tessera {

namespace {

constexpr int g_nBytes = 256;
// The bucket of 1 + x by the exponent of the float and eight bits of its mantissa. For ranges of one count
// and more that is as fine as a byte of the logarithm.
constexpr int g_nDroppedBits = 15;

std::uint32_t bucketOf(float fOnePlus)
{
    std::uint32_t nBits = 0;
    std::memcpy(&nBits, &fOnePlus, sizeof nBits);
    return nBits >> g_nDroppedBits;
}

float floatOf(std::uint32_t nBucket)
{
    const std::uint32_t nBits = nBucket << g_nDroppedBits;
    float f = 0;
    std::memcpy(&f, &nBits, sizeof f);
    return f;
}

}  // namespace

int FloatToByteLog(const float* pSource, unsigned char* pTarget, int n, float fLow, float fHigh)
{
    if (!pSource || !pTarget) {
        return 0;
    }
    if (!(fHigh > fLow)) {
        std::fill_n(pTarget, std::max(n, 0), static_cast<unsigned char>(0));
        return 1;
    }
    // The smallest value above fLow that gives each byte; never reached behind the last one.
    const double dfScale = std::log1p(double(fHigh) - double(fLow)) / (g_nBytes - 1);
    std::array<float, g_nBytes + 1> aBegin;
    for (int i = 0; i < g_nBytes; ++i) {
        aBegin[i] = float(std::expm1(i * dfScale));
    }
    aBegin[g_nBytes - 1] = std::min(aBegin[g_nBytes - 1], fHigh - fLow);
    aBegin[g_nBytes] = std::numeric_limits<float>::infinity();

    const std::uint32_t nFirst = bucketOf(1.f);
    const std::uint32_t nLast = bucketOf(1.f + (fHigh - fLow));
    std::vector<unsigned char> vecByte(nLast - nFirst + 1);  // the byte of the lower end of each bucket
    for (std::uint32_t i = 0; i < vecByte.size(); ++i) {
        const float f = floatOf(nFirst + i) - 1.f;
        const auto it = std::upper_bound(aBegin.begin(), aBegin.begin() + g_nBytes, f);
        // One less, as the sum 1 + x may have been rounded up into this bucket.
        const auto nByte = it - aBegin.begin() - 1;
        vecByte[i] = static_cast<unsigned char>(std::max<std::ptrdiff_t>(nByte - 1, 0));
    }
    for (int i = 0; i < n; ++i) {
        const float f = pSource[i] - fLow;
        if (!(f > 0)) {
            pTarget[i] = 0;
        } else if (f >= aBegin[g_nBytes - 1]) {
            pTarget[i] = g_nBytes - 1;
        } else {
            std::size_t nByte = vecByte[std::min(bucketOf(1.f + f), nLast) - nFirst];
            while (f >= aBegin[nByte + 1]) {
                ++nByte;
            }
            pTarget[i] = static_cast<unsigned char>(nByte);
        }
    }
    return 1;
}

}  // namespace tessera
