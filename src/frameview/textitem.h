// TextItem: a line of text with a background.
#pragma once

#include <QColor>
#include <QGraphicsSimpleTextItem>

namespace tessera {

/// Text on a scene, filled behind with a background colour (transparent at the start). It grows with the zoom
/// unless setScreenSized() says otherwise.
class TextItem : public QGraphicsSimpleTextItem {
public:
    /// An empty text.
    explicit TextItem(QGraphicsItem* pParent = nullptr);

    void setBackground(const QColor& color);  ///< colour behind the text
    void setBrushColor(const QColor& color);  ///< colour of the text
    /// Size of the letters, points.
    /// @param dfPointSize  above 0; another value changes nothing
    void setFontSize(double dfPointSize);

    const QColor& background() const { return m_colorBackground; }  ///< colour behind the text

    /// Keeps the text from 50 % on as large on the screen as it is at 100 %, and from there on dfGap frame
    /// pixels at most off its position, so that it does not lie on what it names. A dark line runs round its
    /// letters, by which they can be read on white and on black.
    void setScreenSized(double dfGap);

    QRectF boundingRect() const override;
    void paint(QPainter* pPainter, const QStyleOptionGraphicsItem* pOption, QWidget* pWidget) override;

private:
    void paintScreenSized(QPainter& painter) const;

    QColor m_colorBackground;
    bool m_bScreenSized = false;
    double m_dfGap = 0;
};

}  // namespace tessera
