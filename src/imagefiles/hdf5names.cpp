#include "imagefiles/hdf5names.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace tessera {

bool isDataOfMaster(const QString& strFileName, const QStringList& listNameInFolder)
{
    static const QRegularExpression s_data(QStringLiteral("^(.+)_data_\\d+\\.(h5|hdf5|nxs)$"),
                                           QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = s_data.match(QFileInfo(strFileName).fileName());
    if (!match.hasMatch()) {
        return false;
    }
    const QString strStem = match.captured(1);
    QStringList listMaster;
    for (const char* pszEnd : {"_master", "_vds", ""}) {
        for (const char* pszSuffix : {".h5", ".hdf5", ".nxs"}) {
            listMaster.append(strStem + QLatin1String(pszEnd) + QLatin1String(pszSuffix));
        }
    }
    return std::any_of(listNameInFolder.begin(), listNameInFolder.end(), [&](const QString& strOther) {
        return listMaster.contains(QFileInfo(strOther).fileName(), Qt::CaseInsensitive);
    });
}

}  // namespace tessera
