#include "cloud/camera.h"

#include "geometry/doublevector.h"
#include "records/pi.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfDegree = g_dfPi / 180.0;  // radians

// Å⁻¹. The view is then 0.002 Å⁻¹ wide, as far as the points of a cell edge of 500 Å lie apart: a still
// closer view has hardly a second point to show.
const float g_fLeastHalfWidth = 0.001f;

// Degrees of turn per length of the chord between two points of the trackball. A chord of length 1 spans 60
// degrees of the unit ball, so that the scene follows the mouse to within 5 % for chords up to 1.
const double g_dfDegreesPerChord = 60.0;

Vec3D row(const QMatrix4x4& matrix, int nRow)
{
    return {matrix(nRow, 0), matrix(nRow, 1), matrix(nRow, 2)};
}

DoubleVector column(const QMatrix4x4& matrix, int nColumn)
{
    return {matrix(0, nColumn), matrix(1, nColumn), matrix(2, nColumn)};
}

DoubleVector normalised(const DoubleVector& v)
{
    const double dfLength = std::hypot(v[0], v[1], v[2]);
    return {v[0] / dfLength, v[1] / dfLength, v[2] / dfLength};
}

}  // namespace

Vec3D trackballVector(int nX, int nY, int nWidth, int nHeight)
{
    if (nWidth <= 0 || nHeight <= 0) {
        return {0.f, 0.f, 1.f};
    }
    // In units of half the widget, from its middle.
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

QMatrix4x4 rotationMatrix(double dfAngle, const Vec3D& axis)
{
    const double dfLength = std::hypot(double(axis.x), double(axis.y), double(axis.z));
    if (!(dfLength > 0.0) || !std::isfinite(dfLength) || !std::isfinite(dfAngle)) {
        return {};
    }
    // Rodrigues' formula.
    const double dfRadians = dfAngle * g_dfDegree;
    const double x = axis.x / dfLength, y = axis.y / dfLength, z = axis.z / dfLength;
    const double s = std::sin(dfRadians), c = std::cos(dfRadians), t = 1.0 - c;
    // clang-format off
    return {float(x * x * t + c),     float(x * y * t - z * s), float(x * z * t + y * s), 0,
            float(y * x * t + z * s), float(y * y * t + c),     float(y * z * t - x * s), 0,
            float(z * x * t - y * s), float(z * y * t + x * s), float(z * z * t + c),     0,
            0, 0, 0, 1};
    // clang-format on
}

bool CCamera::operator==(const CCamera& other) const
{
    return m_fZoom == other.m_fZoom && m_fPanX == other.m_fPanX && m_fPanY == other.m_fPanY &&
           m_fViewBound == other.m_fViewBound && m_fRotation == other.m_fRotation;
}

void CCamera::reset()
{
    m_fZoom = m_fPanX = m_fPanY = 0.f;
    m_fRotation.setToIdentity();
}

void CCamera::changeZoom(float fChange)
{
    const float fHalfWidth = m_fViewBound + m_fZoom;
    setZoom(fHalfWidth + fChange < 0.1f * fHalfWidth ? 0.5f * fHalfWidth - m_fViewBound : m_fZoom + fChange);
}

void CCamera::setZoom(float fZoom)
{
    if (!std::isfinite(fZoom)) {
        return;
    }
    const float fLeast = g_fLeastHalfWidth - m_fViewBound;
    m_fZoom = fZoom < fLeast ? fLeast : fZoom;
}

void CCamera::viewAlong(const Vec3D& v)
{
    const double dfLength = std::hypot(double(v.x), double(v.y), double(v.z));
    if (!(dfLength > 0.0) || !std::isfinite(dfLength)) {
        return;
    }
    // The axis v × z turns v towards z, which points at the viewer.
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
    // The components of v in the frame of the screen. The axis of the turn lies in the plane of the screen.
    const auto along = [&](int nRow) { return dot(widened(row(m_fRotation, nRow)), direction) / dfLength; };
    const double dfX = along(0), dfY = along(1), dfZ = along(2);
    const double dfAside = std::hypot(dfX, dfY);  // sine of the angle between v and the view
    const Vec3D axis = dfAside > 0.0 ? Vec3D{float(dfY / dfAside), float(-dfX / dfAside), 0.f}
                                     : Vec3D{0.f, 1.f, 0.f};
    setRotation(rotationMatrix(std::atan2(dfAside, dfZ) / g_dfDegree, axis) * m_fRotation);
}

void CCamera::rotateAroundScreen(int nAxis, double dfAngle)
{
    // A row of the rotation is an axis of the screen in the frame of the scene, so the turn comes first.
    setRotation(m_fRotation * rotationMatrix(dfAngle, row(m_fRotation, nAxis)));
}

void CCamera::rotateTrackball(const Vec3D& vecFrom, const Vec3D& vecTo)
{
    const double dfAngle = double(length(vecTo - vecFrom)) * g_dfDegreesPerChord;
    setRotation(rotationMatrix(dfAngle, cross(vecFrom, vecTo)) * m_fRotation);
}

Vec3D CCamera::viewDirection() const
{
    return row(m_fRotation, 2);
}

CCamera::Reach CCamera::reachX() const
{
    return {-m_fViewBound - m_fPanX - m_fZoom, m_fViewBound - m_fPanX + m_fZoom};
}

CCamera::Reach CCamera::reachY() const
{
    return {-m_fViewBound - m_fPanY - m_fZoom, m_fViewBound - m_fPanY + m_fZoom};
}

QMatrix4x4 CCamera::projection() const
{
    const Reach x = reachX(), y = reachY();
    QMatrix4x4 matrix;
    matrix.ortho(x.fLow, x.fHigh, y.fLow, y.fHigh, -m_fViewBound, m_fViewBound);
    return matrix;
}

bool CCamera::isFlat() const
{
    // The two elements that glOrtho computes for an axis.
    const auto isFlatAlong = [](const Reach& reach) {
        const float fWidth = reach.fHigh - reach.fLow;
        return !std::isfinite(2.f / fWidth) || !std::isfinite((reach.fHigh + reach.fLow) / fWidth);
    };
    return isFlatAlong(reachX()) || isFlatAlong(reachY());
}

float CCamera::sizeFactor() const
{
    return m_fViewBound / std::abs(m_fViewBound + m_fZoom);
}

// Rounding errors add up over thousands of turns by the mouse. So the columns are made orthonormal again by
// the method of Gram and Schmidt, which changes the last digits only. A matrix for which that does not give
// finite numbers is not taken.
void CCamera::setRotation(const QMatrix4x4& matrix)
{
    const DoubleVector second = column(matrix, 1);
    const DoubleVector a = normalised(column(matrix, 0));
    const double dfDot = dot(a, second);
    const DoubleVector b = normalised(
        {second[0] - dfDot * a[0], second[1] - dfDot * a[1], second[2] - dfDot * a[2]});
    const std::array<DoubleVector, 3> aColumn = {a, b, cross(a, b)};
    QMatrix4x4 next;
    for (int c = 0; c < 3; ++c) {
        for (int r = 0; r < 3; ++r) {
            if (!std::isfinite(aColumn[c][r])) {
                return;
            }
            next(r, c) = float(aColumn[c][r]);
        }
    }
    m_fRotation = next;
}

}  // namespace tessera
