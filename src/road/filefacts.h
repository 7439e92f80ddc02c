// FileFacts: a file as a run found it, so that it can be known again.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace tessera {

struct FileFacts {
    QString strFile;         ///< absolute path
    qint64 nSize = -1;       ///< bytes; -1: there is no such file
    QDateTime changed;       ///< UTC
    QByteArray bytesSha256;  ///< 32 bytes; empty where the file could not be read, or nobody waited for it
};

/// Reads files side by side and takes their sizes, dates and hashes. A file is read in pieces, so that its
/// size costs no memory.
///
/// @param nJobs   files read side by side, at least 1
/// @param fnGoOn  called in the thread of the caller, ten times a second, with how many files are done;
///                false ends the reading, and the hashes that are not done by then stay empty. May be empty
/// @return in the order of the files
std::vector<FileFacts> factsOfFiles(const QStringList& listFile, int nJobs,
                                    const std::function<bool(int nDone)>& fnGoOn = {});

/// Objects with the keys path, size, changed (ISO 8601) and sha256, in hexadecimal; what is not known is not
/// there.
QJsonArray factsArray(const std::vector<FileFacts>& listFacts);

}  // namespace tessera
