#include "exchange/dialsfiles.h"
#include "exchange/dialsidentifier.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>

#include <cmath>

namespace tessera {

namespace {

QJsonArray arrayOf(const DoubleVector& vec)
{
    return {vec[0], vec[1], vec[2]};
}

QJsonObject beamOf(const ExchangeGeometry& geometry)
{
    return {{QStringLiteral("__id__"), QStringLiteral("monochromatic")},
            {QStringLiteral("probe"), QStringLiteral("electron")},
            {QStringLiteral("direction"), QJsonArray{0.0, 0.0, 1.0}},
            {QStringLiteral("wavelength"), geometry.dfWavelength},
            {QStringLiteral("divergence"), 0.0},
            {QStringLiteral("sigma_divergence"), 0.0},
            {QStringLiteral("polarization_normal"), QJsonArray{0.0, 1.0, 0.0}},
            {QStringLiteral("polarization_fraction"), 0.5},
            {QStringLiteral("flux"), 0.0},
            {QStringLiteral("transmission"), 1.0}};
}

QJsonObject detectorOf(const ExchangeGeometry& geometry, const DialsOptions& options)
{
    QJsonArray arrayMask;
    for (const QRect& rc : options.listUntrusted) {
        arrayMask.append(QJsonArray{rc.left(), rc.top(), rc.right() + 1, rc.bottom() + 1});
    }
    // Counted from the outer corner of the first pixel, whose centre is 0 here.
    const DoubleVector vecOrigin = {-(geometry.beam.dfX + 0.5) * geometry.dfPixel,
                                    (geometry.beam.dfY + 0.5) * geometry.dfPixel, -geometry.dfDistance};
    const QJsonObject panel = {
        {QStringLiteral("name"), QStringLiteral("Panel")},
        {QStringLiteral("identifier"), QString()},
        {QStringLiteral("type"), QStringLiteral("SENSOR_PAD")},
        {QStringLiteral("fast_axis"), QJsonArray{1.0, 0.0, 0.0}},
        {QStringLiteral("slow_axis"), QJsonArray{0.0, -1.0, 0.0}},
        {QStringLiteral("origin"), arrayOf(vecOrigin)},
        {QStringLiteral("raw_image_offset"), QJsonArray{0, 0}},
        {QStringLiteral("image_size"), QJsonArray{geometry.sizeFrame.width(), geometry.sizeFrame.height()}},
        {QStringLiteral("pixel_size"), QJsonArray{geometry.dfPixel, geometry.dfPixel}},
        {QStringLiteral("trusted_range"), QJsonArray{-1.0, double(options.nHighest)}},
        {QStringLiteral("thickness"), 0.0},
        {QStringLiteral("material"), QString()},
        {QStringLiteral("mu"), 0.0},
        {QStringLiteral("gain"), 1.0},
        {QStringLiteral("pedestal"), 0.0},
        {QStringLiteral("mask"), arrayMask},
        {QStringLiteral("px_mm_strategy"),
         QJsonObject{{QStringLiteral("type"), QStringLiteral("SimplePxMmStrategy")}}}};
    return {{QStringLiteral("panels"), QJsonArray{panel}}};
}

QJsonObject goniometerOf(const ExchangeGeometry& geometry)
{
    const QJsonArray arrayIdentity = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
    return {{QStringLiteral("rotation_axis"), arrayOf(geometry.axis)},
            {QStringLiteral("fixed_rotation"), arrayIdentity},
            {QStringLiteral("setting_rotation"), arrayIdentity}};
}

QJsonObject scanOf(const ExchangeGeometry& geometry)
{
    const FrameNumbering& numbering = geometry.numbering;
    QJsonArray arrayZero;
    for (int n = numbering.first(); n <= numbering.last(); ++n) {
        arrayZero.append(0.0);
    }
    return {{QStringLiteral("image_range"), QJsonArray{numbering.first(), numbering.last()}},
            {QStringLiteral("batch_offset"), 0},
            {QStringLiteral("oscillation"), QJsonArray{geometry.dfStart, geometry.dfWidth}},
            {QStringLiteral("exposure_time"), arrayZero},
            {QStringLiteral("epochs"), arrayZero},
            {QStringLiteral("valid_image_ranges"), QJsonObject()}};
}

QJsonObject crystalOf(const ExchangeGeometry& geometry)
{
    return {{QStringLiteral("__id__"), QStringLiteral("crystal")},
            {QStringLiteral("real_space_a"), arrayOf(geometry.aDirect[0])},
            {QStringLiteral("real_space_b"), arrayOf(geometry.aDirect[1])},
            {QStringLiteral("real_space_c"), arrayOf(geometry.aDirect[2])},
            {QStringLiteral("space_group_hall_symbol"), QStringLiteral(" P 1")}};
}

QJsonObject imageSetOf(const DialsOptions& options)
{
    return {{QStringLiteral("__id__"), QStringLiteral("ImageSequence")},
            {QStringLiteral("template"), options.strTemplate},
            {QStringLiteral("mask"), QJsonValue()},
            {QStringLiteral("gain"), QJsonValue()},
            {QStringLiteral("pedestal"), QJsonValue()},
            {QStringLiteral("dx"), QJsonValue()},
            {QStringLiteral("dy"), QJsonValue()},
            {QStringLiteral("params"), QJsonObject()}};
}

/// The profile model. Where the widths are unknown, spots are 1.5 pixels wide and reflections as wide as
/// the step.
QJsonObject profileOf(const ExchangeGeometry& geometry, const DialsOptions& options)
{
    const double dfSpot = options.dfSpotSigma > 0 ? options.dfSpotSigma : 1.5;
    const double dfRocking = options.dfRockingSigma > 0 ? options.dfRockingSigma : geometry.dfWidth;
    return {{QStringLiteral("__id__"), QStringLiteral("gaussian_rs")},
            {QStringLiteral("n_sigma"), 3.0},
            {QStringLiteral("sigma_b"), degrees(std::atan(dfSpot * geometry.dfPixel / geometry.dfDistance))},
            {QStringLiteral("sigma_m"), dfRocking}};
}

}  // namespace

QString dialsIdentifier(const ExchangeGeometry& geometry)
{
    const QJsonObject object = {{QStringLiteral("detector"), detectorOf(geometry, {})},
                                {QStringLiteral("goniometer"), goniometerOf(geometry)},
                                {QStringLiteral("scan"), scanOf(geometry)},
                                {QStringLiteral("crystal"), crystalOf(geometry)}};
    const QByteArray bytes = QJsonDocument(object).toJson(QJsonDocument::Compact);
    return QUuid::createUuidV5(QUuid(), bytes).toString(QUuid::WithoutBraces);
}

QByteArray dialsExperiment(const ExchangeGeometry& geometry, const DialsOptions& options)
{
    QJsonObject experiment = {{QStringLiteral("__id__"), QStringLiteral("Experiment")},
                              {QStringLiteral("identifier"), dialsIdentifier(geometry)},
                              {QStringLiteral("beam"), 0},
                              {QStringLiteral("detector"), 0},
                              {QStringLiteral("goniometer"), 0},
                              {QStringLiteral("scan"), 0},
                              {QStringLiteral("imageset"), 0},
                              {QStringLiteral("profile"), 0}};
    QJsonArray arrayCrystal;
    if (geometry.bCell) {
        experiment[QStringLiteral("crystal")] = 0;
        arrayCrystal.append(crystalOf(geometry));
    }
    const QJsonObject object = {{QStringLiteral("__id__"), QStringLiteral("ExperimentList")},
                                {QStringLiteral("experiment"), QJsonArray{experiment}},
                                {QStringLiteral("imageset"), QJsonArray{imageSetOf(options)}},
                                {QStringLiteral("beam"), QJsonArray{beamOf(geometry)}},
                                {QStringLiteral("detector"), QJsonArray{detectorOf(geometry, options)}},
                                {QStringLiteral("goniometer"), QJsonArray{goniometerOf(geometry)}},
                                {QStringLiteral("scan"), QJsonArray{scanOf(geometry)}},
                                {QStringLiteral("crystal"), arrayCrystal},
                                {QStringLiteral("profile"), QJsonArray{profileOf(geometry, options)}},
                                {QStringLiteral("scaling_model"), QJsonArray()}};
    return QJsonDocument(object).toJson();
}

}  // namespace tessera
