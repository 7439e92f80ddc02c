#include "simulate/scatteringfactors.h"

#include <gemmi/c4322.hpp>

#include <limits>

namespace tessera {

double electronScatteringFactor(const QString& strElement, double dfS)
{
    const gemmi::El element = gemmi::find_element(strElement.toLatin1().constData());
    const auto* pSum = element == gemmi::El::X ? nullptr : gemmi::C4322<double>::get_ptr(element);
    return pSum ? pSum->calculate_sf(dfS * dfS) : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace tessera
