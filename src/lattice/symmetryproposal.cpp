#include "lattice/symmetryproposal.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// The error of a cell from the indexing of a series with well-known geometry is up to a quarter of a per
// cent and of a degree.
const double g_dfStrainOfGoodGeometry = 0.45;
// Elliptic distortions of projector lenses: Capitani, Oleynikov, Hovmöller & Mellini (2006), Ultramicroscopy
// 106, 66-74, who found 2.5 % uncorrected, half of it on either axis.
const double g_dfStrainOfEllipse = 1.5;
// The worst of several errors of one size may be this many times the worst of two or three.
const double g_dfTimesLower = 3;

}  // namespace

double strainOf(const LatticeSymmetry& symmetry)
{
    return std::max(symmetry.dfMisfitLengths, 100 * std::sin(radians(symmetry.dfMisfitAngles)));
}

std::optional<LatticeSymmetry> symmetryInKeeping(const std::vector<LatticeSymmetry>& listSymmetry)
{
    std::vector<LatticeSymmetry> listSorted = listSymmetry;
    std::stable_sort(
        listSorted.begin(), listSorted.end(), [](const LatticeSymmetry& a, const LatticeSymmetry& b) {
            return a.nRotations != b.nRotations ? a.nRotations < b.nRotations : strainOf(a) < strainOf(b);
        });
    std::vector<LatticeSymmetry> listAccepted;
    for (const LatticeSymmetry& symmetry : listSorted) {
        const double dfStrain = strainOf(symmetry);
        double dfLimit = symmetry.nRotations == 2 ? g_dfStrainOfEllipse : g_dfStrainOfGoodGeometry;
        for (const LatticeSymmetry& lower : listAccepted) {
            if (lower.nRotations > 1 && lower.nRotations < symmetry.nRotations &&
                symmetry.nRotations % lower.nRotations == 0) {
                dfLimit = std::max(dfLimit, g_dfTimesLower * strainOf(lower));
            }
        }
        if (symmetry.nRotations == 1 || dfStrain <= dfLimit) {
            listAccepted.push_back(symmetry);
        }
    }
    if (listAccepted.empty()) {
        return {};
    }
    const int nHighest = listAccepted.back().nRotations;
    return *std::find_if(listAccepted.begin(), listAccepted.end(),
                         [&](const LatticeSymmetry& symmetry) { return symmetry.nRotations == nHighest; });
}

}  // namespace tessera
