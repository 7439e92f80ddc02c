#include "imagefiles/cbfsection.h"

#include <QList>

#include <algorithm>
#include <map>

namespace tessera {

namespace {

constexpr qint64 g_nFirstLook = 16 * 1024;       ///< bytes; cameras write 4 kB before the pixels
constexpr qint64 g_nLastLook = qint64(4) << 20;  ///< bytes; files with tables of imgCIF have more text
const QByteArray g_bytesSection("\n--CIF-BINARY-FORMAT-SECTION--");
const QByteArray g_bytesMarker("\x0c\x1a\x04\xd5", 4);  ///< precedes the data

using MimeItems = std::map<QByteArray, QByteArray>;

/// The lines "Key: value" by the key in lower case. A line that begins with a blank continues the one
/// before it.
MimeItems mimeItems(const QByteArray& bytesMime)
{
    MimeItems mapItem;
    QByteArray bytesKey;
    const QList<QByteArray> listLine = bytesMime.split('\n');
    for (const QByteArray& bytesLine : listLine) {
        const int nColon = bytesLine.indexOf(':');
        if (bytesLine.startsWith(' ') || bytesLine.startsWith('\t')) {
            mapItem[bytesKey] += ' ' + bytesLine.trimmed();
        } else if (nColon > 0) {
            bytesKey = bytesLine.left(nColon).trimmed().toLower();
            mapItem[bytesKey] = bytesLine.mid(nColon + 1).trimmed();
        }
    }
    return mapItem;
}

/// The whole number of an item: `nElse` where the item is missing, -1 where it is no whole number.
qint64 wholeNumber(const MimeItems& mapItem, const char* pszKey, qint64 nElse)
{
    const auto it = mapItem.find(pszKey);
    bool bNumber = false;
    const qint64 n = it != mapItem.end() ? it->second.toLongLong(&bNumber) : nElse;
    return bNumber || it == mapItem.end() ? n : -1;
}

QByteArray lowerText(const MimeItems& mapItem, const char* pszKey)
{
    const auto it = mapItem.find(pszKey);
    return it != mapItem.end() ? it->second.toLower().replace('"', "") : QByteArray();
}

/// The name of the packing as in the file, in lower case; empty where there is none.
QByteArray packingOf(const MimeItems& mapItem)
{
    const QByteArray bytesType = lowerText(mapItem, "content-type"), bytesKey("conversions=");
    const int n = bytesType.indexOf(bytesKey);
    return n < 0 ? QByteArray() : bytesType.mid(n + bytesKey.size()).split(';')[0].split(' ')[0].trimmed();
}

bool elementOf(const QByteArray& bytesType, PixelElement& element)
{
    static const std::map<QByteArray, PixelElement> s_mapElement = {
        {"signed 8-bit integer", PixelElement::Int8},
        {"unsigned 8-bit integer", PixelElement::UInt8},
        {"signed 16-bit integer", PixelElement::Int16},
        {"unsigned 16-bit integer", PixelElement::UInt16},
        {"signed 32-bit integer", PixelElement::Int32},
        {"unsigned 32-bit integer", PixelElement::UInt32},
        {"signed 64-bit integer", PixelElement::Int64},
        {"unsigned 64-bit integer", PixelElement::UInt64},
        {"signed 32-bit real ieee", PixelElement::Float32},
        {"signed 64-bit real ieee", PixelElement::Float64}};
    const auto it = s_mapElement.find(bytesType.simplified());
    if (it != s_mapElement.end()) {
        element = it->second;
    }
    return it != s_mapElement.end();
}

bool typeOf(const MimeItems& mapItem, CbfSection& section, QString& strReason)
{
    const QByteArray bytesPacking = packingOf(mapItem);
    const QByteArray bytesEncoding = lowerText(mapItem, "content-transfer-encoding");
    const QByteArray bytesElement = lowerText(mapItem, "x-binary-element-type");
    section.bByteOffset = bytesPacking == "x-cbf_byte_offset";
    section.pixels.element = PixelElement::Int32;
    section.pixels.bBigEndian = lowerText(mapItem, "x-binary-element-byte-order") == "big_endian";
    if (!section.bByteOffset && !bytesPacking.isEmpty() && bytesPacking != "x-cbf_none") {
        strReason = QStringLiteral("pixels packed by \"%1\" are not read")
                        .arg(QString::fromLatin1(bytesPacking.left(40)));
        return false;
    }
    if (!bytesEncoding.isEmpty() && bytesEncoding != "binary") {
        strReason = QStringLiteral("pixels as text (%1) are not read")
                        .arg(QString::fromLatin1(bytesEncoding.left(40)));
        return false;
    }
    const bool bKnown = bytesElement.isEmpty() || elementOf(bytesElement, section.pixels.element);
    const bool bReal = section.pixels.element == PixelElement::Float32 ||
                       section.pixels.element == PixelElement::Float64;
    if (!bKnown || (section.bByteOffset && bReal)) {
        strReason = QStringLiteral("pixels of the type \"%1\" are not read")
                        .arg(QString::fromLatin1(bytesElement.left(40)));
        return false;
    }
    return true;
}

bool sizeOf(const MimeItems& mapItem, qint64 nFileSize, CbfSection& section, QString& strReason)
{
    PlainPixels& pixels = section.pixels;
    pixels.nWidth = wholeNumber(mapItem, "x-binary-size-fastest-dimension", -1);
    pixels.nHeight = wholeNumber(mapItem, "x-binary-size-second-dimension", -1);
    if (!isImageSize(pixels.nWidth, pixels.nHeight, strReason)) {
        return false;
    }
    if (wholeNumber(mapItem, "x-binary-size-third-dimension", 1) != 1) {
        strReason = QStringLiteral("pixels of three dimensions are not read");
        return false;
    }
    const qint64 nCount = pixels.nWidth * pixels.nHeight;
    const qint64 nElements = wholeNumber(mapItem, "x-binary-number-of-elements", nCount);
    if (nElements != nCount) {
        strReason = QStringLiteral("%1 x %2 pixels, but %3 elements")
                        .arg(pixels.nWidth)
                        .arg(pixels.nHeight)
                        .arg(nElements);
        return false;
    }
    const qint64 nLeft = nFileSize - pixels.nOffset;
    const qint64 nTold = wholeNumber(mapItem, "x-binary-size", nLeft);
    section.nBytes = std::min(nLeft, nTold);
    // A packed pixel has at least one byte.
    if (section.nBytes < nCount) {
        strReason = QStringLiteral("truncated: %1 bytes of pixels, but %2 x %3 of them")
                        .arg(std::max(section.nBytes, qint64(0)))
                        .arg(pixels.nWidth)
                        .arg(pixels.nHeight);
        return false;
    }
    return section.bByteOffset || holdsPixels(pixels, pixels.nOffset + section.nBytes, strReason);
}

}  // namespace

bool readCbfSection(QFile& file, CbfSection& section, QString& strReason)
{
    section = {};
    QByteArray bytesHead = file.read(g_nFirstLook);
    if (!bytesHead.startsWith("###CBF")) {
        strReason = QStringLiteral("not a CBF file: it does not begin with \"###CBF\"");
        return false;
    }
    const auto markerIn = [](const QByteArray& bytes) {
        const int nSection = bytes.indexOf(g_bytesSection);
        return nSection < 0 ? -1 : bytes.indexOf(g_bytesMarker, nSection);
    };
    const qint64 nMore = std::min(g_nLastLook, file.size()) - bytesHead.size();
    if (markerIn(bytesHead) < 0 && nMore > 0) {
        bytesHead += file.read(nMore);
    }
    const int nSection = bytesHead.indexOf(g_bytesSection), nMarker = markerIn(bytesHead);
    if (nMarker < 0) {
        strReason = QStringLiteral("%1 in the first %2 bytes")
                        .arg(nSection < 0 ? QStringLiteral("no binary section")
                                          : QStringLiteral("no beginning of the pixels"))
                        .arg(bytesHead.size());
        return false;
    }
    section.bytesText = bytesHead.left(nSection + 1);
    section.pixels.nOffset = nMarker + g_bytesMarker.size();
    const MimeItems mapItem = mimeItems(
        bytesHead.mid(nSection + g_bytesSection.size(), nMarker - nSection - g_bytesSection.size()));
    return typeOf(mapItem, section, strReason) && sizeOf(mapItem, file.size(), section, strReason);
}

}  // namespace tessera
