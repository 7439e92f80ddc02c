#include "window/factlabel.h"

#include <QPainter>

namespace tessera {

FactLabel::FactLabel(QWidget* pParent) : QLabel(pParent)
{
    QFont fontSmall = font();
    fontSmall.setPointSizeF(fontSmall.pointSizeF() * 0.85);
    setFont(fontSmall);
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void FactLabel::setFact(const QString& strText)
{
    m_strText = strText;
    setToolTip(strText);
    setAccessibleName(strText);
    update();
}

QSize FactLabel::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 28, fontMetrics().height()};
}

void FactLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Active, QPalette::PlaceholderText));
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(m_strText, Qt::ElideRight, width()));
}

}  // namespace tessera
