// timeLeftText: how long a run will take from here.
#pragma once

#include <QString>

namespace tessera {

/// The time that is left, by how far a run has come: "0:12 left"; empty while there is too little to go by.
/// @param dfSeconds  since its beginning
/// @param dfShare    that is done, 0 to 1
QString timeLeftText(double dfSeconds, double dfShare);

}  // namespace tessera
