#include "imagefiles/feirecord.h"

#include <QtEndian>

#include <cmath>
#include <cstring>
#include <limits>

namespace tessera {

namespace {

/// The offset of a field, and of the bit that says whether it is valid.
struct Field {
    int nMask;  ///< from 0
    int nBit;
    int nOffset;
};

const int g_anMask[] = {8, 297, 490, 748};  // offsets of the masks

const Field g_fieldApplication = {0, 3, 52}, g_fieldApplicationVersion = {0, 4, 68},
            g_fieldHighTension = {0, 5, 84}, g_fieldAlphaTilt = {0, 7, 100}, g_fieldTiltAxis = {0, 12, 140},
            g_fieldPixelX = {0, 14, 156}, g_fieldPixelY = {0, 15, 164}, g_fieldProjectionMode = {0, 26, 248},
            g_fieldCameraLength = {1, 0, 301}, g_fieldIntegrationTime = {1, 16, 419},
            g_fieldCamera = {1, 19, 435}, g_fieldDetector = {3, 7, 804}, g_fieldStartTilt = {3, 8, 820},
            g_fieldEndTilt = {3, 9, 828}, g_fieldTiltPerImage = {3, 10, 836}, g_fieldBeamX = {3, 12, 852},
            g_fieldBeamY = {3, 13, 856};

class CRecord {
public:
    CRecord(const QByteArray& bytes, bool bBigEndian) : m_bytes(bytes), m_bBigEndian(bBigEndian) {}

    /// A real number; NaN where the record does not have it.
    double real(const Field& field) const
    {
        double df = std::numeric_limits<double>::quiet_NaN();
        if (isFilledIn(field, sizeof(df))) {
            const quint64 nBits = number<quint64>(field.nOffset);
            std::memcpy(&df, &nBits, sizeof(df));
        }
        return std::isfinite(df) ? df : std::numeric_limits<double>::quiet_NaN();
    }
    double integer(const Field& field) const
    {
        return isFilledIn(field, 4) ? number<qint32>(field.nOffset)
                                    : std::numeric_limits<double>::quiet_NaN();
    }
    QString text(const Field& field) const
    {
        constexpr int nLength = 16;
        const QByteArray bytes = m_bytes.mid(field.nOffset, nLength);
        return isFilledIn(field, nLength)
                   ? QString::fromLatin1(bytes.left(int(qstrnlen(bytes.constData(), nLength)))).trimmed()
                   : QString();
    }

private:
    template <class T>
    T number(int nOffset) const
    {
        const char* const p = m_bytes.constData() + nOffset;
        return m_bBigEndian ? qFromBigEndian<T>(p) : qFromLittleEndian<T>(p);
    }
    bool isFilledIn(const Field& field, int nSize) const
    {
        const int nMask = g_anMask[field.nMask];
        return field.nOffset + nSize <= m_bytes.size() && nMask + 4 <= m_bytes.size() &&
               (number<quint32>(nMask) >> field.nBit & 1) != 0;
    }

    const QByteArray m_bytes;
    const bool m_bBigEndian;
};

ToldNumber told(double df, const QString& strSource)
{
    return std::isfinite(df) ? ToldNumber{df, strSource} : ToldNumber();
}

ToldNumber toldAbove0(double df, const QString& strSource)
{
    return df > 0 ? told(df, strSource) : ToldNumber();
}

bool isAngle(double df)
{
    return std::abs(df) <= 360;
}

void tellPixel(const CRecord& record, const QString& strKind, FrameHeader& header)
{
    // The size is in metres for images and in 1/m for diffraction patterns. No pixel of an image is as
    // large as a metre, and none of a pattern as small as 1/m. The mode alone does not decide, as a
    // microscope in STEM is in diffraction mode while it takes images.
    constexpr double dfSmallestOfPatterns = 1;
    const double dfX = record.real(g_fieldPixelX), dfY = record.real(g_fieldPixelY);
    if (!(dfX > dfSmallestOfPatterns)) {
        return;
    }
    if (record.integer(g_fieldProjectionMode) == 2) {  // imaging
        header.listDoubt += QStringLiteral(
            "The pixel size is that of a diffraction pattern, but the microscope is said to have "
            "been in imaging mode");
    }
    header.pixelSize = told(dfX * 1e-10, strKind + QStringLiteral(": pixel size X"));
    if (dfY > 0 && std::abs(dfY / dfX - 1) > 0.001) {
        header.listDoubt +=
            QStringLiteral(
                "The pixels are not square according to the header (%1 and %2 1/Å); the first is used")
                .arg(dfX * 1e-10)
                .arg(dfY * 1e-10);
    }
}

/// Start, end and step may be those of the frame or those of the whole run. A run of frames that rotated
/// during the exposure has as many steps as images, one of resting frames has one less.
void tellRange(const CRecord& record, const QString& strKind, int nImage, FrameHeader& header)
{
    const double dfStart = record.real(g_fieldStartTilt), dfEnd = record.real(g_fieldEndTilt),
                 dfTold = record.real(g_fieldTiltPerImage);
    if (!isAngle(dfTold) || dfTold == 0) {
        return;
    }
    const bool bRange = isAngle(dfStart) && isAngle(dfEnd) && dfStart != dfEnd;
    const double dfStep = bRange ? std::copysign(dfTold, dfEnd - dfStart) : dfTold;
    header.tiltStep = told(dfStep, strKind + QStringLiteral(": tilt per image"));
    if (!bRange) {
        return;
    }
    const QString strStart = strKind + QStringLiteral(": start tilt");
    const double dfSteps = (dfEnd - dfStart) / dfStep, dfOfRun = header.nImages;
    if (std::abs(dfSteps - 1) < 0.01 &&
        header.nImages != 2) {  // with two images it may be the step between them
        header.tiltStart = told(dfStart, strStart);
    } else if (header.nImages > 1 && std::abs(dfSteps - dfOfRun) < 0.5) {
        header.tiltStart = told(dfStart + nImage * dfStep, strStart);
    } else if (header.nImages > 1 && std::abs(dfSteps - (dfOfRun - 1)) < 0.5) {
        return;  // each image has its tilt
    } else {
        header.listDoubt += QStringLiteral(
                                "Start and end tilt (%1 and %2 degrees) are those of the whole recording; "
                                "the position of this frame in it is not given")
                                .arg(dfStart)
                                .arg(dfEnd);
    }
}

void tellAlpha(const CRecord& record, const QString& strKind, FrameHeader& header)
{
    double dfAlpha = record.real(g_fieldAlphaTilt);
    if (!isAngle(dfAlpha)) {
        return;
    }
    if (record.text(g_fieldApplicationVersion) == QLatin1String("4.4.0.4981")) {
        dfAlpha *= std::acos(-1.) / 180;
        header.listDoubt += QStringLiteral(
            "The alpha tilt was divided by 57.3, as the program of this version wrote "
            "it too large by that");
    } else if (dfAlpha != 0 && record.text(g_fieldApplication) == QLatin1String("Velox")) {
        header.listDoubt += QStringLiteral(
            "The alpha tilt is taken as degrees, but the program that wrote it uses radians elsewhere");
    }
    header.tilt = told(dfAlpha, strKind + QStringLiteral(": alpha tilt"));
}

void tellTilt(const CRecord& record, const QString& strKind, int nImage, FrameHeader& header)
{
    tellRange(record, strKind, nImage, header);
    if (!header.tiltStart.isTold()) {
        tellAlpha(record, strKind, header);
    }
    const double dfAxis = record.real(g_fieldTiltAxis);
    if (isAngle(dfAxis) && dfAxis != 0) {
        header.listDoubt +=
            QStringLiteral("A tilt axis of %1 degrees is given, but not its zero and sense; it is not used")
                .arg(dfAxis);
    }
}

void tellBeam(const CRecord& record, const QString& strKind, FrameHeader& header)
{
    const double dfX = record.integer(g_fieldBeamX), dfY = record.integer(g_fieldBeamY);
    // Programs leave 0 and 0 when the position is unknown.
    if (!(dfX >= 0 && dfX < header.size.width() && dfY >= 0 && dfY < header.size.height()) ||
        (dfX == 0 && dfY == 0)) {
        return;
    }
    header.beamX = told(dfX, strKind + QStringLiteral(": beam center X"));
    header.beamY = told(dfY, strKind + QStringLiteral(": beam center Y"));
    header.listDoubt += QStringLiteral("The row of the beam is taken as counted from the top");
}

}  // namespace

std::optional<FeiRecordSize> feiRecordSize(const QByteArray& bytesFirst, bool bBigEndian)
{
    // The first two versions have 768 and 888 bytes. Later ones may be longer, as the size is given.
    constexpr qint32 nSmallest = 768, nLargest = 4096;
    if (bytesFirst.size() < 4) {
        return {};
    }
    for (const bool bBig : {bBigEndian, !bBigEndian}) {
        const qint32 nSize = bBig ? qFromBigEndian<qint32>(bytesFirst.constData())
                                  : qFromLittleEndian<qint32>(bytesFirst.constData());
        if (nSize >= nSmallest && nSize <= nLargest) {
            return FeiRecordSize{nSize, bBig};
        }
    }
    return {};
}

void tellFeiRecord(const QByteArray& bytesRecord, bool bBigEndian, const QString& strKind, int nImage,
                   FrameHeader& header)
{
    const CRecord record(bytesRecord, bBigEndian);
    header.kilovolts = toldAbove0(record.real(g_fieldHighTension) / 1000, strKind + QStringLiteral(": HT"));
    if (record.integer(g_fieldProjectionMode) != 2) {  // imaging
        header.cameraLength = toldAbove0(record.real(g_fieldCameraLength) * 1000,
                                         strKind + QStringLiteral(": camera length"));
    }
    header.exposure = toldAbove0(record.real(g_fieldIntegrationTime),
                                 strKind + QStringLiteral(": integration time"));
    header.strDetector = record.text(g_fieldCamera);
    if (header.strDetector.isEmpty()) {
        header.strDetector = record.text(g_fieldDetector);
    }
    tellPixel(record, strKind, header);
    tellTilt(record, strKind, nImage, header);
    tellBeam(record, strKind, header);
}

}  // namespace tessera
