#include "dataset/calibration.h"

#include "dataset/pagerounding.h"
#include "records/reason.h"
#include "records/wholefile.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <vector>

namespace tessera {

namespace {

const char* const g_pszFormat = "tessera microscope calibration";
const int g_nVersion = 1;
const qint64 g_nMostBytes = 1 << 20;  // bytes; such files have about one KB
const double g_dfMostLength = 10000;  // the limit of project files
// The wavelengths of usual voltages differ by 10 % or more, the roundings of one wavelength by far less.
const double g_dfSameWavelength = 0.005;
// Pixel sizes are rarely known better than this; those of different camera lengths and binnings differ by
// far more.
const double g_dfSamePixelSize = 0.05;

/// A number of the file: key, range and member.
struct Field {
    const char* pszGroup;  ///< empty for the object itself
    const char* pszKey;
    double dfLow, dfHigh;
    double* pdfValue;
};

std::vector<Field> fieldsOf(Calibration& c)
{
    SeriesDistortion& d = c.distortion;
    const double dfTiny = 1e-6;  // smallest length that a project file accepts
    return {{"", "wavelength", dfTiny, g_dfMostLength, &c.dfWavelength},
            {"", "seriesPixelSize", dfTiny, g_dfMostLength, &c.dfSeriesPixelSize},
            {"", "rotationAxis", -180, 180, &c.dfRotationAxis},
            {"", "axisOutOfPlane", -45, 45, &d.dfAxisOutOfPlane},
            {"stretching", "amplitude", 0, 100, &c.dfStretchAmplitude},
            {"stretching", "azimuth", -360, 360, &c.dfStretchAzimuth},
            {"ellipse", "amplitude", -100, 100, &d.dfEllipseAmplitude},
            {"ellipse", "azimuth", -360, 360, &d.dfEllipseAzimuth},
            {"thirdOrder", "radial", -100, 100, &d.dfThirdOrderRadial},
            {"thirdOrder", "spiral", -100, 100, &d.dfThirdOrderSpiral},
            {"parabolic", "amplitude", -100, 100, &d.dfParabolicAmplitude},
            {"parabolic", "azimuth", -360, 360, &d.dfParabolicAzimuth},
            {"", "referenceRadius", 0.01, 100000, &d.dfRadius}};
}

/// Takes a number.
/// @return false, with the reason, where there is no number within the range
bool takeNumber(const QJsonValue& value, const QString& strName, double dfLow, double dfHigh,
                double& dfTarget, QString* pstrReason)
{
    if (!value.isDouble()) {
        return giveReason(pstrReason, QStringLiteral("\"%1\" is missing or no number").arg(strName));
    }
    const double df = value.toDouble();
    if (!std::isfinite(df) || df < dfLow || df > dfHigh) {
        return giveReason(pstrReason, QStringLiteral("\"%1\" is %2; it must lie in %3 to %4")
                                          .arg(strName)
                                          .arg(df)
                                          .arg(dfLow)
                                          .arg(dfHigh));
    }
    dfTarget = df;
    return true;
}

bool takeFields(const QJsonObject& object, Calibration& calibration, QString* pstrReason)
{
    for (const Field& field : fieldsOf(calibration)) {
        const QString strGroup = QLatin1String(field.pszGroup), strKey = QLatin1String(field.pszKey);
        const QJsonObject group = strGroup.isEmpty() ? object : object[strGroup].toObject();
        const QString strName = strGroup.isEmpty() ? strKey : strGroup + QLatin1Char('.') + strKey;
        if (!takeNumber(group[strKey], strName, field.dfLow, field.dfHigh, *field.pdfValue, pstrReason)) {
            return false;
        }
    }
    if (object.contains(QStringLiteral("pixelSize"))) {
        double dfSize = 0;
        if (!takeNumber(object[QStringLiteral("pixelSize")], QStringLiteral("pixelSize"), 1e-6,
                        g_dfMostLength, dfSize, pstrReason)) {
            return false;
        }
        calibration.dfPixelSize = dfSize;
    }
    return true;
}

bool isOther(double dfOne, double dfOther, double dfLimit)
{
    return std::abs(dfOne - dfOther) > dfLimit * std::abs(dfOther);
}

}  // namespace

QByteArray calibrationText(const Calibration& calibration)
{
    Calibration copy = calibration;
    QJsonObject object = {{QStringLiteral("format"), QLatin1String(g_pszFormat)},
                          {QStringLiteral("version"), g_nVersion},
                          {QStringLiteral("series"), calibration.strSeries},
                          {QStringLiteral("date"), calibration.strDate}};
    for (const Field& field : fieldsOf(copy)) {
        const QString strGroup = QLatin1String(field.pszGroup), strKey = QLatin1String(field.pszKey);
        if (strGroup.isEmpty()) {
            object[strKey] = *field.pdfValue;
        } else {
            QJsonObject group = object[strGroup].toObject();
            group[strKey] = *field.pdfValue;
            object[strGroup] = group;
        }
    }
    if (calibration.dfPixelSize) {
        object[QStringLiteral("pixelSize")] = *calibration.dfPixelSize;
    }
    QJsonObject errors;
    for (auto it = calibration.mapError.begin(); it != calibration.mapError.end(); ++it) {
        errors[it.key()] = it.value();
    }
    object[QStringLiteral("standardErrors")] = errors;
    return QJsonDocument(object).toJson();
}

std::optional<Calibration> calibrationOfText(const QByteArray& bytes, QString* pstrReason)
{
    if (bytes.size() > g_nMostBytes) {
        giveReason(pstrReason, QStringLiteral("too large for a calibration"));
        return std::nullopt;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (!document.isObject()) {
        giveReason(pstrReason, error.error == QJsonParseError::NoError
                                   ? QStringLiteral("no calibration")
                                   : QStringLiteral("no calibration: %1 (at byte %2)")
                                         .arg(error.errorString())
                                         .arg(error.offset));
        return std::nullopt;
    }
    const QJsonObject object = document.object();
    if (!isCalibration(object)) {
        giveReason(pstrReason, QStringLiteral("no calibration: \"format\" is wrong"));
        return std::nullopt;
    }
    const QJsonValue version = object[QStringLiteral("version")];
    if (version.toDouble(0) != g_nVersion) {
        giveReason(pstrReason, QStringLiteral("a calibration of another version"));
        return std::nullopt;
    }
    Calibration calibration;
    if (!takeFields(object, calibration, pstrReason)) {
        return std::nullopt;
    }
    calibration.strSeries = object[QStringLiteral("series")].toString();
    calibration.strDate = object[QStringLiteral("date")].toString();
    const QJsonObject errors = object[QStringLiteral("standardErrors")].toObject();
    for (auto it = errors.begin(); it != errors.end(); ++it) {
        if (it.value().toDouble(0) > 0 && std::isfinite(it.value().toDouble())) {
            calibration.mapError[it.key()] = it.value().toDouble();
        }
    }
    return calibration;
}

std::optional<Calibration> readCalibration(const QString& strFile, QString* pstrReason)
{
    QFile file(strFile);
    QString strWhy;
    std::optional<Calibration> calibration;
    if (!file.open(QIODevice::ReadOnly)) {
        strWhy = file.errorString();
    } else {
        calibration = calibrationOfText(file.read(g_nMostBytes + 1), &strWhy);
    }
    if (!calibration) {
        giveReason(pstrReason, QStringLiteral("%1: %2").arg(strFile, strWhy));
    }
    return calibration;
}

bool writeCalibration(const QString& strFile, const Calibration& calibration, QString* pstrReason)
{
    return writeWholeFile(strFile, calibrationText(calibration), pstrReason);
}

Calibration calibrationOf(const DataSet& dataSet, const MappingParameters& mapping)
{
    Calibration calibration;
    calibration.strSeries = dataSet.m_strProjectName;
    calibration.strDate = QDateTime::currentDateTime().toString(Qt::ISODate);
    calibration.dfWavelength = dataSet.m_dfWavelength;
    calibration.dfSeriesPixelSize = dataSet.m_dfPixelSize;
    calibration.dfRotationAxis = wrappedAxis(dataSet.m_dfRotationAxis);
    if (mapping.m_bApplyStretching && dataSet.m_dfStretchAmplitude != 0) {
        // A negative amplitude is the same as a positive one at 90 degrees to it.
        const double dfAcross = dataSet.m_dfStretchAmplitude < 0 ? 90 : 0;
        calibration.dfStretchAmplitude = std::abs(dataSet.m_dfStretchAmplitude);
        calibration.dfStretchAzimuth = std::fmod(dataSet.m_dfStretchAzimuth + 90 + dfAcross, 180);
    }
    calibration.distortion = dataSet.m_distortion;
    toFilePixels(calibration, dataSet);
    return calibration;
}

void toFilePixels(Calibration& calibration, const SeriesData& series)
{
    const int nBin = series.m_reading.choice.nBin;
    calibration.dfSeriesPixelSize /= nBin;
    calibration.distortion.dfRadius *= nBin;
    if (calibration.dfPixelSize) {
        *calibration.dfPixelSize /= nBin;
    }
    const auto error = calibration.mapError.find(QStringLiteral("pixelSize"));
    if (error != calibration.mapError.end()) {
        error.value() /= nBin;
    }
}

bool isCalibration(const QJsonObject& object)
{
    return object[QStringLiteral("format")].toString() == QLatin1String(g_pszFormat);
}

bool isOtherCameraLength(const Calibration& calibration, double dfPixelSize)
{
    return isOther(calibration.dfSeriesPixelSize, dfPixelSize, g_dfSamePixelSize);
}

QStringList takeCalibration(DataSet& dataSet, MappingParameters& mapping, const Calibration& ofFiles)
{
    const int nBin = dataSet.m_reading.choice.nBin;
    Calibration calibration = ofFiles;
    calibration.dfSeriesPixelSize *= nBin;
    calibration.distortion.dfRadius /= nBin;
    if (calibration.dfPixelSize) {
        *calibration.dfPixelSize *= nBin;
    }
    QStringList listWarning;
    const auto warn = [&](const QString& strWhat, double dfThere, double dfHere, const QString& strThen) {
        listWarning.append(QStringLiteral("Warning: the calibration is of %1 %2, and this series has %3: %4")
                               .arg(strWhat)
                               .arg(dfThere)
                               .arg(dfHere)
                               .arg(strThen));
    };
    if (isOther(calibration.dfWavelength, dataSet.m_dfWavelength, g_dfSameWavelength)) {
        warn(QStringLiteral("a wavelength of"), calibration.dfWavelength, dataSet.m_dfWavelength,
             QStringLiteral("the distortions depend on the voltage."));
    }
    if (isOtherCameraLength(calibration, dataSet.m_dfPixelSize)) {
        warn(QStringLiteral("a pixel size of"), calibration.dfSeriesPixelSize, dataSet.m_dfPixelSize,
             QStringLiteral("the distortions depend on camera length and binning."));
    }
    dataSet.m_dfRotationAxis = wrappedAxis(calibration.dfRotationAxis);
    dataSet.m_bRotationAxisKnown = true;
    dataSet.m_nAxisDecimals = axisDecimals(dataSet.m_dfRotationAxis);
    dataSet.m_dfStretchAmplitude = calibration.dfStretchAmplitude;
    dataSet.m_dfStretchAzimuth = wrappedAzimuth(calibration.dfStretchAzimuth + 90);
    mapping.m_bApplyStretching = calibration.dfStretchAmplitude != 0;
    dataSet.m_distortion = calibration.distortion;
    dataSet.m_distortion.dfEllipseAzimuth = wrappedAzimuth(calibration.distortion.dfEllipseAzimuth);
    dataSet.m_distortion.dfParabolicAzimuth = wrappedAxis(calibration.distortion.dfParabolicAzimuth);
    if (calibration.dfPixelSize) {
        dataSet.m_dfPixelSize = *calibration.dfPixelSize;
    }
    roundToPages(dataSet);
    return listWarning;
}

}  // namespace tessera
