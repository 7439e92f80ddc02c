// NewProjectDialog: what the frames tell, and the preview.
#include "window/factlabel.h"
#include "window/framepreview.h"
#include "window/newprojectdialog.h"

#include "crystal/electronwavelength.h"

#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr int g_nFramesPerReport = 50;  // headers between two lines on how far they are read

QString numberText(double df)
{
    return QString::number(df, 'g', 6);
}

/// Whether a field shows a number, as far as its decimals go.
bool isShown(const QDoubleSpinBox* pSpin, double df)
{
    return std::abs(pSpin->value() - df) <= 1.01 * std::pow(10.0, -pSpin->decimals());
}

double stepOf(const QList<double>& listTilt)
{
    return listTilt.size() > 1 ? (listTilt.last() - listTilt.first()) / (listTilt.size() - 1) : NAN;
}

QString pointText(const QPointF& pt)
{
    return QStringLiteral("(%1, %2)").arg(pt.x(), 0, 'f', 1).arg(pt.y(), 0, 'f', 1);
}

const QWidget* groupOf(const QWidget* pControl)
{
    while (pControl && !qobject_cast<const QGroupBox*>(pControl)) {
        pControl = pControl->parentWidget();
    }
    return pControl;
}

}  // namespace

void NewProjectDialog::connectFacts()
{
    for (auto* pSpin : findChildren<QDoubleSpinBox*>()) {
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                [this, pSpin] { touched(pSpin); });
    }
    for (auto* pRadio : findChildren<QRadioButton*>()) {
        connect(pRadio, &QRadioButton::toggled, this, [this, pRadio] { touched(pRadio); });
    }
    connect(m_pTiltEdit, &QPlainTextEdit::textChanged, this, [this] { touched(m_pTiltEdit); });
    connect(m_pRotationAxisSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this] {
        if (!m_bFilling) {
            m_pAxisRadio->setChecked(true);
        }
    });
    connect(m_pStopFactsButton, &QPushButton::clicked, this, [this] {
        m_jobFacts.stop();
        m_pStopFactsButton->hide();
        m_pFactsLabel->setText(tr("The headers were not read to the end."));
    });
    connect(m_pPreviewSpin, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &NewProjectDialog::lookAtPreview);
    connect(m_pOtherFrameButton, &QPushButton::clicked, this, [this] {
        const int nFrames = m_pPreviewSpin->maximum();
        const int nNext = m_pPreviewSpin->value() + std::max(1, nFrames / 5);
        m_pPreviewSpin->setValue(nNext > nFrames ? nNext - nFrames : nNext);
    });
}

void NewProjectDialog::touched(const QWidget* pControl)
{
    if (!m_bFilling) {
        m_setTouched.insert(groupOf(pControl));
    }
}

bool NewProjectDialog::isTouched(const QWidget* pControl) const
{
    return m_setTouched.contains(groupOf(pControl));
}

/// Thousands of headers take their time, so they are read while the user looks at the rest.
void NewProjectDialog::gatherFacts()
{
    const QStringList listFrame = frames();
    if (listFrame == m_facts.listFrame && m_facts.bWhole) {
        return;
    }
    m_facts = {};
    m_jobFacts.stop();
    m_pPreviewSpin->setMaximum(std::max(1, listFrame.size()));
    m_pStopFactsButton->setVisible(!listFrame.isEmpty());
    m_pFactsLabel->setText(listFrame.isEmpty() ? QString() : tr("Reading what the headers tell..."));
    if (listFrame.isEmpty()) {
        return;
    }
    m_facts.listFrame = listFrame;
    m_jobFacts.start(
        [this, listFrame](const BackgroundJob::Stop& bStop, const BackgroundJob::FnShow& fnShow) {
            const SeriesFacts facts = factsOfSeries(listFrame, [&](int nDone) {
                if (nDone > 0 && nDone % g_nFramesPerReport == 0) {
                    fnShow([this, nDone, nAll = listFrame.size()] {
                        m_pFactsLabel->setText(
                            tr("Reading what the headers tell: %L1 of %L2 frames").arg(nDone).arg(nAll));
                    });
                }
                return !bStop;
            });
            fnShow([this, facts] { takeFacts(facts); });
        });
}

void NewProjectDialog::takeFacts(const SeriesFacts& facts)
{
    m_facts = facts;
    m_pStopFactsButton->hide();
    QStringList listPart;
    if (!facts.strDetector.isEmpty()) {
        listPart.append(tr("camera %1").arg(facts.strDetector));
    }
    if (facts.exposure.isTold()) {
        listPart.append(
            tr("exposure %1 s (%2)").arg(numberText(facts.exposure.df), facts.exposure.strSource));
    }
    if (facts.saturation.isTold()) {
        listPart.append(tr("saturated from %1 counts on (%2)")
                            .arg(numberText(facts.saturation.df), facts.saturation.strSource));
    }
    m_pFactsLabel->setText(listPart.isEmpty() ? QString()
                                              : tr("Headers: %1.").arg(listPart.join(QStringLiteral("; "))));
    m_pDoubtText->setVisible(!facts.listDoubt.isEmpty());
    m_pDoubtText->setPlainText(facts.listDoubt.join(QLatin1Char('\n')));
    m_pPreview->setToldBeam(facts.beamX.isTold() && facts.beamY.isTold()
                                ? std::optional<QPointF>(QPointF(facts.beamX.df, facts.beamY.df))
                                : std::nullopt);
    fillFields();
    refresh();
}

/// What the user has set himself stays as it is.
void NewProjectDialog::fillFields()
{
    const QScopedValueRollback<bool> filling(m_bFilling, true);
    if (m_facts.wavelength.isTold() && !isTouched(m_pWavelengthSpin)) {
        m_pVoltageRadio->setChecked(m_facts.bOfVoltage);
        m_pWavelengthRadio->setChecked(!m_facts.bOfVoltage);
        if (m_facts.bOfVoltage) {
            m_pVoltageSpin->setValue(m_facts.kilovolts.df);
        } else {
            m_pWavelengthSpin->setValue(m_facts.wavelength.df);
        }
    }
    if (!isTouched(m_pPixelSizeSpin)) {
        if (m_facts.cameraLength.isTold()) {
            m_pCameraLengthSpin->setValue(m_facts.cameraLength.df);
        }
        if (m_facts.detectorPixel.isTold()) {
            m_pDetectorPixelSpin->setValue(m_facts.detectorPixel.df);
        }
        if (m_facts.pixelSize.isTold()) {
            m_pCameraRadio->setChecked(m_facts.bOfCameraLength);
            m_pPixelSizeRadio->setChecked(!m_facts.bOfCameraLength);
            if (!m_facts.bOfCameraLength) {
                m_pPixelSizeSpin->setValue(m_facts.pixelSize.df);
            }
        } else if (m_facts.cameraLength.isTold() && m_facts.detectorPixel.isTold()) {
            m_pCameraRadio->setChecked(true);  // the wavelength is all that lacks
        }
    }
    if (m_facts.tilts.isTold() && !isTouched(m_pTiltStartSpin)) {
        fillTilts();
    }
    // An axis that was given before is that of the user's own microscope; one that is told may be the other
    // way.
    if (m_facts.rotationAxis.isTold() && !isTouched(m_pRotationAxisSpin) && m_pFindAxisRadio->isChecked()) {
        m_pRotationAxisSpin->setValue(std::remainder(m_facts.rotationAxis.df, 360));
    }
}

void NewProjectDialog::fillTilts()
{
    const QList<double>& listTilt = m_facts.tilts.list;
    if (areEvenTilts(listTilt)) {
        m_pStepRadio->setChecked(true);
        m_pTiltStartSpin->setValue(listTilt.first());
        m_pTiltStepSpin->setValue(listTilt.size() > 1 ? stepOf(listTilt) : 0);
        // A step that the field rounds would add up over the series.
        m_pTiltEndSpin->setValue(listTilt.last());
        const double dfEnd = m_pTiltStartSpin->value() + m_pTiltStepSpin->value() * (listTilt.size() - 1);
        m_pEndRadio->setChecked(listTilt.size() > 1 && !isShown(m_pTiltEndSpin, dfEnd));
        return;
    }
    QStringList listLine;
    for (const double dfTilt : listTilt) {
        listLine.append(QString::number(dfTilt, 'g', 8));
    }
    m_pListRadio->setChecked(true);
    m_pTiltEdit->setPlainText(listLine.join(QLatin1Char('\n')));
}

ToldNumber NewProjectDialog::toldFor(const QDoubleSpinBox* pSpin) const
{
    const ToldTilts& tilts = m_facts.tilts;
    const QPair<const QDoubleSpinBox*, ToldNumber> aTold[] = {
        {m_pTiltStartSpin, {tilts.list.isEmpty() ? NAN : tilts.list.first(), tilts.strSource}},
        {m_pTiltEndSpin, {tilts.list.isEmpty() ? NAN : tilts.list.last(), tilts.strSource}},
        {m_pTiltStepSpin, {stepOf(tilts.list), tilts.strSource}},
        {m_pVoltageSpin, m_facts.kilovolts},
        {m_pWavelengthSpin, m_facts.wavelength},
        {m_pPixelSizeSpin, m_facts.pixelSize},
        {m_pCameraLengthSpin, m_facts.cameraLength},
        {m_pDetectorPixelSpin, m_facts.detectorPixel},
        {m_pRotationAxisSpin, m_facts.rotationAxis}};
    for (const auto& told : aTold) {
        if (told.first == pSpin) {
            return told.second;
        }
    }
    return {};
}

/// Beside each field: where its number stood, what stood there if it is another one, or that nothing did.
void NewProjectDialog::showFacts()
{
    const bool bFrames = m_pFrameList->count() > 0;
    for (auto it = m_mapFact.begin(); it != m_mapFact.end(); ++it) {
        const ToldNumber told = toldFor(it.key());
        QString strText = bFrames ? tr("not told") : QString();
        if (told.isTold()) {
            const bool bAxis = it.key() == m_pRotationAxisSpin;
            const QString strHow = isDoubtful(told, m_facts.listDoubt) && !bAxis ? tr("guessed: ")
                                                                                 : QString();
            strText = strHow + (isShown(it.key(), told.df)
                                    ? told.strSource
                                    : tr("%1: %2").arg(told.strSource, numberText(told.df)));
            if (bAxis) {
                strText = tr("sense not certain; %1").arg(strText);
            }
        }
        it.value()->setFact(strText);
    }
}

void NewProjectDialog::lookAtPreview()
{
    const QStringList listFrame = frames();
    m_jobLook.stop();
    if (listFrame.isEmpty()) {
        m_pPreview->setLook({});
        showPreview();
        return;
    }
    const QString strFrame = listFrame.value(m_pPreviewSpin->value() - 1, listFrame.first());
    m_jobLook.start([this, strFrame](const BackgroundJob::Stop& bStop, const BackgroundJob::FnShow& fnShow) {
        const FrameLook look = lookAtFrame(strFrame, bStop);
        fnShow([this, look] {
            m_pPreview->setLook(look);
            showPreview();
        });
    });
}

void NewProjectDialog::showPreview()
{
    const bool bAxis = m_pAxisRadio->isChecked() || m_facts.rotationAxis.isTold();
    m_pPreview->setAxis(bAxis ? std::optional<double>(m_pRotationAxisSpin->value()) : std::nullopt);
    const FrameLook& look = m_pPreview->look();
    QStringList listPart;
    if (look.ptBeam) {
        listPart.append(tr("Beam found at %1").arg(pointText(*look.ptBeam)));
    } else if (!look.image.isNull()) {
        listPart.append(tr("No beam found"));
    }
    if (m_facts.beamX.isTold() && m_facts.beamY.isTold()) {
        listPart.append(tr("told at %1 (%2)")
                            .arg(pointText({m_facts.beamX.df, m_facts.beamY.df}), m_facts.beamX.strSource));
    }
    m_pBeamLabel->setText(listPart.join(QStringLiteral("; ")));
    m_pPreviewSpin->setEnabled(m_pPreviewSpin->maximum() > 1);
    m_pOtherFrameButton->setEnabled(m_pPreviewSpin->maximum() > 1);
}

}  // namespace tessera
