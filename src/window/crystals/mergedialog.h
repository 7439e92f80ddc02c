// MergeDialog: many crystals chosen, merged and looked at.
#pragma once

#include "records/severity.h"

#include <QDialog>
#include <QElapsedTimer>

class QLabel;
class QProgressBar;
class QPushButton;
class QTabWidget;

namespace tessera {

class MergeInput;
class MergeResultView;
class MessageEdit;

/// The window "Merge Crystals". It holds controls alone; a MergeController connects and fills it.
class MergeDialog : public QDialog {
    Q_OBJECT

public:
    explicit MergeDialog(QWidget* pParent = nullptr);

    /// Turns "Merge" into "Stop", and back.
    void setMerging(bool bMerging);
    /// How far it is; the time that is left follows from it.
    /// @param nAll  0: not known
    void showProgress(const QString& strFormat, int nDone, int nAll);
    /// The line above the buttons.
    void showState(const QString& strText);
    /// The same in red, for what went wrong.
    void showFault(const QString& strText);
    /// A line of the page "Log".
    void addLine(const QString& strText, Severity severity);
    /// Whether there is something to merge, and a report to open.
    void setReady(bool bMerge, bool bReport);

    MergeInput* m_pInput;
    MergeResultView* m_pResult;
    MessageEdit* m_pLog;
    QTabWidget* m_pTabs;  ///< these three
    QLabel* m_pLabelState;
    QProgressBar* m_pProgress;
    QPushButton* m_pButtonMerge;
    QPushButton* m_pButtonReport;
    QPushButton* m_pButtonClose;

signals:
    /// Folders were dropped on the window.
    void dropped(const QStringList& listFolder);

protected:
    void dragEnterEvent(QDragEnterEvent* pEvent) override;
    void dropEvent(QDropEvent* pEvent) override;
    /// Hands status tips on to the main window, which has the status bar.
    bool event(QEvent* pEvent) override;

private:
    bool m_bMerging = false;
    QElapsedTimer m_clock;  ///< since the start of what is shown
};

}  // namespace tessera
