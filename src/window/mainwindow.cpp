#include "window/mainwindow.h"

#include "frames/frameloader.h"
#include "frameview/baseimgview.h"
#include "frameview/originalimgscene.h"
#include "frameview/textdatawidget.h"
#include "view3d/ed3dwidget.h"
#include "window/crystal/geometrycontrol.h"
#include "window/crystal/latticesdialog.h"
#include "window/crystals/mergecontroller.h"
#include "window/frames/contrastcontrol.h"
#include "window/frames/seriespicturetitle.h"
#include "window/frameview/frameguides.h"
#include "window/frameview/framemarks.h"
#include "window/frameview/pixelreadout.h"
#include "window/guidewindow.h"
#include "window/history/workhistory.h"
#include "window/history/workkeeper.h"
#include "window/integration/integrationcontroller.h"
#include "window/messageedit.h"
#include "window/pages/controltips.h"
#include "window/pages/extractionpage.h"
#include "window/pages/view3dpage.h"
#include "window/sections/sectionscontroller.h"
#include "window/selection/selectioncontroller.h"
#include "window/tabwidget.h"
#include "window/view3d/view3dcontrol.h"
#include "window/windowactions.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QMessageBox>
#include <QPainter>
#include <QScreen>
#include <QSlider>
#include <QSpinBox>
#include <QSplashScreen>
#include <QStatusBar>
#include <QToolBox>

#include <cmath>

namespace tessera {

MainWindow::MainWindow(QWidget* pParent) : QMainWindow(pParent)
{
    fillNameMaps();
    setCorner(Qt::TopLeftCorner, Qt::LeftDockWidgetArea);
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    setCorner(Qt::TopRightCorner, Qt::RightDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    m_vecScale = {0.125, 0.25, 0.5, 1, 2, 4, 8};

    createActions();
    createControlDock();
    createOtherDocks();
    createRoad();
    createHistory();
    checkSettings();
    createMenus();  // after the docks, whose switches it shows
    createToolBar();
    createStatusBar();
    createViews();
    setAcceptDrops(true);
    setCentralWidget(m_pTabWidget);
    createIntegration();
    createSelection();
    create3DControl();
    createSections();
    createCrystals();
    createStart();
    createStatusStrip();
    bindParameters();
    connectPages();

    readSettings();
    updateRecentMenu();

    syncParametersWithControls(false);
    connectPanelSignals(true);
    updateControls(0);
    shareTips(this);
    startHistory();
    m_pMessageEdit->addMessage(tr(
        "Menu \"File\": \"Open...\" opens a project, \"New Project...\" makes one from frames. F1 shows the "
        "guide."));
    statusBarMessage(QStringLiteral("Ready"));
}

MainWindow::~MainWindow()
{
    // The widgets go down with the base class, and some report changes on the way.
    m_timerPlay.stop();
    m_timerPlay.disconnect(this);
    delete m_pHistory;
    delete m_pContrast;
    delete m_pIntegration;
    delete m_pSelection;
    delete m_pView3DControl;
    delete m_pGuides;
    for (QObject* pChild : findChildren<QObject*>()) {
        pChild->disconnect(this);
    }
}

void MainWindow::setSplashPixmap(const QPixmap& pixmap)
{
    if (!m_pSplash) {
        m_pSplash = std::make_unique<QSplashScreen>();
    }
    m_pSplash->setPixmap(pixmap);
}

void MainWindow::fillNameMaps()
{
    const auto fill = [](QMap<int, QString>& map, const QStringList& listName) {
        for (int i = 0; i < listName.size(); ++i) {
            map.insert(i, listName[i]);
        }
    };
    fill(m_mapTabName,
         {QStringLiteral("Experimental"), QStringLiteral("3D View Raw"), QStringLiteral("3D View Merged"),
          QStringLiteral("Peak Table"), QStringLiteral("Quality")});
    fill(m_mapPageName,
         {QStringLiteral("Frames"), QStringLiteral("Shift Evaluation"), QStringLiteral("Peak Search"),
          QStringLiteral("3D Peak Merging"), QStringLiteral("Unit Cell Determination and Indexing"),
          QStringLiteral("Intensity Extraction"), QStringLiteral("Unit Cell Refinement"),
          QStringLiteral("3D View Control"), QStringLiteral("Integration")});
    fill(m_mapColumnName,
         {QStringLiteral("ID"),      QStringLiteral("h."),        QStringLiteral("k."),
          QStringLiteral("l."),      QStringLiteral("h"),         QStringLiteral("k"),
          QStringLiteral("l"),       QStringLiteral("Intensity"), QStringLiteral("Int.Fit"),
          QStringLiteral("d(Å)"),    QStringLiteral("d*(Å⁻¹)"),   QStringLiteral("No.Frame"),
          QStringLiteral("FNo.Fit"), QStringLiteral("HW.Frame"),  QStringLiteral("d-RA(pix.)"),
          QStringLiteral("HW*d-RA"), QStringLiteral("α(°)"),      QStringLiteral("α-RA(°)"),
          QStringLiteral("x"),       QStringLiteral("y"),         QStringLiteral("x'"),
          QStringLiteral("y'"),      QStringLiteral("x\""),       QStringLiteral("y\""),
          QStringLiteral("Alwd."),   QStringLiteral("RGroup"),    QStringLiteral("Int.Integr."),
          QStringLiteral("σ"),       QStringLiteral("Flags")});
}

void MainWindow::createViews()
{
    m_pTabWidget = new TabWidget(this);

    m_pFrameScene = new OriginalImgScene(this);
    m_pFrameScene->setShowProgress(false);
    m_pFrameScene->setBackgroundBrush(Qt::lightGray);
    for (int nSide : {0, 64, 128, 256, 512, 1024}) {
        m_pFrameScene->addSelectionRect(nSide, nSide);
    }
    m_pFrameView = new BaseImgView(m_pFrameScene, m_pTabWidget);
    explainArea(m_pFrameView,
                tr("The frame. Left drag moves it, the wheel zooms, the right button held shows pixel "
                   "values."));
    m_pFrameView->setRenderHint(QPainter::Antialiasing);
    m_pFrameView->setDragMode(QGraphicsView::ScrollHandDrag);
    // Files that are dropped on the frame are the window's, so neither view nor scene takes them.
    m_pFrameView->setAcceptDrops(false);
    m_pFrameView->viewport()->setAcceptDrops(false);
    m_pFrameView->addAction(m_pActions->m_pShowPeakLabels);
    m_pFrameView->setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(m_pFrameView, &BaseImgView::scaleChanged, m_pFrameScene, &OriginalImgScene::updateViewScale);
    connect(m_pFrameView, &BaseImgView::zoomIn, this, &MainWindow::zoomIn);
    connect(m_pFrameView, &BaseImgView::zoomOut, this, &MainWindow::zoomOut);
    m_pTabWidget->addTab(m_pFrameView, m_mapTabName[0]);
    m_pMarks = std::make_unique<CFrameMarks>(*m_pFrameScene);
    m_pPixelReadout = std::make_unique<CPixelReadout>(*m_pFrameScene, *m_pFrameView, *m_pTextData,
                                                      *statusBar());

    create3DView(m_pView3DRaw, m_mapTabName[1]);
    create3DView(m_pView3DMerged, m_mapTabName[2]);

    createPeakTable();
    createFrameLook();

    connect(m_pTabWidget, &TabWidget::currentChanged, this, &MainWindow::updateControls);
}

void MainWindow::closeEvent(QCloseEvent* pEvent)
{
    if (isRunning()) {
        // The run ends at its next look at the report, and the window is closed then.
        m_gate.wishes().bClose = true;
        pEvent->ignore();
        return;
    }
    stopImagePlay();
    m_pContrast->keep();
    keepWindowMemory();
    releaseFrameImages(m_dataSet.m_vecFrameImage);
    writeSettings();
    m_pExtractionPage->hide();  // windows that would stay open alone
    m_pLatticesDialog->hide();
    m_pGeometry->dialog().hide();
    m_pIntegration->forget();
    m_pSections->close();
    m_pCrystals->close();
    m_pGuideWindow.reset();
    if (m_pKeeper) {
        m_pKeeper->end();
    }
    pEvent->accept();
}

void MainWindow::statusBarMessage(const QString& str)
{
    statusBar()->showMessage(str);
}

void MainWindow::updateControls(int nPageIndex)
{
    auto* pView = qobject_cast<BaseImgView*>(m_pTabWidget->widget(nPageIndex));
    const bool bImageView = pView != nullptr;
    m_pActions->setInForce(m_pActions->m_pZoomIn, bImageView);
    m_pActions->setInForce(m_pActions->m_pZoomOut, bImageView);
    m_pScaleCombo->setEnabled(bImageView);
    for (QAction* pAction : qAsConst(m_pActions->m_listPalette)) {
        m_pActions->setInForce(pAction, bImageView);
    }

    const int nFrames = m_dataSet.m_listFrameFile.size();
    const bool bFrameView = bImageView && pView->scene() == m_pFrameScene;
    m_pFrameSpin->setEnabled(bFrameView && nFrames > 0);
    m_pFrameSlider->setEnabled(bFrameView && nFrames > 0);
    m_pActions->setInForce(m_pActions->m_pSaveCurrent, bFrameView && nFrames > 0);
    m_pActions->setInForce(m_pActions->m_pSaveSeries, bFrameView && nFrames > 1);
    for (QAction* pAction :
         {m_pActions->m_pScaledFrames, m_pActions->m_pReciprocalVolume, m_pActions->m_pSmvImages,
          m_pActions->m_pOtherPrograms, m_pActions->m_pReport, m_pActions->m_pFrames, m_pActions->m_pClose}) {
        m_pActions->setInForce(pAction, nFrames > 0);
    }
    if (bFrameView) {
        if (nFrames > 0) {
            {
                // A frame number beyond the series moves to its end, in both controls at once.
                const QSignalBlocker blockSpin(m_pFrameSpin);
                const QSignalBlocker blockSlider(m_pFrameSlider);
                m_pFrameSpin->setRange(1, nFrames);
                m_pFrameSlider->setRange(1, nFrames);
                m_pFrameSpin->setValue(m_pFrameSlider->value());
            }
            if (!m_pSeriesTitle->isBegun()) {  // which stands until a frame is chosen
                switchToImgIndex(m_nFrameToShow > 0 && m_nFrameToShow <= nFrames ? m_nFrameToShow
                                                                                 : m_pFrameSlider->value());
            }
        }
        m_pActions->m_listPalette.value(m_pFrameScene->palette(), m_pActions->m_listPalette.first())
            ->setChecked(true);
    }
    if (bImageView) {
        int nScale = 0;
        for (int i = int(m_vecScale.size()) - 1; i >= 0; --i) {
            if (std::abs(m_vecScale[i] - pView->scaleFactor()) < 0.001) {
                nScale = i;
            }
        }
        updateScale(nScale);
    }
    auto* pView3D = qobject_cast<ED3DWidget*>(m_pTabWidget->widget(nPageIndex));
    m_pView3DPage->setEnabled(pView3D != nullptr);
    m_pActions->setInForce(m_pActions->m_pMovieFrames, pView3D != nullptr);
    if (pView3D && pView3D != m_pView3DCurrent) {
        m_pView3DCurrent = pView3D;
        update3DViewControls();
    }
}

void MainWindow::updateScale(int nIndex)
{
    m_nScaleIndex = qBound(0, nIndex, int(m_vecScale.size()) - 1);
    {
        const QSignalBlocker blocker(m_pScaleCombo);
        m_pScaleCombo->setCurrentIndex(m_nScaleIndex);
        m_pScaleCombo->setEditText(m_pScaleCombo->itemText(m_nScaleIndex));
    }
    if (auto* pView = qobject_cast<BaseImgView*>(m_pTabWidget->currentWidget())) {
        pView->setScaleFactor(m_vecScale[m_nScaleIndex]);
    }
}

/// A percentage that was typed goes to the listed factor nearest to it; what is no number, back to the
/// factor in force.
void MainWindow::scaleTextEntered()
{
    QString strText = m_pScaleCombo->currentText();
    strText.remove(QLatin1Char('%'));
    bool bOk = false;
    const double dfScale = m_locale.toDouble(strText.trimmed(), &bOk) / 100;
    int nBest = m_nScaleIndex;
    if (bOk && dfScale > 0) {
        for (int i = 0; i < int(m_vecScale.size()); ++i) {
            if (std::abs(std::log(m_vecScale[i] / dfScale)) <
                std::abs(std::log(m_vecScale[nBest] / dfScale))) {
                nBest = i;
            }
        }
    }
    updateScale(nBest);
}

void MainWindow::zoomIn()
{
    updateScale(m_pScaleCombo->currentIndex() + 1);
}

void MainWindow::zoomOut()
{
    updateScale(m_pScaleCombo->currentIndex() - 1);
}

void MainWindow::paletteChanged()
{
    const auto* pView = qobject_cast<BaseImgView*>(m_pTabWidget->currentWidget());
    if (pView && pView->scene() == m_pFrameScene) {
        m_pFrameScene->setPalette(m_pActions->paletteIndex());
    }
}

void MainWindow::copyWindow()
{
    QWidget* pPage = m_pTabWidget->currentWidget();
    if (auto* pView3D = qobject_cast<ED3DWidget*>(pPage)) {
        const QImage image = pView3D->grabFrameBuffer();
        if (!image.isNull()) {  // without OpenGL there is no picture
            QApplication::clipboard()->setImage(image);
        }
        return;
    }
    if (pPage != m_pFrameView) {
        QApplication::clipboard()->setPixmap(pPage->grab());
        return;
    }
    const QSize size = m_pFrameScene->imageSize();
    if (size.width() < 1 || size.height() < 1) {
        return;
    }
    QImage image(size, QImage::Format_RGB888);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    m_pFrameScene->render(&painter, QRectF(QPointF(), size), QRectF(QPointF(), size));
    painter.end();
    QApplication::clipboard()->setImage(image);
}

void MainWindow::showGuide()
{
    const QString strFile = GuideWindow::guideFile();
    if (strFile.isEmpty()) {
        m_pMessageEdit->addMessage(tr("The guide is not there: it was not installed with the program."),
                                   Qt::red);
        return;
    }
    if (!m_pGuideWindow) {
        m_pGuideWindow = std::make_unique<GuideWindow>(strFile);
    }
    const bool bEmpty = m_dataSet.m_listFrameFile.isEmpty();
    m_pGuideWindow->showAt(bEmpty ? QString() : m_pToolBox->itemText(m_pToolBox->currentIndex()));
}

void MainWindow::about()
{
    // open() and not exec(): a run under way goes on behind the box.
    const QString strName = QStringLiteral("Tessera");
    auto* pBox = new QMessageBox(this);
    pBox->setAttribute(Qt::WA_DeleteOnClose);
    pBox->setWindowTitle(QStringLiteral("About %1").arg(strName));
    pBox->setIconPixmap(QIcon(QStringLiteral(":/images/tessera.png")).pixmap(64));
    pBox->setTextFormat(Qt::RichText);
    pBox->setText(QStringLiteral("<h3>%1 %2</h3>"
                                 "<p>A workbench for three-dimensional electron crystallography.</p>"
                                 "<p>It uses Qt %3, Qwt, FFTW and CMinpack.</p>")
                      .arg(strName, QStringLiteral(TESSERA_VERSION), QLatin1String(qVersion())));
    pBox->setStandardButtons(QMessageBox::Ok);
    pBox->setModal(true);
    pBox->open();
}

}  // namespace tessera
