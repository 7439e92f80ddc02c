// MainWindow: what lies on the frame view - peak marks, index labels and the pixel readout.
#include "window/mainwindow.h"

#include "crystal/reflectionindices.h"
#include "frameview/baseimgview.h"
#include "frameview/circleitem.h"
#include "frameview/crossitem.h"
#include "frameview/originalimgscene.h"
#include "frameview/replacemarks.h"
#include "frameview/textdatawidget.h"
#include "frameview/textitem.h"
#include "window/tabwidget.h"
#include "window/windowactions.h"

#include <QApplication>
#include <QGraphicsLineItem>
#include <QPen>
#include <QSpinBox>
#include <QStatusBar>

#include <cmath>

namespace tessera {

namespace {

const double g_dfMarkPenWidth = 1.0;
const double g_dfLabelPenWidth = 0.2;
const double g_dfLabelZ = 200.0;

template <typename TItem>
QList<TItem*> makeMarks(const QList<QPointF>& listPos, const QColor& color, int nSize)
{
    QList<TItem*> listMark;
    listMark.reserve(listPos.size());
    for (const QPointF& pt : listPos) {
        auto* pItem = new TItem;
        pItem->setSize(float(nSize));
        pItem->setColor(color);
        pItem->setPenWidth(g_dfMarkPenWidth);
        pItem->setPos(pt);
        listMark.append(pItem);
    }
    return listMark;
}

// Red on the frame where the reflection is strongest, green elsewhere; darker when the space group
// forbids it.
QColor labelColor(bool bStrongest, bool bAbsent)
{
    if (bStrongest)
        return bAbsent ? Qt::magenta : Qt::red;
    return bAbsent ? Qt::darkCyan : Qt::green;
}

TextItem* makeLabel(const Peak3D& peak, const DataSet& data, int nFrame)
{
    const int nH = roundIndex(peak.dfH);
    const int nK = roundIndex(peak.dfK);
    const int nL = roundIndex(peak.dfL);
    const bool bKnown = peak.nID >= 0 && peak.nID < int(data.m_vecReflectionFrame.size());
    const bool bStrongest = bKnown && data.m_vecReflectionFrame[peak.nID] == nFrame;
    auto* pItem = new TextItem;
    pItem->setZValue(g_dfLabelZ);
    pItem->setText(QStringLiteral("%L1,%L2,%L3").arg(nH).arg(nK).arg(nL));
    pItem->setPos(peak.dfX2D, peak.dfY2D);
    pItem->setPen(QPen(Qt::black, g_dfLabelPenWidth));
    pItem->setBrushColor(labelColor(bStrongest, data.m_spaceGroup.isAbsent(nH, nK, nL)));
    return pItem;
}

// The value at a pixel of one of the images; false where there is none.
bool pixelValue(const ImageList& vecImage, int nImage, int x, int y, float& fValue)
{
    if (nImage < 0 || nImage >= int(vecImage.size()) || !vecImage[nImage])
        return false;
    const CImgObj<float>& img = *vecImage[nImage];
    if (!img.Data() || x < 0 || y < 0 || x >= img.Width() || y >= img.Height())
        return false;
    fValue = img.Data()[qint64(y) * img.Width() + x];
    return true;
}

// The shortest form has six digits: from where it would take to powers of ten, the whole number.
QString pixelText(float fValue)
{
    const bool bLarge = std::abs(fValue) >= 999999.5f;
    return QStringLiteral("%L1").arg(double(fValue), 0, bLarge ? 'f' : 'g', bLarge ? 0 : -1);
}

}  // namespace

void MainWindow::showCrossMarks(const QList<QPointF>& listPos, const QColor& color, int nSize)
{
    replaceMarks(m_pFrameScene, m_listCrossMark, makeMarks<CrossItem>(listPos, color, nSize));
}

void MainWindow::clearCrossMarks()
{
    replaceMarks(m_pFrameScene, m_listCrossMark);
}

void MainWindow::showCircleMarks(const QList<QPointF>& listPos)
{
    replaceMarks(m_pFrameScene, m_listCircleMark,
                 makeMarks<CircleItem>(listPos, Qt::green, m_extraction.m_nWindowRadius));
}

void MainWindow::clearCircleMarks()
{
    replaceMarks(m_pFrameScene, m_listCircleMark);
}

void MainWindow::showEstimatedMarks(const QList<QPointF>& listPos)
{
    replaceMarks(m_pFrameScene, m_listEstimatedMark,
                 makeMarks<CircleItem>(listPos, Qt::cyan, m_extraction.m_nWindowRadius));
}

void MainWindow::showPeakText()
{
    if (isFrameInUse())
        return;
    const QVector<QList<Peak3D>>& vecPeak = m_dataSet.m_vecPeakIndexedOnFrame;
    const int nFrame = m_pFrameSpin->value() - 1;
    QList<TextItem*> listLabel;
    // A frame that could not be read leaves the picture of another one standing.
    if (m_pActions->m_pShowPeakLabels->isChecked() && !m_dataSet.m_vecFrameImage.empty() &&
        vecPeak.size() == m_dataSet.m_listFrameFile.size() && nFrame >= 0 && nFrame < vecPeak.size())
        for (const Peak3D& peak : vecPeak[nFrame])
            listLabel.append(makeLabel(peak, m_dataSet, nFrame));
    replaceMarks(m_pFrameScene, m_listTextMark, listLabel);
    m_pFrameScene->update();
}

void MainWindow::clearTextMarks()
{
    replaceMarks(m_pFrameScene, m_listTextMark);
}

void MainWindow::clearFrameMarks()
{
    clearCrossMarks();
    clearCircleMarks();
    clearTextMarks();
    showEstimatedMarks({});
    m_pAxisLine->hide();
    clearPixelReadout();
}

void MainWindow::enableShowPeaks(bool /*bShow*/)
{
    showPeakText();
}

void MainWindow::mouseMoving(QPointF posF)
{
    // Under a run the images in memory are the run's, and need not be what is in view.
    if (isPumping() || m_pTabWidget->currentWidget() != m_pFrameView)
        return;
    const QSize size = m_pFrameScene->imageSize();
    const double dfX = std::floor(posF.x());
    const double dfY = std::floor(posF.y());
    if (!(dfX >= 0 && dfY >= 0 && dfX < size.width() && dfY < size.height()))
        return;
    showPixelReadout(posF, QApplication::mouseButtons() == Qt::RightButton);
}

void MainWindow::showPixelReadout(const QPointF& ptF, bool bLabel)
{
    const int x = int(std::floor(ptF.x()));
    const int y = int(std::floor(ptF.y()));
    float fValue = 0;
    const bool bValue = pixelValue(m_dataSet.m_vecFrameImage, m_pFrameScene->currentIndex(), x, y, fValue);
    const QString strValue = bValue ? pixelText(fValue) : QString();
    if (bValue && bLabel) {
        m_pFrameScene->setLabel(x, y, QStringLiteral("I=%1\n(%L2, %L3)").arg(strValue).arg(x).arg(y));
        m_pFrameScene->setLabelVisible(true);
        m_pFrameView->viewport()->update();
        m_pFrameView->setDragMode(QGraphicsView::NoDrag);
        m_pFrameView->viewport()->setCursor(Qt::CrossCursor);
        m_pTextData->setCenter(ptF);
        m_pTextData->refresh();
    } else {
        hidePixelLabel();
    }
    m_ptPixelRead = ptF;
    m_strPixelStatus = bValue ? QStringLiteral("Experimental(%L1, %L2): %3").arg(x).arg(y).arg(strValue)
                              : QString();
    statusBarMessage(m_strPixelStatus);
}

void MainWindow::renewPixelReadout()
{
    if (m_pFrameScene->isLabelVisible() || showsPixelStatus())
        showPixelReadout(m_ptPixelRead, m_pFrameScene->isLabelVisible());
}

void MainWindow::clearPixelReadout()
{
    hidePixelLabel();
    if (showsPixelStatus())
        statusBar()->clearMessage();
}

void MainWindow::hidePixelLabel()
{
    if (!m_pFrameScene->isLabelVisible())
        return;
    m_pFrameScene->setLabelVisible(false);
    m_pFrameView->viewport()->update();
    m_pFrameView->viewport()->unsetCursor();
    m_pFrameView->setDragMode(QGraphicsView::ScrollHandDrag);
}

bool MainWindow::showsPixelStatus() const
{
    return !m_strPixelStatus.isEmpty() && statusBar()->currentMessage() == m_strPixelStatus;
}

}  // namespace tessera
