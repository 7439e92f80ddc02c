#include "imagefiles/mrcextended.h"

#include "imagefiles/feirecord.h"

#include <QString>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tessera {

namespace {

constexpr qint64 g_nHeaderSize = 1024;

/// Reads up to nSize bytes of the extended header at nOffset; fewer at its end.
QByteArray bytesAt(QFile& file, const MrcExtended& extended, quint64 nOffset, qint64 nSize)
{
    if (nOffset >= extended.nBytes || !file.seek(g_nHeaderSize + qint64(nOffset))) {
        return {};
    }
    return file.read(std::min(nSize, qint64(extended.nBytes - nOffset)));
}

template <class T>
T number(const QByteArray& bytes, int nOffset, bool bBigEndian)
{
    const char* const p = bytes.constData() + nOffset;
    return bBigEndian ? qFromBigEndian<T>(p) : qFromLittleEndian<T>(p);
}

double real(const QByteArray& bytes, int nOffset, bool bBigEndian)
{
    const quint32 nBits = number<quint32>(bytes, nOffset, bBigEndian);
    float f;
    std::memcpy(&f, &nBits, sizeof(f));
    return double(f);
}

void tellFei(QFile& file, const MrcExtended& extended, int nImage, FrameHeader& header)
{
    const std::optional<FeiRecordSize> size = feiRecordSize(bytesAt(file, extended, 0, 4),
                                                            extended.bBigEndian);
    if (!size) {
        return;
    }
    const auto [nSize, bBigEndian] = *size;
    const QByteArray bytes = bytesAt(file, extended, quint64(nImage) * quint64(nSize), nSize);
    if (bytes.size() == nSize && number<qint32>(bytes, 0, bBigEndian) == nSize) {
        tellFeiRecord(bytes, bBigEndian, QString::fromLatin1(extended.bytesKind), nImage, header);
    }
}

/// The bytes of a section in a file of SerialEM by the flags of its fields; 0 when the header gives another
/// number.
int serialEmSize(const MrcExtended& extended)
{
    const int anBytes[] = {2, 6, 4, 2, 2, 4, 2, 4, 2, 4, 2};  // for the flags 1, 2, 4, ... 1024
    int nSize = 0;
    for (int i = 0; i < 11; ++i) {
        nSize += (extended.nReals >> i & 1) * anBytes[i];
    }
    const bool bFits = nSize > 0 && nSize == extended.nIntegers && extended.nReals > 0 &&
                       extended.nReals < 1 << 11 &&
                       quint64(nSize) * quint64(std::max(extended.nSections, 0)) <= extended.nBytes;
    return bFits ? nSize : 0;
}

void tellTilt(double df, const char* pszSource, FrameHeader& header)
{
    if (std::abs(df) <= 360) {  // false for NaN
        header.tilt = {df, QLatin1String(pszSource)};
    }
}

void tellSerialEm(QFile& file, const MrcExtended& extended, int nImage, FrameHeader& header)
{
    const int nSize = serialEmSize(extended);
    const QByteArray bytes = bytesAt(file, extended, quint64(nImage) * quint64(nSize), nSize);
    if ((extended.nReals & 1) != 0 && bytes.size() == nSize) {
        tellTilt(number<qint16>(bytes, 0, extended.bBigEndian) / 100., "SERI: tilt angle", header);
    }
}

/// Reads the older records of FEI: 1024 in each file, each of 32 real numbers.
void tellOldFei(const QByteArray& bytes, bool bBigEndian, FrameHeader& header)
{
    const auto value = [&](int i) { return real(bytes, 4 * i, bBigEndian); };
    const double dfVolts = value(13), dfExposure = value(8), dfPixel = value(11), dfAxis = value(10);
    // A record that was not filled in has no voltage.
    if (!(dfVolts > 0 && std::isfinite(dfVolts))) {
        return;
    }
    header.kilovolts = {dfVolts / 1000, QStringLiteral("FEI: HT")};
    tellTilt(value(0), "FEI: alpha tilt", header);
    if (dfExposure > 0 && std::isfinite(dfExposure)) {
        header.exposure = {dfExposure, QStringLiteral("FEI: exposure time")};
    }
    if (dfPixel > 1 && std::isfinite(dfPixel)) {  // 1/m; in an image it would be a small fraction of a metre
        header.pixelSize = {dfPixel * 1e-10, QStringLiteral("FEI: pixel size")};
    }
    if (dfAxis != 0 && std::abs(dfAxis) <= 360) {
        header.listDoubt +=
            QStringLiteral("A tilt axis of %1 degrees is given, but not its zero and sense; it is not used")
                .arg(dfAxis);
    }
}

void tellAgard(QFile& file, const MrcExtended& extended, int nImage, FrameHeader& header)
{
    constexpr int nOldFeiBytes = 131072, nOldFeiRecord = 128;
    // Some programs have written the bytes of a section in place of its integers.
    const int nIntegers = extended.nIntegers == 128 && extended.nReals == 32 ? 0 : extended.nIntegers;
    if (nIntegers < 0 || extended.nReals < 1) {
        return;
    }
    const qint64 nSize = 4 * (qint64(nIntegers) + extended.nReals);
    const bool bOldFei = extended.nBytes == nOldFeiBytes && nSize == nOldFeiRecord && nIntegers == 0;
    if (!bOldFei && extended.bytesKind != "AGAR") {
        return;
    }
    const QByteArray bytes = bytesAt(file, extended, quint64(nImage) * quint64(nSize), nSize);
    if (bytes.size() != nSize) {
        return;
    }
    if (bOldFei) {
        tellOldFei(bytes, extended.bBigEndian, header);
    } else {
        tellTilt(real(bytes, 4 * nIntegers, extended.bBigEndian), "AGAR: first number", header);
    }
}

}  // namespace

void tellMrcExtended(QFile& file, const MrcExtended& extended, int nImage, FrameHeader& header)
{
    if (extended.bytesKind == "FEI1" || extended.bytesKind == "FEI2") {
        tellFei(file, extended, nImage, header);
    } else if (serialEmSize(extended) > 0 && extended.bytesKind != "AGAR") {
        tellSerialEm(file, extended, nImage, header);
    } else if (extended.bytesKind == "AGAR" || extended.bytesKind.trimmed().isEmpty() ||
               extended.bytesKind == QByteArray(4, 0)) {
        tellAgard(file, extended, nImage, header);
    }
}

}  // namespace tessera
