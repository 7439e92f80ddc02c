#include "app/dataset/hotpixelfile.h"

#include "app/dataset/textlines.h"
#include "app/dataset/textscanner.h"

#include <cmath>

// Also false for NaN.
static bool fitsInt(double df)
{
    return std::abs(df) < 2147483648.0;
}

bool readHotPixelLines(QList<QByteArray> listLine, QList<QPoint>& listHotPixel, QString* pstrReason)
{
    dropComments(listLine);
    QList<QPoint> listRead;
    for (const QByteArray& strLine : qAsConst(listLine)) {
        CTextScanner scanner(strLine);
        int nSerial;
        double dfX, dfY;
        if (!scanner.readInt(nSerial) || !scanner.readDouble(dfX) || !scanner.readDouble(dfY) ||
            !fitsInt(dfX) || !fitsInt(dfY))
            continue;
        if (nSerial != listRead.size() + 1) {
            if (pstrReason)
                *pstrReason =
                    QStringLiteral("serial %1 where %2 should be").arg(nSerial).arg(listRead.size() + 1);
            return false;
        }
        listRead.append(QPoint(int(dfX), int(dfY)));
    }
    listHotPixel = listRead;
    return true;
}

bool readHotPixelFile(const QString& strFileName, QList<QPoint>& listHotPixel, QString* pstrReason)
{
    QList<QByteArray> listLine;
    if (!readTextLines(strFileName, listLine, pstrReason))
        return false;
    QString strReason;
    if (readHotPixelLines(listLine, listHotPixel, &strReason))
        return true;
    if (pstrReason)
        *pstrReason = QStringLiteral("%1: %2").arg(strFileName, strReason);
    return false;
}

bool loadHotPixels(DataSet& data, CRunReport& report, QString* pstrReason)
{
    const bool bRead = readHotPixelFile(data.m_strProjectDir + QStringLiteral("/hotpixels.txt"),
                                        data.m_listHotPixel, pstrReason);
    if (bRead)
        report.addMessage(QStringLiteral("%L1 hot pixel positions loaded.").arg(data.m_listHotPixel.size()));
    else
        report.addMessage(QStringLiteral("No hot pixel positions were loaded."));
    report.goOn();
    return bRead;
}
