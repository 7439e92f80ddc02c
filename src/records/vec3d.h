// Vec3D: a vector of direct or reciprocal space in single precision.
#pragma once

#include <cmath>

namespace tessera {

/// Three components in single precision. Space and unit are documented where a vector is used. Vectors of
/// reciprocal space are in Å⁻¹ in the laboratory frame (x rotation axis, z beam).
struct Vec3D {
    float x = 0.f;
    float y = 0.f;
    float z = 0.f;
};

// All operations round to single precision.

/// Sum.
inline Vec3D operator+(const Vec3D& a, const Vec3D& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
/// Difference.
inline Vec3D operator-(const Vec3D& a, const Vec3D& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
/// Opposite vector.
inline Vec3D operator-(const Vec3D& a)
{
    return {-a.x, -a.y, -a.z};
}
/// Whether all components are equal.
inline bool operator==(const Vec3D& a, const Vec3D& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z;
}
/// Whether a component differs.
inline bool operator!=(const Vec3D& a, const Vec3D& b)
{
    return !(a == b);
}

/// Each component times f, in single precision.
inline Vec3D scaled(const Vec3D& v, float f)
{
    return {v.x * f, v.y * f, v.z * f};
}
/// Each component widened to double, times df, rounded to single precision.
inline Vec3D scaledDouble(const Vec3D& v, double df)
{
    return {float(double(v.x) * df), float(double(v.y) * df), float(double(v.z) * df)};
}
/// Scalar product.
inline float dot(const Vec3D& a, const Vec3D& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
/// Vector product.
inline Vec3D cross(const Vec3D& a, const Vec3D& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
/// Square of the length.
inline float squaredLength(const Vec3D& v)
{
    return dot(v, v);
}
/// Length; the sum of squares and its root are formed in single precision.
inline float length(const Vec3D& v)
{
    return std::sqrt(squaredLength(v));
}

}  // namespace tessera
