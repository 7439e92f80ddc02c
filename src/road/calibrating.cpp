#include "road/calibrating.h"

#include "lattice/cellreduction.h"
#include "lattice/knowncell.h"
#include "road/geometrytable.h"

#include <gemmi/symmetry.hpp>

#include <QDateTime>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

constexpr double g_dfTolerance = 0.05;  // of lengths, as KnownCellOptions::dfLengthTolerance
constexpr int g_nLengths = 7;  // a lattice is determined by the seven vectors that bound its Voronoi domain

/// A primitive lattice: what is the same for all its cells and centred ones, and changes little with
/// distortions.
struct LatticeMeasure {
    double dfVolume = 0;  ///< of the primitive cell, Å³; 0: no lattice
    std::array<double, g_nLengths>
        adfLength{};  ///< of the shortest vectors, ascending, Å; opposite ones once
};

LatticeMeasure measureOf(const LatticeBasis& basis, char chCentring)
{
    const gemmi::Op::Rot rot = gemmi::centred_to_primitive(chCentring);  // axes in columns
    Eigen::Matrix3d matAxes;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            matAxes(i, j) = double(rot[j][i]) / gemmi::Op::DEN;
        }
    }
    const LatticeBasis primitive = niggliBasis(matAxes * basis);
    std::vector<double> listLength;
    // Half of the vectors: 62 of 5³ with coordinates up to 2 along the axes of the reduced cell.
    for (int n = 0; n < 62; ++n) {
        const Eigen::RowVector3i vec(n / 25 - 2, n / 5 % 5 - 2, n % 5 - 2);
        listLength.push_back((vec.cast<double>() * primitive).norm());
    }
    std::sort(listLength.begin(), listLength.end());
    LatticeMeasure measure;
    measure.dfVolume = std::abs(primitive.determinant());
    std::copy_n(listLength.begin(), g_nLengths, measure.adfLength.begin());
    return measure;
}

/// The measures with each of the centrings that the cell may have.
std::vector<LatticeMeasure> measuresOf(const CellParameters& cell)
{
    std::vector<LatticeMeasure> list;
    if (const auto basis = basisOfCell(cell)) {
        for (char chCentring : {'P', 'A', 'B', 'C', 'I', 'F', 'R'}) {
            list.push_back(measureOf(*basis, chCentring));
        }
    }
    return list;
}

/// The factor from the lengths of one lattice to those of another; none if they differ in shape or by more
/// than the tolerance.
std::optional<double> scaleBetween(const LatticeMeasure& from, const LatticeMeasure& to)
{
    const double dfScale = std::cbrt(to.dfVolume / from.dfVolume);
    bool bAlike = std::abs(dfScale - 1) <= g_dfTolerance;
    for (int n = 0; n < g_nLengths && bAlike; ++n) {
        bAlike = std::abs(to.adfLength[n] / (dfScale * from.adfLength[n]) - 1) <= g_dfTolerance;
    }
    return bAlike ? std::optional<double>(dfScale) : std::nullopt;
}

}  // namespace

std::optional<DeterminedPixelSize> determinedPixelSize(double dfPixelSize, const CellParameters& refined,
                                                       const CellParameters& errors,
                                                       const CellParameters& known)
{
    // The ratio of refined to known lengths, by which the pixel size has to be multiplied. Of the centrings
    // with which the lattices are alike, those that need the smallest correction are taken.
    std::optional<double> scale;
    const std::vector<LatticeMeasure> listOfRefined = measuresOf(refined);
    for (const LatticeMeasure& ofKnown : measuresOf(known)) {
        for (const LatticeMeasure& ofRefined : listOfRefined) {
            const std::optional<double> found = scaleBetween(ofKnown, ofRefined);
            if (found && (!scale || std::abs(std::log(*found)) < std::abs(std::log(*scale)))) {
                scale = found;
            }
        }
    }
    if (!scale) {
        return std::nullopt;
    }
    // The pixel size has the relative error of the edges. Edges that a Bravais type makes equal are one
    // number of the fit, so their errors do not average out: the greatest one counts.
    const double dfRelative = std::max({errors.a / refined.a, errors.b / refined.b, errors.c / refined.c});
    return DeterminedPixelSize{dfPixelSize * *scale, dfPixelSize * *scale * dfRelative};
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
