#include "window/pages/mergingpage.h"

#include "records/runparameters.h"
#include "window/pages/controltips.h"
#include "window/pages/lensdistortionbox.h"
#include "window/pages/pagecontrols.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tessera {

namespace {

/// A group of a lower and an upper limit, one below the other.
QGroupBox* makeRange(const QString& strTitle, QDoubleSpinBox* pSpinMin, QDoubleSpinBox* pSpinMax,
                     QWidget* pParent)
{
    auto* pGroup = new QGroupBox(strTitle, pParent);
    auto* pGrid = new QGridLayout(pGroup);
    addBox(pGrid, 0, MergingPage::tr("Min."), pSpinMin, strTitle);
    addBox(pGrid, 1, MergingPage::tr("Max."), pSpinMax, strTitle);
    pGrid->setColumnStretch(1, 1);
    return pGroup;
}

/// A group of two radio buttons side by side, the first one checked.
QGroupBox* makeChoice(const QString& strTitle, QRadioButton* pDefault, QRadioButton* pOther, QWidget* pParent)
{
    auto* pGroup = new QGroupBox(strTitle, pParent);
    auto* pLayout = new QHBoxLayout(pGroup);
    pLayout->addWidget(pDefault);
    pLayout->addWidget(pOther);
    pDefault->setChecked(true);
    return pGroup;
}

}  // namespace

MergingPage::MergingPage(QWidget* pParent) : QWidget(pParent)
{
    using Mapping = MappingParameters;
    auto* pPageLayout = new QVBoxLayout(this);
    makeStretching();
    pPageLayout->addWidget(m_pGroupApplyStretching);
    m_pLensDistortion = new LensDistortionBox(this);
    pPageLayout->addWidget(m_pLensDistortion);

    m_pSpinResolutionMin = makeSpin(this, &Mapping::m_dfResolutionMin);
    m_pSpinResolutionMax = makeSpin(this, &Mapping::m_dfResolutionMax);
    pPageLayout->addWidget(
        makeRange(tr("Resolution Range"), m_pSpinResolutionMin, m_pSpinResolutionMax, this));

    m_pSpinIntensityMin = makeSpin(this, &Mapping::m_dfIntensityMin);
    m_pSpinIntensityMax = makeSpin(this, &Mapping::m_dfIntensityMax);
    for (QDoubleSpinBox* pSpin :
         {m_pSpinResolutionMin, m_pSpinResolutionMax, m_pSpinIntensityMin, m_pSpinIntensityMax}) {
        pSpin->setGroupSeparatorShown(true);
    }
    pPageLayout->addWidget(makeRange(tr("Intensity Range"), m_pSpinIntensityMin, m_pSpinIntensityMax, this));
    pPageLayout->addWidget(makeMerging(), 1);
}

void MergingPage::makeStretching()
{
    m_pGroupApplyStretching = new QGroupBox(tr("Apply Stretching"), this);
    m_pGroupApplyStretching->setCheckable(true);
    m_pGroupApplyStretching->setChecked(MappingParameters().m_bApplyStretching);
    m_pSpinStretchAmplitude = makeSpin(this, &DataSet::m_dfStretchAmplitude);
    m_pSpinStretchAzimuth = makeSpin(this, &DataSet::m_dfStretchAzimuth);
    for (QDoubleSpinBox* pSpin : {m_pSpinStretchAmplitude, m_pSpinStretchAzimuth}) {
        pSpin->setKeyboardTracking(false);  // a half-typed distortion would move every point
    }
    auto* pGrid = new QGridLayout(m_pGroupApplyStretching);
    pGrid->addWidget(new QLabel(tr("Amplitude"), m_pGroupApplyStretching), 0, 0);
    pGrid->addWidget(m_pSpinStretchAmplitude, 0, 1);
    pGrid->addWidget(new QLabel(tr("Azimuth"), m_pGroupApplyStretching), 1, 0);
    pGrid->addWidget(m_pSpinStretchAzimuth, 1, 1);
    pGrid->setColumnStretch(1, 1);
    explain(m_pGroupApplyStretching,
            tr("Undoes an elliptical distortion of the pattern by the lenses, before peaks are "
               "mapped."));
}

QGroupBox* MergingPage::makeMerging()
{
    auto* pMerging = new QGroupBox(tr("Peak Merging"), this);
    QGroupBox* pTarget = makeTarget(pMerging);
    QWidget* pParameters = makeParameters(pMerging);

    m_pButtonSuggest = new QPushButton(tr("Suggest..."), pMerging);
    explain(
        m_pButtonSuggest,
        tr("Suggests distances from those of the peaks, and limits that exclude no peak: up to the corner of "
           "the frames and the strongest peak. Each with its reason; nothing is set before you agree."));
    m_pButtonMerge = new QPushButton(tr("Merge"), pMerging);
    explain(m_pButtonMerge,
            tr("Makes one reflection of each chain of peaks over neighbouring frames, and shows "
               "them in \"3D View Merged\"."));
    auto* pLayout = new QVBoxLayout(pMerging);
    pLayout->addWidget(pTarget, 1);
    pLayout->addWidget(pParameters);
    auto* pButtons = new QHBoxLayout;
    pButtons->addWidget(m_pButtonSuggest);
    pButtons->addWidget(m_pButtonMerge, 1);
    pLayout->addLayout(pButtons);
    return pMerging;
}

QGroupBox* MergingPage::makeTarget(QWidget* pParent)
{
    auto* pTarget = new QGroupBox(tr("Target Peaks"), pParent);
    m_pTableTargetPeaks = makeGroupTable(pTarget);
    m_pButtonLoadPeaks = new QPushButton(tr("Load..."), pTarget);
    m_pButtonExportPeaks = new QPushButton(tr("Export..."), pTarget);
    auto* pGrid = new QGridLayout(pTarget);
    pGrid->addWidget(m_pTableTargetPeaks, 0, 0, 1, 2);
    pGrid->addWidget(m_pButtonLoadPeaks, 1, 0);
    pGrid->addWidget(m_pButtonExportPeaks, 1, 1);
    explain(m_pTableTargetPeaks, tr("The group of the view \"3D View Raw\" that is merged."));
    explain(m_pButtonLoadPeaks,
            tr("Reads peaks and their groups from a .pk file; they replace those in memory."));
    explain(m_pButtonExportPeaks, tr("Writes all peaks with their groups to a .pk file."));
    return pTarget;
}

// The rows between the target peaks and the buttons.
QWidget* MergingPage::makeParameters(QWidget* pParent)
{
    using Merging = PeakMergingParameters;
    auto* pParameters = new QWidget(pParent);
    m_pSpinMin3DDistance = makeSpin(this, &Merging::m_dfMin3DDistance);
    m_pSpinMax2DDistance = makeSpin(this, &Merging::m_dfMax2DDistance);
    m_pSpinMin2DLength = makeSpin(this, &Merging::m_dfMin2DLength);
    m_pSpinMax3DLength = makeSpin(this, &Merging::m_dfMax3DLength);
    m_pRadioInFrames2DIntegration = new QRadioButton(tr("2D Integration"), pParameters);
    m_pRadioInFramesPoint = new QRadioButton(tr("Point"), pParameters);
    m_pRadioThroughFramesMaximum = new QRadioButton(tr("Maximum"), pParameters);
    m_pRadioThroughFrames3DIntegration = new QRadioButton(tr("3D Integration"), pParameters);

    auto* pGrid = new QGridLayout(pParameters);
    pGrid->setContentsMargins(0, 0, 0, 0);
    const struct {
        QString strLabel;
        QDoubleSpinBox* pSpin;
    } aRow[] = {{tr("Min. 3D Distance"), m_pSpinMin3DDistance},
                {tr("Max. 2D Distance"), m_pSpinMax2DDistance},
                {tr("Min. 2D Length"), m_pSpinMin2DLength},
                {tr("Max. 3D Length"), m_pSpinMax3DLength}};
    int nRow = 0;
    for (const auto& row : aRow) {
        auto* pLabel = new QLabel(row.strLabel, pParameters);
        pGrid->addWidget(pLabel, nRow, 0);
        pGrid->addWidget(row.pSpin, nRow++, 1);
        row.pSpin->setAccessibleName(row.strLabel);
        if (row.pSpin == m_pSpinMin2DLength) {
            pLabel->hide();
            row.pSpin->hide();
        }
    }
    pGrid->addWidget(makeChoice(tr("Intensity In Frames"), m_pRadioInFrames2DIntegration,
                                m_pRadioInFramesPoint, pParameters),
                     nRow++, 0, 1, 2);
    pGrid->addWidget(makeChoice(tr("Intensity Through Frames"), m_pRadioThroughFramesMaximum,
                                m_pRadioThroughFrames3DIntegration, pParameters),
                     nRow, 0, 1, 2);
    pGrid->setColumnStretch(1, 1);
    explainChoices();
    return pParameters;
}

void MergingPage::explainChoices()
{
    explain(m_pRadioInFrames2DIntegration,
            tr("The intensity of a peak is the sum over its disc minus the background from the ring."));
    explain(m_pRadioInFramesPoint,
            tr("A peak weighs its value at the point; also for peaks whose disc crosses the rim "
               "of the frame."));
    explain(m_pRadioThroughFramesMaximum,
            tr("A reflection gets the intensity of its strongest peak: for coarse tilt steps."));
    explain(m_pRadioThroughFrames3DIntegration,
            tr("A reflection gets the integral along its chain: for fine tilt steps, where it is"
               " seen on several frames."));
}

}  // namespace tessera
