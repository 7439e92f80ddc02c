// TreeView: a tree of crystals to look at, to zoom and to choose from.
#pragma once

#include "crystals/treeplot.h"

#include <QScrollArea>
#include <QWidget>

#include <vector>

namespace tessera {

/// The drawing itself: leaves from top to bottom, heights from left to right. Its colours follow the palette.
class TreeCanvas : public QWidget {
    Q_OBJECT

public:
    explicit TreeCanvas(QWidget* pParent = nullptr);

    void setPlot(const TreePlot& plot);
    const TreePlot& plot() const { return m_plot; }
    /// Lines in pixels; labels are left out where they would lie on one another.
    void setRowHeight(int nPixels);
    int rowHeight() const { return m_nRowHeight; }
    /// Rings a leaf; −1: none.
    void ringLeaf(int nLeaf);

    /// The leaf whose row lies at a height of the widget; −1: none.
    int leafAt(int nY) const;
    /// The row of a leaf, in pixels.
    QRect rowOf(int nLeaf) const;

signals:
    void leafClicked(int nLeaf);

protected:
    void paintEvent(QPaintEvent* pEvent) override;
    void mousePressEvent(QMouseEvent* pEvent) override;
    bool event(QEvent* pEvent) override;

private:
    /// Where a leaf or a joint lies, and which group it is of.
    struct Node {
        double dfHeight = 0;
        double dfRow = 0;
        int nColour = -1;
        bool bMixed = false;
    };

    int labelWidth() const;
    int headHeight() const;
    double placeX(double dfHeight) const;
    double placeY(double dfRow) const;
    QColor colorOf(int nColour) const;
    void paintAxis(QPainter& painter) const;
    void paintTree(QPainter& painter) const;
    void paintLabels(QPainter& painter) const;
    void takeSize();

    TreePlot m_plot;
    std::vector<Node> m_listNode;  ///< leaves, then joints
    std::vector<int> m_listOrder;  ///< leaves from top to bottom
    double m_dfMost = 1;           ///< greatest height
    int m_nRowHeight = 20;
    int m_nRinged = -1;
};

/// Scrolls it. The wheel with Ctrl changes the height of the rows.
class TreeView : public QScrollArea {
    Q_OBJECT

public:
    explicit TreeView(QWidget* pParent = nullptr);

    /// Shows a tree at a height of rows with which all of it is seen, but not lower than its labels.
    void setPlot(const TreePlot& plot);
    TreeCanvas* canvas() const { return m_pCanvas; }
    /// Rings a leaf and brings it into sight.
    void ringLeaf(int nLeaf);

public slots:
    void zoomIn();
    void zoomOut();
    void fit();  ///< all rows in the view

signals:
    void leafClicked(int nLeaf);

protected:
    void wheelEvent(QWheelEvent* pEvent) override;

private:
    TreeCanvas* m_pCanvas;
};

}  // namespace tessera
