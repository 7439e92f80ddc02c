#include "dataset/hotpixelfile.h"

#include "dataset/textlines.h"
#include "dataset/textscanner.h"

#include <cmath>

namespace tessera {

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
        if (nSerial != listRead.size() + 1)
            return giveReason(
                pstrReason,
                QStringLiteral("serial %1 where %2 should be").arg(nSerial).arg(listRead.size() + 1));
        listRead.append(QPoint(int(dfX), int(dfY)));
    }
    listHotPixel = listRead;
    return true;
}

bool readHotPixelFile(const QString& strFileName, QList<QPoint>& listHotPixel, QString* pstrReason)
{
    return readLinesOfFile(strFileName, pstrReason, [&](const QList<QByteArray>& listLine, QString* p) {
        return readHotPixelLines(listLine, listHotPixel, p);
    });
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

}  // namespace tessera
