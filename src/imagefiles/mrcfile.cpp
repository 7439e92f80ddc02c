#include "imagefiles/mrcfile.h"

#include "imagefiles/filebuffer.h"
#include "imagefiles/halffloat.h"
#include "imagefiles/mrclayout.h"
#include "imagefiles/mrcwriter.h"
#include "imagefiles/pixelconvert.h"
#include "imagefiles/plainpixels.h"
#include "records/regularfile.h"
#include "records/wholefile.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

namespace tessera {

namespace {

/// Small sections are read together, up to this many bytes.
constexpr size_t g_nBlockSize = size_t(1) << 20;
/// Larger sections are read in strips of rows of about this many bytes, which are still in the cache when
/// they are converted.
constexpr size_t g_nStripSize = size_t(1) << 18;

template <class T, bool bSwap>
void rowsToImage(const uint8_t* pSection, const MrcLayout& layout, float* pfImage)
{
    // The target is written in memory order. Where rows are stored bottom up, the source is then read
    // backwards row by row. The processor does not predict this, so the next row is prefetched strip by
    // strip.
    constexpr size_t nLongest = 256, nCacheLine = 64;
    const size_t nRow = static_cast<size_t>(layout.nWidth), nRows = static_cast<size_t>(layout.nY);
    const size_t nRowBytes = layout.rowBytes();
    for (size_t nDone = 0; nDone < nRows; ++nDone, pfImage += nRow) {
        const size_t y = layout.bTopDown ? nDone : nRows - 1 - nDone;
        for (size_t x = 0; x < nRow; x += nLongest) {
            const size_t nStrip = std::min(nLongest, nRow - x);
            const uint8_t* pStrip = pSection + y * nRowBytes + x * sizeof(T);
#if defined(__GNUC__)
            if (!layout.bTopDown && y > 0) {
                for (size_t n = 0; n < nStrip * sizeof(T); n += nCacheLine) {
                    __builtin_prefetch(pStrip - nRowBytes + n);
                }
            }
#endif
            convertPixels<T, bSwap>(pStrip, nStrip, pfImage + x);
        }
    }
}

void packedRowsToImage(const uint8_t* pSection, const MrcLayout& layout, float* pfImage)
{
    for (int nDone = 0; nDone < layout.nY; ++nDone, pfImage += layout.nWidth) {
        const int y = layout.bTopDown ? nDone : layout.nY - 1 - nDone;
        const uint8_t* pRow = pSection + static_cast<size_t>(y) * layout.rowBytes();
        for (int x = 0; x < layout.nWidth; ++x) {
            pfImage[x] = static_cast<float>(x % 2 ? pRow[x / 2] >> 4 : pRow[x / 2] & 15);
        }
    }
}

template <bool bSwap>
void sectionToImage(const uint8_t* pSection, const MrcLayout& layout, float* pfImage)
{
    switch (layout.nMode) {
        case 0:
            return layout.bUnsigned ? rowsToImage<uint8_t, bSwap>(pSection, layout, pfImage)
                                    : rowsToImage<int8_t, bSwap>(pSection, layout, pfImage);
        case 1:
            return rowsToImage<int16_t, bSwap>(pSection, layout, pfImage);
        case 2:
            return rowsToImage<float, bSwap>(pSection, layout, pfImage);
        case 6:
            return rowsToImage<uint16_t, bSwap>(pSection, layout, pfImage);
        case 12:
            return rowsToImage<HalfFloat, bSwap>(pSection, layout, pfImage);
    }
}

std::unique_ptr<CImgObj<float>> imageOf(const MrcLayout& layout)
{
    auto pImage = std::make_unique<CImgObj<float>>();
    if (!pImage->Create(layout.nWidth, layout.nY)) {
        throw std::bad_alloc();
    }
    return pImage;
}

void convertRows(const uint8_t* pRows, const MrcLayout& layout, float* pfImage)
{
    if (layout.bPacked) {
        packedRowsToImage(pRows, layout, pfImage);
    } else if (layout.bBigEndian != (Q_BYTE_ORDER == Q_BIG_ENDIAN)) {
        sectionToImage<true>(pRows, layout, pfImage);
    } else {
        sectionToImage<false>(pRows, layout, pfImage);
    }
}

std::unique_ptr<CImgObj<float>> imageFromSection(const uint8_t* pSection, const MrcLayout& layout)
{
    auto pImage = imageOf(layout);
    convertRows(pSection, layout, pImage->Data());
    return pImage;
}

/// Reads the section at the current position of the file; null when it cannot be read completely.
std::unique_ptr<CImgObj<float>> readInStrips(QFile& file, const MrcLayout& layout)
{
    auto pImage = imageOf(layout);
    const int nTogether = static_cast<int>(
        std::clamp(g_nStripSize / layout.rowBytes(), size_t(1), static_cast<size_t>(layout.nY)));
    const std::shared_ptr<uint8_t> pStrip = makeFileBuffer(static_cast<size_t>(nTogether) *
                                                           layout.rowBytes());
    MrcLayout strip = layout;
    for (int nDone = 0; nDone < layout.nY; nDone += strip.nY) {
        strip.nY = std::min(nTogether, layout.nY - nDone);
        const qint64 nBytes = static_cast<qint64>(layout.rowBytes()) * strip.nY;
        if (file.read(reinterpret_cast<char*>(pStrip.get()), nBytes) != nBytes) {
            return nullptr;
        }
        const int nTop = layout.bTopDown ? nDone : layout.nY - nDone - strip.nY;
        convertRows(pStrip.get(), strip,
                    pImage->Data() + static_cast<size_t>(nTop) * static_cast<size_t>(layout.nWidth));
    }
    return pImage;
}

QString truncatedHeader(int64_t nBytes)
{
    return QStringLiteral("truncated: %1 of %2 header bytes").arg(nBytes).arg(g_nMrcHeaderSize);
}

void takeOver(ImageList& vecRead, ImageList& vecImage)
{
    vecImage.reserve(vecImage.size() + vecRead.size());
    std::move(vecRead.begin(), vecRead.end(), std::back_inserter(vecImage));
}

/// Reads up to `nCount` sections of any size one by one; fewer where one cannot be read.
ImageList readLargeSections(QFile& file, const MrcLayout& layout, int64_t nCount)
{
    ImageList vecRead;
    vecRead.reserve(static_cast<size_t>(nCount));
    for (int64_t nDone = 0; nDone < nCount; ++nDone) {
        auto pImage = readInStrips(file, layout);
        if (!pImage) {
            break;
        }
        vecRead.push_back(std::move(pImage));
    }
    return vecRead;
}

/// Reads up to `nCount` sections of `nSectionBytes` bytes, several at once; fewer where one cannot be read.
ImageList readSmallSections(QFile& file, const MrcLayout& layout, int64_t nCount, size_t nSectionBytes)
{
    ImageList vecRead;
    vecRead.reserve(static_cast<size_t>(nCount));
    const qint64 nSection = static_cast<qint64>(nSectionBytes);
    const int64_t nTogether = std::min(
        nCount, static_cast<int64_t>(std::max(size_t(1), g_nBlockSize / nSectionBytes)));
    const std::shared_ptr<uint8_t> pBlock = makeFileBuffer(static_cast<size_t>(nTogether) * nSectionBytes);
    for (int64_t nDone = 0; nDone < nCount;) {
        const qint64 nBytes = std::min(nTogether, nCount - nDone) * nSection;
        const qint64 nRead = file.read(reinterpret_cast<char*>(pBlock.get()), nBytes);
        const int64_t nWhole = std::max(nRead, qint64(0)) / nSection;
        for (int64_t z = 0; z < nWhole; ++z) {
            vecRead.push_back(
                imageFromSection(pBlock.get() + static_cast<size_t>(z) * nSectionBytes, layout));
        }
        nDone += nWhole;
        if (nRead != nBytes) {
            break;
        }
    }
    return vecRead;
}

}  // namespace

int readMrcSections(const QString& strFileName, int nFirst, int nMaxSections, ImageList& vecImage,
                    QString& strReason)
{
    strReason.clear();
    QFile file(strFileName);
    if (!openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason)) {
        return 0;
    }
    uint8_t aHeader[g_nMrcHeaderSize];
    const qint64 nHeaderBytes = file.read(reinterpret_cast<char*>(aHeader), g_nMrcHeaderSize);
    if (nHeaderBytes < static_cast<qint64>(g_nMrcHeaderSize)) {
        strReason = nHeaderBytes < 0 ? file.errorString() : truncatedHeader(nHeaderBytes);
        return 0;
    }

    const uint64_t nFileSize = std::max(static_cast<uint64_t>(file.size()),
                                        static_cast<uint64_t>(g_nMrcHeaderSize));
    const MrcLayout layout = mrcLayout(aHeader, nFileSize);
    const MrcSections sections = mrcSections(layout, nFileSize, nFirst, nMaxSections, strReason);
    if (sections.nCount == 0) {
        return 1;
    }
    if (!hasMemoryForImages(sections.nCount, layout.nWidth, layout.nY, 0, strReason)) {
        return 1;
    }
    const qint64 nSection = static_cast<qint64>(sections.nBytes);
    if (!file.seek(static_cast<qint64>(layout.begin()) + nFirst * nSection)) {
        strReason = file.errorString();
        return 1;
    }

    ImageList vecRead = sections.nBytes > g_nBlockSize
                            ? readLargeSections(file, layout, sections.nCount)
                            : readSmallSections(file, layout, sections.nCount, sections.nBytes);
    if (static_cast<int64_t>(vecRead.size()) < sections.nCount) {
        strReason = QStringLiteral("section %1 of %2 cannot be read: %3")
                        .arg(QString::number(nFirst + static_cast<int64_t>(vecRead.size()) + 1),
                             QString::number(layout.nZ), file.errorString());
    }
    takeOver(vecRead, vecImage);
    return 1;
}

int ReadMRC(const QString& strFileName, ImageList& vecImage, QString* pReason, int nMaxSections)
{
    QString strUnused;
    return readMrcSections(strFileName, 0, nMaxSections, vecImage, pReason ? *pReason : strUnused);
}

int readMrcBytes(const uint8_t* pData, size_t nSize, ImageList& vecImage, QString* pReason, int nMaxSections)
{
    QString strUnused;
    QString& strReason = pReason ? *pReason : strUnused;
    strReason.clear();
    if (!pData || nSize < g_nMrcHeaderSize) {
        strReason = truncatedHeader(pData ? static_cast<int64_t>(nSize) : 0);
        return 0;
    }
    const MrcLayout layout = mrcLayout(pData, nSize);
    const MrcSections sections = mrcSections(layout, nSize, 0, nMaxSections, strReason);
    if (!hasMemoryForImages(sections.nCount, layout.nWidth, layout.nY, 0, strReason)) {
        return 1;
    }
    ImageList vecRead;
    for (int64_t z = 0; z < sections.nCount; ++z) {
        vecRead.push_back(
            imageFromSection(pData + layout.begin() + static_cast<size_t>(z) * sections.nBytes, layout));
    }
    takeOver(vecRead, vecImage);
    return 1;
}

template <class T>
int WriteMRC(const std::vector<const CImgObj<T>*>& vecImage, const QString& strFileName, QString* pstrReason)
{
    if (vecImage.empty()) {
        return 0;
    }
    const auto widthOf = [](const CImgObj<T>* pImage) { return pImage ? pImage->Width() : 0; };
    const auto heightOf = [](const CImgObj<T>* pImage) { return pImage ? pImage->Height() : 0; };
    const int nWidth = widthOf(vecImage.front());
    const int nHeight = heightOf(vecImage.front());
    for (const CImgObj<T>* pImage : vecImage) {
        if (widthOf(pImage) != nWidth || heightOf(pImage) != nHeight) {
            return writeWholeFile(strFileName, {}, pstrReason) ? 1 : 0;
        }
    }

    CMrcWriter<T> writer;
    bool bGood = writer.open(strFileName, nWidth, nHeight, static_cast<int>(vecImage.size()));
    for (const CImgObj<T>* pImage : vecImage) {
        bGood = bGood && writer.addSection(pImage ? pImage->Data() : nullptr);
    }
    return writer.commit(pstrReason) ? 1 : 0;
}

template int WriteMRC<float>(const std::vector<const CImgObj<float>*>&, const QString&, QString*);
template int WriteMRC<short>(const std::vector<const CImgObj<short>*>&, const QString&, QString*);
template int WriteMRC<unsigned short>(const std::vector<const CImgObj<unsigned short>*>&, const QString&,
                                      QString*);

int WriteMRC(const ImageList& vecImage, const QString& strFileName, QString* pstrReason)
{
    std::vector<const CImgObj<float>*> vecPointer;
    vecPointer.reserve(vecImage.size());
    for (const auto& pImage : vecImage) {
        vecPointer.push_back(pImage.get());
    }
    return WriteMRC<float>(vecPointer, strFileName, pstrReason);
}

}  // namespace tessera
