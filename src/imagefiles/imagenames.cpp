#include "imagefiles/imagenames.h"

#include <QFileInfo>

namespace tessera {

namespace {

/// The extensions in the order of imageNameFilters().
const QStringList& imageExtensions()
{
    static const QStringList list = {QStringLiteral("bmp"), QStringLiteral("png"), QStringLiteral("jpg"),
                                     QStringLiteral("tiff"), QStringLiteral("mrc")};
    return list;
}

}  // namespace

const QStringList& imageNameFilters()
{
    static const QStringList list = {QStringLiteral("BMP Image (*.bmp)"), QStringLiteral("PNG Image (*.png)"),
                                     QStringLiteral("JPG Image (*.jpg)"),
                                     QStringLiteral("TIFF Image (*.tiff)"),
                                     QStringLiteral("MRC Image (*.mrc)")};
    return list;
}

QString completedImageName(const QString& strName, const QString& strSelectedFilter)
{
    if (strName.isEmpty() || imageExtensions().contains(QFileInfo(strName).suffix(), Qt::CaseInsensitive)) {
        return strName;
    }
    return strName + QLatin1Char('.') +
           imageExtensions().value(imageNameFilters().indexOf(strSelectedFilter), imageExtensions().first());
}

const QStringList& imageTypeItems()
{
    static const QStringList list = {QStringLiteral("Bitmap (.bmp)"),
                                     QStringLiteral("Portable Network Graphics (.png)"),
                                     QStringLiteral("JPEG (.jpg)"), QStringLiteral("TIFF 8-bit (.tif)")};
    return list;
}

QString imageTypeExtension(const QString& strItem)
{
    const int nOpen = strItem.indexOf(QLatin1Char('('));
    const int nClose = strItem.indexOf(QLatin1Char(')'), nOpen + 1);
    return nOpen < 0 || nClose < 0 ? QString() : strItem.mid(nOpen + 1, nClose - nOpen - 1);
}

}  // namespace tessera
