#include "imagefiles/mrcfile.h"

#include <QFile>
#include <QtEndian>
#include "records/regularfile.h"
#include "records/wholefile.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <new>

#include "imagefiles/filebuffer.h"
#include "imagefiles/mrcwriter.h"
#include "imagefiles/pixelconvert.h"

namespace tessera {

namespace {

constexpr size_t HEADER_SIZE = 1024;
constexpr size_t BLOCK_SIZE = size_t(1) << 20;  ///< small sections are read together, up to this many bytes
constexpr int64_t IMAGES_TRUSTED = 65536;       ///< as many sections are read however small they are
constexpr uint64_t IMAGE_OVERHEAD = 96;         ///< bytes that an image takes besides its pixels

struct MrcHeader {
    int32_t nX, nY, nZ, nMode;
};

MrcHeader headerFromBytes(const uint8_t* p)
{
    return {qFromLittleEndian<int32_t>(p), qFromLittleEndian<int32_t>(p + 4),
            qFromLittleEndian<int32_t>(p + 8), qFromLittleEndian<int32_t>(p + 12)};
}

/// Bytes per pixel; 0 for a mode that is not read.
size_t pixelSize(int nMode)
{
    switch (nMode) {
        case 0:
            return 1;
        case 1:
        case 6:
            return 2;
        case 2:
            return 4;
        default:
            return 0;
    }
}

/// What pixels of a mode that is not read are; empty for a number without a meaning.
QString pixelName(int nMode)
{
    switch (nMode) {
        case 3:
        case 4:
            return QStringLiteral(" (complex)");
        case 12:
            return QStringLiteral(" (floating point of 16 bits)");
        case 16:
            return QStringLiteral(" (colour)");
        case 101:
            return QStringLiteral(" (packed, 4 bits)");
        default:
            return {};
    }
}

/// What the header and the length of the file allow to be read.
struct SectionPlan {
    int64_t nCount = 0;  ///< sections
    size_t nBytes = 0;   ///< per section
};

SectionPlan planSections(const MrcHeader& header, uint64_t nFileSize, int nMaxSections, QString& strReason)
{
    SectionPlan plan;
    const size_t nPixelSize = pixelSize(header.nMode);
    if (nPixelSize == 0) {
        strReason = QStringLiteral("MODE %1%2 is not read").arg(header.nMode).arg(pixelName(header.nMode));
        return plan;
    }
    if (header.nZ < 1) {
        strReason = QStringLiteral("%1 sections").arg(header.nZ);
        return plan;
    }
    if (header.nX < 1 || header.nY < 1) {
        strReason = QStringLiteral("%1 x %2 pixels").arg(header.nX).arg(header.nY);
        return plan;
    }
    const int64_t nPixels = static_cast<int64_t>(header.nX) * header.nY;
    if (nPixels > std::numeric_limits<int>::max()) {
        strReason =
            QStringLiteral("%1 x %2 pixels; fewer than 2147483648 can be read").arg(header.nX).arg(header.nY);
        return plan;
    }
    plan.nBytes = static_cast<size_t>(nPixels) * nPixelSize;
    const int64_t nWanted = std::min(header.nZ, std::max(nMaxSections, 0));
    const int64_t nWhole = static_cast<int64_t>((nFileSize - HEADER_SIZE) / plan.nBytes);
    plan.nCount = std::min(nWanted, nWhole);
    if (plan.nCount < nWanted)
        strReason = QStringLiteral("truncated: %1 bytes hold %2 of %3 sections of %4 x %5 pixels")
                        .arg(nFileSize)
                        .arg(nWhole)
                        .arg(header.nZ)
                        .arg(header.nX)
                        .arg(header.nY);
    if (plan.nCount > IMAGES_TRUSTED && static_cast<uint64_t>(plan.nCount) * IMAGE_OVERHEAD > 4 * nFileSize) {
        strReason = QStringLiteral("%1 sections of %2 bytes").arg(plan.nCount).arg(plan.nBytes);
        plan.nCount = 0;
    }
    return plan;
}

template <class T>
void rowsToImage(const uint8_t* pSection, int nWidth, int nHeight, float* pfImage)
{
    // The source is walked backwards by rows, which the processor does not foresee: the row to come is
    // fetched strip by strip. The target is written in memory order.
    constexpr size_t STRIP = 256, CACHE_LINE = 64;
    const size_t nRow = static_cast<size_t>(nWidth);
    const size_t nRowBytes = nRow * sizeof(T);
    for (size_t y = static_cast<size_t>(nHeight); y-- > 0; pfImage += nRow)
        for (size_t x = 0; x < nRow; x += STRIP) {
            const size_t nStrip = std::min(STRIP, nRow - x);
            const uint8_t* pStrip = pSection + y * nRowBytes + x * sizeof(T);
#if defined(__GNUC__)
            if (y > 0)
                for (size_t n = 0; n < nStrip * sizeof(T); n += CACHE_LINE)
                    __builtin_prefetch(pStrip - nRowBytes + n);
#endif
            convertPixels<T, Q_BYTE_ORDER == Q_BIG_ENDIAN>(pStrip, nStrip, pfImage + x);
        }
}

std::unique_ptr<CImgObj<float>> imageFromSection(const uint8_t* pSection, const MrcHeader& header)
{
    auto pImage = std::make_unique<CImgObj<float>>();
    if (!pImage->Create(header.nX, header.nY))
        throw std::bad_alloc();
    switch (header.nMode) {
        case 0:
            rowsToImage<int8_t>(pSection, header.nX, header.nY, pImage->Data());
            break;
        case 1:
            rowsToImage<int16_t>(pSection, header.nX, header.nY, pImage->Data());
            break;
        case 2:
            rowsToImage<float>(pSection, header.nX, header.nY, pImage->Data());
            break;
        case 6:
            rowsToImage<uint16_t>(pSection, header.nX, header.nY, pImage->Data());
            break;
    }
    return pImage;
}

QString truncatedHeader(int64_t nBytes)
{
    return QStringLiteral("truncated: %1 of %2 header bytes").arg(nBytes).arg(HEADER_SIZE);
}

void takeOver(ImageList& vecRead, ImageList& vecImage)
{
    vecImage.reserve(vecImage.size() + vecRead.size());
    std::move(vecRead.begin(), vecRead.end(), std::back_inserter(vecImage));
}

}  // namespace

int ReadMRC(const QString& strFileName, ImageList& vecImage, QString* pReason, int nMaxSections)
{
    QString strUnused;
    QString& strReason = pReason ? *pReason : strUnused;
    strReason.clear();

    QFile file(strFileName);
    if (!openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason))
        return 0;
    uint8_t aHeader[HEADER_SIZE];
    const qint64 nHeaderBytes = file.read(reinterpret_cast<char*>(aHeader), HEADER_SIZE);
    if (nHeaderBytes < static_cast<qint64>(HEADER_SIZE)) {
        strReason = nHeaderBytes < 0 ? file.errorString() : truncatedHeader(nHeaderBytes);
        return 0;
    }

    const MrcHeader header = headerFromBytes(aHeader);
    const uint64_t nFileSize = std::max(static_cast<uint64_t>(file.size()),
                                        static_cast<uint64_t>(HEADER_SIZE));
    const SectionPlan plan = planSections(header, nFileSize, nMaxSections, strReason);
    if (plan.nCount == 0)
        return 1;

    ImageList vecRead;
    vecRead.reserve(static_cast<size_t>(plan.nCount));
    const int64_t nTogether = std::min(plan.nCount,
                                       static_cast<int64_t>(std::max(size_t(1), BLOCK_SIZE / plan.nBytes)));
    const std::shared_ptr<uint8_t> pBlock = makeFileBuffer(static_cast<size_t>(nTogether) * plan.nBytes);
    for (int64_t nDone = 0; nDone < plan.nCount;) {
        const int64_t nNext = std::min(nTogether, plan.nCount - nDone);
        const qint64 nBytes = nNext * static_cast<qint64>(plan.nBytes);
        const qint64 nRead = file.read(reinterpret_cast<char*>(pBlock.get()), nBytes);
        const int64_t nWhole = std::max(nRead, qint64(0)) / static_cast<qint64>(plan.nBytes);
        for (int64_t z = 0; z < nWhole; ++z)
            vecRead.push_back(imageFromSection(pBlock.get() + static_cast<size_t>(z) * plan.nBytes, header));
        nDone += nWhole;
        if (nRead != nBytes) {
            strReason = QStringLiteral("section %1 of %2 cannot be read: %3")
                            .arg(QString::number(nDone + 1), QString::number(header.nZ), file.errorString());
            break;
        }
    }
    takeOver(vecRead, vecImage);
    return 1;
}

int readMrcBytes(const uint8_t* pData, size_t nSize, ImageList& vecImage, QString* pReason, int nMaxSections)
{
    QString strUnused;
    QString& strReason = pReason ? *pReason : strUnused;
    strReason.clear();
    if (!pData || nSize < HEADER_SIZE) {
        strReason = truncatedHeader(pData ? static_cast<int64_t>(nSize) : 0);
        return 0;
    }
    const MrcHeader header = headerFromBytes(pData);
    const SectionPlan plan = planSections(header, nSize, nMaxSections, strReason);
    ImageList vecRead;
    for (int64_t z = 0; z < plan.nCount; ++z)
        vecRead.push_back(
            imageFromSection(pData + HEADER_SIZE + static_cast<size_t>(z) * plan.nBytes, header));
    takeOver(vecRead, vecImage);
    return 1;
}

template <class T>
int WriteMRC(const std::vector<const CImgObj<T>*>& vecImage, const QString& strFileName, QString* pstrReason)
{
    if (vecImage.empty())
        return 0;
    const auto widthOf = [](const CImgObj<T>* pImage) { return pImage ? pImage->Width() : 0; };
    const auto heightOf = [](const CImgObj<T>* pImage) { return pImage ? pImage->Height() : 0; };
    const int nWidth = widthOf(vecImage.front());
    const int nHeight = heightOf(vecImage.front());
    for (const CImgObj<T>* pImage : vecImage)
        if (widthOf(pImage) != nWidth || heightOf(pImage) != nHeight)
            return writeWholeFile(strFileName, {}, pstrReason) ? 1 : 0;

    CMrcWriter<T> writer;
    bool bGood = writer.open(strFileName, nWidth, nHeight, static_cast<int>(vecImage.size()));
    for (const CImgObj<T>* pImage : vecImage)
        bGood = bGood && writer.addSection(pImage ? pImage->Data() : nullptr);
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
    for (const auto& pImage : vecImage)
        vecPointer.push_back(pImage.get());
    return WriteMRC<float>(vecPointer, strFileName, pstrReason);
}

}  // namespace tessera
