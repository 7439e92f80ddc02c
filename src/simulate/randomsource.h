// CRandomSource: random numbers that are the same with every compiler and library.
#pragma once

#include <cstdint>
#include <random>

namespace tessera {

/// Distributions of its own over std::mt19937_64, whose raw numbers the standard fixes; the
/// standard leaves the algorithms of its distributions open.
class CRandomSource {
public:
    /// Sources with the same seed and different streams are independent.
    CRandomSource(std::uint64_t nSeed, std::uint64_t nStream);

    double uniform();               ///< 0 <= u < 1, 53 bits
    double normal();                ///< mean 0, variance 1 (Box & Muller, 1958)
    double poisson(double dfMean);  ///< exact below 50, the rounded normal distribution above

private:
    std::mt19937_64 m_engine;
    double m_dfSpare = 0;
    bool m_bSpare = false;
};

}  // namespace tessera
