// HalfFloat: a floating point number of 16 bits.
#pragma once

#include <cstdint>
#include <cstring>

namespace tessera {

/// An element type for convertPixels(). Every value is exact as a float.
/// Source: IEEE 754-2008, binary16.
struct HalfFloat {
    uint16_t nBits;

    /// The value.
    explicit operator float() const
    {
        // The fields are moved to those of a float, whose exponent has a bias that is greater by 112. The
        // factor corrects this for denormal numbers, too. Infinity and NaN get the highest exponent.
        const uint32_t nMagnitude = uint32_t(nBits & 0x7fffu) << 13;
        const uint32_t nSign = uint32_t(nBits & 0x8000u) << 16;
        float f;
        std::memcpy(&f, &nMagnitude, sizeof(f));
        f *= 0x1p112f;
        uint32_t nFloat;
        std::memcpy(&nFloat, &f, sizeof(f));
        nFloat |= nSign | ((nBits & 0x7c00u) == 0x7c00u ? 0x7f800000u : 0u);
        std::memcpy(&f, &nFloat, sizeof(f));
        return f;
    }
};

}  // namespace tessera
