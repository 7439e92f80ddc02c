#include "cloud/camera.h"

#include "geometry/doublevector.h"
#include "records/pi.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfDegree = g_dfPi / 180.0;
const float g_fLeastHalfWidth = 0.001f;  // Å⁻¹: a hundredth of the rows of the largest cells

Vec3D row(const Matrix4& matrix, size_t nRow)
{
    return {matrix[nRow], matrix[4 + nRow], matrix[8 + nRow]};
}

}  // namespace

Vec3D trackballVector(int nX, int nY, int nWidth, int nHeight)
{
    if (nWidth <= 0 || nHeight <= 0) {
        return {0.f, 0.f, 1.f};
    }
    const double x = (2.0 * nX - nWidth) / nWidth, y = (nHeight - 2.0 * nY) / nHeight;
    const double z = std::cos(g_dfPi / 2.0 * std::min(std::hypot(x, y), 1.0));
    const double dfLength = std::hypot(x, y, z);
    return {float(x / dfLength), float(y / dfLength), float(z / dfLength)};
}

void squareViewport(int nWidth, int nHeight, bool bKeepAspect, int* pViewport)
{
    const int nSide = std::max(nWidth, nHeight);
    pViewport[0] = bKeepAspect ? (nWidth - nSide) / 2 : 0;
    pViewport[1] = bKeepAspect ? (nHeight - nSide) / 2 : 0;
    pViewport[2] = bKeepAspect ? nSide : nWidth;
    pViewport[3] = bKeepAspect ? nSide : nHeight;
}

bool CCamera::operator==(const CCamera& other) const
{
    return m_fZoom == other.m_fZoom && m_fPanX == other.m_fPanX && m_fPanY == other.m_fPanY &&
           m_fViewBound == other.m_fViewBound && m_fRotation == other.m_fRotation;
}

void CCamera::reset()
{
    m_fZoom = m_fPanX = m_fPanY = 0.f;
    m_fRotation = identityMatrix();
}

void CCamera::changeZoom(float fChange)
{
    const float fHalfWidth = m_fViewBound + m_fZoom;
    setZoom(fHalfWidth + fChange < 0.1f * fHalfWidth ? 0.5f * fHalfWidth - m_fViewBound : m_fZoom + fChange);
}

void CCamera::setZoom(float fZoom)
{
    const float fLeast = g_fLeastHalfWidth - m_fViewBound;
    m_fZoom = fZoom < fLeast ? fLeast : fZoom;
}

void CCamera::viewAlong(const Vec3D& v)
{
    const double dfLength = std::hypot(double(v.x), double(v.y), double(v.z));
    if (!(dfLength > 0.0) || !std::isfinite(dfLength)) {
        return;
    }
    const double dfAngle = std::acos(std::clamp(double(v.z) / dfLength, -1.0, 1.0)) / g_dfDegree;
    setRotation(rotationMatrix(dfAngle, {v.y, -v.x, 0.f}));
}

void CCamera::turnTowards(const Vec3D& v)
{
    const DoubleVector direction = widened(v);
    const double dfLength = std::sqrt(dot(direction, direction));
    if (!(dfLength > 0.0) || !std::isfinite(dfLength)) {
        return;
    }
    // On the screen; the axis of the turn lies in its plane.
    const auto along = [&](size_t nRow) {
        return dot(widened(row(m_fRotation, nRow)), direction) / dfLength;
    };
    const double dfX = along(0), dfY = along(1), dfZ = along(2);
    const double dfOff = std::hypot(dfX, dfY);
    const Vec3D axis = dfOff > 0.0 ? Vec3D{float(dfY / dfOff), float(-dfX / dfOff), 0.f}
                                   : Vec3D{0.f, 1.f, 0.f};
    setRotation(multiplied(rotationMatrix(std::atan2(dfOff, dfZ) / g_dfDegree, axis), m_fRotation));
}

void CCamera::rotateAroundScreen(int nAxis, double dfAngle)
{
    setRotation(multiplied(m_fRotation, rotationMatrix(dfAngle, row(m_fRotation, size_t(nAxis)))));
}

void CCamera::rotateTrackball(const Vec3D& vecFrom, const Vec3D& vecTo)
{
    const double dfAngle = double(length(vecTo - vecFrom)) * 60.0;
    setRotation(multiplied(rotationMatrix(dfAngle, cross(vecFrom, vecTo)), m_fRotation));
}

Vec3D CCamera::viewDirection() const
{
    return row(m_fRotation, 2);
}

Matrix4 CCamera::projection() const
{
    const float b = m_fViewBound, z = m_fZoom;
    return orthoMatrix(-b - m_fPanX - z, b - m_fPanX + z, -b - m_fPanY - z, b - m_fPanY + z, -b, b);
}

bool CCamera::isFlat() const
{
    const Matrix4 matrix = projection();
    return !std::isfinite(matrix[0]) || !std::isfinite(matrix[5]) || !std::isfinite(matrix[12]) ||
           !std::isfinite(matrix[13]);
}

float CCamera::sizeFactor() const
{
    return m_fViewBound / std::abs(m_fViewBound + m_fZoom);
}

// Rounding adds up over thousands of turns by the mouse: the columns are made orthonormal again, by Gram and
// Schmidt, which changes the last digits only.
void CCamera::setRotation(const Matrix4& matrix)
{
    const auto normalised = [](const DoubleVector& v) {
        const double dfLength = std::hypot(v[0], v[1], v[2]);
        return DoubleVector{v[0] / dfLength, v[1] / dfLength, v[2] / dfLength};
    };
    const auto a = normalised({matrix[0], matrix[1], matrix[2]});
    const double dfDot = dot(a, {matrix[4], matrix[5], matrix[6]});
    const auto b = normalised({matrix[4] - dfDot * a[0], matrix[5] - dfDot * a[1], matrix[6] - dfDot * a[2]});
    const std::array<DoubleVector, 3> aColumn = {a, b, cross(a, b)};
    Matrix4 next = identityMatrix();
    for (size_t c = 0; c < 3; ++c) {
        for (size_t r = 0; r < 3; ++r) {
            if (!std::isfinite(aColumn[c][r])) {
                return;
            }
            next[4 * c + r] = float(aColumn[c][r]);
        }
    }
    m_fRotation = next;
}

}  // namespace tessera
