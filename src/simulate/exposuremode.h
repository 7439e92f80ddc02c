// ExposureMode: what of its rocking curve a reflection gives to one frame, and how bright the crystal is
// then.
#pragma once

#include "simulate/rotationprojection.h"
#include "simulate/simulationparameters.h"

#include <array>
#include <vector>

namespace tessera {

/// How a reflection crosses the sphere while frames are exposed: turned through each frame's slice of tilt,
/// stepped with the crystal at rest, or stepped with the beam going round a cone.
class CExposureMode {
public:
    CExposureMode(const SimulationParameters& parameters, const CRotationProjection& projection);

    /// σ of the rocking curve of a reflection without turn and precession, Å⁻¹.
    double width(double dfDStar) const;
    /// Å⁻¹ of excitation error on either side within which the reflection is excited at all during a
    /// precession; 0 without.
    double precessionReach(double dfDStar) const;
    /// Mean of the rocking curve of height 1 over the exposure of a frame at a tilt (degrees). With
    /// precession it has two peaks, where the cone's edges touch the sphere. Source: Palatinus et al. (2019),
    /// Acta Cryst. B75, 512; here averaged over the azimuth with the exact excitation error.
    /// @return 0 where the reflection is farther than five widths away
    double recordedMean(const Vector3& vecLattice, double dfTilt, double dfDStar) const;
    /// The first and last tilt at which the series records anything, degrees.
    std::array<double, 2> recordedTilts(const std::vector<double>& listTilt) const;

private:
    double precessedMean(const Vector3& vecTurned, double dfDStar) const;

    const SimulationParameters& m_parameters;
    const CRotationProjection& m_projection;
};

/// Scale of the spots on each frame, 1 on the first without a wobble: what is left of a fading crystal falls
/// with the dose as an exponential to its share on the last frame, and a smooth wobble of two sines of the
/// length of the series and a third of it, of phases by chance, stands for thickness and bath.
std::vector<double> frameScales(const SimulationParameters& parameters);

/// B of each frame beyond that of the structure, Å²: intensities fall by exp(-B d*²/2). Grows evenly.
std::vector<double> frameDecays(const SimulationParameters& parameters);

/// Name of the mode: continuous, stepped or precession.
QString exposureModeName(const SimulationParameters& parameters);

}  // namespace tessera
