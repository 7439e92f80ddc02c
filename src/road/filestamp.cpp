#include "road/filestamp.h"

#include <QFile>

#include <sys/stat.h>

namespace tessera {

FileStamp FileStamp::of(const QString& strFileName)
{
    FileStamp stamp;
    struct stat info;
    if (::stat(QFile::encodeName(strFileName).constData(), &info) == 0) {
        stamp.bExists = true;
        stamp.bRegular = S_ISREG(info.st_mode);
        stamp.bFolder = S_ISDIR(info.st_mode);
        stamp.nInode = info.st_ino;
        stamp.nSeconds = info.st_ctim.tv_sec;
        stamp.nNanoseconds = info.st_ctim.tv_nsec;
    }
    return stamp;
}

bool replacedSince(const FileStamp& stamp, const QString& strFileName)
{
    const FileStamp now = FileStamp::of(strFileName);
    return now.bExists && !now.bFolder &&
           !(stamp.bExists && now.bRegular && stamp.nInode == now.nInode && stamp.nSeconds == now.nSeconds &&
             stamp.nNanoseconds == now.nNanoseconds);
}

}  // namespace tessera
