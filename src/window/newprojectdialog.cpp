#include "window/newprojectdialog.h"

#include "crystal/electronwavelength.h"
#include "dataset/framefiles.h"
#include "dataset/serieschoicefile.h"
#include "dataset/textlines.h"
#include "records/wholefile.h"
#include "window/guards.h"
#include "window/pages/controltips.h"
#include "window/pages/lensdistortionbox.h"
#include "window/serieschoicebox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const qint64 g_nMaxTiltFile = 1 << 20;  // bytes; a text edit takes seconds for more

// A value that is shown but not given here.
void showValue(QDoubleSpinBox* pSpin, double dfValue)
{
    const QSignalBlocker blocker(pSpin);
    pSpin->setValue(dfValue);
}

// What was understood of a list of tilts, degrees.
QString tiltText(const QList<double>& listTilt)
{
    if (listTilt.isEmpty()) {
        return {};
    }
    QString strText = NewProjectDialog::tr("%L1 tilts, %2° to %3°")
                          .arg(listTilt.size())
                          .arg(listTilt.first())
                          .arg(listTilt.last());
    if (listTilt.size() > 1) {
        double dfLeast = listTilt[1] - listTilt[0], dfGreatest = dfLeast;
        for (int i = 1; i < listTilt.size(); ++i) {
            dfLeast = std::min(dfLeast, listTilt[i] - listTilt[i - 1]);
            dfGreatest = std::max(dfGreatest, listTilt[i] - listTilt[i - 1]);
        }
        strText += NewProjectDialog::tr("; steps %1° to %2°")
                       .arg(QString::number(dfLeast, 'g', 4), QString::number(dfGreatest, 'g', 4));
    }
    return strText;
}

struct StoredSpin {
    QString strKey;
    QDoubleSpinBox* pSpin;
};

QList<StoredSpin> storedSpins(const NewProjectDialog& dialog)
{
    return {{QStringLiteral("Voltage"), dialog.m_pVoltageSpin},
            {QStringLiteral("Wavelength"), dialog.m_pWavelengthSpin},
            {QStringLiteral("PixelSize"), dialog.m_pPixelSizeSpin},
            {QStringLiteral("CameraLength"), dialog.m_pCameraLengthSpin},
            {QStringLiteral("DetectorPixel"), dialog.m_pDetectorPixelSpin},
            {QStringLiteral("RotationAxis"), dialog.m_pRotationAxisSpin},
            {QStringLiteral("PrecessionAngle"), dialog.m_pPrecessionSpin}};
}

QString solveKey()
{
    return QStringLiteral("SolveAtOnce");
}

struct StoredRadio {
    QString strKey;
    QRadioButton* pRadio;
};

QList<StoredRadio> storedRadios(const NewProjectDialog& dialog)
{
    return {{QStringLiteral("GivesAxis"), dialog.m_pAxisRadio},
            {QStringLiteral("GivesWavelength"), dialog.m_pWavelengthRadio},
            {QStringLiteral("GivesCameraLength"), dialog.m_pCameraRadio}};
}

}  // namespace

NewProjectDialog::NewProjectDialog(const QString& strFolder, QWidget* pParent)
    : QDialog(pParent), m_strFolder(strFolder)
{
    setWindowTitle(tr("New Project"));
    setAcceptDrops(true);
    auto* pColumns = new QHBoxLayout;
    pColumns->addWidget(makeFrames(), 1);
    pColumns->addWidget(makePreview(), 3);
    auto* pRight = new QVBoxLayout;
    pRight->addWidget(makeTilts());
    pRight->addWidget(makeWavelength());
    pRight->addWidget(makePixelSize());
    pRight->addWidget(makeDirections());
    m_pLensDistortion = new LensDistortionBox(this);
    pRight->addWidget(m_pLensDistortion);
    pRight->addStretch(1);
    pColumns->addLayout(pRight, 5);

    m_pProblemLabel = new QLabel(this);
    m_pProblemLabel->setWordWrap(true);
    m_pProblemLabel->setTextFormat(Qt::PlainText);
    m_pButtons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_pButtons->button(QDialogButtonBox::Ok)->setText(tr("Create"));
    for (QAbstractButton* pButton : m_pButtons->buttons()) {
        static_cast<QPushButton*>(pButton)->setAutoDefault(false);
    }
    explain(m_pButtons->button(QDialogButtonBox::Ok), tr("Writes the project file and opens it."));
    explain(m_pButtons->button(QDialogButtonBox::Cancel), tr("Closes the dialog; no file is written."));
    resize(1240, 740);  // with room for a frame of the window system on 1280 x 800
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addLayout(pColumns, 1);
    pLayout->addWidget(makeFile());
    m_pSolveCheck = new QCheckBox(tr("Solve at once"), this);
    explain(m_pSolveCheck,
            tr("Begins \"Solve\" as soon as the project is made: from the frames to the cell and the "
               "intensities, with the numbers that the series itself tells."));
    auto* pLast = new QHBoxLayout;
    pLast->addWidget(m_pProblemLabel, 1);
    pLast->addWidget(m_pSolveCheck);
    pLast->addWidget(m_pButtons);
    pLayout->addLayout(pLast);

    connectControls();
    connectFacts();
    shareTips(this);
    framesChanged();
}
void NewProjectDialog::readSettings(QSettings& settings)
{
    m_bFilling = true;  // what was given for another series gives way to what this one tells
    settings.beginGroup(QStringLiteral("NewProject"));
    const bool bAxisGiven = settings.contains(QStringLiteral("RotationAxis"));  // before there was a choice
    if (settings.value(QStringLiteral("GivesAxis"), bAxisGiven).toBool()) {
        m_pAxisRadio->setChecked(true);
    }
    for (const StoredRadio& stored : storedRadios(*this)) {  // first: the boxes out of use show what follows
        if (settings.value(stored.strKey).toBool()) {
            stored.pRadio->setChecked(true);
        }
    }
    m_pRotationCombo->setCurrentIndex(
        std::max(0, m_pRotationCombo->findText(settings.value(QStringLiteral("Rotation")).toString())));
    for (const StoredSpin& stored : storedSpins(*this)) {
        bool bOk = false;
        const double dfValue = settings.value(stored.strKey).toDouble(&bOk);
        if (bOk && std::isfinite(dfValue)) {
            stored.pSpin->setValue(dfValue);
        }
    }
    m_pSolveCheck->setChecked(settings.value(solveKey()).toBool());
    settings.endGroup();
    m_bFilling = false;
    refresh();
}

void NewProjectDialog::writeSettings(QSettings& settings) const
{
    settings.beginGroup(QStringLiteral("NewProject"));
    for (const StoredSpin& stored : storedSpins(*this)) {
        settings.setValue(stored.strKey, stored.pSpin->value());
    }
    for (const StoredRadio& stored : storedRadios(*this)) {
        settings.setValue(stored.strKey, stored.pRadio->isChecked());
    }
    settings.setValue(QStringLiteral("Rotation"), m_pRotationCombo->currentText());
    settings.setValue(solveKey(), m_pSolveCheck->isChecked());
    settings.endGroup();
}

void NewProjectDialog::askTilts()
{
    const QString strFile = QFileDialog::getOpenFileName(this, tr("Load Tilts"), m_strFolder,
                                                         tr("Text Files (*.txt *.log *.csv *.tlt *.rawtlt);;"
                                                            "All Files (*.*)"));
    if (strFile.isEmpty()) {
        return;
    }
    QByteArray bytesText;
    QString strReason;
    if (!readFileBytes(strFile, bytesText, g_nMaxTiltFile, &strReason)) {
        QMessageBox::warning(this, windowTitle(), strReason);
        return;
    }
    m_pTiltEdit->setPlainText(QString::fromUtf8(withoutByteOrderMark(bytesText)));
}

void NewProjectDialog::askProjectFile()
{
    // Whether a former file may go is asked once, when it is written.
    QString strFile = QFileDialog::getSaveFileName(
        this, tr("Save Project As"), projectFile().isEmpty() ? m_strFolder : projectFile(),
        tr("ED3D Project(*.ed3d)"), nullptr, QFileDialog::DontConfirmOverwrite);
    if (strFile.isEmpty()) {
        return;
    }
    m_pFileEdit->setText(QDir::toNativeSeparators(strFile));
    m_bFileTyped = true;
    refresh();
}

RotationMode NewProjectDialog::rotation() const
{
    const RotationKind kind = RotationKind(m_pRotationCombo->currentData().toInt());
    return {kind, kind == RotationKind::Precession ? m_pPrecessionSpin->value() : 0};
}

NewProject NewProjectDialog::project() const
{
    NewProject made;
    made.listFrame = frames();
    const int nFrames = made.listFrame.size();
    if (!m_pListRadio->isChecked()) {
        const double dfStart = m_pTiltStartSpin->value();
        const double dfStep = m_pStepRadio->isChecked() ? m_pTiltStepSpin->value()
                                                        : tiltStep(nFrames, dfStart, m_pTiltEndSpin->value());
        made.tilts = evenTilts(nFrames, dfStart, dfStep, m_pBeamTiltSpin->value());
    } else if (!readTilts(m_pTiltEdit->toPlainText().toUtf8(), made.tilts)) {
        made.tilts = {};
    }
    made.dfWavelength = m_pVoltageRadio->isChecked() ? electronWavelength(m_pVoltageSpin->value())
                                                     : m_pWavelengthSpin->value();
    made.dfPixelSize = m_pPixelSizeRadio->isChecked()
                           ? m_pPixelSizeSpin->value()
                           : pixelSizeFromCameraLength(m_pCameraLengthSpin->value(),
                                                       m_pDetectorPixelSpin->value(), made.dfWavelength);
    made.dfRotationAxis = m_pRotationAxisSpin->value();
    made.bAxisKnown = m_pAxisRadio->isChecked();
    made.dfStretchAmplitude = m_pStretchAmplitudeSpin->value();
    made.dfStretchAzimuth = m_pStretchAzimuthSpin->value();
    made.distortion = m_pLensDistortion->distortion();
    made.rotation = rotation();
    return made;
}

QString NewProjectDialog::projectFile() const
{
    const QString strFile = QDir::fromNativeSeparators(m_pFileEdit->text().trimmed());
    if (strFile.isEmpty() || strFile.endsWith(QLatin1Char('/'))) {
        return {};
    }
    const QString strPath = QDir(m_strFolder).absoluteFilePath(strFile);
    return QFileInfo(strPath).suffix().toLower() == QLatin1String("ed3d") ? strPath
                                                                          : strPath + QStringLiteral(".ed3d");
}

QString NewProjectDialog::problem() const
{
    if (m_pFrameList->count() > 0 && !m_strFirstFrameError.isEmpty()) {
        return tr("The first frame cannot be read: %1").arg(m_strFirstFrameError);
    }
    FrameTilts tilts;
    QString strReason;
    if (m_pFrameList->count() > 0 && m_pListRadio->isChecked() &&
        !readTilts(m_pTiltEdit->toPlainText().toUtf8(), tilts, &strReason)) {
        return strReason;
    }
    QByteArray bytesText;
    if (!makeProjectText(project(), projectFile(), bytesText, &strReason) ||
        !m_pChoice->choice(m_pFrameList->count(), &strReason)) {
        return strReason;
    }
    const QFileInfo info(projectFile());
    if (!info.absoluteDir().exists()) {
        return tr("There is no folder %1.").arg(QDir::toNativeSeparators(info.absolutePath()));
    }
    if (info.isDir()) {
        return tr("%1 is a folder.").arg(QDir::toNativeSeparators(projectFile()));
    }
    return {};
}

void NewProjectDialog::refresh()
{
    if (m_bFilling) {
        return;  // once, when all is filled in
    }
    m_pTiltStepSpin->setEnabled(m_pStepRadio->isChecked());
    m_pTiltEndSpin->setEnabled(m_pEndRadio->isChecked());
    m_pVoltageSpin->setEnabled(m_pVoltageRadio->isChecked());
    m_pWavelengthSpin->setEnabled(m_pWavelengthRadio->isChecked());
    m_pPixelSizeSpin->setEnabled(m_pPixelSizeRadio->isChecked());
    m_pCameraLengthSpin->setEnabled(m_pCameraRadio->isChecked());
    m_pDetectorPixelSpin->setEnabled(m_pCameraRadio->isChecked());
    m_pPrecessionSpin->setEnabled(rotation().kind == RotationKind::Precession);
    // What follows from the rest is shown in the boxes that are not in use.
    const NewProject made = project();
    const int nFrames = made.listFrame.size();
    if (m_pVoltageRadio->isChecked()) {
        showValue(m_pWavelengthSpin, made.dfWavelength);
    }
    if (m_pCameraRadio->isChecked()) {
        showValue(m_pPixelSizeSpin, made.dfPixelSize);
    }
    if (m_pStepRadio->isChecked()) {
        showValue(m_pTiltEndSpin,
                  m_pTiltStartSpin->value() + qMax(0, nFrames - 1) * m_pTiltStepSpin->value());
    }
    if (m_pEndRadio->isChecked()) {
        showValue(m_pTiltStepSpin, tiltStep(nFrames, m_pTiltStartSpin->value(), m_pTiltEndSpin->value()));
    }

    if (m_pListRadio->isChecked()) {
        m_pTiltLabel->setText(tiltText(made.tilts.listOverall));
    }
    const QString strOutcome = m_pChoice->outcomeText(nFrames);
    m_pChoiceLabel->setText(strOutcome + QLatin1Char('.'));
    m_pChoiceLabel->setVisible(!strOutcome.isEmpty());
    showFacts();
    showPreview();
    const QString strProblem = problem();
    m_pProblemLabel->setText(strProblem);
    m_pButtons->button(QDialogButtonBox::Ok)->setEnabled(strProblem.isEmpty());
}

bool NewProjectDialog::isAgreed(const QString& strQuestion)
{
    return QMessageBox::question(this, windowTitle(), strQuestion, QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::No) == QMessageBox::Yes;
}

void NewProjectDialog::reject()
{
    if (m_pTiltEdit->toPlainText().trimmed().isEmpty() ||
        isAgreed(tr("The list of tilts is lost when the dialog is closed. Close it?"))) {
        QDialog::reject();
    }
}

/// Return ends what is typed into a box; only a button that has the focus does what it says.
void NewProjectDialog::keyPressEvent(QKeyEvent* pEvent)
{
    if (pEvent->key() != Qt::Key_Return && pEvent->key() != Qt::Key_Enter) {
        QDialog::keyPressEvent(pEvent);
        return;
    }
    if (auto* pButton = qobject_cast<QPushButton*>(focusWidget())) {
        pButton->click();
    }
    pEvent->accept();
}

void NewProjectDialog::accept()
{
    QByteArray bytesText;
    QString strReason;
    const QString strFile = projectFile();
    if (!problem().isEmpty() || !makeProjectText(project(), strFile, bytesText, &strReason)) {
        return;
    }
    bool bAlike = false;
    {
        const CWaitCursor wait;
        bAlike = areFramesAlike(frames(), &strReason);
    }
    if (!bAlike && !isAgreed(tr("%1. Create the project all the same?").arg(strReason))) {
        return;
    }
    if (QFileInfo::exists(strFile) &&
        !isAgreed(tr("%1 exists already. Replace it?").arg(QDir::toNativeSeparators(strFile)))) {
        return;
    }
    // Before the project, so that nobody takes results of a former one of that name for those of this choice.
    const QString strBase = QFileInfo(strFile).absolutePath() + QLatin1Char('/') +
                            QFileInfo(strFile).completeBaseName();
    const SeriesChoice choice = m_pChoice->choice(frames().size()).value_or(SeriesChoice());
    if (!keepSeriesChoice(strBase, choice, &strReason) || !writeWholeFile(strFile, bytesText, &strReason)) {
        QMessageBox::warning(this, windowTitle(), strReason);
        return;
    }
    QDialog::accept();
}

}  // namespace tessera
