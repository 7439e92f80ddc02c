#include "frameview/textitem.h"

#include <QBrush>
#include <QFont>
#include <QPainter>

namespace tessera {

TextItem::TextItem(QGraphicsItem* pParent) : QGraphicsSimpleTextItem(pParent), m_colorBackground(0, 0, 0, 0)
{}

void TextItem::setBackground(const QColor& color)
{
    m_colorBackground = color;
    update();
}

void TextItem::setBrushColor(const QColor& color)
{
    setBrush(QBrush(color));
}

void TextItem::setFontSize(double dfPointSize)
{
    if (!(dfPointSize > 0.0))
        return;
    QFont fontNew = font();
    fontNew.setPointSizeF(dfPointSize);
    setFont(fontNew);
}

void TextItem::paint(QPainter* pPainter, const QStyleOptionGraphicsItem* pOption, QWidget* pWidget)
{
    if (m_colorBackground.alpha() > 0)
        pPainter->fillRect(boundingRect(), m_colorBackground);
    QGraphicsSimpleTextItem::paint(pPainter, pOption, pWidget);
}

}  // namespace tessera
