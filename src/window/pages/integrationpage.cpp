#include "window/pages/integrationpage.h"

#include "window/integration/disccolors.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <gemmi/symmetry.hpp>

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace tessera {

namespace {

QString autoText()
{
    return IntegrationPage::tr("Auto");
}

/// A box whose lowest value, 0, means that the number comes from the data.
QDoubleSpinBox* makeAutoSpin(QWidget* pParent, double dfMost, int nDecimals, double dfStep,
                             const QString& strSuffix)
{
    QDoubleSpinBox* pSpin = makeDoubleSpin(pParent, 0, dfMost, nDecimals, dfStep, 0, strSuffix);
    pSpin->setSpecialValueText(autoText());
    return pSpin;
}

QCheckBox* makeCheck(const QString& strText, QWidget* pParent)
{
    auto* pCheck = new QCheckBox(strText, pParent);
    pCheck->setChecked(true);
    return pCheck;
}

}  // namespace

IntegrationPage::IntegrationPage(QWidget* pParent) : QWidget(pParent)
{
    auto* pPageLayout = new QVBoxLayout(this);
    for (QGroupBox* pGroup : {makeIntegration(), makeSymmetry()}) {
        pPageLayout->addWidget(pGroup);
    }
    m_pButtonIntegrate = makeRunButton(this, tr("Integrate"),
                                       tr("Integrate, scale and merge the reflections of the series"),
                                       ButtonText::Bold);
    m_pButtonExport = new QPushButton(tr("Export"), this);
    m_pButtonExport->setMinimumHeight(m_pButtonIntegrate->minimumHeight());
    m_pButtonExport->setStatusTip(tr("Write the intensities for structure programs"));
    auto* pButtons = new QHBoxLayout;
    pButtons->addWidget(m_pButtonExport);
    pButtons->addWidget(m_pButtonIntegrate, 1);
    pPageLayout->addLayout(pButtons);
    m_pLabelResult = new QLabel(this);
    m_pLabelResult->setWordWrap(true);
    m_pLabelResult->setTextInteractionFlags(Qt::TextSelectableByMouse);
    pPageLayout->addWidget(m_pLabelResult);
    pPageLayout->addWidget(makeDiscs());
    pPageLayout->addStretch(1);
    explainControls();
    showResult({});
}

QHBoxLayout* IntegrationPage::makeRotation(QWidget* pParent)
{
    m_pComboRotation = new QComboBox(pParent);
    const int nAsProject = -1;
    m_pComboRotation->addItem(tr("As Project"), nAsProject);
    m_pComboRotation->addItem(tr("Continuous"), int(RotationKind::Continuous));
    m_pComboRotation->addItem(tr("Stepped"), int(RotationKind::Stepped));
    m_pComboRotation->addItem(tr("Precession"), int(RotationKind::Precession));
    const double dfMostPrecession = 10;  // degrees; 1 to 3 are in use
    m_pSpinPrecession = makeDoubleSpin(pParent, 0, dfMostPrecession, 2, 0.1, 0, QStringLiteral("°"));
    m_pSpinPrecession->setEnabled(false);
    m_pComboRotation->setAccessibleName(tr("Rotation"));
    m_pSpinPrecession->setAccessibleName(tr("Precession Angle"));
    connect(m_pComboRotation, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        m_pSpinPrecession->setEnabled(m_pComboRotation->currentData().toInt() ==
                                      int(RotationKind::Precession));
    });
    auto* pRow = new QHBoxLayout;
    pRow->addWidget(m_pComboRotation, 1);
    pRow->addWidget(m_pSpinPrecession);
    return pRow;
}

QGroupBox* IntegrationPage::makeIntegration()
{
    auto* pGroup = new QGroupBox(tr("Integration and Scaling"), this);
    auto* pGrid = new QGridLayout(pGroup);
    pGrid->addWidget(new QLabel(tr("Rotation"), pGroup), 0, 0);
    pGrid->addLayout(makeRotation(pGroup), 0, 1);
    m_pSpinResolution = makeAutoSpin(pGroup, 100, 2, 0.05, QStringLiteral(" Å"));
    m_pSpinDiscRadius = makeAutoSpin(pGroup, 1000, 1, 0.5, QStringLiteral(" pix."));
    m_pSpinRockingWidth = makeAutoSpin(pGroup, 1, 4, 0.0005, QStringLiteral(" Å⁻¹"));
    const double dfMostRejection = 100;  // sigmas
    m_pSpinRejection = makeDoubleSpin(pGroup, 1, dfMostRejection, 1, 0.5, IntensityOptions().dfRejection,
                                      QStringLiteral(" σ"));
    addBox(pGrid, 1, tr("Resolution Limit"), m_pSpinResolution);
    addBox(pGrid, 2, tr("Disc Radius"), m_pSpinDiscRadius);
    addBox(pGrid, 3, tr("Rocking Width"), m_pSpinRockingWidth);
    addBox(pGrid, 4, tr("Outlier Limit"), m_pSpinRejection);
    m_pCheckProfile = makeCheck(tr("Profile Fit"), pGroup);
    m_pCheckScale = makeCheck(tr("Scale"), pGroup);
    m_pCheckDecay = makeCheck(tr("Decay"), pGroup);
    auto* pChecks = new QHBoxLayout;
    for (QCheckBox* pCheck : {m_pCheckProfile, m_pCheckScale, m_pCheckDecay}) {
        pChecks->addWidget(pCheck);
    }
    pChecks->addStretch(1);
    pGrid->addLayout(pChecks, 5, 0, 1, 2);
    pGrid->setColumnStretch(1, 1);
    return pGroup;
}

QGroupBox* IntegrationPage::makeSymmetry()
{
    auto* pGroup = new QGroupBox(tr("Symmetry and Content"), this);
    auto* pGrid = new QGridLayout(pGroup);
    m_pComboLaue = new QComboBox(pGroup);
    m_pComboLaue->addItem(autoText(), QString());
    for (const QString& strClass : laueClassNames()) {
        m_pComboLaue->addItem(strClass, strClass);
    }
    m_pComboSpaceGroup = new QComboBox(pGroup);
    m_pComboSpaceGroup->setEditable(true);
    m_pComboSpaceGroup->setInsertPolicy(QComboBox::NoInsert);
    m_pComboSpaceGroup->addItem(autoText());
    m_pEditFormula = new QLineEdit(pGroup);
    m_pEditFormula->setPlaceholderText(tr("such as Si O2"));
    addBox(pGrid, 0, tr("Laue Class"), m_pComboLaue);
    addBox(pGrid, 1, tr("Space Group"), m_pComboSpaceGroup);
    addBox(pGrid, 2, tr("Formula"), m_pEditFormula);
    pGrid->setColumnStretch(1, 1);
    return pGroup;
}

QGroupBox* IntegrationPage::makeDiscs()
{
    auto* pGroup = new QGroupBox(tr("On the Frame"), this);
    auto* pLayout = new QVBoxLayout(pGroup);
    m_pCheckPredicted = new QCheckBox(tr("Show Predicted"), pGroup);
    m_pLabelLegend = new QLabel(discLegend(), pGroup);
    m_pLabelLegend->setTextFormat(Qt::RichText);
    m_pLabelLegend->setWordWrap(true);
    pLayout->addWidget(m_pCheckPredicted);
    pLayout->addWidget(m_pLabelLegend);
    return pGroup;
}

void IntegrationPage::explainControls()
{
    explain(m_pComboRotation,
            tr("How the crystal moved during an exposure: it rotated continuously, stood still (stepped), or "
               "stood still while the beam moved on a cone (precession). As Project: as in its line "
               "ROTATIONMODE, continuously without one."));
    explain(m_pSpinPrecession, tr("Angle between the precessing beam and the axis of its cone."));
    explain(m_pSpinResolution,
            tr("Least spacing d of the reflections that are integrated. Auto: as far as reflections are "
               "seen."));
    explain(m_pSpinDiscRadius, tr("Radius of the disc that is summed. Auto: from the shape of the strong "
                                  "spots."));
    explain(m_pSpinRockingWidth,
            tr("Width (sigma) in reciprocal space through which a reflection is seen while it crosses the "
               "Ewald sphere. Auto: from the strong reflections."));
    explain(m_pCheckProfile, tr("Weak reflections are measured by a fit of the shape that the strong ones of "
                                "their region have; off: all are summed."));
    explain(m_pCheckScale, tr("Brings the frames to one scale that changes smoothly along the series."));
    explain(m_pCheckDecay, tr("Corrects the decay of the intensities at high resolution with the dose, "
                              "smoothly along the series."));
    explain(m_pSpinRejection, tr("An observation that is further than this from the median of its "
                                 "equivalents is rejected as an outlier."));
    explain(m_pComboLaue,
            tr("Which reflections are equivalent. Auto: the class that the intensities propose; the tab "
               "\"Quality\" shows why."));
    explain(m_pComboSpaceGroup,
            tr("Space group for the files, by its Hermann–Mauguin symbol. Auto: the most likely one by the "
               "absences. After a run the list has the likely ones."));
    explain(m_pEditFormula, tr("Content of the cell's formula unit for the files of structure programs, such "
                               "as Ca3 Al2 Si3 O12."));
    explain(m_pButtonIntegrate,
            tr("Predicts the reflections of the cell in force, sums them on the frames, scales, merges and "
               "judges them. The button then reads \"Stop\"; a run that is stopped leaves all as it was."));
    explain(m_pButtonExport,
            tr("Writes the intensities beside the project: unmerged and merged reflections, .ins, .cif and "
               ".mtz."));
    explainArea(m_pLabelResult, tr("What the last integration gave. The tab \"Quality\" has the details."));
    explain(m_pCheckPredicted,
            tr("Circles where reflections were predicted and summed on the current frame, in the colour of "
               "their most serious flag. The pointer shows indices and intensity, a click the profile."));
}

std::optional<IntensityOptions> IntegrationPage::options(QString* pstrReason) const
{
    IntensityOptions options;
    const int nRotation = m_pComboRotation->currentData().toInt();
    if (nRotation >= 0) {
        const RotationKind kind = RotationKind(nRotation);
        options.rotation = {kind, kind == RotationKind::Precession ? m_pSpinPrecession->value() : 0};
    }
    options.dfDMin = m_pSpinResolution->value();
    options.dfDiscRadius = m_pSpinDiscRadius->value();
    options.dfRockingWidth = m_pSpinRockingWidth->value();
    options.bProfileFit = m_pCheckProfile->isChecked();
    options.bScale = m_pCheckScale->isChecked();
    options.bDecay = m_pCheckDecay->isChecked();
    options.dfRejection = m_pSpinRejection->value();
    options.strLaueClass = m_pComboLaue->currentData().toString();
    const QString strGroup = m_pComboSpaceGroup->currentText().simplified();
    if (!strGroup.isEmpty() && strGroup != autoText()) {
        const gemmi::SpaceGroup* pGroup = gemmi::find_spacegroup_by_name(strGroup.toStdString());
        if (!pGroup) {
            *pstrReason = tr("%1 is no space group that is known.").arg(strGroup);
            return {};
        }
        options.nSpaceGroup = pGroup->number;
    }
    const QString strFormula = m_pEditFormula->text().simplified();
    if (!strFormula.isEmpty()) {
        const std::optional<ChemicalFormula> formula = chemicalFormula(strFormula, pstrReason);
        if (!formula) {
            return {};
        }
        options.formula = *formula;
    }
    return options;
}

void IntegrationPage::offerSpaceGroups(const QStringList& listGroup)
{
    const QSignalBlocker blocker(m_pComboSpaceGroup);
    const QString strText = m_pComboSpaceGroup->currentText();
    m_pComboSpaceGroup->clear();
    m_pComboSpaceGroup->addItem(autoText());
    m_pComboSpaceGroup->addItems(listGroup);
    m_pComboSpaceGroup->setCurrentIndex(m_pComboSpaceGroup->findText(strText));
    m_pComboSpaceGroup->setEditText(strText);
}

void IntegrationPage::showResult(const QStringList& listLine)
{
    m_pLabelResult->setText(listLine.join(QLatin1Char('\n')));
    m_pLabelResult->setVisible(!listLine.isEmpty());
    m_pButtonExport->setEnabled(!listLine.isEmpty());
}

}  // namespace tessera
