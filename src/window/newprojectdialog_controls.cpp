// NewProjectDialog: its controls.
#include "window/newprojectdialog.h"

#include "window/factlabel.h"
#include "window/framepreview.h"
#include "window/pages/controltips.h"
#include "window/pages/lensdistortionbox.h"
#include "window/pages/pagecontrols.h"
#include "window/serieschoicebox.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QSpinBox>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace tessera {

namespace {

const QString g_strDegree = QStringLiteral("°");
const double g_dfMostPrecession = 10;  // degrees, as far as a project file takes it

// A row of a label or radio button and its control.
void addRow(QGridLayout* pGrid, QWidget* pLabel, QWidget* pControl)
{
    const int nRow = pGrid->rowCount();
    pGrid->addWidget(pLabel, nRow, 0);
    pGrid->addWidget(pControl, nRow, 1);
    pGrid->setColumnStretch(1, 1);
}

}  // namespace

// The same with what was read behind it.
void NewProjectDialog::addFactRow(QGridLayout* pGrid, QWidget* pLabel, QDoubleSpinBox* pSpin)
{
    const int nRow = pGrid->rowCount();
    pGrid->setVerticalSpacing(4);
    m_mapFact[pSpin] = new FactLabel(pSpin->parentWidget());
    pGrid->addWidget(pLabel, nRow, 0);
    pGrid->addWidget(pSpin, nRow, 1);
    pGrid->addWidget(m_mapFact[pSpin], nRow, 2);
    pGrid->setColumnStretch(1, 2);
    pGrid->setColumnStretch(2, 3);
}

QWidget* NewProjectDialog::makePreview()
{
    auto* pGroup = new QGroupBox(tr("Preview"), this);
    m_pPreview = new FramePreview(pGroup);
    m_pPreviewSpin = makeIntSpin(pGroup, 1, 1, 1, 1);
    m_pPreviewSpin->setPrefix(tr("Frame "));
    m_pOtherFrameButton = new QPushButton(tr("Another Frame"), pGroup);
    m_pOtherFrameButton->setAutoDefault(false);
    m_pBeamLabel = new QLabel(pGroup);
    m_pBeamLabel->setTextFormat(Qt::PlainText);
    m_pBeamLabel->setWordWrap(true);
    explainArea(
        m_pPreview,
        tr("A frame as it is read, row 0 on top. Green cross: the direct beam as found; orange ring: as "
           "the header tells it. Dashed line: the rotation axis, with the head at the end that its "
           "angle points to. The spots should lie symmetrically to the axis' normal through the beam "
           "over the series, and move across it from frame to frame."));
    explain(m_pPreviewSpin, tr("The frame that is shown."));
    explain(m_pOtherFrameButton, tr("Shows a frame that lies a fifth of the series further on."));
    auto* pRow = new QHBoxLayout;
    pRow->addWidget(m_pPreviewSpin);
    pRow->addWidget(m_pOtherFrameButton);
    pRow->addStretch(1);
    m_pDoubtText = new QPlainTextEdit(pGroup);
    m_pDoubtText->setReadOnly(true);
    m_pDoubtText->setMaximumHeight(8 * fontMetrics().lineSpacing());
    m_pDoubtText->hide();
    explain(m_pDoubtText, tr("What of the headers and texts beside the frames was guessed, and what in them "
                             "contradicts itself."));
    auto* pLayout = new QVBoxLayout(pGroup);
    pLayout->addWidget(m_pPreview, 3);
    pLayout->addLayout(pRow);
    pLayout->addWidget(m_pBeamLabel);
    pLayout->addWidget(m_pDoubtText, 1);
    return pGroup;
}

QWidget* NewProjectDialog::makeFrames()
{
    auto* pGroup = new QGroupBox(tr("Frames"), this);
    m_pFrameList = new QListWidget(pGroup);
    m_pFrameList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_pFrameList->setDragDropMode(QAbstractItemView::InternalMove);
    m_pFrameList->setTextElideMode(Qt::ElideLeft);
    m_pFrameList->setMinimumWidth(240);
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
    m_pFactsLabel = new QLabel(pGroup);
    m_pFactsLabel->setWordWrap(true);
    m_pFactsLabel->setTextFormat(Qt::PlainText);
    m_pStopFactsButton = new QPushButton(tr("Stop Reading"), pGroup);
    m_pStopFactsButton->setAutoDefault(false);
    m_pStopFactsButton->hide();
    explain(m_pStopFactsButton,
            tr("Has the reading of the headers stopped. What they tell is then typed in."));
    auto* pFacts = new QHBoxLayout;
    pFacts->addWidget(m_pFactsLabel, 1);
    pFacts->addWidget(m_pStopFactsButton);
    auto* pLayout = new QVBoxLayout(pGroup);
    pLayout->addLayout(pButtons);
    pLayout->addWidget(m_pFrameList, 1);
    pLayout->addWidget(m_pFrameLabel);
    m_pChoice = new SeriesChoiceBox(pGroup);
    m_pChoiceLabel = new QLabel(pGroup);
    m_pChoiceLabel->setWordWrap(true);
    m_pChoiceLabel->setTextFormat(Qt::PlainText);
    m_pChoiceLabel->hide();
    pLayout->addWidget(m_pChoice);
    pLayout->addWidget(m_pChoiceLabel);
    pLayout->addLayout(pFacts);
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
    for (QRadioButton* pRadio : {m_pStepRadio, m_pEndRadio, m_pListRadio}) {
        pChoice->addWidget(pRadio);
    }

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
    addFactRow(pGrid, new QLabel(tr("First Frame"), pGroup), m_pTiltStartSpin);
    addFactRow(pGrid, new QLabel(tr("Step"), pGroup), m_pTiltStepSpin);
    addFactRow(pGrid, new QLabel(tr("Last Frame"), pGroup), m_pTiltEndSpin);
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
    addFactRow(pGrid, m_pVoltageRadio, m_pVoltageSpin);
    addFactRow(pGrid, m_pWavelengthRadio, m_pWavelengthSpin);
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
    addFactRow(pGrid, m_pPixelSizeRadio, m_pPixelSizeSpin);
    addFactRow(pGrid, m_pCameraRadio, m_pCameraLengthSpin);
    addFactRow(pGrid, new QLabel(tr("Detector Pixel"), pGroup), m_pDetectorPixelSpin);
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
    m_pAxisRadio = new QRadioButton(tr("Rotation Axis At"), pGroup);
    m_pFindAxisRadio = new QRadioButton(tr("Find it from the peaks"), pGroup);
    m_pFindAxisRadio->setChecked(true);
    explain(m_pAxisRadio, tr("The direction of the axis is given here; the preview shows it."));
    explain(
        m_pFindAxisRadio,
        tr("The project names no axis: it is found from the peaks after the hunt, with its sense, by "
           "\"Test Rotation Axis\" or by the driver. No format tells the axis so that its sense is sure."));
    addFactRow(pGrid, m_pAxisRadio, m_pRotationAxisSpin);
    pGrid->addWidget(m_pFindAxisRadio, pGrid->rowCount(), 0, 1, 3);
    addRow(pGrid, new QLabel(tr("Rotation"), pGroup), makeRotation(pGroup));
    addRow(pGrid, new QLabel(tr("Stretching Amplitude"), pGroup), m_pStretchAmplitudeSpin);
    addRow(pGrid, new QLabel(tr("Stretching Azimuth"), pGroup), m_pStretchAzimuthSpin);
    return pGroup;
}

QWidget* NewProjectDialog::makeRotation(QWidget* pParent)
{
    auto* pBoth = new QWidget(pParent);
    m_pRotationCombo = new QComboBox(pBoth);
    m_pRotationCombo->addItem(tr("Continuous"), int(RotationKind::Continuous));
    m_pRotationCombo->addItem(tr("Stepped"), int(RotationKind::Stepped));
    m_pRotationCombo->addItem(tr("Precession"), int(RotationKind::Precession));
    m_pRotationCombo->setAccessibleName(tr("Rotation"));
    m_pPrecessionSpin = makeDoubleSpin(pBoth, 0, g_dfMostPrecession, 2, 0.1, 0, g_strDegree);
    m_pPrecessionSpin->setAccessibleName(tr("Precession Angle"));
    explain(
        m_pRotationCombo,
        tr("How the crystal turned while a frame was exposed: steadily, not at all, or not while the beam "
           "went round a cone. The integration goes by it."));
    explain(m_pPrecessionSpin, tr("Half opening of the cone that the beam went round, degrees: the angle "
                                  "between the precessing beam and the axis of its cone."));
    auto* pRow = new QHBoxLayout(pBoth);
    pRow->setContentsMargins(0, 0, 0, 0);
    pRow->addWidget(m_pRotationCombo, 1);
    pRow->addWidget(m_pPrecessionSpin);
    return pBoth;
}

QWidget* NewProjectDialog::makeFile()
{
    auto* pGroup = new QWidget(this);
    m_pFileEdit = new QLineEdit(pGroup);
    m_pBrowseButton = new QPushButton(tr("Browse..."), pGroup);
    m_pBrowseButton->setAutoDefault(false);
    explain(m_pFileEdit,
            tr("Where the project file is written. Results are written beside it, so best beside the "
               "frames, which it names relative to its own folder."));
    explain(m_pBrowseButton, tr("Chooses folder and name of the project file."));
    auto* pLayout = new QHBoxLayout(pGroup);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(new QLabel(tr("Project File"), pGroup));
    pLayout->addWidget(m_pFileEdit, 1);
    pLayout->addWidget(m_pBrowseButton);
    return pGroup;
}

void NewProjectDialog::connectControls()
{
    for (auto* pSpin : findChildren<QDoubleSpinBox*>()) {
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &NewProjectDialog::refresh);
    }
    connect(m_pBeamTiltSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, &NewProjectDialog::refresh);
    for (auto* pRadio : findChildren<QRadioButton*>()) {
        connect(pRadio, &QRadioButton::toggled, this, &NewProjectDialog::refresh);
    }
    connect(m_pRotationCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &NewProjectDialog::refresh);
    connect(m_pTiltEdit, &QPlainTextEdit::textChanged, this, &NewProjectDialog::refresh);
    connect(m_pChoice, &SeriesChoiceBox::changed, this, &NewProjectDialog::refresh);
    connect(m_pFileEdit, &QLineEdit::textEdited, this, [this](const QString& str) {
        m_bFileTyped = !str.isEmpty();
        refresh();
    });
    connect(m_pAddFilesButton, &QPushButton::clicked, this, &NewProjectDialog::askFiles);
    connect(m_pAddFolderButton, &QPushButton::clicked, this, &NewProjectDialog::askFolder);
    connect(m_pLoadTiltsButton, &QPushButton::clicked, this, &NewProjectDialog::askTilts);
    connect(m_pBrowseButton, &QPushButton::clicked, this, &NewProjectDialog::askProjectFile);
    connect(m_pRemoveButton, &QPushButton::clicked, this, &NewProjectDialog::removeSelected);
    auto* pDelete = new QShortcut(QKeySequence::Delete, m_pFrameList, nullptr, nullptr, Qt::WidgetShortcut);
    connect(pDelete, &QShortcut::activated, this, &NewProjectDialog::removeSelected);
    connect(m_pUpButton, &QPushButton::clicked, this, [this] { moveSelected(-1); });
    connect(m_pDownButton, &QPushButton::clicked, this, [this] { moveSelected(1); });
    connect(m_pSortButton, &QPushButton::clicked, this, &NewProjectDialog::sortByName);
    // Rows that are dragged to another place stand in both while they go from the old one, one by one.
    m_timerMoved.setSingleShot(true);
    connect(m_pFrameList->model(), &QAbstractItemModel::rowsRemoved, &m_timerMoved,
            QOverload<>::of(&QTimer::start));
    connect(&m_timerMoved, &QTimer::timeout, this, &NewProjectDialog::framesChanged);
    connect(m_pFrameList, &QListWidget::itemSelectionChanged, this, &NewProjectDialog::selectionChanged);
    connect(m_pButtons, &QDialogButtonBox::accepted, this, &NewProjectDialog::accept);
    connect(m_pButtons, &QDialogButtonBox::rejected, this, [this] { QDialog::reject(); });
}

}  // namespace tessera
