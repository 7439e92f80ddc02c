#include "dataset/framefiles.h"

#include "imagefiles/frameformats.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>
#include <QSet>

#include <algorithm>

namespace tessera {

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

// Whether this is the name of an image that was made from a series whose files stand beside it: a scaled or a
// smoothed frame, or the volume of a project.
static bool isMadeImage(const QString& strName, const QSet<QString>& setBase, const QSet<QString>& setProject)
{
    const QFileInfo info(strName);
    if (info.suffix() != QLatin1String("mrc"))
        return false;
    const QString strBase = info.completeBaseName();
    const auto isOf = [&strBase](const QString& strEnd, const QSet<QString>& setName) {
        return strBase.endsWith(strEnd) && setName.contains(strBase.chopped(strEnd.size()));
    };
    return isOf(QStringLiteral("_s"), setBase) || isOf(QStringLiteral("_volume"), setBase + setProject) ||
           setProject.contains(strBase) ||
           (strBase.startsWith(QLatin1Char('N')) && setBase.contains(strBase.mid(1)));
}

QStringList framesInFolder(const QString& strFolder)
{
    const QDir dir(strFolder);
    const QStringList listName = dir.entryList(QDir::Files | QDir::Readable);
    QSet<QString> setBase, setProject;
    for (const QString& strName : listName) {
        const QFileInfo info(strName);
        if (info.suffix() == QLatin1String("ed3d"))
            setProject.insert(info.completeBaseName());
        else if (frameSuffixes().contains(info.suffix().toLower()))
            setBase.insert(info.completeBaseName());
    }
    QMap<int, QStringList> mapFile;  // by the place of the suffix
    for (const QString& strName : listName) {
        const int nSuffix = frameSuffixes().indexOf(QFileInfo(strName).suffix().toLower());
        if (nSuffix >= 0 && !isMadeImage(strName, setBase, setProject))
            mapFile[nSuffix].append(dir.absoluteFilePath(strName));
    }
    QStringList listFile;
    for (const QStringList& listSame : qAsConst(mapFile))
        if (listSame.size() > listFile.size())
            listFile = listSame;
    sortFrames(listFile);
    return listFile;
}

}  // namespace tessera
