// CViewUpdatePause: many changes of a scene at the cost of one repaint.
#pragma once

#include <QGraphicsView>
#include <QList>
#include <QPair>
#include <QPointer>

class QGraphicsScene;

namespace tessera {

/// Keeps the views of a scene from repainting while it lives; afterwards each view gets its own mode
/// of updating back and is repainted once, as a whole, with the next paint event.
class CViewUpdatePause {
public:
    explicit CViewUpdatePause(QGraphicsScene* pScene);  ///< may be null: nothing is kept
    ~CViewUpdatePause();                                ///< the views repaint again
    CViewUpdatePause(const CViewUpdatePause&) = delete;
    CViewUpdatePause& operator=(const CViewUpdatePause&) = delete;

private:
    QList<QPair<QPointer<QGraphicsView>, QGraphicsView::ViewportUpdateMode>> m_listView;
};

}  // namespace tessera
