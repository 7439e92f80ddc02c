// Second lattice: the same crystal once more in another orientation, as in a twin or an aggregate.
#pragma once

#include "simulate/randomsource.h"
#include "simulate/rotationprojection.h"
#include "simulate/simulationparameters.h"

#include <QStringList>

namespace tessera {

/// Axes that the second lattice may be turned about: the edges a, b, c and a*, b*, c* of the first one, and
/// the laboratory's x (the rotation axis), y and z (towards the source).
QStringList turnAxisNames();

/// Reads "DEG" or "DEG,AXIS" into the parameters of the turn.
/// @return false, with the parameters as they were, when it is none of these
bool parseTurn(const QString& strTurn, SimulationParameters& parameters);

/// Rotation by an angle in degrees about a direction of any length (Rodrigues' formula).
Matrix3 rotationAbout(const Vector3& vecAxis, double dfDegrees);

/// The basis of the second lattice: the first turned as the parameters tell, or at random.
/// @param matFirst    a*, b*, c* of the first in the rows, laboratory frame
/// @param matStandard the same before any orientation, where the second one stands at random
/// @param random      what the parameters leave open comes from here
Matrix3 secondBasis(const SimulationParameters& parameters, const Matrix3& matFirst,
                    const Matrix3& matStandard, CRandomSource& random);

/// The least angle in degrees of a rotation that brings the first basis onto the second, indices kept.
double turnBetween(const Matrix3& matFirst, const Matrix3& matSecond);

}  // namespace tessera
