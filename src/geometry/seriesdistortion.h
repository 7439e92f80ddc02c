// SeriesDistortion: the distortions of a project file other than the stretching, and the tilt of its axis.
#pragma once

#include "geometry/diffractiongeometry.h"

namespace tessera {

/// The distortions of a series in the form of its project file. They are centred at the direct beam of each
/// frame.
///
/// An azimuth is the direction in which the pattern on the frame is longer, in degrees counter-clockwise on
/// the screen from 3 o'clock, as STRETCHINGAZIMUTH. A distortion that is not 0 is always corrected; the box
/// that switches off the stretching has no effect on it.
struct SeriesDistortion {
    /// Per cent; linear: the pattern is longer along the azimuth and shorter across.
    double dfEllipseAmplitude = 0;
    double dfEllipseAzimuth = 0;  ///< degrees
    /// Per cent at dfRadius; above 0 barrel, so that places are corrected outwards.
    double dfThirdOrderRadial = 0;
    double dfThirdOrderSpiral = 0;  ///< per cent at dfRadius; above 0 the pattern is turned counter-clockwise
    double dfParabolicAmplitude = 0;  ///< per cent at dfRadius; second order, along the radius
    double dfParabolicAzimuth = 0;  ///< degrees; the pattern is longer on this side and shorter on the other
    double dfRadius = 256;          ///< reference radius of the second and third order, pixels; above 0
    double dfAxisOutOfPlane = 0;  ///< angle of the rotation axis towards +z of the laboratory frame, degrees

    bool movesPlaces() const;  ///< whether any distortion moves places on the frame
    bool isNone() const;       ///< whether all amplitudes and the angle of the axis are 0

    bool operator==(const SeriesDistortion& other) const;  ///< whether all numbers are equal
    bool operator!=(const SeriesDistortion& other) const { return !(*this == other); }  ///< the opposite
};

/// A number of SeriesDistortion and the keyword of its line in a project file.
struct DistortionKeyword {
    const char* pszKeyword;
    double SeriesDistortion::*pMember;
};
/// All numbers, in the order of their lines.
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

/// The distortions as numbers of the plane, in which centre, axis and stretching are 0.
PlaneTerms<double> planeTerms(const SeriesDistortion& distortion);

/// The distortions of a geometry, and the tilt of its axis, in the form of a project file. Centre, axis,
/// stretching and tilts of the geometry are left out, as they have other lines.
SeriesDistortion seriesDistortion(const DiffractionGeometry& geometry);

}  // namespace tessera
