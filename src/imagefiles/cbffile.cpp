#include "imagefiles/cbffile.h"

#include "imagefiles/cbfbyteoffset.h"
#include "imagefiles/cbfsection.h"
#include "imagefiles/filebuffer.h"
#include "imagefiles/minicbfheader.h"
#include "records/regularfile.h"

#include <QFile>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace tessera {

namespace {

bool openCbf(QFile& file, CbfSection& section, QString& strReason)
{
    return openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason) &&
           readCbfSection(file, section, strReason);
}

std::unique_ptr<CImgObj<float>> readPacked(QFile& file, const CbfSection& section, QString& strReason)
{
    constexpr qint64 nLongestCode = 15;  // bytes of a pixel: a difference of 8 bytes and those before it
    const qint64 nCount = section.pixels.nWidth * section.pixels.nHeight;
    const qint64 nBytes = std::min(section.nBytes, nLongestCode * nCount);
    if (!hasMemoryForImages(1, section.pixels.nWidth, section.pixels.nHeight, nBytes, strReason)) {
        return nullptr;
    }
    const std::shared_ptr<uint8_t> pBytes = makeFileBuffer(static_cast<size_t>(nBytes));
    if (!file.seek(section.pixels.nOffset) ||
        file.read(reinterpret_cast<char*>(pBytes.get()), nBytes) != nBytes) {
        strReason = QStringLiteral("the pixels cannot be read: %1").arg(file.errorString());
        return nullptr;
    }
    auto pImage = std::make_unique<CImgObj<float>>();
    if (!pImage->Create(static_cast<int>(section.pixels.nWidth), static_cast<int>(section.pixels.nHeight))) {
        throw std::bad_alloc();
    }
    const size_t nUnpacked = unpackByteOffset(pBytes.get(), static_cast<size_t>(nBytes),
                                              section.pixels.element, static_cast<size_t>(nCount),
                                              pImage->Data());
    if (nUnpacked != static_cast<size_t>(nCount)) {
        strReason =
            QStringLiteral("truncated: %1 bytes hold %2 of %3 pixels").arg(nBytes).arg(nUnpacked).arg(nCount);
        return nullptr;
    }
    return pImage;
}

/// Replaces counts below 0, which mark invalid pixels, by NaN.
void maskBelowZero(const PlainPixels& pixels, CImgObj<float>& image)
{
    switch (pixels.element) {
        case PixelElement::Int8:
        case PixelElement::Int16:
        case PixelElement::Int32:
        case PixelElement::Int64:
            std::replace_if(
                image.Data(), image.Data() + pixels.nWidth * pixels.nHeight, [](float f) { return f < 0; },
                std::numeric_limits<float>::quiet_NaN());
            break;
        default:
            break;
    }
}

}  // namespace

bool readCbfFrames(const QString& strFileName, int nFirst, int, ImageList& vecImage, QString& strReason)
{
    strReason.clear();
    if (nFirst > 0) {
        strReason = QStringLiteral("image %1 of 1").arg(qint64(nFirst) + 1);
        return false;
    }
    QFile file(strFileName);
    CbfSection section;
    if (!openCbf(file, section, strReason)) {
        return false;
    }
    std::unique_ptr<CImgObj<float>> pImage = section.bByteOffset
                                                 ? readPacked(file, section, strReason)
                                                 : readPlainPixels(file, section.pixels, strReason);
    if (!pImage) {
        return false;
    }
    if (!section.bByteOffset) {
        maskBelowZero(section.pixels, *pImage);
    }
    vecImage.push_back(std::move(pImage));
    return true;
}

FrameHeader readCbfHeader(const QString& strFileName, int nImage)
{
    FrameHeader header;
    QFile file(strFileName);
    CbfSection section;
    QString strReason;
    if (nImage != 0) {
        return header;
    }
    const bool bImage = openCbf(file, section, strReason);
    if (bImage) {
        header.size = QSize(static_cast<int>(section.pixels.nWidth),
                            static_cast<int>(section.pixels.nHeight));
    }
    tellMiniCbf(section.bytesText, header);
    if (section.bytesText.contains("_array_structure_list") &&
        !section.bytesText.contains("header_contents")) {
        header.listDoubt.append(QStringLiteral(
            "the tables of axes of this imgCIF file are not read: its picture may be turned or mirrored"));
    }
    return header;
}

}  // namespace tessera
