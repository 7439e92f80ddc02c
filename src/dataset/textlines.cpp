#include "dataset/textlines.h"

#include "records/regularfile.h"

#include <QTextCodec>

namespace tessera {

bool readFileBytes(const QString& strFileName, QByteArray& bytesFile, qint64 nLimit, QString* pstrReason)
{
    QFile file(strFileName);
    QString strReason;
    if (!openRegularFile(file, QIODevice::ReadOnly, strReason)) {
        return giveReason(pstrReason, strFileName, strReason);
    }
    if (file.size() > nLimit) {
        return giveReason(pstrReason, strFileName,
                          QStringLiteral("%1 bytes; up to %2 can be read").arg(file.size()).arg(nLimit));
    }
    // Files of the system, as in /proc, have no size. Reading one byte more than the limit shows that one
    // is too long.
    QByteArray bytesRead;
    if (file.size() > 0) {
        bytesRead = file.read(file.size());
    } else {
        while (bytesRead.size() <= nLimit) {
            const QByteArray bytesChunk = file.read(qMin<qint64>(1 << 20, nLimit + 1 - bytesRead.size()));
            if (bytesChunk.isEmpty()) {
                break;
            }
            bytesRead.append(bytesChunk);
        }
        if (bytesRead.size() > nLimit) {
            return giveReason(pstrReason, strFileName,
                              QStringLiteral("up to %1 bytes can be read").arg(nLimit));
        }
    }
    if (file.error() != QFileDevice::NoError) {
        return giveReason(pstrReason, strFileName, file.errorString());
    }
    bytesFile = bytesRead;
    return true;
}

QByteArray withoutByteOrderMark(const QByteArray& bytesText)
{
    if (bytesText.startsWith("\xEF\xBB\xBF")) {
        return bytesText.mid(3);
    }
    QTextCodec* pCodec = QTextCodec::codecForUtfText(bytesText, nullptr);
    return pCodec ? pCodec->toUnicode(bytesText).toLatin1() : bytesText;
}

QList<QByteArray> splitTextLines(const QByteArray& bytesText)
{
    QList<QByteArray> listLine;
    forEachTextLine(bytesText, [&](const char* pBegin, const char* pEnd) {
        listLine.append(QByteArray(pBegin, int(pEnd - pBegin)));
    });
    return listLine;
}

bool readTextLines(const QString& strFileName, QList<QByteArray>& listLine, QString* pstrReason)
{
    QByteArray bytesFile;
    if (!readFileBytes(strFileName, bytesFile, g_nMaxTextFile, pstrReason)) {
        return false;
    }
    listLine = splitTextLines(bytesFile);
    return true;
}

void dropComments(QList<QByteArray>& listLine)
{
    QList<QByteArray> listKept;
    listKept.reserve(listLine.size());
    for (const QByteArray& strLine : qAsConst(listLine)) {
        if (!strLine.startsWith('#')) {
            listKept.append(strLine);
        }
    }
    listLine = listKept;
}

}  // namespace tessera
