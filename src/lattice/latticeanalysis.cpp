#include "lattice/latticeanalysis.h"

#include "lattice/symmetryproposal.h"

#include <algorithm>

namespace tessera {

namespace {

/// Rounds to sixths: coordinates of axes are multiples of halves, thirds or sixths, but computed from
/// measured bases.
Eigen::Matrix3d inSixths(const Eigen::Matrix3d& mat)
{
    return (6 * mat).array().round().matrix() / 6;
}

LatticeType typeOf(const LatticeSymmetry& symmetry, const LatticeBasis& basis)
{
    return {symmetry, inSixths(symmetry.basisMeasured * basis.inverse())};
}

/// The primitive basis, without the centring that absences show. Face-centred cells need two steps.
LatticeBasis primitiveBasis(LatticeBasis basis, const LatticePoints& listPoint)
{
    const int nMostRounds = 3;
    for (int n = 0; n < nMostRounds; ++n) {
        const std::vector<Absence> listAbsence = findAbsences(basis, listPoint);
        if (listAbsence.empty()) {
            break;
        }
        basis = subcell(basis, listAbsence.front());
    }
    return basis;
}

/// The points that are on no further lattice. Points of these are on cosets of the first lattice only by
/// chance.
LatticePoints withoutOthers(const LatticePoints& listPoint, const std::vector<int>& vecLabel)
{
    LatticePoints listOwn;
    for (size_t n = 0; n < listPoint.size(); ++n) {
        if (n >= vecLabel.size() || vecLabel[n] <= 0) {
            listOwn.push_back(listPoint[n]);
        }
    }
    return listOwn;
}

QString percent(double dfShare)
{
    return QStringLiteral("%1%").arg(100 * dfShare, 0, 'f', 1);
}

QString axisText(const Eigen::Vector3d& axis)
{
    return QStringLiteral("(%1, %2, %3)")
        .arg(axis.x(), 0, 'f', 3)
        .arg(axis.y(), 0, 'f', 3)
        .arg(axis.z(), 0, 'f', 3);
}

}  // namespace

double LatticeAnalysis::shareOfOthers() const
{
    const auto nOthers = std::count_if(lattices.vecLabel.begin(), lattices.vecLabel.end(),
                                       [](int nLabel) { return nLabel > 0; });
    return lattices.vecLabel.empty() ? 0 : double(nOthers) / double(lattices.vecLabel.size());
}

LatticeAnalysis analyseLattice(const LatticeBasis& basis, const LatticePoints& listPoint,
                               const FurtherLatticesOptions& options, const std::function<bool()>& fnGoOn)
{
    LatticeAnalysis analysis;
    analysis.lattices = findFurtherLattices(basis, listPoint, options, fnGoOn);
    analysis.whole = latticeAndCosets(basis, withoutOthers(listPoint, analysis.lattices.vecLabel));
    // Supercells are found by the search. Here the cell in force is analysed as it is, except for its
    // centring.
    const LatticeBasis primitive = primitiveBasis(basis, listPoint);
    const std::vector<LatticeSymmetry> listSymmetry = bestOfEachType(latticeSymmetries(primitive));
    for (const LatticeSymmetry& symmetry : listSymmetry) {
        analysis.listType.push_back(typeOf(symmetry, basis));
    }
    if (const std::optional<LatticeSymmetry> proposed = symmetryInKeeping(listSymmetry)) {
        analysis.proposed = typeOf(*proposed, basis);
    }
    return analysis;
}

QStringList tellWholeLattice(const LatticeWithCosets& whole)
{
    QStringList listLine;
    if (!whole.strCentring.isEmpty() && whole.strCentring != QLatin1String("P")) {
        listLine.append(QStringLiteral("All reflections of the cell fulfil the condition of the centring %1.")
                            .arg(whole.strCentring));
    } else if (!whole.listAbsence.empty()) {
        listLine.append(QStringLiteral(
            "All reflections of the cell fulfil a condition: an axis is a multiple of the true one."));
    }
    for (const Coset& coset : whole.listTaken) {
        listLine.append(
            QStringLiteral("%1 of the shorter cell, by chance %2 of %3: the longer cell is the right one.")
                .arg(cosetText(coset))
                .arg(coset.dfByChance, 0, 'f', 1)
                .arg(coset.nPoints));
    }
    for (const Coset& coset : whole.listNamed) {
        listLine.append(QStringLiteral("%1 (%2 peaks, by chance %3): a longer cell may be the right one.")
                            .arg(cosetText(coset))
                            .arg(coset.nPoints)
                            .arg(coset.dfByChance, 0, 'f', 1));
    }
    return listLine;
}

QStringList tellFurtherLattices(const LatticesOfPoints& lattices)
{
    QStringList listLine;
    const double dfAll = double(std::max<size_t>(1, lattices.vecLabel.size()));
    for (size_t n = 1; n < lattices.listLattice.size(); ++n) {
        const OneOfLattices& lattice = lattices.listLattice[n];
        const CellParameters cell = cellOf(lattice.matBasis);
        QString strLine =
            QStringLiteral(
                "Lattice %1: %2 of the peaks belong to it; a=%3 Å, b=%4 Å, c=%5 Å, α=%6°, β=%7°, γ=%8°")
                .arg(n + 1)
                .arg(percent(lattice.nOwn / dfAll))
                .arg(cell.a, 0, 'f', 3)
                .arg(cell.b, 0, 'f', 3)
                .arg(cell.c, 0, 'f', 3)
                .arg(cell.alpha, 0, 'f', 2)
                .arg(cell.beta, 0, 'f', 2)
                .arg(cell.gamma, 0, 'f', 2);
        if (lattice.turn) {
            strLine += QStringLiteral("; the cell of the first, turned by %1° about %2")
                           .arg(lattice.turn->dfAngle, 0, 'f', 2)
                           .arg(axisText(lattice.turn->axis));
        }
        listLine.append(strLine + QLatin1Char('.'));
    }
    return listLine;
}

}  // namespace tessera
