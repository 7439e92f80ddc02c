// CRecordingReport: keeps what a run says, and can ask it to stop.
#pragma once

#include "records/runreport.h"
#include "tests/printtexts.h"

#include <QList>
#include <QRegularExpression>
#include <QStringList>

namespace tessera {

class CRecordingReport : public CRunReport {
public:
    void addMessage(const QString& strText, Severity severity = Severity::Info) override
    {
        m_listLine.append(strText);
        m_listSeverity.append(severity);
    }
    void addHtml(const QString& strHtml, Severity severity = Severity::Info) override
    {
        addMessage(strHtml, severity);
    }
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool = false) override
    {
        m_listProgress.append(QStringLiteral("%1 %2..%3").arg(strFormat).arg(nMinimum).arg(nMaximum));
    }
    void setProgress(int nValue) override { m_listProgress.append(QString::number(nValue)); }
    void endProgress() override { m_listProgress.append(QStringLiteral("end")); }
    bool goOn() override
    {
        ++m_nAsked;
        if (m_nStopAfter > 0) {
            --m_nStopAfter;
            return true;
        }
        return m_nStopAfter < 0;
    }

    /// The lines, those in red or blue with "red " or "blue " before.
    QStringList marked() const
    {
        QStringList list;
        for (int n = 0; n < m_listLine.size(); ++n) {
            list.append((m_listSeverity[n] >= Severity::Warning     ? "red "
                         : m_listSeverity[n] == Severity::Milestone ? "blue "
                                                                    : "") +
                        m_listLine[n]);
        }
        return list;
    }
    /// The marked lines without time stamps and durations, which differ from run to run.
    QString log() const
    {
        return marked()
            .join('\n')
            .replace(QRegularExpression("\\d\\d:\\d\\d:\\d\\d>"), ">")
            .replace(QRegularExpression("in \\S+ min \\S+ sec"), "in time");
    }
    bool said(const QString& strPart) const { return log().contains(strPart); }
    /// The place of the first line that contains a text, −1 if none does.
    int find(const QString& strPart) const
    {
        for (int n = 0; n < m_listLine.size(); ++n) {
            if (m_listLine[n].contains(strPart)) {
                return n;
            }
        }
        return -1;
    }

    QStringList m_listLine;
    QList<Severity> m_listSeverity;
    QStringList m_listProgress;  ///< "FORMAT MIN..MAX", the values, "end"
    int m_nAsked = 0;
    int m_nStopAfter = -1;  ///< questions that are still answered with yes; −1 all
};

}  // namespace tessera
