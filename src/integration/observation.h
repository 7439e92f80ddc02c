// Observation: one passage of a reflection through the Ewald sphere, as predicted and as measured.
#pragma once

#include "geometry/diffractiongeometry.h"

#include <array>

namespace tessera {

struct Observation {
    // predicted
    std::array<int, 3> anIndex = {};  ///< h, k, l of the cell in force
    double dfFrame = 0;               ///< where it crosses the sphere, in frame numbers from 0
    double dfTilt = 0;                ///< degrees, there
    FramePlace place;                 ///< raw pixels, there
    double dfDStar = 0;               ///< Å⁻¹
    double dfSpeed = 0;   ///< Å⁻¹ per degree, by which the excitation error changes there, above 0
    int nFirstFrame = 0;  ///< the frames that are summed, from 0, the last one included
    int nLastFrame = -1;
    unsigned nFlags = 0;  ///< ReflectionFlag

    // measured
    double dfIntensity = 0;    ///< counts above the background, summed over the frames; may be negative
    double dfSigma = 0;        ///< its standard deviation; 0 where it was not measured
    double dfBackground = 0;   ///< counts per pixel
    double dfRecorded = 1;     ///< part of the rocking curve and of the disc that was recorded, 0 to 1
    bool bProfileFit = false;  ///< intensity by a fit of the profile in place of the sum

    // corrected: what is multiplied onto intensity and sigma
    double dfLorentz = 1;      ///< speed through the sphere, to a common scale
    double dfScale = 1;        ///< of the frame and of the decay
    double dfSigmaFactor = 1;  ///< what the error model makes of the sigma, on top of both

    bool isMeasured() const { return dfSigma > 0; }
    double corrected() const { return dfIntensity * dfLorentz * dfScale; }
    double correctedSigma() const { return dfSigma * dfLorentz * dfScale * dfSigmaFactor; }
};

}  // namespace tessera
