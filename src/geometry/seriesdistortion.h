// SeriesDistortion: what a project tells of the lens and the rotation axis beside the stretching.
#pragma once

#include "geometry/diffractiongeometry.h"

namespace tessera {

/// The distortions of a series as its project file has them, about the direct beam of each frame.
///
/// Azimuths are degrees, counter-clockwise on the screen from 3 o'clock, along which the pattern on the frame
/// is longer, as STRETCHINGAZIMUTH counts. All are at work where they are not 0: the box that switches the
/// stretching off leaves them alone.
struct SeriesDistortion {
    double dfEllipseAmplitude = 0;    ///< per cent; linear: the pattern is longer along, shorter across
    double dfEllipseAzimuth = 0;      ///< degrees
    double dfThirdOrderRadial = 0;    ///< per cent at dfRadius; above 0 a barrel, which is undone outwards
    double dfThirdOrderSpiral = 0;    ///< likewise; above 0 the pattern is turned counter-clockwise on screen
    double dfParabolicAmplitude = 0;  ///< per cent at dfRadius: second order, along the radius
    double dfParabolicAzimuth = 0;    ///< degrees: to this side the pattern is longer, to the other shorter
    double dfRadius = 256;            ///< pixels, above 0: where second and third order have their per cent
    double dfAxisOutOfPlane = 0;      ///< degrees, of the rotation axis towards +z, the laboratory frame

    bool movesPlaces() const;  ///< whether a place on the frame is another one without the lens
    bool isNone() const;       ///< whether nothing is told: the azimuths and the radius do not count then

    bool operator==(const SeriesDistortion& other) const;  ///< equal to the bit in all of these
    bool operator!=(const SeriesDistortion& other) const { return !(*this == other); }  ///< the opposite
};

/// A number of the record and its line in a project file.
struct DistortionKeyword {
    const char* pszKeyword;
    double SeriesDistortion::*pMember;
};
constexpr DistortionKeyword g_aDistortionKeyword[] = {
    {"ELLIPSEAMP", &SeriesDistortion::dfEllipseAmplitude},
    {"ELLIPSEAZIMUTH", &SeriesDistortion::dfEllipseAzimuth},
    {"THIRDORDERRADIAL", &SeriesDistortion::dfThirdOrderRadial},
    {"THIRDORDERSPIRAL", &SeriesDistortion::dfThirdOrderSpiral},
    {"THIRDORDERRADIUS", &SeriesDistortion::dfRadius},
    {"PARABOLICAMP", &SeriesDistortion::dfParabolicAmplitude},
    {"PARABOLICAZIMUTH", &SeriesDistortion::dfParabolicAzimuth},
    {"AXISOUTOFPLANE", &SeriesDistortion::dfAxisOutOfPlane},
};

/// The same as terms of the plane; centre, axis and stretching are 0.
PlaneTerms<double> planeTerms(const SeriesDistortion& distortion);

/// The opposite: what a project tells of a geometry. Its centre, axis, stretching and tilts have other
/// places.
SeriesDistortion seriesDistortion(const DiffractionGeometry& geometry);

}  // namespace tessera
