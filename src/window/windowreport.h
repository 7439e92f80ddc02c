// WindowReport: what a run says, in the window: message log, progress bar and event pump.
#pragma once

#include "records/runreport.h"

#include <QElapsedTimer>
#include <QString>

namespace tessera {

class MainWindow;

/// The report of a run that the window shows while it works.
///
/// goOn() is where the window stays alive: it handles waiting events, and through them the user can ask
/// for anything, also for what must not happen now. MainWindow knows by isPumping() that it is so. The time
/// that is left is written behind the text of the progress as soon as there is enough to go by.
class WindowReport : public CRunReport {
public:
    /// @param pbFlag  the run's flag, whose clearing stops the run; null for what cannot be stopped but
    ///                by closing the window
    explicit WindowReport(MainWindow& window, const bool* pbFlag = nullptr);
    ~WindowReport() override;
    WindowReport(const WindowReport&) = delete;
    WindowReport& operator=(const WindowReport&) = delete;

    void addMessage(const QString& strText, Severity severity = Severity::Info) override;
    void addHtml(const QString& strHtml, Severity severity = Severity::Info) override;
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar = false) override;
    void setProgress(int nValue) override;
    void endProgress() override;
    bool goOn() override;

private:
    MainWindow& m_window;
    const bool* m_pbFlag;
    bool m_bProgressShown = false;
    QString m_strFormat;    ///< of the progress, without the time left
    QElapsedTimer m_clock;  ///< since its start
};

}  // namespace tessera
