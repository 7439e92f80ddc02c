#include "dataset/hotpixelfile.h"

#include "dataset/textlines.h"
#include "dataset/textscanner.h"
#include "records/wholefile.h"

#include <QFileInfo>

#include <cmath>

namespace tessera {

namespace {

// False for NaN, too.
bool fitsInt(double df)
{
    return std::abs(df) < 2147483648.0;
}

}  // namespace

std::optional<QList<QPoint>> readHotPixelLines(QList<QByteArray> listLine, QString* pstrReason)
{
    dropComments(listLine);
    QList<QPoint> listHotPixel;
    for (const QByteArray& strLine : qAsConst(listLine)) {
        CTextScanner scanner(strLine);
        int nSerial;
        double dfX, dfY;
        if (!scanner.readInt(nSerial) || !scanner.readDouble(dfX) || !scanner.readDouble(dfY) ||
            !fitsInt(dfX) || !fitsInt(dfY)) {
            continue;
        }
        if (nSerial != listHotPixel.size() + 1) {
            giveReason(
                pstrReason,
                QStringLiteral("serial %1 where %2 should be").arg(nSerial).arg(listHotPixel.size() + 1));
            return {};
        }
        listHotPixel.append(QPoint(int(dfX), int(dfY)));
    }
    return listHotPixel;
}

std::optional<QList<QPoint>> readHotPixelFile(const QString& strFileName, QString* pstrReason)
{
    return readLinesOfFile(strFileName, pstrReason, readHotPixelLines);
}

QString fileOfHotPixels(const DataSet& data)
{
    const int nBin = data.m_reading.choice.nBin;
    return data.m_strProjectDir +
           (nBin > 1 ? QStringLiteral("/hotpixels_bin%1.txt").arg(nBin) : QStringLiteral("/hotpixels.txt"));
}

QString fileOfCameraHotPixels(const DataSet& data)
{
    return data.m_strProjectDir + QStringLiteral("/hotpixels.txt");
}

namespace {

QList<QPoint> without(const QList<QPoint>& list, const QList<QPoint>& listKnown)
{
    QList<QPoint> listNew;
    for (const QPoint& pt : list) {
        if (!listKnown.contains(pt) && !listNew.contains(pt)) {
            listNew.append(pt);
        }
    }
    return listNew;
}

}  // namespace

bool addToHotPixelFile(const QString& strFileName, const QList<QPoint>& listHotPixel, QString* pstrReason)
{
    QByteArray bytes;
    QList<QPoint> listThere;
    if (QFileInfo::exists(strFileName)) {
        const std::optional<QList<QPoint>> listRead = readHotPixelFile(strFileName, pstrReason);
        const std::optional<QByteArray> bytesRead = listRead ? readFileBytes(strFileName, g_nMaxTextFile,
                                                                             pstrReason)
                                                             : std::nullopt;
        if (!bytesRead) {
            return false;
        }
        listThere = *listRead;
        bytes = *bytesRead;
    }
    const QList<QPoint> listNew = without(listHotPixel, listThere);
    if (listNew.isEmpty()) {
        return true;
    }
    if (!bytes.isEmpty() && !bytes.endsWith('\n')) {
        bytes += '\n';
    }
    int nSerial = listThere.size();
    for (const QPoint& pt : listNew) {
        bytes += QStringLiteral("%1 %2 %3\n").arg(++nSerial).arg(pt.x()).arg(pt.y()).toLatin1();
    }
    return writeWholeFile(strFileName, bytes, pstrReason);
}

void addHotPixels(DataSet& data, const QList<QPoint>& listHotPixel, CRunReport& report)
{
    const QList<QPoint> listNew = without(listHotPixel, data.m_listHotPixel);
    data.m_listHotPixel += listNew;
    QString strReason;
    if (addToHotPixelFile(fileOfHotPixels(data), data.m_listHotPixel, &strReason)) {
        report.addMessage(QStringLiteral("%L1 hot pixels are repaired from now on, and are listed in %2.")
                              .arg(listNew.size())
                              .arg(fileOfHotPixels(data)),
                          Severity::Info);
    } else {
        report.addMessage(QStringLiteral("%L1 hot pixels are repaired until the data set is closed; they "
                                         "could not be written: %2")
                              .arg(listNew.size())
                              .arg(strReason),
                          Severity::Error);
    }
}

namespace {

/// Replaces a list by that of a file. @return false, with the list as it was, when that cannot be read
bool loadList(const QString& strFileName, QList<QPoint>& listHotPixel, QString* pstrReason)
{
    std::optional<QList<QPoint>> listRead = readHotPixelFile(strFileName, pstrReason);
    if (listRead) {
        listHotPixel = std::move(*listRead);
    }
    return listRead.has_value();
}

}  // namespace

bool loadHotPixels(DataSet& data, CRunReport& report, QString* pstrReason)
{
    if (data.m_reading.choice.nBin > 1) {
        // The hot pixels of binned frames are found by runs. Usually there is no such file.
        loadList(fileOfHotPixels(data), data.m_listHotPixel, nullptr);
        const bool bCamera = loadList(fileOfCameraHotPixels(data), data.m_reading.listHotPixel, pstrReason);
        report.addMessage(bCamera
                              ? QStringLiteral("%L1 hot pixel positions loaded; they are repaired before the "
                                               "frames are binned.")
                                    .arg(data.m_reading.listHotPixel.size())
                              : QStringLiteral("No hot pixel positions were loaded."));
        report.goOn();
        return bCamera;
    }
    const bool bRead = loadList(fileOfHotPixels(data), data.m_listHotPixel, pstrReason);
    if (bRead) {
        report.addMessage(QStringLiteral("%L1 hot pixel positions loaded.").arg(data.m_listHotPixel.size()));
    } else {
        report.addMessage(QStringLiteral("No hot pixel positions were loaded."));
    }
    report.goOn();
    return bRead;
}

}  // namespace tessera
