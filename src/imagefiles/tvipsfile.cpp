#include "imagefiles/tvipsfile.h"

#include "imagefiles/filebuffer.h"
#include "imagefiles/pixelconvert.h"
#include "records/availablememory.h"
#include "records/regularfile.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>

#include <algorithm>
#include <iterator>
#include <limits>
#include <new>
#include <vector>

namespace tessera {

namespace {

constexpr qint64 g_nSeriesHeader = 256;
/// Bytes: counter, seconds and milliseconds, which is all of version 1.
constexpr qint64 g_nSmallImageHeader = 12;
constexpr qint64 g_nLargestImageHeader = 4096;  ///< bytes; known headers have at most 256
/// Bytes; for fewer the available memory is not checked, as this takes time.
constexpr quint64 g_nMemoryAsked = quint64(1) << 26;
constexpr quint64 g_nImageOverhead = 96;  ///< memory of an image besides its pixels, bytes

/// The header of the first file, which is valid for all images.
struct SeriesHeader {
    quint32 nVersion = 0;
    int nWidth = 0, nHeight = 0;
    int nPixelBytes = 0;
    quint32 nBinning = 1;    ///< 0 where it differs between the two directions
    quint32 nPixelSize = 0;  ///< nm or 1/nm
    quint32 nKilovolts = 0;
    qint64 nImageHeader = 0;  ///< bytes

    qint64 pixels() const { return qint64(nWidth) * nHeight; }
    qint64 stride() const { return nImageHeader + pixels() * nPixelBytes; }
};

/// One file of a series.
struct SeriesPart {
    QString strFile;
    qint64 nStart = 0;   ///< place of the first image, bytes
    qint64 nImages = 0;  ///< number of complete images
    bool bCut = false;   ///< a part of another image follows
};

quint32 wordAt(const QByteArray& bytes, int nOffset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + nOffset);
}

float floatAt(const QByteArray& bytes, int nOffset)
{
    return qFromLittleEndian<float>(bytes.constData() + nOffset);
}

bool hasSeriesHeader(const QByteArray& bytes)
{
    return bytes.size() >= 8 && wordAt(bytes, 0) == g_nSeriesHeader &&
           (wordAt(bytes, 4) == 1 || wordAt(bytes, 4) == 2);
}

/// Splits NAME_012.tvips into NAME and its number; -1 for another name.
int partNumber(const QString& strFileName, QString& strBase, QString& strSuffix)
{
    static const QRegularExpression s_rx(
        QStringLiteral("^(.*_)([0-9]{3}|[1-9][0-9]{3,5})(\\.tvips)$"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = s_rx.match(strFileName);
    strBase = match.captured(1);
    strSuffix = match.captured(3);
    return match.hasMatch() ? match.captured(2).toInt() : -1;
}

QByteArray headOf(const QString& strFileName, qint64 nBytes)
{
    QFile file(strFileName);
    QString strReason;
    return openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason) ? file.read(nBytes)
                                                                                         : QByteArray();
}

QString noHeader(const QString& strFileName)
{
    QString strBase, strSuffix;
    if (partNumber(strFileName, strBase, strSuffix) < 1) {
        return QStringLiteral("not a TVIPS file: it does not begin with the header of a series");
    }
    return QStringLiteral("a later part of a series, without a header of its own; open %1")
        .arg(QFileInfo(strBase + QStringLiteral("000") + strSuffix).fileName());
}

/// Parses the header.
/// @return whether the images can be read
bool parseHeader(const QByteArray& bytes, const QString& strFileName, SeriesHeader& header,
                 QString& strReason)
{
    if (!hasSeriesHeader(bytes)) {
        strReason = noHeader(strFileName);
        return false;
    }
    if (bytes.size() < g_nSeriesHeader) {
        strReason = QStringLiteral("truncated: %1 of %2 header bytes").arg(bytes.size()).arg(g_nSeriesHeader);
        return false;
    }
    header.nVersion = wordAt(bytes, 4);
    const quint32 nWidth = wordAt(bytes, 8), nHeight = wordAt(bytes, 12), nBits = wordAt(bytes, 16);
    header.nBinning = wordAt(bytes, 28) == wordAt(bytes, 32) ? wordAt(bytes, 28) : 0;
    header.nPixelSize = wordAt(bytes, 36);
    header.nKilovolts = wordAt(bytes, 40);
    header.nImageHeader = header.nVersion == 1 ? g_nSmallImageHeader : qint64(wordAt(bytes, 48));
    if (nBits != 8 && nBits != 16) {
        strReason = QStringLiteral("pixels of %1 bits are not read").arg(nBits);
        return false;
    }
    if (nWidth < 1 || nHeight < 1 || nWidth > quint32(std::numeric_limits<int>::max()) / nHeight) {
        strReason = QStringLiteral("%1 x %2 pixels; 1 to 2147483647 can be read").arg(nWidth).arg(nHeight);
        return false;
    }
    if (header.nImageHeader < g_nSmallImageHeader || header.nImageHeader > g_nLargestImageHeader) {
        strReason = QStringLiteral("image headers of %1 bytes").arg(header.nImageHeader);
        return false;
    }
    header.nWidth = int(nWidth);
    header.nHeight = int(nHeight);
    header.nPixelBytes = int(nBits / 8);
    return true;
}

SeriesPart partOf(const QString& strFile, qint64 nStart, const SeriesHeader& header)
{
    const qint64 nBytes = std::max(QFileInfo(strFile).size() - nStart, qint64(0));
    return {strFile, nStart, nBytes / header.stride(), nBytes % header.stride() != 0};
}

/// The files of a series in their order, up to the one with image `nLast`.
/// @param strReason  takes a message when a file between others is missing
std::vector<SeriesPart> partsOf(const QString& strFileName, const SeriesHeader& header, qint64 nLast,
                                QString& strReason)
{
    std::vector<SeriesPart> vecPart = {partOf(strFileName, g_nSeriesHeader, header)};
    QString strBase, strSuffix;
    if (partNumber(strFileName, strBase, strSuffix) != 0) {
        return vecPart;
    }
    const auto nameOf = [&](int n) {
        return QStringLiteral("%1%2%3").arg(strBase).arg(n, 3, 10, QLatin1Char('0')).arg(strSuffix);
    };
    qint64 nImages = vecPart[0].nImages;
    for (int n = 1; nImages <= nLast; ++n) {
        const QString strPart = nameOf(n);
        if (!QFileInfo(strPart).isFile()) {
            if (QFileInfo(nameOf(n + 1)).isFile()) {
                strReason = QStringLiteral("%1 is missing").arg(QFileInfo(strPart).fileName());
            }
            break;
        }
        if (hasSeriesHeader(headOf(strPart, 8))) {  // the beginning of another series
            break;
        }
        vecPart.push_back(partOf(strPart, 0, header));
        nImages += vecPart.back().nImages;
    }
    return vecPart;
}

std::unique_ptr<CImgObj<float>> imageFromBytes(const uint8_t* pPixels, const SeriesHeader& header)
{
    auto pImage = std::make_unique<CImgObj<float>>();
    if (!pImage->Create(header.nWidth, header.nHeight)) {
        throw std::bad_alloc();
    }
    const size_t nPixels = size_t(header.pixels());
    if (header.nPixelBytes == 1) {
        convertPixels<uint8_t, false>(pPixels, nPixels, pImage->Data());
    } else {
        convertPixels<uint16_t, Q_BYTE_ORDER == Q_BIG_ENDIAN>(pPixels, nPixels, pImage->Data());
    }
    return pImage;
}

/// Appends images of one file.
/// @return false, with the reason, when one of them cannot be read
bool readPart(const SeriesPart& part, qint64 nFirst, qint64 nCount, const SeriesHeader& header,
              ImageList& vecRead, QString& strReason)
{
    QFile file(part.strFile);
    if (!openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason)) {
        strReason = QStringLiteral("%1: %2").arg(QFileInfo(part.strFile).fileName(), strReason);
        return false;
    }
    const qint64 nStride = header.stride();
    const std::shared_ptr<uint8_t> pBlock = makeFileBuffer(size_t(nStride));
    for (qint64 n = nFirst; n < nFirst + nCount; ++n) {
        if (!file.seek(part.nStart + n * nStride) ||
            file.read(reinterpret_cast<char*>(pBlock.get()), nStride) != nStride) {
            strReason = QStringLiteral("%1: image %2 cannot be read: %3")
                            .arg(QFileInfo(part.strFile).fileName())
                            .arg(n + 1)
                            .arg(file.errorString());
            return false;
        }
        vecRead.push_back(imageFromBytes(pBlock.get() + header.nImageHeader, header));
    }
    return true;
}

qint64 imagesOf(const std::vector<SeriesPart>& vecPart)
{
    qint64 nImages = 0;
    for (const SeriesPart& part : vecPart) {
        nImages += part.nImages;
    }
    return nImages;
}

/// The header of an image; empty where the file does not have the image.
QByteArray imageHeader(const std::vector<SeriesPart>& vecPart, qint64 nImage, const SeriesHeader& header)
{
    for (const SeriesPart& part : vecPart) {
        if (nImage >= part.nImages) {
            nImage -= part.nImages;
            continue;
        }
        QFile file(part.strFile);
        QString strReason;
        const bool bAt = openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason) &&
                         file.seek(part.nStart + nImage * header.stride());
        const QByteArray bytes = bAt ? file.read(header.nImageHeader) : QByteArray();
        return bytes.size() == header.nImageHeader ? bytes : QByteArray();
    }
    return {};
}

ToldNumber told(double df, const char* pszSource)
{
    return {df, QLatin1String(pszSource)};
}

/// Reads the first tilt of the stage. If no stage was connected, all its numbers are 0.
void tellStage(const QByteArray& bytes, FrameHeader& result)
{
    bool bStage = false;
    for (const int nOffset : {28, 32, 36, 40, 44}) {
        bStage = bStage || floatAt(bytes, nOffset) != 0;
    }
    const double dfAlpha = double(floatAt(bytes, 40));
    if (bStage && std::abs(dfAlpha) <= 180) {  // false for NaN
        result.tilt = told(dfAlpha, "image header: alpha");
    }
}

/// Reads the pixel size of the series header. The number may be the pixel size of the camera or, depending
/// on the mode, that of the image, in nm or 1/nm; the file does not tell which.
void tellPixel(const SeriesHeader& header, quint32 nMode, FrameHeader& result)
{
    constexpr quint32 nCameraPixel = 1000;  // nm; pixels of cameras have 5 to 100 µm
    constexpr double dfFarthest = 51;       // Å⁻¹, scattering by 90° at 300 kV
    if (header.nPixelSize == 0) {
        return;
    }
    const double dfReciprocal = header.nPixelSize / 10.0;  // from 1/nm
    if (nMode == 2 && dfReciprocal * std::max(header.nWidth, header.nHeight) / 2 < dfFarthest) {
        result.pixelSize = told(dfReciprocal, "pixel size");
        result.listDoubt.append(
            QStringLiteral("The pixel size, %1, is taken as one in 1/nm; the file has no unit.")
                .arg(header.nPixelSize));
    } else if (header.nPixelSize >= nCameraPixel && header.nPixelSize <= 100 * nCameraPixel &&
               header.nBinning > 0) {
        result.detectorPixel = told(header.nPixelSize / 1000.0 * header.nBinning, "pixel size, binning");
        result.listDoubt.append(
            QStringLiteral("The pixel size, %1, is taken as that of the camera in nm, before "
                           "binning by %2; the file does not say which it is.")
                .arg(header.nPixelSize)
                .arg(header.nBinning));
    } else {
        result.listDoubt.append(
            nMode == 1 ? QStringLiteral("The pixel size of %1 nm is that of a picture, not of a diffraction "
                                        "pattern, and is not used.")
                             .arg(header.nPixelSize)
                       : QStringLiteral("The pixel size, %1, cannot be one in 1/nm and is not used.")
                             .arg(header.nPixelSize));
    }
}

void tellImage(const SeriesHeader& header, const QByteArray& bytes, FrameHeader& result)
{
    quint32 nMode = 0;
    if (header.nVersion == 2 && bytes.size() >= 48) {
        tellStage(bytes, result);
        nMode = wordAt(bytes, 24);
        const quint32 nLength = wordAt(bytes, 20);
        if (nMode == 2 && nLength > 0 && nLength <= 100000) {
            result.cameraLength = told(nLength, "image header: camera length");
            result.listDoubt.append(
                QStringLiteral("The camera length, %1, is taken as one in mm; the file has no unit.")
                    .arg(nLength));
        } else if (nMode == 1) {
            result.listDoubt.append(
                QStringLiteral("The microscope was in image mode: this is no diffraction pattern."));
        }
    }
    tellPixel(header, nMode, result);
}

}  // namespace

bool isContinuation(const QString& strName)
{
    QString strBase, strSuffix;
    return partNumber(strName, strBase, strSuffix) > 0 && !hasSeriesHeader(headOf(strName, 8)) &&
           hasSeriesHeader(headOf(strBase + QStringLiteral("000") + strSuffix, 8));
}

bool readTvipsFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                     QString& strReason)
{
    strReason.clear();
    QFile file(strFileName);
    if (!openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason)) {
        return false;
    }
    SeriesHeader header;
    if (!parseHeader(file.read(g_nSeriesHeader), strFileName, header, strReason)) {
        return false;
    }
    const qint64 nEnd = qint64(nFirst) + nMaxImages;  // after the last one
    const std::vector<SeriesPart> vecPart = partsOf(strFileName, header, nEnd - 1, strReason);
    const qint64 nImages = imagesOf(vecPart), nCount = std::min(nEnd, nImages) - nFirst;
    if (nCount < 1) {
        strReason = nImages == 0 && vecPart[0].bCut
                        ? QStringLiteral(
                              "truncated: %1 bytes, but the first image of %2 x %3 pixels ends at %4")
                              .arg(file.size())
                              .arg(header.nWidth)
                              .arg(header.nHeight)
                              .arg(g_nSeriesHeader + header.stride())
                        : QStringLiteral("image %1 of %2").arg(qint64(nFirst) + 1).arg(nImages);
        return false;
    }
    const quint64 nMemory = quint64(nCount) * (quint64(header.pixels()) * sizeof(float) + g_nImageOverhead);
    if (nMemory > g_nMemoryAsked && !hasMemoryFor(nMemory)) {
        strReason = QStringLiteral("not enough memory for %1 images of %2 x %3 pixels")
                        .arg(nCount)
                        .arg(header.nWidth)
                        .arg(header.nHeight);
        return false;
    }
    ImageList vecRead;
    qint64 nBefore = 0;
    for (const SeriesPart& part : vecPart) {
        const qint64 nFrom = std::max(nFirst - nBefore, qint64(0)),
                     nUpTo = std::min(nEnd - nBefore, part.nImages);
        if (nUpTo > nFrom && !readPart(part, nFrom, nUpTo - nFrom, header, vecRead, strReason)) {
            break;
        }
        if (part.bCut && strReason.isEmpty() && nEnd - nBefore > part.nImages && nFrom <= part.nImages) {
            strReason = QStringLiteral("truncated: %1 ends within image %2")
                            .arg(QFileInfo(part.strFile).fileName())
                            .arg(nBefore + part.nImages + 1);
        }
        nBefore += part.nImages;
    }
    const bool bRead = !vecRead.empty();
    std::move(vecRead.begin(), vecRead.end(), std::back_inserter(vecImage));
    return bRead;
}

FrameHeader readTvipsHeader(const QString& strFileName, int nImage)
{
    FrameHeader result;
    SeriesHeader header;
    QString strReason;
    if (!parseHeader(headOf(strFileName, g_nSeriesHeader), strFileName, header, strReason)) {
        return result;
    }
    constexpr qint64 nMost = std::numeric_limits<int>::max();
    const std::vector<SeriesPart> vecPart = partsOf(strFileName, header, nMost, strReason);
    const QByteArray bytes = imageHeader(vecPart, nImage, header);
    result.nImages = int(std::clamp(imagesOf(vecPart), qint64(1), nMost));
    if (!bytes.isEmpty()) {
        result.size = QSize(header.nWidth, header.nHeight);
    }
    if (header.nKilovolts > 0 && header.nKilovolts <= 3000) {
        result.kilovolts = told(header.nKilovolts, "HT");
    }
    result.strDetector = QStringLiteral("TVIPS");
    tellImage(header, bytes, result);
    return result;
}

}  // namespace tessera
