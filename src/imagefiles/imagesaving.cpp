#include "imagefiles/imagesaving.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QVector>

#include "app/records/wholefile.h"
#include "imagefiles/mrcwriter.h"

namespace {

bool fail(const QString& strFileName, const QString& strWhat, QString* pstrReason)
{
    if (pstrReason)
        *pstrReason = QStringLiteral("%1: %2").arg(strFileName, strWhat);
    return false;
}

const QVector<QRgb>& greyTable()
{
    static const QVector<QRgb> table = [] {
        QVector<QRgb> vecColor;
        for (unsigned n = 0; n < 256; ++n)
            vecColor.append(0xFF000000u + n * 0x10000u + n * 0x100u + n);
        return vecColor;
    }();
    return table;
}

/// The extensions in the order of imageNameFilters().
const QStringList& imageExtensions()
{
    static const QStringList list = {QStringLiteral("bmp"), QStringLiteral("png"), QStringLiteral("jpg"),
                                     QStringLiteral("tiff"), QStringLiteral("mrc")};
    return list;
}

}  // namespace

bool saveImage(const CImgObj<unsigned char>* pImage, const QString& strFileName, QString* pstrReason)
{
    if (!pImage || !pImage->Data())
        return fail(strFileName, QStringLiteral("no image"), pstrReason);
    QImage image(pImage->Data(), pImage->Width(), pImage->Height(), pImage->Width(), QImage::Format_Indexed8);
    image.setColorTable(greyTable());
    // A writer of pictures may go back in its file, so the picture is made in memory first.
    QBuffer buffer;
    const QByteArray bytesFormat = QFileInfo(strFileName).suffix().toLower().toLatin1();
    if (bytesFormat.isEmpty() || !buffer.open(QIODevice::ReadWrite) ||
        !image.save(&buffer, bytesFormat.constData()))
        return fail(strFileName, QStringLiteral("no picture of this format can be made"), pstrReason);
    return writeWholeFile(strFileName, buffer.data(), false, pstrReason);
}

bool saveShownImage(const CImgObj<unsigned char>* pDisplay, const CImgObj<float>* pFrame,
                    const QString& strFileName, QString* pstrReason)
{
    if (QFileInfo(strFileName).suffix().compare(QLatin1String("mrc"), Qt::CaseInsensitive) != 0)
        return saveImage(pDisplay, strFileName, pstrReason);
    if (!pFrame || !pFrame->Data())
        return fail(strFileName, QStringLiteral("the frame is not in memory"), pstrReason);
    CMrcWriter<float> writer;
    writer.open(strFileName, pFrame->Width(), pFrame->Height(), 1);
    writer.addSection(pFrame->Data());
    return writer.commit(pstrReason);
}

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
    if (strName.isEmpty() || imageExtensions().contains(QFileInfo(strName).suffix(), Qt::CaseInsensitive))
        return strName;
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
