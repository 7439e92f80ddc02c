#include "imagefiles/plainpixels.h"

#include "imagefiles/filebuffer.h"
#include "imagefiles/pixelconvert.h"
#include "records/availablememory.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>

namespace tessera {

namespace {

/// Elements that are read and converted together: few enough to be still in the cache when they are
/// converted.
constexpr qint64 g_nBlockElements = qint64(1) << 17;

using Convert = void (*)(const uint8_t*, size_t, float*);

template <class T>
Convert converterOf(bool bBigEndian)
{
    const bool bSwap = bBigEndian != (Q_BYTE_ORDER == Q_BIG_ENDIAN);
    return bSwap ? Convert(convertPixels<T, true>) : Convert(convertPixels<T, false>);
}

Convert converterOf(PixelElement element, bool bBigEndian)
{
    switch (element) {
        case PixelElement::Int8:
            return converterOf<int8_t>(bBigEndian);
        case PixelElement::UInt8:
            return converterOf<uint8_t>(bBigEndian);
        case PixelElement::Int16:
            return converterOf<int16_t>(bBigEndian);
        case PixelElement::UInt16:
            return converterOf<uint16_t>(bBigEndian);
        case PixelElement::Int32:
            return converterOf<int32_t>(bBigEndian);
        case PixelElement::UInt32:
            return converterOf<uint32_t>(bBigEndian);
        case PixelElement::Int64:
            return converterOf<int64_t>(bBigEndian);
        case PixelElement::UInt64:
            return converterOf<uint64_t>(bBigEndian);
        case PixelElement::Float32:
            return converterOf<float>(bBigEndian);
        case PixelElement::Float64:
            break;
    }
    return converterOf<double>(bBigEndian);
}

}  // namespace

int sizeOfElement(PixelElement element)
{
    switch (element) {
        case PixelElement::Int8:
        case PixelElement::UInt8:
            return 1;
        case PixelElement::Int16:
        case PixelElement::UInt16:
            return 2;
        case PixelElement::Int32:
        case PixelElement::UInt32:
        case PixelElement::Float32:
            return 4;
        case PixelElement::Int64:
        case PixelElement::UInt64:
        case PixelElement::Float64:
            break;
    }
    return 8;
}

bool isImageSize(qint64 nWidth, qint64 nHeight, QString& strReason)
{
    constexpr qint64 nMost = std::numeric_limits<int>::max();
    if (nWidth < 1 || nHeight < 1) {
        strReason = QStringLiteral("%1 x %2 pixels").arg(nWidth).arg(nHeight);
        return false;
    }
    if (nWidth > nMost / nHeight) {
        strReason =
            QStringLiteral("%1 x %2 pixels; fewer than 2147483648 can be read").arg(nWidth).arg(nHeight);
        return false;
    }
    return true;
}

bool hasMemoryForImages(qint64 nImages, qint64 nWidth, qint64 nHeight, qint64 nBuffer, QString& strReason)
{
    const double dfMemoryAsked = 1 << 28;
    const double dfMost = 1e18;  // within 64 bits
    const double dfMemory = std::min(
        double(nImages) * double(nWidth) * double(nHeight) * double(sizeof(float)) + double(nBuffer), dfMost);
    if (dfMemory <= dfMemoryAsked || hasMemoryFor(quint64(dfMemory))) {
        return true;
    }
    const QString strSize = QStringLiteral("%1 x %2 pixels").arg(nWidth).arg(nHeight);
    strReason = nImages == 1
                    ? QStringLiteral("not enough memory for %1").arg(strSize)
                    : QStringLiteral("not enough memory for %1 images of %2").arg(nImages).arg(strSize);
    return false;
}

bool holdsPixels(const PlainPixels& pixels, qint64 nFileSize, QString& strReason)
{
    if (!isImageSize(pixels.nWidth, pixels.nHeight, strReason)) {
        return false;
    }
    const qint64 nBytes = pixels.nWidth * pixels.nHeight * sizeOfElement(pixels.element);
    if (pixels.nOffset < 0 || pixels.nOffset > nFileSize || nFileSize - pixels.nOffset < nBytes) {
        strReason = QStringLiteral("truncated: %1 bytes, of which %2 x %3 pixels need %4 from byte %5 on")
                        .arg(nFileSize)
                        .arg(pixels.nWidth)
                        .arg(pixels.nHeight)
                        .arg(nBytes)
                        .arg(pixels.nOffset);
        return false;
    }
    return true;
}

std::unique_ptr<CImgObj<float>> readPlainPixels(QFile& file, const PlainPixels& pixels, QString& strReason)
{
    if (!holdsPixels(pixels, file.size(), strReason)) {
        return nullptr;
    }
    if (!hasMemoryForImages(1, pixels.nWidth, pixels.nHeight, 0, strReason)) {
        return nullptr;
    }
    auto pImage = std::make_unique<CImgObj<float>>();
    if (!pImage->Create(static_cast<int>(pixels.nWidth), static_cast<int>(pixels.nHeight))) {
        throw std::bad_alloc();
    }
    const qint64 nElement = sizeOfElement(pixels.element), nCount = pixels.nWidth * pixels.nHeight;
    const Convert fnConvert = converterOf(pixels.element, pixels.bBigEndian);
    const std::shared_ptr<uint8_t> pBlock = makeFileBuffer(
        static_cast<size_t>(std::min(nCount, g_nBlockElements) * nElement));
    bool bGood = file.seek(pixels.nOffset);
    for (qint64 nDone = 0; bGood && nDone < nCount; nDone += g_nBlockElements) {
        const qint64 nNext = std::min(g_nBlockElements, nCount - nDone);
        bGood = file.read(reinterpret_cast<char*>(pBlock.get()), nNext * nElement) == nNext * nElement;
        if (bGood) {
            fnConvert(pBlock.get(), static_cast<size_t>(nNext), pImage->Data() + nDone);
        }
    }
    if (!bGood) {
        strReason = QStringLiteral("the pixels cannot be read: %1").arg(file.errorString());
        return nullptr;
    }
    return pImage;
}

}  // namespace tessera
