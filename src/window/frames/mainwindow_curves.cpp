// MainWindow: the window "Intensity" with the curve of a reflection through the frames.
#include "frames/intensitycurves.h"
#include "window/mainwindow.h"
#include "window/windowactions.h"
#include "window/windowreport.h"

#include <qwt_legend.h>
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_marker.h>
#include <qwt_symbol.h>

#include <QApplication>
#include <QClipboard>
#include <QModelIndex>

namespace tessera {

void MainWindow::createCurvePlot()
{
    m_pCurvePlot = new QwtPlot(this);
    m_pCurvePlot->setAutoReplot(false);
    m_pCurvePlot->setMinimumHeight(100);
    m_pCurvePlot->canvas()->unsetCursor();
    m_pCurvePlot->addAction(m_pActions->m_pCurveCopyData);
    m_pCurvePlot->addAction(m_pActions->m_pCurveCopyWindow);
    m_pCurvePlot->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_pActions->setReady(m_pActions->m_pCurveCopyData);
    m_pActions->setReady(m_pActions->m_pCurveCopyWindow);
    connect(m_pActions->m_pCurveCopyData, &QAction::triggered, this, &MainWindow::copyIntensityCurveData);
    connect(m_pActions->m_pCurveCopyWindow, &QAction::triggered, this, &MainWindow::copyIntensityCurveWindow);

    QwtText textX(QStringLiteral("Frame No."));
    QFont fontTitle = textX.font();
    fontTitle.setPixelSize(12);
    fontTitle.setWeight(QFont::Bold);
    textX.setFont(fontTitle);
    m_pCurvePlot->setAxisTitle(QwtPlot::xBottom, textX);
    m_pCurvePlot->setAxisTitle(QwtPlot::yLeft, QStringLiteral("<h4>Intensity</h4>"));
    m_pCurvePlot->insertLegend(new QwtLegend, QwtPlot::TopLegend, -1.0);

    m_pCurve = new QwtPlotCurve(QStringLiteral("Point"));
    m_pCurve->setPen(QPen(Qt::red));
    m_pCurve->setRenderHint(QwtPlotItem::RenderAntialiased);
    m_pCurve->setLegendAttribute(QwtPlotCurve::LegendShowLine);
    m_pCurve->setSymbol(new QwtSymbol(QwtSymbol::Cross, Qt::NoBrush, QPen(Qt::red), QSize(10, 10)));
    m_pCurve->attach(m_pCurvePlot);

    auto* pGrid = new QwtPlotGrid;
    pGrid->setMajorPen(QPen(Qt::gray, 0, Qt::DotLine, Qt::SquareCap, Qt::BevelJoin));
    pGrid->setAxes(QwtPlot::xBottom, QwtPlot::yRight);
    pGrid->attach(m_pCurvePlot);
    m_pCurvePlot->replot();
}

bool MainWindow::showPeakInCurve(int nIndex)
{
    const DataSet& dataSet = m_dataSet;
    QVector<double> vecFrame, vecInt;
    if (!getReflectionChainData(dataSet.m_listPeakChain, dataSet.m_nIntensityMode, nIndex, vecFrame,
                                vecInt)) {
        WindowReport(*this).addMessage(
            QStringLiteral("Failed to retrieve data for reflection with ID: %L1.").arg(nIndex),
            Severity::Error);
        return false;
    }
    m_pCurve->setTitle(dataSet.m_nIntensityMode != 0 ? QStringLiteral("2D Integration")
                                                     : QStringLiteral("Point"));
    clearCurve();
    m_pCurve->setSamples(vecFrame, vecInt);
    for (double dfFrame : qAsConst(vecFrame)) {
        if (dataSet.m_listBeamTiltBreak.value(int(dfFrame) - 1) == 0)
            continue;
        auto* pMarker = new QwtPlotMarker;
        pMarker->setLineStyle(QwtPlotMarker::VLine);
        pMarker->setXValue(dfFrame - 0.5);  // between the last frame of one series and the first of the next
        pMarker->setLinePen(QPen(QBrush(Qt::darkCyan), 0, Qt::DashLine));
        pMarker->attach(m_pCurvePlot);
        m_listCurveMarker.append(pMarker);
    }
    m_pCurvePlot->replot();
    return true;
}

void MainWindow::clearCurve()
{
    m_pCurve->setSamples(QVector<QPointF>());
    qDeleteAll(m_listCurveMarker);  // a marker takes leave of its plot by itself
    m_listCurveMarker.clear();
    m_pCurvePlot->replot();
}

void MainWindow::updateCurveWindow(QModelIndex index)
{
    bool bNumber = false;
    const int nID = index.sibling(index.row(), 0).data(Qt::DisplayRole).toString().toInt(&bNumber);
    if (bNumber)
        showPeakInCurve(nID);
}

/// Without a curve the clipboard keeps what it holds.
void MainWindow::copyIntensityCurveData()
{
    if (!m_pCurve || m_pCurve->dataSize() == 0)
        return;
    QString strText;
    for (size_t i = 0; i < m_pCurve->dataSize(); ++i) {
        const QPointF ptSample = m_pCurve->sample(int(i));
        strText += QStringLiteral("%L1 \t%L2\n").arg(ptSample.x(), 8, 'f', 1).arg(ptSample.y(), 12, 'f', 2);
    }
    QApplication::clipboard()->setText(strText + QLatin1Char('\n'));
}

void MainWindow::copyIntensityCurveWindow()
{
    QApplication::clipboard()->setPixmap(m_pCurvePlot->grab());
}

}  // namespace tessera
