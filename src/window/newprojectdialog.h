// NewProjectDialog: asks for what a project file is made from, and writes it.
#pragma once

#include "dataset/newproject.h"
#include "frames/framesummary.h"
#include "window/backgroundjob.h"

#include <QDialog>
#include <QMap>
#include <QSet>
#include <QTimer>

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QDoubleSpinBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QSettings;
class QSpinBox;

namespace tessera {

class FactLabel;
class FramePreview;
class LensDistortionBox;
class SeriesChoiceBox;

/// What the frames and texts beside them tell is read in the background and fills the fields that the user
/// has not touched; beside each field stands what was read and where. Says under its controls what is still
/// missing, and can be accepted when nothing is. Accepting writes the file; the dialog stays when that fails
/// or when the user does not want a former file replaced.
///
/// All controls are public: there is no other way in or out.
class NewProjectDialog : public QDialog {
    Q_OBJECT

public:
    /// @param strFolder  where the file dialogs start
    explicit NewProjectDialog(const QString& strFolder, QWidget* pParent = nullptr);

    /// Voltage, pixel size, axis and kind of rotation as they were given last, and what comes afterwards.
    void readSettings(QSettings& settings);
    /// Keeps them for the next dialog.
    void writeSettings(QSettings& settings) const;

    /// Adds files, and the frames of folders, that are not in the list yet. A list that stood sorted stays
    /// so.
    void addFrames(const QStringList& listPath);
    /// What the controls say. Tilts that cannot be read are none.
    NewProject project() const;
    /// The file to be written, with its suffix; empty while there is no name.
    QString projectFile() const;
    /// Writes the project file; the dialog stays when that fails.
    void accept() override;
    /// Asks before a list of tilts is lost; the button "Cancel" does not ask.
    void reject() override;

    QListWidget* m_pFrameList = nullptr;        ///< the path of a frame is the item's Qt::UserRole
    QPushButton* m_pAddFilesButton = nullptr;   ///< asks for files
    QPushButton* m_pAddFolderButton = nullptr;  ///< asks for a folder
    QPushButton* m_pRemoveButton = nullptr;     ///< takes the selected frames off the list
    QPushButton* m_pUpButton = nullptr;         ///< moves them one place up
    QPushButton* m_pDownButton = nullptr;       ///< moves them one place down
    QPushButton* m_pSortButton = nullptr;       ///< sorts by name
    QLabel* m_pFrameLabel = nullptr;            ///< count, size and format
    SeriesChoiceBox* m_pChoice = nullptr;       ///< which of them are taken, summed and binned
    QLabel* m_pChoiceLabel = nullptr;           ///< what comes of it; hidden while all are taken as they come

    FramePreview* m_pPreview = nullptr;           ///< a frame with beam and axis
    QSpinBox* m_pPreviewSpin = nullptr;           ///< which one, from 1
    QPushButton* m_pOtherFrameButton = nullptr;   ///< goes on by a fifth of the series
    QLabel* m_pBeamLabel = nullptr;               ///< where the beam was found, and where it is told
    QLabel* m_pFactsLabel = nullptr;              ///< what else the headers tell, or how far they are read
    QPushButton* m_pStopFactsButton = nullptr;    ///< has the reading stopped; hidden when it is done
    QPlainTextEdit* m_pDoubtText = nullptr;       ///< what is doubtful of it; hidden when nothing is
    QMap<QDoubleSpinBox*, FactLabel*> m_mapFact;  ///< what was read, beside the fields

    QRadioButton* m_pStepRadio = nullptr;        ///< tilts by start and step
    QRadioButton* m_pEndRadio = nullptr;         ///< tilts by start and end
    QRadioButton* m_pListRadio = nullptr;        ///< tilts by a list
    QDoubleSpinBox* m_pTiltStartSpin = nullptr;  ///< degrees, of the first frame
    QDoubleSpinBox* m_pTiltStepSpin = nullptr;   ///< degrees from frame to frame
    QDoubleSpinBox* m_pTiltEndSpin = nullptr;    ///< degrees, of the last frame
    QSpinBox* m_pBeamTiltSpin = nullptr;         ///< frames per step of the goniometer
    QPlainTextEdit* m_pTiltEdit = nullptr;       ///< the list of tilts
    QLabel* m_pTiltLabel = nullptr;              ///< what was understood of the list
    QPushButton* m_pLoadTiltsButton = nullptr;   ///< asks for a file of tilts

    QRadioButton* m_pVoltageRadio = nullptr;            ///< wavelength by the voltage
    QRadioButton* m_pWavelengthRadio = nullptr;         ///< wavelength as it is given
    QDoubleSpinBox* m_pVoltageSpin = nullptr;           ///< kV
    QDoubleSpinBox* m_pWavelengthSpin = nullptr;        ///< Å
    QRadioButton* m_pPixelSizeRadio = nullptr;          ///< pixel size as it is given
    QRadioButton* m_pCameraRadio = nullptr;             ///< pixel size by camera length and detector
    QDoubleSpinBox* m_pPixelSizeSpin = nullptr;         ///< Å⁻¹
    QDoubleSpinBox* m_pCameraLengthSpin = nullptr;      ///< mm
    QDoubleSpinBox* m_pDetectorPixelSpin = nullptr;     ///< µm
    QRadioButton* m_pAxisRadio = nullptr;               ///< the axis as it is given
    QRadioButton* m_pFindAxisRadio = nullptr;           ///< the project has none: it is found from the peaks
    QDoubleSpinBox* m_pRotationAxisSpin = nullptr;      ///< degrees
    QComboBox* m_pRotationCombo = nullptr;              ///< its data: RotationKind
    QDoubleSpinBox* m_pPrecessionSpin = nullptr;        ///< degrees, half opening of the cone
    QDoubleSpinBox* m_pStretchAmplitudeSpin = nullptr;  ///< per cent
    QDoubleSpinBox* m_pStretchAzimuthSpin = nullptr;    ///< degrees
    LensDistortionBox* m_pLensDistortion = nullptr;     ///< folded up at the start

    QLineEdit* m_pFileEdit = nullptr;        ///< the file to be written
    QPushButton* m_pBrowseButton = nullptr;  ///< asks for it
    QCheckBox* m_pSolveCheck = nullptr;      ///< "Solve" begins when the project is made; the caller's to do
    QLabel* m_pProblemLabel = nullptr;       ///< what is missing
    QDialogButtonBox* m_pButtons = nullptr;  ///< "Create", in force when nothing is missing, and "Cancel"

protected:
    void dragEnterEvent(QDragEnterEvent* pEvent) override;
    void dropEvent(QDropEvent* pEvent) override;
    void keyPressEvent(QKeyEvent* pEvent) override;

private:
    QWidget* makeFrames();
    QWidget* makePreview();
    void addFactRow(QGridLayout* pGrid, QWidget* pLabel, QDoubleSpinBox* pSpin);
    QGroupBox* makeTilts();
    QGroupBox* makeWavelength();
    QGroupBox* makePixelSize();
    QGroupBox* makeDirections();
    QWidget* makeRotation(QWidget* pParent);
    QWidget* makeFile();
    void connectControls();

    QStringList frames() const;
    void setFrames(const QStringList& listFile);
    void askFiles();
    void askFolder();
    void askTilts();
    void askProjectFile();
    bool isAgreed(const QString& strQuestion);
    void removeSelected();
    void sortByName();
    void moveSelected(int nStep);
    void framesChanged();
    void selectionChanged();
    void connectFacts();
    void touched(const QWidget* pControl);
    bool isTouched(const QWidget* pControl) const;
    void gatherFacts();
    void takeFacts(const SeriesFacts& facts);
    void fillFields();
    void fillTilts();
    ToldNumber toldFor(const QDoubleSpinBox* pSpin) const;
    void showFacts();
    void lookAtPreview();
    void showPreview();
    /// Shows what follows from the rest, and what is missing.
    void refresh();
    RotationMode rotation() const;
    void askSize(QStringList& listFrame);
    /// What is missing, in a sentence; empty if nothing is.
    QString problem() const;

    QString m_strFolder;
    QTimer m_timerMoved;
    QString m_strFirstFrame;  ///< the one that the next two tell of
    FrameSummary m_firstFrame;
    QString m_strFirstFrameError;       ///< empty if it can be read
    SeriesFacts m_facts;                ///< of the frames in the list, as soon as they are read
    bool m_bFilling = false;            ///< what changes now is not the user's doing
    QSet<const QWidget*> m_setTouched;  ///< the groups whose controls are the user's own
    BackgroundJob m_jobFacts;
    BackgroundJob m_jobLook;
    bool m_bFileTyped = false;  ///< the user's own name, which new frames leave as it is
};

}  // namespace tessera
