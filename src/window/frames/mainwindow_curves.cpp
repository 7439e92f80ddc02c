// MainWindow: the window "Intensity" with the curve of a reflection through the frames.
#include "frames/intensitycurves.h"
#include "window/frames/curveplot.h"
#include "window/mainwindow.h"
#include "window/windowactions.h"
#include "window/windowreport.h"

#include <QApplication>
#include <QClipboard>
#include <QModelIndex>

namespace tessera {

void MainWindow::createCurvePlot()
{
    m_pCurvePlot = new CurvePlot(this);
    m_pCurvePlot->addAction(m_pActions->m_pCurveCopyData);
    m_pCurvePlot->addAction(m_pActions->m_pCurveCopyWindow);
    m_pCurvePlot->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_pActions->setReady(m_pActions->m_pCurveCopyData);
    m_pActions->setReady(m_pActions->m_pCurveCopyWindow);
    connect(m_pActions->m_pCurveCopyData, &QAction::triggered, this, &MainWindow::copyIntensityCurveData);
    connect(m_pActions->m_pCurveCopyWindow, &QAction::triggered, this, &MainWindow::copyIntensityCurveWindow);
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
    m_pCurvePlot->showCurve(
        dataSet.m_nIntensityMode != 0 ? QStringLiteral("2D Integration") : QStringLiteral("Point"), vecFrame,
        vecInt, dataSet.m_listBeamTiltBreak);
    m_pCurvePlot->setReflection(nIndex);
    return true;
}

void MainWindow::updateCurveWindow(QModelIndex index)
{
    bool bNumber = false;
    const int nID = index.sibling(index.row(), 0).data(Qt::DisplayRole).toString().toInt(&bNumber);
    if (bNumber) {
        showPeakInCurve(nID);
    }
}

/// Without a curve the clipboard is not changed.
void MainWindow::copyIntensityCurveData()
{
    const QString strText = m_pCurvePlot->text();
    if (!strText.isEmpty()) {
        QApplication::clipboard()->setText(strText);
    }
}

void MainWindow::copyIntensityCurveWindow()
{
    QApplication::clipboard()->setPixmap(m_pCurvePlot->grab());
}

}  // namespace tessera
