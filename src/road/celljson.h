// The six numbers of a cell as JSON.
#pragma once

#include "records/cellparameters.h"

#include <QJsonArray>

namespace tessera {

/// a, b, c, α, β, γ.
inline QJsonArray toArray(const CellParameters& cell)
{
    QJsonArray array;
    for (const double dfNumber : cell.numbers()) {
        array.append(dfNumber);
    }
    return array;
}

}  // namespace tessera
