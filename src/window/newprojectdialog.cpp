#include "window/newprojectdialog.h"

#include "window/guards.h"
#include "window/newproject/directionsbox.h"
#include "window/newproject/electronsbox.h"
#include "window/newproject/formrows.h"
#include "window/newproject/framelistbox.h"
#include "window/newproject/headerreading.h"
#include "window/newproject/pixelsizebox.h"
#include "window/newproject/previewbox.h"
#include "window/newproject/projectfilerow.h"
#include "window/newproject/projectwriting.h"
#include "window/newproject/tiltsbox.h"
#include "window/pages/controltips.h"
#include "window/pages/lensdistortionbox.h"
#include "window/serieschoicebox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QSettings>
#include <QSpinBox>
#include <QUrl>
#include <QVBoxLayout>

namespace tessera {

namespace {

const QString g_strGroup = QStringLiteral("NewProject");
const QString g_strSolve = QStringLiteral("SolveAtOnce");

}  // namespace

NewProjectDialog::NewProjectDialog(const QString& strFolder, QWidget* pParent) : QDialog(pParent)
{
    setWindowTitle(tr("New Project"));
    setAcceptDrops(true);
    m_pFrames = new FrameListBox(strFolder, this);
    m_pPreviewBox = new PreviewBox(this);
    auto* pColumns = new QHBoxLayout;
    pColumns->addWidget(m_pFrames, 1);
    pColumns->addWidget(m_pPreviewBox, 3);
    pColumns->addLayout(makeNumbers(), 5);

    m_pProblemLabel = makePlainLabel(this, LabelLines::Wrapped);
    m_pButtons = makeButtons();
    resize(1240, 740);  // with room for a frame of the window system on 1280 x 800
    m_pFile = new ProjectFileRow(this);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addLayout(pColumns, 1);
    pLayout->addWidget(m_pFile);
    m_pSolveCheck = new QCheckBox(tr("Solve at once"), this);
    explain(m_pSolveCheck, tr("Starts \"Solve\" as soon as the project is written: from the frames to the "
                              "cell and the intensities, with numbers determined from the series itself."));
    auto* pLast = new QHBoxLayout;
    pLast->addWidget(m_pProblemLabel, 1);
    pLast->addWidget(m_pSolveCheck);
    pLast->addWidget(m_pButtons);
    pLayout->addLayout(pLast);

    connectControls();
    connectTouches();
    shareTips(this);
    framesChanged();
}

QVBoxLayout* NewProjectDialog::makeNumbers()
{
    m_pTilts = new TiltsBox(m_facts, this);
    m_pElectrons = new ElectronsBox(m_facts, this);
    m_pPixels = new PixelSizeBox(m_facts, this);
    m_pDirections = new DirectionsBox(m_facts, this);
    m_pLensDistortion = new LensDistortionBox(this);
    auto* pLayout = new QVBoxLayout;
    pLayout->addWidget(m_pTilts);
    pLayout->addWidget(m_pElectrons);
    pLayout->addWidget(m_pPixels);
    pLayout->addWidget(m_pDirections);
    pLayout->addWidget(m_pLensDistortion);
    pLayout->addStretch(1);
    return pLayout;
}

QDialogButtonBox* NewProjectDialog::makeButtons()
{
    auto* pButtons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    pButtons->button(QDialogButtonBox::Ok)->setText(tr("Create"));
    for (QAbstractButton* pButton : pButtons->buttons()) {
        static_cast<QPushButton*>(pButton)->setAutoDefault(false);
    }
    explain(pButtons->button(QDialogButtonBox::Ok), tr("Writes the project file and opens it."));
    explain(pButtons->button(QDialogButtonBox::Cancel), tr("Closes the dialog; no file is written."));
    return pButtons;
}

void NewProjectDialog::connectControls()
{
    for (auto* pSpin : findChildren<QDoubleSpinBox*>()) {
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &NewProjectDialog::refresh);
    }
    for (auto* pRadio : findChildren<QRadioButton*>()) {
        connect(pRadio, &QRadioButton::toggled, this, &NewProjectDialog::refresh);
    }
    connect(m_pTilts->m_pBeamTiltSpin, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &NewProjectDialog::refresh);
    connect(m_pDirections->m_pRotationCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &NewProjectDialog::refresh);
    connect(m_pTilts->m_pTiltEdit, &QPlainTextEdit::textChanged, this, &NewProjectDialog::refresh);
    connect(m_pFrames->m_pChoice, &SeriesChoiceBox::changed, this, &NewProjectDialog::refresh);
    connect(m_pFile, &ProjectFileRow::changed, this, &NewProjectDialog::refresh);
    connect(m_pFrames, &FrameListBox::framesChanged, this, &NewProjectDialog::framesChanged);
    connect(m_pFrames->m_pHeaders, &HeaderReading::told, this, &NewProjectDialog::takeFacts);
    connect(m_pPreviewBox, &PreviewBox::looked, this, &NewProjectDialog::showPreview);
    connect(m_pTilts->m_pLoadTiltsButton, &QPushButton::clicked, this,
            [this] { m_pTilts->askFile(m_pFrames->folder()); });
    connect(m_pFile->m_pBrowseButton, &QPushButton::clicked, this,
            [this] { m_pFile->ask(m_pFrames->folder()); });
    connect(m_pButtons, &QDialogButtonBox::accepted, this, &NewProjectDialog::accept);
    connect(m_pButtons, &QDialogButtonBox::rejected, this, [this] { QDialog::reject(); });
}

/// What the user changes himself is not filled in afterwards.
void NewProjectDialog::connectTouches()
{
    for (auto* pSpin : findChildren<QDoubleSpinBox*>()) {
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                [this, pSpin] { touched(pSpin); });
    }
    for (auto* pRadio : findChildren<QRadioButton*>()) {
        connect(pRadio, &QRadioButton::toggled, this, [this, pRadio] { touched(pRadio); });
    }
    connect(m_pTilts->m_pTiltEdit, &QPlainTextEdit::textChanged, this,
            [this] { touched(m_pTilts->m_pTiltEdit); });
    connect(m_pDirections->m_pRotationAxisSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            [this] {
                if (!m_bFilling) {
                    m_pDirections->m_pAxisRadio->setChecked(true);
                }
            });
}

void NewProjectDialog::touched(const QWidget* pControl)
{
    if (!m_bFilling) {
        m_facts.touch(pControl);
    }
}

void NewProjectDialog::readSettings(QSettings& settings)
{
    {
        // Numbers that were entered for another series are replaced by those in the headers of this one.
        const QScopedValueRollback<bool> filling(m_bFilling, true);
        settings.beginGroup(g_strGroup);
        m_pElectrons->readSettings(settings);
        m_pPixels->readSettings(settings);
        m_pDirections->readSettings(settings);
        m_pSolveCheck->setChecked(settings.value(g_strSolve).toBool());
        settings.endGroup();
    }
    refresh();
}

void NewProjectDialog::writeSettings(QSettings& settings) const
{
    settings.beginGroup(g_strGroup);
    m_pElectrons->writeSettings(settings);
    m_pPixels->writeSettings(settings);
    m_pDirections->writeSettings(settings);
    settings.setValue(g_strSolve, m_pSolveCheck->isChecked());
    settings.endGroup();
}

void NewProjectDialog::dragEnterEvent(QDragEnterEvent* pEvent)
{
    if (pEvent->mimeData()->hasUrls()) {
        pEvent->setDropAction(Qt::CopyAction);
        pEvent->accept();
    }
}

void NewProjectDialog::dropEvent(QDropEvent* pEvent)
{
    QStringList listPath;
    for (const QUrl& url : pEvent->mimeData()->urls()) {
        if (url.isLocalFile()) {
            listPath.append(url.toLocalFile());
        }
    }
    // A source that believes in a move deletes its files.
    pEvent->setDropAction(Qt::CopyAction);
    pEvent->accept();
    addFrames(listPath);
}

void NewProjectDialog::addFrames(const QStringList& listPath)
{
    m_pFrames->addFrames(listPath);
}

/// Takes the size of all frames from the first one; the headers of all frames are read in the background.
void NewProjectDialog::framesChanged()
{
    const QStringList listFrame = m_pFrames->frames();
    const bool bOther = m_pFrames->readFirstFrame();
    if (listFrame.isEmpty()) {
        m_facts.forgetTouches();
    }
    if (m_pFrames->m_pHeaders->read(listFrame)) {
        m_pPreviewBox->setFrames(listFrame);
    }
    if (bOther) {
        m_pPreviewBox->look();
    }
    m_pFile->propose(listFrame);
    refresh();
}

void NewProjectDialog::takeFacts()
{
    const SeriesFacts& facts = m_pFrames->m_pHeaders->facts();
    m_pPreviewBox->setFacts(facts);
    {
        const QScopedValueRollback<bool> filling(m_bFilling, true);
        m_pElectrons->fill(facts);
        m_pPixels->fill(facts);
        m_pTilts->fill(facts);
        m_pDirections->fill(facts);
    }
    refresh();
}

NewProject NewProjectDialog::project() const
{
    NewProject made;
    made.listFrame = m_pFrames->frames();
    made.tilts = m_pTilts->tilts(made.listFrame.size()).value_or(FrameTilts());
    made.dfWavelength = m_pElectrons->wavelength();
    made.dfPixelSize = m_pPixels->pixelSize(made.dfWavelength);
    made.dfRotationAxis = m_pDirections->m_pRotationAxisSpin->value();
    made.bAxisKnown = m_pDirections->m_pAxisRadio->isChecked();
    made.dfStretchAmplitude = m_pDirections->m_pStretchAmplitudeSpin->value();
    made.dfStretchAzimuth = m_pDirections->m_pStretchAzimuthSpin->value();
    made.distortion = m_pLensDistortion->distortion();
    made.rotation = m_pDirections->rotation();
    return made;
}

QString NewProjectDialog::projectFile() const
{
    return m_pFile->file(m_pFrames->folder());
}

QString NewProjectDialog::problem() const
{
    const int nFrames = m_pFrames->count();
    if (!m_pFrames->firstFrameError().isEmpty()) {
        return tr("The first frame cannot be read: %1").arg(m_pFrames->firstFrameError());
    }
    QString strReason;
    if (nFrames > 0 && !m_pTilts->tilts(nFrames, &strReason)) {
        return strReason;
    }
    if (!makeProjectText(project(), projectFile(), &strReason) ||
        !m_pFrames->m_pChoice->choice(nFrames, &strReason)) {
        return strReason;
    }
    return problemOfPlace(projectFile());
}

void NewProjectDialog::refresh()
{
    if (m_bFilling) {
        return;  // once, when all is filled in
    }
    const int nFrames = m_pFrames->count();
    m_pTilts->showDerivedTilts(nFrames);
    m_pElectrons->showDerivedWavelength();
    m_pPixels->showDerivedSize(m_pElectrons->wavelength());
    m_pDirections->enableBoxes();
    m_pFrames->showChoice();
    m_facts.show(m_pFrames->m_pHeaders->facts(), nFrames > 0);
    showPreview();
    const QString strProblem = problem();
    m_pProblemLabel->setText(strProblem);
    m_pButtons->button(QDialogButtonBox::Ok)->setEnabled(strProblem.isEmpty());
}

void NewProjectDialog::showPreview()
{
    const SeriesFacts& facts = m_pFrames->m_pHeaders->facts();
    const bool bAxis = m_pDirections->m_pAxisRadio->isChecked() || facts.rotationAxis.isTold();
    m_pPreviewBox->showAxis(
        bAxis ? std::optional<double>(m_pDirections->m_pRotationAxisSpin->value()) : std::nullopt, facts);
}

bool NewProjectDialog::isAgreed(const QString& strQuestion)
{
    return QMessageBox::question(this, windowTitle(), strQuestion, QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::No) == QMessageBox::Yes;
}

void NewProjectDialog::reject()
{
    if (!m_pTilts->hasList() ||
        isAgreed(tr("The list of tilts is lost when the dialog is closed. Close it?"))) {
        QDialog::reject();
    }
}

/// Return completes the input in a box; it presses a button only if that has the keyboard focus.
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
    if (!problem().isEmpty()) {
        return;
    }
    QString strReason;
    const QString strFile = projectFile();
    const std::optional<QByteArray> bytesText = makeProjectText(project(), strFile, &strReason);
    if (!bytesText) {
        return;
    }
    const QStringList listFrame = m_pFrames->frames();
    bool bAlike = false;
    {
        const CWaitCursor wait;
        bAlike = areFramesAlike(listFrame, &strReason);
    }
    if (!bAlike && !isAgreed(tr("%1. Create the project all the same?").arg(strReason))) {
        return;
    }
    if (QFileInfo::exists(strFile) &&
        !isAgreed(tr("%1 exists already. Replace it?").arg(QDir::toNativeSeparators(strFile)))) {
        return;
    }
    const SeriesChoice choice = m_pFrames->m_pChoice->choice(listFrame.size()).value_or(SeriesChoice());
    if (!writeProject(strFile, *bytesText, choice, &strReason)) {
        QMessageBox::warning(this, windowTitle(), strReason);
        return;
    }
    QDialog::accept();
}

}  // namespace tessera
