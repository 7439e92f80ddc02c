#include "crystal/spacegroup.h"

#include "crystal/spacegroupoperations.h"
#include "crystal/spacegrouptable.h"

#include <cmath>

namespace tessera {

bool CSpaceGroup::setSpaceGroup(int nNewNumber)
{
    if (!isSpaceGroupNumber(nNewNumber)) {
        return false;
    }
    if (nNewNumber == nNumber) {
        return true;
    }
    vecOperation = operationsOfSpaceGroup(nNewNumber);
    nNumber = nNewNumber;
    return true;
}

bool CSpaceGroup::isAbsent(int h, int k, int l) const
{
    const double dfH = h, dfK = k, dfL = l;
    for (const CSymOp& op : vecOperation) {
        const double* t = op.dfTranslation;
        if (t[0] == 0 && t[1] == 0 && t[2] == 0) {
            continue;
        }
        // The elements are whole, so the products are exact and truncation could change nothing.
        const double* r = op.dfRotation;
        if (dfH * r[0] + dfK * r[3] + dfL * r[6] != dfH || dfH * r[1] + dfK * r[4] + dfL * r[7] != dfK ||
            dfH * r[2] + dfK * r[5] + dfL * r[8] != dfL) {
            continue;
        }
        const double dfPhase = dfH * t[0] + dfK * t[1] + dfL * t[2];
        if (std::fabs(dfPhase - std::round(dfPhase)) > 1e-7) {
            return true;
        }
    }
    return false;
}

}  // namespace tessera
