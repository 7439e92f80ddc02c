// The refined geometry as a table for the log.
#pragma once

#include "refinement/geometryrefinement.h"

#include <QStringList>

#include <vector>

namespace tessera {

/// How a number of the geometry is displayed.
struct GeometryRow {
    const char* pszName;    ///< name for the user, UTF-8
    const char* pszUnit;    ///< unit of the number times the factor, UTF-8
    double dfFactor;        ///< factor of the number
    GeometryNumber number;  ///< the number
    int nDecimals;          ///< decimals of the number times the factor
};

/// All numbers except those of the cell, in the order of display.
std::vector<GeometryRow> geometryRows();

/// A line for each number with its value before and after, its standard error, and whether it was free or
/// fixed; then the cells with standard errors, and a remark that the cell edges depend on the pixel size.
QStringList geometryTable(const GeometryRefinement& refinement);

}  // namespace tessera
