#include "reciprocal/suggestcellrange.h"

#include "reciprocal/latticepoints.h"

#include <cmath>

namespace tessera {

Suggestion suggestCellRange(const DataSet& dataSet)
{
    const CellRange range = automaticCellRange(dataSet);
    const CellHuntingParameters page;  // its range is taken where the spots do not suggest one
    if (range.dfLongest == page.m_dfCellRangeMax && range.dfShortest == page.m_dfCellRangeMin) {
        return {};
    }
    return {suggestedValue(&CellHuntingParameters::m_dfCellRangeMin, range.dfShortest,
                           QStringLiteral("atoms are no closer")),
            suggestedValue(&CellHuntingParameters::m_dfCellRangeMax, std::ceil(range.dfLongest),
                           QStringLiteral("1.5 times the spacing of net planes by the closest spots, %1 Å")
                               .arg(range.dfLongest / 1.5, 0, 'f', 1))};
}

}  // namespace tessera
