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
#include "window/windowactions.h"

#include <QAbstractSpinBox>
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
    // An axis that was refined has more decimals than one that somebody told.
    m_pFramesPage->setAxisDecimals(m_dataSet.m_nAxisDecimals);
    m_bindings.showOnControls(isRunning() ? KeepControls::WhereMemberStays : KeepControls::None);
}

ParameterRecords MainWindow::parameterRecords()
{
    return {&m_dataSet,    &m_hunting,     &m_mapping,
            &m_merging,    &m_cellHunting, &m_indexing,
            &m_extraction, &m_refinement,  &m_dataSet.m_distortion};
}

/// The boxes know by the table of parameters what they stand for; the other controls are told here.
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

/// The connections that stand as long as the window.
void MainWindow::connectPages()
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

    connect(m_pPeakSearchPage->m_pRunButton, &QPushButton::clicked, this, &MainWindow::runPeakHunting);
    connect(m_pPeakSearchPage->m_pLoadMaskButton, &QPushButton::clicked, this,
            &MainWindow::loadPeakHuntingMask);
    connect(m_pPeakSearchPage->m_pClearMaskButton, &QPushButton::clicked, this,
            &MainWindow::clearPeakHuntingMask);
    connect(m_pPeakSearchPage->m_pRemoveAreasAction, &QAction::triggered, this,
            &MainWindow::removeSelectedMaskAreas);
    connect(m_pPeakSearchPage->m_pShowMaskCheck, &QCheckBox::toggled, this, &MainWindow::showPeakHuntingMask);
    connect(m_pPeakSearchPage->m_pShowPeaksCheck, &QCheckBox::toggled, this,
            &MainWindow::visualMoniteringPeakHuntingToggled);

    connect(m_pPeakSearchPage->m_pAutoRadiiCheck, &QCheckBox::toggled, this, &MainWindow::autoRadiiToggled);
    connect(m_pPeakSearchPage->m_pFindDefectsButton, &QPushButton::clicked, this,
            &MainWindow::findFrameDefects);
    connect(m_pPeakSearchPage->m_pSuggestButton, &QPushButton::clicked, this, &MainWindow::suggestPeakSearch);

    connect(m_pMergingPage->m_pButtonSuggest, &QPushButton::clicked, this, &MainWindow::suggestMerging);
    connect(m_pMergingPage->m_pButtonLoadPeaks, &QPushButton::clicked, this, &MainWindow::loadRawPeaks);
    connect(m_pMergingPage->m_pButtonExportPeaks, &QPushButton::clicked, this, &MainWindow::saveRawPeaks);
    connect(m_pMergingPage->m_pButtonMerge, &QPushButton::clicked, this, &MainWindow::peakReduction3D);
    connect(m_pCellPage->m_pButtonLoadCell, &QPushButton::clicked, this, &MainWindow::loadUnitCell);
    connect(m_pCellPage->m_pButtonExportCell, &QPushButton::clicked, this, &MainWindow::exportUnitCell);

    connect(m_pCellPage->m_pButtonSuggest, &QPushButton::clicked, this, &MainWindow::suggestCellRange);
    connect(m_pCellPage->m_pButtonSearchCell, &QPushButton::clicked, this, &MainWindow::runUnitCellHunting);
    connect(m_pCellPage->m_pButtonKnownCell, &QPushButton::clicked, this, &MainWindow::searchKnownCell);
    connect(m_pCellPage->m_pCheckAutoRange, &QCheckBox::toggled, this, &MainWindow::showCellRange);
    connect(m_pCellPage->m_pRadioCellManual, &QRadioButton::toggled, this,
            &MainWindow::switchtoManualUnitCellHunting);
    connect(m_pCellPage->m_pButtonAssignRA, &QPushButton::clicked, this,
            &MainWindow::unitCellHuntingManualAssignRA);
    connect(m_pCellPage->m_pButtonAssignRB, &QPushButton::clicked, this,
            &MainWindow::unitCellHuntingManualAssignRB);
    connect(m_pCellPage->m_pButtonAssignRC, &QPushButton::clicked, this,
            &MainWindow::unitCellHuntingManualAssignRC);
    const auto onLength = [this](QDoubleSpinBox* pSpin, void (MainWindow::*pSlot)()) {
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, pSlot);
    };
    onLength(m_pCellPage->m_pSpinManualLengthA, &MainWindow::unitCellHuntingManualUpdateRA);
    onLength(m_pCellPage->m_pSpinManualLengthB, &MainWindow::unitCellHuntingManualUpdateRB);
    onLength(m_pCellPage->m_pSpinManualLengthC, &MainWindow::unitCellHuntingManualUpdateRC);
    for (const auto& apEditRow : m_pCellPage->m_apEditMatrix) {
        for (QLineEdit* pEdit : apEditRow) {
            connect(pEdit, &QLineEdit::editingFinished, this, &MainWindow::unitCellTransformatinMatrixEdited);
        }
    }
    connect(m_pCellPage->m_pButtonTest, &QPushButton::toggled, this, &MainWindow::testUnitCellToggled);
    connect(m_pCellPage->m_pButtonTransform, &QPushButton::clicked, this,
            &MainWindow::transformUnitCellClicked);
    connect(m_pCellPage->m_pButtonLattices, &QPushButton::clicked, this, &MainWindow::showLattices);
    connect(m_pLatticesDialog->m_pButtonRun, &QPushButton::clicked, this, &MainWindow::runLatticeAnalysis);
    connect(m_pLatticesDialog->m_pButtonFillMatrix, &QPushButton::clicked, this,
            &MainWindow::fillMatrixFromLattices);
    connect(m_pLatticesDialog->m_pButtonLongerCell, &QPushButton::clicked, this, &MainWindow::takeLongerCell);
    connect(m_pLatticesDialog->m_pButtonChoose, &QPushButton::clicked, this, &MainWindow::chooseLattice);
    connect(m_pLatticesDialog->m_pCheckColors, &QCheckBox::toggled, this, &MainWindow::showLatticeColors);
    connect(m_pCellPage->m_pButtonIndexMergedPeaks, &QPushButton::clicked, this, &MainWindow::runIndexing);
    connect3DPage();

    connect(m_pRefinementPage->m_pButtonRunRefinement, &QPushButton::clicked, this,
            &MainWindow::runUnitCellRefinement);
    connect(m_pRefinementPage->m_pButtonGeometry, &QPushButton::clicked, m_pGeometry,
            &GeometryControl::showDialog);
    connect(m_pRefinementPage->m_pButtonRunRefinementFromList, &QPushButton::clicked, this,
            &MainWindow::runUnitCellRefinementFromLoadingData);
    for (QSpinBox* pSpin :
         {m_pExtractionPage->m_pSpinWindowRadius, m_pExtractionPage->m_pSpinBackgroundSize}) {
        connect(pSpin, QOverload<int>::of(&QSpinBox::valueChanged), this,
                &MainWindow::showEstimatedPeakPosition);
    }
    connect(m_pExtractionPage->m_pRadioOrientationMatrix, &QRadioButton::toggled, this,
            &MainWindow::showEstimatedPeakPosition);
    connect(m_pExtractionPage->m_pSpinResolutionLimit, QOverload<double>::of(&QDoubleSpinBox::valueChanged),
            this, &MainWindow::updateExpectedPeakPositionFromOrientationMatrix);
    connect(m_pExtractionPage->m_pCheckShowEstimated, &QCheckBox::toggled, this,
            &MainWindow::showEstimatedPeakPosition);
    connect(m_pExtractionPage->m_pButtonRun, &QPushButton::clicked, this,
            &MainWindow::runIntensityExtraction);

    m_pView3DPage->m_pTablePeakGroups->addActions({m_pActions->m_pGroupReset, m_pActions->m_pGroupMerge,
                                                   m_pActions->m_pGroupResetAll, m_pActions->m_pGroupExport});
    m_pView3DPage->m_pTablePeakGroups->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void MainWindow::connectPanelSignals(bool bConnect)
{
    if (bConnect == m_bPanelConnected) {
        return;
    }
    m_bPanelConnected = bConnect;
    if (!bConnect) {
        for (const QMetaObject::Connection& connection : qAsConst(m_listPanelConnection)) {
            disconnect(connection);
        }
        m_listPanelConnection.clear();
        return;
    }
    const auto keep = [this](const QMetaObject::Connection& connection) {
        m_listPanelConnection.append(connection);
    };
    const auto onValue = [&](const QList<QDoubleSpinBox*>& listSpin, const std::function<void()>& fnChanged) {
        for (QDoubleSpinBox* pSpin : listSpin) {
            keep(connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, fnChanged));
        }
    };
    const auto remap = [this] { recalculate3DPeakPositionsAndUpdateView(); };

    keep(connect(m_pFrameScene, &OriginalImgScene::selRectPosChanged, this, &MainWindow::selRectChanged));
    keep(connect(m_pFrameScene, &OriginalImgScene::mouseMoving, this, &MainWindow::mouseMoving));
    onValue({m_pFramesPage->m_pWavelengthSpin, m_pFramesPage->m_pPixelSizeSpin,
             m_pFramesPage->m_pRotationAxisSpin, m_pFramesPage->m_pTiltRelaxationSpin,
             m_pMergingPage->m_pSpinStretchAmplitude, m_pMergingPage->m_pSpinStretchAzimuth},
            remap);
    onValue(m_pMergingPage->m_pLensDistortion->boxes(), remap);
    keep(connect(m_pMergingPage->m_pGroupApplyStretching, &QGroupBox::toggled, this, remap));
    onValue({m_pFramesPage->m_pRotationAxisSpin}, [this] {
        m_dataSet.m_bRotationAxisKnown = true;  // by whoever has typed it
        showRotationAxisLine();
    });
    onValue({m_pShiftPage->m_pCenterXSpin, m_pShiftPage->m_pCenterYSpin}, [this] {
        showRotationAxisLine();
        updateExpectedPeakPositionFromOrientationMatrix();
    });
    keep(connect(m_pFramesPage->m_pShowAxisCheck, &QCheckBox::toggled, this,
                 &MainWindow::showRotationAxisLine));
    onValue({m_pFramesPage->m_pContrastMinSpin, m_pFramesPage->m_pContrastMaxSpin},
            [this] { refreshImageView(); });
    onValue({m_pPeakSearchPage->m_pPeakRadiusSpin, m_pPeakSearchPage->m_pBackgroundRadiusSpin,
             m_pPeakSearchPage->m_pThresholdSpin},
            [this] { peakHuntingParametersChanged(); });
    onValue({m_pMergingPage->m_pSpinResolutionMin, m_pMergingPage->m_pSpinResolutionMax,
             m_pMergingPage->m_pSpinIntensityMin, m_pMergingPage->m_pSpinIntensityMax},
            [this] { showPeaksIn3D(); });

    const View3DPage& page3D = *m_pView3DPage;
    const auto onWhole = [&](QSpinBox* pSpin, auto pSlot) {
        keep(connect(pSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, pSlot));
    };
    keep(connect(page3D.m_pSpinPointSize, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                 &MainWindow::pointSize3DChanged));
    onWhole(page3D.m_pSpinPointTransparency, &MainWindow::pointAlpha3DChanged);
    keep(connect(page3D.m_pGroupCanvasGrid, &QGroupBox::toggled, this, &MainWindow::canvasGridToggled));
    onWhole(page3D.m_pSpinCanvasGridTransparency, &MainWindow::canvasGridTransparencyChanged);
    keep(connect(page3D.m_pCheckLatticePoints, &QCheckBox::toggled, this,
                 &MainWindow::unitCellLatticePointsToggled));
    keep(connect(page3D.m_pCheckLatticeLines, &QCheckBox::toggled, this,
                 &MainWindow::unitCellLatticeLinesToggled));
    for (QSpinBox* pSpin : {page3D.m_pSpinLatticeH, page3D.m_pSpinLatticeK, page3D.m_pSpinLatticeL}) {
        onWhole(pSpin, &MainWindow::unitCellLatticeRangeChanged);
    }
    keep(connect(page3D.m_pTablePeakGroups, &QTableWidget::cellClicked, this,
                 &MainWindow::pointGroupTableCellClicked));
    keep(connect(page3D.m_pTablePeakGroups, &QTableWidget::cellChanged, this,
                 &MainWindow::pointGroupTableLabelEdidted));
    for (ED3DWidget* pView : views3D()) {
        keep(connect(pView, &ED3DWidget::pointDisplayDataChanged, this,
                     &MainWindow::ed3dViewPointDisplayDataChanged));
    }
    for (ED3DWidget* pView : views3D()) {
        ed3dViewPointDisplayDataChanged(pView);  // what changed while nobody listened
    }
}

}  // namespace tessera
