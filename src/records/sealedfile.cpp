#include "records/sealedfile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace tessera {

namespace {

const int g_nDigits = 32;                       // of MD5
const qint64 g_nLargestFile = qint64(1) << 28;  // bytes; lists of reflections have some millions
const int g_nMostNames = 100;

QByteArray mark()
{
    return QByteArrayLiteral("seal-");
}

/// Where the digits of the check sum begin: after the first mark that digits follow; -1 where there is none.
int placeOfDigits(const QByteArray& bytes)
{
    const auto isHex = [](char ch) { return (ch >= '0' && ch <= '9') || (ch >= 'a' && ch <= 'f'); };
    for (int n = bytes.indexOf(mark()); n >= 0; n = bytes.indexOf(mark(), n + 1)) {
        const int nDigits = n + mark().size();
        const char* pDigits = bytes.constData() + nDigits;
        if (nDigits + g_nDigits <= bytes.size() && std::all_of(pDigits, pDigits + g_nDigits, isHex)) {
            return nDigits;
        }
    }
    return -1;
}

}  // namespace

QByteArray sealPlace()
{
    return mark() + QByteArray(g_nDigits, '0');
}

QByteArray sealed(const QByteArray& bytes)
{
    const int nPlace = placeOfDigits(bytes);
    if (nPlace < 0) {
        return bytes;
    }
    QByteArray bytesBare = bytes;
    bytesBare.replace(nPlace, g_nDigits, QByteArray(g_nDigits, '0'));
    const QByteArray bytesSum = QCryptographicHash::hash(bytesBare, QCryptographicHash::Md5).toHex();
    return bytesBare.replace(nPlace, g_nDigits, bytesSum);
}

bool isSealed(const QByteArray& bytes)
{
    return placeOfDigits(bytes) >= 0 && sealed(bytes) == bytes;
}

bool isFreeForSealed(const QString& strFile)
{
    const QFileInfo info(strFile);
    if (!info.exists() && !info.isSymLink()) {
        return true;
    }
    if (!info.isFile() || info.size() > g_nLargestFile) {
        return false;
    }
    QFile file(strFile);
    return file.open(QIODevice::ReadOnly) && isSealed(file.readAll());
}

QString nameForSealed(const QString& strBase, const QString& strSuffix, const QStringList& listTaken)
{
    const auto isTaken = [&](const QString& strFile) {
        return std::any_of(listTaken.begin(), listTaken.end(), [&](const QString& strTaken) {
            return !strTaken.isEmpty() && QFileInfo(strTaken) == QFileInfo(strFile);
        });
    };
    for (int n = 0; n < g_nMostNames; ++n) {
        const QString strMiddle = n == 0   ? QString()
                                  : n == 1 ? QStringLiteral("_integrated")
                                           : QStringLiteral("_integrated%1").arg(n);
        const QString strFile = strBase + strMiddle + strSuffix;
        if (!isTaken(strFile) && isFreeForSealed(strFile)) {
            return strFile;
        }
    }
    return {};
}

}  // namespace tessera
