#include "imagefiles/frameformats.h"

#include "imagefiles/cbffile.h"
#include "imagefiles/dm3frames.h"
#include "imagefiles/dm4file.h"
#include "imagefiles/framename.h"
#include "imagefiles/hdf5file.h"
#include "imagefiles/mibfile.h"
#include "imagefiles/mrcfile.h"
#include "imagefiles/mrcheader.h"
#include "imagefiles/picturefile.h"
#include "imagefiles/smvreader.h"
#include "imagefiles/tifffile.h"
#include "imagefiles/tvipsfile.h"
#include "records/regularfile.h"

#include <QFile>

#include <QFileInfo>

#include <algorithm>
#include <exception>

namespace tessera {

namespace {

/// The fault of a file that has only one image, when another one is wanted.
/// @return whether there is this fault
bool hasNoImage(int nFirst, QString& strReason)
{
    if (nFirst > 0) {
        strReason = QStringLiteral("image %1 of 1").arg(qint64(nFirst) + 1);
    }
    return nFirst > 0;
}

bool readPicture(const QString& strFileName, int nFirst, int, ImageList& vecImage, QString& strReason)
{
    return !hasNoImage(nFirst, strReason) && ReadPicture(strFileName, vecImage, strReason) == 1;
}

FrameHeader readPictureHeader(const QString& strFileName, int)
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

bool hasMagic(const FrameFormat& format, const QByteArray& bytesHead)
{
    return std::any_of(format.vecMagic.begin(), format.vecMagic.end(), [&](const FileMagic& magic) {
        return bytesHead.mid(magic.nOffset, magic.bytes.size()) == magic.bytes;
    });
}

QByteArray headOf(const QString& strFileName)
{
    constexpr int nHeadSize = 256;  // bytes, includes all magic bytes
    QFile file(strFileName);
    QString strReason;
    return openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason)
               ? file.read(nHeadSize)
               : QByteArray();
}

}  // namespace

const std::vector<FrameFormat>& frameFormats()
{
    static const std::vector<FrameFormat> s_vecFormat = {
        {"DM3", {"dm3"}, {{0, QByteArray("\0\0\0\3", 4)}}, readDm3Frames, readDm3Header},
        {"MRC", {"mrc", "mrcs"}, {{208, "MAP "}}, readMrcFrames, readMrcHeader},
        {"DM4", {"dm4"}, {{0, QByteArray("\0\0\0\4", 4)}}, readDm4Frames, readDm4Header},
        {"SMV", {"img"}, {{0, "{\nHEADER_BYTES"}, {0, "{\r\nHEADER_BYTES"}}, readSmvFrames, readSmvHeader},
        {"CBF", {"cbf"}, {{0, "###CBF"}}, readCbfFrames, readCbfHeader},
        {"HDF5", {"h5", "hdf5", "nxs", "emd"}, {{0, "\x89HDF\r\n\x1a\n"}}, readHdf5Frames, readHdf5Header},
        {"TVIPS",
         {"tvips"},
         {{0, QByteArray("\0\1\0\0\1\0\0\0", 8)}, {0, QByteArray("\0\1\0\0\2\0\0\0", 8)}},
         readTvipsFrames,
         readTvipsHeader},
        {"MIB", {"mib"}, {{0, "MQ1,"}}, readMibFrames, readMibHeader},
        picture("BMP", {"bmp"}, {{0, "BM"}}),
        picture("JPEG", {"jpg", "jpeg"}, {{0, "\xff\xd8\xff"}}),
        picture("GIF", {"gif"}, {{0, "GIF8"}}),
        {"TIFF",
         {"tif", "tiff"},
         {{0, QByteArray("II*\0", 4)},
          {0, QByteArray("MM\0*", 4)},
          {0, QByteArray("II+\0", 4)},
          {0, QByteArray("MM\0+", 4)}},
         readTiffFrames,
         readTiffHeader},
        picture("PNG", {"png"}, {{0, "\x89PNG"}}),
        picture("Picture", {}, {}),
    };
    return s_vecFormat;
}

const FrameFormat& frameFormatOf(const QString& strFrame)
{
    const std::vector<FrameFormat>& vecFormat = frameFormats();
    const QString strFile = frameName(strFrame).strFile, strSuffix = QFileInfo(strFile).suffix().toLower();
    const QByteArray bytesHead = headOf(strFile);
    auto it = std::find_if(vecFormat.begin(), vecFormat.end(),
                           [&](const FrameFormat& format) { return hasMagic(format, bytesHead); });
    if (it == vecFormat.end()) {
        it = std::find_if(vecFormat.begin(), vecFormat.end(),
                          [&](const FrameFormat& format) { return format.listSuffix.contains(strSuffix); });
    }
    return it != vecFormat.end() ? *it : vecFormat.back();
}

FrameHeader frameHeader(const QString& strFrame)
{
    const FrameFormat& format = frameFormatOf(strFrame);
    const FrameName name = frameName(strFrame);
    try {
        return format.fnReadHeader ? format.fnReadHeader(name.strFile, name.nImage) : FrameHeader();
    } catch (const std::exception&) {  // memory for the tags was short; the image may still be read
        return {};
    }
}

const QStringList& frameSuffixes()
{
    static const QStringList s_listSuffix = [] {
        QStringList listSuffix;
        for (const FrameFormat& format : frameFormats()) {
            listSuffix += format.listSuffix;
        }
        return listSuffix;
    }();
    return s_listSuffix;
}

QString frameNameFilters()
{
    return QStringLiteral("*.") + frameSuffixes().join(QLatin1String(" *."));
}

}  // namespace tessera
