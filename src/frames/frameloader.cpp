#include "frames/frameloader.h"

#include <QFileInfo>
#include <QImage>
#include <QImageReader>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <new>

#include "frames/hotpixels.h"
#include "imagefiles/dm3file.h"
#include "imagefiles/mrcfile.h"

namespace {

/// A picture's size is only its header's word. Below this many pixels it is believed; above, the file
/// must be long enough for them at deflate's best ratio, 1032, with eight pixels in a byte.
constexpr int64_t TRUSTED_PIXELS = int64_t(1) << 26;
constexpr int64_t PIXELS_PER_BYTE = 8 * 1032;

std::unique_ptr<CImgObj<float>> imageFromPicture(const QImage& picture)
{
    auto pImage = std::make_unique<CImgObj<float>>();
    if (!pImage->Create(picture.width(), picture.height()))
        throw std::bad_alloc();
    float* pfTarget = pImage->Data();
    for (int y = 0; y < picture.height(); ++y) {
        const QRgb* pSource = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x)
            *pfTarget++ =
                static_cast<float>(19 * (qRed(pSource[x]) + 2 * qGreen(pSource[x])) + 7 * qBlue(pSource[x]));
    }
    return pImage;
}

int readPicture(const QString& strFileName, ImageList& vecImage, QString& strReason)
{
    const QFileInfo info(strFileName);
    if (info.exists() && !info.isFile()) {
        strReason = QStringLiteral("not a file");  // opening a pipe would wait for its writer
        return 0;
    }
    QImageReader reader(strFileName);
    const QSize size = reader.size();  // invalid when the format tells no size beforehand
    if (size.isValid()) {
        const int64_t nPixels = static_cast<int64_t>(size.width()) * size.height();
        if (nPixels > std::numeric_limits<int>::max() ||
            (nPixels > TRUSTED_PIXELS && nPixels / PIXELS_PER_BYTE > info.size())) {
            strReason = QStringLiteral("%1 x %2 pixels in a file of %3 bytes")
                            .arg(QString::number(size.width()), QString::number(size.height()),
                                 QString::number(info.size()));
            return 0;
        }
    }
    QImage picture;
    if (!reader.read(&picture)) {
        strReason = reader.errorString();
        return 0;
    }
    if (picture.format() != QImage::Format_RGB32)
        picture = picture.convertToFormat(QImage::Format_RGB32);
    if (picture.isNull())
        throw std::bad_alloc();  // QImage tells a lack of memory only so
    if (static_cast<int64_t>(picture.width()) * picture.height() > std::numeric_limits<int>::max()) {
        strReason = QStringLiteral("%1 x %2 pixels").arg(picture.width()).arg(picture.height());
        return 0;
    }
    vecImage.push_back(imageFromPicture(picture));
    return 1;
}

int readFrame(const QString& strFileName, int nMaxImages, ImageList& vecImage, QString& strReason)
{
    const QString strSuffix = QFileInfo(strFileName).suffix().toLower();
    if (strSuffix == QLatin1String("dm3")) {
        auto pImage = std::make_unique<CImgObj<float>>();
        if (ReadDM3(*pImage, strFileName, &strReason) != 1)
            return 0;
        vecImage.push_back(std::move(pImage));
        return 1;
    }
    if (strSuffix == QLatin1String("mrc"))
        return ReadMRC(strFileName, vecImage, &strReason, nMaxImages);
    return readPicture(strFileName, vecImage, strReason);
}

int load(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
         CRunReport& report, int nMaxImages)
{
    try {
        ImageList vecRead;
        QString strReason;
        const int nResult = readFrame(strFileName, nMaxImages, vecRead, strReason);
        if (nResult != 1)
            report.addMessage(QStringLiteral("%1: failed to load").arg(strFileName), Qt::red);
        if (!strReason.isEmpty())
            report.addMessage(QStringLiteral("%1: %2").arg(strFileName, strReason),
                              vecRead.empty() ? Qt::red : Qt::black);
        if (nResult != 1)
            return 0;
        if (!vecRead.empty())
            repairHotPixels(*vecRead.front(), listHotPixel);
        vecImage.reserve(vecImage.size() + vecRead.size());
        for (auto& pImage : vecRead)
            vecImage.push_back(std::move(pImage));
        return 1;
    } catch (const std::exception& e) {
        releaseFrameImages(vecImage);
        report.addMessage(QStringLiteral("Error: %1").arg(QString::fromLocal8Bit(e.what())), Qt::red);
        return 0;
    }
}

}  // namespace

int loadFrame(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
              CRunReport& report)
{
    return load(vecImage, strFileName, listHotPixel, report, std::numeric_limits<int>::max());
}

int loadFirstImage(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
                   CRunReport& report)
{
    return load(vecImage, strFileName, listHotPixel, report, 1);
}

void releaseFrameImages(ImageList& vecImage)
{
    vecImage.clear();
}
