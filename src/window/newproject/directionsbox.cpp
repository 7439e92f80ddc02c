#include "window/newproject/directionsbox.h"

#include "window/newproject/factfields.h"
#include "window/newproject/formrows.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QSettings>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const QString g_strDegree = QStringLiteral("°");
const double g_dfMostPrecession = 10;  // degrees, as far as a project file takes it

}  // namespace

DirectionsBox::DirectionsBox(FactFields& facts, QWidget* pParent)
    : QGroupBox(tr("Rotation Axis and Distortion"), pParent), m_facts(facts)
{
    m_pRotationAxisSpin = makeDoubleSpin(this, -180, 180, 2, 1, 0, g_strDegree);
    m_pStretchAmplitudeSpin = makeDoubleSpin(this, 0, 1000, 2, 0.1, 0, QStringLiteral(" %"));
    m_pStretchAzimuthSpin = makeDoubleSpin(this, -180, 180, 2, 1, 0, g_strDegree);
    explainNumbers();
    auto* pGrid = new QGridLayout(this);
    m_pAxisRadio = new QRadioButton(tr("Rotation Axis At"), this);
    m_pFindAxisRadio = new QRadioButton(tr("Find it from the peaks"), this);
    m_pFindAxisRadio->setChecked(true);
    explain(m_pAxisRadio, tr("The direction of the axis is given here; the preview shows it."));
    explain(m_pFindAxisRadio,
            tr("The project has no axis: it is found from the peaks after the peak search, with its sense, "
               "by \"Find Rotation Axis\" or by the driver. In no format is the sense of the axis certain."));
    m_facts.addRow(
        pGrid, m_pAxisRadio, m_pRotationAxisSpin, [](const SeriesFacts& told) { return told.rotationAxis; },
        FactFields::Trust::SenseUnsure);
    pGrid->addWidget(m_pFindAxisRadio, pGrid->rowCount(), 0, 1, 3);
    addFormRow(pGrid, new QLabel(tr("Rotation"), this), makeRotation());
    addFormRow(pGrid, new QLabel(tr("Stretching Amplitude"), this), m_pStretchAmplitudeSpin);
    addFormRow(pGrid, new QLabel(tr("Stretching Azimuth"), this), m_pStretchAzimuthSpin);
}

void DirectionsBox::explainNumbers()
{
    explain(
        m_pRotationAxisSpin,
        tr("Direction of the rotation axis on the frame as it is shown, degrees counter-clockwise from the "
           "right (3 o'clock): 0 to the right, 90 up, -90 down. It belongs to the microscope, camera and "
           "camera length and can be found later by \"Find Rotation Axis\". If the axis is right but the "
           "sense of the tilt is not, add 180. A good share of indexed reflections does not prove the sense: "
           "at moderate d* the other one gives the same cell but the mirror image, the wrong hand. Know it "
           "from the instrument or from a known crystal, or compare both senses as far out in d* as the data "
           "go. The page \"Frames\" keeps one decimal."));
    explain(m_pStretchAmplitudeSpin,
            tr("Elliptical distortion of the pattern by the lenses, per cent; 0 if it is "
               "not known. Measure it on the rings of a powder. 0 does not take back the "
               "correction of the series that was open before: see \"Apply Stretching\" on \"3D "
               "Peak Merging\"."));
    explain(m_pStretchAzimuthSpin,
            tr("Direction along which the distorted pattern is longer, degrees "
               "counter-clockwise from the right. Without meaning if the amplitude is 0."));
}

QWidget* DirectionsBox::makeRotation()
{
    auto* pBoth = new QWidget(this);
    m_pRotationCombo = new QComboBox(pBoth);
    m_pRotationCombo->addItem(tr("Continuous"), int(RotationKind::Continuous));
    m_pRotationCombo->addItem(tr("Stepped"), int(RotationKind::Stepped));
    m_pRotationCombo->addItem(tr("Precession"), int(RotationKind::Precession));
    m_pRotationCombo->setAccessibleName(tr("Rotation"));
    m_pPrecessionSpin = makeDoubleSpin(pBoth, 0, g_dfMostPrecession, 2, 0.1, 0, g_strDegree);
    m_pPrecessionSpin->setAccessibleName(tr("Precession Angle"));
    explain(m_pRotationCombo,
            tr("How the crystal moved during an exposure: it rotated continuously, stood still (stepped), or "
               "stood still while the beam moved on a cone (precession). The integration depends on it."));
    explain(m_pPrecessionSpin, tr("Half opening of the cone that the beam went round, degrees: the angle "
                                  "between the precessing beam and the axis of its cone."));
    auto* pRow = new QHBoxLayout(pBoth);
    pRow->setContentsMargins(0, 0, 0, 0);
    pRow->addWidget(m_pRotationCombo, 1);
    pRow->addWidget(m_pPrecessionSpin);
    return pBoth;
}

RotationMode DirectionsBox::rotation() const
{
    const RotationKind kind = RotationKind(m_pRotationCombo->currentData().toInt());
    return {kind, kind == RotationKind::Precession ? m_pPrecessionSpin->value() : 0};
}

void DirectionsBox::enableBoxes()
{
    m_pPrecessionSpin->setEnabled(rotation().kind == RotationKind::Precession);
}

void DirectionsBox::fill(const SeriesFacts& facts)
{
    // An axis that the user entered before is that of the user's microscope; one from a header may have the
    // opposite sense.
    if (facts.rotationAxis.isTold() && !m_facts.isTouched(this) && m_pFindAxisRadio->isChecked()) {
        m_pRotationAxisSpin->setValue(std::remainder(facts.rotationAxis.df, 360));
    }
}

void DirectionsBox::readSettings(const QSettings& settings)
{
    const bool bAxisGiven = settings.contains(QStringLiteral("RotationAxis"));  // before there was a choice
    if (settings.value(QStringLiteral("GivesAxis"), bAxisGiven).toBool()) {
        m_pAxisRadio->setChecked(true);
    }
    m_pRotationCombo->setCurrentIndex(
        std::max(0, m_pRotationCombo->findText(settings.value(QStringLiteral("Rotation")).toString())));
    readSpin(settings, QStringLiteral("RotationAxis"), m_pRotationAxisSpin);
    readSpin(settings, QStringLiteral("PrecessionAngle"), m_pPrecessionSpin);
}

void DirectionsBox::writeSettings(QSettings& settings) const
{
    settings.setValue(QStringLiteral("RotationAxis"), m_pRotationAxisSpin->value());
    settings.setValue(QStringLiteral("PrecessionAngle"), m_pPrecessionSpin->value());
    settings.setValue(QStringLiteral("GivesAxis"), m_pAxisRadio->isChecked());
    settings.setValue(QStringLiteral("Rotation"), m_pRotationCombo->currentText());
}

}  // namespace tessera
