#include "crystal/reflectionindices.h"

#include <cmath>
#include <limits>

namespace tessera {

double roundedIndex(double dfIndex)
{
    return dfIndex < 0 ? std::ceil(dfIndex - 0.5) : std::floor(dfIndex + 0.5);
}

int roundIndex(double dfIndex)
{
    // The rounded value is whole, so the truncation only limits it to the range of int.
    return truncatedInt(roundedIndex(dfIndex));
}

int truncatedInt(double dfValue)
{
    if (std::isnan(dfValue)) {
        return 0;
    }
    if (dfValue >= double(std::numeric_limits<int>::max())) {
        return std::numeric_limits<int>::max();
    }
    if (dfValue <= double(std::numeric_limits<int>::min())) {
        return std::numeric_limits<int>::min();
    }
    return int(dfValue);
}

bool isCloseToInteger(const Vec3D& hkl, float fThreshold)
{
    for (float f : {hkl.x, hkl.y, hkl.z}) {
        // Negated, so that a component that is NaN counts as far from a whole number.
        if (!(float(std::fabs(double(f) - roundedIndex(double(f)))) <= fThreshold)) {
            return false;
        }
    }
    return true;
}

bool isCloseToInteger(const Peak3D& peak, float fThreshold)
{
    return isCloseToInteger(Vec3D{float(peak.dfH), float(peak.dfK), float(peak.dfL)}, fThreshold);
}

QList<HKLRef> getRoundedHKLRef(const QList<Peak3D>& listPeak)
{
    QList<HKLRef> listHKL;
    listHKL.reserve(listPeak.size());
    for (const Peak3D& peak : listPeak) {
        listHKL.append({roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL), peak.dfIPoint});
    }
    return listHKL;
}

bool reflectionExistInList(const HKLRef& hkl, const QList<HKLRef>& listHKL)
{
    for (const HKLRef& other : listHKL) {
        if (other.nH == hkl.nH && other.nK == hkl.nK && other.nL == hkl.nL) {
            return true;
        }
    }
    return false;
}

}  // namespace tessera
