// WindowActions: all actions of the main window, with their texts, tips, icons and keys.
#pragma once

#include <QAction>
#include <QList>
#include <QObject>

class QActionGroup;
class QWidget;

namespace tessera {

/// Builds the actions and decides which of two actions with the same key a key press means.
///
/// An action is built disabled until setReady() says that it has a slot to go to. The class connects
/// nothing itself.
///
/// Two actions in force can share a key, by their table (Ctrl+Shift+M, Ctrl+P) or because the desktop adds
/// keys of its own to a standard one; Qt then runs neither. Here one always runs: one that has no other
/// key, then one whose widget holds the keyboard, then the one of the higher rank (see rank()).
class WindowActions : public QObject {
    Q_OBJECT

public:
    explicit WindowActions(QObject* pParent = nullptr);

    /// Marks an action as one that works; only such actions are enabled by setInForce().
    void setReady(QAction* pAction);
    /// Enables an action if it is ready, or disables it.
    void setInForce(QAction* pAction, bool bInForce);

    /// Lets ambiguous keys of this action be decided here; for actions that were made elsewhere.
    void watch(QAction* pAction);

    /// The action that a key press means which several actions in force have.
    QAction* actionForKey(const QKeySequence& key) const;

    /// Place of the checked action in m_listSelection and in m_listPalette.
    int selectionIndex() const { return checkedIndex(m_listSelection); }
    int paletteIndex() const { return checkedIndex(m_listPalette); }

    QAction* m_pNewProject = nullptr;
    QAction* m_pOpen = nullptr;
    QAction* m_pSaveCurrent = nullptr;
    QAction* m_pSaveSeries = nullptr;
    QAction* m_pMovieFrames = nullptr;
    QAction* m_pScaledFrames = nullptr;
    QAction* m_pReciprocalVolume = nullptr;
    QAction* m_pSmvImages = nullptr;
    QAction* m_pExit = nullptr;
    QAction* m_pCopyWindow = nullptr;
    QAction* m_pZoomIn = nullptr;
    QAction* m_pZoomOut = nullptr;
    QAction* m_pGuide = nullptr;
    QAction* m_pAbout = nullptr;
    QAction* m_pAboutQt = nullptr;
    QAction* m_pShowPeakLabels = nullptr;  ///< context menu of the frame view
    QAction* m_pGroupReset = nullptr;      ///< these four: context menu of the group table
    QAction* m_pGroupMerge = nullptr;
    QAction* m_pGroupResetAll = nullptr;
    QAction* m_pGroupExport = nullptr;
    QAction* m_pCurveCopyData = nullptr;  ///< these two: context menu of the curve window
    QAction* m_pCurveCopyWindow = nullptr;
    QAction* m_pTableCopySelected = nullptr;  ///< these two: context menu of the peak table
    QAction* m_pTableCopyAll = nullptr;
    QAction* m_pExtractionWindow = nullptr;  ///< from here on: menu "Tools"
    QAction* m_pExtractIntensity = nullptr;
    QAction* m_pFitDirectBeam = nullptr;
    QAction* m_pRefineDirectBeam = nullptr;
    QAction* m_pTestRotationAxis = nullptr;
    QAction* m_pRefineBasis = nullptr;
    QAction* m_pRefineFrameNo = nullptr;
    QAction* m_pExportPeaks = nullptr;
    QAction* m_pTestFindCubic = nullptr;  ///< these five: its test runs
    QAction* m_pTestRefineCubic = nullptr;
    QAction* m_pTestStretching = nullptr;
    QAction* m_pTestPlane = nullptr;
    QAction* m_pTestIndexing = nullptr;
    QAction* m_pStopRun = nullptr;
    QList<QAction*> m_listSelection;  ///< none, 64, 128, 256, 512 and 1024 pixels square; exclusive
    QList<QAction*> m_listPalette;    ///< by palette index; exclusive
    QList<QAction*> m_listRecent;     ///< the recent data sets, hidden while unused

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    static int checkedIndex(const QList<QAction*>& listAction);
    int rank(const QAction* pAction) const;

    QList<QAction*> m_listWatched;
    QList<QAction*> m_listReady;
};

}  // namespace tessera
