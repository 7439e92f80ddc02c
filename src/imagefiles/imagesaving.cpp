#include "imagefiles/imagesaving.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QVector>

#include "imagefiles/mrcwriter.h"
#include "records/reason.h"
#include "records/wholefile.h"

namespace tessera {

namespace {

const QVector<QRgb>& greyTable()
{
    static const QVector<QRgb> table = [] {
        QVector<QRgb> vecColor;
        for (unsigned n = 0; n < 256; ++n) {
            vecColor.append(0xFF000000u + n * 0x10000u + n * 0x100u + n);
        }
        return vecColor;
    }();
    return table;
}

}  // namespace

bool saveImage(const CImgObj<unsigned char>* pImage, const QString& strFileName, QString* pstrReason)
{
    if (!pImage || !pImage->Data()) {
        return giveReason(pstrReason, strFileName, QStringLiteral("no image"));
    }
    QImage image(pImage->Data(), pImage->Width(), pImage->Height(), pImage->Width(), QImage::Format_Indexed8);
    image.setColorTable(greyTable());
    // Writers of pictures may move backwards in the file, so the picture is made in memory first.
    QBuffer buffer;
    const QByteArray bytesFormat = QFileInfo(strFileName).suffix().toLower().toLatin1();
    if (bytesFormat.isEmpty() || !buffer.open(QIODevice::ReadWrite) ||
        !image.save(&buffer, bytesFormat.constData())) {
        return giveReason(pstrReason, strFileName, QStringLiteral("no picture of this format can be made"));
    }
    return writeWholeFile(strFileName, buffer.data(), pstrReason);
}

bool saveShownImage(const CImgObj<unsigned char>* pDisplay, const CImgObj<float>* pFrame,
                    const QString& strFileName, QString* pstrReason)
{
    if (QFileInfo(strFileName).suffix().compare(QLatin1String("mrc"), Qt::CaseInsensitive) != 0) {
        return saveImage(pDisplay, strFileName, pstrReason);
    }
    if (!pFrame || !pFrame->Data()) {
        return giveReason(pstrReason, strFileName, QStringLiteral("the frame is not in memory"));
    }
    CMrcWriter<float> writer;
    writer.open(strFileName, pFrame->Width(), pFrame->Height(), 1);
    writer.addSection(pFrame->Data());
    return writer.commit(pstrReason);
}

}  // namespace tessera
