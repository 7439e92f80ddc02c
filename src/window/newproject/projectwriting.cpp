#include "window/newproject/projectwriting.h"

#include "dataset/serieschoicefile.h"
#include "records/wholefile.h"

#include <QDir>
#include <QFileInfo>
#include <QObject>

namespace tessera {

QString problemOfPlace(const QString& strProjectFile)
{
    const QFileInfo info(strProjectFile);
    if (!info.absoluteDir().exists()) {
        return QObject::tr("There is no folder %1.").arg(QDir::toNativeSeparators(info.absolutePath()));
    }
    if (info.isDir()) {
        return QObject::tr("%1 is a folder.").arg(QDir::toNativeSeparators(strProjectFile));
    }
    return {};
}

bool writeProject(const QString& strProjectFile, const QByteArray& bytesText, const SeriesChoice& choice,
                  QString* pstrReason)
{
    const QFileInfo info(strProjectFile);
    const QString strBase = info.absolutePath() + QLatin1Char('/') + info.completeBaseName();
    return keepSeriesChoice(strBase, choice, pstrReason) &&
           writeWholeFile(strProjectFile, bytesText, pstrReason);
}

}  // namespace tessera
