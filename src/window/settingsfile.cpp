#include "window/settingsfile.h"

#include "dataset/textlines.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <cstdio>

namespace tessera {

namespace {

constexpr qint64 g_nMaxSettings = 16000000;  // bytes; the program writes some kilobytes

QString reasonNotToRead(const QString& strFile)
{
    QString strReason;
    const std::optional<QByteArray> bytes = readFileBytes(strFile, g_nMaxSettings, &strReason);
    if (!bytes) {
        return strReason;
    }
    if (bytes->contains("@Variant")) {
        return QStringLiteral("%1: holds a serialized object").arg(strFile);
    }
    if (QSettings(strFile, QSettings::IniFormat).status() != QSettings::NoError) {
        return QStringLiteral("%1: not in the form of settings").arg(strFile);
    }
    return {};
}

}  // namespace

QString settingsFile()
{
    // Qt reads a settings file as soon as it is named, so the folder is taken from the file of a program that
    // does not exist.
    const QSettings settings(QStringLiteral("Lumenarc"), QStringLiteral("Tessera-none"));
    return QFileInfo(settings.fileName()).path() + QStringLiteral("/Tessera.conf");
}

QString putBadSettingsAside(const QString& strFile)
{
    const QString strReason = QFileInfo::exists(strFile) ? reasonNotToRead(strFile) : QString();
    if (strReason.isEmpty()) {
        return {};
    }
    QString strAside = strFile + QLatin1Char('~');
    for (int i = 2; QFileInfo::exists(strAside) || QFileInfo(strAside).isSymLink(); ++i) {
        strAside = strFile + QStringLiteral("~%1").arg(i);
    }
    // Not QFile::rename(), which copies what it cannot rename, however large it is.
    if (std::rename(QFile::encodeName(strFile).constData(), QFile::encodeName(strAside).constData()) == 0) {
        return QStringLiteral("The settings cannot be read and begin anew. %1. The file is now %2.")
            .arg(strReason, strAside);
    }
    // A path below a file: no settings are found there, and none can be written.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, strFile);
    return QStringLiteral("The settings cannot be read, begin anew and will not be kept. %1.").arg(strReason);
}

}  // namespace tessera
