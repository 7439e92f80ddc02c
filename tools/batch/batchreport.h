// CBatchReport: the message log of a driver run, kept for its file and shown on the terminal.
#pragma once

#include "app/records/runreport.h"

#include <QString>
#include <QStringList>

/// Lines go to the standard output as they come; where the standard error is a terminal, progress
/// shows there in one line.
class CBatchReport : public CRunReport {
public:
    CBatchReport();

    void addMessage(const QString& strText, Qt::GlobalColor color = Qt::black) override;
    void addHtml(const QString& strHtml, Qt::GlobalColor color = Qt::black) override;
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar = false) override;
    void setProgress(int nValue) override;
    void endProgress() override;

    const QString& log() const { return m_strLog; }
    /// The red lines of the log: warnings, and why the run ended early.
    const QStringList& redLines() const { return m_listRedLine; }

private:
    void clearProgressLine();

    QString m_strLog;
    QStringList m_listRedLine;
    QString m_strFormat;
    int m_nMinimum = 0;
    int m_nMaximum = 0;
    bool m_bTerminal = false;
    bool m_bLineShown = false;
};
