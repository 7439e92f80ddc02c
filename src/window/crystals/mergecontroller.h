// MergeController: the window "Merge Crystals" at work.
#pragma once

#include "crystals/crystalsjob.h"
#include "records/runoutcome.h"
#include "records/severity.h"
#include "window/backgroundjob.h"
#include "window/crystals/crystaltables.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class QSettings;
class QWidget;

namespace tessera {

class MergeDialog;

/// What the merging asks of the main window.
struct MergeHost {
    QWidget* pParent = nullptr;  ///< of the window; not owned
    /// The folder with the results of the open project; empty, with the reason, where there are none.
    std::function<QString(QString* pstrReason)> fnSeriesFolder;
    std::function<void(const QString&, Severity)> fnSay;  ///< a line of the log
    std::function<void(const QString&)> fnOpen;  ///< a file or folder, by the desktop's program for it
    std::function<std::unique_ptr<QSettings>()> fnSettings;
};

/// Reads and merges in threads of its own, beside whatever the main window does: nothing of the open project
/// is read or changed.
class MergeController : public QObject {
    Q_OBJECT

public:
    explicit MergeController(const MergeHost& host, QObject* pParent = nullptr);

    /// Opens the window, with the list as it was left.
    void showWindow();
    /// Merges what is listed; during it, asks it to stop.
    void merge();
    /// The main window goes, or the user closes this one: a merging under way is stopped.
    void close();

    MergeDialog* dialog() const { return m_pDialog; }  ///< null before it was first opened
    bool isMerging() const { return m_pStop != nullptr; }
    bool isReading() const { return !m_listToRead.isEmpty(); }

private:
    void makeDialog();
    void read(const QStringList& listFolder);
    void takeRead(const ListedFolder& folder, int nDone, int nAll);
    void addSeries();
    void say(const QString& strText, Severity severity);
    void complain(const QString& strReason);
    void ended(const CrystalsJobOptions& options, const RunOutcome& outcome,
               const std::shared_ptr<const CrystalsJobResult>& pResult);
    void updateButtons();
    QString reportFile() const;
    void openReport();

    MergeHost m_host;
    MergeDialog* m_pDialog = nullptr;              ///< the parent owns it
    QStringList m_listToRead;                      ///< named and not yet read
    std::shared_ptr<BackgroundJob::Stop> m_pStop;  ///< of the current merging; null: there is none
    BackgroundJob m_reading;                       ///< these two last, so that they end first
    BackgroundJob m_merging;
};

}  // namespace tessera
