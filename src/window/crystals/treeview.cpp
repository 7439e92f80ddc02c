#include "window/crystals/treeview.h"

#include "road/svgplot.h"
#include "window/crystals/crystaltables.h"
#include "window/pages/palettecolors.h"

#include <QHelpEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nLeastRow = 2, g_nMostRow = 60;  // pixels
const int g_nMargin = 10;
const int g_nLongestLabel = 40;  // letters; names of series are shorter, those with folders may be longer

}  // namespace

TreeCanvas::TreeCanvas(QWidget* pParent) : QWidget(pParent)
{
    setMouseTracking(true);
    setMinimumWidth(400);
}

void TreeCanvas::setPlot(const TreePlot& plot)
{
    m_plot = plot;
    m_nRinged = -1;
    const int nLeaves = int(plot.listLeaf.size());
    m_listOrder = leafOrder(plot.listJoint, nLeaves);
    m_listNode.assign(size_t(nLeaves), {});
    for (size_t nRow = 0; nRow < m_listOrder.size(); ++nRow) {
        const auto nLeaf = size_t(m_listOrder[nRow]);
        m_listNode[nLeaf] = {0, double(nRow), plot.listLeaf[nLeaf].nColour, false};
    }
    m_dfMost = plot.dfCut ? 1.1 * *plot.dfCut : 0;
    for (const Joint& joint : plot.listJoint) {
        const Node first = m_listNode[joint.nFirst], second = m_listNode[joint.nSecond];
        const bool bSame = first.nColour == second.nColour && !first.bMixed && !second.bMixed;
        m_listNode.push_back(
            {joint.dfHeight, (first.dfRow + second.dfRow) / 2, bSame ? first.nColour : -1, !bSame});
        m_dfMost = std::max(m_dfMost, joint.dfHeight);
    }
    m_dfMost = m_dfMost > 0 ? m_dfMost : 1;
    takeSize();
}

void TreeCanvas::setRowHeight(int nPixels)
{
    m_nRowHeight = std::clamp(nPixels, g_nLeastRow, g_nMostRow);
    takeSize();
}

void TreeCanvas::takeSize()
{
    setMinimumHeight(headHeight() + m_nRowHeight * int(m_listOrder.size()) + g_nMargin);
    update();
}

void TreeCanvas::ringLeaf(int nLeaf)
{
    m_nRinged = nLeaf;
    update();
}

int TreeCanvas::headHeight() const
{
    return 2 * fontMetrics().lineSpacing() + g_nMargin + 4;
}

int TreeCanvas::labelWidth() const
{
    int nWidth = 0;
    for (const TreeLeaf& leaf : m_plot.listLeaf) {
        nWidth = std::max(nWidth, fontMetrics().horizontalAdvance(leaf.strLabel));
    }
    return std::min(nWidth, g_nLongestLabel * fontMetrics().averageCharWidth()) + 3 * g_nMargin;
}

double TreeCanvas::placeX(double dfHeight) const
{
    const double dfShare = std::clamp(dfHeight / m_dfMost, 0.0, 1.0);
    return labelWidth() +
           (width() - labelWidth() - 2 * g_nMargin) * (m_plot.bRootScale ? std::sqrt(dfShare) : dfShare);
}

double TreeCanvas::placeY(double dfRow) const
{
    return headHeight() + (dfRow + 0.5) * m_nRowHeight;
}

int TreeCanvas::leafAt(int nY) const
{
    const int nRow = nY < headHeight() ? -1 : (nY - headHeight()) / m_nRowHeight;
    return nRow >= 0 && nRow < int(m_listOrder.size()) ? m_listOrder[nRow] : -1;
}

QRect TreeCanvas::rowOf(int nLeaf) const
{
    const int nTop = headHeight() + int(m_listNode[nLeaf].dfRow) * m_nRowHeight;
    return {0, nTop, width(), m_nRowHeight};
}

QColor TreeCanvas::colorOf(int nColour) const
{
    return readableOn(palette(), colorOfGroup(nColour));
}

void TreeCanvas::paintAxis(QPainter& painter) const
{
    const QLocale locale = QLocale::system();
    QColor colorGrid = palette().color(QPalette::Text);
    colorGrid.setAlphaF(0.18);
    std::vector<double> listTick = {0, 0.1, 0.5, 1, 2, 5, 10};
    int nDecimals = 1;
    if (!m_plot.bRootScale) {
        const AxisTicks ticks = axisTicks(0, m_dfMost, 7);
        listTick.assign(ticks.listTick.begin(), ticks.listTick.end());
        nDecimals = ticks.nDecimals;
    }
    const int nLine = fontMetrics().lineSpacing();
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(QRect(0, 2, width() - g_nMargin, nLine), Qt::AlignRight | Qt::AlignVCenter,
                     fontMetrics().elidedText(m_plot.strHeight, Qt::ElideRight, width() - 2 * g_nMargin));
    for (const double df : listTick) {
        if (df > m_dfMost) {
            break;
        }
        const double dfX = placeX(df);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QRectF(dfX - 40, nLine + 4, 80, nLine), Qt::AlignCenter,
                         locale.toString(df, 'f', nDecimals));
        painter.setPen(colorGrid);
        painter.drawLine(QPointF(dfX, 2 * nLine + 6), QPointF(dfX, placeY(double(m_listOrder.size()))));
    }
    if (m_plot.dfCut) {
        painter.setPen(QPen(palette().color(QPalette::Text), 1, Qt::DashLine));
        const double dfX = placeX(*m_plot.dfCut);
        painter.drawLine(QPointF(dfX, 2 * nLine + 6), QPointF(dfX, placeY(double(m_listOrder.size()))));
    }
}

void TreeCanvas::paintTree(QPainter& painter) const
{
    for (size_t n = 0; n < m_plot.listJoint.size(); ++n) {
        const Joint& joint = m_plot.listJoint[n];
        const Node& node = m_listNode[m_plot.listLeaf.size() + n];
        const Node& first = m_listNode[joint.nFirst];
        const Node& second = m_listNode[joint.nSecond];
        const double dfX = placeX(node.dfHeight);
        const QPointF aptCorner[] = {{placeX(first.dfHeight), placeY(first.dfRow)},
                                     {dfX, placeY(first.dfRow)},
                                     {dfX, placeY(second.dfRow)},
                                     {placeX(second.dfHeight), placeY(second.dfRow)}};
        painter.setPen(QPen(colorOf(node.nColour), m_nRowHeight < 6 ? 1 : 1.5));
        painter.drawPolyline(aptCorner, 4);
    }
}

void TreeCanvas::paintLabels(QPainter& painter) const
{
    if (m_nRinged >= 0) {
        QColor colorRow = palette().color(QPalette::Highlight);
        colorRow.setAlphaF(0.3);
        painter.fillRect(rowOf(m_nRinged), colorRow);
    }
    const int nWidth = labelWidth() - g_nMargin;
    const bool bAll = m_nRowHeight >= fontMetrics().ascent();
    for (size_t n = 0; n < m_plot.listLeaf.size(); ++n) {
        const TreeLeaf& leaf = m_plot.listLeaf[n];
        if (!bAll && int(n) != m_nRinged) {  // its name is replaced by a patch of its colour
            painter.fillRect(rowOf(int(n)).adjusted(nWidth - g_nMargin, 0, nWidth - width() + 2, 0),
                             colorOf(leaf.nColour));
            continue;
        }
        QFont fontLeaf = font();
        fontLeaf.setStrikeOut(leaf.bLeftOut);
        painter.setFont(fontLeaf);
        painter.setPen(colorOf(leaf.nColour));
        const double dfHalf = fontMetrics().height() / 2.0;
        painter.drawText(QRectF(0, placeY(m_listNode[n].dfRow) - dfHalf, nWidth, 2 * dfHalf),
                         Qt::AlignRight | Qt::AlignVCenter,
                         fontMetrics().elidedText(leaf.strLabel, Qt::ElideMiddle, nWidth - g_nMargin));
    }
    painter.setFont(font());
}

void TreeCanvas::paintEvent(QPaintEvent* pEvent)
{
    QPainter painter(this);
    painter.fillRect(pEvent->rect(), palette().color(QPalette::Base));
    if (m_plot.listLeaf.empty()) {
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    paintLabels(painter);
    paintAxis(painter);
    paintTree(painter);
}

void TreeCanvas::mousePressEvent(QMouseEvent* pEvent)
{
    const int nLeaf = leafAt(pEvent->y());
    if (pEvent->button() == Qt::LeftButton && nLeaf >= 0) {
        emit leafClicked(nLeaf);
    }
}

/// The whole name of a leaf, where its row has no room for it.
bool TreeCanvas::event(QEvent* pEvent)
{
    if (pEvent->type() != QEvent::ToolTip) {
        return QWidget::event(pEvent);
    }
    const auto* pHelp = static_cast<QHelpEvent*>(pEvent);
    const int nLeaf = leafAt(pHelp->y());
    QToolTip::showText(pHelp->globalPos(),
                       nLeaf < 0 ? QString()
                                 : QStringLiteral("<qt>%1%2</qt>")
                                       .arg(m_plot.listLeaf[nLeaf].strLabel.toHtmlEscaped(),
                                            m_plot.listLeaf[nLeaf].bLeftOut ? tr(", left out") : QString()),
                       this);
    return true;
}

TreeView::TreeView(QWidget* pParent) : QScrollArea(pParent), m_pCanvas(new TreeCanvas(this))
{
    setWidget(m_pCanvas);
    setWidgetResizable(true);
    connect(m_pCanvas, &TreeCanvas::leafClicked, this, &TreeView::leafClicked);
}

void TreeView::setPlot(const TreePlot& plot)
{
    m_pCanvas->setPlot(plot);
    m_pCanvas->setRowHeight(fontMetrics().height() + 2);
    verticalScrollBar()->setValue(0);
}

void TreeView::ringLeaf(int nLeaf)
{
    m_pCanvas->ringLeaf(nLeaf);
    if (nLeaf >= 0) {
        ensureVisible(0, m_pCanvas->rowOf(nLeaf).center().y(), 0, m_pCanvas->rowHeight());
    }
}

void TreeView::zoomIn()
{
    m_pCanvas->setRowHeight(std::max(m_pCanvas->rowHeight() + 1, m_pCanvas->rowHeight() * 5 / 4));
}

void TreeView::zoomOut()
{
    m_pCanvas->setRowHeight(std::min(m_pCanvas->rowHeight() - 1, m_pCanvas->rowHeight() * 4 / 5));
}

void TreeView::fit()
{
    const auto nRows = int(m_pCanvas->plot().listLeaf.size());
    if (nRows > 0) {
        const int nHead = m_pCanvas->minimumHeight() - nRows * m_pCanvas->rowHeight();
        m_pCanvas->setRowHeight((viewport()->height() - nHead) / nRows);
    }
}

void TreeView::wheelEvent(QWheelEvent* pEvent)
{
    if ((pEvent->modifiers() & Qt::ControlModifier) == 0) {
        QScrollArea::wheelEvent(pEvent);
        return;
    }
    if (pEvent->angleDelta().y() > 0) {
        zoomIn();
    } else if (pEvent->angleDelta().y() < 0) {
        zoomOut();
    }
    pEvent->accept();
}

}  // namespace tessera
