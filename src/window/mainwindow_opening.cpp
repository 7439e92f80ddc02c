// MainWindow: all ways of opening a data set, and the recent list.
#include "dataset/displayname.h"
#include "dataset/opening.h"
#include "dataset/reflectionlist.h"
#include "dataset/serieschoicefile.h"
#include "frameview/originalimgscene.h"
#include "frameview/textdatawidget.h"
#include "imagefiles/frameformats.h"
#include "records/whatwasthrown.h"
#include "view3d/ed3dwidget.h"
#include "window/alivedata.h"
#include "window/crystal/geometrycontrol.h"
#include "window/frames/curveplot.h"
#include "window/frameview/framemarks.h"
#include "window/frameview/pixelreadout.h"
#include "window/history/workhistory.h"
#include "window/integration/integrationcontroller.h"
#include "window/mainwindow.h"
#include "window/newprojectdialog.h"
#include "window/pages/framespage.h"
#include "window/pages/peaksearchpage.h"
#include "window/sections/sectionscontroller.h"
#include "window/serieschoicedialog.h"
#include "window/start/recentseries.h"
#include "window/start/startcontroller.h"
#include "window/tabwidget.h"
#include "window/windowactions.h"
#include "window/windowreport.h"
#include "workstate/windowfile.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QUrl>

namespace tessera {

void MainWindow::newProject()
{
    if (refuseDuringRun(QStringLiteral("A new project"))) {
        return;
    }
    bool bSolve = false;
    {
        NewProjectDialog dialog(m_strWorkingDir, this);
        const std::unique_ptr<QSettings> pSettings(makeSettings());
        dialog.readSettings(*pSettings);
        if (dialog.exec() != QDialog::Accepted) {
            return;
        }
        dialog.writeSettings(*pSettings);
        openFiles({dialog.projectFile()});
        bSolve = dialog.m_pSolveCheck->isChecked() && projectFile() == dialog.projectFile();
    }
    if (bSolve) {
        solve();
    }
}

void MainWindow::open()
{
    const QString strWhat = QStringLiteral("Opening files");
    if (refuseDuringRun(strWhat)) {
        return;
    }
    openFiles(QFileDialog::getOpenFileNames(
        this, QStringLiteral("Open Files"), m_strWorkingDir,
        QStringLiteral("ED3D Project(*.ed3d);;Images(%1);;All Files (*.*)").arg(frameNameFilters())));
}

void MainWindow::chooseFrames()
{
    const QString strWhat = QStringLiteral("Choosing the frames");
    if (m_dataSet.m_listFrameFile.isEmpty() || refuseDuringRun(strWhat)) {
        return;
    }
    const QString strProject = projectFile();
    if (!QFileInfo::exists(strProject)) {  // the choice is kept beside it
        QMessageBox::information(
            this, tr("Frames of the Series"),
            tr("These frames have no project yet. Make one by \"New Project\", which asks "
               "for the same."));
        return;
    }
    SeriesChoiceDialog dialog(m_dataSet.allFiles().size(), m_dataSet.m_reading.choice, this);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    QString strReason;
    if (!keepSeriesChoice(fileOfProject(m_dataSet, QString()), dialog.choice(), &strReason)) {
        WindowReport(*this).addMessage(strReason, Severity::Error);
        return;
    }
    openFiles({strProject});
}

void MainWindow::openRecentFile()
{
    if (const auto* pAction = qobject_cast<const QAction*>(sender())) {
        openFiles(pAction->data().toStringList());
    }
}

namespace {

// Accepts a drop as a copy, whatever key is held, because a source deletes its files after a move.
void acceptAsCopy(QDropEvent& event)
{
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

}  // namespace

void MainWindow::dragEnterEvent(QDragEnterEvent* pEvent)
{
    if (pEvent->mimeData()->hasFormat(QStringLiteral("text/uri-list"))) {
        acceptAsCopy(*pEvent);
    }
}

void MainWindow::dropEvent(QDropEvent* pEvent)
{
    QStringList listFile;
    for (const QUrl& url : pEvent->mimeData()->urls()) {
        if (url.isLocalFile()) {
            listFile.append(url.toLocalFile());
        }
    }
    if (listFile.isEmpty()) {
        return;
    }
    acceptAsCopy(*pEvent);
    openFiles(listFile);
}

void MainWindow::openFiles(const QStringList& listFile)
{
    if (listFile.isEmpty() || refuseDuringRun(QStringLiteral("Opening files"))) {
        return;
    }
    if (const QString strReason = reasonNotToOpen(listFile); !strReason.isEmpty()) {
        WindowReport(*this).addMessage(strReason, Severity::Error);
        return;
    }
    keepWindowMemory();
    m_strWorkingDir = QFileInfo(listFile.first()).absolutePath();
    const OpenKind kind = openKind(listFile);
    try {
        switch (kind) {
            case OpenKind::nothing:
                break;
            case OpenKind::reflectionList:
                openReflectionList(listFile.first());
                break;
            case OpenKind::project:
                if (openProject(listFile.first())) {
                    m_pHistory->beginAnew();
                }
                break;
            case OpenKind::images:
                openImageFiles(listFile);
                m_pHistory->beginAnew();
                break;
        }
    } catch (...) {  // out of memory
        WindowReport(*this).addMessage(whatWasThrown(), Severity::Error);
        if (kind == OpenKind::project || kind == OpenKind::images) {
            guarded([this] { showDataSetAnew(); });  // no view may show a series that was closed
        }
    }
}

/// Shows a list of reflections in the raw view. The data set stays: the list is only for looking at.
bool MainWindow::openReflectionList(const QString& strFileName)
{
    WindowReport report(*this);
    QString strReason;
    const std::optional<ReflectionList> list = readReflectionList(strFileName, &strReason);
    if (!list) {
        report.addMessage(QStringLiteral("Error reading reflection list: %1").arg(strReason),
                          Severity::Error);
        return false;
    }
    report.addMessage(
        QStringLiteral("%L1 reflections loaded from %2.").arg(list->listPoint.size()).arg(strFileName));
    withoutLatticeColors([&] {
        m_rawGroups.keep(m_dataSet, *m_pView3DRaw);
        m_rawGroups.setHoldsPeaks(false);
        showInRawView(peaksOfReflectionList(list->listPoint, list->listReflection));
    });
    m_pTabWidget->setCurrentIndex(1);
    return true;
}

/// @return false when the project cannot be read; then only the log says so
bool MainWindow::openProject(const QString& strFileName)
{
    syncParametersWithControls(true);  // what the user set on other pages outlives the opening
    CRunScope scope(*this);
    WindowReport report(*this);
    QStringList listReason;
    WindowMemory memory;
    {
        const CQuietPages quiet(*this);
        const bool bPlays = m_timerPlay.isActive();
        m_timerPlay.stop();  // it would end at the first event that is let through
        MappingParameters mapping = m_mapping;
        bool bOpened = false;
        computeAlive(report, [&](CAliveData& alive) {
            bOpened = tessera::openProject(alive.dataSet(), mapping, strFileName, alive.report(), &listReason,
                                           AxisLine::MayLack);
        });
        if (!bOpened) {
            if (bPlays) {
                m_timerPlay.start();
            }
            return false;
        }
        stopImagePlay();
        m_mapping = mapping;
        m_dataSet.m_vecFrameImage.clear();  // of the former series
        showDataSetAnew();
        memory = takeWindowMemory(report);
    }
    forgetKeptWork();
    pumpEvents();

    showFirstFrame();
    enterRecentSeries({strFileName});
    if (countsAgree(m_dataSet)) {
        transformPeaksTo3D();
        showPeaksIn3D();
        pumpEvents();
        restorePointGroups();
        m_pView3DRaw->viewAlong({1, 0, 0});  // along the rotation axis
    }
    mergeAsBefore(memory, report);
    loadUnitCellAtOpening(m_dataSet, report, &listReason);
    pumpEvents();
    showOpenedCell();
    m_bytesKept = windowFileText(windowMemory());
    for (const QString& strReason : qAsConst(listReason)) {
        report.addMessage(strReason);
    }
    tellUnknownAxis(report);
    return true;
}

void MainWindow::openImageFiles(const QStringList& listFile)
{
    stopImagePlay();
    syncParametersWithControls(true);
    CRunScope scope(*this);
    WindowReport report(*this);
    QStringList listReason;
    {
        const CQuietPages quiet(*this);
        computeAlive(report, [&](CAliveData& alive) {
            tessera::openImageFiles(alive.dataSet(), listFile, alive.report(), &listReason);
        });
        m_dataSet.m_vecFrameImage.clear();  // of the former series
        tellStretchingThatStays(m_dataSet, m_mapping, report);
        showDataSetAnew();
    }
    forgetKeptWork();
    setWindowFilePath(displayName(listFile));
    showFirstFrame();
    showOpenedCell();
    for (const QString& strReason : qAsConst(listReason)) {
        report.addMessage(strReason);
    }
}

void MainWindow::showDataSetAnew()
{
    const CQuietPages quiet(*this);
    clearDataSet();
    fillFileTable();
    fillShiftTable();
    m_pFramesPage->m_pRotationAxisSpin->setDecimals(m_dataSet.m_nAxisDecimals);
    syncParametersWithControls(false);
    m_pStart->setDataSetOpen(!m_dataSet.m_listFrameFile.isEmpty());
}

void MainWindow::clearDataSet()
{
    m_gate.wishes().nFrame = 0;  // a number of the former series
    leaveSeriesPicture();
    clearFrameMarks();
    m_pMarks->setMask({});
    m_leftOut = {};
    m_strMaskFile.clear();
    fillMaskTable();
    m_pPeakSearchPage->m_pShowMaskCheck->setChecked(false);
    m_rawGroups.forget();
    forgetLattices();
    m_pGeometry->forget();
    m_pIntegration->forget();
    m_pSections->forget();
    for (ED3DWidget* pView : views3D()) {
        pView->setPoints({});
    }
    m_dataSet.m_listPeakFrameShown.clear();
    m_pTextData->clearImages();
    // Chains go by the numbers of reflections; a row of the new data set must not show one of the old.
    m_dataSet.m_listPeakChain.clear();
    m_pCurvePlot->clearCurve();
    Peak3D peakNone;  // an empty row, which keeps the layout of the table
    peakNone.nFrame = 0;
    updatePeakTable({peakNone});
}

/// Shows frame 1 on the first tab, with contrast limits of its own and no region selected.
void MainWindow::showFirstFrame()
{
    {
        const QSignalBlocker blockTabs(m_pTabWidget);
        const QSignalBlocker blockSpin(m_pFrameSpin);
        const QSignalBlocker blockSlider(m_pFrameSlider);
        m_pTabWidget->setCurrentIndex(0);
        m_pFrameSpin->setValue(1);
        m_pFrameSlider->setValue(1);
    }
    m_pActions->m_listSelection.first()->setChecked(true);
    beginSeriesLook();
    m_bAutoContrastOnLoad = true;
    updateControls(0);
    // A frame that could not be read has no contrast: the first one that can gives the limits.
    m_bAutoContrastOnLoad = m_dataSet.m_vecFrameImage.empty();
    if (m_dataSet.m_vecFrameImage.empty()) {
        // No frame, or none that could be read: the picture of the former series is taken away.
        CImgObj<unsigned char> imgDot;
        imgDot.Create(1, 1);
        *imgDot.Data() = 0;
        m_pFrameScene->clearImages();
        m_pFrameScene->addImage(imgDot);
        m_pFrameScene->clearImages();
        m_pPixelReadout->renew(m_dataSet.m_vecFrameImage);
    }
}

void MainWindow::enterRecentSeries(const QStringList& listFile)
{
    setWindowFilePath(displayName(listFile));
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    tessera::enterRecentSeries(*pSettings, listFile, QDateTime::currentDateTime());
    recentListChanged();
}

/// Brings the lists of recent series of all windows into line.
void MainWindow::recentListChanged()
{
    for (QWidget* pWidget : QApplication::topLevelWidgets()) {
        if (auto* pWindow = qobject_cast<MainWindow*>(pWidget)) {
            pWindow->updateRecentMenu();
        }
    }
}

void MainWindow::updateRecentMenu()
{
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    const QList<RecentSeries> listSeries = recentSeries(*pSettings);
    QStringList listName;
    for (const RecentSeries& series : listSeries) {
        listName.append(displayName(series.listFile));
    }
    int nShown = 0;
    for (int i = 0; i < m_pActions->m_listRecent.size(); ++i) {
        QAction* pAction = m_pActions->m_listRecent[i];
        const QStringList listFile = i < listSeries.size() ? listSeries[i].listFile : QStringList();
        pAction->setVisible(!listFile.isEmpty());
        if (listFile.isEmpty()) {
            continue;
        }
        ++nShown;
        const QString strName = listName[i], strFolder = QFileInfo(listFile.first()).absolutePath();
        QString strLabel = strName;
        if (listName.count(strName) > 1) {
            strLabel += QStringLiteral(" (%1)").arg(QDir::toNativeSeparators(strFolder));
        }
        strLabel.replace(QLatin1Char('&'), QLatin1String("&&"));  // else a menu takes it for a mnemonic
        pAction->setText(QStringLiteral("&%1 %2").arg(QString::number(i + 1), strLabel));
        pAction->setStatusTip(
            QStringLiteral("Open %1 : %2 files")
                .arg(strFolder + QLatin1Char('/') + strName, QString::number(listFile.size())));
        pAction->setData(listFile);
    }
    m_pRecentSeparator->setVisible(nShown > 0);
    m_pStart->updateRecent();
}

}  // namespace tessera
