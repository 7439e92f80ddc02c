#include "road/calibrating.h"

#include "road/geometrytable.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

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
    const double dfMost = 0.05;  // tolerance of the edges, as in the search for a known cell
    const double dfVolumes = volumeOf(refined) / volumeOf(known);
    if (!std::isfinite(dfVolumes) || dfVolumes <= 0) {
        return std::nullopt;
    }
    double dfScale = 0;
    for (const double dfMultiple : {1.0, 2.0, 3.0, 4.0, 1 / 2.0, 1 / 3.0, 1 / 4.0}) {
        const double dfOne = std::cbrt(dfVolumes / dfMultiple);
        if (dfScale == 0 || std::abs(std::log(dfOne)) < std::abs(std::log(dfScale))) {
            dfScale = dfOne;
        }
    }
    if (std::abs(dfScale - 1) > dfMost) {
        return std::nullopt;
    }
    // Edges that a Bravais type makes equal are one number, so their errors do not average out.
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
    // The terms describe the correction, which is greatest where the pattern is shortest.
    const Distortion stretching = distortionOf(-plane.stretchingCos, -plane.stretchingSin);
    calibration.dfStretchAmplitude = 100 * stretching.dfAmplitude;
    calibration.dfStretchAzimuth = std::fmod(stretching.dfAzimuth + 180, 180);
    calibration.distortion = seriesDistortion(model.geometry);
    for (const GeometryRow& row : geometryRows()) {
        const auto& listFree = model.fit.listFree;
        const bool bOfCrystal = row.number == CentreX || row.number == CentreY || row.number == TiltScale ||
                                row.number == TiltOffset;
        if (!bOfCrystal && std::find(listFree.begin(), listFree.end(), int(row.number)) != listFree.end()) {
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
