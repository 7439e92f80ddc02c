// replaceMarks: a whole list of marks on a scene in the place of another.
#pragma once

#include "frameview/viewupdatepause.h"

#include <QGraphicsScene>
#include <QList>

namespace tessera {

/// Deletes the marks of a list, which owns them, and puts new ones onto the scene in their place.
///
/// The views of the scene repaint once, however many marks there are, and not at all when there is
/// neither an old mark nor a new one.
/// @param listNew  marks that are on no scene yet; the list takes them over. Empty: the marks only go
template <typename TItem>
void replaceMarks(QGraphicsScene* pScene, QList<TItem*>& listMark, const QList<TItem*>& listNew = {})
{
    if (listMark.isEmpty() && listNew.isEmpty()) {
        return;
    }
    const CViewUpdatePause pause(pScene);
    qDeleteAll(listMark);
    listMark = listNew;
    if (!pScene) {
        return;
    }
    for (TItem* pItem : listNew) {
        pScene->addItem(pItem);
    }
}

}  // namespace tessera
