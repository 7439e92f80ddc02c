// NewProjectDialog: asks for what a project file is made from, and writes it.
#pragma once

#include "dataset/newproject.h"
#include "frames/framesummary.h"

#include <QDialog>
#include <QTimer>

class QDialogButtonBox;
class QDoubleSpinBox;
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

/// Says under its controls what is still missing, and can be accepted when nothing is. Accepting writes the
/// file; the dialog stays when that fails or when the user does not want a former file replaced.
///
/// All controls are public: there is no other way in or out.
class NewProjectDialog : public QDialog {
    Q_OBJECT

public:
    /// @param strFolder  where the file dialogs start
    explicit NewProjectDialog(const QString& strFolder, QWidget* pParent = nullptr);

    /// Voltage, pixel size and axis as they were given last.
    void readSettings(QSettings& settings);
    void writeSettings(QSettings& settings) const;

    /// Adds files, and the frames of folders, that are not in the list yet. A list that stood sorted stays
    /// so.
    void addFrames(const QStringList& listPath);
    /// What the controls say. Tilts that cannot be read are none.
    NewProject project() const;
    /// The file to be written, with its suffix; empty while there is no name.
    QString projectFile() const;
    void accept() override;
    /// Asks before a list of tilts is lost; the button "Cancel" does not ask.
    void reject() override;

    QListWidget* m_pFrameList = nullptr;  ///< the path of a frame is the item's Qt::UserRole
    QPushButton* m_pAddFilesButton = nullptr;
    QPushButton* m_pAddFolderButton = nullptr;
    QPushButton* m_pRemoveButton = nullptr;
    QPushButton* m_pUpButton = nullptr;
    QPushButton* m_pDownButton = nullptr;
    QPushButton* m_pSortButton = nullptr;
    QLabel* m_pFrameLabel = nullptr;  ///< count, size and format

    QRadioButton* m_pStepRadio = nullptr;
    QRadioButton* m_pEndRadio = nullptr;
    QRadioButton* m_pListRadio = nullptr;
    QDoubleSpinBox* m_pTiltStartSpin = nullptr;  ///< degrees, as the next two
    QDoubleSpinBox* m_pTiltStepSpin = nullptr;
    QDoubleSpinBox* m_pTiltEndSpin = nullptr;
    QSpinBox* m_pBeamTiltSpin = nullptr;  ///< frames per step of the goniometer
    QPlainTextEdit* m_pTiltEdit = nullptr;
    QLabel* m_pTiltLabel = nullptr;  ///< what was understood of the list
    QPushButton* m_pLoadTiltsButton = nullptr;

    QRadioButton* m_pVoltageRadio = nullptr;
    QRadioButton* m_pWavelengthRadio = nullptr;
    QDoubleSpinBox* m_pVoltageSpin = nullptr;     ///< kV
    QDoubleSpinBox* m_pWavelengthSpin = nullptr;  ///< Å
    QRadioButton* m_pPixelSizeRadio = nullptr;
    QRadioButton* m_pCameraRadio = nullptr;
    QDoubleSpinBox* m_pPixelSizeSpin = nullptr;         ///< Å⁻¹
    QDoubleSpinBox* m_pCameraLengthSpin = nullptr;      ///< mm
    QDoubleSpinBox* m_pDetectorPixelSpin = nullptr;     ///< µm
    QDoubleSpinBox* m_pRotationAxisSpin = nullptr;      ///< degrees
    QDoubleSpinBox* m_pStretchAmplitudeSpin = nullptr;  ///< per cent
    QDoubleSpinBox* m_pStretchAzimuthSpin = nullptr;    ///< degrees

    QLineEdit* m_pFileEdit = nullptr;
    QPushButton* m_pBrowseButton = nullptr;
    QLabel* m_pProblemLabel = nullptr;
    QDialogButtonBox* m_pButtons = nullptr;

protected:
    void dragEnterEvent(QDragEnterEvent* pEvent) override;
    void dropEvent(QDropEvent* pEvent) override;
    void keyPressEvent(QKeyEvent* pEvent) override;

private:
    QWidget* makeFrames();
    QGroupBox* makeTilts();
    QGroupBox* makeWavelength();
    QGroupBox* makePixelSize();
    QGroupBox* makeDirections();
    QWidget* makeFile();
    void connectControls();

    QStringList frames() const;
    void setFrames(const QStringList& listFile);
    void askFiles();
    void askFolder();
    void askTilts();
    void askProjectFile();
    bool isAgreed(const QString& strQuestion);
    void moveSelected(int nStep);
    void framesChanged();
    void selectionChanged();
    /// Shows what follows from the rest, and what is missing.
    void refresh();
    /// What is missing, in a sentence; empty if nothing is.
    QString problem() const;

    QString m_strFolder;
    QTimer m_timerMoved;
    QString m_strFirstFrame;  ///< the one that the next two tell of
    FrameSummary m_firstFrame;
    QString m_strFirstFrameError;  ///< empty if it can be read
    bool m_bFileTyped = false;     ///< the user's own name, which new frames leave as it is
};

}  // namespace tessera
