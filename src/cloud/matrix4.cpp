#include "cloud/matrix4.h"

#include <cmath>

#include "records/pi.h"

namespace tessera {

Matrix4 identityMatrix()
{
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}

Matrix4 multiplied(const Matrix4& a, const Matrix4& b)
{
    Matrix4 product;
    for (size_t c = 0; c < 16; c += 4) {
        for (size_t r = 0; r < 4; ++r) {
            product[c + r] = a[r] * b[c] + a[4 + r] * b[c + 1] + a[8 + r] * b[c + 2] + a[12 + r] * b[c + 3];
        }
    }
    return product;
}

Matrix4 rotationMatrix(double dfAngle, const Vec3D& axis)
{
    const double dfLength = std::hypot(double(axis.x), double(axis.y), double(axis.z));
    if (!(dfLength > 0.0) || !std::isfinite(dfLength) || !std::isfinite(dfAngle)) {
        return identityMatrix();
    }
    const double dfRadians = dfAngle * (g_dfPi / 180.0);
    const double x = axis.x / dfLength, y = axis.y / dfLength, z = axis.z / dfLength;
    const double s = std::sin(dfRadians), c = std::cos(dfRadians), t = 1.0 - c;
    return {float(x * x * t + c),
            float(y * x * t + z * s),
            float(z * x * t - y * s),
            0,
            float(x * y * t - z * s),
            float(y * y * t + c),
            float(z * y * t + x * s),
            0,
            float(x * z * t + y * s),
            float(y * z * t - x * s),
            float(z * z * t + c),
            0,
            0,
            0,
            0,
            1};
}

Matrix4 orthoMatrix(float fLeft, float fRight, float fBottom, float fTop, float fNear, float fFar)
{
    Matrix4 matrix = identityMatrix();
    matrix[0] = 2.f / (fRight - fLeft);
    matrix[5] = 2.f / (fTop - fBottom);
    matrix[10] = -2.f / (fFar - fNear);
    matrix[12] = -(fRight + fLeft) / (fRight - fLeft);
    matrix[13] = -(fTop + fBottom) / (fTop - fBottom);
    matrix[14] = -(fFar + fNear) / (fFar - fNear);
    return matrix;
}

}  // namespace tessera
