// The judged geometry as JSON for scripts and as text for reading.
#include "simulate/refinedgeometry.h"

#include <QJsonArray>
#include <QStringList>

namespace tessera {

namespace {
template <typename Container>
QJsonArray jsonArray(const Container& list)
{
    QJsonArray array;
    for (double df : list) {
        array.append(df);
    }
    return array;
}

QJsonObject cellToJson(const JudgedCell& cell)
{
    QJsonObject object{{QStringLiteral("found"), jsonArray(cell.adfFound)},
                       {QStringLiteral("match"), cell.bMatch}};
    if (!cell.bMatch) {
        return object;
    }
    object[QStringLiteral("true")] = jsonArray(cell.adfTrue);
    object[QStringLiteral("volumeRatio")] = cell.nVolumeRatio;
    object[QStringLiteral("lengthErrorPercent")] = jsonArray(cell.errors.adfLength);
    object[QStringLiteral("angleErrorDegrees")] = jsonArray(cell.errors.adfAngle);
    QJsonArray arrayRatio;
    for (const auto& ratio : cell.aRatio) {
        arrayRatio.append(ratio ? QJsonValue(*ratio) : QJsonValue());
    }
    object[QStringLiteral("squaredErrorRatios")] = arrayRatio;
    if (const auto mean = cell.meanRatio()) {
        object[QStringLiteral("meanSquaredErrorRatio")] = *mean;
    }
    return object;
}

QJsonObject distortionToJson(const JudgedDistortion& distortion)
{
    const auto pair = [](double dfAmplitude, double dfAzimuth) {
        return QJsonObject{{QStringLiteral("amplitude"), dfAmplitude},
                           {QStringLiteral("azimuth"), dfAzimuth}};
    };
    return {{QStringLiteral("found"), pair(distortion.dfAmplitude, distortion.dfAzimuth)},
            {QStringLiteral("true"), pair(distortion.dfTrueAmplitude, distortion.dfTrueAzimuth)},
            {QStringLiteral("errorPercent"), distortion.error()}};
}

QString cellToText(const QString& strHead, const JudgedCell& cell)
{
    if (!cell.bMatch) {
        return strHead + QStringLiteral("  does NOT describe the true lattice\n");
    }
    QStringList listPart;
    for (size_t i = 0; i < 6; ++i) {
        const bool bLength = i < 3;
        const double dfError = bLength ? cell.errors.adfLength[i] : cell.errors.adfAngle[i - 3];
        QString str = QString::number(dfError, 'f', 3) +
                      (bLength ? QStringLiteral(" %") : QStringLiteral("°"));
        if (cell.aRatio[i]) {
            str += QStringLiteral(" (%1)").arg(std::sqrt(*cell.aRatio[i]), 0, 'f', 1);
        }
        listPart.append(str);
    }
    QString str = QStringLiteral("%1  %2").arg(strHead, listPart.join(QStringLiteral("  ")));
    if (const auto mean = cell.meanRatio()) {
        str += QStringLiteral("; mean of (error / e.s.d.)² %1").arg(*mean, 0, 'f', 2);
    }
    return str + QLatin1Char('\n');
}

QString distortionToText(const QString& strName, const JudgedDistortion& distortion)
{
    return QStringLiteral("geometry %1 %2 % at %3°, true %4 % at %5°: off by %6 %\n")
        .arg(strName)
        .arg(distortion.dfAmplitude, 0, 'f', 3)
        .arg(distortion.dfAzimuth, 0, 'f', 1)
        .arg(distortion.dfTrueAmplitude, 0, 'f', 3)
        .arg(distortion.dfTrueAzimuth, 0, 'f', 1)
        .arg(distortion.error(), 0, 'f', 3);
}
}  // namespace

QJsonObject geometryToJson(const RefinedGeometry& geometry)
{
    QJsonObject object = geometry.told;
    if (geometry.cell.bRead) {
        object[QStringLiteral("cell")] = cellToJson(geometry.cell);
    }
    if (geometry.constrained.bRead) {
        object[QStringLiteral("constrained")] = cellToJson(geometry.constrained);
    }
    if (geometry.bBasisRead) {
        object[QStringLiteral("basisRight")] = geometry.lattice.isRight();
        if (geometry.lattice.relation != LatticeMatch::None) {
            object[QStringLiteral("basisLengthErrorPercent")] = jsonArray(geometry.lattice.errors.adfLength);
            object[QStringLiteral("basisAngleErrorDegrees")] = jsonArray(geometry.lattice.errors.adfAngle);
        }
    }
    if (geometry.orientationError) {
        object[QStringLiteral("orientationErrorDegrees")] = *geometry.orientationError;
        object[QStringLiteral("orientationTurnDegrees")] = jsonArray(geometry.vecTurn);
    }
    if (geometry.stretching) {
        object[QStringLiteral("stretching")] = distortionToJson(*geometry.stretching);
    }
    if (geometry.ellipse) {
        object[QStringLiteral("ellipse")] = distortionToJson(*geometry.ellipse);
    }
    QJsonObject errors;
    for (const auto& [strName, df] : geometry.mapError) {
        errors[strName] = df;
    }
    if (!errors.isEmpty()) {
        object[QStringLiteral("errors")] = errors;
    }
    return object;
}

QString geometryToText(const RefinedGeometry& geometry)
{
    QString str;
    if (geometry.cell.bRead) {
        str += cellToText(QStringLiteral("geometry cell, errors (in e.s.d.):"), geometry.cell);
    }
    if (geometry.constrained.bRead) {
        str += cellToText(QStringLiteral("geometry held cell:"), geometry.constrained);
    }
    if (geometry.orientationError) {
        str += QStringLiteral("geometry orientation off by %1°\n")
                   .arg(QString::number(*geometry.orientationError, 'f', 3));
    } else if (geometry.bBasisRead) {
        str += QStringLiteral("geometry basis does NOT span the true lattice\n");
    }
    if (geometry.stretching) {
        str += distortionToText(QStringLiteral("stretching"), *geometry.stretching);
    }
    if (geometry.ellipse) {
        str += distortionToText(QStringLiteral("ellipse"), *geometry.ellipse);
    }
    QStringList listError;
    for (const auto& [strName, df] : geometry.mapError) {
        listError.append(QStringLiteral("%1 %2").arg(strName).arg(df, 0, 'f', 3));
    }
    if (!listError.isEmpty()) {
        str += QStringLiteral("geometry errors: %1\n").arg(listError.join(QStringLiteral(", ")));
    }
    return str;
}

}  // namespace tessera
