// CellParameters: the six numbers of a direct cell.
#pragma once

#include <array>

namespace tessera {

/// Lengths in Å; angles in degrees: alpha between b and c, beta between a and c, gamma between a and b.
struct CellParameters {
    double a = 0;
    double b = 0;
    double c = 0;
    double alpha = 0;
    double beta = 0;
    double gamma = 0;

    /// In the order a, b, c, α, β, γ.
    std::array<double, 6> numbers() const { return {a, b, c, alpha, beta, gamma}; }
};

}  // namespace tessera
