// CDeferredReport: keeps the lines of another thread for the log.
#pragma once

#include "records/runreport.h"

#include <utility>
#include <vector>

namespace tessera {

/// Keeps the lines that are reported while a frame is processed ahead of its turn.
class CDeferredReport : public CRunReport {
public:
    void addMessage(const QString& strText, Severity severity) override
    {
        m_vecLine.emplace_back(strText, severity);
    }
    /// Passes all lines on in their order, and the reason.
    void sayTo(CRunReport& report) const
    {
        report.noteReason(reason());
        for (const auto& line : m_vecLine) {
            report.addMessage(line.first, line.second);
        }
    }

private:
    std::vector<std::pair<QString, Severity>> m_vecLine;
};

}  // namespace tessera
