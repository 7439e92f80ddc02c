// Replacing whole lists of marks on a scene at the cost of one repaint.
#pragma once

#include <QGraphicsScene>
#include <QGraphicsView>
#include <QList>
#include <QPair>
#include <QPointer>

/// Keeps the views of a scene from repainting while it lives; afterwards each view gets its own mode
/// of updating back and is repainted once, as a whole, with the next paint event.
class CViewUpdatePause {
public:
    explicit CViewUpdatePause(QGraphicsScene* pScene);
    ~CViewUpdatePause();
    CViewUpdatePause(const CViewUpdatePause&) = delete;
    CViewUpdatePause& operator=(const CViewUpdatePause&) = delete;

private:
    QList<QPair<QPointer<QGraphicsView>, QGraphicsView::ViewportUpdateMode>> m_listView;
};

/// Deletes the marks of a list, which owns them, and puts new ones onto the scene in their place.
///
/// The views of the scene repaint once, however many marks there are, and not at all when there is
/// neither an old mark nor a new one.
/// @param listNew  marks that are on no scene yet; the list takes them over. Empty: the marks only go
template <typename TItem>
void replaceMarks(QGraphicsScene* pScene, QList<TItem*>& listMark, const QList<TItem*>& listNew = {})
{
    if (listMark.isEmpty() && listNew.isEmpty())
        return;
    const CViewUpdatePause pause(pScene);
    qDeleteAll(listMark);
    listMark = listNew;
    if (!pScene)
        return;
    for (TItem* pItem : listNew)
        pScene->addItem(pItem);
}
