#include "frames/frametargets.h"

#include "imagefiles/framename.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <sys/stat.h>

namespace tessera {

namespace {

const int g_nMostLinks = 40;  // in a chain; Linux does not follow more either

/// A key that is the same for all paths of one file. A file that exists is identified by its device and
/// inode, so that links make no difference, nor the case of letters on file systems that ignore it.
QString pathKey(const QString& strFile)
{
    struct stat status = {};
    if (stat(QFile::encodeName(strFile).constData(), &status) == 0) {
        return QStringLiteral("%1:%2").arg(quint64(status.st_dev)).arg(quint64(status.st_ino));
    }
    // Writing through a dangling link would create its target, so the target is checked.
    QFileInfo info(strFile);
    for (int n = 0; n < g_nMostLinks && info.isSymLink(); ++n) {
        info.setFile(info.symLinkTarget());
    }
    const QString strFolder = QFileInfo(info.absolutePath()).canonicalFilePath();
    return QDir::cleanPath((strFolder.isEmpty() ? info.absolutePath() : strFolder) + QLatin1Char('/') +
                           info.fileName());
}

// The targets that are frame files, each file once.
QStringList framesAmongTargets(const QStringList& listTarget, const QStringList& listFrameFile)
{
    QSet<QString> setFrame;
    for (const QString& strFrame : listFrameFile) {
        setFrame.insert(pathKey(strFrame));
        if (const FrameName name = frameName(strFrame); name.bPart) {
            setFrame.insert(pathKey(name.strFile));  // the file that contains the frame among others
        }
    }
    QSet<QString> setHit;
    QStringList listHit;
    for (const QString& strTarget : listTarget) {
        const QString strKey = pathKey(strTarget);
        if (setFrame.contains(strKey) && !setHit.contains(strKey)) {
            setHit.insert(strKey);
            listHit.append(strTarget);
        }
    }
    return listHit;
}

}  // namespace

QString frameAmongTargets(const QStringList& listTarget, const QStringList& listFrameFile)
{
    return framesAmongTargets(listTarget, listFrameFile).value(0);
}

bool overwritesFrames(const QStringList& listTarget, const QStringList& listFrameFile, CRunReport& report)
{
    const QStringList listFrame = framesAmongTargets(listTarget, listFrameFile);
    const int nCount = listFrame.size();
    if (nCount == 0) {
        return false;
    }
    report.fail(QStringLiteral("%1 %2of this series and would be overwritten. Nothing was exported.")
                    .arg(listFrame.first(),
                         nCount == 1 ? QStringLiteral("is a frame ")
                                     : QStringLiteral("and %1 more files are frames ").arg(nCount - 1)));
    return true;
}

}  // namespace tessera
