#include "records/formerfile.h"

#include "records/fileset.h"

#include <QFile>

namespace tessera {

QString nameOfKept(const QString& strFileName)
{
    return strFileName + QLatin1Char('~');
}

FormerFiles keepFormerFiles(const QStringList& listFile, const std::function<int(const QString&)>& fnWorth,
                            int nNew, QString* pstrReason)
{
    const int nFormer = fnWorth(listFile.first());
    if (nFormer <= nNew) {
        return FormerFiles::NoneWorthKeeping;
    }
    if (fnWorth(nameOfKept(listFile.first())) > nFormer) {
        return FormerFiles::RicherAreKept;
    }
    CFileSet set;
    for (const QString& strFile : listFile) {
        if (QFile::exists(strFile)) {
            set.addCopy(strFile, nameOfKept(strFile));
        }
    }
    return set.commit(pstrReason) ? FormerFiles::Kept : FormerFiles::Failed;
}

}  // namespace tessera
