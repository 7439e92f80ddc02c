// CDeferredReport: lines of another thread, kept until it is their turn.
#pragma once

#include "records/runreport.h"

#include <utility>
#include <vector>

namespace tessera {

/// Keeps what is said while a frame is worked on ahead of its turn.
class CDeferredReport : public CRunReport {
public:
    void addMessage(const QString& strText, Severity severity) override
    {
        m_vecLine.emplace_back(strText, severity);
    }
    /// Says all lines, in order, and hands the reason on.
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
