// MainWindow: the table of files and the current frame.
#include "window/mainwindow.h"

#include "frames/frameloader.h"
#include "frameview/originalimgscene.h"
#include "frameview/textdatawidget.h"
#include "window/frames/contrastcontrol.h"
#include "window/frameview/pixelreadout.h"
#include "window/guards.h"
#include "window/pages/framespage.h"
#include "window/pages/pagecontrols.h"
#include "window/pages/peaksearchpage.h"
#include "window/pages/shiftpage.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QTableWidget>

namespace tessera {

namespace {

QString degreesText(double dfDegrees, int nDecimals)
{
    return QStringLiteral("%L1°").arg(dfDegrees, 6, 'f', nDecimals);
}

}  // namespace

void MainWindow::fillFileTable()
{
    QTableWidget* pTable = m_pFramesPage->m_pFileTable;
    // The rows come without a current one: the frame is shown when its number is set.
    const QSignalBlocker blocker(pTable);
    const CDeferredPaint deferred(pTable);
    pTable->clearContents();
    pTable->setRowCount(0);
    const DataSet& dataSet = m_dataSet;
    const int nFrames = dataSet.m_listFrameFile.size();
    if (nFrames > 0) {
        m_strWorkingDir = QFileInfo(dataSet.m_listFrameFile.first()).absolutePath();
    }
    pTable->setRowCount(nFrames);
    for (int i = 0; i < nFrames; ++i) {
        setRightItem(pTable, i, 0, QFileInfo(dataSet.m_listFrameFile[i]).fileName());
        setRightItem(pTable, i, 1, degreesText(dataSet.m_listStageTilt.value(i), 2));
        setRightItem(pTable, i, 2, degreesText(dataSet.m_listBeamTilt.value(i), 2));
        setRightItem(pTable, i, 3, degreesText(dataSet.m_listOverallTilt.value(i), 3));
    }
}

void MainWindow::switchToImgIndex(int nIndex)
{
    // Before the controls are touched: they clamp a number beyond their range, and would show a frame
    // that nobody asked for.
    WindowReport report(*this);
    if (nIndex < 1 || nIndex > m_dataSet.m_listFrameFile.size()) {
        report.addMessage(QStringLiteral("Invalid file index: %1").arg(nIndex), Severity::Error);
        return;
    }
    if (!setFrameControls(nIndex)) {
        return;
    }
    if (isPumping()) {  // the run uses the images in memory
        m_gate.wishes().nFrame = nIndex;
        // "Solve" has a data set and images of its own. The marks on the frame are updated after the run.
        if (m_bSolving) {
            loadFrameInView(nIndex, report);
            clearFrameMarks();
            refreshImageView();
        }
        return;
    }
    const bool bLoaded = loadFrameInView(nIndex, report);
    emit frameLoaded(nIndex, bLoaded);
    if (bLoaded) {  // else the loader said why, and the view keeps what it showed
        showLoadedFrame();
    }
    m_pPixelReadout->renew(m_dataSet.m_vecFrameImage);
}

/// Each control that is set calls switchToImgIndex() again by its signal; only the call that finds all of
/// them on the number goes on, so a frame is loaded once.
bool MainWindow::setFrameControls(int nIndex)
{
    bool bSame = true;
    if (m_pFrameSpin->value() != nIndex) {
        bSame = false;
        m_pFrameSpin->setValue(nIndex);
    }
    if (m_pFrameSlider->value() != nIndex) {
        bSame = false;
        m_pFrameSlider->setValue(nIndex);
    }
    QTableWidget* pTable = m_pFramesPage->m_pFileTable;
    if (pTable->currentRow() != nIndex - 1) {
        pTable->setCurrentCell(nIndex - 1, 0);
        return false;
    }
    return bSame;
}

bool MainWindow::loadFrameInView(int nIndex, CRunReport& report)
{
    releaseFrameImages(m_dataSet.m_vecFrameImage);
    return loadFrame(m_dataSet.m_vecFrameImage, frameSource(m_dataSet, nIndex - 1), report) != 0 &&
           !m_dataSet.m_vecFrameImage.empty();
}

void MainWindow::showLoadedFrame()
{
    leaveSeriesPicture();
    if (m_bAutoContrastOnLoad) {
        setAutoContrast();
    }
    if (m_pPeakSearchPage->m_pShowPeaksCheck->isChecked()) {
        testCurrentPatternForPeaks();
    } else {
        clearCrossMarks();
    }
    clearCircleMarks();  // a run left them on its own last frame
    showPeakText();
    showEstimatedPeakPosition();
    showRotationAxisLine();
    refreshImageView();
    showFrameGuides();
    if (m_pFrameScene->selectionIndex() == 0 && m_pShiftPage->m_pRunButton->isEnabled()) {
        selSizeChanged2();  // this frame has no room for the region of the former one
    }
}

void MainWindow::currentFileChangedInFileList(int nCurrentRow)
{
    if (nCurrentRow >= 0) {  // −1: a table that was emptied
        switchToImgIndex(nCurrentRow + 1);
    }
}

void MainWindow::refreshImageView()
{
    const ImageList& vecImage = m_dataSet.m_vecFrameImage;
    if (vecImage.empty()) {
        return;
    }
    guarded([&] {
        if (m_pFrameScene->imageSize() != QSize(vecImage.front()->Width(), vecImage.front()->Height())) {
            m_pTextData->clearImages();  // where the grid stood there may be no pixel now
        }
        const RangeList vecLimit(vecImage.size(), {m_pFramesPage->m_pContrastMinSpin->value(),
                                                   m_pFramesPage->m_pContrastMaxSpin->value()});
        m_pFrameScene->setImagesLimits(vecImage, vecLimit);
        m_pContrast->showHistogramOf(*vecImage.front());
        m_pTextData->setImage(vecImage.front().get());
        const int nShown = m_pFrameScene->currentIndex();
        if (nShown >= 0 && nShown < int(m_pFrameScene->images().size())) {
            m_pTextData->setByteImage(m_pFrameScene->images()[nShown].get());
        }
        m_pTextData->refresh();
    });
}

}  // namespace tessera
