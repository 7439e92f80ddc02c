#include "exchange/exchangegeometry.h"

#include "imagefiles/smvfile.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// Tells why there is no geometry. @return false
bool refuse(QString* pstrReason, const QString& strReason)
{
    if (pstrReason) {
        *pstrReason = strReason;
    }
    return false;
}

/// Fits the line of angles against numbers, and directs the axis so that the angles increase.
bool takeRotation(const SeriesGeometry& series, ExchangeGeometry& geometry, QString* pstrReason)
{
    const std::vector<double> listAngle = anglesOf(series);
    const AngleLine line = angleLine(geometry.numbering.listNumber, listAngle);
    const double dfLeastStep = 1e-6;  // degrees: less is a rounding error of tilts that are all equal
    if (!(std::abs(line.dfStep) > dfLeastStep)) {
        return refuse(pstrReason, QStringLiteral("The tilts of the frames do not differ: there is no "
                                                 "rotation to tell other programs of."));
    }
    // Where the tilts decrease, axis and angles are both reversed, which is the same rotation.
    const double dfSign = line.dfStep > 0 ? 1 : -1;
    const double dfOut = radians(series.geometry.turn.outOfPlane);
    geometry.axis = screenVector({dfSign * std::cos(dfOut), 0, dfSign * std::sin(dfOut)},
                                 series.geometry.plane.axis);
    geometry.dfWidth = std::abs(line.dfStep);
    // The tilts are those in the middle of the exposures, half a width after their beginnings.
    geometry.dfStart = dfSign * (line.dfAtZero + line.dfStep * geometry.numbering.first()) -
                       geometry.dfWidth / 2;
    geometry.dfWorstAngle = line.dfWorst;
    for (const double dfAngle : listAngle) {
        geometry.listAngle.push_back(dfSign * dfAngle);
    }
    return true;
}

/// Finds the mean place of the beam on the frames as they are written, and by how much each frame differs.
void takeBeam(const SeriesGeometry& series, const std::vector<FramePlace>& listMoved,
              ExchangeGeometry& geometry)
{
    std::vector<FramePlace> listBeam;
    const PlaneTerms<double>& plane = series.geometry.plane;
    for (size_t n = 0; n < series.listBeam.size(); ++n) {
        const FramePlace moved = n < listMoved.size() ? listMoved[n] : FramePlace{};
        listBeam.push_back({series.listBeam[n].dfX + plane.centreX + moved.dfX,
                            series.listBeam[n].dfY + plane.centreY + moved.dfY});
        geometry.beam.dfX += listBeam.back().dfX / double(series.listBeam.size());
        geometry.beam.dfY += listBeam.back().dfY / double(series.listBeam.size());
    }
    for (const FramePlace& beam : listBeam) {
        geometry.listRest.push_back({beam.dfX - geometry.beam.dfX, beam.dfY - geometry.beam.dfY});
    }
}

/// Converts the basis of the cell, and reverses its vectors if it is left-handed then.
void takeCell(const SeriesGeometry& series, ExchangeGeometry& geometry)
{
    for (size_t n = 0; n < 3; ++n) {
        geometry.aReciprocal[n] = screenVector(series.geometry.aBasis[n], series.geometry.plane.axis);
    }
    const auto& [a, b, c] = geometry.aReciprocal;
    geometry.bReversed = dot(a, cross(b, c)) < 0;
    if (geometry.bReversed) {
        for (DoubleVector& vec : geometry.aReciprocal) {
            vec = {-vec[0], -vec[1], -vec[2]};
        }
    }
    geometry.aDirect = dualBasis(geometry.aReciprocal);
    geometry.bCell = true;
}

}  // namespace

double ExchangeGeometry::worstBeam() const
{
    double dfWorst = 0;
    for (const FramePlace& rest : listRest) {
        dfWorst = std::max(dfWorst, std::hypot(rest.dfX, rest.dfY));
    }
    return dfWorst;
}

std::array<int, 3> ExchangeGeometry::indexOf(const std::array<int, 3>& anIndex) const
{
    return bReversed ? std::array<int, 3>{-anIndex[0], -anIndex[1], -anIndex[2]} : anIndex;
}

DoubleVector screenVector(const DoubleVector& vec, double dfAzimuth)
{
    const double dfCos = std::cos(radians(dfAzimuth)), dfSin = std::sin(radians(dfAzimuth));
    // rotationZ(−azimuth) takes x from the axis back to the rows of the frame; then y is reversed.
    return {dfCos * vec[0] + dfSin * vec[1], dfSin * vec[0] - dfCos * vec[1], vec[2]};
}

DoubleVector turned(const DoubleVector& vec, const DoubleVector& axis, double dfDegrees)
{
    // Rodrigues' formula.
    const double dfCos = std::cos(radians(dfDegrees)), dfSin = std::sin(radians(dfDegrees));
    const DoubleVector vecAcross = cross(axis, vec);
    const double dfAlong = (1 - dfCos) * dot(axis, vec);
    return {dfCos * vec[0] + dfSin * vecAcross[0] + dfAlong * axis[0],
            dfCos * vec[1] + dfSin * vecAcross[1] + dfAlong * axis[1],
            dfCos * vec[2] + dfSin * vecAcross[2] + dfAlong * axis[2]};
}

std::array<DoubleVector, 3> dualBasis(const std::array<DoubleVector, 3>& aBasis)
{
    const auto& [a, b, c] = aBasis;
    const double dfVolume = dot(a, cross(b, c));
    std::array<DoubleVector, 3> aDual = {cross(b, c), cross(c, a), cross(a, b)};
    for (DoubleVector& vec : aDual) {
        vec = {vec[0] / dfVolume, vec[1] / dfVolume, vec[2] / dfVolume};
    }
    return aDual;
}

std::vector<double> anglesOf(const SeriesGeometry& series)
{
    const TurnTerms<double>& turn = series.geometry.turn;
    const double dfMiddle = series.geometry.dfMiddleTilt;
    std::vector<double> list;
    for (const double dfTilt : series.listTilt) {
        list.push_back(turn.offset + dfMiddle + turn.scale * (dfTilt - dfMiddle));
    }
    return list;
}

std::optional<ExchangeGeometry> exchangeGeometry(const SeriesGeometry& series,
                                                 const FrameNumbering& numbering,
                                                 const std::vector<FramePlace>& listMoved, bool bCell,
                                                 QString* pstrReason)
{
    ExchangeGeometry geometry;
    geometry.numbering = numbering;
    geometry.sizeFrame = series.sizeFrame;
    geometry.dfWavelength = series.geometry.dfWavelength;
    geometry.dfPixel = g_dfSmvPixelSize;
    // At the distance D a pixel of side s spans s / (D·λ) in reciprocal space.
    geometry.dfDistance = g_dfSmvPixelSize / series.geometry.dfPixelSize / series.geometry.dfWavelength;
    geometry.rotation = series.rotation;
    geometry.source = series.geometry;
    if (!std::isfinite(geometry.dfDistance) || geometry.dfDistance <= 0) {
        refuse(pstrReason, QStringLiteral("There is no camera length, as pixel size or wavelength is 0."));
        return std::nullopt;
    }
    if (series.sizeFrame.isEmpty() || series.listBeam.size() != numbering.listNumber.size() ||
        series.listTilt.size() != numbering.listNumber.size()) {
        refuse(pstrReason, QStringLiteral("The geometry is not that of these frames."));
        return std::nullopt;
    }
    takeBeam(series, listMoved, geometry);
    if (!takeRotation(series, geometry, pstrReason)) {
        return std::nullopt;
    }
    if (bCell) {
        takeCell(series, geometry);
    }
    return geometry;
}

}  // namespace tessera
