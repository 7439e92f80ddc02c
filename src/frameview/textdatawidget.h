// TextDataWidget: the pixel values around a point of the frame as a grid of numbers.
#pragma once

#include "imaging/imgobj.h"

#include <QColor>
#include <QGraphicsView>
#include <QList>
#include <QPointF>

#include <optional>

namespace tessera {

class TextItem;

/// Shows raw pixel values with row and column numbers, each tinted by the display value of its pixel.
///
/// The grid is made of pooled text items on a scene of its own, so that a move of the pointer over the
/// frame creates none.
class TextDataWidget : public QGraphicsView {
    Q_OBJECT

public:
    /// Shows nothing before it has both images.
    explicit TextDataWidget(QWidget* pParent = nullptr);
    ~TextDataWidget() override;

    /// Copies the raw values of the frame; a null pointer or an empty image is ignored.
    void setImage(const CImgObj<float>* pImage);
    /// Copies the display bytes of the same frame; a null pointer or an empty image is ignored.
    void setByteImage(const CImgObj<unsigned char>* pImage);
    /// Centre of the grid, pixels of the frame.
    void setCenter(QPointF ptCenter);

    /// Builds the grid for the present centre and size of the window.
    /// @return false, with the grid as it was, when the widget is not visible, the two images differ in
    ///         size or are empty, or the centre lies off the image
    bool refresh();
    /// Forgets both images and takes the grid away.
    void clearImages();

protected:
    void resizeEvent(QResizeEvent* pEvent) override;
    void showEvent(QShowEvent* pEvent) override;

private:
    struct Layout {
        int nDigits;  ///< field width, characters
        int nCellWidth, nCellHeight;
        int nColumns, nRows;  ///< that fit the window, headers among them
        int x0, y0, w, h;     ///< the part of the frame shown, pixels
    };

    /// Items, and how many of them the grid has taken.
    struct Pool {
        const QList<TextItem*>& listItem;
        int nUsed = 0;
    };

    /// The grid about the centre; none when that lies off the image.
    std::optional<Layout> findLayout() const;
    void takeGridAway();
    void growPools(const Layout& layout);
    void fillGrid(const Layout& layout);
    void place(Pool& pool, const Layout& layout, const QPoint& ptCell, const QString& strText,
               const QColor& color);
    void growPool(QList<TextItem*>& listItem, const QColor& colorBackground, int nCount);

    QGraphicsScene* m_pScene;
    CImgObj<float> m_imgData;
    CImgObj<unsigned char> m_imgByte;
    QPointF m_ptCenter;
    QColor m_colorHeader;
    QColor m_colorCell;
    QColor m_colorCross;
    QList<TextItem*> m_listHeaderItem;
    QList<TextItem*> m_listCellItem;
    QList<TextItem*> m_listCrossItem;
};

}  // namespace tessera
