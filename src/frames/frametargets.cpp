#include "frames/frametargets.h"

#include "imagefiles/framename.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <sys/stat.h>

namespace tessera {

namespace {

const int g_nMostLinks = 40;  // one after the other, as many as the system follows

/// One name for all ways to write a file's path. A file that exists is known by its place on the disk, so
/// that links and the case of letters, where the file system does not mind it, make no difference.
QString pathKey(const QString& strFile)
{
    struct stat status = {};
    if (stat(QFile::encodeName(strFile).constData(), &status) == 0) {
        return QStringLiteral("%1:%2").arg(quint64(status.st_dev)).arg(quint64(status.st_ino));
    }
    // A link to what is not there yet is the file that writing through it would make.
    QFileInfo info(strFile);
    for (int n = 0; n < g_nMostLinks && info.isSymLink(); ++n) {
        info.setFile(info.symLinkTarget());
    }
    const QString strFolder = QFileInfo(info.absolutePath()).canonicalFilePath();
    return QDir::cleanPath((strFolder.isEmpty() ? info.absolutePath() : strFolder) + QLatin1Char('/') +
                           info.fileName());
}

}  // namespace

QString frameAmongTargets(const QStringList& listTarget, const QStringList& listFrameFile, int* pnCount)
{
    QSet<QString> setFrame;
    for (const QString& strFrame : listFrameFile) {
        setFrame.insert(pathKey(strFrame));
        if (const FrameName name = frameName(strFrame); name.bPart) {
            setFrame.insert(pathKey(name.strFile));  // which holds the frame among others
        }
    }
    QSet<QString> setHit;
    QString strFirst;
    for (const QString& strTarget : listTarget) {
        const QString strKey = pathKey(strTarget);
        if (!setFrame.contains(strKey)) {
            continue;
        }
        if (setHit.isEmpty()) {
            strFirst = strTarget;
        }
        setHit.insert(strKey);
    }
    if (pnCount) {
        *pnCount = setHit.size();
    }
    return strFirst;
}

bool overwritesFrames(const QStringList& listTarget, const QStringList& listFrameFile, CRunReport& report)
{
    int nCount = 0;
    const QString strFrame = frameAmongTargets(listTarget, listFrameFile, &nCount);
    if (strFrame.isEmpty()) {
        return false;
    }
    report.fail(QStringLiteral("%1 %2of this series and would be overwritten. Nothing was exported.")
                    .arg(strFrame, nCount == 1
                                       ? QStringLiteral("is a frame ")
                                       : QStringLiteral("and %1 more files are frames ").arg(nCount - 1)));
    return true;
}

}  // namespace tessera
