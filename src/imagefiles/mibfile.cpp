#include "imagefiles/mibfile.h"

#include "imagefiles/filebuffer.h"
#include "imagefiles/mibheader.h"
#include "imagefiles/pixelconvert.h"
#include "imaging/imageview.h"
#include "records/availablememory.h"
#include "records/regularfile.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <new>

namespace tessera {

namespace {

/// Bytes; for fewer the available memory is not checked, as this takes time.
constexpr quint64 g_nMemoryAsked = quint64(1) << 26;
constexpr quint64 g_nImageOverhead = 96;  ///< memory of an image besides its pixels, bytes
constexpr bool g_bSwap = Q_BYTE_ORDER == Q_LITTLE_ENDIAN;

/// A file, and the information in its first header, which is common to all frames.
struct MibStream {
    QFile file;
    MibHeader header;
    qint64 nImages = 0;  ///< number of complete images
    bool bCut = false;   ///< a part of another image follows
};

bool openStream(const QString& strFileName, MibStream& stream, QString& strReason)
{
    stream.file.setFileName(strFileName);
    if (!openRegularFile(stream.file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason)) {
        return false;
    }
    QByteArray bytes = stream.file.read(g_nMibLineLength);
    const qint64 nHeader = mibHeaderBytes(bytes, strReason);
    if (nHeader == 0) {
        return false;
    }
    bytes += stream.file.read(std::max(nHeader - bytes.size(), qint64(0)));
    const std::optional<MibHeader> header = parseMibHeader(bytes, strReason);
    if (!header) {
        return false;
    }
    stream.header = *header;
    const qint64 nSize = stream.file.size();
    stream.nImages = nSize / stream.header.stride();
    stream.bCut = nSize % stream.header.stride() != 0;
    return true;
}

/// Unpacks pixels as a chip sends them: big-endian words of 64 bits, the first pixel in the lowest bits of
/// each.
template <int BITS>
void unpackPixels(const uint8_t* pSource, float* pfTarget)
{
    constexpr int nInWord = 64 / BITS;
    constexpr quint64 nMask = (quint64(1) << BITS) - 1;
    for (int x = 0; x < g_nMibChip; x += nInWord, pSource += 8) {
        const quint64 nWord = qFromBigEndian<quint64>(pSource);
        for (int i = 0; i < nInWord; ++i) {
            pfTarget[x + i] = float(quint32((nWord >> (i * BITS)) & nMask));
        }
    }
}

/// Unpacks one row of one chip.
/// @param nPixel  number of its first pixel among all that the chips send
void unpackRow(const uint8_t* pPixels, const MibHeader& header, size_t nPixel, float* pfTarget)
{
    if (header.nDepth == 1) {
        unpackPixels<1>(pPixels + nPixel / 8, pfTarget);
    } else if (header.nDepth == 6) {
        unpackPixels<8>(pPixels + nPixel, pfTarget);
    } else {
        unpackPixels<16>(pPixels + 2 * nPixel, pfTarget);
    }
    if (header.nDepth == 24) {  // the upper halves of all pixels come before the lower ones
        float afLower[g_nMibChip];
        unpackPixels<16>(pPixels + header.pixelBytes() / 2 + 2 * nPixel, afLower);
        for (int x = 0; x < g_nMibChip; ++x) {
            pfTarget[x] = pfTarget[x] * 4096 + afLower[x];
        }
    }
}

/// Unpacks a chip. The first row that the camera sends is the lowest one on the screen.
void unpackChip(const uint8_t* pPixels, const MibHeader& header, CImgObj<float>& image)
{
    for (int y = 0; y < header.nRows; ++y) {
        unpackRow(pPixels, header, size_t(header.nRows - 1 - y) * g_nMibChip,
                  image.Data() + size_t(y) * g_nMibChip);
    }
}

/// Unpacks four chips. They send their rows side by side, the fourth chip first. Chips 1 and 2 are the
/// lower half on the screen, upright; 3 and 4 are the upper half, turned by 180°.
void unpackQuad(const uint8_t* pPixels, const MibHeader& header, CImgObj<float>& image)
{
    float afRow[g_nMibChip];
    for (int y = 0; y < header.nRows / 2; ++y) {
        float* pfUpper = image.Data() + size_t(y) * 2 * g_nMibChip;
        float* pfLower = image.Data() + size_t(header.nRows - 1 - y) * 2 * g_nMibChip;
        const size_t nRow = size_t(y) * 4 * g_nMibChip;
        unpackRow(pPixels, header, nRow + 3 * g_nMibChip, pfLower);
        unpackRow(pPixels, header, nRow + 2 * g_nMibChip, pfLower + g_nMibChip);
        for (const int nChip : {3, 4}) {
            unpackRow(pPixels, header, nRow + size_t(4 - nChip) * g_nMibChip, afRow);
            std::reverse_copy(afRow, afRow + g_nMibChip, pfUpper + (nChip - 3) * g_nMibChip);
        }
    }
}

/// Converts rows from the last to the first. As the processor does not predict reading backwards, the next
/// row is prefetched.
template <class T>
void convertUpward(const uint8_t* pPixels, CImgObj<float>& image)
{
    constexpr size_t nLongest = 256, nCacheLine = 64;
    const size_t nWidth = size_t(image.Width()), nRowBytes = nWidth * sizeof(T);
    float* pfTarget = image.Data();
    for (size_t y = size_t(image.Height()); y-- > 0; pfTarget += nWidth) {
        for (size_t x = 0; x < nWidth; x += nLongest) {
            const size_t nStrip = std::min(nLongest, nWidth - x);
            const uint8_t* pStrip = pPixels + y * nRowBytes + x * sizeof(T);
#if defined(__GNUC__)
            for (size_t n = 0; y > 0 && n < nStrip * sizeof(T); n += nCacheLine) {
                __builtin_prefetch(pStrip - nRowBytes + n);
            }
#endif
            convertPixels<T, g_bSwap>(pStrip, nStrip, pfTarget + x);
        }
    }
}

std::unique_ptr<CImgObj<float>> imageFromBytes(const uint8_t* pPixels, const MibHeader& header)
{
    auto pImage = std::make_unique<CImgObj<float>>();
    if (!pImage->Create(header.nColumns, header.nRows)) {
        throw std::bad_alloc();
    }
    switch (header.pixels) {
        case MibPixels::Byte:
            convertUpward<uint8_t>(pPixels, *pImage);
            break;
        case MibPixels::Word:
            convertUpward<uint16_t>(pPixels, *pImage);
            break;
        case MibPixels::Long:
            convertUpward<uint32_t>(pPixels, *pImage);
            break;
        case MibPixels::Raw:
            header.isRawQuad() ? unpackQuad(pPixels, header, *pImage) : unpackChip(pPixels, header, *pImage);
            break;
    }
    return pImage;
}

/// Appends an image if it has the same layout as the first one.
/// @param pBlock  space for the text and the pixels of an image
bool readImage(MibStream& stream, qint64 nImage, uint8_t* pBlock, ImageList& vecRead, QString& strReason)
{
    const MibHeader& header = stream.header;
    char* const pText = reinterpret_cast<char*>(pBlock);
    if (!stream.file.seek(nImage * header.stride()) ||
        stream.file.read(pText, header.stride()) != header.stride()) {
        strReason =
            QStringLiteral("image %1 cannot be read: %2").arg(nImage + 1).arg(stream.file.errorString());
        return false;
    }
    QString strWhy;
    const std::optional<MibHeader> other = parseMibHeader(QByteArray::fromRawData(pText, int(header.nBytes)),
                                                          strWhy);
    if (!other) {
        strReason = QStringLiteral("image %1: %2").arg(nImage + 1).arg(strWhy);
        return false;
    }
    if (!other->isLike(header)) {
        strReason = QStringLiteral("image %1 is of another kind than the first").arg(nImage + 1);
        return false;
    }
    vecRead.push_back(imageFromBytes(pBlock + header.nBytes, header));
    return true;
}

/// The number of pixels that the program of the camera has inserted at each seam between chips, as the
/// pixels at the edges of chips are wider.
/// @return 0 when there is no room for any, or the seams would differ
int seamWidth(int nPixels, int nChips)
{
    const int nMore = nPixels - g_nMibChip * nChips;
    return nChips > 1 && nMore > 0 && nMore % (nChips - 1) == 0 ? nMore / (nChips - 1) : 0;
}

/// Whether each column, or each row, is in a seam.
std::vector<char> seamsOf(int nPixels, int nChips)
{
    std::vector<char> vecSeam(nPixels, 0);
    const int nSeam = seamWidth(nPixels, nChips);
    for (int n = 0; nSeam > 0 && n < nPixels; ++n) {
        vecSeam[n] = n % (g_nMibChip + nSeam) >= g_nMibChip;
    }
    return vecSeam;
}

/// Whether the pixels of the seams are filled with zeros, which are no counts.
bool hasEmptySeams(const MibHeader& header, const QString& strFileName)
{
    return (seamWidth(header.nColumns, header.nAcross) > 0 || seamWidth(header.nRows, header.nUp) > 0) &&
           mibSideFile(strFileName)
               .value(QStringLiteral("Gap Fill Mode"))
               .contains(QLatin1String("zero"), Qt::CaseInsensitive);
}

void maskSeams(const MibHeader& header, CImgObj<float>& image)
{
    const std::vector<char> vecColumn = seamsOf(image.Width(), header.nAcross),
                            vecRow = seamsOf(image.Height(), header.nUp);
    for (int y = 0; y < image.Height(); ++y) {
        float* pfRow = viewOf(image).row(y);
        for (int x = 0; x < image.Width(); ++x) {
            if (vecRow[y] || vecColumn[x]) {
                pfRow[x] = std::numeric_limits<float>::quiet_NaN();
            }
        }
    }
}

void doubtSeams(const MibHeader& header, const QMap<QString, QString>& mapSide, QStringList& listDoubt)
{
    const int nSeam = std::max(seamWidth(header.nColumns, header.nAcross),
                               seamWidth(header.nRows, header.nUp));
    if (header.nAcross < 2 && header.nUp < 2) {
        return;
    }
    if (nSeam == 0) {
        listDoubt.append(QStringLiteral(
            "The pixels on both sides of a seam between chips are twice as wide as others, and the image has "
            "no "
            "room for that: what lies on the two sides of a seam is up to 2 pixels too close."));
        return;
    }
    const QString strFill = mapSide.value(QStringLiteral("Gap Fill Mode"), QStringLiteral("not told"));
    listDoubt.append(
        QStringLiteral("%1 pixels at each seam between chips are put in (Gap Fill Mode: %2), and those "
                       "beside them are wider than others: do not trust them.")
            .arg(nSeam)
            .arg(strFill));
}

ToldNumber told(double df, const char* pszSource)
{
    return {df, QLatin1String(pszSource)};
}

/// Adds to a header the values that are common to all frames of a file.
void tellCamera(const MibHeader& header, FrameHeader& result)
{
    if (!header.strChip.isEmpty()) {
        result.detectorPixel = told(55, "chip: 3RX");
        result.strDetector = header.strChip;
    }
    if (header.bColour) {
        result.listDoubt.append(
            QStringLiteral("Taken in colour mode, in which four pixels count as one: the pixel "
                           "may be 110 µm wide."));
    }
    if (header.nDepth > 1) {
        result.saturation = told(std::ldexp(1.0, header.nDepth) - 1, "counter depth");
    } else if (header.nDepth == 1) {
        result.listDoubt.append(
            QStringLiteral("The counters have one bit: two electrons in a pixel count as one, and "
                           "intensities are too small."));
    }
}

}  // namespace

bool readMibFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason)
{
    strReason.clear();
    MibStream stream;
    if (!openStream(strFileName, stream, strReason)) {
        return false;
    }
    const MibHeader& header = stream.header;
    const qint64 nEnd = std::min(qint64(nFirst) + nMaxImages, stream.nImages), nCount = nEnd - nFirst;
    if (stream.bCut && nEnd == stream.nImages && nEnd - nFirst < nMaxImages) {
        strReason = QStringLiteral("truncated: it ends within image %1 of %2 x %3 pixels")
                        .arg(stream.nImages + 1)
                        .arg(header.nColumns)
                        .arg(header.nRows);
    }
    if (nCount < 1) {
        if (strReason.isEmpty() || nFirst > stream.nImages) {
            strReason = QStringLiteral("image %1 of %2").arg(qint64(nFirst) + 1).arg(stream.nImages);
        }
        return false;
    }
    const quint64 nPixels = quint64(header.nColumns) * quint64(header.nRows);
    const quint64 nMemory = quint64(nCount) * (nPixels * sizeof(float) + g_nImageOverhead);
    if (nMemory > g_nMemoryAsked && !hasMemoryFor(nMemory)) {
        strReason = QStringLiteral("not enough memory for %1 images of %2 x %3 pixels")
                        .arg(nCount)
                        .arg(header.nColumns)
                        .arg(header.nRows);
        return false;
    }
    const bool bEmptySeams = hasEmptySeams(header, strFileName);
    const std::shared_ptr<uint8_t> pBlock = makeFileBuffer(size_t(header.stride()));
    ImageList vecRead;
    for (qint64 n = nFirst; n < nEnd && readImage(stream, n, pBlock.get(), vecRead, strReason); ++n) {
        if (bEmptySeams) {
            maskSeams(header, *vecRead.back());
        }
    }
    const bool bRead = !vecRead.empty();
    std::move(vecRead.begin(), vecRead.end(), std::back_inserter(vecImage));
    return bRead;
}

FrameHeader readMibHeader(const QString& strFileName, int nImage)
{
    FrameHeader result;
    MibStream stream;
    QString strReason;
    if (!openStream(strFileName, stream, strReason)) {
        return result;
    }
    constexpr qint64 nMost = std::numeric_limits<int>::max();
    result.nImages = int(std::clamp(stream.nImages, qint64(1), nMost));
    tellCamera(stream.header, result);
    const QMap<QString, QString> mapSide = mibSideFile(strFileName);
    doubtSeams(stream.header, mapSide, result.listDoubt);
    const QString strReadout = mapSide.value(QStringLiteral("Readout System"));
    if (!strReadout.isEmpty()) {
        result.strDetector = QStringLiteral("%1 %2").arg(result.strDetector, strReadout).trimmed();
    }
    const int nTold = mapSide.value(QStringLiteral("Frames in Acquisition")).toInt();
    if (nTold > 0 && nTold != stream.nImages) {
        result.listDoubt.append(QStringLiteral("The .hdr beside the file announces %1 images; there are %2.")
                                    .arg(nTold)
                                    .arg(stream.nImages));
    }
    if (nImage < 0 || nImage >= stream.nImages || !stream.file.seek(nImage * stream.header.stride())) {
        return result;
    }
    const std::optional<MibHeader> header = parseMibHeader(stream.file.read(stream.header.nBytes), strReason);
    if (header && header->isLike(stream.header)) {
        result.size = QSize(header->nColumns, header->nRows);
        if (header->dfShutter > 0 && std::isfinite(header->dfShutter)) {
            result.exposure = told(header->dfShutter, "shutter");
        }
    }
    return result;
}

}  // namespace tessera
