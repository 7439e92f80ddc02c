#include "window/pages/shiftpage.h"

#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QAction>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QToolBar>
#include <QVBoxLayout>

namespace tessera {

namespace {

QTableWidget* makeShiftTable(QWidget* pParent)
{
    auto* pTable = new QTableWidget(0, 2, pParent);
    pTable->setHorizontalHeaderLabels({QStringLiteral("x"), QStringLiteral("y")});
    pTable->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    pTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    pTable->setAlternatingRowColors(true);
    setLowRows(pTable);
    pTable->setToolTip(ShiftPage::tr("Shift of the images with respect to the first one"));
    return pTable;
}

}  // namespace

ShiftPage::ShiftPage(const QList<QAction*>& listSizeAction, QWidget* pParent) : QWidget(pParent)
{
    auto* pPageLayout = new QVBoxLayout(this);

    auto* pRegion = new QGroupBox(tr("Reference Region"), this);
    auto* pRegionLayout = new QHBoxLayout(pRegion);
    auto* pToolBar = new QToolBar(pRegion);
    pToolBar->addActions(listSizeAction);
    pRegionLayout->addStretch();
    pRegionLayout->addWidget(pToolBar);
    pRegionLayout->addStretch();
    pPageLayout->addWidget(pRegion);

    m_pRunButton = makeRunButton(this, tr("Run"), tr("Run shift evaluation"), ButtonText::Plain);
    m_pRunButton->setEnabled(false);
    pPageLayout->addWidget(m_pRunButton);

    auto* pShift = new QGroupBox(tr("Shift (Pixels)"), this);
    auto* pShiftLayout = new QVBoxLayout(pShift);
    m_pShiftTable = makeShiftTable(pShift);
    pShiftLayout->addWidget(m_pShiftTable, 1);

    auto* pCenter = new QGroupBox(tr("Center (Direct Beam) At"), pShift);
    auto* pCenterLayout = new QGridLayout(pCenter);
    m_pCenterXSpin = makeSpin(pCenter, &DataSet::m_dfCenterX);
    m_pCenterYSpin = makeSpin(pCenter, &DataSet::m_dfCenterY);
    for (QDoubleSpinBox* pSpin : {m_pCenterXSpin, m_pCenterYSpin}) {
        pSpin->setGroupSeparatorShown(true);
    }
    pCenterLayout->addWidget(new QLabel(tr("X"), pCenter), 0, 0);
    pCenterLayout->addWidget(m_pCenterXSpin, 0, 1);
    pCenterLayout->addWidget(new QLabel(tr("Y"), pCenter), 0, 2);
    pCenterLayout->addWidget(m_pCenterYSpin, 0, 3);
    pCenterLayout->setColumnStretch(1, 1);
    pCenterLayout->setColumnStretch(3, 1);
    pShiftLayout->addWidget(pCenter);

    auto* pButtonLayout = new QHBoxLayout;
    m_pLoadButton = new QPushButton(tr("Load..."), pShift);
    m_pLoadButton->setToolTip(tr("Load data of shift corrections from a file"));
    m_pExportButton = new QPushButton(tr("Export..."), pShift);
    m_pExportButton->setToolTip(tr("Save data of shift corrections in the above list to a file"));
    pButtonLayout->addWidget(m_pLoadButton);
    pButtonLayout->addWidget(m_pExportButton);
    pShiftLayout->addLayout(pButtonLayout);
    explain(m_pRunButton,
            tr("Measures the drift of each frame by correlating its region with the sum of the "
               "regions so far, then fits the direct beam on that sum. Needs a reference region "
               "around the direct beam."));
    explain(m_pShiftTable,
            tr("Drift of the pattern, pixels, relative to the first frame. It should change smoothly: if it "
               "jumps, use a smaller region; if values stay at a limit, a larger one."));
    explain(m_pLoadButton, tr("Reads shifts and direct beam from a .sc file."));
    explain(m_pExportButton, tr("Writes shifts and direct beam to a .sc file."));
    pPageLayout->addWidget(pShift, 1);
}

}  // namespace tessera
