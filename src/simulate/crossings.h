// Crossings: when and where reflections pass the Ewald sphere during a series, and whether all of it is
// recorded.
#pragma once

#include "simulate/exposuremode.h"
#include "simulate/structurefactor.h"

#include <array>
#include <vector>

namespace tessera {

struct SimulatedSeries;

/// One passage of a reflection through the sphere.
struct Crossing {
    int nH = 0, nK = 0, nL = 0;
    double dfFrame = 0;          ///< in frames from 0; whole numbers are the middles of slices
    double dfX = 0, dfY = 0;     ///< pixels, there
    double dfCounts = 0;         ///< expected of the passage, in the discs of all its frames
    double dfSignalToNoise = 0;  ///< of these counts by counting, background and read noise in the discs
    bool bInside = false;        ///< recorded as a whole
    int nLattice = 0;
};

/// Tilts in degrees at which a lattice point has an excitation error on its way through the sphere.
class CSpherePath {
public:
    /// @param vecLattice  Å⁻¹, laboratory frame at tilt 0, x along the rotation axis
    CSpherePath(const Vector3& vecLattice, double dfWavelength);

    /// The tilt nearest to a wanted one, of one of the two passages of a whole turn.
    /// @param nPassage      0 or 1
    /// @param dfExcitation  Å⁻¹, positive inside the sphere
    /// @return not finite where the point never gets there
    double tiltOf(int nPassage, double dfExcitation, double dfNear) const;
    /// Å⁻¹ per degree by which the excitation error changes on the sphere, above 0.
    double speed() const;

private:
    double m_dfSquare;       ///< Å⁻²
    double m_dfPath;         ///< Å⁻¹, radius of the circle about the axis
    double m_dfPhase;        ///< radians
    double m_dfEwaldRadius;  ///< Å⁻¹
};

/// All passages whose middle lies in the recorded tilts and on the frame. A passage is recorded as a whole
/// when
/// - the excitation error goes from three widths (and the reach of the precession) on one side of the sphere
/// to as
///   many on the other between the first and the last recorded tilt, without turning round before,
/// - the disc of the spot (three sigma) lies on the frame and beyond the drawn disc of the direct beam, and
/// - no frame of it is blank.
/// Ordered by lattice, then as the reflections.
/// @param dfMeanSquareF  what the exposure is told by
std::vector<Crossing> findCrossings(const SimulatedSeries& series,
                                    const std::vector<Reflection>& listReflection, double dfMeanSquareF,
                                    const CRotationProjection& projection);

}  // namespace tessera
