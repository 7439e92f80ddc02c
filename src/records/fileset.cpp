#include "records/fileset.h"

#include "records/reason.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace tessera {

namespace {

// The usual limit of open files is 1024 per process, some of which are needed elsewhere.
constexpr std::size_t g_nMostOpen = 200;

}  // namespace

std::unique_ptr<CWholeFile> CFileSet::newFile() const
{
    auto pFile = std::make_unique<CWholeFile>();
    pFile->m_strWaiting = QFile::encodeName(m_strWaiting);
    return pFile;
}

bool CFileSet::add(const QString& strFileName, const QByteArray& bytes, QString* pstrReason)
{
    auto pFile = newFile();
    const bool bWritten = pFile->open(strFileName) && pFile->write(bytes);
    return take(std::move(pFile), bWritten, pstrReason);
}

bool CFileSet::addFirst(const QString& strFileName, const QByteArray& bytes, QString* pstrReason)
{
    auto pFile = newFile();
    const bool bWritten = pFile->open(strFileName) && pFile->write(bytes);
    return take(std::move(pFile), bWritten, pstrReason, true);
}

bool CFileSet::addRemoval(const QString& strFileName, QString* pstrReason)
{
    auto pFile = newFile();
    const bool bThere = pFile->openRemoval(strFileName);
    return take(std::move(pFile), bThere, pstrReason);
}

bool CFileSet::addCopy(const QString& strFrom, const QString& strFileName, QString* pstrReason)
{
    auto pFile = newFile();
    const bool bWritten = pFile->open(strFileName) && pFile->writeCopy(strFrom);
    return take(std::move(pFile), bWritten, pstrReason);
}

bool CFileSet::take(std::unique_ptr<CWholeFile> pFile, bool bWritten, QString* pstrReason, bool bFirst)
{
    // Of many files the later ones get their names at once, which closes them.
    if (bWritten && pFile->flush() && (m_vecFile.size() < g_nMostOpen || pFile->giveName())) {
        m_vecFile.insert(bFirst ? m_vecFile.begin() : m_vecFile.end(), std::move(pFile));
        return true;
    }
    if (m_strReason.isEmpty()) {
        m_strReason = pFile->reason();
    }
    return giveReason(pstrReason, pFile->reason());
}

bool CFileSet::holds(const QString& strFileName) const
{
    return std::any_of(m_vecFile.begin(), m_vecFile.end(), [&](const auto& pFile) {
        return QDir::cleanPath(pFile->fileName()) == QDir::cleanPath(strFileName);
    });
}

bool CFileSet::commit(QString* pstrReason)
{
    // What takes time or may fail is done for all files before the first one is renamed.
    for (const auto& pFile : m_vecFile) {
        if (m_strReason.isEmpty() && !pFile->giveName()) {
            m_strReason = pFile->reason();
        }
    }
    std::size_t nInPlace = 0;
    while (m_strReason.isEmpty() && nInPlace < m_vecFile.size()) {
        if (m_vecFile[nInPlace]->exchange(nInPlace < g_nMostOpen)) {
            ++nInPlace;
        } else {
            m_strReason = m_vecFile[nInPlace]->reason();
        }
    }
    if (!m_strReason.isEmpty()) {
        while (nInPlace > 0) {
            m_vecFile[--nInPlace]->goBack();
        }
    }
    for (const auto& pFile : m_vecFile) {
        pFile->removeBeside();
    }
    m_vecFile.clear();
    return m_strReason.isEmpty() || giveReason(pstrReason, m_strReason);
}

}  // namespace tessera
