// MainWindow: what of the frames is no measurement, for the mask and the list of hot pixels.
#include "window/mainwindow.h"

#include "dataset/hotpixelfile.h"
#include "frames/framedefects.h"
#include "window/alivedata.h"
#include "window/pages/peaksearchpage.h"
#include "window/windowreport.h"

#include <QMessageBox>
#include <QSpinBox>
#include <QThread>

namespace tessera {

namespace {

/// The areas that are not in the mask yet.
QList<QPolygonF> newAreas(const MaskData& found, const MaskData& mask)
{
    QList<QPolygonF> listNew;
    for (const QPolygonF& polygon : found.listPolygon) {
        if (!mask.listPolygon.contains(polygon)) {
            listNew.append(polygon);
        }
    }
    return listNew;
}

}  // namespace

void MainWindow::findFrameDefects()
{
    if (!holdsFrames()) {
        return;
    }
    std::optional<FrameDefects> defects;
    runWithButton(m_bRunning, m_pPeakSearchPage->m_pFindDefectsButton, [&](CRunReport& report) {
        computeAlive(report, [&](CAliveData& alive) {
            defects = tessera::findFrameDefects(alive.dataSet(), alive.report(), QThread::idealThreadCount());
        });
        if (!defects) {
            report.addMessage(tr("The look at the frames did not finish."), Severity::Error);
        }
    });
    if (!defects) {
        return;
    }
    WindowReport report(*this);
    if (tellDefects(*defects).isEmpty()) {
        report.addMessage(tr("The frames that were looked at have no defects."));
        return;
    }
    addToMask(*defects, report);
    repairHotPixels(*defects, report);
}

void MainWindow::addToMask(const FrameDefects& defects, CRunReport& report)
{
    FrameDefects areas = defects;
    areas.listHotPixel.clear();
    MaskData& mask = m_dataSet.m_maskPeakHunting;
    for (const QString& strLine : tellDefects(areas)) {
        report.addMessage(strLine);
    }
    const QList<QPolygonF> listNew = newAreas(maskOfDefects(defects), mask);
    if (listNew.isEmpty()) {
        return;
    }
    if (!mask.listPolygon.isEmpty() &&
        QMessageBox::question(
            this, tr("Find Defects"),
            tr("%L1 areas without valid measurements were found. Add them to the %L2 areas of the mask?")
                .arg(listNew.size())
                .arg(mask.listPolygon.size())) != QMessageBox::Yes) {
        report.addMessage(tr("The mask stays as it was: these areas are not left out."));
        return;
    }
    mask.listPolygon += listNew;
    showNewMask();
}

void MainWindow::repairHotPixels(const FrameDefects& defects, CRunReport& report)
{
    if (defects.listHotPixel.isEmpty()) {
        return;
    }
    FrameDefects pixels;
    pixels.listHotPixel = defects.listHotPixel;
    const int nPixels = defects.listHotPixel.size();
    if (QMessageBox::question(this, tr("Find Defects"),
                              tr("%L1 hot pixels were found. Repair them on every frame, and list them in "
                                 "hotpixels.txt beside the project?")
                                  .arg(nPixels)) != QMessageBox::Yes) {
        report.addMessage(tr("%L1 hot pixels were found; they stay as they are.").arg(nPixels));
        return;
    }
    for (const QString& strLine : tellDefects(pixels)) {
        report.addMessage(strLine);
    }
    addHotPixels(m_dataSet, defects.listHotPixel, report);
    switchToImgIndex(m_pFrameSpin->value());
}

}  // namespace tessera
