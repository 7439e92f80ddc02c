#include "tools/fuzz/framefuzzreaders.h"

#include "frames/hotpixels.h"
#include "imagefiles/dm3file.h"
#include "imagefiles/frameformats.h"
#include "imagefiles/mrcfile.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <new>

namespace tessera {

namespace {

const QString g_strGood;

/// Whether two images are equal to the bit, including NaNs.
bool same(const CImgObj<float>& a, const CImgObj<float>& b)
{
    const size_t nBytes = size_t(a.Width()) * size_t(a.Height()) * sizeof(float);
    return a.Width() == b.Width() && a.Height() == b.Height() &&
           (nBytes == 0 || std::memcmp(a.Data(), b.Data(), nBytes) == 0);
}

bool same(const ImageList& vecA, const ImageList& vecB)
{
    if (vecA.size() != vecB.size()) {
        return false;
    }
    for (size_t i = 0; i < vecA.size(); ++i) {
        if (!same(*vecA[i], *vecB[i])) {
            return false;
        }
    }
    return true;
}

QString readMrc(const QString& strFileName, const QByteArray& bytes)
{
    ImageList vecImage, vecFromBytes, vecAgain;
    QString strReason, strReasonOfBytes;
    const int nResult = ReadMRC(strFileName, vecImage, &strReason);
    const int nResultOfBytes = readMrcBytes(reinterpret_cast<const uint8_t*>(bytes.constData()),
                                            size_t(bytes.size()), vecFromBytes, &strReasonOfBytes);
    if (nResult != nResultOfBytes || strReason != strReasonOfBytes || !same(vecImage, vecFromBytes)) {
        return QStringLiteral("file and bytes are read differently: \"%1\", \"%2\"")
            .arg(strReason, strReasonOfBytes);
    }
    if (vecImage.empty() || vecImage.size() * size_t(vecImage[0]->Width()) > 100000) {
        return g_strGood;
    }
    const QString strWritten = strFileName + QStringLiteral(".written");
    if (WriteMRC(vecImage, strWritten) != 1 || ReadMRC(strWritten, vecAgain) != 1 ||
        !same(vecImage, vecAgain)) {
        return QStringLiteral("images change when written and read");
    }
    return g_strGood;
}

QString readDm3(const QString& strFileName, const QByteArray& bytes)
{
    CImgObj<float> image, imageOfBytes;
    const float afFormer[] = {1, 2};
    image.Set(afFormer, 2, 1);
    imageOfBytes.Copy(image);
    QString strReason, strReasonOfBytes;
    const int nResult = ReadDM3(image, strFileName, &strReason);
    const int nResultOfBytes = readDm3Bytes(reinterpret_cast<const uint8_t*>(bytes.constData()),
                                            size_t(bytes.size()), imageOfBytes, &strReasonOfBytes);
    if (nResult != nResultOfBytes || strReason != strReasonOfBytes || !same(image, imageOfBytes)) {
        return QStringLiteral("file and bytes are read differently: \"%1\", \"%2\"")
            .arg(strReason, strReasonOfBytes);
    }
    if ((nResult == 1) != strReason.isEmpty()) {
        return QStringLiteral("result %1 with the reason \"%2\"").arg(nResult).arg(strReason);
    }
    CImgObj<float> imageFormer;
    imageFormer.Set(afFormer, 2, 1);
    if (nResult != 1 && !same(image, imageFormer)) {
        return QStringLiteral("a failure has changed the image");
    }
    return g_strGood;
}

/// Reads the header. Its numbers must be valid, and its size must be that of the image if the image can be
/// read.
QString readHeader(const FrameFormat& format, const QString& strFileName, const ImageList& vecImage)
{
    const FrameHeader header = format.fnReadHeader(strFileName, 0);
    for (const ToldNumber& told : {header.kilovolts, header.wavelength, header.pixelSize, header.cameraLength,
                                   header.detectorPixel, header.exposure, header.saturation}) {
        if (told.isTold() && !(told.df > 0)) {
            return QStringLiteral("%1 in the header").arg(told.df);
        }
    }
    for (const int nImage : {1, header.nImages - 1, header.nImages, std::numeric_limits<int>::max()}) {
        format.fnReadHeader(strFileName, nImage);
    }
    if (vecImage.empty() || !header.size.isValid() ||
        header.size == QSize(vecImage[0]->Width(), vecImage[0]->Height())) {
        return g_strGood;
    }
    return QStringLiteral("%1 x %2 pixels by the header, but the image has others")
        .arg(header.size.width())
        .arg(header.size.height());
}

/// Checks what the table of formats demands of every reader.
QString readFrame(const FrameFormat& format, const QString& strFileName)
{
    ImageList vecImage;
    QString strReason;
    const bool bRead = format.fnRead(strFileName, 0, std::numeric_limits<int>::max(), vecImage, strReason);
    if (vecImage.empty() ? strReason.isEmpty() : !bRead) {
        return QStringLiteral("result %1 with %2 images and the reason \"%3\"")
            .arg(bRead)
            .arg(int(vecImage.size()))
            .arg(strReason);
    }
    for (const auto& pImage : vecImage) {
        if (!pImage->Data() || pImage->Width() < 1 || pImage->Height() < 1) {
            return QStringLiteral("an empty image");
        }
    }
    for (size_t i : {size_t(0), vecImage.size() / 2, vecImage.size() - 1}) {
        ImageList vecOne;
        if (vecImage.size() > 1 && (!format.fnRead(strFileName, int(i), 1, vecOne, strReason) ||
                                    vecOne.size() != 1 || !same(*vecOne[0], *vecImage[i]))) {
            return QStringLiteral("image %1 is another one when it is read alone").arg(i);
        }
    }
    if (!vecImage.empty()) {
        repairHotPixels(*vecImage[0], {QPoint(0, 0), QPoint(1, 1)});
    }
    return format.fnReadHeader ? readHeader(format, strFileName, vecImage) : g_strGood;
}

}  // namespace

std::vector<FuzzReader> frameFuzzReaders()
{
    const std::map<QString, QString (*)(const QString&, const QByteArray&)> mapMore = {{"DM3", readDm3},
                                                                                       {"MRC", readMrc}};
    const FrameFormat& picture = frameFormats().back();
    std::vector<FuzzReader> vecReader;
    for (const FrameFormat& format : frameFormats()) {
        if (format.fnRead == picture.fnRead && &format != &picture) {
            continue;
        }
        const auto it = mapMore.find(format.strName);
        const auto fnMore = it != mapMore.end() ? it->second : nullptr;
        const auto fnRead = [&format, fnMore](const QString& strFileName, const QByteArray& bytes) {
            try {
                const QString strWrong = readFrame(format, strFileName);
                return strWrong.isEmpty() && fnMore ? fnMore(strFileName, bytes) : strWrong;
            } catch (const std::bad_alloc&) {  // the loader catches it, too
                return g_strGood;
            }
        };
        vecReader.push_back({format.strName.toLower(),
                             QStringLiteral("frame.") + format.listSuffix.value(0, QStringLiteral("tif")),
                             fnRead});
    }
    return vecReader;
}

}  // namespace tessera
