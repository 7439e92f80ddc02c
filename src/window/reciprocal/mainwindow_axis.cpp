// MainWindow: the search for the rotation axis from the peaks.
#include "window/mainwindow.h"

#include "reciprocal/mapping.h"
#include "reciprocal/rotationaxissearch.h"
#include "records/progress.h"
#include "window/alivedata.h"
#include "window/frames/curveplot.h"
#include "window/pages/framespage.h"
#include "window/windowreport.h"

#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QMessageBox>
#include <QThread>

namespace tessera {

void MainWindow::tellUnknownAxis(CRunReport& report) const
{
    if (!m_dataSet.m_bRotationAxisKnown) {
        report.addMessage(tr("Warning: the rotation axis is not known, and %1° is but the number of the "
                             "page. \"Solve\" finds "
                             "it; by hand, evaluate the shifts, search the peaks, and use \"Tools\", \"Find "
                             "Rotation Axis\"; "
                             "or type it in.")
                              .arg(m_locale.toString(m_dataSet.m_dfRotationAxis, 'f', 1)),
                          Severity::Warning);
    }
}

void MainWindow::findRotationAxis()
{
    if (!isPumping() && !canMapPeaks(m_dataSet)) {
        WindowReport(*this).addMessage(
            tr("The search for the rotation axis needs peaks and shifts of all frames: run the shift "
               "evaluation and the peak search first."),
            Severity::Error);
        return;
    }
    std::optional<AxisSearch> search;
    runWithButton(m_bRunning, nullptr, [&](CRunReport& report) {
        const CProgress progress(report, tr("Rotation axis"), 0, 0);  // nobody knows how long
        const MappingParameters mapping = m_mapping;
        computeAlive(report, [&](CAliveData& alive) {
            search = tessera::findRotationAxis(alive.dataSet(), mapping, alive.report(),
                                               QThread::idealThreadCount());
        });
        if (!search) {
            report.addMessage(tr("The search for the rotation axis did not finish."), Severity::Error);
        }
    });
    if (!search) {
        return;
    }
    m_pCurvePlot->showAxisCurve(*search);
    if (auto* pDock = qobject_cast<QDockWidget*>(m_pCurvePlot->parentWidget())) {
        pDock->show();
        pDock->raise();
    }
    if (search->found) {
        askForAxis(*search);
        return;
    }
    WindowReport(*this).addMessage(
        tr("The peaks do not determine the rotation axis: %1. It is not changed.").arg(search->strReason),
        Severity::Error);
}

void MainWindow::askForAxis(const AxisSearch& search)
{
    const AxisFound& found = *search.found;
    QDoubleSpinBox* pSpin = m_pFramesPage->m_pRotationAxisSpin;
    const double dfFormer = pSpin->value();
    const auto degrees = [this](double df) { return m_locale.toString(df, 'f', 1) + QStringLiteral("°"); };
    QString strText =
        tr("The rotation axis lies at %1 ± %2°; \"Rotation Axis At\" is %3 now. The second maximum is %4, "
           "with a sharpness of %5 in place of %6.")
            .arg(degrees(found.best.dfAzimuth), m_locale.toString(found.dfAzimuthError, 'f', 2),
                 degrees(dfFormer), degrees(found.second.dfAzimuth),
                 m_locale.toString(found.second.dfSharpness, 'f', 3),
                 m_locale.toString(found.best.dfSharpness, 'f', 3));
    strText += found.bSure ? tr("\n\nThe sense of the rotation is sure.")
                           : tr("\n\nThe sense of the rotation is doubtful: %1. The axis may be 180° off, "
                                "which gives the other hand.")
                                 .arg(found.strSense);
    WindowReport report(*this);
    if (QMessageBox::question(this, tr("Find Rotation Axis"), strText + tr("\n\nTake it?")) !=
        QMessageBox::Yes) {
        report.addMessage(tr("The rotation axis stays at %1.").arg(degrees(dfFormer)));
        return;
    }
    m_dataSet.m_bRotationAxisKnown = true;
    pSpin->setValue(found.best.dfAzimuth);  // maps the peaks anew, as if it were typed
    report.addMessage(
        tr("The rotation axis is now %1 (it was %2). What was merged, searched and indexed "
           "with the former one is not: merge again. The project file stays as it is; its "
           "line is ROTATIONAXIS %3.")
            .arg(degrees(pSpin->value()), degrees(dfFormer), QString::number(pSpin->value(), 'f', 1)));
}

}  // namespace tessera
