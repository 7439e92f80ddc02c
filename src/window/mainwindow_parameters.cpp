// MainWindow: the parameters between pages and members, and the signals of the pages.
#include "frameview/originalimgscene.h"
#include "view3d/ed3dwidget.h"
#include "window/crystal/geometrycontrol.h"
#include "window/crystal/latticesdialog.h"
#include "window/mainwindow.h"
#include "window/pages/cellpage.h"
#include "window/pages/extractionpage.h"
#include "window/pages/framespage.h"
#include "window/pages/lensdistortionbox.h"
#include "window/pages/mergingpage.h"
#include "window/pages/peaksearchpage.h"
#include "window/pages/refinementpage.h"
#include "window/pages/shiftpage.h"
#include "window/pages/view3dpage.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>
#include <QTableWidget>

namespace tessera {

/// Takes a number that is typed but not finished as if the user had left its box. Only for what can come
/// without a click elsewhere, such as a key that closes the window: taking it while the user types would put
/// the number into its full form under the cursor.
void MainWindow::finishTyping()
{
    auto* pTyped = qobject_cast<QAbstractSpinBox*>(QApplication::focusWidget());
    if (pTyped && isAncestorOf(pTyped)) {
        pTyped->interpretText();
    }
}

/// With true the members take the widgets' values, with false each widget whose value differs is set.
///
/// A run sees the same parameters from its start to its end: from its event pump nothing is copied. What
/// the user changes on the pages meanwhile outlives the run: where the run shows its results (false), a
/// widget whose member did not change stays as it is.
void MainWindow::syncParametersWithControls(bool bFromPanel)
{
    if (isPumping() || (bFromPanel && m_bShowingState)) {
        return;
    }
    if (bFromPanel) {
        m_bindings.takeFromControls();
        return;
    }
    // A refined axis has more decimals than one that was typed.
    m_pFramesPage->setAxisDecimals(m_dataSet.m_nAxisDecimals);
    m_bindings.showOnControls(isRunning() ? KeepControls::WhereMemberStays : KeepControls::None);
}

ParameterRecords MainWindow::parameterRecords()
{
    return {&m_dataSet,    &m_hunting,     &m_mapping,
            &m_merging,    &m_cellHunting, &m_indexing,
            &m_extraction, &m_refinement,  &m_dataSet.m_distortion};
}

/// A box knows its parameter by the table of parameters; the other controls are bound here one by one.
void MainWindow::bindParameters()
{
    m_bindings.bindBoxes(this, parameterRecords());
    m_bindings.bindCheck(m_pPeakSearchPage->m_pAutoRadiiCheck, m_hunting.m_bAutoRadii);
    m_bindings.bindCheck(m_pMergingPage->m_pGroupApplyStretching, m_mapping.m_bApplyStretching);
    m_bindings.bindCheck(m_pMergingPage->m_pRadioInFrames2DIntegration, m_merging.m_bIntegrate2D,
                         m_pMergingPage->m_pRadioInFramesPoint);
    m_bindings.bindCheck(m_pMergingPage->m_pRadioThroughFrames3DIntegration,
                         m_merging.m_bIntegrateThroughFrames, m_pMergingPage->m_pRadioThroughFramesMaximum);
    m_bindings.bindCheck(m_pCellPage->m_pCheckOutputIndexing, m_indexing.m_bOutputIndexing);
    m_bindings.bindCheck(m_pCellPage->m_pCheckOutputStatistics, m_indexing.m_bOutputStatistics);
    m_bindings.bindCheck(m_pCellPage->m_pCheckOutputRefinedCell, m_indexing.m_bOutputRefinedCell);
    m_bindings.bindCheck(m_pRefinementPage->m_pCheckRefine2D, m_refinement.m_bRefine2D);
    m_bindings.bindCheck(m_pRefinementPage->m_pCheckOutputPeakList, m_refinement.m_bOutputPeakList);
    m_bindings.bindCombo(m_pCellPage->m_pComboMethod, m_cellHunting.m_method);
    m_bindings.bindCheck(m_pCellPage->m_pCheckAutoRange, m_cellHunting.m_bAutoRange);
    m_bindings.bindCombo(m_pCellPage->m_pComboReflectionGrouping, m_indexing.m_nSpaceGroup);
}

/// The connections that last as long as the window.
void MainWindow::connectPages()
{
    connectFrameControls();
    connectPeakSearchPage();
    connectMergingPage();
    connectCellPage();
    connectLatticesDialog();
    connect3DPage();
    connectRefinementPage();
    connectExtractionPage();
}

void MainWindow::connectFrameControls()
{
    connect(m_pFrameSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, &MainWindow::switchToImgIndex);
    connect(m_pFrameSlider, &QSlider::valueChanged, this, &MainWindow::switchToImgIndex);
    for (QTableWidget* pTable : {m_pFramesPage->m_pFileTable, m_pShiftPage->m_pShiftTable}) {
        connect(pTable, &QTableWidget::currentCellChanged, this, [this](int nRow) {
            if (nRow >= 0) {  // a table that is emptied names no frame
                currentFileChangedInFileList(nRow);
            }
        });
    }
    connect(m_pFramesPage->m_pPlayForwardButton, &QPushButton::clicked, this, &MainWindow::playImageForward);
    connect(m_pFramesPage->m_pPlayBackwardButton, &QPushButton::clicked, this,
            &MainWindow::playImageBackward);
    connect(m_pFramesPage->m_pPlayStopButton, &QPushButton::clicked, this, &MainWindow::stopImagePlay);
    connect(m_pFramesPage->m_pPlayDelaySpin, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &MainWindow::imagePlayIntervalChanged);
    connect(&m_timerPlay, &QTimer::timeout, this, &MainWindow::playOneImage);
    m_timerPlay.setInterval(0);

    connect(m_pShiftPage->m_pRunButton, &QPushButton::clicked, this, &MainWindow::runShiftEvaluation);
    connect(m_pShiftPage->m_pLoadButton, &QPushButton::clicked, this, &MainWindow::loadEDShift);
    connect(m_pShiftPage->m_pExportButton, &QPushButton::clicked, this, &MainWindow::saveEDShift);
}

void MainWindow::connectPeakSearchPage()
{
    const PeakSearchPage& page = *m_pPeakSearchPage;
    connect(page.m_pRunButton, &QPushButton::clicked, this, &MainWindow::runPeakHunting);
    connect(page.m_pLoadMaskButton, &QPushButton::clicked, this, &MainWindow::loadPeakHuntingMask);
    connect(page.m_pClearMaskButton, &QPushButton::clicked, this, &MainWindow::clearPeakHuntingMask);
    connect(page.m_pRemoveAreasAction, &QAction::triggered, this, &MainWindow::removeSelectedMaskAreas);
    connect(page.m_pShowMaskCheck, &QCheckBox::toggled, this, &MainWindow::showPeakHuntingMask);
    connect(page.m_pShowPeaksCheck, &QCheckBox::toggled, this,
            &MainWindow::visualMoniteringPeakHuntingToggled);
    connect(page.m_pAutoRadiiCheck, &QCheckBox::toggled, this, &MainWindow::autoRadiiToggled);
    connect(page.m_pFindDefectsButton, &QPushButton::clicked, this, &MainWindow::findFrameDefects);
    connect(page.m_pSuggestButton, &QPushButton::clicked, this, &MainWindow::suggestPeakSearch);
}

void MainWindow::connectMergingPage()
{
    const MergingPage& page = *m_pMergingPage;
    connect(page.m_pButtonSuggest, &QPushButton::clicked, this, &MainWindow::suggestMerging);
    connect(page.m_pButtonLoadPeaks, &QPushButton::clicked, this, &MainWindow::loadRawPeaks);
    connect(page.m_pButtonExportPeaks, &QPushButton::clicked, this, &MainWindow::saveRawPeaks);
    connect(page.m_pButtonMerge, &QPushButton::clicked, this, &MainWindow::peakReduction3D);
}

void MainWindow::connectCellPage()
{
    const CellPage& page = *m_pCellPage;
    connect(page.m_pButtonLoadCell, &QPushButton::clicked, this, &MainWindow::loadUnitCell);
    connect(page.m_pButtonExportCell, &QPushButton::clicked, this, &MainWindow::exportUnitCell);
    connect(page.m_pButtonSuggest, &QPushButton::clicked, this, &MainWindow::suggestCellRange);
    connect(page.m_pButtonSearchCell, &QPushButton::clicked, this, &MainWindow::runUnitCellHunting);
    connect(page.m_pButtonKnownCell, &QPushButton::clicked, this, &MainWindow::searchKnownCell);
    connect(page.m_pCheckAutoRange, &QCheckBox::toggled, this, &MainWindow::showCellRange);
    connect(page.m_pRadioCellManual, &QRadioButton::toggled, this,
            &MainWindow::switchtoManualUnitCellHunting);
    connect(page.m_pButtonAssignRA, &QPushButton::clicked, this, &MainWindow::unitCellHuntingManualAssignRA);
    connect(page.m_pButtonAssignRB, &QPushButton::clicked, this, &MainWindow::unitCellHuntingManualAssignRB);
    connect(page.m_pButtonAssignRC, &QPushButton::clicked, this, &MainWindow::unitCellHuntingManualAssignRC);
    const auto onLength = [this](QDoubleSpinBox* pSpin, void (MainWindow::*pSlot)()) {
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, pSlot);
    };
    onLength(page.m_pSpinManualLengthA, &MainWindow::unitCellHuntingManualUpdateRA);
    onLength(page.m_pSpinManualLengthB, &MainWindow::unitCellHuntingManualUpdateRB);
    onLength(page.m_pSpinManualLengthC, &MainWindow::unitCellHuntingManualUpdateRC);
    for (const auto& apEditRow : page.m_apEditMatrix) {
        for (QLineEdit* pEdit : apEditRow) {
            connect(pEdit, &QLineEdit::editingFinished, this, &MainWindow::unitCellTransformatinMatrixEdited);
        }
    }
    connect(page.m_pButtonTest, &QPushButton::toggled, this, &MainWindow::testUnitCellToggled);
    connect(page.m_pButtonTransform, &QPushButton::clicked, this, &MainWindow::transformUnitCellClicked);
    connect(page.m_pButtonLattices, &QPushButton::clicked, this, &MainWindow::showLattices);
    connect(page.m_pButtonIndexMergedPeaks, &QPushButton::clicked, this, &MainWindow::runIndexing);
}

void MainWindow::connectLatticesDialog()
{
    const LatticesDialog& dialog = *m_pLatticesDialog;
    connect(dialog.m_pButtonRun, &QPushButton::clicked, this, &MainWindow::runLatticeAnalysis);
    connect(dialog.m_pButtonFillMatrix, &QPushButton::clicked, this, &MainWindow::fillMatrixFromLattices);
    connect(dialog.m_pButtonLongerCell, &QPushButton::clicked, this, &MainWindow::takeLongerCell);
    connect(dialog.m_pButtonChoose, &QPushButton::clicked, this, &MainWindow::chooseLattice);
    connect(dialog.m_pCheckColors, &QCheckBox::toggled, this, &MainWindow::showLatticeColors);
}

void MainWindow::connectRefinementPage()
{
    const RefinementPage& page = *m_pRefinementPage;
    connect(page.m_pButtonRunRefinement, &QPushButton::clicked, this, &MainWindow::runUnitCellRefinement);
    connect(page.m_pButtonGeometry, &QPushButton::clicked, m_pGeometry, &GeometryControl::showDialog);
    connect(page.m_pButtonRunRefinementFromList, &QPushButton::clicked, this,
            &MainWindow::runUnitCellRefinementFromLoadingData);
}

void MainWindow::connectExtractionPage()
{
    const ExtractionPage& page = *m_pExtractionPage;
    for (QSpinBox* pSpin : {page.m_pSpinWindowRadius, page.m_pSpinBackgroundSize}) {
        connect(pSpin, QOverload<int>::of(&QSpinBox::valueChanged), this,
                &MainWindow::showEstimatedPeakPosition);
    }
    connect(page.m_pRadioOrientationMatrix, &QRadioButton::toggled, this,
            &MainWindow::showEstimatedPeakPosition);
    connect(page.m_pSpinResolutionLimit, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &MainWindow::updateExpectedPeakPositionFromOrientationMatrix);
    connect(page.m_pCheckShowEstimated, &QCheckBox::toggled, this, &MainWindow::showEstimatedPeakPosition);
    connect(page.m_pButtonRun, &QPushButton::clicked, this, &MainWindow::runIntensityExtraction);
}

void MainWindow::connectPanelSignals(bool bConnect)
{
    if (bConnect == isPanelConnected()) {
        return;
    }
    if (bConnect) {
        connectGeometrySignals();
        connectViewSignals();
        connect3DSignals();
        return;
    }
    for (const QMetaObject::Connection& connection : qAsConst(m_listPanelConnection)) {
        disconnect(connection);
    }
    m_listPanelConnection.clear();
}

void MainWindow::keepPanelConnection(const QMetaObject::Connection& connection)
{
    m_listPanelConnection.append(connection);
}

void MainWindow::onPanelNumber(const QList<QDoubleSpinBox*>& listSpin, const std::function<void()>& fnChanged)
{
    for (QDoubleSpinBox* pSpin : listSpin) {
        keepPanelConnection(
            connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, fnChanged));
    }
}

/// What moves the peaks in reciprocal space.
void MainWindow::connectGeometrySignals()
{
    const auto remap = [this] { recalculate3DPeakPositionsAndUpdateView(); };
    onPanelNumber({m_pFramesPage->m_pWavelengthSpin, m_pFramesPage->m_pPixelSizeSpin,
                   m_pFramesPage->m_pRotationAxisSpin, m_pFramesPage->m_pTiltRelaxationSpin,
                   m_pMergingPage->m_pSpinStretchAmplitude, m_pMergingPage->m_pSpinStretchAzimuth},
                  remap);
    onPanelNumber(m_pMergingPage->m_pLensDistortion->boxes(), remap);
    keepPanelConnection(connect(m_pMergingPage->m_pGroupApplyStretching, &QGroupBox::toggled, this, remap));
    onPanelNumber({m_pFramesPage->m_pRotationAxisSpin}, [this] {
        m_dataSet.m_bRotationAxisKnown = true;  // by whoever has typed it
        showRotationAxisLine();
    });
    onPanelNumber({m_pShiftPage->m_pCenterXSpin, m_pShiftPage->m_pCenterYSpin}, [this] {
        showRotationAxisLine();
        updateExpectedPeakPositionFromOrientationMatrix();
    });
}

/// What changes the picture of the frame, the marks on it, or which peaks the raw view shows.
void MainWindow::connectViewSignals()
{
    keepPanelConnection(
        connect(m_pFrameScene, &OriginalImgScene::selRectPosChanged, this, &MainWindow::selRectChanged));
    keepPanelConnection(
        connect(m_pFrameScene, &OriginalImgScene::mouseMoving, this, &MainWindow::mouseMoving));
    keepPanelConnection(connect(m_pFramesPage->m_pShowAxisCheck, &QCheckBox::toggled, this,
                                &MainWindow::showRotationAxisLine));
    onPanelNumber({m_pFramesPage->m_pContrastMinSpin, m_pFramesPage->m_pContrastMaxSpin},
                  [this] { refreshImageView(); });
    onPanelNumber({m_pPeakSearchPage->m_pPeakRadiusSpin, m_pPeakSearchPage->m_pBackgroundRadiusSpin,
                   m_pPeakSearchPage->m_pThresholdSpin},
                  [this] { peakHuntingParametersChanged(); });
    onPanelNumber({m_pMergingPage->m_pSpinResolutionMin, m_pMergingPage->m_pSpinResolutionMax,
                   m_pMergingPage->m_pSpinIntensityMin, m_pMergingPage->m_pSpinIntensityMax},
                  [this] { showPeaksIn3D(); });
}

/// The page of the 3D view. What changed while the signals were cut is shown now.
void MainWindow::connect3DSignals()
{
    const View3DPage& page = *m_pView3DPage;
    const auto onWhole = [this](QSpinBox* pSpin, auto pSlot) {
        keepPanelConnection(connect(pSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, pSlot));
    };
    keepPanelConnection(connect(page.m_pSpinPointSize, QOverload<double>::of(&QDoubleSpinBox::valueChanged),
                                this, &MainWindow::pointSize3DChanged));
    onWhole(page.m_pSpinPointTransparency, &MainWindow::pointAlpha3DChanged);
    keepPanelConnection(
        connect(page.m_pGroupCanvasGrid, &QGroupBox::toggled, this, &MainWindow::canvasGridToggled));
    onWhole(page.m_pSpinCanvasGridTransparency, &MainWindow::canvasGridTransparencyChanged);
    keepPanelConnection(connect(page.m_pCheckLatticePoints, &QCheckBox::toggled, this,
                                &MainWindow::unitCellLatticePointsToggled));
    keepPanelConnection(connect(page.m_pCheckLatticeLines, &QCheckBox::toggled, this,
                                &MainWindow::unitCellLatticeLinesToggled));
    for (QSpinBox* pSpin : {page.m_pSpinLatticeH, page.m_pSpinLatticeK, page.m_pSpinLatticeL}) {
        onWhole(pSpin, &MainWindow::unitCellLatticeRangeChanged);
    }
    keepPanelConnection(connect(page.m_pTablePeakGroups, &QTableWidget::cellClicked, this,
                                &MainWindow::pointGroupTableCellClicked));
    keepPanelConnection(connect(page.m_pTablePeakGroups, &QTableWidget::cellChanged, this,
                                &MainWindow::pointGroupTableLabelEdidted));
    for (ED3DWidget* pView : views3D()) {
        keepPanelConnection(connect(pView, &ED3DWidget::pointDisplayDataChanged, this,
                                    &MainWindow::ed3dViewPointDisplayDataChanged));
    }
    for (ED3DWidget* pView : views3D()) {
        ed3dViewPointDisplayDataChanged(pView);
    }
}

}  // namespace tessera
