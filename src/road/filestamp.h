// FileStamp: tells whether a result file has been replaced since the stamp was taken.
#pragma once

#include <QString>

namespace tessera {

/// Inode and time of change. Result files are written beside and renamed, so a file that was
/// written again is another inode; runs say a failed write in the log only.
struct FileStamp {
    bool bExists = false;
    bool bRegular = false;  ///< a device or a pipe is written to and stays what it is
    bool bFolder = false;   ///< nothing can be written in its place
    unsigned long long nInode = 0;
    long long nSeconds = 0;
    long nNanoseconds = 0;

    static FileStamp of(const QString& strFileName);
};

/// Whether the file is there and is not the one that the stamp was taken of. Of a device or a pipe nobody can
/// tell, and the answer is yes; of a folder it is no.
bool replacedSince(const FileStamp& stamp, const QString& strFileName);

}  // namespace tessera
