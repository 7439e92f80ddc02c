#include "simulate/refinedgeometry.h"

#include "simulate/angles.h"
#include "simulate/cellsetting.h"

#include <QJsonArray>

namespace tessera {

namespace {

std::optional<double> numberOf(const QJsonValue& value)
{
    return value.isDouble() ? std::optional<double>(value.toDouble()) : std::nullopt;
}

std::optional<std::array<double, 6>> sixNumbers(const QJsonValue& value)
{
    const QJsonArray array = value.toArray();
    std::array<double, 6> adf{};
    for (int i = 0; i < 6; ++i) {
        if (array.size() != 6 || !array[i].isDouble()) {
            return std::nullopt;
        }
        adf[i] = array[i].toDouble();
    }
    return adf;
}

JudgedCell judgeCell(const QJsonObject& object, const Matrix3& matTrue, const Matrix3& matPrimitive)
{
    JudgedCell cell;
    const auto found = sixNumbers(object[QStringLiteral("parameters")]);
    if (!found) {
        return cell;
    }
    cell.bRead = true;
    cell.adfFound = *found;
    const CellSetting setting = trueCellInSettingOf(*found, matTrue, matPrimitive);
    cell.bMatch = setting.bFound;
    cell.nVolumeRatio = setting.nVolumeRatio;
    cell.adfTrue = setting.adfTrue;
    if (!setting.bFound) {
        return cell;
    }
    for (size_t i = 0; i < 3; ++i) {
        cell.errors.adfLength[i] = 100 * (cell.adfFound[i] / cell.adfTrue[i] - 1);
        cell.errors.adfAngle[i] = cell.adfFound[3 + i] - cell.adfTrue[3 + i];
    }
    const QJsonArray arrayError = object[QStringLiteral("standardErrors")].toArray();
    for (int i = 0; i < 6; ++i) {
        const double dfStandard = arrayError.at(i).toDouble();
        if (dfStandard > 0) {
            const double df = (cell.adfFound[i] - cell.adfTrue[i]) / dfStandard;
            cell.aRatio[i] = df * df;
        }
    }
    return cell;
}

// The rotation nearest to a matrix close to one: the mean with its inverse transpose, until it stays.
// Source: Higham (1986), SIAM J. Sci. Stat. Comput. 7, 1160.
Matrix3 nearestRotation(Matrix3 mat)
{
    for (int i = 0; i < 50; ++i) {
        const Matrix3 matOther = transposed(inverseOf(mat));
        for (size_t j = 0; j < 3; ++j) {
            mat[j] = 0.5 * (mat[j] + matOther[j]);
        }
    }
    return mat;
}

void judgeOrientation(const Matrix3& matRefined, const Matrix3& matTrue, const Matrix3& matPrimitive,
                      RefinedGeometry& geometry)
{
    geometry.bBasisRead = true;
    geometry.lattice = matchLattice(matRefined, matTrue, matPrimitive);
    if (!geometry.lattice.isRight()) {
        return;
    }
    // In the true setting rows go as g' = R g, so that refined = true times the transposed rotation.
    const Matrix3 matBrought = inverseOf(geometry.lattice.matToTrue) * matRefined;
    const Matrix3 mat = transposed(nearestRotation(inverseOf(matTrue) * matBrought));
    const Vector3 vecSine{(mat[2][1] - mat[1][2]) / 2, (mat[0][2] - mat[2][0]) / 2,
                          (mat[1][0] - mat[0][1]) / 2};
    const double dfSine = lengthOf(vecSine), dfCos = (mat[0][0] + mat[1][1] + mat[2][2] - 1) / 2;
    const double dfAngle = degrees(std::atan2(dfSine, dfCos));
    geometry.orientationError = dfAngle;
    if (dfSine > 0) {
        geometry.vecTurn = dfAngle / dfSine * vecSine;
    }
}

std::optional<JudgedDistortion> judgeDistortion(const QJsonObject& object, double dfTrueAmplitude,
                                                double dfTrueAzimuth)
{
    const auto amplitude = numberOf(object[QStringLiteral("amplitude")]);
    const auto azimuth = numberOf(object[QStringLiteral("azimuth")]);
    if (!amplitude || (!azimuth && *amplitude != 0)) {
        return std::nullopt;
    }
    // The correction lengthens the pattern at right angles to the distortion.
    const double dfAcross = dfTrueAmplitude == 0 ? 0 : std::remainder(dfTrueAzimuth + 90, 180);
    return JudgedDistortion{*amplitude, azimuth.value_or(0), dfTrueAmplitude, dfAcross};
}

void judgeThirdOrder(const QJsonObject& object, const LensDistortion& lens, RefinedGeometry& geometry)
{
    const double dfFoundRadius = object[QStringLiteral("radius")].toDouble();
    if (!(dfFoundRadius > 0)) {
        return;
    }
    // Relative to its radius a displacement grows with the square of the radius. The correction of an inward
    // displacement is outward, that of a counter-clockwise one clockwise.
    const double dfRatio = lens.hasThirdOrder() ? lens.dfRadius / dfFoundRadius : 1;
    const std::pair<QString, double> aTrue[] = {{QStringLiteral("radial"), -lens.dfRadial},
                                                {QStringLiteral("spiral"), lens.dfSpiral}};
    for (const auto& [strName, dfTrue] : aTrue) {
        if (const auto found = numberOf(object[strName])) {
            geometry.mapError[strName] = *found * dfRatio * dfRatio - dfTrue;
        }
    }
}

// The mean offset of the pattern from the beam.
std::array<double, 2> trueCentre(const SimulatedSeries& truth)
{
    std::array<double, 2> ptMean{};
    for (const auto& pt : truth.listPatternOffset) {
        for (size_t i = 0; i < 2; ++i) {
            ptMean[i] += pt[i] / double(truth.listPatternOffset.size());
        }
    }
    return ptMean;
}

void judgeNumbers(const QJsonObject& object, const SimulatedSeries& truth, RefinedGeometry& geometry)
{
    const QString strAxis = QStringLiteral("axis"), strOut = QStringLiteral("axisOutOfPlane"),
                  strScale = QStringLiteral("tiltScale");
    if (const auto axis = numberOf(object[strAxis])) {
        geometry.mapError[strAxis] = std::remainder(*axis - truth.parameters.dfAxis, 360);
    }
    if (const auto out = numberOf(object[strOut])) {
        geometry.mapError[strOut] = *out;
    }
    if (const auto scale = numberOf(object[strScale])) {
        geometry.mapError[strScale] = 100 * (*scale - 1);
    }
    const QJsonArray arrayCentre = object[QStringLiteral("centre")].toArray();
    if (arrayCentre.size() == 2 && arrayCentre[0].isDouble() && arrayCentre[1].isDouble()) {
        const auto ptTrue = trueCentre(truth);
        geometry.mapError[QStringLiteral("centreX")] = arrayCentre[0].toDouble() - ptTrue[0];
        geometry.mapError[QStringLiteral("centreY")] = arrayCentre[1].toDouble() - ptTrue[1];
    }
}
}  // namespace

std::optional<double> JudgedCell::meanRatio() const
{
    double dfSum = 0;
    int nCount = 0;
    for (const auto& ratio : aRatio) {
        dfSum += ratio.value_or(0);
        nCount += ratio.has_value();
    }
    return nCount > 0 ? std::optional<double>(dfSum / nCount) : std::nullopt;
}

double JudgedDistortion::error() const
{
    const double dfTwice = radians(2 * dfAzimuth), dfTrueTwice = radians(2 * dfTrueAzimuth);
    return std::hypot(dfAmplitude * std::cos(dfTwice) - dfTrueAmplitude * std::cos(dfTrueTwice),
                      dfAmplitude * std::sin(dfTwice) - dfTrueAmplitude * std::sin(dfTrueTwice));
}

RefinedGeometry judgeGeometry(const QJsonObject& geometry, const Matrix3* pmatRefined,
                              const SimulatedSeries& truth, int nLattice)
{
    RefinedGeometry result;
    const Matrix3& matTrue = truth.basis(nLattice);
    const SimulationParameters& p = truth.parameters;
    if (pmatRefined) {
        judgeOrientation(*pmatRefined, matTrue, truth.matPrimitive, result);
    }
    result.bRead = !geometry.isEmpty();
    result.cell = judgeCell(geometry[QStringLiteral("cell")].toObject(), matTrue, truth.matPrimitive);
    result.constrained = judgeCell(geometry[QStringLiteral("constrained")].toObject(), matTrue,
                                   truth.matPrimitive);
    result.stretching = judgeDistortion(geometry[QStringLiteral("stretching")].toObject(),
                                        p.dfStretchAmplitude, p.dfStretchAzimuth);
    result.ellipse = judgeDistortion(geometry[QStringLiteral("ellipse")].toObject(),
                                     p.lens.dfEllipseAmplitude, p.lens.dfEllipseAzimuth);
    judgeThirdOrder(geometry[QStringLiteral("thirdOrder")].toObject(), p.lens, result);
    judgeNumbers(geometry, truth, result);
    for (const char* pName : {"rmsPixels", "before", "after", "fixed"}) {
        const QString strName = QLatin1String(pName);
        if (geometry.contains(strName)) {
            result.told[strName] = geometry[strName];
        }
    }
    return result;
}

}  // namespace tessera
