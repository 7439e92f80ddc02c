// FileFacts: size, date and hash of a file, by which it can be recognized later.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace tessera {

/// A file as a run found it.
struct FileFacts {
    QString strFile;         ///< absolute path
    qint64 nSize = -1;       ///< bytes; -1: the file does not exist
    QDateTime changed;       ///< time of the last change, UTC
    QByteArray bytesSha256;  ///< 32 bytes; empty if the file could not be read, or reading was stopped
};

/// Determines sizes, dates and hashes of files. Files are read in blocks, so memory does not depend on their
/// size.
///
/// @param nJobs   files read in parallel, at least 1
/// @param fnGoOn  may be empty; called in the caller's thread ten times a second with the number of files
/// done.
///                If it returns false, reading stops and the hashes that are still missing stay empty
/// @return in the order of the files
std::vector<FileFacts> factsOfFiles(const QStringList& listFile, int nJobs,
                                    const std::function<bool(int nDone)>& fnGoOn = {});

/// JSON objects with the keys path, size, changed (ISO 8601) and sha256 (hexadecimal); unknown values are
/// left out.
QJsonArray factsArray(const std::vector<FileFacts>& listFacts);

}  // namespace tessera
