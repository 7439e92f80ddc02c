#include "window/newprojectdialog.h"

#include "crystal/electronwavelength.h"
#include "dataset/framefiles.h"
#include "dataset/textlines.h"
#include "imagefiles/frameformats.h"
#include "records/wholefile.h"
#include "window/guards.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSet>
#include <QSettings>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStackedLayout>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const QString g_strDegree = QStringLiteral("°");
const qint64 g_nMaxTiltFile = 1 << 20;  // bytes; a text edit takes seconds for more

// A row of a label or radio button and its control.
void addRow(QGridLayout* pGrid, QWidget* pLabel, QWidget* pControl)
{
    const int nRow = pGrid->rowCount();
    pGrid->addWidget(pLabel, nRow, 0);
    pGrid->addWidget(pControl, nRow, 1);
    pGrid->setColumnStretch(1, 1);
}

// A value that is shown but not given here.
void showValue(QDoubleSpinBox* pSpin, double dfValue)
{
    const QSignalBlocker blocker(pSpin);
    pSpin->setValue(dfValue);
}

QString pathOf(const QListWidgetItem* pItem)
{
    return pItem->data(Qt::UserRole).toString();
}

// What was understood of a list of tilts, degrees.
QString tiltText(const QList<double>& listTilt)
{
    if (listTilt.isEmpty())
        return {};
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
            {QStringLiteral("RotationAxis"), dialog.m_pRotationAxisSpin}};
}

struct StoredRadio {
    QString strKey;
    QRadioButton* pRadio;
};

QList<StoredRadio> storedRadios(const NewProjectDialog& dialog)
{
    return {{QStringLiteral("GivesWavelength"), dialog.m_pWavelengthRadio},
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
    auto* pRight = new QVBoxLayout;
    pRight->addWidget(makeTilts());
    pRight->addWidget(makeWavelength());
    pRight->addWidget(makePixelSize());
    pRight->addWidget(makeDirections());
    pRight->addStretch(1);
    pColumns->addLayout(pRight);

    m_pProblemLabel = new QLabel(this);
    m_pProblemLabel->setWordWrap(true);
    m_pProblemLabel->setTextFormat(Qt::PlainText);
    m_pButtons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_pButtons->button(QDialogButtonBox::Ok)->setText(tr("Create"));
    for (QAbstractButton* pButton : m_pButtons->buttons())
        static_cast<QPushButton*>(pButton)->setAutoDefault(false);
    explain(m_pButtons->button(QDialogButtonBox::Ok), tr("Writes the project file and opens it."));
    explain(m_pButtons->button(QDialogButtonBox::Cancel), tr("Closes the dialog; no file is written."));
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addLayout(pColumns, 1);
    pLayout->addWidget(makeFile());
    auto* pLast = new QHBoxLayout;
    pLast->addWidget(m_pProblemLabel, 1);
    pLast->addWidget(m_pButtons);
    pLayout->addLayout(pLast);

    connectControls();
    shareTips(this);
    framesChanged();
}

QWidget* NewProjectDialog::makeFrames()
{
    auto* pGroup = new QGroupBox(tr("Frames"), this);
    m_pFrameList = new QListWidget(pGroup);
    m_pFrameList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_pFrameList->setDragDropMode(QAbstractItemView::InternalMove);
    m_pFrameList->setTextElideMode(Qt::ElideLeft);
    m_pFrameList->setMinimumWidth(280);
    explain(m_pFrameList,
            tr("The frames of the series, in the order in which they were taken. Drop files or a "
               "folder here; drag rows to another place; Del removes them."));
    const struct {
        QPushButton*& pButton;
        QString strText, strTip;
    } aButton[] = {
        {m_pAddFilesButton, tr("Add Files..."),
         tr("Chooses frame files and adds them, sorted by the numbers in "
            "their names.")},
        {m_pAddFolderButton, tr("Add Folder..."),
         tr("Adds the frames of a folder, sorted by the numbers in their "
            "names. Of several formats it takes the one with the most "
            "files.")},
        {m_pRemoveButton, tr("Remove"), tr("Takes the selected frames off the list. The files stay.")},
        {m_pUpButton, tr("Up"), tr("Moves the selected frames towards the start of the series.")},
        {m_pDownButton, tr("Down"), tr("Moves the selected frames towards the end of the series.")},
        {m_pSortButton, tr("Sort"),
         tr("Sorts all frames by the numbers in their names: 9 stands before 10.")}};
    auto* pButtons = new QGridLayout;
    for (int i = 0; i < 6; ++i) {
        aButton[i].pButton = new QPushButton(aButton[i].strText, pGroup);
        aButton[i].pButton->setAutoDefault(false);
        explain(aButton[i].pButton, aButton[i].strTip);
        i < 2 ? pButtons->addWidget(aButton[i].pButton, 0, 2 * i, 1, 2)
              : pButtons->addWidget(aButton[i].pButton, 1, i - 2);
    }
    m_pFrameLabel = new QLabel(pGroup);
    m_pFrameLabel->setWordWrap(true);
    m_pFrameLabel->setTextFormat(Qt::PlainText);
    auto* pLayout = new QVBoxLayout(pGroup);
    pLayout->addLayout(pButtons);
    pLayout->addWidget(m_pFrameList, 1);
    pLayout->addWidget(m_pFrameLabel);
    return pGroup;
}

QGroupBox* NewProjectDialog::makeTilts()
{
    auto* pGroup = new QGroupBox(tr("Tilts"), this);
    m_pStepRadio = new QRadioButton(tr("Start and step"), pGroup);
    m_pEndRadio = new QRadioButton(tr("Start and end"), pGroup);
    m_pListRadio = new QRadioButton(tr("List"), pGroup);
    m_pStepRadio->setChecked(true);
    explain(m_pStepRadio, tr("The tilt goes on by the same step from frame to frame."));
    explain(m_pEndRadio, tr("The tilts are spread evenly from the first frame to the last."));
    explain(m_pListRadio, tr("The tilt of each frame stands in a list, as from the log of the microscope."));
    auto* pChoice = new QHBoxLayout;
    for (QRadioButton* pRadio : {m_pStepRadio, m_pEndRadio, m_pListRadio})
        pChoice->addWidget(pRadio);

    m_pTiltStartSpin = makeDoubleSpin(pGroup, -360, 360, 4, 1, 0, g_strDegree);
    m_pTiltStepSpin = makeDoubleSpin(pGroup, -90, 90, 4, 0.1, 0, g_strDegree);
    m_pTiltEndSpin = makeDoubleSpin(pGroup, -10000, 10000, 4, 1, 0, g_strDegree);
    m_pBeamTiltSpin = makeIntSpin(pGroup, 1, 10000, 1, 1);
    m_pBeamTiltSpin->setSpecialValueText(tr("none"));
    m_pBeamTiltSpin->setAlignment(Qt::AlignRight);
    explain(m_pTiltStartSpin, tr("Tilt of the first frame, degrees."));
    explain(m_pTiltStepSpin,
            tr("Tilt from one frame to the next, degrees; below 0 if the tilt falls. In a series "
               "of continuous rotation: speed times time per frame. A wrong step gives a cell "
               "with wrong angles."));
    explain(m_pTiltEndSpin, tr("Tilt of the last frame, degrees."));
    explain(
        m_pBeamTiltSpin,
        tr("For series that refine the steps of the goniometer by tilting the beam: frames for each step of "
           "the goniometer. Leave \"none\" if only the goniometer turns."));
    auto* pEven = new QWidget(pGroup);
    auto* pGrid = new QGridLayout(pEven);
    pGrid->setContentsMargins(0, 0, 0, 0);
    addRow(pGrid, new QLabel(tr("First Frame"), pGroup), m_pTiltStartSpin);
    addRow(pGrid, new QLabel(tr("Step"), pGroup), m_pTiltStepSpin);
    addRow(pGrid, new QLabel(tr("Last Frame"), pGroup), m_pTiltEndSpin);
    addRow(pGrid, new QLabel(tr("Beam Tilts per Stage Step"), pGroup), m_pBeamTiltSpin);

    auto* pList = new QWidget(pGroup);
    m_pTiltEdit = new QPlainTextEdit(pGroup);
    m_pTiltEdit->setPlaceholderText(tr("one tilt per line, in the order of the frames"));
    m_pTiltEdit->setTabChangesFocus(true);
    explain(m_pTiltEdit,
            tr("One line per frame: its tilt in degrees, or three numbers for stage, beam and "
               "overall tilt (their sum), with decimal points. Lines that begin with # do not count."));
    m_pLoadTiltsButton = new QPushButton(tr("Load..."), pGroup);
    m_pLoadTiltsButton->setAutoDefault(false);
    explain(m_pLoadTiltsButton, tr("Reads the list of tilts from a text file."));
    auto* pLayout = new QVBoxLayout(pGroup);
    pLayout->addLayout(pChoice);
    auto* pListLayout = new QVBoxLayout(pList);
    pListLayout->setContentsMargins(0, 0, 0, 0);
    pListLayout->addWidget(m_pTiltEdit, 1);
    m_pTiltLabel = new QLabel(pGroup);
    m_pTiltLabel->setTextFormat(Qt::PlainText);
    auto* pUnderList = new QHBoxLayout;
    pUnderList->addWidget(m_pTiltLabel, 1);
    pUnderList->addWidget(m_pLoadTiltsButton);
    pListLayout->addLayout(pUnderList);
    auto* pStack = new QStackedLayout;  // as high as the boxes, whatever is shown: small screens have no more
    pStack->addWidget(pEven);
    pStack->addWidget(pList);
    pList->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Ignored);
    connect(m_pListRadio, &QRadioButton::toggled, pStack,
            [pStack](bool bList) { pStack->setCurrentIndex(bList); });
    pLayout->addLayout(pStack);
    return pGroup;
}

QGroupBox* NewProjectDialog::makeWavelength()
{
    auto* pGroup = new QGroupBox(tr("Electrons"), this);
    m_pVoltageRadio = new QRadioButton(tr("Accelerating Voltage"), pGroup);
    m_pWavelengthRadio = new QRadioButton(tr("Wavelength"), pGroup);
    m_pVoltageRadio->setChecked(true);
    m_pVoltageSpin = makeDoubleSpin(pGroup, 0, 10000, 2, 100, 200, QStringLiteral(" kV"));
    m_pWavelengthSpin = makeDoubleSpin(pGroup, 0, 10000, 6, 0.0005, 0, QStringLiteral(" Å"));
    explain(m_pVoltageSpin, tr("Of the microscope, kV. The wavelength follows from it by the relativistic "
                               "formula: 0.0251 Å at 200 kV, 0.0197 Å at 300 kV."));
    explain(m_pWavelengthSpin,
            tr("Of the electrons, Å. It gives the Ewald sphere its curvature: with a wrong one "
               "the rows of the reciprocal lattice bend at high d*."));
    explain(m_pVoltageRadio, tr("The wavelength follows from the accelerating voltage."));
    explain(m_pWavelengthRadio, tr("The wavelength is typed in."));
    auto* pGrid = new QGridLayout(pGroup);
    addRow(pGrid, m_pVoltageRadio, m_pVoltageSpin);
    addRow(pGrid, m_pWavelengthRadio, m_pWavelengthSpin);
    return pGroup;
}

QGroupBox* NewProjectDialog::makePixelSize()
{
    auto* pGroup = new QGroupBox(tr("Pixel Size in Reciprocal Space"), this);
    m_pPixelSizeRadio = new QRadioButton(tr("Pixel Size"), pGroup);
    m_pCameraRadio = new QRadioButton(tr("Camera Length"), pGroup);
    m_pPixelSizeRadio->setChecked(true);
    m_pPixelSizeSpin = makeDoubleSpin(pGroup, 0, 10000, 8, 0.00005, 0, QStringLiteral(" Å⁻¹"));
    m_pCameraLengthSpin = makeDoubleSpin(pGroup, 0, 1e6, 2, 10, 0, QStringLiteral(" mm"));
    m_pDetectorPixelSpin = makeDoubleSpin(pGroup, 0, 1e5, 3, 1, 0, QStringLiteral(" µm"));
    explain(m_pPixelSizeSpin, tr("Size of one pixel of the frames, Å⁻¹, as from a calibration with a known "
                                 "crystal. All lengths of the cell go as its inverse. The page \"Frames\" "
                                 "keeps 6 decimals."));
    explain(m_pCameraLengthSpin,
            tr("Effective camera length L, mm. The pixel size is p / (L λ) with the detector "
               "pixel p. The length that a microscope displays may be off by some per cent."));
    explain(m_pDetectorPixelSpin,
            tr("Size of a pixel on the detector, µm: of the frames as they stand, so with "
               "2 × binning twice that of the detector."));
    explain(m_pPixelSizeRadio, tr("The pixel size is typed in."));
    explain(m_pCameraRadio, tr("The pixel size follows from camera length, detector pixel and wavelength."));
    auto* pGrid = new QGridLayout(pGroup);
    addRow(pGrid, m_pPixelSizeRadio, m_pPixelSizeSpin);
    addRow(pGrid, m_pCameraRadio, m_pCameraLengthSpin);
    addRow(pGrid, new QLabel(tr("Detector Pixel"), pGroup), m_pDetectorPixelSpin);
    return pGroup;
}

QGroupBox* NewProjectDialog::makeDirections()
{
    auto* pGroup = new QGroupBox(tr("Rotation Axis and Distortion"), this);
    m_pRotationAxisSpin = makeDoubleSpin(pGroup, -180, 180, 2, 1, 0, g_strDegree);
    m_pStretchAmplitudeSpin = makeDoubleSpin(pGroup, 0, 1000, 2, 0.1, 0, QStringLiteral(" %"));
    m_pStretchAzimuthSpin = makeDoubleSpin(pGroup, -180, 180, 2, 1, 0, g_strDegree);
    explain(
        m_pRotationAxisSpin,
        tr("Direction of the rotation axis on the frame as it is shown, degrees counter-clockwise from the "
           "right (3 o'clock): 0 to the right, 90 up, -90 down. It belongs to the microscope, camera and "
           "camera length and can be found later by \"Test Rotation Axis\". If the axis is right but the "
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
    auto* pGrid = new QGridLayout(pGroup);
    addRow(pGrid, new QLabel(tr("Rotation Axis At"), pGroup), m_pRotationAxisSpin);
    addRow(pGrid, new QLabel(tr("Stretching Amplitude"), pGroup), m_pStretchAmplitudeSpin);
    addRow(pGrid, new QLabel(tr("Stretching Azimuth"), pGroup), m_pStretchAzimuthSpin);
    return pGroup;
}

QWidget* NewProjectDialog::makeFile()
{
    auto* pGroup = new QGroupBox(tr("Project File"), this);
    m_pFileEdit = new QLineEdit(pGroup);
    m_pBrowseButton = new QPushButton(tr("Browse..."), pGroup);
    m_pBrowseButton->setAutoDefault(false);
    explain(m_pFileEdit,
            tr("Where the project file is written. Results are written beside it, so best beside the "
               "frames, which it names relative to its own folder."));
    explain(m_pBrowseButton, tr("Chooses folder and name of the project file."));
    auto* pLayout = new QHBoxLayout(pGroup);
    pLayout->addWidget(m_pFileEdit, 1);
    pLayout->addWidget(m_pBrowseButton);
    return pGroup;
}

void NewProjectDialog::connectControls()
{
    for (auto* pSpin : findChildren<QDoubleSpinBox*>())
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &NewProjectDialog::refresh);
    connect(m_pBeamTiltSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, &NewProjectDialog::refresh);
    for (auto* pRadio : findChildren<QRadioButton*>())
        connect(pRadio, &QRadioButton::toggled, this, &NewProjectDialog::refresh);
    connect(m_pTiltEdit, &QPlainTextEdit::textChanged, this, &NewProjectDialog::refresh);
    connect(m_pFileEdit, &QLineEdit::textEdited, this, [this](const QString& str) {
        m_bFileTyped = !str.isEmpty();
        refresh();
    });
    connect(m_pAddFilesButton, &QPushButton::clicked, this, &NewProjectDialog::askFiles);
    connect(m_pAddFolderButton, &QPushButton::clicked, this, &NewProjectDialog::askFolder);
    connect(m_pLoadTiltsButton, &QPushButton::clicked, this, &NewProjectDialog::askTilts);
    connect(m_pBrowseButton, &QPushButton::clicked, this, &NewProjectDialog::askProjectFile);
    const auto removeSelected = [this] {
        QStringList listFile;
        for (int i = 0; i < m_pFrameList->count(); ++i)
            if (!m_pFrameList->item(i)->isSelected())
                listFile.append(pathOf(m_pFrameList->item(i)));
        setFrames(listFile);
    };
    connect(m_pRemoveButton, &QPushButton::clicked, this, removeSelected);
    auto* pDelete = new QShortcut(QKeySequence::Delete, m_pFrameList, nullptr, nullptr, Qt::WidgetShortcut);
    connect(pDelete, &QShortcut::activated, this, removeSelected);
    connect(m_pUpButton, &QPushButton::clicked, this, [this] { moveSelected(-1); });
    connect(m_pDownButton, &QPushButton::clicked, this, [this] { moveSelected(1); });
    connect(m_pSortButton, &QPushButton::clicked, this, [this] {
        QStringList listFile = frames();
        sortFrames(listFile);
        setFrames(listFile);
    });
    // Rows that are dragged to another place stand in both while they go from the old one, one by one.
    m_timerMoved.setSingleShot(true);
    connect(m_pFrameList->model(), &QAbstractItemModel::rowsRemoved, &m_timerMoved,
            QOverload<>::of(&QTimer::start));
    connect(&m_timerMoved, &QTimer::timeout, this, &NewProjectDialog::framesChanged);
    connect(m_pFrameList, &QListWidget::itemSelectionChanged, this, &NewProjectDialog::selectionChanged);
    connect(m_pButtons, &QDialogButtonBox::accepted, this, &NewProjectDialog::accept);
    connect(m_pButtons, &QDialogButtonBox::rejected, this, [this] { QDialog::reject(); });
}

void NewProjectDialog::readSettings(QSettings& settings)
{
    settings.beginGroup(QStringLiteral("NewProject"));
    for (const StoredRadio& stored : storedRadios(*this))  // first: the boxes out of use show what follows
        if (settings.value(stored.strKey).toBool())
            stored.pRadio->setChecked(true);
    for (const StoredSpin& stored : storedSpins(*this)) {
        bool bOk = false;
        const double dfValue = settings.value(stored.strKey).toDouble(&bOk);
        if (bOk && std::isfinite(dfValue))
            stored.pSpin->setValue(dfValue);
    }
    settings.endGroup();
    refresh();
}

void NewProjectDialog::writeSettings(QSettings& settings) const
{
    settings.beginGroup(QStringLiteral("NewProject"));
    for (const StoredSpin& stored : storedSpins(*this))
        settings.setValue(stored.strKey, stored.pSpin->value());
    for (const StoredRadio& stored : storedRadios(*this))
        settings.setValue(stored.strKey, stored.pRadio->isChecked());
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
    for (const QUrl& url : pEvent->mimeData()->urls())
        if (url.isLocalFile())
            listPath.append(url.toLocalFile());
    // A source that believes in a move deletes its files.
    pEvent->setDropAction(Qt::CopyAction);
    pEvent->accept();
    addFrames(listPath);
}

QStringList NewProjectDialog::frames() const
{
    QStringList listFile;
    for (int i = 0; i < m_pFrameList->count(); ++i)
        listFile.append(pathOf(m_pFrameList->item(i)));
    return listFile;
}

void NewProjectDialog::setFrames(const QStringList& listFile)
{
    m_pFrameList->clear();
    for (const QString& strFile : listFile) {
        auto* pItem = new QListWidgetItem(QFileInfo(strFile).fileName(), m_pFrameList);
        pItem->setData(Qt::UserRole, strFile);
        pItem->setToolTip(QDir::toNativeSeparators(strFile));
        pItem->setFlags(pItem->flags() & ~Qt::ItemIsDropEnabled);
    }
    framesChanged();
}

void NewProjectDialog::addFrames(const QStringList& listPath)
{
    QStringList listFile = frames();
    QSet<QString> setKnown(listFile.begin(), listFile.end());
    QStringList listSorted = listFile, listNew;
    sortFrames(listSorted);
    for (const QString& strPath : listPath) {
        const QFileInfo info(strPath);
        const QStringList listFound = info.isDir() ? framesInFolder(strPath)
                                      : frameSuffixes().contains(info.suffix().toLower())
                                          ? QStringList(info.absoluteFilePath())
                                          : QStringList();
        for (const QString& strFile : listFound)
            if (!setKnown.contains(strFile)) {
                setKnown.insert(strFile);
                listNew.append(strFile);
            }
    }
    sortFrames(listNew);
    const bool bSorted = listSorted == listFile;
    listFile += listNew;
    if (bSorted)
        sortFrames(listFile);
    if (!listFile.isEmpty())
        m_strFolder = QFileInfo(listFile.first()).absolutePath();
    setFrames(listFile);
}

void NewProjectDialog::askFiles()
{
    addFrames(QFileDialog::getOpenFileNames(this, tr("Add Frames"), m_strFolder,
                                            tr("Images(%1);;All Files (*.*)").arg(frameNameFilters())));
}

void NewProjectDialog::askFolder()
{
    const QString strFolder = QFileDialog::getExistingDirectory(this, tr("Add Frames of a Folder"),
                                                                m_strFolder);
    if (strFolder.isEmpty())
        return;
    if (framesInFolder(strFolder).isEmpty())
        QMessageBox::information(this, windowTitle(), tr("There are no frames in %1.").arg(strFolder));
    addFrames({strFolder});
}

void NewProjectDialog::askTilts()
{
    const QString strFile = QFileDialog::getOpenFileName(this, tr("Load Tilts"), m_strFolder,
                                                         tr("Text Files (*.txt *.log *.csv *.tlt *.rawtlt);;"
                                                            "All Files (*.*)"));
    if (strFile.isEmpty())
        return;
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
    if (strFile.isEmpty())
        return;
    m_pFileEdit->setText(QDir::toNativeSeparators(strFile));
    m_bFileTyped = true;
    refresh();
}

void NewProjectDialog::moveSelected(int nStep)
{
    QList<int> listRow;
    for (const QListWidgetItem* pItem : m_pFrameList->selectedItems())
        listRow.append(m_pFrameList->row(pItem));
    std::sort(listRow.begin(), listRow.end());
    if (listRow.isEmpty() || listRow.first() + nStep < 0 || listRow.last() + nStep >= m_pFrameList->count())
        return;
    QStringList listFile = frames();
    if (nStep > 0)
        std::reverse(listRow.begin(), listRow.end());
    for (int nRow : listRow)
        listFile.move(nRow, nRow + nStep);
    setFrames(listFile);
    for (int nRow : listRow)
        m_pFrameList->item(nRow + nStep)->setSelected(true);
    m_pFrameList->scrollToItem(m_pFrameList->item(listRow.first() + nStep));
}

/// The first frame tells of the size of all and, if its header has them, of voltage and pixel size.
void NewProjectDialog::framesChanged()
{
    m_timerMoved.stop();
    const QStringList listFile = frames();
    const bool bOther = listFile.value(0) != m_strFirstFrame;
    m_strFirstFrame = listFile.value(0);
    if (bOther) {
        m_firstFrame = {};
        m_strFirstFrameError.clear();
        if (!listFile.isEmpty() && !readFrameSummary(m_strFirstFrame, m_firstFrame, &m_strFirstFrameError) &&
            m_strFirstFrameError.isEmpty())
            m_strFirstFrameError = m_strFirstFrame;
    }
    QString strText = listFile.isEmpty()     ? tr("No frames yet: add files or a folder, or drop them here")
                      : listFile.size() == 1 ? tr("1 frame")
                                             : tr("%L1 frames").arg(listFile.size());
    if (m_firstFrame.nWidth > 0)
        strText += tr("; the first: %1 × %2 pixels, %3")
                       .arg(QString::number(m_firstFrame.nWidth), QString::number(m_firstFrame.nHeight),
                            m_firstFrame.strFormat);
    if (m_firstFrame.dfKilovolts > 0)
        strText += tr(", %1 kV").arg(m_firstFrame.dfKilovolts);
    if (m_firstFrame.dfPixelSize > 0)
        strText += tr(", %1 Å⁻¹ per pixel").arg(m_firstFrame.dfPixelSize);
    m_pFrameLabel->setText(strText + QLatin1Char('.'));
    if (bOther && m_firstFrame.dfKilovolts > 0) {
        m_pVoltageRadio->setChecked(true);
        m_pVoltageSpin->setValue(m_firstFrame.dfKilovolts);
    }
    if (bOther && m_firstFrame.dfPixelSize > 0) {
        m_pPixelSizeRadio->setChecked(true);
        m_pPixelSizeSpin->setValue(m_firstFrame.dfPixelSize);
    }
    if (!m_bFileTyped)
        m_pFileEdit->setText(QDir::toNativeSeparators(proposedProjectFile(listFile)));
    selectionChanged();
    refresh();
}

void NewProjectDialog::selectionChanged()
{
    const bool bSelected = !m_pFrameList->selectedItems().isEmpty();
    for (QPushButton* pButton : {m_pRemoveButton, m_pUpButton, m_pDownButton})
        pButton->setEnabled(bSelected);
    m_pSortButton->setEnabled(m_pFrameList->count() > 1);
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
    made.dfStretchAmplitude = m_pStretchAmplitudeSpin->value();
    made.dfStretchAzimuth = m_pStretchAzimuthSpin->value();
    return made;
}

QString NewProjectDialog::projectFile() const
{
    const QString strFile = QDir::fromNativeSeparators(m_pFileEdit->text().trimmed());
    if (strFile.isEmpty() || strFile.endsWith(QLatin1Char('/')))
        return {};
    const QString strPath = QDir(m_strFolder).absoluteFilePath(strFile);
    return QFileInfo(strPath).suffix().toLower() == QLatin1String("ed3d") ? strPath
                                                                          : strPath + QStringLiteral(".ed3d");
}

QString NewProjectDialog::problem() const
{
    if (m_pFrameList->count() > 0 && !m_strFirstFrameError.isEmpty())
        return tr("The first frame cannot be read: %1").arg(m_strFirstFrameError);
    FrameTilts tilts;
    QString strReason;
    if (m_pFrameList->count() > 0 && m_pListRadio->isChecked() &&
        !readTilts(m_pTiltEdit->toPlainText().toUtf8(), tilts, &strReason))
        return strReason;
    QByteArray bytesText;
    if (!makeProjectText(project(), projectFile(), bytesText, &strReason))
        return strReason;
    const QFileInfo info(projectFile());
    if (!info.absoluteDir().exists())
        return tr("There is no folder %1.").arg(QDir::toNativeSeparators(info.absolutePath()));
    if (info.isDir())
        return tr("%1 is a folder.").arg(QDir::toNativeSeparators(projectFile()));
    return {};
}

void NewProjectDialog::refresh()
{
    m_pTiltStepSpin->setEnabled(m_pStepRadio->isChecked());
    m_pTiltEndSpin->setEnabled(m_pEndRadio->isChecked());
    m_pVoltageSpin->setEnabled(m_pVoltageRadio->isChecked());
    m_pWavelengthSpin->setEnabled(m_pWavelengthRadio->isChecked());
    m_pPixelSizeSpin->setEnabled(m_pPixelSizeRadio->isChecked());
    m_pCameraLengthSpin->setEnabled(m_pCameraRadio->isChecked());
    m_pDetectorPixelSpin->setEnabled(m_pCameraRadio->isChecked());
    // What follows from the rest is shown in the boxes that are not in use.
    const NewProject made = project();
    const int nFrames = made.listFrame.size();
    if (m_pVoltageRadio->isChecked())
        showValue(m_pWavelengthSpin, made.dfWavelength);
    if (m_pCameraRadio->isChecked())
        showValue(m_pPixelSizeSpin, made.dfPixelSize);
    if (m_pStepRadio->isChecked())
        showValue(m_pTiltEndSpin,
                  m_pTiltStartSpin->value() + qMax(0, nFrames - 1) * m_pTiltStepSpin->value());
    if (m_pEndRadio->isChecked())
        showValue(m_pTiltStepSpin, tiltStep(nFrames, m_pTiltStartSpin->value(), m_pTiltEndSpin->value()));

    if (m_pListRadio->isChecked())
        m_pTiltLabel->setText(tiltText(made.tilts.listOverall));
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
        isAgreed(tr("The list of tilts is lost when the dialog is closed. Close it?")))
        QDialog::reject();
}

/// Return ends what is typed into a box; only a button that has the focus does what it says.
void NewProjectDialog::keyPressEvent(QKeyEvent* pEvent)
{
    if (pEvent->key() != Qt::Key_Return && pEvent->key() != Qt::Key_Enter) {
        QDialog::keyPressEvent(pEvent);
        return;
    }
    if (auto* pButton = qobject_cast<QPushButton*>(focusWidget()))
        pButton->click();
    pEvent->accept();
}

void NewProjectDialog::accept()
{
    QByteArray bytesText;
    QString strReason;
    const QString strFile = projectFile();
    if (!problem().isEmpty() || !makeProjectText(project(), strFile, bytesText, &strReason))
        return;
    bool bAlike = false;
    {
        const CWaitCursor wait;
        bAlike = areFramesAlike(frames(), &strReason);
    }
    if (!bAlike && !isAgreed(tr("%1. Create the project all the same?").arg(strReason)))
        return;
    if (QFileInfo::exists(strFile) &&
        !isAgreed(tr("%1 exists already. Replace it?").arg(QDir::toNativeSeparators(strFile))))
        return;
    if (!writeWholeFile(strFile, bytesText, &strReason)) {
        QMessageBox::warning(this, windowTitle(), strReason);
        return;
    }
    QDialog::accept();
}

}  // namespace tessera
