// WindowActions: all actions of the main window, with their texts, tips, icons and keys.
#pragma once

#include <QAction>
#include <QList>
#include <QObject>

namespace tessera {

struct ActionRows;

/// Builds the actions by the action table, and decides which of two actions a shared key means.
///
/// An action is disabled until setReady() says that it has a slot to go to. The class connects nothing
/// itself.
///
/// Two enabled actions can share a key, by the table (Ctrl+Shift+M, Ctrl+P) or because the desktop adds
/// keys of its own to a standard one; Qt then runs neither. Here one always runs: an action without another
/// key before one with several, then one whose widget has the keyboard, then the one of the higher rank (see
/// rank()).
class WindowActions : public QObject {
    Q_OBJECT

public:
    /// Builds all of them, none ready.
    explicit WindowActions(QObject* pParent = nullptr);

    /// Marks an action as one that works; only such actions are enabled by setInForce().
    void setReady(QAction* pAction);
    /// Enables an action if it is ready, or disables it.
    void setInForce(QAction* pAction, bool bInForce);

    /// Lets ambiguous keys of this action be decided here; for actions that were made elsewhere.
    void watch(QAction* pAction);

    /// The action that a key press means which several actions in force have.
    QAction* actionForKey(const QKeySequence& key) const;

    /// Place of the checked action in m_listSelection.
    int selectionIndex() const { return checkedIndex(m_listSelection); }
    /// Place of the checked action in m_listPalette.
    int paletteIndex() const { return checkedIndex(m_listPalette); }

    QAction* m_pNewProject = nullptr;         ///< menu "File": a project from frames
    QAction* m_pSolve = nullptr;              ///< tool bar and "Tools": the road from frames to intensities
    QAction* m_pOpen = nullptr;               ///< projects, images, a list of reflections
    QAction* m_pFrames = nullptr;             ///< which frames of the project are taken, summed and binned
    QAction* m_pClose = nullptr;              ///< the data set, not the window
    QAction* m_pSaveCurrent = nullptr;        ///< the frame in view
    QAction* m_pSaveSeries = nullptr;         ///< all frames as pictures
    QAction* m_pMovieFrames = nullptr;        ///< pictures of the 3D view all the way round
    QAction* m_pScaledFrames = nullptr;       ///< resized copies of the frames
    QAction* m_pReciprocalVolume = nullptr;   ///< reciprocal space as a volume
    QAction* m_pSmvImages = nullptr;          ///< all frames as SMV images
    QAction* m_pOtherPrograms = nullptr;      ///< for XDS, DIALS, PETS and dynamical refinement
    QAction* m_pSections = nullptr;           ///< menu "Tools": planes of reciprocal space as pictures
    QAction* m_pMergeCrystals = nullptr;      ///< results of many series together
    QAction* m_pReport = nullptr;             ///< what was done and found, as a page for a browser
    QAction* m_pExit = nullptr;               ///< closes the window
    QAction* m_pUndo = nullptr;               ///< menu "Edit": takes the last step back
    QAction* m_pRedo = nullptr;               ///< makes it again
    QAction* m_pCopyWindow = nullptr;         ///< the picture of the current tab
    QAction* m_pZoomIn = nullptr;             ///< menu "View": the next larger scale
    QAction* m_pZoomOut = nullptr;            ///< the next smaller one
    QAction* m_pGuide = nullptr;              ///< menu "Help": the guide
    QAction* m_pAbout = nullptr;              ///< name, version and libraries
    QAction* m_pAboutQt = nullptr;            ///< the version of Qt
    QAction* m_pShowPeakLabels = nullptr;     ///< context menu of the frame view
    QAction* m_pGroupReset = nullptr;         ///< context menu of the group table: removes the selected ones
    QAction* m_pGroupMerge = nullptr;         ///< unites the selected groups
    QAction* m_pGroupResetAll = nullptr;      ///< removes all groups but the first
    QAction* m_pGroupExport = nullptr;        ///< writes the points of the selected groups
    QAction* m_pCurveCopyData = nullptr;      ///< context menu of the curve window: as text
    QAction* m_pCurveCopyWindow = nullptr;    ///< the curve as a picture
    QAction* m_pTableCopySelected = nullptr;  ///< context menu of the peak table: selected rows
    QAction* m_pTableCopyAll = nullptr;       ///< all rows
    QAction* m_pExtractionWindow = nullptr;   ///< menu "Tools", as the next: window of the extraction
    QAction* m_pExtractIntensity = nullptr;   ///< intensities of the indexed peaks
    QAction* m_pFitDirectBeam = nullptr;      ///< direct beam on each frame
    QAction* m_pRefineDirectBeam = nullptr;   ///< direct beam by pairs of indexed peaks
    QAction* m_pTestRotationAxis = nullptr;   ///< azimuth of the rotation axis
    QAction* m_pFindRotationAxis =
        nullptr;                            ///< azimuth and sense of the axis by the sharpness of the lattice
    QAction* m_pLattices = nullptr;         ///< symmetry of the cell and further lattices
    QAction* m_pRefineGeometry = nullptr;   ///< axis, distortion and cell by the indexed peaks
    QAction* m_pRefineBasis = nullptr;      ///< cell on the tilts of the frames
    QAction* m_pRefineFrameNo = nullptr;    ///< cell on the tilts at the tops of the curves
    QAction* m_pExportPeaks = nullptr;      ///< points of the current 3D view
    QAction* m_pTestFindCubic = nullptr;    ///< its test runs: cubic cell on reflections
    QAction* m_pTestRefineCubic = nullptr;  ///< cubic cell on the tilts
    QAction* m_pTestStretching = nullptr;   ///< indexed peaks of the frame in view
    QAction* m_pTestPlane = nullptr;        ///< difference vectors of the frame in view
    QAction* m_pTestIndexing = nullptr;     ///< all reflections of the cell in force
    QAction* m_pStopRun = nullptr;          ///< asks the run under way to stop
    QList<QAction*> m_listSelection;        ///< none, 64, 128, 256, 512 and 1024 pixels square; exclusive
    QList<QAction*> m_listPalette;          ///< by palette index; exclusive
    QList<QAction*> m_listRecent;           ///< the recent data sets, hidden while unused

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    static int checkedIndex(const QList<QAction*>& listAction);
    /// One of them is checked, at first the first one.
    QList<QAction*> makeExclusive(const ActionRows& rows);
    int rank(const QAction* pAction) const;

    QList<QAction*> m_listWatched;
    QList<QAction*> m_listReady;
};

}  // namespace tessera
