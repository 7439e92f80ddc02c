#include "exchange/correctiontable.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tessera {

namespace {

template <class T>
void append(QByteArray& bytes, T nValue)
{
    char achBytes[sizeof(T)];
    qToLittleEndian(nValue, achBytes);
    bytes.append(achBytes, sizeof achBytes);
}

/// Packs differences in one byte, or in two bytes after a mark, or in four bytes after two marks.
QByteArray packed(const std::vector<int>& listValue)
{
    const int nMostOfByte = 127, nMostOfTwo = 32767;
    QByteArray bytes;
    int nBefore = 0;
    for (const int nValue : listValue) {
        const int nStep = nValue - nBefore;
        if (std::abs(nStep) <= nMostOfByte) {
            append(bytes, qint8(nStep));
        } else {
            append(bytes, qint8(-128));
            if (std::abs(nStep) <= nMostOfTwo) {
                append(bytes, qint16(nStep));
            } else {
                append(bytes, qint16(-32768));
                append(bytes, qint32(nStep));
            }
        }
        nBefore = nValue;
    }
    return bytes;
}

}  // namespace

PlaceCorrections placeCorrections(const ExchangeGeometry& geometry)
{
    PlaneTerms<double> plane = geometry.source.plane;
    plane.centreX = plane.centreY = 0;  // places are relative to the beam already
    const double dfHundredths = 100, dfMostTold = 1e6;
    PlaceCorrections corrections;
    for (int y = 0; y < geometry.sizeFrame.height(); ++y) {
        for (int x = 0; x < geometry.sizeFrame.width(); ++x) {
            const FramePlace place = {x - geometry.beam.dfX, y - geometry.beam.dfY};
            const std::array<double, 2> flat = undistorted(plane, geometry.source.dfRadius, place);
            const double dfColumn = flat[0] - place.dfX, dfRow = flat[1] - place.dfY;
            const auto told = [&](double df) {
                return int(std::lround(std::clamp(dfHundredths * df, -dfMostTold, dfMostTold)));
            };
            corrections.listColumn.push_back(told(dfColumn));
            corrections.listRow.push_back(told(dfRow));
            corrections.dfMost = std::max(corrections.dfMost, std::hypot(dfColumn, dfRow));
        }
    }
    return corrections;
}

QByteArray byteOffsetCbf(const QByteArray& bytesName, const std::vector<int>& listValue, const QSize& size)
{
    const QByteArray bytesPixels = packed(listValue);
    const QByteArray bytesSum = QCryptographicHash::hash(bytesPixels, QCryptographicHash::Md5).toBase64();
    QByteArray bytes = "###CBF: VERSION 1.5\r\n\r\ndata_" + bytesName + "\r\n\r\n_array_data.data\r\n;\r\n";
    bytes +=
        "--CIF-BINARY-FORMAT-SECTION--\r\n"
        "Content-Type: application/octet-stream;\r\n"
        "     conversions=\"x-CBF_BYTE_OFFSET\"\r\n"
        "Content-Transfer-Encoding: BINARY\r\n";
    bytes += "X-Binary-Size: " + QByteArray::number(bytesPixels.size()) + "\r\n";
    bytes +=
        "X-Binary-ID: 1\r\n"
        "X-Binary-Element-Type: \"signed 32-bit integer\"\r\n"
        "X-Binary-Element-Byte-Order: LITTLE_ENDIAN\r\n";
    bytes += "Content-MD5: " + bytesSum + "\r\n";
    bytes += "X-Binary-Number-of-Elements: " + QByteArray::number(qint64(listValue.size())) + "\r\n";
    bytes += "X-Binary-Size-Fastest-Dimension: " + QByteArray::number(size.width()) + "\r\n";
    bytes += "X-Binary-Size-Second-Dimension: " + QByteArray::number(size.height()) + "\r\n";
    bytes += "X-Binary-Size-Padding: 0\r\n\r\n";
    bytes += QByteArray("\x0c\x1a\x04\xd5", 4) + bytesPixels;
    bytes += "\r\n--CIF-BINARY-FORMAT-SECTION----\r\n;\r\n";
    return bytes;
}

}  // namespace tessera
