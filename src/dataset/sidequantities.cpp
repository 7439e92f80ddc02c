#include "dataset/sidequantities.h"

#include "dataset/sidetexts.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

constexpr double g_dfDegreesPerRadian = 57.295779513082321;
// Numbers without a unit. Effective camera lengths are between some 0.1 and 10 m, voltages of transmission
// microscopes between 20 and 3000 kV, pixels of cameras between some 5 and 150 µm. With a
// pixel size of 0.1 Å⁻¹ a resolution of 1 Å would be ten pixels from the direct beam.
constexpr double g_dfLeastLengthInMm = 20;     // a smaller camera length is in metres
constexpr double g_dfLeastVoltageInV = 5000;   // this or a greater voltage is in V, a smaller one in kV
constexpr double g_dfLeastPixelInUm = 1;       // a smaller side of a detector's pixel is in mm
constexpr double g_dfGreatestPixelSize = 0.1;  // Å⁻¹; a greater number is no pixel size in Å⁻¹

// What a key stands for. An axis has the units of an angle, but is never certain.
enum class Quantity { Angle, Axis, Length, Time, Voltage, Wavelength, PixelSize, DetectorPixel };

struct KeyRow {
    QRegularExpression rePlainKey;  ///< matches keys by KeyAndUnit::strPlain
    ToldNumber SideTexts::*pTarget;
    Quantity quantity;
};

struct UnitRow {
    Quantity quantity;
    const char* pszUnit;
    double dfFactor;
};

/// Factors to the units of FrameHeader: degrees, mm, s, kV, Å, Å⁻¹ per pixel and, for pixels of the detector,
/// µm. The names are as unitName() makes them.
const UnitRow g_aUnit[] = {
    {Quantity::Angle, "°", 1},
    {Quantity::Angle, "deg", 1},
    {Quantity::Angle, "degree", 1},
    {Quantity::Angle, "degrees", 1},
    {Quantity::Angle, "degs", 1},
    {Quantity::Angle, "rad", g_dfDegreesPerRadian},
    {Quantity::Angle, "radian", g_dfDegreesPerRadian},
    {Quantity::Angle, "radians", g_dfDegreesPerRadian},
    {Quantity::Angle, "mrad", g_dfDegreesPerRadian * 1e-3},
    {Quantity::Length, "mm", 1},
    {Quantity::Length, "cm", 10},
    {Quantity::Length, "m", 1000},
    {Quantity::Time, "s", 1},
    {Quantity::Time, "sec", 1},
    {Quantity::Time, "second", 1},
    {Quantity::Time, "seconds", 1},
    {Quantity::Time, "ms", 1e-3},
    {Quantity::Voltage, "kv", 1},
    {Quantity::Voltage, "kev", 1},
    {Quantity::Voltage, "v", 1e-3},
    {Quantity::Voltage, "ev", 1e-3},
    {Quantity::Wavelength, "a", 1},
    {Quantity::Wavelength, "nm", 10},
    {Quantity::Wavelength, "pm", 0.01},
    {Quantity::PixelSize, "1/a", 1},
    {Quantity::PixelSize, "a-1", 1},
    {Quantity::PixelSize, "a^-1", 1},
    {Quantity::PixelSize, "/a", 1},
    {Quantity::PixelSize, "1/nm", 0.1},
    {Quantity::PixelSize, "nm-1", 0.1},
    {Quantity::PixelSize, "nm^-1", 0.1},
    {Quantity::PixelSize, "/nm", 0.1},
    {Quantity::PixelSize, "1/a/px", 1},
    {Quantity::PixelSize, "a-1/px", 1},
    {Quantity::PixelSize, "1/nm/px", 0.1},
    {Quantity::PixelSize, "nm-1/px", 0.1},
    {Quantity::DetectorPixel, "um", 1},
    {Quantity::DetectorPixel, "micron", 1},
    {Quantity::DetectorPixel, "microns", 1},
    {Quantity::DetectorPixel, "mm", 1000},
};

/// The keys that are of interest. The first row that matches counts.
const std::vector<KeyRow>& keyRows()
{
    const auto key = [](const char* psz) {
        return QRegularExpression(QStringLiteral("^(?:%1)$").arg(QLatin1String(psz)));
    };
    static const std::vector<KeyRow> s_vecRow = {
        {key("(start(ing)?|initial|first)(stage|rotation|tilt)?(angle|tilt|alpha)|"
             "(tilt|alpha|rotation|stage)(angle)?(start|from)|anglestart|startof(tilt|rotation)"),
         &SideTexts::tiltStart, Quantity::Angle},
        {key("(end(ing)?|final|last|stop)(stage|rotation|tilt)?(angle|tilt|alpha)|"
             "(tilt|alpha|rotation|stage)(angle)?(end|stop|to)|angleend|endof(tilt|rotation)"),
         &SideTexts::tiltEnd, Quantity::Angle},
        {key("osc(illation)?(angle|range|width|step)|(tilt|angle|rotation|angular|alpha)(step|increment|"
             "width)"
             "(size)?|stepsize|(angle|tilt|rotation)perframe|frame(width|angle)|tiltstepsize|angleincrement"),
         &SideTexts::tiltStep, Quantity::Angle},
        {key("exposure(time)?(perframe)?|frame(exposure|time)(time)?|counttime|imageexposuretime"),
         &SideTexts::exposure, Quantity::Time},
        {key("(effective|calibrated)?cameralength|detectordistance|sampletodetectordistance|"
             "effectivedistance"),
         &SideTexts::cameraLength, Quantity::Length},
        {key("(physical|detector|camera|sensor)pixel(size)?"), &SideTexts::detectorPixel,
         Quantity::DetectorPixel},
        {key("pixelsize|(reciprocal|diffraction|calibrated)pixelsize|aperpixel|imagepixelsize"),
         &SideTexts::pixelSize, Quantity::PixelSize},
        {key("(rotation|tilt)axis(angle|direction|orientation)?"), &SideTexts::rotationAxis, Quantity::Axis},
        {key("(electron)?wavelength|lambda"), &SideTexts::wavelength, Quantity::Wavelength},
        {key("(accelerat(ion|ing)|acc)?voltage|hightension|ht|(beam|electron)energy"), &SideTexts::kilovolts,
         Quantity::Voltage},
    };
    return s_vecRow;
}

/// A unit in lower case, with "a" for Å in all spellings, "u" for µ, and "-1" for ⁻¹.
QString unitName(QString str)
{
    str = str.trimmed().toLower();
    static const QRegularExpression s_reAngstrom(QStringLiteral("[åa\u212b]ngstr[öo]ms?|ang"));
    str.replace(s_reAngstrom, QStringLiteral("a"));
    // Å and µ have two code points each.
    str.replace(QChar(0xe5), QLatin1Char('a')).replace(QChar(0x212b), QLatin1Char('a'));
    str.replace(QChar(0xb5), QLatin1Char('u')).replace(QChar(0x3bc), QLatin1Char('u'));
    return str.replace(QStringLiteral("⁻¹"), QStringLiteral("-1"));
}

/// The factor of a unit; nothing where the quantity has no such unit.
std::optional<double> factorOf(Quantity quantity, const QString& strUnit)
{
    for (const UnitRow& row : g_aUnit) {
        if (row.quantity == quantity && strUnit == QString::fromUtf8(row.pszUnit)) {
            return row.dfFactor;
        }
    }
    return {};
}

/// Whether it is the unit of any quantity.
bool isUnit(const QString& strUnit)
{
    for (const UnitRow& row : g_aUnit) {
        if (strUnit == QString::fromUtf8(row.pszUnit)) {
            return true;
        }
    }
    return false;
}

/// A key, parted from the unit at its end.
struct KeyAndUnit {
    QString strPlain;  ///< key without the unit; only lower-case letters and digits: "cameralength"
    QString strUnit;   ///< as unitName() makes it; empty where there is none
};

/// Parts "Camera length (mm)", "pixel size [1/A]" or "exposure_time_ms". What is in brackets counts as a
/// unit, whatever it is but a remark on the value, "(nominal)"; a last word only if it is a unit.
KeyAndUnit keyAndUnit(const QString& strKey)
{
    static const QRegularExpression s_reBracket(QStringLiteral("[\\(\\[]([^\\)\\]]*)[\\)\\]]\\s*$"));
    static const QRegularExpression s_reRemark(
        QStringLiteral(
            "^\\s*(nominal|calibrated|measured|effective|approx.*|estimated|average|mean|actual)\\s*$"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression s_reSeparator(QStringLiteral("[^a-z0-9]"));
    KeyAndUnit key = {strKey.toLower(), {}};
    const QRegularExpressionMatch bracket = s_reBracket.match(strKey);
    if (bracket.hasMatch()) {
        const bool bRemark = s_reRemark.match(bracket.captured(1)).hasMatch();
        key = {strKey.left(bracket.capturedStart()).toLower(),
               bRemark ? QString() : unitName(bracket.captured(1))};
    } else {
        const int nLast = key.strPlain.lastIndexOf(QRegularExpression(QStringLiteral("[_ ]")));
        const QString strLast = unitName(key.strPlain.mid(nLast + 1));
        if (nLast > 0 && isUnit(strLast)) {
            key = {key.strPlain.left(nLast), strLast};
        }
    }
    key.strPlain.remove(s_reSeparator);
    return key;
}

/// How a value with a comma is to be read.
struct CommaReading {
    QString strValue;         ///< the value, with a point in place of a decimal comma
    bool bAmbiguous = false;  ///< the comma may also separate two numbers, or thousands
};

/// Interprets a comma as a decimal one if the value is one number with one comma and a unit, which may be
/// after the number or in the key. "200,000 V" may be thousands, and "55,55 um" two equal sides.
CommaReading withDecimalPoint(const QString& strValue, bool bUnitInKey)
{
    // Sign, whole number, comma, decimals and a unit; nothing may follow but blanks, separators and quotes.
    static const QRegularExpression s_reComma(QStringLiteral(
        "^\\s*([-+]?)(\\d+),(\\d+)(?![\\d.,:])\\s*((?:1/)?[^\\s,;\"'\\)\\]\\}\\d][^\\s,;\"'\\)\\]\\}]*)?"
        "[\\s,;\"']*$"));
    // The beginning of anything else with a comma between digits.
    static const QRegularExpression s_reList(QStringLiteral("^\\s*[-+]?\\d+,[-+]?\\d"));
    const QRegularExpressionMatch match = s_reComma.match(strValue);
    if (!match.hasMatch()) {
        return {strValue, s_reList.match(strValue).hasMatch()};
    }
    const QString strWhole = match.captured(2), strDecimals = match.captured(3);
    // Three digits after the comma and one to three before it may be thousands, but not if that is a 0.
    const bool bThousands = strDecimals.size() == 3 && strWhole.size() <= 3 && strWhole != QLatin1String("0");
    const bool bUnit = bUnitInKey || !match.captured(4).isEmpty();
    if (!bUnit || bThousands || strWhole == strDecimals) {
        return {strValue, true};
    }
    return {match.captured(1) + strWhole + '.' + strDecimals + ' ' + match.captured(4), false};
}

/// Converts a number without a unit from its most likely unit, with a doubt that names it.
/// @return NaN, with a doubt, where no unit is likely
double fromLikelyUnit(SideNumber& number, Quantity quantity, double df)
{
    const auto guessed = [&](double dfValue, const char* pszUnit) {
        number.strDoubt = QStringLiteral("%1 has no unit and was read as %2.")
                              .arg(QString::number(df, 'g', 6), QString::fromUtf8(pszUnit));
        return dfValue;
    };
    switch (quantity) {
        case Quantity::Length:
            return df < g_dfLeastLengthInMm ? guessed(df * 1000, "metres") : guessed(df, "millimetres");
        case Quantity::Voltage:
            return df >= g_dfLeastVoltageInV ? guessed(df / 1000, "volts") : guessed(df, "kilovolts");
        case Quantity::PixelSize:
            if (df <= g_dfGreatestPixelSize) {
                return guessed(df, "Å⁻¹");
            }
            break;
        case Quantity::DetectorPixel:
            return df < g_dfLeastPixelInUm ? guessed(df * 1000, "millimetres") : guessed(df, "micrometres");
        default:
            return df;  // degrees, seconds and Å are rarely given in other units
    }
    number.strDoubt = QStringLiteral("%1 has no unit; it is not used.").arg(QString::number(df, 'g', 6));
    return NAN;
}

}  // namespace

std::optional<SideNumber> sideNumber(const QString& strKey, const QString& strValue)
{
    // A number and what follows it up to a blank or a separator, the unit. The beginning of a list (1,2), of
    // a range or date (2024-05) or of a time (12:30) does not match.
    static const QRegularExpression s_reValue(
        QStringLiteral("^\\s*([-+]?(?:\\d+\\.?\\d*|\\.\\d+)(?:[eE][-+]?\\d+)?)(?!\\d|[,:-]\\d|:)\\s*([^\\s,;"
                       "\"'\\)\\]\\}]*)"));
    const KeyAndUnit key = keyAndUnit(strKey);
    const auto& vecRow = keyRows();
    const auto it = std::find_if(vecRow.begin(), vecRow.end(), [&](const KeyRow& row) {
        return row.rePlainKey.match(key.strPlain).hasMatch();
    });
    if (it == vecRow.end()) {
        return {};
    }
    SideNumber number;
    number.pTarget = it->pTarget;
    number.strKey = strKey.trimmed();
    const CommaReading comma = withDecimalPoint(strValue, !key.strUnit.isEmpty());
    const QRegularExpressionMatch match = s_reValue.match(comma.strValue);
    if (comma.bAmbiguous) {
        number.df = NAN;
        number.strDoubt =
            QStringLiteral("\"%1\" may be one number or several; it is not used.").arg(strValue.trimmed());
        return number;
    }
    if (!match.hasMatch()) {
        return {};
    }
    const double df = match.captured(1).toDouble();
    QString strUnit = match.captured(2).isEmpty() ? key.strUnit : unitName(match.captured(2));
    Quantity quantity = it->quantity == Quantity::Axis ? Quantity::Angle : it->quantity;
    const bool bAngle = quantity == Quantity::Angle;
    if (!std::isfinite(df) || (!bAngle && !(df > 0))) {
        return {};  // programs write 0 and -1 for unknown numbers
    }
    // A "pixel size" in µm or mm is that of the detector.
    if (quantity == Quantity::PixelSize && factorOf(Quantity::DetectorPixel, strUnit)) {
        number.pTarget = &SideTexts::detectorPixel;
        quantity = Quantity::DetectorPixel;
    }
    if (quantity == Quantity::PixelSize && strUnit == QLatin1String("px/a") && df <= g_dfGreatestPixelSize) {
        number.strDoubt = QStringLiteral("%1 px/Å can only be meant as Å⁻¹ per pixel.").arg(df);
        strUnit = QStringLiteral("1/a");
    }
    const std::optional<double> dfFactor = factorOf(quantity, strUnit);
    if (dfFactor) {
        number.df = df * *dfFactor;
    } else if (strUnit.isEmpty()) {
        number.df = fromLikelyUnit(number, quantity, df);
    } else {
        number.df = NAN;
        number.strDoubt = QStringLiteral("the unit \"%1\" is not known; the value is not used.").arg(strUnit);
    }
    if (it->quantity == Quantity::Axis && std::isfinite(number.df)) {
        number.strDoubt = QStringLiteral("its sense and zero are not certain.");
    }
    return number;
}

}  // namespace tessera
