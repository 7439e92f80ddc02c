#include "geometry/seriesdistortion.h"

#include <cmath>
#include <tuple>

namespace tessera {

namespace {

auto members(const SeriesDistortion& d)
{
    return std::tie(d.dfEllipseAmplitude, d.dfEllipseAzimuth, d.dfThirdOrderRadial, d.dfThirdOrderSpiral,
                    d.dfParabolicAmplitude, d.dfParabolicAzimuth, d.dfRadius, d.dfAxisOutOfPlane);
}

}  // namespace

bool SeriesDistortion::movesPlaces() const
{
    return dfEllipseAmplitude != 0 || dfThirdOrderRadial != 0 || dfThirdOrderSpiral != 0 ||
           dfParabolicAmplitude != 0;
}

bool SeriesDistortion::isNone() const
{
    return !movesPlaces() && dfAxisOutOfPlane == 0;
}

bool SeriesDistortion::operator==(const SeriesDistortion& other) const
{
    return members(*this) == members(other);
}

PlaneTerms<double> planeTerms(const SeriesDistortion& distortion)
{
    // The terms are corrections, which lengthen where the pattern is too short. Hence the minus sign.
    const double dfEllipse = -distortion.dfEllipseAmplitude / 100;
    const double dfParabolic = -distortion.dfParabolicAmplitude / 100;
    const double dfTwice = 2 * radians(distortion.dfEllipseAzimuth);
    const double dfSide = radians(distortion.dfParabolicAzimuth);
    PlaneTerms<double> terms;
    terms.ellipseCos = dfEllipse * std::cos(dfTwice);
    terms.ellipseSin = dfEllipse * std::sin(dfTwice);
    terms.radial = distortion.dfThirdOrderRadial / 100;
    terms.spiral = distortion.dfThirdOrderSpiral / 100;
    terms.parabolicCos = dfParabolic * std::cos(dfSide);
    terms.parabolicSin = dfParabolic * std::sin(dfSide);
    return terms;
}

SeriesDistortion seriesDistortion(const DiffractionGeometry& geometry)
{
    const PlaneTerms<double>& terms = geometry.plane;
    SeriesDistortion distortion;
    const Distortion ellipse = distortionOf(-terms.ellipseCos, -terms.ellipseSin);
    distortion.dfEllipseAmplitude = 100 * ellipse.dfAmplitude;
    if (ellipse.dfAmplitude != 0) {
        distortion.dfEllipseAzimuth = ellipse.dfAzimuth < 0 ? ellipse.dfAzimuth + 180 : ellipse.dfAzimuth;
    }
    distortion.dfThirdOrderRadial = 100 * terms.radial;
    distortion.dfThirdOrderSpiral = 100 * terms.spiral;
    distortion.dfParabolicAmplitude = 100 * std::hypot(terms.parabolicCos, terms.parabolicSin);
    if (distortion.dfParabolicAmplitude != 0) {
        distortion.dfParabolicAzimuth = degrees(std::atan2(-terms.parabolicSin, -terms.parabolicCos));
    }
    distortion.dfRadius = geometry.dfRadius;
    distortion.dfAxisOutOfPlane = geometry.turn.outOfPlane;
    return distortion;
}

}  // namespace tessera
