#include "workstate/leftovers.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QRegularExpression>

#include <algorithm>

namespace tessera {

namespace {

/// Reads the work of a stem whose lock is held.
void offer(const QString& strFolder, const QString& strStem, std::unique_ptr<CWorkLock> pLock,
           std::vector<Leftover>& listLeftover, QStringList& listReason)
{
    const QString strFile = keptFile(strFolder, strStem);
    if (!QFile::exists(strFile)) {
        pLock->remove();
        return;
    }
    KeptWork work;
    QString strReason;
    const KeptWorkHead head = readKeptWork(strFile, work, &strReason);
    if (head == KeptWorkHead::Good) {
        listLeftover.push_back({work, std::move(pLock)});
        return;
    }
    listReason.append(QStringLiteral("An interrupted work cannot be offered: %1").arg(strReason));
    if (head == KeptWorkHead::Damaged &&
        QFile::rename(strFile, strFolder + QLatin1Char('/') + strStem + QStringLiteral(".damaged"))) {
        pLock->remove();
    }
}

}  // namespace

QString keptFile(const QString& strFolder, const QString& strStem)
{
    return strFolder + QLatin1Char('/') + strStem + QStringLiteral(".work");
}

QString lockFile(const QString& strFolder, const QString& strStem)
{
    return strFolder + QLatin1Char('/') + strStem + QStringLiteral(".lock");
}

bool Leftover::remove()
{
    if (QFile::exists(work.strFile) && !QFile::remove(work.strFile)) {
        return false;
    }
    if (pLock) {
        pLock->remove();
    }
    return true;
}

std::vector<Leftover> takeLeftovers(const QString& strFolder, QStringList& listReason)
{
    // A temporary file has the name of the work and six more characters.
    static const QRegularExpression s_name(
        QStringLiteral("^([0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12})\\.(work|lock)(\\.[A-Za-z0-9]{6})?$"));
    QMap<QString, QStringList> mapUnfinished;  // temporary files by stem
    const QDir folder(strFolder);
    for (const QString& strName : folder.entryList(QDir::Files)) {
        const QRegularExpressionMatch match = s_name.match(strName);
        if (match.hasMatch()) {
            QStringList& listUnfinished = mapUnfinished[match.captured(1)];
            if (!match.captured(4).isEmpty()) {
                listUnfinished.append(folder.filePath(strName));
            }
        }
    }
    std::vector<Leftover> listLeftover;
    for (auto it = mapUnfinished.constBegin(); it != mapUnfinished.constEnd(); ++it) {
        auto pLock = std::make_unique<CWorkLock>();
        if (!pLock->take(lockFile(strFolder, it.key()))) {
            continue;
        }
        for (const QString& strFile : it.value()) {
            QFile::remove(strFile);
        }
        offer(strFolder, it.key(), std::move(pLock), listLeftover, listReason);
    }
    std::stable_sort(listLeftover.begin(), listLeftover.end(),
                     [](const Leftover& a, const Leftover& b) { return a.work.when > b.work.when; });
    return listLeftover;
}

}  // namespace tessera
