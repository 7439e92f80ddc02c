#include "lattice/latticeturn.h"

#include "geometry/angles.h"
#include "lattice/rotationfit.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// All rows of −1, 0 and 1 except the zero row. Between reduced bases of one lattice no other coefficients
/// occur.
std::vector<Eigen::RowVector3d> smallRows()
{
    std::vector<Eigen::RowVector3d> listRow;
    for (int n = 0; n < 27; ++n) {
        if (n != 13) {
            listRow.emplace_back(n / 9 - 1, n / 3 % 3 - 1, n % 3 - 1);
        }
    }
    return listRow;
}

LatticeTurn turnOf(const Eigen::Matrix3d& matFrom, const LatticeBasis& to)
{
    const Eigen::Matrix3d matRotation = rotationBetween(matFrom, to);
    const Eigen::AngleAxisd angleAxis(matRotation);
    LatticeTurn turn;
    turn.dfAngle = degrees(angleAxis.angle());
    turn.axis = angleAxis.axis();
    turn.dfMisfit = (matFrom * matRotation.transpose() - to).norm() / to.norm();
    return turn;
}

struct Description {
    LatticeBasis basis;  // of the first lattice
    LatticeTurn turn;    // takes the basis to that of the second lattice
};

/// All bases of the first lattice that match the shortest basis of the second one apart from a rotation.
std::vector<Description> descriptionsLike(const LatticeBasis& from, const LatticeBasis& to,
                                          double dfMostMisfit)
{
    std::vector<Description> listFound;
    if (!from.allFinite() || !to.allFinite() || std::abs(from.determinant()) < 1e-9) {
        return listFound;
    }
    const std::vector<Eigen::RowVector3d> listSmall = smallRows();
    std::array<std::vector<Eigen::RowVector3d>, 3> aRow;  // rows whose length is that of the edge
    for (int n = 0; n < 3; ++n) {
        for (const Eigen::RowVector3d& small : listSmall) {
            if (std::abs((small * from).norm() - to.row(n).norm()) <= dfMostMisfit * to.norm()) {
                aRow[n].push_back(small);
            }
        }
    }
    Eigen::Matrix3d matChange;
    for (const auto& a : aRow[0]) {
        for (const auto& b : aRow[1]) {
            for (const auto& c : aRow[2]) {
                matChange << a, b, c;
                if (std::abs(matChange.determinant() - 1) < 0.5) {
                    const LatticeTurn turn = turnOf(matChange * from, to);
                    if (turn.dfMisfit <= dfMostMisfit) {
                        listFound.push_back({matChange * from, turn});
                    }
                }
            }
        }
    }
    return listFound;
}

double leastMisfit(const std::vector<Description>& listDescription)
{
    double dfLeast = 1;
    for (const Description& description : listDescription) {
        dfLeast = std::min(dfLeast, description.turn.dfMisfit);
    }
    return dfLeast;
}

}  // namespace

std::optional<LatticeTurn> turnBetween(const LatticeBasis& first, const LatticeBasis& second,
                                       double dfMostMisfit)
{
    const auto listFound = descriptionsLike(shortestBasis(first), shortestBasis(second), dfMostMisfit);
    // Bases are known to some parts in a thousand. A rotation that fits worse than that and worse than
    // twice the best one is only a near symmetry, and twins by a near symmetry are described by the
    // rotation that fits.
    const double dfLimit = std::max(2 * leastMisfit(listFound), 0.005);
    std::optional<LatticeTurn> least;
    for (const Description& description : listFound) {
        if (description.turn.dfMisfit <= dfLimit && (!least || description.turn.dfAngle < least->dfAngle)) {
            least = description.turn;
        }
    }
    return least;
}

std::optional<LatticeBasis> describedAs(const LatticeBasis& cell, const LatticeBasis& lattice,
                                        double dfMostMisfit)
{
    const LatticeBasis shortest = shortestBasis(cell);
    const auto listFound = descriptionsLike(shortestBasis(lattice), shortest, dfMostMisfit);
    const double dfLeast = leastMisfit(listFound);
    for (const Description& description : listFound) {
        if (description.turn.dfMisfit <= dfLeast) {
            const Eigen::Matrix3d matChange = (cell * shortest.inverse()).array().round();
            return LatticeBasis(matChange * description.basis);
        }
    }
    return std::nullopt;
}

}  // namespace tessera
