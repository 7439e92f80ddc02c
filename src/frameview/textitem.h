// TextItem: a line of text with a background.
#pragma once

#include <QColor>
#include <QGraphicsSimpleTextItem>

namespace tessera {

/// Text on a scene, filled behind with a background colour (transparent at the start).
class TextItem : public QGraphicsSimpleTextItem {
public:
    explicit TextItem(QGraphicsItem* pParent = nullptr);

    void setBackground(const QColor& color);  ///< colour behind the text
    void setBrushColor(const QColor& color);  ///< colour of the text
    /// @param dfPointSize  above 0; another value changes nothing
    void setFontSize(double dfPointSize);

    const QColor& background() const { return m_colorBackground; }  ///< colour behind the text

    void paint(QPainter* pPainter, const QStyleOptionGraphicsItem* pOption, QWidget* pWidget) override;

private:
    QColor m_colorBackground;
};

}  // namespace tessera
