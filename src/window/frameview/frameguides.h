// FrameGuides: what the pointer tells on a frame beside the value of the pixel, and the resolution rings.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"
#include "window/frameview/frameoverlay.h"

#include <QObject>
#include <QPoint>
#include <QPointF>

#include <functional>
#include <optional>

class QAction;
class QLabel;
class QStatusBar;

namespace tessera {

class BaseImgView;
class OriginalImgScene;

/// What the guides ask of the window; none of it is owned.
struct FrameGuidesHost {
    const DataSet* pData = nullptr;
    const MappingParameters* pMapping = nullptr;
    BaseImgView* pView = nullptr;
    OriginalImgScene* pScene = nullptr;
    QStatusBar* pStatusBar = nullptr;
    /// Number of the frame in view, from 0; −1: none is, or a run has its image.
    std::function<int()> fnFrameInView;
    bool bRings = false;                    ///< whether the rings are shown at first
    std::function<void(bool)> fnKeepRings;  ///< keeps this for the next start
};

/// The place under the pointer in reciprocal space at the right of the status bar, rings of equal d*, and the
/// distance of two places between which the pointer is dragged with Shift.
class FrameGuides : public QObject {
    Q_OBJECT

public:
    /// Listens to view and scene of the host, which outlive this.
    explicit FrameGuides(const FrameGuidesHost& host, QObject* pParent = nullptr);

    /// Shows and hides the rings.
    QAction* ringsAction() const { return m_pRings; }
    /// Shows the place under the pointer in the status bar, scene coordinates; nothing beside the frame.
    void readPlace(const QPointF& ptScene);
    /// Another frame is in view, or geometry or limits have changed: the rings are drawn anew.
    void renew();
    /// Takes off what belongs to the frame in view.
    void clear();
    /// Scrolls so far that a place can be seen with what is around it.
    void scrollTo(const QPointF& ptRaw);
    /// For the spots that are chosen.
    CFrameOverlay& overlay() { return m_overlay; }

signals:
    /// The left button went down and up in one place, after the view has had both.
    void clicked(QPointF ptRaw, Qt::KeyboardModifiers modifiers);

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    QPointF rawPlace(const QPoint& ptViewport) const;
    void measureTo(const QPoint& ptViewport);

    FrameGuidesHost m_host;
    CFrameOverlay m_overlay;
    QAction* m_pRings;
    QLabel* m_pLabel;                        ///< of the status bar, which owns it
    QPointF m_ptRead;                        ///< the place that was read last, scene coordinates
    std::optional<QPoint> m_ptPressed;       ///< where the left button went down, viewport
    std::optional<QPointF> m_ptMeasureFrom;  ///< the same with Shift, raw pixels; the drag goes on
};

}  // namespace tessera
