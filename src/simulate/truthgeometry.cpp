#include "simulate/truthgeometry.h"

#include <QJsonArray>

namespace tessera {

namespace {
// What the project says, whether it is true or not.
QJsonObject toldGeometry(const SimulationParameters& p)
{
    return {{QStringLiteral("rotationAxis"), p.toldAxis()},
            {QStringLiteral("stretchAmplitude"), p.toldStretchAmplitude()},
            {QStringLiteral("stretchAzimuth"), p.toldStretchAzimuth()}};
}

bool readOffsets(const QJsonValue& value, int nFrames, SimulatedSeries& series)
{
    if (value.isUndefined()) {
        return true;
    }
    const QJsonArray array = value.toArray();
    for (const QJsonValue& valueOffset : array) {
        const QJsonArray pair = valueOffset.toArray();
        if (pair.size() != 2 || !pair[0].isDouble() || !pair[1].isDouble()) {
            return false;
        }
        series.listPatternOffset.push_back({pair[0].toDouble(), pair[1].toDouble()});
    }
    return array.size() == nFrames;
}
}  // namespace

void writeTrueGeometry(const SimulatedSeries& series, QJsonObject& root)
{
    const SimulationParameters& p = series.parameters;
    root[QStringLiteral("rotationAxis")] = p.dfAxis;
    root[QStringLiteral("stretchAmplitude")] = p.dfStretchAmplitude;
    root[QStringLiteral("stretchAzimuth")] = p.dfStretchAzimuth;
    if (p.lens.hasEllipse()) {
        root[QStringLiteral("ellipse")] = QJsonObject{
            {QStringLiteral("amplitude"), p.lens.dfEllipseAmplitude},
            {QStringLiteral("azimuth"), p.lens.dfEllipseAzimuth}};
    }
    if (p.lens.hasThirdOrder()) {
        root[QStringLiteral("thirdOrder")] = QJsonObject{{QStringLiteral("radial"), p.lens.dfRadial},
                                                         {QStringLiteral("spiral"), p.lens.dfSpiral},
                                                         {QStringLiteral("radius"), p.lens.dfRadius}};
    }
    if (!series.listPatternOffset.empty()) {
        QJsonArray arrayOffset;
        for (const auto& offset : series.listPatternOffset) {
            arrayOffset.append(QJsonArray{offset[0], offset[1]});
        }
        root[QStringLiteral("patternOffsets")] = arrayOffset;
    }
    if (p.toldAxis() != p.dfAxis || !p.bStretchTold) {
        root[QStringLiteral("told")] = toldGeometry(p);
    }
}

bool readTrueGeometry(const QJsonObject& root, int nFrames, SimulatedSeries& series)
{
    SimulationParameters& p = series.parameters;
    p.dfAxis = root[QStringLiteral("rotationAxis")].toDouble();
    p.dfStretchAmplitude = root[QStringLiteral("stretchAmplitude")].toDouble();
    p.dfStretchAzimuth = root[QStringLiteral("stretchAzimuth")].toDouble();
    const QJsonObject ellipse = root[QStringLiteral("ellipse")].toObject();
    p.lens.dfEllipseAmplitude = ellipse[QStringLiteral("amplitude")].toDouble();
    p.lens.dfEllipseAzimuth = ellipse[QStringLiteral("azimuth")].toDouble();
    const QJsonObject third = root[QStringLiteral("thirdOrder")].toObject();
    p.lens.dfRadial = third[QStringLiteral("radial")].toDouble();
    p.lens.dfSpiral = third[QStringLiteral("spiral")].toDouble();
    p.lens.dfRadius = third[QStringLiteral("radius")].toDouble();
    const QJsonObject told = root[QStringLiteral("told")].toObject();
    p.dfToldAxisOffset = told[QStringLiteral("rotationAxis")].toDouble(p.dfAxis) - p.dfAxis;
    p.bStretchTold = told[QStringLiteral("stretchAmplitude")].toDouble(p.dfStretchAmplitude) ==
                     p.dfStretchAmplitude;
    return readOffsets(root[QStringLiteral("patternOffsets")], nFrames, series) &&
           (!p.lens.hasThirdOrder() || p.lens.dfRadius > 0);
}

}  // namespace tessera
