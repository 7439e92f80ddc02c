#include "exchange/zoneaxiscif.h"

#include "exchange/exchangegeometry.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

QByteArray number(double dfValue, int nDecimals, int nWidth = 0)
{
    return QByteArray::number(dfValue, 'f', nDecimals).rightJustified(nWidth);
}

double lengthOf(const DoubleVector& vec)
{
    return std::sqrt(dot(vec, vec));
}

double angleBetween(const DoubleVector& a, const DoubleVector& b)
{
    return degrees(std::acos(std::clamp(dot(a, b) / lengthOf(a) / lengthOf(b), -1.0, 1.0)));
}

void item(QByteArray& bytes, const QByteArray& bytesName, const QByteArray& bytesValue)
{
    bytes += bytesName.leftJustified(36) + ' ' + bytesValue + '\n';
}

void addCell(QByteArray& bytes, const std::array<DoubleVector, 3>& aReciprocal, double dfWavelength)
{
    const auto [a, b, c] = dualBasis(aReciprocal);
    item(bytes, "_cell_length_a", number(lengthOf(a), 5));
    item(bytes, "_cell_length_b", number(lengthOf(b), 5));
    item(bytes, "_cell_length_c", number(lengthOf(c), 5));
    item(bytes, "_cell_angle_alpha", number(angleBetween(b, c), 4));
    item(bytes, "_cell_angle_beta", number(angleBetween(c, a), 4));
    item(bytes, "_cell_angle_gamma", number(angleBetween(a, b), 4));
    item(bytes, "_cell_volume", number(std::abs(dot(a, cross(b, c))), 3));
    item(bytes, "_diffrn_radiation_probe", "electron");
    item(bytes, "_diffrn_radiation_wavelength", number(dfWavelength, 6));
    for (size_t nRow = 0; nRow < 3; ++nRow) {
        for (size_t n = 0; n < 3; ++n) {
            item(bytes,
                 "_diffrn_orient_matrix_UB_" + QByteArray::number(int(nRow) + 1) +
                     QByteArray::number(int(n) + 1),
                 number(aReciprocal[n][nRow], 8));
        }
    }
    item(bytes, "_diffrn_pets_omega", "0.00000");
}

QByteArray measurementOf(RotationKind kind)
{
    switch (kind) {
        case RotationKind::Precession:
            return "precession";
        case RotationKind::Stepped:
            return "static";
        case RotationKind::Continuous:
            break;
    }
    return "continuous rotation";
}

void addDetails(QByteArray& bytes, const IntegrationResult& result, const VirtualFrameOptions& options)
{
    const SpotModel& model = result.integrated.model;
    bytes += "_diffrn_measurement_details\n;\n";
    bytes += "data collection geometry: " + measurementOf(result.series.rotation.kind) + '\n';
    bytes += "dstarmax:  " + number(result.integrated.dfMaxDStar, 3) + '\n';
    bytes += "RC width:  " + number(model.dfRockingWidth, 5) + '\n';
    bytes += "mosaicity:  " + number(model.dfMosaicity, 3) + '\n';
    bytes += "rotation axis position:  " + number(result.series.geometry.plane.axis, 3) + '\n';
    bytes += "reflection size:    " + number(2 * model.dfDiscRadius, 3) + '\n';
    bytes += "Virtual frame settings: number of merged frames:  " + QByteArray::number(options.nMerged) +
             '\n';
    bytes += "                        step between frames:      " + QByteArray::number(options.nStep) + '\n';
    bytes += "                        sum all intensities:      1\n;\n";
}

/// Half of the angle that a virtual frame covers, degrees.
double semiAngle(const IntegrationResult& result, const VirtualFrame& frame)
{
    if (result.series.rotation.kind == RotationKind::Precession) {
        return result.series.rotation.dfPrecessionAngle;
    }
    const std::vector<double> listAngle = anglesOf(result.series);
    if (listAngle.size() < 2) {
        return 0;  // the step is unknown
    }
    const double dfStep = std::abs(listAngle.back() - listAngle.front()) / double(listAngle.size() - 1);
    return dfStep * (frame.nLast - frame.nFirst + 1) / 2;
}

}  // namespace

ZoneAxisBasis zoneAxisBasis(const IntegrationResult& result)
{
    const ObservationSymmetry& symmetry = result.chosen.symmetry;
    Eigen::Matrix3d matTransform, matReciprocal;  // rows: axes of the setting; columns: a*, b*, c*
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int n = 0; n < 3; ++n) {
            matTransform(nRow, n) = double(symmetry.anTransform[nRow][n]) / symmetry.nDenominator;
            matReciprocal(nRow, n) = result.series.geometry.aBasis[n][nRow];
        }
    }
    // The y axis of the laboratory frame points in the opposite direction.
    matReciprocal.row(1) *= -1;
    const Eigen::Matrix3d matSetting = matReciprocal * matTransform.inverse();
    ZoneAxisBasis basis;
    basis.bReversed = matSetting.determinant() < 0;
    for (int n = 0; n < 3; ++n) {
        for (int nRow = 0; nRow < 3; ++nRow) {
            basis.aReciprocal[n][nRow] = basis.bReversed ? -matSetting(nRow, n) : matSetting(nRow, n);
        }
    }
    return basis;
}

ZoneAxisFrame zoneAxisFrame(const std::array<DoubleVector, 3>& aReciprocal, double dfOutOfPlane,
                            double dfAngle)
{
    const double dfOut = radians(dfOutOfPlane);
    const DoubleVector axis = {std::cos(dfOut), 0, std::sin(dfOut)};
    ZoneAxisFrame frame;
    double dfLargest = 0;
    for (size_t n = 0; n < 3; ++n) {
        frame.aZone[n] = turned(aReciprocal[n], axis, dfAngle)[2];
        dfLargest = std::max(dfLargest, std::abs(frame.aZone[n]));
    }
    for (double& dfIndex : frame.aZone) {
        dfIndex /= dfLargest;
    }
    // The columns of the rotation matrix, from which the angles of Rz(omega)·Rx(alpha)·Ry(beta) follow.
    const DoubleVector x = turned({1, 0, 0}, axis, dfAngle), y = turned({0, 1, 0}, axis, dfAngle),
                       z = turned({0, 0, 1}, axis, dfAngle);
    frame.dfAlpha = degrees(std::asin(std::clamp(y[2], -1.0, 1.0)));
    frame.dfBeta = degrees(std::atan2(-x[2], z[2]));
    frame.dfOmega = degrees(std::atan2(-y[0], y[1]));
    return frame;
}

QByteArray zoneAxisCif(const IntegrationResult& result, const VirtualFrameOptions& asked)
{
    const int nFrames = result.series.frameCount();
    const VirtualFrameOptions options = chosenVirtualFrames(result.integrated, nFrames, asked);
    const std::vector<VirtualFrame> listFrame = virtualFrames(result.integrated, nFrames, options);
    const std::vector<double> listAngle = anglesOf(result.series);
    const ZoneAxisBasis basis = zoneAxisBasis(result);
    QByteArray bytes = "data_pets\n";
    addCell(bytes, basis.aReciprocal, result.series.geometry.dfWavelength);
    addDetails(bytes, result, options);
    bytes += "\nloop_\n";
    for (const char* pszName : {"id", "u", "v", "w", "precession_angle", "alpha", "beta", "omega", "scale"}) {
        bytes += QByteArray("_diffrn_zone_axis_") + pszName + '\n';
    }
    for (size_t n = 0; n < listFrame.size(); ++n) {
        const VirtualFrame& frame = listFrame[n];
        const double dfAngle = (listAngle[frame.nFirst] + listAngle[frame.nLast]) / 2;
        const ZoneAxisFrame zone = zoneAxisFrame(basis.aReciprocal, result.series.geometry.turn.outOfPlane,
                                                 dfAngle);
        bytes += QByteArray::number(int(n) + 1).rightJustified(4);
        for (const double dfIndex : zone.aZone) {
            bytes += number(dfIndex, 6, 10);
        }
        bytes += number(semiAngle(result, frame), 4, 10);
        for (const double dfDegrees : {zone.dfAlpha, zone.dfBeta, zone.dfOmega}) {
            bytes += number(dfDegrees, 4, 11);
        }
        bytes += number(1, 3, 9) + '\n';
    }
    bytes += "\nloop_\n";
    for (const char* pszName :
         {"index_h", "index_k", "index_l", "intensity_meas", "intensity_sigma", "zone_axis_id"}) {
        bytes += QByteArray("_refln_") + pszName + '\n';
    }
    for (size_t n = 0; n < listFrame.size(); ++n) {
        for (const int nObservation : listFrame[n].listObservation) {
            const Observation& one = result.integrated.listObservation[nObservation];
            for (const int nIndex : conventionalIndex(result.chosen.symmetry, one.anIndex)) {
                bytes += QByteArray::number(basis.bReversed ? -nIndex : nIndex).rightJustified(4);
            }
            bytes += number(one.dfIntensity, 2, 13) + number(one.dfSigma, 2, 11) +
                     QByteArray::number(int(n) + 1).rightJustified(5) + '\n';
        }
    }
    return bytes;
}

}  // namespace tessera
