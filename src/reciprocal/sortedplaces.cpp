#include "reciprocal/sortedplaces.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

namespace tessera {

namespace {

constexpr int g_nBits = 11;  // of a digit: its counts stay in the first cache
constexpr uint64_t g_nDigitMask = (uint64_t(1) << g_nBits) - 1;

}  // namespace

std::vector<int> sortedPlaces(std::vector<uint64_t> vecKey)
{
    const size_t nCount = vecKey.size();
    std::vector<int> vecPlace(nCount);
    uint64_t nDifferent = 0;
    for (size_t n = 0; n < nCount; ++n) {
        vecPlace[n] = int(n);
        nDifferent |= vecKey[n] ^ vecKey[0];
    }
    std::vector<uint64_t> vecOtherKey(nCount);
    std::vector<int> vecOtherPlace(nCount);
    for (int nShift = 0; nShift < 64; nShift += g_nBits) {
        if (((nDifferent >> nShift) & g_nDigitMask) == 0) {
            continue;
        }
        std::array<size_t, g_nDigitMask + 1> anNext{};
        for (const uint64_t nKey : vecKey) {
            ++anNext[(nKey >> nShift) & g_nDigitMask];
        }
        size_t nBefore = 0;
        for (size_t& nNext : anNext) {
            const size_t nOfDigit = nNext;
            nNext = nBefore;
            nBefore += nOfDigit;
        }
        for (size_t n = 0; n < nCount; ++n) {
            const size_t nTo = anNext[(vecKey[n] >> nShift) & g_nDigitMask]++;
            vecOtherKey[nTo] = vecKey[n];
            vecOtherPlace[nTo] = vecPlace[n];
        }
        vecKey.swap(vecOtherKey);
        vecPlace.swap(vecOtherPlace);
    }
    return vecPlace;
}

uint64_t ascendingKey(double dfValue)
{
    if (std::isnan(dfValue)) {
        return std::numeric_limits<uint64_t>::max();
    }
    const double df = dfValue + 0.0;  // −0 becomes 0
    uint64_t nBits;
    std::memcpy(&nBits, &df, sizeof(nBits));
    const uint64_t nSign = uint64_t(1) << 63;
    return nBits & nSign ? ~nBits : nBits | nSign;
}

}  // namespace tessera
