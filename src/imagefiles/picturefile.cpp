#include "imagefiles/picturefile.h"

#include "imagefiles/pixelconvert.h"
#include "records/availablememory.h"
#include "records/shortmemory.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QtEndian>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

namespace tessera {

namespace {

/// Up to this many pixels the size in the header of a picture is trusted. For more pixels, the file must be
/// long enough at the best ratio of deflate, 1032, and eight pixels in a byte.
constexpr int64_t g_nTrustedPixels = int64_t(1) << 26;
constexpr int64_t g_nPixelsPerByte = 8 * 1032;
/// Length of a picture of as many pixels as an int counts, of 8 bytes each. Some formats are searched to
/// the end of the file.
constexpr int64_t g_nMostBytes = int64_t(1) << 34;
/// Up to this many pixels the available memory is not checked.
constexpr int64_t g_nSmallPixels = int64_t(1) << 24;

/// Why pixels of a BMP are missing; empty if none are. The reader itself does not tell.
QString cutBmp(const QByteArray& bytesHead, int64_t nFileSize)
{
    constexpr int nHeadSize = 54, nOldHead = 12;
    if (bytesHead.size() < nHeadSize) {
        return {};
    }
    const auto wordAt = [&](int n) { return qFromLittleEndian<quint32>(bytesHead.constData() + n); };
    const auto shortAt = [&](int n) { return qFromLittleEndian<quint16>(bytesHead.constData() + n); };
    int64_t nBytes = wordAt(34);  // length of packed pixels, if the file has it
    if (wordAt(14) == nOldHead) {
        nBytes = (int64_t(shortAt(18)) * shortAt(24) + 31) / 32 * 4 * shortAt(20);
    } else if (wordAt(30) != 1 && wordAt(30) != 2) {  // not run-length encoded
        nBytes = (int64_t(wordAt(18)) * shortAt(28) + 31) / 32 * 4 *
                 std::abs(
                     int64_t(static_cast<qint32>(wordAt(22))));  // below 0 where the first row comes first
    }
    const int64_t nNeeded = wordAt(10) + nBytes;
    return nNeeded <= nFileSize ? QString()
                                : QStringLiteral("truncated: %1 of %2 bytes").arg(nFileSize).arg(nNeeded);
}

/// Does the same for a JPEG, whose reader paints a missing part grey.
QString cutJpeg(const QByteArray& bytes)
{
    int n = 2;
    while (n + 4 <= bytes.size() && bytes[n] == '\xff' &&
           bytes[n + 1] != '\xda') {  // to the beginning of a scan
        n += bytes[n + 1] == '\xff' ? 1 : 2 + qFromBigEndian<quint16>(bytes.constData() + n + 2);
    }
    // Within a scan, a byte 0xff of the pixels is followed by 0.
    return n < bytes.size() && bytes.indexOf("\xff\xd9", n) >= 0 ? QString()
                                                                 : QStringLiteral("truncated: no end marker");
}

/// Why a picture that was read is not complete; empty if it is, or if the reader of its format would have
/// told.
QString cutPicture(const QString& strFileName, const QByteArray& bytesFormat)
{
    QFile file(strFileName);
    if (bytesFormat == "bmp" && file.open(QIODevice::ReadOnly)) {
        return cutBmp(file.read(54), file.size());
    }
    if (bytesFormat == "jpeg" && file.open(QIODevice::ReadOnly)) {
        return cutJpeg(file.readAll());
    }
    return {};
}

std::unique_ptr<CImgObj<float>> imageFromPicture(const QImage& picture)
{
    auto pImage = std::make_unique<CImgObj<float>>();
    if (!pImage->Create(picture.width(), picture.height())) {
        throw std::bad_alloc();
    }
    float* pfTarget = pImage->Data();
    if (picture.format() ==
        QImage::Format_Grayscale16) {  // counts; a conversion would keep only the upper half of the bits
        const size_t nWidth = size_t(picture.width());
        for (int y = 0; y < picture.height(); ++y) {
            convertPixels<quint16, false>(picture.constScanLine(y), nWidth, pfTarget + size_t(y) * nWidth);
        }
        return pImage;
    }
    constexpr int nStrip = 64;  // rows converted together, as a copy of all would need 4 bytes per pixel
    for (int nTop = 0; nTop < picture.height(); nTop += nStrip) {
        const QImage strip = picture.copy(0, nTop, picture.width(), std::min(nStrip, picture.height() - nTop))
                                 .convertToFormat(QImage::Format_RGB32);
        if (strip.isNull()) {
            throw std::bad_alloc();  // this is how QImage reports a lack of memory
        }
        for (int y = 0; y < strip.height(); ++y) {
            const QRgb* pSource = reinterpret_cast<const QRgb*>(strip.constScanLine(y));
            for (int x = 0; x < strip.width(); ++x) {
                *pfTarget++ = static_cast<float>(19 * (qRed(pSource[x]) + 2 * qGreen(pSource[x])) +
                                                 7 * qBlue(pSource[x]));
            }
        }
    }
    return pImage;
}
}  // namespace

bool mayBePicture(const QString& strFileName, QString& strReason)
{
    const QFileInfo info(strFileName);
    if (info.exists() && !info.isFile()) {
        strReason = QStringLiteral("not a file");  // as opening a pipe would wait for its writer
        return false;
    }
    if (info.size() > g_nMostBytes) {
        strReason = QStringLiteral("%1 bytes; a picture may have %2").arg(info.size()).arg(g_nMostBytes);
        return false;
    }
    return true;
}

int ReadPicture(const QString& strFileName, ImageList& vecImage, QString& strReason)
{
    if (!mayBePicture(strFileName, strReason)) {
        return 0;
    }
    const QFileInfo info(strFileName);
    QImageReader reader(strFileName);
    const QSize size = reader.size();  // -1, -1 if the size is known only after reading
    const int64_t nWidth = std::abs(static_cast<int64_t>(size.width()));
    const int64_t nHeight = std::abs(
        static_cast<int64_t>(size.height()));  // negative for a BMP stored from the top
    const int64_t nPixels = nWidth * nHeight;
    if (nPixels > std::numeric_limits<int>::max() ||
        (nPixels > g_nTrustedPixels && nPixels / g_nPixelsPerByte > info.size())) {
        strReason = QStringLiteral("%1 x %2 pixels in a file of %3 bytes")
                        .arg(QString::number(size.width()), QString::number(size.height()),
                             QString::number(info.size()));
        return 0;
    }
    constexpr uint64_t nBytesPerPixel = 8 + sizeof(float);  // of the largest format and the frame together
    const uint64_t nBytes = static_cast<uint64_t>(nPixels) * nBytesPerPixel;
    if (nPixels > g_nSmallPixels && !hasMemoryFor(nBytes)) {
        throw CShortMemory(QStringLiteral("%1: a picture of %2 x %3 pixels")
                               .arg(strFileName, QString::number(nWidth), QString::number(nHeight)),
                           nBytes);
    }
    const QByteArray bytesFormat = reader.format();
    // Pixels that the file does not have keep their values in the given picture: black.
    QImage picture;
    const int nFormat = static_cast<int>(reader.imageFormat());  // may be any number for a damaged JPEG
    if (nFormat > QImage::Format_Invalid && nFormat < QImage::NImageFormats) {
        picture = QImage(static_cast<int>(nWidth), static_cast<int>(nHeight),
                         static_cast<QImage::Format>(nFormat));
        picture.fill(0);
    }
    if (!reader.read(&picture)) {
        strReason = reader.errorString();
        return 0;
    }
    strReason = cutPicture(strFileName, bytesFormat);
    if (static_cast<int64_t>(picture.width()) * picture.height() > std::numeric_limits<int>::max()) {
        strReason = QStringLiteral("%1 x %2 pixels").arg(picture.width()).arg(picture.height());
        return 0;
    }
    vecImage.push_back(imageFromPicture(picture));
    return 1;
}

QSize pictureSize(const QString& strFileName)
{
    QString strReason;
    return QFileInfo(strFileName).isFile() && mayBePicture(strFileName, strReason)
               ? QImageReader(strFileName).size()
               : QSize();
}

}  // namespace tessera
