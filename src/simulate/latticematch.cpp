#include "simulate/latticematch.h"

#include "simulate/structurefactor.h"

#include <algorithm>
#include <numeric>

namespace tessera {

namespace {
// The matrix with whole elements, and how far the given one lies from it.
Matrix3 roundedMatrix(const Matrix3& mat, double& dfMisfit)
{
    Matrix3 result = mat;
    dfMisfit = 0;
    for (Vector3& row : result) {
        for (double& df : row) {
            const double dfWhole = std::round(df);
            dfMisfit = std::max(dfMisfit, std::abs(df - dfWhole));
            df = dfWhole;
        }
    }
    return result;
}

bool isPrimitiveVector(const Vector3& vec)
{
    return std::gcd(std::gcd(int(vec[0]), int(vec[1])), int(vec[2])) == 1;
}

constexpr double g_dfLargestMisfit = 0.2;
}  // namespace

LatticeMatch matchLattice(const Matrix3& matFound, const Matrix3& matTrue, const Matrix3& matPrimitive)
{
    LatticeMatch match;
    const Matrix3 matTruePrimitive = matPrimitive * matTrue;
    if (!(std::abs(determinantOf(matFound)) > 1e-9)) {
        return match;
    }
    // The found basis in terms of the true primitive one: the elements are whole numbers if it contains only
    // lattice points.
    const Matrix3 matRatio = matFound * inverseOf(matTruePrimitive);
    double dfMisfit = 0;
    const Matrix3 matWhole = roundedMatrix(matRatio, dfMisfit);
    const int nWhole = int(std::lround(std::abs(determinantOf(matWhole))));
    Matrix3 matFoundOnPrimitive;  // exact
    if (dfMisfit < g_dfLargestMisfit && nWhole >= 1) {
        match.relation = nWhole == 1 ? LatticeMatch::Same : LatticeMatch::Subcell;
        match.nIndex = nWhole;
        match.dfMisfit = dfMisfit;
        matFoundOnPrimitive = matWhole;
    } else {
        // The other way round: every true point has whole indices on the found basis.
        const Matrix3 matBack = roundedMatrix(inverseOf(matRatio), dfMisfit);
        const int nBack = int(std::lround(std::abs(determinantOf(matBack))));
        if (!(dfMisfit < g_dfLargestMisfit) || nBack < 2) {
            return match;
        }
        // The rows of its transpose are the found direct axes on the true primitive direct cell.
        const Matrix3 matDirect = transposed(matBack);
        const bool bTrueAxes = std::all_of(matDirect.begin(), matDirect.end(), isPrimitiveVector);
        match.relation = bTrueAxes && nBack <= 4 ? LatticeMatch::Centred : LatticeMatch::Supercell;
        match.nIndex = nBack;
        match.dfMisfit = dfMisfit;
        matFoundOnPrimitive = inverseOf(matBack);
    }
    match.matToTrue = matFoundOnPrimitive * matPrimitive;
    match.adfCell = cellOfReciprocalBasis(inverseOf(match.matToTrue) * matFound);
    match.adfTrueCell = cellOfReciprocalBasis(matTrue);
    match.errors = errorsOfCell(cellOfReciprocalBasis(matFound), match, matTrue);
    return match;
}

CellErrors errorsOfCell(const std::array<double, 6>& adfCell, const LatticeMatch& match,
                        const Matrix3& matTrue)
{
    const std::array<double, 6> adfBrought = cellOfReciprocalBasis(inverseOf(match.matToTrue) *
                                                                   reciprocalBasisOfCell(adfCell));
    const std::array<double, 6> adfTrue = cellOfReciprocalBasis(matTrue);
    CellErrors errors;
    for (int i = 0; i < 3; ++i) {
        errors.adfLength[i] = 100 * (adfBrought[i] / adfTrue[i] - 1);
        errors.adfAngle[i] = adfBrought[3 + i] - adfTrue[3 + i];
    }
    return errors;
}

}  // namespace tessera
