// Observation: one passage of a reflection through the Ewald sphere, as predicted and as measured.
#pragma once

#include "geometry/diffractiongeometry.h"

#include <array>

namespace tessera {

/// A passage of a reflection with its prediction, its measurement and its corrections.
struct Observation {
    // prediction
    std::array<int, 3> anIndex = {};  ///< h, k, l in the cell in force
    double dfFrame = 0;               ///< frame number, from 0, at which it crosses the Ewald sphere
    double dfTilt = 0;                ///< tilt at the crossing, degrees
    FramePlace place;                 ///< place at the crossing, raw pixels
    double dfDStar = 0;               ///< Å⁻¹
    double dfSpeed = 0;  ///< rate of change of the excitation error at the crossing, Å⁻¹ per degree, above 0
    int nFirstFrame = 0;  ///< first frame that is summed, from 0
    int nLastFrame = -1;  ///< last frame that is summed
    unsigned nFlags = 0;  ///< ReflectionFlag

    // measurement
    double dfIntensity = 0;    ///< counts above background, summed over the frames; may be negative
    double dfSigma = 0;        ///< standard deviation of the intensity; 0 if it was not measured
    double dfBackground = 0;   ///< counts per pixel
    double dfRecorded = 1;     ///< fraction of the rocking curve and of the disc that was recorded, 0 to 1
    bool bProfileFit = false;  ///< the intensity is from profile fitting instead of summation

    // corrections: factors of intensity and sigma
    double dfLorentz = 1;      ///< Lorentz factor, see lorentzfactor.h
    double dfScale = 1;        ///< scale of the frame including decay
    double dfSigmaFactor = 1;  ///< additional factor of the sigma by the error model

    bool isMeasured() const { return dfSigma > 0; }                         ///< whether there is an intensity
    double corrected() const { return dfIntensity * dfLorentz * dfScale; }  ///< intensity on the common scale
    /// The standard deviation on the common scale.
    double correctedSigma() const { return dfSigma * dfLorentz * dfScale * dfSigmaFactor; }
};

}  // namespace tessera
