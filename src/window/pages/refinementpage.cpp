#include "window/pages/refinementpage.h"

#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tessera {

namespace {

const int g_nSpinWidth = 95;  // pixels

/// A group of a lower and an upper limit in one row.
QGroupBox* makeRange(const QString& strTitle, QDoubleSpinBox* pSpinLow, QDoubleSpinBox* pSpinHigh,
                     QWidget* pParent)
{
    auto* pGroup = new QGroupBox(strTitle, pParent);
    // Room for usual values: two boxes as wide as their ranges would make the whole tool box wider.
    for (QDoubleSpinBox* pSpin : {pSpinLow, pSpinHigh}) {
        pSpin->setMinimumWidth(g_nSpinWidth);
    }
    auto* pGrid = new QGridLayout(pGroup);
    pGrid->addWidget(new QLabel(RefinementPage::tr("Low"), pGroup), 0, 0);
    pGrid->addWidget(pSpinLow, 0, 1);
    pGrid->addWidget(new QLabel(RefinementPage::tr("High"), pGroup), 0, 2);
    pGrid->addWidget(pSpinHigh, 0, 3);
    pGrid->setColumnStretch(1, 100);
    pGrid->setColumnStretch(3, 100);
    return pGroup;
}

}  // namespace

RefinementPage::RefinementPage(QWidget* pParent) : QWidget(pParent)
{
    using Parameters = RefinementParameters;
    m_pSpinRefineIntensityLow = makeSpin(this, &Parameters::m_dfRefineIntensityLow);
    m_pSpinRefineIntensityHigh = makeSpin(this, &Parameters::m_dfRefineIntensityHigh);
    m_pSpinRefineDStarLow = makeSpin(this, &Parameters::m_dfRefineDStarLow);
    m_pSpinRefineDStarHigh = makeSpin(this, &Parameters::m_dfRefineDStarHigh);
    m_pCheckRefine2D = new QCheckBox(tr("Refine 2D Positions to Sub-pixel Accuracy"), this);
    m_pCheckOutputPeakList = new QCheckBox(tr("Output Peak List to the Message Window"), this);

    m_pButtonRunRefinement = makeRunButton(
        this, tr("&Run"), tr("Run unit cell refinement using indexed peaks in the frames"), ButtonText::Bold);

    m_pButtonRunRefinementFromList = new QPushButton(tr("&Run from HKL list..."), this);
    m_pButtonRunRefinementFromList->setStatusTip(tr("Run unit cell refinement using an hkl list in file"));
    m_pButtonRunRefinementFromList->setToolTip(
        tr("Sums the frames of each beam tilt series and exports the sums as MRC files to a folder"));

    m_pButtonGeometry = new QPushButton(tr("&Geometry Refinement..."), this);
    explain(
        m_pButtonGeometry,
        tr("Opens the window that refines the rotation axis, the direct beam, the distortion of the lens and "
           "the tilts together with the cell, which this page refines alone."));

    explain(m_pCheckRefine2D,
            tr("Fits a Lorentzian to each peak first, in 41 × 41 pixels. Otherwise peaks stay at"
               " whole pixels."));
    explain(m_pCheckOutputPeakList, tr("Tables of all difference vectors and pairs in the log."));
    explain(m_pButtonRunRefinement,
            tr("Refines the cell from the distances of indexed peaks on the same frame, which "
               "need no direct beam. The result goes to the log; the cell in force stays."));
    explain(m_pButtonRunRefinementFromList,
            tr("Sums the frames of each beam tilt series and writes the sums as MRC files into a"
               " folder, for peaks that are measured there."));
    auto* pPageLayout = new QVBoxLayout(this);
    pPageLayout->addWidget(
        makeRange(tr("Intensity Range"), m_pSpinRefineIntensityLow, m_pSpinRefineIntensityHigh, this));
    pPageLayout->addWidget(makeRange(tr("d* Range"), m_pSpinRefineDStarLow, m_pSpinRefineDStarHigh, this));
    for (QWidget* pWidget :
         {static_cast<QWidget*>(m_pCheckRefine2D), static_cast<QWidget*>(m_pCheckOutputPeakList),
          static_cast<QWidget*>(m_pButtonRunRefinement),
          static_cast<QWidget*>(m_pButtonRunRefinementFromList), static_cast<QWidget*>(m_pButtonGeometry)}) {
        pPageLayout->addWidget(pWidget);
    }
    pPageLayout->addStretch(1);
}

}  // namespace tessera
