#include "dataset/displayname.h"

#include <QFileInfo>

namespace tessera {

QString displayName(const QStringList& listFile)
{
    if (listFile.isEmpty())
        return QString();
    QStringList listBase;
    int nLength = QFileInfo(listFile.first()).completeBaseName().size();
    for (const QString& strFile : listFile) {
        listBase.append(QFileInfo(strFile).completeBaseName());
        nLength = qMin(nLength, listBase.last().size());
    }
    QString strName(nLength, QLatin1Char('*'));
    for (int i = 0; i < nLength; ++i) {
        const QChar c = listBase.first()[i];
        bool bSame = true;
        for (const QString& strBase : qAsConst(listBase))
            bSame = bSame && strBase[i] == c;
        if (bSame)
            strName[i] = c;
    }
    const QString strSuffix = QFileInfo(listFile.last()).suffix();
    return strSuffix.isEmpty() ? strName : strName + QLatin1Char('.') + strSuffix;
}

}  // namespace tessera
