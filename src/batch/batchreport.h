// CBatchReport: the message log of a driver run as it shows on the terminal.
#pragma once

#include "records/runreport.h"

#include <QString>

#include <cstdio>

namespace tessera {

/// Lines are printed as they come; where the standard error is a terminal, progress shows there in one line.
/// A reader that goes away, or a full disk behind the output, costs these lines alone: the log has them.
class CBatchReport : public CRunReport {
public:
    /// @param pOutput  where the lines go
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
