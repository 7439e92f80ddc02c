#include "app/dataset/textlines.h"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

static bool fail(QString* pstrReason, const QString& strReason)
{
    if (pstrReason)
        *pstrReason = strReason;
    return false;
}

bool readFileBytes(const QString& strFileName, QByteArray& bytesFile, qint64 nLimit, QString* pstrReason)
{
    const QFileInfo info(strFileName);
    if (info.exists() && !info.isFile())
        // a pipe may never answer
        return fail(pstrReason, QStringLiteral("%1: not a file").arg(strFileName));
    QFile file(strFileName);
    if (!file.open(QIODevice::ReadOnly))
        return fail(pstrReason, QStringLiteral("%1: %2").arg(strFileName, file.errorString()));
    if (file.size() > nLimit)
        return fail(pstrReason, QStringLiteral("%1: %2 bytes; up to %3 can be read")
                                    .arg(strFileName)
                                    .arg(file.size())
                                    .arg(nLimit));
    // A device or pipe has no size beforehand: one byte beyond the limit tells that it is too long.
    QByteArray bytesRead;
    if (file.size() > 0) {
        bytesRead = file.read(file.size());
    } else {
        while (bytesRead.size() <= nLimit) {
            const QByteArray bytesChunk = file.read(qMin<qint64>(1 << 20, nLimit + 1 - bytesRead.size()));
            if (bytesChunk.isEmpty())
                break;
            bytesRead.append(bytesChunk);
        }
        if (bytesRead.size() > nLimit)
            return fail(pstrReason,
                        QStringLiteral("%1: up to %2 bytes can be read").arg(strFileName).arg(nLimit));
    }
    if (file.error() != QFileDevice::NoError)
        return fail(pstrReason, QStringLiteral("%1: %2").arg(strFileName, file.errorString()));
    bytesFile = bytesRead;
    return true;
}

QByteArray withoutByteOrderMark(const QByteArray& bytesText)
{
    if (bytesText.startsWith("\xEF\xBB\xBF"))
        return bytesText.mid(3);
    QTextCodec* pCodec = QTextCodec::codecForUtfText(bytesText, nullptr);
    return pCodec ? pCodec->toUnicode(bytesText).toLatin1() : bytesText;
}

QList<QByteArray> splitTextLines(const QByteArray& bytesText)
{
    QList<QByteArray> listLine;
    const QByteArray bytesPlain = withoutByteOrderMark(bytesText);
    const char* const pEnd = bytesPlain.constData() + bytesPlain.size();
    const char* pLine = bytesPlain.constData();
    for (const char* p = pLine;; ++p) {
        if (p != pEnd && *p != '\n' && *p != '\r')
            continue;
        if (p != pLine)
            listLine.append(QByteArray(pLine, int(p - pLine)));
        if (p == pEnd)
            return listLine;
        pLine = p + 1;
    }
}

bool readTextLines(const QString& strFileName, QList<QByteArray>& listLine, QString* pstrReason)
{
    QByteArray bytesFile;
    if (!readFileBytes(strFileName, bytesFile, g_nMaxTextFile, pstrReason))
        return false;
    listLine = splitTextLines(bytesFile);
    return true;
}

void dropComments(QList<QByteArray>& listLine)
{
    QList<QByteArray> listKept;
    listKept.reserve(listLine.size());
    for (const QByteArray& strLine : qAsConst(listLine))
        if (!strLine.startsWith('#'))
            listKept.append(strLine);
    listLine = listKept;
}
