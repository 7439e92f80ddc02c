// MainWindow: saving of the image in view, and of the series as pictures, SMV images, scaled and summed
// frames.
#include "window/mainwindow.h"

#include "frames/frametargets.h"
#include "frames/imageseries.h"
#include "frames/scaledframes.h"
#include "frames/smvexport.h"
#include "frames/summedframes.h"
#include "frameview/originalimgscene.h"
#include "imagefiles/imagenames.h"
#include "imagefiles/imagesaving.h"
#include "records/timestamp.h"
#include "window/alivedata.h"
#include "window/pages/framespage.h"
#include "window/tabwidget.h"
#include "window/windowreport.h"

#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>

namespace tessera {

/// The name that the user gives an image, with a suffix that tells its format; empty when none was given.
QString MainWindow::askSaveImageName(bool bConfirmOverwrite)
{
    QString strFilter;
    const QString strName = QFileDialog::getSaveFileName(
        this, tr("Save Files"), m_strWorkingDir, imageNameFilters().join(QStringLiteral(";;")), &strFilter,
        bConfirmOverwrite ? QFileDialog::Options() : QFileDialog::DontConfirmOverwrite);
    return completedImageName(strName, strFilter);
}

void MainWindow::saveCurrent()
{
    if (refuseDuringRun(tr("Saving an image"))) {
        return;
    }
    stopImagePlay();  // it is the image that the user sees now
    const int nTab = m_pTabWidget->currentIndex();
    QString strFile;
    do {
        strFile = askSaveImageName(true);
        // The name that the dialog has asked about may have got another suffix.
    } while (QFileInfo::exists(strFile) &&
             QMessageBox::question(this, tr("Overwite"),
                                   tr("File \"%1\" already exists. Overwrite?").arg(strFile),
                                   QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes);
    if (strFile.isEmpty()) {
        return;
    }
    m_strWorkingDir = QFileInfo(strFile).absolutePath();
    if (nTab != 0) {
        return;
    }
    const auto warn = [this](const QString& strText) {
        QMessageBox::warning(this, tr("Saving images"), strText);
    };
    const auto& vecDisplay = m_pFrameScene->images();
    const int nImage = m_pFrameScene->currentIndex();
    if (vecDisplay.empty()) {
        warn(tr("No images to save."));
        return;
    }
    if (nImage < 0 || nImage >= int(vecDisplay.size())) {
        warn(tr("Error: Invalid index."));
        return;
    }
    if (!frameAmongTargets({strFile}, m_dataSet.allFiles()).isEmpty()) {
        warn(tr("%1 is a frame of this series and is not overwritten.").arg(strFile));
        return;
    }
    const ImageList& vecFrame = m_dataSet.m_vecFrameImage;
    QString strReason;
    bool bSaved = false;
    guarded([&] {
        bSaved = saveShownImage(vecDisplay[nImage].get(),
                                nImage < int(vecFrame.size()) ? vecFrame[nImage].get() : nullptr, strFile,
                                &strReason);
    });
    if (bSaved) {
        return;
    }
    warn(tr("Saving file failed."));
    if (!strReason.isEmpty()) {
        WindowReport(*this).addMessage(strReason, Severity::Error);
    }
}

/// What the exports of the whole series have in common: the pages read, the play stopped, and one at a time.
void MainWindow::runExport(const std::function<void(CRunReport&)>& fnExport)
{
    stopImagePlay();
    syncParametersWithControls(true);
    CRunScope scope(*this);
    WindowReport report(*this);
    guarded([&] { fnExport(report); });
}

void MainWindow::saveSeries()
{
    if (refuseDuringRun(tr("Saving the series"))) {
        return;
    }
    const QString strFolder = QFileDialog::getExistingDirectory(this, tr("Select image output directory"),
                                                                m_dataSet.m_strProjectDir);
    if (strFolder.isEmpty()) {
        return;
    }
    bool bOk = false;
    const QString strType = QInputDialog::getItem(this, tr("Image Type Selection"), tr("Output Image Type:"),
                                                  imageTypeItems(), 0, false, &bOk);
    if (!bOk) {
        return;
    }
    runExport([&](CRunReport& report) {
        const double dfMin = m_pFramesPage->m_pContrastMinSpin->value();
        const double dfMax = m_pFramesPage->m_pContrastMaxSpin->value();
        computeAlive(report, [&](CAliveData& alive) {
            tessera::saveSeries(alive.dataSet(), strFolder, imageTypeExtension(strType), dfMin, dfMax,
                                alive.report());
        });
    });
}

void MainWindow::exportSMVImages()
{
    if (refuseDuringRun(tr("Exporting SMV images"))) {
        return;
    }
    runExport([this](CRunReport& report) {
        computeAlive(report,
                     [](CAliveData& alive) { tessera::exportSMVImages(alive.dataSet(), alive.report()); });
    });
}

void MainWindow::exportBinnedFrames()
{
    if (refuseDuringRun(tr("Exporting scaled frames"))) {
        return;
    }
    bool bOk = false;
    const double dfScale = QInputDialog::getDouble(this, tr("Frame Scaling"), tr("Scale:"), 0.5, 0.05, 20, 2,
                                                   &bOk);
    if (bOk) {
        runExport([&](CRunReport& report) {
            computeAlive(report, [&](CAliveData& alive) {
                tessera::exportBinnedFrames(alive.dataSet(), dfScale, alive.report());
            });
        });
    }
}

/// The text of the button speaks of a refinement from a list; it exports the summed frames.
void MainWindow::runUnitCellRefinementFromLoadingData()
{
    if (stopsRun() || refuseDuringRun(tr("Exporting summed frames"))) {
        return;
    }
    const QString strFolder = QFileDialog::getExistingDirectory(this, tr("Export summed data..."),
                                                                m_strWorkingDir);
    if (strFolder.isEmpty()) {
        return;
    }
    runWithButton(m_bRunning, nullptr, [&](CRunReport& report) {
        clearFrameMarks();
        RunOutcome outcome;
        computeAlive(report, [&](CAliveData& alive) {
            outcome = tessera::exportSummedFrames(alive.dataSet(), strFolder, alive.report(),
                                                  [&](int) { alive.show([this] { refreshImageView(); }); });
        });
        if (outcome.end != RunEnd::Finished) {
            report.addMessage(tr("%1>Export of the summed frames did not finish.").arg(currentTimeStamp()),
                              Severity::Error);
        }
    });
}

}  // namespace tessera
