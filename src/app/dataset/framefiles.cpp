#include "app/dataset/framefiles.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>

#include <algorithm>

const QStringList& frameSuffixes()
{
    static const QStringList listSuffix = {"dm3", "mrc", "bmp", "jpg", "jpeg", "gif", "tif", "tiff", "png"};
    return listSuffix;
}

QString frameNameFilters()
{
    return QStringLiteral("*.") + frameSuffixes().join(QLatin1String(" *."));
}

// The digits from nPlace on without leading zeros; nPlace moves behind them.
static QStringRef takeNumber(const QString& str, int& nPlace)
{
    while (nPlace < str.size() && str[nPlace] == QLatin1Char('0'))
        ++nPlace;
    const int nBegin = nPlace;
    while (nPlace < str.size() && str[nPlace].isDigit())
        ++nPlace;
    return str.midRef(nBegin, nPlace - nBegin);
}

bool naturalLess(const QString& strFirst, const QString& strSecond)
{
    int i = 0, j = 0;
    while (i < strFirst.size() && j < strSecond.size()) {
        if (strFirst[i].isDigit() && strSecond[j].isDigit()) {
            const QStringRef first = takeNumber(strFirst, i), second = takeNumber(strSecond, j);
            if (first != second)
                return first.size() != second.size() ? first.size() < second.size() : first < second;
            continue;
        }
        const QChar first = strFirst[i++].toCaseFolded(), second = strSecond[j++].toCaseFolded();
        if (first != second)
            return first < second;
    }
    const int nLeft = strFirst.size() - i, nOtherLeft = strSecond.size() - j;
    return nLeft != nOtherLeft ? nLeft < nOtherLeft : strFirst < strSecond;
}

void sortFrames(QStringList& listFile)
{
    std::stable_sort(listFile.begin(), listFile.end(), [](const QString& strFirst, const QString& strSecond) {
        const QString strName = QFileInfo(strFirst).fileName(), strOther = QFileInfo(strSecond).fileName();
        return strName != strOther ? naturalLess(strName, strOther) : naturalLess(strFirst, strSecond);
    });
}

QStringList framesInFolder(const QString& strFolder)
{
    const QDir dir(strFolder);
    QMap<int, QStringList> mapFile;  // by the place of the suffix
    for (const QString& strName : dir.entryList(QDir::Files | QDir::Readable)) {
        const int nSuffix = frameSuffixes().indexOf(QFileInfo(strName).suffix().toLower());
        if (nSuffix >= 0)
            mapFile[nSuffix].append(dir.absoluteFilePath(strName));
    }
    QStringList listFile;
    for (const QStringList& listSame : qAsConst(mapFile))
        if (listSame.size() > listFile.size())
            listFile = listSame;
    sortFrames(listFile);
    return listFile;
}
