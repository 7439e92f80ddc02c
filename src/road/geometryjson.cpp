#include "road/geometryjson.h"

#include "refinement/beamdrift.h"
#include "road/celljson.h"

#include <QJsonArray>

#include <cmath>

namespace tessera {

namespace {

QJsonObject distortionObject(double dfCos, double dfSin)
{
    const Distortion distortion = distortionOf(dfCos, dfSin);
    return {{QStringLiteral("amplitude"), 100 * distortion.dfAmplitude},
            {QStringLiteral("azimuth"), distortion.dfAzimuth}};
}

QJsonObject cellObject(const GeometryModel& model)
{
    QJsonObject object = {{QStringLiteral("parameters"), toArray(model.cell)},
                          {QStringLiteral("standardErrors"), toArray(model.cellErrors)}};
    if (model.fit.form.constraint()) {
        object[QStringLiteral("symbol")] = model.fit.form.constraint()->strSymbol;
    }
    object[QStringLiteral("rmsPixels")] = model.dfRms;
    if (std::isfinite(model.dfRmsUnseen)) {
        object[QStringLiteral("rmsFittedHalf")] = model.dfRmsSeen;
        object[QStringLiteral("rmsOtherHalf")] = model.dfRmsUnseen;
    }
    return object;
}

/// Axis, stretching, rms, and number of peaks that fit.
QJsonObject stateObject(const DiffractionGeometry& geometry, double dfRms, int nFit)
{
    return {{QStringLiteral("axis"), geometry.plane.axis},
            {QStringLiteral("stretching"),
             distortionObject(geometry.plane.stretchingCos, geometry.plane.stretchingSin)},
            {QStringLiteral("rmsPixels"), dfRms},
            {QStringLiteral("peaks"), nFit}};
}

void putPlane(QJsonObject& object, const DiffractionGeometry& geometry)
{
    const PlaneTerms<double>& plane = geometry.plane;
    object[QStringLiteral("axis")] = plane.axis;
    object[QStringLiteral("axisOutOfPlane")] = geometry.turn.outOfPlane;
    object[QStringLiteral("stretching")] = distortionObject(plane.stretchingCos, plane.stretchingSin);
    object[QStringLiteral("ellipse")] = distortionObject(plane.ellipseCos, plane.ellipseSin);
    object[QStringLiteral("thirdOrder")] = QJsonObject{{QStringLiteral("radial"), 100 * plane.radial},
                                                       {QStringLiteral("spiral"), 100 * plane.spiral},
                                                       {QStringLiteral("radius"), geometry.dfRadius}};
    object[QStringLiteral("parabolic")] = QJsonObject{
        {QStringLiteral("amplitude"), 100 * std::hypot(plane.parabolicCos, plane.parabolicSin)},
        {QStringLiteral("azimuth"), degrees(std::atan2(plane.parabolicSin, plane.parabolicCos))},
        {QStringLiteral("radius"), geometry.dfRadius}};
    object[QStringLiteral("centre")] = QJsonArray{plane.centreX, plane.centreY};
    object[QStringLiteral("tiltScale")] = geometry.turn.scale;
}

QJsonObject driftObject(const GeometryModel& model)
{
    QJsonArray arrayOffset;
    for (const FramePlace& offset : model.listDrift) {
        arrayOffset.append(QJsonArray{offset.dfX, offset.dfY});
    }
    return {{QStringLiteral("rms"), driftRms(model)},
            {QStringLiteral("intervals"), model.nDriftIntervals},
            {QStringLiteral("jumps"), model.nJumps},
            {QStringLiteral("offsets"), arrayOffset}};
}

}  // namespace

QJsonObject geometryObject(const GeometryRefinement& refinement)
{
    if (!refinement.done()) {
        return {{QStringLiteral("refined"), false}, {QStringLiteral("reason"), refinement.strReason}};
    }
    const GeometryModel& best = refinement.best();
    QJsonObject object = {{QStringLiteral("refined"), true},
                          {QStringLiteral("cell"), cellObject(refinement.free)}};
    if (refinement.constrained) {
        object[QStringLiteral("constrained")] = cellObject(*refinement.constrained);
    }
    putPlane(object, best.geometry);
    object[QStringLiteral("drift")] = driftObject(best);
    QJsonObject errors;
    for (const int nNumber : best.fit.listFree) {
        if (!isOfCell(nNumber)) {
            errors[geometryNumberName(nNumber)] = best.errors[nNumber];
        }
    }
    object[QStringLiteral("standardErrors")] = errors;
    object[QStringLiteral("spotCentres")] = refinement.bFinePlaces;
    object[QStringLiteral("rmsPixels")] = refinement.dfRmsAfter;
    object[QStringLiteral("before")] = stateObject(refinement.before, refinement.dfRmsBefore,
                                                   refinement.nFitBefore);
    object[QStringLiteral("after")] = stateObject(best.geometry, refinement.dfRmsAfter, refinement.nFitAfter);
    QJsonArray arrayFixed;
    for (const FixedNumber& fixed : refinement.listFixed) {
        arrayFixed.append(geometryNumberName(fixed.nNumber));
    }
    object[QStringLiteral("fixed")] = arrayFixed;
    return object;
}

}  // namespace tessera
