// CRunLog: a report that keeps what a run says, and can ask it to stop.
#pragma once

#include "app/records/runreport.h"

#include <QStringList>

class CRunLog : public CRunReport {
public:
    void addMessage(const QString& strText, Qt::GlobalColor color) override
    {
        m_listLine.append(strText);
        m_listColor.append(color);
    }
    void addHtml(const QString& strHtml, Qt::GlobalColor color) override { addMessage(strHtml, color); }
    bool goOn() override { return m_nStopAfter < 0 || m_nAsked++ < m_nStopAfter; }

    /// The place of the first line that contains a text, −1 if none does.
    int find(const QString& strPart) const
    {
        for (int n = 0; n < m_listLine.size(); ++n)
            if (m_listLine[n].contains(strPart))
                return n;
        return -1;
    }
    QStringList m_listLine;
    QList<Qt::GlobalColor> m_listColor;
    int m_nStopAfter = -1;  ///< questions that are still answered with yes; −1 all
    int m_nAsked = 0;
};
