#include "imagefiles/frameformats.h"

#include "imagefiles/dm3calibration.h"
#include "imagefiles/dm3file.h"
#include "imagefiles/mrcfile.h"
#include "imagefiles/picturefile.h"

#include <QFileInfo>

#include <algorithm>
#include <memory>
#include <utility>

namespace tessera {

namespace {

bool readDm3(const QString& strFileName, int, ImageList& vecImage, QString& strReason)
{
    auto pImage = std::make_unique<CImgObj<float>>();
    if (ReadDM3(*pImage, strFileName, &strReason) != 1)
        return false;
    vecImage.push_back(std::move(pImage));
    return true;
}

/// The tags lie behind the pixels or before them, so the whole file is read, but nothing converted.
FrameHeader readDm3Header(const QString& strFileName)
{
    FrameHeader header;
    DM3File file;
    if (!file.Read(strFileName))
        return header;
    const Dm3Calibration calibration = dm3Calibration(file);
    header.dfKilovolts = calibration.dfKilovolts;
    header.dfPixelSize = calibration.dfPixelSize;
    if (file.GetImage(nullptr))
        header.size = QSize(file.GetDimension(0), file.GetDimension(1));
    return header;
}

bool readMrc(const QString& strFileName, int nMaxImages, ImageList& vecImage, QString& strReason)
{
    return ReadMRC(strFileName, vecImage, &strReason, nMaxImages) == 1;
}

bool readPicture(const QString& strFileName, int, ImageList& vecImage, QString& strReason)
{
    return ReadPicture(strFileName, vecImage, strReason) == 1;
}

FrameHeader readPictureHeader(const QString& strFileName)
{
    FrameHeader header;
    header.size = pictureSize(strFileName);
    return header;
}

FrameFormat picture(const QString& strName, const QStringList& listSuffix,
                    const std::vector<FileMagic>& vecMagic)
{
    return {strName, listSuffix, vecMagic, readPicture, readPictureHeader};
}

}  // namespace

const std::vector<FrameFormat>& frameFormats()
{
    static const std::vector<FrameFormat> s_vecFormat = {
        {"DM3", {"dm3"}, {{0, QByteArray("\0\0\0\3", 4)}}, readDm3, readDm3Header},
        {"MRC", {"mrc"}, {{208, "MAP "}}, readMrc, nullptr},
        picture("BMP", {"bmp"}, {{0, "BM"}}),
        picture("JPEG", {"jpg", "jpeg"}, {{0, "\xff\xd8\xff"}}),
        picture("GIF", {"gif"}, {{0, "GIF8"}}),
        picture("TIFF", {"tif", "tiff"}, {{0, QByteArray("II*\0", 4)}, {0, QByteArray("MM\0*", 4)}}),
        picture("PNG", {"png"}, {{0, "\x89PNG"}}),
        picture("Picture", {}, {}),
    };
    return s_vecFormat;
}

const FrameFormat& frameFormatOf(const QString& strFileName)
{
    const QString strSuffix = QFileInfo(strFileName).suffix().toLower();
    const auto it = std::find_if(
        frameFormats().begin(), frameFormats().end(),
        [&](const FrameFormat& format) { return format.listSuffix.contains(strSuffix); });
    return it != frameFormats().end() ? *it : frameFormats().back();
}

const QStringList& frameSuffixes()
{
    static const QStringList s_listSuffix = [] {
        QStringList listSuffix;
        for (const FrameFormat& format : frameFormats())
            listSuffix += format.listSuffix;
        return listSuffix;
    }();
    return s_listSuffix;
}

QString frameNameFilters()
{
    return QStringLiteral("*.") + frameSuffixes().join(QLatin1String(" *."));
}

}  // namespace tessera
