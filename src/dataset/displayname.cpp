#include "dataset/displayname.h"

#include "imagefiles/framename.h"

#include <QFileInfo>

namespace tessera {

QString displayName(const QStringList& listFile)
{
    if (listFile.isEmpty()) {
        return QString();
    }
    QStringList listBase;
    int nLength = frameBaseName(listFile.first()).size();
    for (const QString& strFile : listFile) {
        listBase.append(frameBaseName(strFile));
        nLength = qMin(nLength, listBase.last().size());
    }
    QString strName(nLength, QLatin1Char('*'));
    for (int i = 0; i < nLength; ++i) {
        const QChar c = listBase.first()[i];
        bool bSame = true;
        for (const QString& strBase : qAsConst(listBase)) {
            bSame = bSame && strBase[i] == c;
        }
        if (bSame) {
            strName[i] = c;
        }
    }
    const QString strSuffix = QFileInfo(frameName(listFile.last()).strFile).suffix();
    return strSuffix.isEmpty() ? strName : strName + QLatin1Char('.') + strSuffix;
}

}  // namespace tessera
