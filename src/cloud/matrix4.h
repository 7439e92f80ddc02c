// Matrix4: 4×4 matrices as OpenGL keeps them.
#pragma once

#include "records/vec3d.h"

#include <array>

namespace tessera {

/// 4×4 matrix in single precision, column by column as OpenGL keeps them.
typedef std::array<float, 16> Matrix4;

Matrix4 identityMatrix();
/// a·b, each sum of four products in single precision.
Matrix4 multiplied(const Matrix4& a, const Matrix4& b);
/// Rotation by dfAngle (degrees) about an axis of any length, as of glRotate. An axis of length 0 or that is
/// no number gives the identity, whatever the angle.
Matrix4 rotationMatrix(double dfAngle, const Vec3D& axis);
/// As of glOrtho.
Matrix4 orthoMatrix(float fLeft, float fRight, float fBottom, float fTop, float fNear, float fFar);

}  // namespace tessera
