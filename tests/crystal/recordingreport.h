// A run report that keeps what is said, and a clear way to ask for it.
#pragma once

#include "app/records/peak3d.h"
#include "app/records/runreport.h"

#include <QStringList>

#include <ostream>

struct RecordingReport : CRunReport {
    void addMessage(const QString& strText, Qt::GlobalColor color = Qt::black) override
    {
        listLine.append(strText);
        listColor.append(color);
    }
    void addHtml(const QString& strHtml, Qt::GlobalColor color = Qt::black) override
    {
        addMessage(strHtml, color);
    }
    void setProgress(int nValue) override { nProgress = nValue; }

    QStringList listLine;
    QList<Qt::GlobalColor> listColor;
    int nProgress = -1;
};

inline Peak3D reflection(double h, double k, double l, double dfIPoint = 0, double dfDStar = 0)
{
    Peak3D peak;
    peak.setHKL(h, k, l);
    peak.dfIPoint = dfIPoint;
    peak.dfDStar = dfDStar;
    return peak;
}

// So that a failed comparison shows the texts.
inline void PrintTo(const QString& str, std::ostream* pStream)
{
    *pStream << '"' << str.toStdString() << '"';
}
inline void PrintTo(const QByteArray& ba, std::ostream* pStream)
{
    *pStream << '"' << ba.toStdString() << '"';
}
