// CRecordingReport: keeps what a run says, for the tests.
#pragma once

#include "app/records/runreport.h"

#include <QStringList>

class CRecordingReport : public CRunReport {
public:
    void addMessage(const QString& strText, Qt::GlobalColor color = Qt::black) override
    {
        m_listMessage.append((color == Qt::red ? QStringLiteral("red ") : QString()) + strText);
    }
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool) override
    {
        m_listProgress.append(QStringLiteral("%1 %2..%3").arg(strFormat).arg(nMinimum).arg(nMaximum));
    }
    void setProgress(int nValue) override { m_listProgress.append(QString::number(nValue)); }
    void endProgress() override { m_listProgress.append(QStringLiteral("end")); }
    bool goOn() override
    {
        ++m_nGoOn;
        return true;
    }

    QStringList m_listMessage;  ///< red ones with "red " before
    QStringList m_listProgress;
    int m_nGoOn = 0;
};
