// CCamera: rotation, pan and zoom of the 3D view, and the matrices that follow from them.
#pragma once

#include "records/vec3d.h"

#include <QMatrix4x4>

namespace tessera {

/// A direction of the mouse on the half ball that fills the widget: (x, y) in its pixels from the upper left
/// corner, z towards the viewer. Unit length; beyond the ball's edge in the plane of the screen.
Vec3D trackballVector(int nX, int nY, int nWidth, int nHeight);

/// The square of the greater side about the middle of a widget, or with bKeepAspect false all of it.
/// Device pixels: left, bottom, width, height.
void squareViewport(int nWidth, int nHeight, bool bKeepAspect, int* pViewport);

/// Rotation by dfAngle (degrees) about an axis of any length, as of glRotate. An axis of length 0 or that is
/// no number gives the identity, whatever the angle. QMatrix4x4::rotate() takes no axis below 1e-6 for one,
/// and the mouse turns about shorter ones.
QMatrix4x4 rotationMatrix(double dfAngle, const Vec3D& axis);

/// Where the viewer stands. Matrices in single precision, as OpenGL takes them.
class CCamera {
public:
    float m_fZoom = 0.f;  ///< added to the half width of the view volume, Å⁻¹
    float m_fPanX = 0.f;  ///< shift of the view volume, Å⁻¹
    float m_fPanY = 0.f;
    float m_fViewBound = 2.f;  ///< half width of the view volume at zoom 0, Å⁻¹
    QMatrix4x4 m_fRotation;    ///< of the scene, before pan and zoom; no rotation at the start

    /// Whether all five members are equal, to the last bit.
    bool operator==(const CCamera& other) const;
    /// Zoom and pan 0, no rotation.
    void reset();
    /// Adds to the zoom, Å⁻¹. Where that would leave less than a tenth of the view volume's width, the width
    /// is halved instead: it never gets to 0, beyond which the picture would stand upside down.
    void changeZoom(float fChange);
    /// Sets the zoom, at the least to the smallest width.
    void setZoom(float fZoom);
    /// Turns v towards the viewer; the rotation before it is dropped. An axis of turn doesn't exist along z:
    /// with v along +z or -z there is no rotation at all. A v of length 0 changes nothing.
    void viewAlong(const Vec3D& v);
    /// Turns v towards the viewer on the shortest way from where it is; what is upright stays nearly so. A v
    /// of length 0 changes nothing.
    void turnTowards(const Vec3D& v);
    /// Turns the scene about axis 0, 1 or 2 of the screen, degrees.
    void rotateAroundScreen(int nAxis, double dfAngle);
    /// Turns the scene as the ball under the mouse turns from one trackball vector to another.
    void rotateTrackball(const Vec3D& vecFrom, const Vec3D& vecTo);
    /// The direction of reciprocal space that points at the viewer: the third row of the rotation.
    Vec3D viewDirection() const;

    /// The view volume as of glOrtho. The identity, or not finite, where isFlat().
    QMatrix4x4 projection() const;
    /// The zoom has made the view volume's width 0.
    bool isFlat() const;
    /// Factor on sizes that keeps them in step with the zoom.
    float sizeFactor() const;

private:
    /// The range of the view volume along one axis of the screen, Å⁻¹.
    struct Reach {
        float fLow, fHigh;
    };

    Reach reachX() const;
    Reach reachY() const;
    void setRotation(const QMatrix4x4& matrix);
};

}  // namespace tessera
