#include "imagefiles/framename.h"

#include <QFileInfo>

#include <limits>

namespace tessera {

FrameName frameName(const QString& strFrame)
{
    const int nHash = strFrame.lastIndexOf(QLatin1Char('#'));
    const QString strNumber = strFrame.mid(nHash + 1), strFile = strFrame.left(qMax(nHash, 0));
    bool bNumber = false;
    const int nNumber = strNumber.toInt(&bNumber);
    if (nHash < 0 || !bNumber || nNumber < 1 || QString::number(nNumber) != strNumber ||
        QFileInfo(strFile).suffix().isEmpty()) {
        return {strFrame, 0, false};
    }
    return {strFile, nNumber - 1, true};
}

QString nameOfImage(const QString& strFile, int nImage)
{
    return strFile + QLatin1Char('#') + QString::number(qint64(nImage) + 1);
}

QStringList framesOfFile(const QString& strFile, int nImages)
{
    if (nImages < 2) {
        return {strFile};
    }
    QStringList listFrame;
    listFrame.reserve(nImages);
    for (int i = 0; i < nImages; ++i) {
        listFrame.append(nameOfImage(strFile, i));
    }
    return listFrame;
}

QString frameBaseName(const QString& strFrame)
{
    const FrameName name = frameName(strFrame);
    const QString strBase = QFileInfo(name.strFile).completeBaseName();
    return name.bPart ? QStringLiteral("%1_%2").arg(strBase).arg(name.nImage + 1, 4, 10, QLatin1Char('0'))
                      : strBase;
}

QString frameShortName(const QString& strFrame)
{
    return frameName(strFrame).bPart ? frameBaseName(strFrame) : QFileInfo(strFrame).baseName();
}

}  // namespace tessera
