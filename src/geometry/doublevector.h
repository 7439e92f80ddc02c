// DoubleVector: a vector of direct or reciprocal space in double precision.
#pragma once

#include "records/vec3d.h"

#include <array>

namespace tessera {

/// Three components. Which space and unit they are in is told where one is kept.
using DoubleVector = std::array<double, 3>;

/// The same vector: each component of single precision is one of double precision.
inline DoubleVector widened(const Vec3D& v)
{
    return {double(v.x), double(v.y), double(v.z)};
}

// Sums from the left: results hold to the last bit.
inline double dot(const DoubleVector& a, const DoubleVector& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline DoubleVector cross(const DoubleVector& a, const DoubleVector& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

}  // namespace tessera
