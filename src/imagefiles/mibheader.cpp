#include "imagefiles/mibheader.h"

#include "records/regularfile.h"

#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QRegularExpression>

#include <algorithm>
#include <limits>

namespace tessera {

namespace {

constexpr int g_nFirstFields = 8;  ///< number of fields up to the layout of the chips

/// The depth of the counters. By the manual of Merlin it is the last field, but in files from before 2019
/// that is a setting of the chip with leading zeros.
int depthOf(const QList<QByteArray>& listField)
{
    const auto it = std::find_if(listField.rbegin(), listField.rend(),
                                 [](const QByteArray& field) { return !field.trimmed().isEmpty(); });
    for (const int nDepth : {1, 6, 12, 24}) {
        if (it != listField.rend() && it->trimmed() == QByteArray::number(nDepth)) {
            return nDepth;
        }
    }
    return 0;
}

bool pixelsOf(const QByteArray& field, MibPixels& pixels)
{
    const QList<QByteArray> listKind = {"U08", "U16", "U32", "R64"};
    const int nKind = listKind.indexOf(field);
    pixels = MibPixels(std::max(nKind, 0));
    return nKind >= 0;
}

/// Reads a layout such as "2x2", "3x1" or "2x2G". Any other text means one chip.
void parseLayout(const QByteArray& field, MibHeader& header)
{
    static const QRegularExpression s_rx(QStringLiteral("^([1-9])x([1-9])G?$"),
                                         QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = s_rx.match(QString::fromLatin1(field));
    header.nAcross = match.hasMatch() ? match.captured(1).toInt() : 1;
    header.nUp = match.hasMatch() ? match.captured(2).toInt() : 1;
}

/// Computes the size of the image from the size that the chips send.
bool sizeRawImage(MibHeader& header, QString& strReason)
{
    const bool bQuad = header.nChips == 4 && header.nAcross == 2 && header.nUp == 2;
    if (!bQuad && (header.nChips != 1 || header.nAcross != 1 || header.nUp != 1)) {
        strReason = QStringLiteral(
                        "raw frames of %1 x %2 chips are not read; those of one chip and of 2 x 2 are")
                        .arg(header.nAcross)
                        .arg(header.nUp);
        return false;
    }
    if (header.nDepth == 0) {
        strReason = QStringLiteral("raw frame without the depth of its counters");
        return false;
    }
    const int nColumns = g_nMibChip * header.nChips;
    // The two halves of counters of 24 bits follow each other and count as columns.
    if ((header.nColumns != nColumns && !(header.nDepth == 24 && header.nColumns == 2 * nColumns)) ||
        header.nRows > g_nMibChip) {
        strReason = QStringLiteral("raw frame of %1 x %2 pixels on chips of %3 x %3")
                        .arg(header.nColumns)
                        .arg(header.nRows)
                        .arg(g_nMibChip);
        return false;
    }
    header.nColumns = g_nMibChip * header.nAcross;
    header.nRows *= header.nUp;
    return true;
}

}  // namespace

qint64 MibHeader::pixelBytes() const
{
    const qint64 nPixels = qint64(nColumns) * nRows;
    switch (pixels) {
        case MibPixels::Byte:
            return nPixels;
        case MibPixels::Word:
            return nPixels * 2;
        case MibPixels::Long:
            return nPixels * 4;
        case MibPixels::Raw:
            break;
    }
    return nDepth == 1 ? nPixels / 8 : nDepth == 6 ? nPixels : nDepth == 12 ? nPixels * 2 : nPixels * 4;
}

bool MibHeader::isLike(const MibHeader& other) const
{
    return nBytes == other.nBytes && nChips == other.nChips && nColumns == other.nColumns &&
           nRows == other.nRows && pixels == other.pixels && nDepth == other.nDepth &&
           nAcross == other.nAcross && nUp == other.nUp;
}

qint64 mibHeaderBytes(const QByteArray& bytes, QString& strReason)
{
    const QList<QByteArray> listField = bytes.left(g_nMibLineLength).split(',');
    if (listField[0] != "MQ1" || listField.size() < 4) {
        strReason = bytes.size() < g_nMibLineLength
                        ? QStringLiteral("truncated: %1 header bytes").arg(bytes.size())
                        : QStringLiteral("no MIB header");
        return 0;
    }
    const int nBytes = listField[2].toInt();
    constexpr int nLargest = 99999;  // greatest number that fits into the field
    if (nBytes < g_nMibLineLength || nBytes > nLargest) {
        strReason = QStringLiteral("header of \"%1\" bytes").arg(QString::fromLatin1(listField[2]));
        return 0;
    }
    return nBytes;
}

std::optional<MibHeader> parseMibHeader(const QByteArray& bytes, QString& strReason)
{
    MibHeader header;
    header.nBytes = mibHeaderBytes(bytes, strReason);
    if (header.nBytes == 0) {
        return {};
    }
    if (bytes.size() < header.nBytes) {
        strReason = QStringLiteral("truncated: %1 of %2 header bytes").arg(bytes.size()).arg(header.nBytes);
        return {};
    }
    const QByteArray text(bytes.constData(), int(qstrnlen(bytes.constData(), uint(header.nBytes))));
    const QList<QByteArray> listField = text.split(',');
    if (listField.size() < g_nFirstFields) {
        strReason = QStringLiteral("header of %1 fields").arg(listField.size());
        return {};
    }
    header.nChips = listField[3].toInt();
    header.nColumns = listField[4].toInt();
    header.nRows = listField[5].toInt();
    if (header.nColumns < 1 || header.nRows < 1 ||
        header.nColumns > std::numeric_limits<int>::max() / header.nRows) {
        strReason = QStringLiteral("\"%1\" x \"%2\" pixels")
                        .arg(QString::fromLatin1(listField[4]), QString::fromLatin1(listField[5]));
        return {};
    }
    if (!pixelsOf(listField[6].trimmed(), header.pixels)) {
        strReason =
            QStringLiteral("pixels of the kind \"%1\" are not read").arg(QString::fromLatin1(listField[6]));
        return {};
    }
    parseLayout(listField[7].trimmed(), header);
    header.nDepth = depthOf(listField);
    header.dfShutter = listField.value(10).toDouble();
    header.bColour = listField.value(12).toInt() != 0;
    const QByteArray chip = listField.value(22).trimmed();
    header.strChip = chip == "3RX" ? QStringLiteral("Medipix 3RX") : QString();
    if (header.pixels == MibPixels::Raw && !sizeRawImage(header, strReason)) {
        return {};
    }
    return header;
}

QMap<QString, QString> mibSideFile(const QString& strFileName)
{
    constexpr qint64 nMost = 65536;  // bytes; such files have 2048 bytes
    QMap<QString, QString> mapValue;
    const QFileInfo info(strFileName);
    const QString strBase = info.path() + QLatin1Char('/') + info.completeBaseName();
    QFile file(strBase + QStringLiteral(".hdr"));
    QString strReason;
    if (!openRegularFile(file, QIODevice::ReadOnly, strReason)) {
        file.setFileName(strBase + QStringLiteral(".HDR"));
        if (!openRegularFile(file, QIODevice::ReadOnly, strReason)) {
            return mapValue;
        }
    }
    const QByteArray bytes = file.read(nMost);
    if (!bytes.startsWith("HDR")) {
        return mapValue;
    }
    for (const QByteArray& line : bytes.split('\n')) {
        const int nTab = line.indexOf('\t');
        QByteArray key = line.left(std::max(nTab, 0)).trimmed();
        if (nTab > 0 && key.endsWith(':')) {
            key = key.left(key.size() - 1).split('(')[0].trimmed();
            mapValue[QString::fromLatin1(key)] = QString::fromLatin1(line.mid(nTab + 1).trimmed());
        }
    }
    return mapValue;
}

}  // namespace tessera
