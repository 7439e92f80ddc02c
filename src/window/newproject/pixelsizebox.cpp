#include "window/newproject/pixelsizebox.h"

#include "dataset/newproject.h"
#include "window/newproject/factfields.h"
#include "window/newproject/formrows.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QRadioButton>
#include <QSettings>

namespace tessera {

PixelSizeBox::PixelSizeBox(FactFields& facts, QWidget* pParent)
    : QGroupBox(tr("Pixel Size in Reciprocal Space"), pParent), m_facts(facts)
{
    m_pPixelSizeRadio = new QRadioButton(tr("Pixel Size"), this);
    m_pCameraRadio = new QRadioButton(tr("Camera Length"), this);
    m_pPixelSizeRadio->setChecked(true);
    m_pPixelSizeSpin = makeDoubleSpin(this, 0, 10000, 8, 0.00005, 0, QStringLiteral(" Å⁻¹"));
    m_pCameraLengthSpin = makeDoubleSpin(this, 0, 1e6, 2, 10, 0, QStringLiteral(" mm"));
    m_pDetectorPixelSpin = makeDoubleSpin(this, 0, 1e5, 3, 1, 0, QStringLiteral(" µm"));
    explain(m_pPixelSizeSpin,
            tr("Size of one pixel of the frames, Å⁻¹, as from a calibration with a known "
               "crystal. All lengths of the cell are inversely proportional to it. The page \"Frames\" "
               "keeps 6 decimals."));
    explain(m_pCameraLengthSpin,
            tr("Effective camera length L, mm. The pixel size is p / (L λ) with the detector "
               "pixel p. The length that a microscope displays may be off by some per cent."));
    explain(m_pDetectorPixelSpin,
            tr("Size of a pixel on the detector, µm: of the frames as they stand, so with "
               "2 × binning twice that of the detector."));
    explain(m_pPixelSizeRadio, tr("The pixel size is typed in."));
    explain(m_pCameraRadio, tr("The pixel size follows from camera length, detector pixel and wavelength."));
    auto* pGrid = new QGridLayout(this);
    m_facts.addRow(pGrid, m_pPixelSizeRadio, m_pPixelSizeSpin,
                   [](const SeriesFacts& told) { return told.pixelSize; });
    m_facts.addRow(pGrid, m_pCameraRadio, m_pCameraLengthSpin,
                   [](const SeriesFacts& told) { return told.cameraLength; });
    m_facts.addRow(pGrid, new QLabel(tr("Detector Pixel"), this), m_pDetectorPixelSpin,
                   [](const SeriesFacts& told) { return told.detectorPixel; });
}

double PixelSizeBox::pixelSize(double dfWavelength) const
{
    return m_pPixelSizeRadio->isChecked()
               ? m_pPixelSizeSpin->value()
               : pixelSizeFromCameraLength(m_pCameraLengthSpin->value(), m_pDetectorPixelSpin->value(),
                                           dfWavelength);
}

void PixelSizeBox::showDerivedSize(double dfWavelength)
{
    m_pPixelSizeSpin->setEnabled(m_pPixelSizeRadio->isChecked());
    m_pCameraLengthSpin->setEnabled(m_pCameraRadio->isChecked());
    m_pDetectorPixelSpin->setEnabled(m_pCameraRadio->isChecked());
    if (m_pCameraRadio->isChecked()) {
        showDerived(m_pPixelSizeSpin, pixelSize(dfWavelength));
    }
}

void PixelSizeBox::fill(const SeriesFacts& facts)
{
    if (m_facts.isTouched(this)) {
        return;
    }
    if (facts.cameraLength.isTold()) {
        m_pCameraLengthSpin->setValue(facts.cameraLength.df);
    }
    if (facts.detectorPixel.isTold()) {
        m_pDetectorPixelSpin->setValue(facts.detectorPixel.df);
    }
    if (facts.pixelSize.isTold()) {
        m_pCameraRadio->setChecked(facts.bOfCameraLength);
        m_pPixelSizeRadio->setChecked(!facts.bOfCameraLength);
        if (!facts.bOfCameraLength) {
            m_pPixelSizeSpin->setValue(facts.pixelSize.df);
        }
    } else if (facts.cameraLength.isTold() && facts.detectorPixel.isTold()) {
        m_pCameraRadio->setChecked(true);  // only the wavelength is missing
    }
}

void PixelSizeBox::readSettings(const QSettings& settings)
{
    // The radio button first: it decides which box is derived.
    readRadio(settings, QStringLiteral("GivesCameraLength"), m_pCameraRadio);
    readSpin(settings, QStringLiteral("PixelSize"), m_pPixelSizeSpin);
    readSpin(settings, QStringLiteral("CameraLength"), m_pCameraLengthSpin);
    readSpin(settings, QStringLiteral("DetectorPixel"), m_pDetectorPixelSpin);
}

void PixelSizeBox::writeSettings(QSettings& settings) const
{
    settings.setValue(QStringLiteral("PixelSize"), m_pPixelSizeSpin->value());
    settings.setValue(QStringLiteral("CameraLength"), m_pCameraLengthSpin->value());
    settings.setValue(QStringLiteral("DetectorPixel"), m_pDetectorPixelSpin->value());
    settings.setValue(QStringLiteral("GivesCameraLength"), m_pCameraRadio->isChecked());
}

}  // namespace tessera
