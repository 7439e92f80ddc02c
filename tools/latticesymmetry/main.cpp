// Prints the Bravais types of cells, for comparison with other programs. Reads lines of primitive cells
// with limits, "a b c alpha beta gamma obliquity" (Å, °). With an argument, it prints the table of the log
// for each cell. Without one, it prints a line for each type: the symbol, centring, number of rotations,
// the obliquity, misfits of edges and angles, the nine numbers of the transformation, and the constrained
// cell; and an empty line after each cell.
#include "geometry/angles.h"
#include "lattice/symmetrytable.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace tessera {
namespace {

/// The basis of a cell: a along x, b in the plane of x and y.
LatticeBasis basisOf(const CellParameters& cell)
{
    const double dfCosAlpha = std::cos(radians(cell.alpha));
    const double dfCosBeta = std::cos(radians(cell.beta));
    const double dfGamma = radians(cell.gamma);
    const double dfY = (dfCosAlpha - dfCosBeta * std::cos(dfGamma)) / std::sin(dfGamma);
    LatticeBasis basis;
    basis << cell.a, 0, 0, cell.b * std::cos(dfGamma), cell.b * std::sin(dfGamma), 0, cell.c * dfCosBeta,
        cell.c * dfY, cell.c * std::sqrt(1 - dfCosBeta * dfCosBeta - dfY * dfY);
    return basis;
}

void printNumbers(const LatticeSymmetry& symmetry)
{
    std::printf("%s %c %d %.6f %.6f %.6f", qPrintable(bravaisSymbol(symmetry)), symmetry.chCentring,
                symmetry.nRotations, symmetry.dfObliquity, symmetry.dfMisfitLengths, symmetry.dfMisfitAngles);
    for (int n = 0; n < 9; ++n) {
        std::printf(" %d", symmetry.matTransform(n / 3, n % 3));
    }
    for (const double df : symmetry.cellConstrained.numbers()) {
        std::printf(" %.6f", df);
    }
    std::printf("\n");
}

}  // namespace
}  // namespace tessera

int main(int nArguments, char**)
{
    using namespace tessera;
    CellParameters cell;
    double dfObliquity = 0;
    while (std::cin >> cell.a >> cell.b >> cell.c >> cell.alpha >> cell.beta >> cell.gamma >> dfObliquity) {
        const double dfAll = 1e3;  // no limit except that of the obliquity
        const auto list = latticeSymmetries(basisOf(cell), {dfObliquity, dfAll, dfAll});
        if (nArguments > 1) {
            std::printf("%s\n", qPrintable(symmetryTable(list).join(QLatin1Char('\n'))));
        } else {
            std::for_each(list.begin(), list.end(), printNumbers);
        }
        std::printf("\n");
    }
    return 0;
}
