// CCamera: rotation, pan and zoom of the 3D view, and the matrices that follow from them.
#pragma once

#include "records/vec3d.h"

#include <QMatrix4x4>

namespace tessera {

/// The point of the half ball, which fills the widget, under the mouse, as a unit vector from the middle of
/// the ball in the frame of the screen: x to the right, y upwards, z towards the viewer. Where the mouse is
/// beyond the edge of the ball, z is 0 up to rounding.
/// @param nX, nY  place of the mouse, pixels from the upper left corner of the widget
/// @param nWidth, nHeight  of the widget, pixels; below 1 gives (0, 0, 1)
Vec3D trackballVector(int nX, int nY, int nWidth, int nHeight);

/// The viewport of a widget: the square about its middle with its greater side, which reaches beyond the
/// shorter one so that x and y have one scale, or with bKeepAspect false the widget itself.
/// @param pViewport  takes left, bottom, width and height as of glViewport, device pixels
void squareViewport(int nWidth, int nHeight, bool bKeepAspect, int* pViewport);

/// Rotation by dfAngle (degrees) about an axis of any length, as of glRotate. An axis of length 0 or that is
/// not finite gives the identity, and so does an angle that is not finite. QMatrix4x4::rotate() does not
/// serve, as it does not turn about an axis shorter than 1e-6, and the mouse gives shorter ones.
QMatrix4x4 rotationMatrix(double dfAngle, const Vec3D& axis);

/// From where, and how large, a scene of reciprocal space is seen. The frame of the scene is that of the
/// points, the laboratory frame at tilt 0; that of the screen has x to the right, y upwards and z towards the
/// viewer. The projection is parallel. Matrices are in single precision, as OpenGL takes them.
class CCamera {
public:
    float m_fZoom = 0.f;  ///< added to the half width of the view volume, Å⁻¹: negative enlarges
    float m_fPanX = 0.f;  ///< shift of the scene to the right, Å⁻¹; the view volume moves to the left
    float m_fPanY = 0.f;  ///< shift of the scene upwards, Å⁻¹
    float m_fViewBound = 2.f;  ///< half width of the view volume at zoom 0, Å⁻¹
    QMatrix4x4 m_fRotation;    ///< from the frame of the scene to that of the screen; at first the identity

    /// Whether all five members are equal, to the last bit.
    bool operator==(const CCamera& other) const;
    /// Zoom and pan 0, no rotation.
    void reset();
    /// Adds to the zoom, Å⁻¹. Where that would leave less than a tenth of the view volume's width, the width
    /// is halved instead. So the width never becomes 0 or negative, which would turn the picture upside down.
    void changeZoom(float fChange);
    /// Sets the zoom, at the least to the smallest width. A number that is not finite changes nothing.
    void setZoom(float fZoom);
    /// Replaces the rotation by the shortest one that turns v, a vector in the frame of the scene, towards
    /// the viewer. For v along +z or -z the axis of the turn is not defined, and the rotation becomes the
    /// identity: a v along -z then points away from the viewer. A v of length 0, or that is not finite,
    /// changes nothing.
    void viewAlong(const Vec3D& v);
    /// Turns the scene from its present rotation on by the shortest way that brings v, a vector in the frame
    /// of the scene, towards the viewer; what is upright stays nearly so. A v that points away from the
    /// viewer is turned about the vertical. A v of length 0, or that is not finite, changes nothing.
    void turnTowards(const Vec3D& v);
    /// Turns the scene about x, y or z (nAxis 0, 1, 2) of the screen; degrees, counter-clockwise as seen from
    /// the positive end of the axis.
    void rotateAroundScreen(int nAxis, double dfAngle);
    /// Turns the scene with the ball under the mouse, from one vector of trackballVector() to another.
    void rotateTrackball(const Vec3D& vecFrom, const Vec3D& vecTo);
    /// The direction, in the frame of the scene, that points at the viewer: the third row of the rotation.
    Vec3D viewDirection() const;

    /// The matrix of the view volume, as of glOrtho; where isFlat(), the identity or one that is not finite.
    QMatrix4x4 projection() const;
    /// Whether the view volume is so narrow that its matrix is not finite.
    bool isFlat() const;
    /// Magnification against zoom 0, by which sizes in pixels are multiplied so that they follow the zoom.
    float sizeFactor() const;

private:
    /// The limits of the view volume along one axis of the screen, Å⁻¹.
    struct Reach {
        float fLow, fHigh;
    };

    Reach reachX() const;
    Reach reachY() const;
    void setRotation(const QMatrix4x4& matrix);
};

}  // namespace tessera
