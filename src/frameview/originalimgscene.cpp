#include "frameview/originalimgscene.h"

#include "frameview/selrectitem.h"

#include <cmath>

namespace tessera {

OriginalImgScene::OriginalImgScene(QWidget* pParent) : BaseImgScene(pParent), m_pSelRectItem(new SelRectItem)
{
    m_pSelRectItem->setPenColor(Qt::yellow);
    m_pSelRectItem->setVisible(false);
    addItem(m_pSelRectItem);
    connect(this, &QGraphicsScene::sceneRectChanged, this, &OriginalImgScene::updateSelRectBoundingBox);
    connect(m_pSelRectItem, &SelRectItem::positionChanged, this, &OriginalImgScene::reemitSelRectPosChanged);
}

bool OriginalImgScene::isPreset(int nIndex) const
{
    return nIndex >= 1 && nIndex < m_listSelectionRect.size();
}

void OriginalImgScene::addSelectionRect(int w, int h)
{
    m_listSelectionRect.append(QRectF(-w / 2.0, -h / 2.0, w, h));
}

void OriginalImgScene::setSelectionRects(const QList<QRectF>& listRect)
{
    if (listRect.size() == m_listSelectionRect.size() && m_nSelectionIndex == 0) {
        m_listSelectionRect = listRect;
    }
}

void OriginalImgScene::setSelectionIndex(int nIndex)
{
    if (isPreset(m_nSelectionIndex)) {
        m_listSelectionRect[m_nSelectionIndex].moveTopLeft(selectionRect().topLeft());
    }

    m_nSelectionIndex = 0;
    if (!isPreset(nIndex)) {
        m_pSelRectItem->setSelSize(0.0, 0.0);
        m_pSelRectItem->setVisible(false);
        return;
    }
    const QRectF rectPreset = m_listSelectionRect[nIndex];
    if (imageSize().width() < rectPreset.width() || imageSize().height() < rectPreset.height()) {
        m_pSelRectItem->setVisible(false);
        return;
    }
    m_pSelRectItem->setSelSize(rectPreset.width(), rectPreset.height());
    m_nSelectionIndex = nIndex;  // before the move, whose receivers may ask for the rectangle
    m_pSelRectItem->setPos(rectPreset.center());
    m_pSelRectItem->setVisible(true);
}

QRectF OriginalImgScene::selectionRect() const
{
    if (!isPreset(m_nSelectionIndex)) {
        return {};
    }
    const QSizeF size = m_listSelectionRect[m_nSelectionIndex].size();
    const QPointF pt = m_pSelRectItem->scenePos() - QPointF(size.width() / 2.0, size.height() / 2.0);
    return {QPointF(std::floor(pt.x()), std::floor(pt.y())), size};
}

void OriginalImgScene::updateViewScale(double scale)
{
    if (scale > 0.0) {
        m_pSelRectItem->setPenWidth(1.0 / scale);
    }
}

void OriginalImgScene::updateSelRectBoundingBox(QRectF rect)
{
    if (rect == m_pSelRectItem->bound()) {  // Qt compares rectangles with a relative tolerance of 1e-12
        return;
    }
    if (isPreset(m_nSelectionIndex)) {
        const QSizeF size = m_listSelectionRect[m_nSelectionIndex].size();
        if (rect.width() < size.width() || rect.height() < size.height()) {
            setSelectionIndex(0);
        }
    }
    m_pSelRectItem->setBound(rect);
    for (QRectF& rectPreset : m_listSelectionRect) {
        rectPreset.moveCenter(sceneRect().center());
    }
}

void OriginalImgScene::reemitSelRectPosChanged(QRectF rectSel)
{
    emit selRectPosChanged(rectSel);
}

}  // namespace tessera
