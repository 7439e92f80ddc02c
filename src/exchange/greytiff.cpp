#include "exchange/greytiff.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace tessera {

namespace {

enum FieldType : quint16 { FieldShort = 3, FieldLong = 4 };

struct Field {
    quint16 nTag;
    FieldType type;
    quint32 nValue;
};

template <class T>
void append(QByteArray& bytes, T nValue)
{
    char achBytes[sizeof(T)];
    qToLittleEndian(nValue, achBytes);
    bytes.append(achBytes, sizeof achBytes);
}

const quint32 g_nDirectory = 8;  // place of the fields

}  // namespace

QByteArray greyTiff(const CImgObj<float>& image, int nBits)
{
    const qint64 nPixels = qint64(image.Width()) * image.Height();
    const qint64 nBytes = nPixels * (nBits / 8);
    const qint64 nMost = qint64(1) << 30;
    if (nPixels == 0 || nBytes > nMost) {
        return {};
    }
    const quint32 nNone = 1, nBlackIsZero = 1, nUnsigned = 1, nSigned = 2;
    const quint16 nFields = 10;
    const quint32 nPixelPlace = g_nDirectory + 2 + 12 * nFields + 4;
    const Field aField[nFields] = {{256, FieldLong, quint32(image.Width())},
                                   {257, FieldLong, quint32(image.Height())},
                                   {258, FieldShort, quint32(nBits)},
                                   {259, FieldShort, nNone},  // compression
                                   {262, FieldShort, nBlackIsZero},
                                   {273, FieldLong, nPixelPlace},
                                   {277, FieldShort, 1},  // samples per pixel
                                   {278, FieldLong, quint32(image.Height())},
                                   {279, FieldLong, quint32(nBytes)},
                                   {339, FieldShort, nBits == 16 ? nUnsigned : nSigned}};
    QByteArray bytes("II*\0", 4);
    append(bytes, g_nDirectory);
    append(bytes, nFields);
    for (const Field& field : aField) {
        append(bytes, field.nTag);
        append(bytes, quint16(field.type));
        append(bytes, quint32(1));
        append(bytes, field.nValue);  // a short value is in the first two bytes
    }
    append(bytes, quint32(0));  // no further image
    const int nHeader = bytes.size();
    bytes.resize(nHeader + int(nBytes));
    char* pTarget = bytes.data() + nHeader;
    for (qint64 n = 0; n < nPixels; ++n) {
        const double dfValue = std::isnan(image.Data()[n]) ? 0 : std::round(double(image.Data()[n]));
        if (nBits == 16) {
            qToLittleEndian(quint16(std::clamp(dfValue, 0.0, 65535.0)), pTarget + 2 * n);
        } else {
            const double dfMost = std::numeric_limits<qint32>::max();
            qToLittleEndian(qint32(std::clamp(dfValue, -dfMost, dfMost)), pTarget + 4 * n);
        }
    }
    return bytes;
}

}  // namespace tessera
