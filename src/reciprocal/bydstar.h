// Sorting of records by d*.
#pragma once

#include "records/peak3d.h"

#include <algorithm>
#include <cmath>

namespace tessera {

/// Less-than that puts what is not a number last, so that a sort has a definite order whatever comes.
inline bool numbersAscending(double dfA, double dfB)
{
    return dfA < dfB || (std::isnan(dfB) && !std::isnan(dfA));
}

/// The same for descending order; what is not a number still comes last.
inline bool numbersDescending(double dfA, double dfB)
{
    return dfA > dfB || (std::isnan(dfB) && !std::isnan(dfA));
}

/// Ascending by dfDStar; records of equal d* keep their order.
inline void sortByDStar(QList<Peak3D>& listPeak)
{
    std::stable_sort(listPeak.begin(), listPeak.end(),
                     [](const Peak3D& a, const Peak3D& b) { return numbersAscending(a.dfDStar, b.dfDStar); });
}

}  // namespace tessera
