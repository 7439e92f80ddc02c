// Tilt fit: parameters of a basis against the tilts at which reflections were seen.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/hklref.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace tessera {

/// What calculated tilts depend on beside the crystal.
struct TiltGeometry {
    double dfWavelength = 0;      ///< Å
    double dfAxisOutOfPlane = 0;  ///< degrees, of the rotation axis towards +z
};

/// The tilt in degrees at which the mapping has h·a* + k·b* + l·c* on the Ewald sphere; indices of the record
/// rounded. calEwaldTilt() has its sphere about (0, 0, −1/λ), and so gets −g here.
/// @return none if the sphere does not reach the point
std::optional<double> calculatedTilt(const Peak3D& peak, const ReciprocalBasis& basis,
                                     const TiltGeometry& geometry);

/// What a fit found beside the parameters.
struct TiltFitResult {
    int nInfo = 0;
    int nEvaluations = 0;
    std::vector<double> vecStdErr;  ///< infinite where the data say nothing of the errors
    double dfVariance = 0;          ///< Σr²/(m − n), degrees²; infinite without spare reflections
};

/// Relative error of the residuals that sets the steps of the forward differences. The parameters enter in
/// single precision: with steps of 10⁻⁷, as of an error of 10⁻¹⁴, the differences are mostly rounding, and
/// fits end where they start, some tenths of a per cent off in the cell.
constexpr double g_dfTiltFunctionError = 1.1920928955078125e-7;  // ε of single precision

/// The basis that the parameters stand for.
using FnBasis = std::function<ReciprocalBasis(const double* pParam)>;

/// Refines `vecParam` in place so that the tilts calculated from fnBasis agree with `pTilt` (degrees) of the
/// reflections; one that the sphere does not reach has the residual 0. Nothing is fitted to no reflections.
TiltFitResult fitTilts(const QList<Peak3D>& listPeak, double Peak3D::*pTilt, const TiltGeometry& geometry,
                       std::vector<double>& vecParam, const FnBasis& fnBasis,
                       double dfFunctionError = g_dfTiltFunctionError);

/// The same against the points of the records: the residual is the distance in Å⁻¹.
TiltFitResult fitPoints(const QList<Peak3D>& listPeak, std::vector<double>& vecParam, const FnBasis& fnBasis);

/// The peaks whose rounded indices are not in the list, in order.
QList<Peak3D> withoutReflections(const QList<Peak3D>& listPeak, const QList<HKLRef>& listExcluded);

/// "HEAD" and each value after a blank, with 7 decimals.
void addValues(const QString& strHead, const std::vector<double>& vecValue, CRunReport& report);

}  // namespace tessera
