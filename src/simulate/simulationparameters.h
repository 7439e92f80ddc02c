// SimulationParameters: everything that a simulated series is made from.
#pragma once

#include "simulate/lensdistortion.h"

#include <QString>

#include <cstdint>

namespace tessera {

/// Form of the frames on disk. The list is the simulator's own and not that of the readers of frames: it
/// links none of the core, so that a mistake there cannot cancel itself.
enum class SimulatedFormat { Mrc16, MrcU16, MrcFloat, Dm3, Png8 };
/// Radial form of a spot.
enum class SpotShape { Gaussian, Moffat };

struct SimulationParameters {
    QString strCrystal = QStringLiteral("natrolite");
    int nFrames = 120;
    int nSize = 512;               ///< pixels per side
    double dfPixelSize = 0.004;    ///< Å⁻¹ per pixel: 512 pixels reach 1.02 Å⁻¹
    double dfWavelength = 0.0251;  ///< Å, 200 kV
    double dfAxis = -38.5;         ///< azimuth of the rotation axis, degrees
    double dfTiltStart = -51;      ///< degrees: 120 frames cover 102 degrees
    double dfTiltStep = 0.85;      ///< degrees
    int nOrientation = 1;          ///< seed of the crystal's orientation
    std::uint64_t nSeed = 1;       ///< seed of drift, noise and hot pixels
    double dfCenterX = 259.4;      ///< direct beam on the first frame, pixels
    double dfCenterY = 252.3;
    double dfDrift = 6;        ///< largest excursion of the beam over the series, pixels
    double dfExposure = 8000;  ///< counts on a frame of a reflection of mean |F|², exactly in Bragg position
    double dfBeamCounts = 1500000;  ///< counts of the direct beam
    double dfBeamSigma = 3.0;       ///< pixels
    double dfBackground = 8;        ///< counts per pixel far from the beam
    double dfReadNoise = 1.5;       ///< counts, standard deviation
    double dfRocking = 0.005;       ///< σ of the rocking curve from shape and precession, Å⁻¹
    double dfMosaicity = 0.1;       ///< σ of the mosaic spread, degrees
    double dfSpotSigma = 1.5;       ///< pixels
    SpotShape spotShape = SpotShape::Gaussian;
    double dfSaturation = 0;  ///< counts at which a pixel saturates; 0 never
    int nHotPixels = 8;
    int nBlankFrame = 0;            ///< one without any beam, from 1; 0 none
    double dfStretchAmplitude = 0;  ///< per cent
    double dfStretchAzimuth = 0;    ///< degrees, along which the pattern is longer
    LensDistortion lens;            ///< its radius 0: half of the frame's side
    double dfWander = 0;            ///< largest smooth offset of the pattern from the direct beam, pixels
    int nJumpEvery = 0;             ///< one frame in so many has its pattern off by dfJump; 0 none
    double dfJump = 0;              ///< pixels
    double dfToldAxisOffset = 0;    ///< what the project's axis is off by, degrees
    bool bStretchTold = true;       ///< the project contains the stretching
    bool bLensTold = false;         ///< and the lens
    bool bStepped = false;          ///< the crystal stands still during an exposure
    int nBeamTilt = 0;              ///< beam tilt steps per goniometer step; below 2 none
    double dfPrecession = 0;        ///< half opening of the beam's cone, degrees; above 0 it stands still too
    double dfFade = 1;              ///< scale of the spots on the last frame relative to the first
    double dfFadeB = 0;             ///< B that the crystal has gained on the last frame, Å²
    double dfScaleWobble = 0;       ///< largest relative deviation of the scale along the series
    double dfGain = 1;              ///< counts per electron
    double dfForbidden = 0;         ///< intensity of what glide planes and screw axes forbid
    double dfSecondShare = 0;       ///< intensity of a second crystal relative to the first; 0 none
    bool bSecondTurned = false;     ///< the second stands turned against the first; else at random
    double dfSecondTurn = 0;        ///< degrees
    QString strSecondAxis;          ///< of the turn, one of turnAxisNames(); empty: a random direction
    int nSupercell = 1;             ///< number of average cells along the longer axis; 1: no supercell
    int nSupercellAxis = 2;         ///< 0 to 2 for a, b, c
    double dfOddShare = 0.02;       ///< intensity of the supercell's own reflections
    SimulatedFormat format = SimulatedFormat::Mrc16;
    QString strDirectory;  ///< made when missing
    QString strName = QStringLiteral("series");

    bool isStepped() const { return bStepped || dfPrecession > 0; }
    /// What the project says.
    double toldAxis() const { return dfAxis + dfToldAxisOffset; }
    double toldStretchAmplitude() const { return bStretchTold ? dfStretchAmplitude : 0; }
    double toldStretchAzimuth() const { return bStretchTold ? dfStretchAzimuth : 0; }
};

}  // namespace tessera
