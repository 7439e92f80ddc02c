// BaseImgView: the view on a frame scene; the wheel asks for another zoom factor.
#pragma once

#include <QElapsedTimer>
#include <QGraphicsView>
#include <QPoint>

namespace tessera {

/// Shows a scene at a zoom factor that the owner sets; the wheel only asks for the next one, and keeps the
/// place under the pointer where it is when it gets it.
///
/// The pointer is tracked without a button held, so that the scene can report the pixel under it.
/// A context menu made of the view's actions waits until the right button is let go, and stays away
/// when the pointer was dragged: dragging with the right button reads pixel values.
class BaseImgView : public QGraphicsView {
    Q_OBJECT

public:
    /// A view without a scene.
    explicit BaseImgView(QWidget* pParent = nullptr);
    /// A view of a scene, which it does not own.
    explicit BaseImgView(QGraphicsScene* pScene, QWidget* pParent = nullptr);

    /// Screen pixels per frame pixel.
    double scaleFactor() const { return transform().m11(); }
    /// Sets the factor, above 0, and emits scaleChanged. A factor within 0.001 of the present one
    /// changes nothing.
    void setScaleFactor(double dfScale);

signals:
    /// After a change of the scale: screen pixels per frame pixel.
    void scaleChanged(double scale);
    /// The wheel asks for the next larger scale.
    void zoomIn();
    /// The wheel asks for the next smaller one.
    void zoomOut();

protected:
    bool viewportEvent(QEvent* pEvent) override;
    void mousePressEvent(QMouseEvent* pEvent) override;
    void mouseMoveEvent(QMouseEvent* pEvent) override;
    void mouseReleaseEvent(QMouseEvent* pEvent) override;
    void wheelEvent(QWheelEvent* pEvent) override;

private:
    void init();
    int wheelStep(int nAngle, Qt::ScrollPhase phase);

    QPoint m_ptRightPress;
    bool m_bRightHeld = false;
    bool m_bRightDragged = false;
    bool m_bMenuPending = false;  ///< the menu was asked for by the press and waits for the release
    QElapsedTimer m_clockWheel;   ///< since the last small angle of the wheel; not valid after a full one
    int m_nWheelAngle = 0;        ///< small angles since the last step, eighths of a degree
};

}  // namespace tessera
