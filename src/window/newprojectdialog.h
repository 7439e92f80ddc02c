// NewProjectDialog: asks for what a project file is made from, and writes it.
#pragma once

#include "dataset/newproject.h"
#include "window/newproject/factfields.h"

#include <QDialog>

class QCheckBox;
class QDialogButtonBox;
class QLabel;
class QSettings;
class QVBoxLayout;

namespace tessera {

class DirectionsBox;
class ElectronsBox;
class FrameListBox;
class LensDistortionBox;
class PixelSizeBox;
class PreviewBox;
class ProjectFileRow;
class TiltsBox;

/// What the frames and texts beside them tell is read in the background and fills the fields that the user
/// has not touched; beside each field is written what was read and where. Says under its controls what is
/// still missing, and can be accepted when nothing is. Accepting writes the file; the dialog stays when that
/// fails or when the user does not want a former file replaced.
///
/// The groups of controls are widgets of their own (src/window/newproject). They and their controls are
/// public: there is no other way in or out.
class NewProjectDialog : public QDialog {
    Q_OBJECT

public:
    /// @param strFolder  where the file dialogs start
    explicit NewProjectDialog(const QString& strFolder, QWidget* pParent = nullptr);

    /// Voltage, pixel size, axis and kind of rotation as they were given last, and what comes afterwards.
    void readSettings(QSettings& settings);
    /// Keeps them for the next dialog.
    void writeSettings(QSettings& settings) const;

    /// Adds files, and the frames of folders, that are not in the list yet. A list that was sorted stays so.
    void addFrames(const QStringList& listPath);
    /// What the controls say. Tilts that cannot be read are none.
    NewProject project() const;
    /// The file to be written, with its suffix; empty while there is no name.
    QString projectFile() const;
    /// Writes the project file; the dialog stays when that fails.
    void accept() override;
    /// Asks before a list of tilts is lost; the button "Cancel" does not ask.
    void reject() override;

    FrameListBox* m_pFrames = nullptr;               ///< which frames
    PreviewBox* m_pPreviewBox = nullptr;             ///< one of them
    TiltsBox* m_pTilts = nullptr;                    ///< their tilts
    ElectronsBox* m_pElectrons = nullptr;            ///< wavelength
    PixelSizeBox* m_pPixels = nullptr;               ///< pixel size
    DirectionsBox* m_pDirections = nullptr;          ///< axis, rotation and ellipse
    LensDistortionBox* m_pLensDistortion = nullptr;  ///< folded up at the start
    ProjectFileRow* m_pFile = nullptr;               ///< the file to be written
    FactFields m_facts;                              ///< what was read, beside the fields

    QCheckBox* m_pSolveCheck = nullptr;      ///< "Solve" begins when the project is made; the caller's to do
    QLabel* m_pProblemLabel = nullptr;       ///< what is missing
    QDialogButtonBox* m_pButtons = nullptr;  ///< "Create", in force when nothing is missing, and "Cancel"

protected:
    void dragEnterEvent(QDragEnterEvent* pEvent) override;
    void dropEvent(QDropEvent* pEvent) override;
    void keyPressEvent(QKeyEvent* pEvent) override;

private:
    QVBoxLayout* makeNumbers();
    QDialogButtonBox* makeButtons();
    void connectControls();
    void connectTouches();
    bool isAgreed(const QString& strQuestion);
    void framesChanged();
    void touched(const QWidget* pControl);
    void takeFacts();
    void showPreview();
    /// Shows what follows from the rest, and what is missing.
    void refresh();
    /// What is missing, in a sentence; empty if nothing is.
    QString problem() const;

    bool m_bFilling = false;  ///< what changes now is not the user's doing
};

}  // namespace tessera
