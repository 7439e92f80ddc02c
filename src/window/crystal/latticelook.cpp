#include "window/crystal/latticelook.h"

#include "lattice/symmetrytable.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tessera {

namespace {

/// "", "2", "1/2" before the name of an axis: sixths are enough for all centrings.
QString factorText(int nSixths)
{
    const int nCommon = std::gcd(nSixths, 6);
    const int nNumerator = nSixths / nCommon;
    const int nDenominator = 6 / nCommon;
    if (nDenominator == 1) {
        return nNumerator == 1 ? QString() : QString::number(nNumerator);
    }
    return QStringLiteral("%1/%2 ").arg(nNumerator).arg(nDenominator);
}

int countOfCosets(const LatticeWithCosets& whole)
{
    return int(whole.listTaken.size() + whole.listNamed.size());
}

}  // namespace

QStringList linesWithoutCosets(const LatticeWithCosets& whole)
{
    const QStringList listLine = tellWholeLattice(whole);
    return listLine.mid(0, listLine.size() - countOfCosets(whole));
}

std::vector<LongerCell> longerCells(const LatticeWithCosets& whole)
{
    const QStringList listLine = tellWholeLattice(whole);
    const auto nTaken = int(whole.listTaken.size());
    std::vector<LongerCell> listCell;
    for (int n = 0; n < countOfCosets(whole); ++n) {
        const LatticeBasis matBasis = n < nTaken ? whole.matBasis
                                                 : supercell(whole.matBasis, whole.listNamed[n - nTaken]);
        listCell.push_back({listLine[listLine.size() - countOfCosets(whole) + n], matBasis});
    }
    return listCell;
}

QStringList tellLattices(const LatticesOfPoints& lattices)
{
    if (lattices.listLattice.empty()) {
        return {};
    }
    const double dfAll = double(std::max<size_t>(1, lattices.vecLabel.size()));
    return QStringList{QStringLiteral("Lattice 1: %1% of the peaks are its own; the cell that was looked at.")
                           .arg(100 * lattices.listLattice.front().nOwn / dfAll, 0, 'f', 1)} +
           tellFurtherLattices(lattices);
}

CMatrix3 pageMatrix(const LatticeType& type, bool bReciprocal)
{
    Eigen::Matrix3d mat = type.matTransform;
    if (bReciprocal) {
        mat = mat.inverse().transpose().eval();
    }
    return {mat(0, 0), mat(0, 1), mat(0, 2), mat(1, 0), mat(1, 1),
            mat(1, 2), mat(2, 0), mat(2, 1), mat(2, 2)};
}

QString axesText(const Eigen::Matrix3d& matTransform)
{
    QStringList listAxis;
    for (int nRow = 0; nRow < 3; ++nRow) {
        QString strAxis;
        for (int n = 0; n < 3; ++n) {
            const auto nSixths = int(std::lround(6 * matTransform(nRow, n)));
            if (nSixths == 0) {
                continue;
            }
            if (nSixths < 0) {
                strAxis += QLatin1Char('-');
            } else if (!strAxis.isEmpty()) {
                strAxis += QLatin1Char('+');
            }
            strAxis += factorText(std::abs(nSixths)) + QLatin1Char(char('a' + n));
        }
        listAxis.append(strAxis);
    }
    return listAxis.join(QStringLiteral(", "));
}

bool isProposed(const LatticeAnalysis& analysis, const LatticeType& type)
{
    return analysis.proposed && analysis.proposed->symmetry.nRotations == type.symmetry.nRotations &&
           analysis.proposed->symmetry.matTransform == type.symmetry.matTransform;
}

QStringList tableOfTypes(const LatticeAnalysis& analysis)
{
    std::vector<LatticeSymmetry> listSymmetry;
    for (const LatticeType& type : analysis.listType) {
        listSymmetry.push_back(type.symmetry);
    }
    std::optional<LatticeSymmetry> proposed;
    if (analysis.proposed) {
        proposed = analysis.proposed->symmetry;
    }
    return symmetryTable(listSymmetry, proposed);
}

}  // namespace tessera
