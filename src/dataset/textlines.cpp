#include "dataset/textlines.h"

#include "records/regularfile.h"

#include <QTextCodec>

namespace tessera {

std::optional<QByteArray> readFileBytes(const QString& strFileName, qint64 nLimit, QString* pstrReason)
{
    QFile file(strFileName);
    QString strReason;
    if (!openRegularFile(file, QIODevice::ReadOnly, strReason)) {
        giveReason(pstrReason, strFileName, strReason);
        return {};
    }
    if (file.size() > nLimit) {
        giveReason(pstrReason, strFileName,
                   QStringLiteral("%1 bytes; up to %2 can be read").arg(file.size()).arg(nLimit));
        return {};
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
            giveReason(pstrReason, strFileName, QStringLiteral("up to %1 bytes can be read").arg(nLimit));
            return {};
        }
    }
    if (file.error() != QFileDevice::NoError) {
        giveReason(pstrReason, strFileName, file.errorString());
        return {};
    }
    return bytesRead;
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
    const std::optional<QByteArray> bytesFile = readFileBytes(strFileName, g_nMaxTextFile, pstrReason);
    if (!bytesFile) {
        return false;
    }
    listLine = splitTextLines(*bytesFile);
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
