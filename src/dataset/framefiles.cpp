#include "dataset/framefiles.h"

#include "dataset/opening.h"
#include "imagefiles/frameformats.h"
#include "imagefiles/framename.h"
#include "imagefiles/hdf5names.h"
#include "imagefiles/smvfile.h"
#include "imagefiles/tvipsfile.h"
#include "records/regularfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMap>
#include <QSet>

#include <algorithm>

namespace tessera {

namespace {

// The digits from nPlace on without leading zeros. nPlace is moved past them.
QStringRef takeNumber(const QString& str, int& nPlace)
{
    while (nPlace < str.size() && str[nPlace] == QLatin1Char('0')) {
        ++nPlace;
    }
    const int nBegin = nPlace;
    while (nPlace < str.size() && str[nPlace].isDigit()) {
        ++nPlace;
    }
    return str.midRef(nBegin, nPlace - nBegin);
}

}  // namespace

bool naturalLess(const QString& strFirst, const QString& strSecond)
{
    int i = 0, j = 0;
    while (i < strFirst.size() && j < strSecond.size()) {
        if (strFirst[i].isDigit() && strSecond[j].isDigit()) {
            const QStringRef first = takeNumber(strFirst, i), second = takeNumber(strSecond, j);
            if (first != second) {
                return first.size() != second.size() ? first.size() < second.size() : first < second;
            }
            continue;
        }
        const QChar first = strFirst[i++].toCaseFolded(), second = strSecond[j++].toCaseFolded();
        if (first != second) {
            return first < second;
        }
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

namespace {

// Whether a file was made of a series in the same folder: a scaled or smoothed frame, or the volume of a
// project.
bool isMadeImage(const QString& strName, const QSet<QString>& setBase, const QSet<QString>& setProject)
{
    const QFileInfo info(strName);
    if (info.suffix() != QLatin1String("mrc")) {
        return false;
    }
    const QString strBase = info.completeBaseName();
    const auto isOf = [&strBase](const QString& strEnd, const QSet<QString>& setName) {
        return strBase.endsWith(strEnd) && setName.contains(strBase.chopped(strEnd.size()));
    };
    return isOf(QStringLiteral("_s"), setBase) || isOf(QStringLiteral("_volume"), setBase + setProject) ||
           setProject.contains(strBase) ||
           (strBase.startsWith(QLatin1Char('N')) && setBase.contains(strBase.mid(1)));
}

// Whether a file is an exported image of a stack in the same folder: "stack_0012.img".
bool isImageOfStack(const QString& strName, const QHash<QString, QString>& hashFile,
                    QHash<QString, int>& hashImages, const QDir& dir)
{
    const QString strBase = QFileInfo(strName).completeBaseName();
    const int nJoint = strBase.lastIndexOf(QLatin1Char('_'));
    bool bNumber = false;
    const int nImage = strBase.mid(nJoint + 1).toInt(&bNumber);
    const QString strStack = strBase.left(qMax(nJoint, 0));
    if (!bNumber || nImage < 1 || strBase.size() - nJoint < 5 || !hashFile.contains(strStack)) {
        return false;
    }
    if (!hashImages.contains(strStack)) {
        hashImages[strStack] = frameHeader(dir.absoluteFilePath(hashFile[strStack])).nImages;
    }
    return hashImages[strStack] > 1 && nImage <= hashImages[strStack];
}

// Whether a file is the SMV export of another file in the same folder. All exports of this program have the
// same detector and date.
bool isExportedSmv(const QString& strName, const QHash<QString, QString>& hashFile, const QDir& dir)
{
    if (QFileInfo(strName).suffix() != QLatin1String("img") ||
        hashFile.value(QFileInfo(strName).completeBaseName(), strName) == strName) {
        return false;
    }
    QFile file(dir.absoluteFilePath(strName));
    QString strReason;
    const QString strTemplate = smvHeaderTemplate();
    const int nFirst = strTemplate.indexOf(QLatin1String("BEAMLINE=")),
              nEnd = strTemplate.indexOf(QLatin1String("TIME="), nFirst);
    return openRegularFile(file, QIODevice::ReadOnly, strReason) &&
           file.read(512).contains(strTemplate.mid(nFirst, nEnd - nFirst).toLatin1());
}

// Among files whose suffixes are unknown, those of the most frequent format by their content.
QStringList framesByContent(const QDir& dir, const QStringList& listName)
{
    QMap<QString, QStringList> mapFile;
    QStringList listFile;
    for (const QString& strName : listName) {
        const QString strFile = dir.absoluteFilePath(strName);
        const FrameFormat& format = frameFormatOf(strFile);
        const bool bPicture = QStringList{"BMP", "JPEG", "GIF", "PNG"}.contains(format.strName);
        if (!format.listSuffix.isEmpty() &&
            !bPicture) {  // a picture without a suffix of pictures is no frame
            mapFile[format.strName].append(strFile);
        }
    }
    for (const QStringList& listSame : qAsConst(mapFile)) {
        if (listSame.size() > listFile.size()) {
            listFile = listSame;
        }
    }
    return listFile;
}

}  // namespace

QStringList framesOfFiles(const QStringList& listFile)
{
    if (listFile.size() == 1 && !frameName(listFile.first()).bPart) {
        return framesOfFile(listFile.first(), frameHeader(listFile.first()).nImages);
    }
    return framesOfImageFiles(listFile);
}

QStringList framesInFolder(const QString& strFolder)
{
    const QDir dir(strFolder);
    const QStringList listName = dir.entryList(QDir::Files | QDir::Readable);
    QSet<QString> setBase, setProject;
    QHash<QString, QString> hashFile;  // by names without suffix, except SMV files
    for (const QString& strName : listName) {
        const QFileInfo info(strName);
        if (info.suffix() == QLatin1String("ed3d")) {
            setProject.insert(info.completeBaseName());
        } else if (frameSuffixes().contains(info.suffix().toLower())) {
            setBase.insert(info.completeBaseName());
            if (info.suffix() != QLatin1String("img")) {
                hashFile[info.completeBaseName()] = strName;
            }
        }
    }
    QMap<int, QStringList> mapFile;  // by the place of the suffix in the table
    QHash<QString, int> hashImages;
    QStringList listOther;
    for (const QString& strName : listName) {
        const int nSuffix = frameSuffixes().indexOf(QFileInfo(strName).suffix().toLower());
        if (nSuffix < 0) {
            listOther.append(strName);
        } else if (!isMadeImage(strName, setBase, setProject) && !isDataOfMaster(strName, listName) &&
                   !isContinuation(dir.absoluteFilePath(strName)) &&
                   !isImageOfStack(strName, hashFile, hashImages, dir) &&
                   !isExportedSmv(strName, hashFile, dir)) {
            mapFile[nSuffix].append(dir.absoluteFilePath(strName));
        }
    }
    QStringList listFile = mapFile.isEmpty() ? framesByContent(dir, listOther) : QStringList();
    for (const QStringList& listSame : qAsConst(mapFile)) {
        if (listSame.size() > listFile.size()) {
            listFile = listSame;
        }
    }
    sortFrames(listFile);
    return framesOfFiles(listFile);
}

QList<SizedFrames> framesBySize(const QStringList& listFrame)
{
    QList<SizedFrames> listSized;
    QHash<QString, int> hashPlace;  // place of the size of each file; -1: unknown
    QList<int> listPlace;           // for each frame the place of its size
    for (const QString& strFrame : listFrame) {
        const QString strFile = frameName(strFrame).strFile;
        if (!hashPlace.contains(strFile)) {
            const QSize size = frameHeader(strFile).size;
            const auto it = std::find_if(listSized.begin(), listSized.end(),
                                         [&](const SizedFrames& sized) { return sized.size == size; });
            hashPlace[strFile] = size.isValid() ? int(it - listSized.begin()) : -1;
            if (size.isValid() && it == listSized.end()) {
                listSized.append({size, {}});
            }
        }
        listPlace.append(hashPlace[strFile]);
    }
    if (listSized.isEmpty()) {
        return {{QSize(), listFrame}};
    }
    int nCommonest = 0;
    for (int n = 1; n < listSized.size(); ++n) {
        nCommonest = listPlace.count(n) > listPlace.count(nCommonest) ? n : nCommonest;
    }
    for (int i = 0; i < listFrame.size(); ++i) {
        listSized[listPlace[i] < 0 ? nCommonest : listPlace[i]].listFrame.append(listFrame[i]);
    }
    return listSized;
}

QStringList dropStrayFrames(QList<SizedFrames>& listSized)
{
    const int nLeast = 3;
    QList<SizedFrames> listSeries;
    QStringList listLine;
    for (const SizedFrames& sized : qAsConst(listSized)) {
        if (sized.listFrame.size() >= nLeast) {
            listSeries.append(sized);
            continue;
        }
        listLine.append(
            QStringLiteral("%1 frames of %2 × %3 pixels are too few for a series and are left out, "
                           "the first of them %4.")
                .arg(sized.listFrame.size())
                .arg(sized.size.width())
                .arg(sized.size.height())
                .arg(QFileInfo(sized.listFrame.first()).fileName()));
    }
    if (listSeries.isEmpty()) {
        return {};
    }
    listSized = listSeries;
    return listLine;
}

QStringList filesOfFrames(const QStringList& listFrame)
{
    QStringList listFile;
    QSet<QString> setFile;
    for (const QString& strFrame : listFrame) {
        const QString strFile = frameName(strFrame).strFile;
        if (!setFile.contains(strFile)) {
            setFile.insert(strFile);
            listFile.append(strFile);
        }
    }
    return listFile;
}

}  // namespace tessera
