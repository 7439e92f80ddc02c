// The table of the refined geometry for the log.
#pragma once

#include "refinement/geometryrefinement.h"

#include <QStringList>

#include <vector>

namespace tessera {

/// How a number of the geometry is shown.
struct GeometryRow {
    const char* pszName;
    const char* pszUnit;  ///< UTF-8; of the number times the factor
    double dfFactor;
    GeometryNumber number;
    int nDecimals;
};

/// The numbers but for those of the cell, in the order in which they are shown.
std::vector<GeometryRow> geometryRows();

/// A line for each number: its value before and after, the standard error, and whether it was free or fixed;
/// then the cells with their standard errors. Lengths of the cell hold as far as the size of a pixel does,
/// which is said.
QStringList geometryTable(const GeometryRefinement& refinement);

}  // namespace tessera
