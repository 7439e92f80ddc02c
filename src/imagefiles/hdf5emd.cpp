#include "imagefiles/hdf5emd.h"

#include "imagefiles/hdf5finding.h"
#include "records/pi.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <cmath>

namespace tessera {

namespace {

/// The value at a path of keys.
QJsonValue valueAt(const QJsonObject& object, std::initializer_list<QString> listKey)
{
    QJsonValue value = object;
    for (const QString& strKey : listKey) {
        value = value.toObject().value(strKey);
    }
    return value;
}

double numberOf(const QJsonValue& value)
{
    if (value.isDouble()) {
        return value.toDouble();
    }
    bool bGood = false;
    const double df = value.toString().toDouble(&bGood);
    return bGood ? df : std::numeric_limits<double>::quiet_NaN();
}

ToldNumber above0(double df, const char* pszSource)
{
    return std::isfinite(df) && df > 0 ? ToldNumber{df, QLatin1String(pszSource)} : ToldNumber{};
}

/// The camera in the list of detectors of the text.
QJsonObject cameraOf(const QJsonObject& object)
{
    const QJsonObject detectors = object.value(QLatin1String("Detectors")).toObject();
    const QJsonObject result = object.value(QLatin1String("BinaryResult")).toObject();
    const QString strName = result.value(QLatin1String("Detector")).toString();
    const QJsonObject byIndex = detectors
                                    .value(QLatin1String("Detector-") +
                                           result.value(QLatin1String("DetectorIndex")).toString())
                                    .toObject();
    if (strName.isEmpty() || byIndex.value(QLatin1String("DetectorName")).toString() == strName) {
        return byIndex;
    }
    for (const QJsonValue& value : detectors) {
        if (value.toObject().value(QLatin1String("DetectorName")).toString() == strName) {
            return value.toObject();
        }
    }
    return {};
}

/// Reads the scale. In imaging mode, the camera length is that of the last diffraction pattern, and pixels
/// are lengths.
void readVeloxScale(const QJsonObject& object, FrameHeader& header)
{
    const QString strUnit = valueAt(object, {"BinaryResult", "PixelUnitX"}).toString();
    const bool bReciprocal = strUnit == QLatin1String("1/m") || strUnit == QLatin1String("m^-1");
    const bool bDiffraction = valueAt(object, {"Optics", "ProjectorMode"}).toString() == QLatin1String("1");
    if (bReciprocal) {
        constexpr double dfMetresPerAngstrom = 1e-10;
        const double dfPixel = numberOf(valueAt(object, {"BinaryResult", "PixelSize", "width"}));
        header.pixelSize = above0(dfPixel * dfMetresPerAngstrom, "BinaryResult.PixelSize");
    }
    if (bReciprocal || bDiffraction) {
        header.cameraLength = above0(1000 * numberOf(valueAt(object, {"Optics", "CameraLength"})),
                                     "Optics.CameraLength");
    } else if (!strUnit.isEmpty()) {
        header.listDoubt.append(
            QStringLiteral("The microscope was not in diffraction mode by the file (Optics.ProjectorMode, "
                           "PixelUnitX), so its camera length and pixel size were not taken."));
    }
}

}  // namespace

bool findVelox(hid_t idFile, const QString& strPath, Hdf5Series& series)
{
    constexpr size_t nMostImages = 1000;
    const QByteArray strImages = "/Data/Image";
    const CHdf5Id idImages = openObject(idFile, strImages);
    if (!idImages.isOpen()) {
        return false;
    }
    Hdf5Block best;
    int nOthers = -1;
    QByteArray strBest;
    for (const QByteArray& strName : namesIn(idImages, nMostImages)) {
        const QByteArray strGroup = strImages + '/' + strName;
        const Hdf5Block block = blockOf(idFile, strPath, strGroup + "/Data", true);
        if (!block.strMissing.isEmpty() || block.layout.vecLength.size() > 3) {
            continue;
        }
        ++nOthers;
        const auto pixels = [](const Hdf5Block& b) {
            return b.nCount > 0 ? b.layout.vecLength[0] * b.layout.vecLength[1] : 0;
        };
        if (block.nCount > best.nCount || (block.nCount == best.nCount && pixels(block) > pixels(best))) {
            best = block;
            strBest = strGroup;
        }
    }
    if (best.nCount < 1) {
        return false;
    }
    series.kind = Hdf5Series::Kind::VELOX;
    series.bFramesLast = true;
    series.strMetadata = strBest + "/Metadata";
    series.vecBlock = {best};
    if (nOthers > 0) {
        series.header.listDoubt.append(
            QStringLiteral("The file has %1 more sets of images; that with the most of them was taken.")
                .arg(nOthers));
    }
    return true;
}

QByteArray veloxText(const Hdf5Series& series, int nImage)
{
    constexpr uint64_t nLongest = 1 << 22;
    const QString& strFile = series.vecBlock.front().strFile;
    QString strReason;
    const CHdf5Id idFile = openHdf5(strFile, strReason);
    const CHdf5Id idText = openDataSet(idFile, series.strMetadata);
    Hdf5Layout layout;
    if (!idText.isOpen() ||
        !describeDataSet(idText, uint64_t(QFileInfo(strFile).size()), layout, strReason) ||
        layout.nElementSize != 1 || layout.vecLength.empty() || layout.vecLength.size() > 2 ||
        layout.vecLength[0] > nLongest || (layout.vecLength.size() == 1 && nImage > 0) ||
        (layout.vecLength.size() == 2 && layout.vecLength[1] <= uint64_t(nImage))) {
        return {};
    }
    Hdf5Plane plane;
    plane.vecPlace.assign(layout.vecLength.size(), 0);
    if (layout.vecLength.size() == 2) {
        plane.vecPlace[1] = hsize_t(nImage);
    }
    plane.nRowAxis = 0;
    Hdf5Fetched fetched;
    if (!fetchPlane(idText, strFile, layout, plane, fetched, strReason)) {
        return {};
    }
    const std::shared_ptr<uint8_t> pText = unpackPlane(layout, plane, fetched, strReason);
    const char* psz = reinterpret_cast<const char*>(pText.get());
    return psz ? QByteArray(psz, int(qstrnlen(psz, uint(layout.vecLength[0])))) : QByteArray();
}

void readVeloxText(const QByteArray& bytesJson, FrameHeader& header)
{
    const QJsonObject object = QJsonDocument::fromJson(bytesJson).object();
    if (object.isEmpty()) {
        return;
    }
    header.kilovolts = above0(numberOf(valueAt(object, {"Optics", "AccelerationVoltage"})) / 1000,
                              "Optics.AccelerationVoltage");
    readVeloxScale(object, header);
    const double dfTilt = numberOf(valueAt(object, {"Stage", "AlphaTilt"})) * 180 / g_dfPi;
    if (std::isfinite(dfTilt)) {
        header.tilt = {dfTilt, QStringLiteral("Stage.AlphaTilt")};
    }
    const QJsonObject camera = cameraOf(object);
    header.exposure = above0(numberOf(camera.value(QLatin1String("ExposureTime"))), "ExposureTime");
    const QString strCamera = valueAt(object, {"BinaryResult", "Detector"}).toString();
    header.strDetector = strCamera;
    const QString strKey = QStringLiteral("Detectors[%1].SaturationPoint").arg(strCamera);
    const double dfSaturation = numberOf(valueAt(object, {"CustomProperties", strKey, "value"}));
    if (dfSaturation > 0) {
        header.saturation = above0(dfSaturation, "SaturationPoint");
    }
}

void readBerkeley(hid_t idFile, const QString& strPath, Hdf5Series& series)
{
    const Hdf5Block& block = series.vecBlock.front();
    const QByteArray strGroup = block.strPath.left(block.strPath.lastIndexOf('/'));
    const size_t nAxes = block.layout.vecLength.size();
    // Axes are counted from 1 in the first version of the layout and from 0 in later ones.
    const bool bFrom0 = openObject(idFile, strGroup + "/dim0").isOpen();
    const QByteArray strAxis = strGroup + "/dim" + QByteArray::number(qlonglong(nAxes) - (bFrom0 ? 1 : 0));
    const CHdf5Id idAxis = openDataSet(idFile, strAxis);
    QString strUnit = idAxis.isOpen() ? textAttribute(idAxis, "units").remove('[').remove(']') : QString();
    strUnit.remove('_').remove(' ');
    static const std::pair<const char*, double> s_aUnit[] = {
        {"A^-1", 1}, {"1/A", 1}, {"\u00c5^-1", 1}, {"1/\u00c5", 1}, {"nm^-1", 0.1}, {"1/nm", 0.1}};
    for (const auto& unit : s_aUnit) {
        if (strUnit == QString::fromUtf8(unit.first)) {
            const std::vector<double> vecPlace = numbersIn(idFile, strAxis, strPath, 1 << 20);
            const double dfStep = vecPlace.size() > 1 ? (vecPlace[1] - vecPlace[0]) * unit.second : 0;
            series.header.pixelSize = above0(std::fabs(dfStep), "dim, units");
        }
    }
    series.header.listDoubt.append(
        QStringLiteral("The file does not define which axes are those of the image: the last two were used, "
                       "with the first row on top."));
}

}  // namespace tessera
