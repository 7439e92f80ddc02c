#include "imagefiles/tifftags.h"

#include <QMap>
#include <QRegularExpression>
#include <QStringList>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tessera {

namespace {

/// Stores a value with its source if it is above 0.
void tell(ToldNumber& told, double df, const char* pszSource)
{
    if (std::isfinite(df) && df > 0) {
        told = {df, QLatin1String(pszSource)};
    }
}

/// A text in any of the encodings found in these files: UTF-8, Latin-1, or letters as "\u00B5".
QString textOf(const QByteArray& bytes)
{
    const QString strUtf8 = QString::fromUtf8(bytes);
    QString str = strUtf8.contains(QChar::ReplacementCharacter) ? QString::fromLatin1(bytes) : strUtf8;
    str.replace(QStringLiteral("\\u00B5"), QStringLiteral("µ"), Qt::CaseInsensitive);
    str.replace(QStringLiteral("\\u00C5"), QStringLiteral("Å"), Qt::CaseInsensitive);
    str.replace(QStringLiteral("\\u212B"), QStringLiteral("Å"), Qt::CaseInsensitive);
    return str.replace(QChar(0x212b), QStringLiteral("Å")).replace(QChar(0x3bc), QStringLiteral("µ"));
}

/// The factor from a unit to Å⁻¹; 0 for another unit.
double perAngstrom(const QString& strUnit)
{
    QString str = strUnit.trimmed();
    str.remove(QLatin1Char('^')).replace(QStringLiteral("⁻¹"), QStringLiteral("-1")).remove(QLatin1Char(' '));
    for (const auto& [pszName, df] : {std::pair("nm", 0.1), {"A", 1.}, {"Å", 1.}, {"Angstrom", 1.}}) {
        const QString strName = QString::fromUtf8(pszName);
        if (str.compare(QStringLiteral("1/") + strName, Qt::CaseInsensitive) == 0 ||
            str.compare(strName + QStringLiteral("-1"), Qt::CaseInsensitive) == 0) {
            return df;
        }
    }
    return 0;
}

/// Lines "key: value" or "key=value"; the first one of equal keys counts.
QMap<QString, QString> linesOf(const QString& strText, QChar chSplit)
{
    QMap<QString, QString> map;
    for (const QString& strLine : strText.split(QLatin1Char('\n'))) {
        const int n = strLine.indexOf(chSplit);
        if (n > 0 && !map.contains(strLine.left(n).trimmed())) {
            map.insert(strLine.left(n).trimmed(), strLine.mid(n + 1).trimmed());
        }
    }
    return map;
}

/// A line of doubt for a scale of an image, or of an unknown unit.
QString unusedScale(const char* pszSource, double df, const QString& strUnit)
{
    return QStringLiteral(
               "%1 gives a pixel of %2 %3, which is not used: its unit is not one of reciprocal space")
        .arg(QLatin1String(pszSource), QString::number(df),
             strUnit.isEmpty() ? QStringLiteral("(no unit)") : strUnit);
}

/// Stores a pixel size in a unit of reciprocal space; any other becomes a line of doubt.
void tellPixel(double df, const QString& strUnit, const char* pszSource, FrameHeader& header)
{
    if (!(std::isfinite(df) && df > 0)) {
        return;
    }
    const double dfFactor = perAngstrom(strUnit);
    if (dfFactor > 0) {
        tell(header.pixelSize, df * dfFactor, pszSource);
    } else if (strUnit != QStringLiteral("pixel") && !strUnit.isEmpty()) {
        header.listDoubt.append(unusedScale(pszSource, df, strUnit));
    }
}

/// Reads the tags of ImageJ. XResolution is in pixels per unit, and the unit is in the text.
void tellImageJ(CTiffBytes& tiff, const TiffDirectory& directory, const QString& strText, FrameHeader& header)
{
    const double dfX = 1 / tiff.real(directory, TiffTag::XResolution);
    const double dfY = 1 / tiff.real(directory, TiffTag::YResolution);
    const QString strUnit = linesOf(strText, QLatin1Char('=')).value(QStringLiteral("unit"));
    constexpr double dfSame = 1e-3;  // both numbers are rounded to six digits
    if (std::abs(dfX - dfY) > dfSame * std::abs(dfX)) {
        header.listDoubt.append(
            QStringLiteral("ImageJ: XResolution and YResolution differ; they are not used"));
    } else {
        tellPixel(dfX, strUnit, "ImageJ: XResolution", header);
    }
}

/// Reads the text of instamatic, a YAML mapping whose numbers have no units.
void tellInstamatic(const QString& strText, FrameHeader& header)
{
    const QMap<QString, QString> map = linesOf(strText, QLatin1Char(':'));
    header.strDetector = map.value(QStringLiteral("ImageCameraName"));
    header.strDetector.remove(QLatin1Char('\'')).remove(QLatin1Char('"'));
    tell(header.exposure, map.value(QStringLiteral("ImageExposureTime")).toDouble(), "ImageExposureTime");
    if (header.exposure.isTold()) {
        header.listDoubt.append(QStringLiteral("ImageExposureTime has no unit; it is taken as seconds"));
    }
    const double dfPixel = map.value(QStringLiteral("ImagePixelsize")).toDouble();
    if (dfPixel > 0) {
        header.listDoubt.append(unusedScale("ImagePixelsize", dfPixel, QString()));
    }
}

/// Reads the lines of Dectris, such as "# Exposure_time 0.09 s", which include the unit.
void tellDectris(const QString& strText, FrameHeader& header)
{
    const auto number = [&](const char* pszKey, const char* pszUnit) {
        const QRegularExpression pattern(QStringLiteral("#\\s*%1[ :=]+([-+.0-9eE]+)\\s*%2\\b")
                                             .arg(QLatin1String(pszKey), QLatin1String(pszUnit)));
        const QRegularExpressionMatch match = pattern.match(strText);
        return match.hasMatch() ? match.captured(1).toDouble() : 0;
    };
    const QRegularExpression detector(QStringLiteral("#\\s*Detector: ([^\\n\\r]+)"));
    header.strDetector = detector.match(strText).captured(1).trimmed();
    tell(header.exposure, number("Exposure_time", "s"), "Exposure_time");
    tell(header.detectorPixel, number("Pixel_size", "m") * 1e6, "Pixel_size");
    tell(header.cameraLength, number("Detector_distance", "m") * 1e3, "Detector_distance");
    tell(header.saturation, number("Count_cutoff", "counts"), "Count_cutoff");
}

/// Reads the structure of EM-MENU (TVIPS), whose numbers are always little-endian.
void tellTvips(CTiffBytes& tiff, const TiffDirectory& directory, FrameHeader& header)
{
    constexpr int nSize = 6312, nVersionTwo = 2, nMark = 6308;
    const uint64_t nPlace = tiff.wholeNumber(directory, TiffTag::Tvips, 0);
    const QByteArray bytes = nPlace > 0 ? tiff.bytesAt(nPlace, nSize) : QByteArray();
    const auto word = [&](int n) { return qFromLittleEndian<qint32>(bytes.constData() + n); };
    if (bytes.isEmpty() || word(0) != nVersionTwo || uint32_t(word(nMark)) != 0xaaaaaaaaU) {
        return;
    }
    const auto real = [&](int n) {
        const qint32 nBits = word(n);
        float f;
        std::memcpy(&f, &nBits, sizeof(f));
        return double(f);
    };
    constexpr double dfLeastVolts = 10000;  // limit between kilovolts and volts
    const double dfHt = real(3272);
    tell(header.kilovolts, dfHt >= dfLeastVolts ? dfHt / 1000 : dfHt, "TVIPS: HT");
    constexpr double dfNanometres = 1e-3;
    if (real(3928) == real(3932)) {
        tell(header.detectorPixel, real(3928) * dfNanometres * std::max(word(3944), 1),
             "TVIPS: physical pixel");
        header.listDoubt.append(
            QStringLiteral("TVIPS: physical pixel has no unit; it is taken as nanometres, before binning"));
    }
    tell(header.exposure, real(3952) / 1000, "TVIPS: exposure");
    if (header.exposure.isTold()) {
        header.listDoubt.append(QStringLiteral("TVIPS: exposure has no unit; it is taken as milliseconds"));
    }
    const double dfAlpha = real(3552 + 12);
    if (std::isfinite(dfAlpha) && std::abs(dfAlpha) <= 90 && dfAlpha != 0) {
        header.tilt = {dfAlpha, QStringLiteral("TVIPS: stage alpha")};
    }
    if (real(2968) > 0) {
        header.listDoubt.append(unusedScale("TVIPS: pixel size", real(2968), QStringLiteral("nm or 1/nm")));
    }
}

/// Reads the name of the camera from the tags of Olympus SIS, and reports its scale in metres as a doubt.
void tellSis(CTiffBytes& tiff, const TiffDirectory& directory, FrameHeader& header)
{
    const TiffEntry* const pEntry = directory.find(TiffTag::Sis);
    if (!pEntry) {
        return;
    }
    // The tag has the place of the structure, or the structure itself.
    const uint64_t nPlace = pEntry->nCount > 1 ? pEntry->nPlace
                                               : tiff.wholeNumber(directory, TiffTag::Sis, 0);
    const QByteArray head = tiff.bytesAt(nPlace, 60);
    if (!head.startsWith("SIS0")) {
        return;
    }
    const int nEntries = qFromLittleEndian<quint16>(head.constData() + 58);
    const uint64_t nBehind = tiff.fileSize() - nPlace - 60;
    const QByteArray entries = tiff.bytesAt(nPlace + 60, std::min(uint64_t(nEntries) * 8, nBehind));
    for (int n = 0; n + 8 <= entries.size(); n += 8) {
        constexpr uint64_t nSize = 80;
        if (qFromLittleEndian<quint16>(entries.constData() + n) != 1) {
            continue;
        }
        const QByteArray block = tiff.bytesAt(qFromLittleEndian<quint32>(entries.constData() + n + 4), nSize);
        if (!block.isEmpty()) {
            const quint64 nBits = qFromLittleEndian<quint64>(block.constData() + 12);
            double df;
            std::memcpy(&df, &nBits, sizeof(df));
            const double dfPixel = df * std::pow(10., qFromLittleEndian<qint16>(block.constData() + 10));
            header.strDetector = QString::fromLatin1(block.mid(46, 34).split('\0').front()).trimmed();
            if (std::isfinite(dfPixel) && dfPixel > 0) {
                header.listDoubt.append(unusedScale("SIS: calibration", dfPixel, QStringLiteral("m")));
            }
        }
        return;
    }
}

/// Reads the scale of DigitalMicrograph, which has a unit for each direction. Which is which matters only
/// where they differ.
void tellDm(CTiffBytes& tiff, const TiffDirectory& directory, FrameHeader& header)
{
    const QString strUnit = textOf(tiff.text(directory, TiffTag::DmUnitX));
    const double dfScale = tiff.real(directory, TiffTag::DmScaleX);
    if (strUnit == textOf(tiff.text(directory, TiffTag::DmUnitY)) &&
        dfScale == tiff.real(directory, TiffTag::DmScaleY)) {
        tellPixel(dfScale, strUnit, "DigitalMicrograph: scale", header);
    } else if (std::isfinite(dfScale)) {
        header.listDoubt.append(
            QStringLiteral("DigitalMicrograph: the scales of the two directions differ; they are not used"));
    }
}

/// Reads the first number of a line "PixelWidth=1e-9" of the section "[Scan]", metres.
void tellFei(CTiffBytes& tiff, const TiffDirectory& directory, FrameHeader& header)
{
    for (const TiffTag tag : {TiffTag::FeiSfeg, TiffTag::FeiHelios}) {
        const QString strText = textOf(tiff.text(directory, tag));
        const int nScan = strText.indexOf(QStringLiteral("[Scan]"));
        const double dfWidth = nScan < 0 ? 0
                                         : linesOf(strText.mid(nScan), QLatin1Char('='))
                                               .value(QStringLiteral("PixelWidth"))
                                               .toDouble();
        if (dfWidth > 0) {
            header.listDoubt.append(unusedScale("FEI: PixelWidth", dfWidth, QStringLiteral("m")));
        }
    }
}

}  // namespace

void tellTiffTags(CTiffBytes& tiff, const TiffDirectory& directory, FrameHeader& header)
{
    const QString strText = textOf(tiff.text(directory, TiffTag::ImageDescription));
    if (strText.startsWith(QStringLiteral("ImageJ="))) {
        tellImageJ(tiff, directory, strText, header);
    } else if (tiff.text(directory, TiffTag::Software).startsWith("instamatic")) {
        tellInstamatic(strText, header);
    } else if (strText.startsWith(QStringLiteral("# "))) {
        tellDectris(strText, header);
    }
    tellTvips(tiff, directory, header);
    tellSis(tiff, directory, header);
    tellDm(tiff, directory, header);
    tellFei(tiff, directory, header);
}

}  // namespace tessera
