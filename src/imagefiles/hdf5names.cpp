#include "imagefiles/hdf5names.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <QSet>

namespace tessera {

namespace {

/// The names of a list without folders, in lower case. Those of the last list are kept, as the files of a
/// folder are checked one after another with the same list. Comparing with a list that shares its data is
/// fast.
const QSet<QString>& namesOf(const QStringList& listName)
{
    thread_local QStringList t_listKept;
    thread_local QSet<QString> t_setKept;
    if (listName != t_listKept) {
        t_setKept.clear();
        for (const QString& strName : listName) {
            t_setKept.insert(QFileInfo(strName).fileName().toCaseFolded());
        }
        t_listKept = listName;
    }
    return t_setKept;
}

}  // namespace

bool isDataOfMaster(const QString& strFileName, const QStringList& listNameInFolder)
{
    static const QRegularExpression s_data(QStringLiteral("^(.+)_data_\\d+\\.(h5|hdf5|nxs)$"),
                                           QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = s_data.match(QFileInfo(strFileName).fileName());
    if (!match.hasMatch()) {
        return false;
    }
    const QString strStem = match.captured(1);
    const QSet<QString>& setName = namesOf(listNameInFolder);
    for (const char* pszEnd : {"_master", "_vds", ""}) {
        for (const char* pszSuffix : {".h5", ".hdf5", ".nxs"}) {
            const QString strMaster = strStem + QLatin1String(pszEnd) + QLatin1String(pszSuffix);
            if (setName.contains(strMaster.toCaseFolded())) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace tessera
