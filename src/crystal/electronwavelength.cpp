#include "crystal/electronwavelength.h"

#include <cmath>

namespace tessera {

const double g_dfPlanckTimesLight = 12.398419843320026;  // keV Å
const double g_dfRestEnergy = 510.99895069;              // of the electron, keV

double electronWavelength(double dfKilovolts)
{
    if (!(dfKilovolts > 0)) {
        return 0;
    }
    return g_dfPlanckTimesLight / std::sqrt(dfKilovolts * (dfKilovolts + 2 * g_dfRestEnergy));
}

}  // namespace tessera
