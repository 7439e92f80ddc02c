#include "frameview/viewupdatepause.h"

#include <QGraphicsScene>

namespace tessera {

CViewUpdatePause::CViewUpdatePause(QGraphicsScene* pScene)
{
    if (!pScene) {
        return;
    }
    for (QGraphicsView* pView : pScene->views()) {
        m_listView.append({pView, pView->viewportUpdateMode()});
        pView->setViewportUpdateMode(QGraphicsView::NoViewportUpdate);
    }
}

CViewUpdatePause::~CViewUpdatePause()
{
    for (const auto& pair : m_listView) {
        if (!pair.first) {
            continue;
        }
        pair.first->setViewportUpdateMode(pair.second);
        pair.first->viewport()->update();
    }
}

}  // namespace tessera
