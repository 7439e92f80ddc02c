#include "tools/batch/filekeeper.h"

#include "tools/batch/filestamp.h"

#include <QFile>

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace {

std::filesystem::path pathOf(const QString& strFile)
{
    return QFile::encodeName(strFile).toStdString();
}

}  // namespace

CFileKeeper::CFileKeeper(const QStringList& listFile)
{
    for (const QString& strFile : listFile) {
        Kept kept{strFile, {}};
        if (QFile::exists(strFile)) {
            kept.strLink = strFile + QStringLiteral(".before");
            std::error_code error;
            std::filesystem::remove(pathOf(kept.strLink), error);
            std::filesystem::create_hard_link(pathOf(strFile), pathOf(kept.strLink), error);
            if (error) {
                std::filesystem::copy_file(pathOf(strFile), pathOf(kept.strLink), error);
            }
        }
        m_listKept.append(kept);
    }
}

bool CFileKeeper::allReplaced(QString& strMissing) const
{
    for (const Kept& kept : m_listKept) {
        if (!QFile::exists(kept.strFile) ||
            (!kept.strLink.isEmpty() &&
             FileStamp::of(kept.strFile).nInode == FileStamp::of(kept.strLink).nInode)) {
            strMissing = kept.strFile;
            return false;
        }
    }
    return true;
}

CFileKeeper::~CFileKeeper()
{
    for (const Kept& kept : m_listKept) {
        if (m_bDone) {
            if (!kept.strLink.isEmpty()) {
                QFile::remove(kept.strLink);
            }
        } else if (kept.strLink.isEmpty()) {
            QFile::remove(kept.strFile);
        } else {
            std::rename(QFile::encodeName(kept.strLink).constData(),
                        QFile::encodeName(kept.strFile).constData());
            QFile::remove(kept.strLink);  // two links to one file are left as they are by rename
        }
    }
}
