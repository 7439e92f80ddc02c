#include "window/pages/peaksearchpage.h"

#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QAction>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tessera {

namespace {

QTableWidget* makeMaskTable(QWidget* pParent)
{
    auto* pTable = new QTableWidget(0, 1, pParent);
    pTable->setHorizontalHeaderLabels({PeakSearchPage::tr("Point Counts")});
    pTable->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    pTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    pTable->setAlternatingRowColors(true);
    setLowRows(pTable);
    pTable->setToolTip(PeakSearchPage::tr("Masks for areas to exclude in peak hunting"));
    return pTable;
}

}  // namespace

PeakSearchPage::PeakSearchPage(QWidget* pParent) : QWidget(pParent)
{
    auto* pPageLayout = new QVBoxLayout(this);
    auto* pSearch = new QGroupBox(tr("Peak Search && Intensity Extraction"), this);
    auto* pGrid = new QGridLayout(pSearch);
    pPageLayout->addWidget(pSearch);

    using Parameters = PeakHuntingParameters;
    m_pPeakRadiusSpin = makeSpin(pSearch, &Parameters::m_dfPeakRadius);
    m_pBackgroundRadiusSpin = makeSpin(pSearch, &Parameters::m_dfBackgroundRadius);
    m_pThresholdSpin = makeSpin(pSearch, &Parameters::m_dfPeakThreshold);
    // A preview costs transforms of the whole frame: one for each finished edit, not for each key.
    for (QDoubleSpinBox* pSpin : {m_pPeakRadiusSpin, m_pBackgroundRadiusSpin, m_pThresholdSpin}) {
        pSpin->setKeyboardTracking(false);
    }
    m_pSmoothRadiusSpin = makeSpin(pSearch, &Parameters::m_dfSmoothRadius);
    for (QDoubleSpinBox* pSpin :
         {m_pPeakRadiusSpin, m_pBackgroundRadiusSpin, m_pThresholdSpin, m_pSmoothRadiusSpin}) {
        pSpin->setGroupSeparatorShown(true);
    }
    auto* pSmoothLabel = new QLabel(tr("Integration Radius"), pSearch);
    addBox(pGrid, 0, tr("Peak Radius"), m_pPeakRadiusSpin);
    addBox(pGrid, 1, tr("Background Radius"), m_pBackgroundRadiusSpin);
    addBox(pGrid, 2, tr("(Peak- B.G.) Threshold"), m_pThresholdSpin);
    m_pAutoRadiiCheck = new QCheckBox(tr("Auto"), pSearch);
    pGrid->addWidget(m_pAutoRadiiCheck, 0, 2, 2, 1);
    pGrid->addWidget(pSmoothLabel, 3, 0);
    pGrid->addWidget(m_pSmoothRadiusSpin, 3, 1);
    pSmoothLabel->hide();
    m_pSmoothRadiusSpin->hide();

    auto* pMask = new QGroupBox(tr("Mask"), pSearch);
    auto* pMaskLayout = new QVBoxLayout(pMask);
    m_pMaskTable = makeMaskTable(pMask);
    m_pRemoveAreasAction = new QAction(tr("Remove Selected"), m_pMaskTable);
    m_pMaskTable->addAction(m_pRemoveAreasAction);
    m_pMaskTable->setContextMenuPolicy(Qt::ActionsContextMenu);
    explain(m_pRemoveAreasAction,
            tr("Takes the selected polygons out of the mask; peaks are taken in them again."));
    pMaskLayout->addWidget(m_pMaskTable);
    auto* pMaskButtons = new QHBoxLayout;
    m_pLoadMaskButton = new QPushButton(tr("Load..."), pMask);
    m_pLoadMaskButton->setToolTip(tr("Load mask data from a file"));
    m_pClearMaskButton = new QPushButton(tr("Clear"), pMask);
    m_pClearMaskButton->setToolTip(tr("Clear all mask data"));
    m_pShowMaskCheck = new QCheckBox(tr("Show"), pMask);
    m_pShowMaskCheck->setToolTip(tr("Show masks as overlay"));
    m_pFindDefectsButton = new QPushButton(tr("Find Defects"), pMask);
    pMaskButtons->addWidget(m_pLoadMaskButton);
    pMaskButtons->addWidget(m_pClearMaskButton);
    pMaskButtons->addWidget(m_pFindDefectsButton);
    pMaskButtons->addWidget(m_pShowMaskCheck);
    pMaskLayout->addLayout(pMaskButtons);
    pGrid->addWidget(pMask, 4, 0, 1, 3);

    m_pShowPeaksCheck = new QCheckBox(tr("Show Found Peaks"), pSearch);
    pGrid->addWidget(m_pShowPeaksCheck, 5, 0);
    m_pLiveLabel = new QLabel(pSearch);  // in the row of the check box, which has room beside it
    m_pLiveLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_pLiveLabel->setVisible(false);
    connect(m_pShowPeaksCheck, &QCheckBox::toggled, m_pLiveLabel, &QLabel::setVisible);
    pGrid->addWidget(m_pLiveLabel, 5, 1, 1, 2);

    auto* pIntegration = new QGroupBox(tr("2D Integration"), pSearch);
    auto* pIntegrationLayout = new QGridLayout(pIntegration);
    m_pIntegrationRadiusSpin = makeSpin(pIntegration, &Parameters::m_dfIntegrationRadius);
    m_pIntegrationBackgroundSpin = makeSpin(pIntegration, &Parameters::m_dfIntegrationBackground);
    for (QDoubleSpinBox* pSpin : {m_pIntegrationRadiusSpin, m_pIntegrationBackgroundSpin}) {
        pSpin->setGroupSeparatorShown(true);
    }
    addBox(pIntegrationLayout, 0, tr("Radius"), m_pIntegrationRadiusSpin, pIntegration->title());
    addBox(pIntegrationLayout, 1, tr("Background"), m_pIntegrationBackgroundSpin, pIntegration->title());
    pIntegrationLayout->setColumnStretch(1, 1);
    pGrid->addWidget(pIntegration, 6, 0, 1, 3);

    m_pSuggestButton = new QPushButton(tr("Suggest..."), pSearch);
    m_pRunButton = makeRunButton(pSearch, tr("Run"), tr("Hunting peaks in diffraction patterns"), true);
    explain(m_pMaskTable,
            tr("Polygons in which no peaks are taken, with the counts of their corners: for the "
               "beam stop, ice rings and the rim of the detector. A right click removes the selected ones."));
    explain(m_pLoadMaskButton,
            tr("Takes the polygons of a .msk file in the place of those that are there. Each line is "
               "\"number x y\" in pixels; corners of equal number make a polygon."));
    explain(m_pClearMaskButton, tr("Forgets all polygons; peaks are taken everywhere again."));
    explain(m_pShowMaskCheck, tr("Draws the polygons on the frame."));
    explain(m_pShowPeaksCheck,
            tr("Marks the peaks of the frame in view with crosses, anew at each change of a "
               "radius or of the threshold, and on each frame during the run. Good: one cross on"
               " each spot, none on the background."));
    explain(m_pRunButton, tr("Searches all frames, maps the peaks into reciprocal space and merges them. The "
                             "button then reads \"Stop\"."));
    explain(m_pAutoRadiiCheck,
            tr("Takes both radii from the spots: measures some frames when it is switched on and before each "
               "run, and shows what it found. Off: the radii are those that you type."));
    explain(m_pFindDefectsButton,
            tr("Looks at some frames for what is no measurement: dead or interpolated rows and columns, odd "
               "edges, the shadow of an aperture or a beam stop, hot pixels. Offers areas for the mask, and "
               "the hot pixels for repair. The button then reads \"Stop\"."));
    explain(m_pSuggestButton,
            tr("Measures some frames and offers radii by the size and the distance of the spots, and a "
               "threshold by the noise, each with its reason. Nothing is set before you say so. The button "
               "then reads \"Stop\"."));
    auto* pButtons = new QHBoxLayout;
    pButtons->addWidget(m_pSuggestButton);
    pButtons->addWidget(m_pRunButton, 1);
    pGrid->addLayout(pButtons, 7, 0, 1, 3);
    pGrid->setColumnStretch(1, 1);
}

}  // namespace tessera
