// Vector3 and Matrix3: small vectors and matrices in double precision.
#pragma once

#include <array>
#include <cmath>

namespace tessera {

using Vector3 = std::array<double, 3>;
using Matrix3 = std::array<Vector3, 3>;  ///< row by row; a lattice basis holds one vector per row

inline Vector3 operator+(const Vector3& a, const Vector3& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
inline Vector3 operator-(const Vector3& a, const Vector3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vector3 operator*(double df, const Vector3& a)
{
    return {df * a[0], df * a[1], df * a[2]};
}
inline double dotProduct(const Vector3& a, const Vector3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline double lengthOf(const Vector3& a)
{
    return std::sqrt(dotProduct(a, a));
}
inline Vector3 crossProduct(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
/// Matrix times column vector.
inline Vector3 operator*(const Matrix3& m, const Vector3& v)
{
    return {dotProduct(m[0], v), dotProduct(m[1], v), dotProduct(m[2], v)};
}
inline Matrix3 transposed(const Matrix3& m)
{
    return {Vector3{m[0][0], m[1][0], m[2][0]}, Vector3{m[0][1], m[1][1], m[2][1]},
            Vector3{m[0][2], m[1][2], m[2][2]}};
}
/// Row vector times matrix: with a basis in the rows, the vector of the given indices.
inline Vector3 operator*(const Vector3& v, const Matrix3& m)
{
    return transposed(m) * v;
}
inline Matrix3 operator*(const Matrix3& a, const Matrix3& b)
{
    return {a[0] * b, a[1] * b, a[2] * b};
}
inline double determinantOf(const Matrix3& m)
{
    return dotProduct(m[0], crossProduct(m[1], m[2]));
}
/// The inverse; elements that are not finite when the determinant is 0.
inline Matrix3 inverseOf(const Matrix3& m)
{
    const double df = 1 / determinantOf(m);
    return transposed(
        {df * crossProduct(m[1], m[2]), df * crossProduct(m[2], m[0]), df * crossProduct(m[0], m[1])});
}

}  // namespace tessera
