#include "frames/frameloader.h"

#include "frames/hotpixels.h"
#include "imagefiles/dm3file.h"
#include "imagefiles/mrcfile.h"
#include "imagefiles/picturefile.h"

#include <QFileInfo>

#include <exception>
#include <limits>

namespace {

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
    return ReadPicture(strFileName, vecImage, strReason);
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
