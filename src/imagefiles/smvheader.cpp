#include "imagefiles/smvheader.h"

#include <QList>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessera {

namespace {

constexpr qint64 g_nFirstLook = 4096;           ///< bytes; HEADER_BYTES is at the beginning
constexpr qint64 g_nLongestText = 1024 * 1024;  ///< bytes; d*TREK headers of image plates have some 16 kB

struct ElementName {
    const char* pszName;
    PixelElement element;
};

/// The names in TYPE and Data_type, without words that do not matter.
constexpr ElementName g_aElement[] = {
    {"unsigned short", PixelElement::UInt16}, {"short", PixelElement::Int16},
    {"signed short", PixelElement::Int16},    {"unsigned char", PixelElement::UInt8},
    {"signed char", PixelElement::Int8},      {"unsigned long", PixelElement::UInt32},
    {"unsigned", PixelElement::UInt32},       {"long", PixelElement::Int32},
    {"signed long", PixelElement::Int32},     {"float", PixelElement::Float32}};

/// Reads the items of the text.
/// @return whether the text has its end, the line with "}". A brace within a line is no end, as programs
///         have left placeholders in braces.
bool parseItems(const QByteArray& bytesText, std::map<QByteArray, QByteArray>& mapItem)
{
    const QList<QByteArray> listLine = bytesText.mid(bytesText.indexOf('{') + 1).split('\n');
    for (const QByteArray& bytesLine : listLine) {
        const QByteArray bytesItem = bytesLine.trimmed();
        if (bytesItem.startsWith('}')) {
            return true;
        }
        const int nEquals = bytesItem.indexOf('=');
        if (nEquals < 1) {
            continue;
        }
        const int nEnd = bytesItem.indexOf(';', nEquals);
        const QByteArray bytesValue = bytesItem.mid(nEquals + 1, nEnd < 0 ? -1 : nEnd - nEquals - 1);
        mapItem.insert({bytesItem.left(nEquals).trimmed().toUpper(), bytesValue.trimmed()});
    }
    return false;
}

bool elementOf(const SmvHeader& header, PixelElement& element, QString& strReason)
{
    const QByteArray bytesType = header.text(header.mapItem.count("TYPE") ? "TYPE" : "DATA_TYPE");
    if (bytesType.isEmpty()) {
        return true;  // unsigned 16-bit, as in nearly all files
    }
    QList<QByteArray> listWord = bytesType.toLower().replace('_', ' ').simplified().split(' ');
    listWord.removeAll("int");
    listWord.removeAll("ieee");
    const QByteArray bytesName = listWord.join(' ');
    for (const ElementName& row : g_aElement) {
        if (bytesName == row.pszName) {
            element = row.element;
            return true;
        }
    }
    strReason = QStringLiteral("pixels of the type \"%1\" are not read").arg(QString::fromLatin1(bytesType));
    return false;
}

bool byteOrderOf(const SmvHeader& header, bool& bBigEndian, QString& strReason)
{
    const QByteArray bytesOrder = header.text("BYTE_ORDER").toLower();
    bBigEndian = bytesOrder.startsWith("big");
    if (bBigEndian || bytesOrder.isEmpty() || bytesOrder.startsWith("little")) {
        return true;
    }
    strReason = QStringLiteral("BYTE_ORDER \"%1\" is not known").arg(QString::fromLatin1(bytesOrder));
    return false;
}

/// Finds the layout of the pixels from the items.
bool layoutOf(SmvHeader& header, QString& strReason)
{
    const QByteArray bytesDim = header.text("DIM"), bytesPacked = header.text("COMPRESSION");
    if (!bytesDim.isEmpty() && bytesDim.toInt() != 2) {
        strReason = QStringLiteral("DIM %1: only images of two dimensions are read")
                        .arg(QString::fromLatin1(bytesDim.left(20)));
        return false;
    }
    if (!bytesPacked.isEmpty() && bytesPacked.toLower() != "none") {
        strReason = QStringLiteral("packed pixels (COMPRESSION %1) are not read")
                        .arg(QString::fromLatin1(bytesPacked.left(20)));
        return false;
    }
    bool bWidth = false, bHeight = false;
    header.pixels.nWidth = header.text("SIZE1").toLongLong(&bWidth);
    header.pixels.nHeight = header.text("SIZE2").toLongLong(&bHeight);
    if (!bWidth || !bHeight) {
        strReason = QStringLiteral("the header has no SIZE1 and SIZE2");
        return false;
    }
    return isImageSize(header.pixels.nWidth, header.pixels.nHeight, strReason) &&
           elementOf(header, header.pixels.element, strReason) &&
           byteOrderOf(header, header.pixels.bBigEndian, strReason);
}

}  // namespace

QByteArray SmvHeader::text(const char* pszKey) const
{
    const auto it = mapItem.find(pszKey);
    return it != mapItem.end() ? it->second : QByteArray();
}

double SmvHeader::number(const char* pszKey) const
{
    bool bNumber = false;
    const double df = text(pszKey).toDouble(&bNumber);
    return bNumber && std::isfinite(df) ? df : std::numeric_limits<double>::quiet_NaN();
}

std::optional<SmvHeader> readSmvHeaderText(QFile& file, QString& strReason)
{
    QByteArray bytesText = file.read(g_nFirstLook);
    if (!bytesText.startsWith('{')) {
        strReason = bytesText.startsWith("OD SAPPHIRE")
                        ? QStringLiteral("an OD SAPPHIRE image, which is not read")
                        : QStringLiteral("not an SMV file: it does not begin with \"{\"");
        return {};
    }
    std::map<QByteArray, QByteArray> mapFirst;
    parseItems(bytesText, mapFirst);
    bool bNumber = false;
    const qint64 nHeader = mapFirst["HEADER_BYTES"].toLongLong(&bNumber);
    if (!bNumber || nHeader < 1) {
        strReason = QStringLiteral("the header has no HEADER_BYTES");
        return {};
    }
    if (nHeader > file.size()) {
        strReason = QStringLiteral("truncated: %1 of %2 header bytes").arg(file.size()).arg(nHeader);
        return {};
    }
    bytesText.truncate(static_cast<int>(std::min(nHeader, g_nFirstLook)));
    if (nHeader > bytesText.size()) {
        bytesText += file.read(std::min(nHeader, g_nLongestText) - bytesText.size());
    }
    SmvHeader header;
    if (!parseItems(bytesText, header.mapItem)) {
        strReason = QStringLiteral("the header does not end within its %1 bytes").arg(nHeader);
        return {};
    }
    header.pixels.nOffset = nHeader;
    if (!layoutOf(header, strReason)) {
        return {};
    }
    return header;
}

bool holdsSmvPixels(const SmvHeader& header, qint64 nFileSize, QString& strReason)
{
    constexpr qint64 nPadding = 4096;  // bytes, a block of any disk
    if (!holdsPixels(header.pixels, nFileSize, strReason)) {
        return false;
    }
    const qint64 nRow = header.pixels.nWidth * sizeOfElement(header.pixels.element);
    const qint64 nLeft = nFileSize - header.pixels.nOffset - nRow * header.pixels.nHeight;
    if (nLeft >= std::max(nRow, nPadding)) {
        strReason = QStringLiteral(
                        "%1 bytes are left behind SIZE1 x SIZE2 = %2 x %3 pixels, so these are wrong")
                        .arg(nLeft)
                        .arg(header.pixels.nWidth)
                        .arg(header.pixels.nHeight);
        return false;
    }
    return true;
}

}  // namespace tessera
