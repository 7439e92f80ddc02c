#include "road/calibrating.h"

#include "road/geometrytable.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// The volume of a cell, Å³; NaN for angles that form no cell.
double volumeOf(const CellParameters& cell)
{
    const double dfCosA = std::cos(radians(cell.alpha)), dfCosB = std::cos(radians(cell.beta)),
                 dfCosC = std::cos(radians(cell.gamma));
    return cell.a * cell.b * cell.c *
           std::sqrt(1 - dfCosA * dfCosA - dfCosB * dfCosB - dfCosC * dfCosC + 2 * dfCosA * dfCosB * dfCosC);
}

}  // namespace

std::optional<DeterminedPixelSize> determinedPixelSize(double dfPixelSize, const CellParameters& refined,
                                                       const CellParameters& errors,
                                                       const CellParameters& known)
{
    const double dfTolerance = 0.05;  // of the edges, as KnownCellOptions::dfLengthTolerance
    const double dfVolumeRatio = volumeOf(refined) / volumeOf(known);
    if (!std::isfinite(dfVolumeRatio) || dfVolumeRatio <= 0) {
        return std::nullopt;
    }
    // The ratio of refined to known edges, by which the pixel size has to be multiplied. A centred cell is
    // two (A, B, C, I), three (R) or four times (F) as large as its primitive cell; of these factors the one
    // that needs the smallest correction is taken.
    double dfScale = 0;
    for (const double dfCellFactor : {1.0, 2.0, 3.0, 4.0, 1 / 2.0, 1 / 3.0, 1 / 4.0}) {
        const double dfScaleOfFactor = std::cbrt(dfVolumeRatio / dfCellFactor);
        if (dfScale == 0 || std::abs(std::log(dfScaleOfFactor)) < std::abs(std::log(dfScale))) {
            dfScale = dfScaleOfFactor;
        }
    }
    if (std::abs(dfScale - 1) > dfTolerance) {
        return std::nullopt;
    }
    // The pixel size has the relative error of the edges. Edges that a Bravais type makes equal are one
    // number of the fit, so their errors do not average out: the greatest one counts.
    const double dfRelative = std::max({errors.a / refined.a, errors.b / refined.b, errors.c / refined.c});
    return DeterminedPixelSize{dfPixelSize * dfScale, dfPixelSize * dfScale * dfRelative};
}

Calibration calibrationOfModel(const DataSet& dataSet, const GeometryModel& model,
                               const std::optional<CellParameters>& known)
{
    Calibration calibration;
    calibration.strSeries = dataSet.m_strProjectName;
    calibration.strDate = QDateTime::currentDateTime().toString(Qt::ISODate);
    calibration.dfWavelength = dataSet.m_dfWavelength;
    calibration.dfSeriesPixelSize = dataSet.m_dfPixelSize;
    const PlaneTerms<double>& plane = model.geometry.plane;
    calibration.dfRotationAxis = std::remainder(plane.axis, 360.0);
    // The terms of the model describe the correction, which lengthens the pattern where it is too short. A
    // calibration tells the azimuth along which the pattern is longer, at right angles to it.
    const Distortion stretching = distortionOf(-plane.stretchingCos, -plane.stretchingSin);
    calibration.dfStretchAmplitude = 100 * stretching.dfAmplitude;
    calibration.dfStretchAzimuth = std::fmod(stretching.dfAzimuth + 180, 180);
    calibration.distortion = seriesDistortion(model.geometry);
    for (const GeometryRow& row : geometryRows()) {
        const auto& listFree = model.fit.listFree;
        // Beam and tilts differ from series to series, whatever the microscope.
        const bool bOfSeries = row.number == CentreX || row.number == CentreY || row.number == TiltScale ||
                               row.number == TiltOffset;
        if (!bOfSeries && std::find(listFree.begin(), listFree.end(), int(row.number)) != listFree.end()) {
            calibration.mapError[geometryNumberName(row.number)] = row.dfFactor * model.errors[row.number];
        }
    }
    if (known) {
        if (const auto size = determinedPixelSize(dataSet.m_dfPixelSize, model.cell, model.cellErrors,
                                                  *known)) {
            calibration.dfPixelSize = size->dfSize;
            calibration.mapError[QStringLiteral("pixelSize")] = size->dfError;
        }
    }
    toFilePixels(calibration, dataSet);
    return calibration;
}

}  // namespace tessera
