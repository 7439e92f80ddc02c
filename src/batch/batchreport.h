// CBatchReport: prints the message log of a driver run to the terminal.
#pragma once

#include "records/runreport.h"

#include <QString>

#include <cstdio>

namespace tessera {

/// Lines are printed as they come. If the standard error is a terminal, progress is shown there in one line.
/// Output that cannot be written (a closed pipe, a full disk) is lost without further effect; the log file
/// has all lines.
class CBatchReport : public CRunReport {
public:
    /// @param pOutput  the stream for the lines
    explicit CBatchReport(std::FILE* pOutput);

    void addMessage(const QString& strText, Severity severity = Severity::Info) override;
    void addHtml(const QString& strHtml, Severity severity = Severity::Info) override;
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar = false) override;
    void setProgress(int nValue) override;
    void endProgress() override;

private:
    void clearProgressLine();

    std::FILE* m_pOutput;
    QString m_strFormat;
    int m_nMinimum = 0;
    int m_nMaximum = 0;
    bool m_bTerminal = false;
    bool m_bLineShown = false;
};

}  // namespace tessera
