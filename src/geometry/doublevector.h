// DoubleVector: a vector of direct or reciprocal space in double precision.
#pragma once

#include "records/vec3d.h"

#include <array>

namespace tessera {

/// Three components. Space and unit are documented where a vector is used.
using DoubleVector = std::array<double, 3>;

/// Converts a vector to double precision, without loss.
inline DoubleVector widened(const Vec3D& v)
{
    return {double(v.x), double(v.y), double(v.z)};
}

// Sums are formed from left to right. Another order would change the last bits of the results.

/// Scalar product.
inline double dot(const DoubleVector& a, const DoubleVector& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// Vector product.
inline DoubleVector cross(const DoubleVector& a, const DoubleVector& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

}  // namespace tessera
