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

    makeHunt(pSearch, pGrid);
    pGrid->addWidget(makeMask(pSearch), 4, 0, 1, 3);
    makeFoundPeaks(pSearch, pGrid);
    pGrid->addWidget(makeIntegration(pSearch), 6, 0, 1, 3);
    pGrid->addLayout(makeButtons(pSearch), 7, 0, 1, 3);
    pGrid->setColumnStretch(1, 1);
}

// Rows 0 to 3: the numbers of the hunt.
void PeakSearchPage::makeHunt(QWidget* pParent, QGridLayout* pGrid)
{
    using Parameters = PeakHuntingParameters;
    m_pPeakRadiusSpin = makeSpin(pParent, &Parameters::m_dfPeakRadius);
    m_pBackgroundRadiusSpin = makeSpin(pParent, &Parameters::m_dfBackgroundRadius);
    m_pThresholdSpin = makeSpin(pParent, &Parameters::m_dfPeakThreshold);
    // A preview costs transforms of the whole frame: one for each finished edit, not for each key.
    for (QDoubleSpinBox* pSpin : {m_pPeakRadiusSpin, m_pBackgroundRadiusSpin, m_pThresholdSpin}) {
        pSpin->setKeyboardTracking(false);
    }
    m_pSmoothRadiusSpin = makeSpin(pParent, &Parameters::m_dfSmoothRadius);
    for (QDoubleSpinBox* pSpin :
         {m_pPeakRadiusSpin, m_pBackgroundRadiusSpin, m_pThresholdSpin, m_pSmoothRadiusSpin}) {
        pSpin->setGroupSeparatorShown(true);
    }
    auto* pSmoothLabel = new QLabel(tr("Integration Radius"), pParent);
    addBox(pGrid, 0, tr("Peak Radius"), m_pPeakRadiusSpin);
    addBox(pGrid, 1, tr("Background Radius"), m_pBackgroundRadiusSpin);
    addBox(pGrid, 2, tr("(Peak- B.G.) Threshold"), m_pThresholdSpin);
    m_pAutoRadiiCheck = new QCheckBox(tr("Auto"), pParent);
    pGrid->addWidget(m_pAutoRadiiCheck, 0, 2, 2, 1);
    pGrid->addWidget(pSmoothLabel, 3, 0);
    pGrid->addWidget(m_pSmoothRadiusSpin, 3, 1);
    pSmoothLabel->hide();
    m_pSmoothRadiusSpin->hide();
    explain(m_pAutoRadiiCheck,
            tr("Determines both radii from the spots: measures some frames when it is switched on and before "
               "each run, and shows the result. Off: the radii that you enter are used."));
}

QGroupBox* PeakSearchPage::makeMask(QWidget* pParent)
{
    auto* pMask = new QGroupBox(tr("Mask"), pParent);
    auto* pLayout = new QVBoxLayout(pMask);
    m_pMaskTable = makeMaskTable(pMask);
    m_pRemoveAreasAction = new QAction(tr("Remove Selected"), m_pMaskTable);
    m_pMaskTable->addAction(m_pRemoveAreasAction);
    m_pMaskTable->setContextMenuPolicy(Qt::ActionsContextMenu);
    pLayout->addWidget(m_pMaskTable);
    m_pLoadMaskButton = new QPushButton(tr("Load..."), pMask);
    m_pLoadMaskButton->setToolTip(tr("Load mask data from a file"));
    m_pClearMaskButton = new QPushButton(tr("Clear"), pMask);
    m_pClearMaskButton->setToolTip(tr("Clear all mask data"));
    m_pShowMaskCheck = new QCheckBox(tr("Show"), pMask);
    m_pShowMaskCheck->setToolTip(tr("Show masks as overlay"));
    m_pFindDefectsButton = new QPushButton(tr("Find Defects"), pMask);
    auto* pButtons = new QHBoxLayout;
    pButtons->addWidget(m_pLoadMaskButton);
    pButtons->addWidget(m_pClearMaskButton);
    pButtons->addWidget(m_pFindDefectsButton);
    pButtons->addWidget(m_pShowMaskCheck);
    pLayout->addLayout(pButtons);

    explain(m_pRemoveAreasAction,
            tr("Removes the selected polygons from the mask; peaks in them are used again."));
    explain(m_pMaskTable,
            tr("Polygons in which no peaks are taken, with the counts of their corners: for the "
               "beam stop, ice rings and the rim of the detector. A right click removes the selected ones."));
    explain(m_pLoadMaskButton, tr("Replaces the polygons by those of a .msk file. Each line is "
                                  "\"number x y\" in pixels; corners of equal number make a polygon."));
    explain(m_pClearMaskButton, tr("Removes all polygons; peaks are used everywhere again."));
    explain(m_pShowMaskCheck, tr("Draws the polygons on the frame."));
    explain(m_pFindDefectsButton,
            tr("Searches some frames for invalid areas: dead or interpolated rows and columns, irregular "
               "edges, the shadow of an aperture or a beam stop, hot pixels. Offers areas for the mask, and "
               "the hot pixels for repair. The button then reads \"Stop\"."));
    return pMask;
}

// Row 5: whether the peaks are marked, and how many they are.
void PeakSearchPage::makeFoundPeaks(QWidget* pParent, QGridLayout* pGrid)
{
    m_pShowPeaksCheck = new QCheckBox(tr("Show Found Peaks"), pParent);
    pGrid->addWidget(m_pShowPeaksCheck, 5, 0);
    m_pLiveLabel = new QLabel(pParent);  // in the row of the check box, which has room beside it
    m_pLiveLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_pLiveLabel->setVisible(false);
    connect(m_pShowPeaksCheck, &QCheckBox::toggled, m_pLiveLabel, &QLabel::setVisible);
    pGrid->addWidget(m_pLiveLabel, 5, 1, 1, 2);
    explain(m_pShowPeaksCheck,
            tr("Marks the peaks of the frame in view with crosses, anew at each change of a "
               "radius or of the threshold, and on each frame during the run. Good: one cross on"
               " each spot, none on the background."));
}

QGroupBox* PeakSearchPage::makeIntegration(QWidget* pParent)
{
    using Parameters = PeakHuntingParameters;
    auto* pIntegration = new QGroupBox(tr("2D Integration"), pParent);
    auto* pGrid = new QGridLayout(pIntegration);
    m_pIntegrationRadiusSpin = makeSpin(pIntegration, &Parameters::m_dfIntegrationRadius);
    m_pIntegrationBackgroundSpin = makeSpin(pIntegration, &Parameters::m_dfIntegrationBackground);
    for (QDoubleSpinBox* pSpin : {m_pIntegrationRadiusSpin, m_pIntegrationBackgroundSpin}) {
        pSpin->setGroupSeparatorShown(true);
    }
    addBox(pGrid, 0, tr("Radius"), m_pIntegrationRadiusSpin, pIntegration->title());
    addBox(pGrid, 1, tr("Background"), m_pIntegrationBackgroundSpin, pIntegration->title());
    pGrid->setColumnStretch(1, 1);
    return pIntegration;
}

QLayout* PeakSearchPage::makeButtons(QWidget* pParent)
{
    m_pSuggestButton = new QPushButton(tr("Suggest..."), pParent);
    m_pRunButton = makeRunButton(pParent, tr("Run"), tr("Hunting peaks in diffraction patterns"),
                                 ButtonText::Bold);
    explain(m_pRunButton, tr("Searches all frames, maps the peaks into reciprocal space and merges them. The "
                             "button then reads \"Stop\"."));
    explain(m_pSuggestButton,
            tr("Measures some frames and suggests radii from the size and the distance of the spots, and a "
               "threshold from the noise, each with its reason. Nothing is set before you agree. The button "
               "then reads \"Stop\"."));
    auto* pButtons = new QHBoxLayout;
    pButtons->addWidget(m_pSuggestButton);
    pButtons->addWidget(m_pRunButton, 1);
    return pButtons;
}

}  // namespace tessera
