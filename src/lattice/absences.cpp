#include "lattice/absences.h"

#include <algorithm>
#include <cmath>

namespace tessera {

LatticeBasis subcell(const LatticeBasis& basis, const Absence& absence)
{
    const Eigen::Matrix3d matAllowed = latticeOfMultiples(absence.anForm, absence.nDenominator);
    return shortestBasis(matAllowed.transpose().inverse() * basis);
}

std::vector<Absence> findAbsences(const LatticeBasis& basis, const LatticePoints& listPoint,
                                  double dfTolerance)
{
    const int nFewest = 100;
    // Even a class of weak reflections has some strong ones, so a class that exists shows more points than
    // this.
    const double dfMostSeen = 0.05;
    std::vector<Absence> listFound;
    dfTolerance = std::min(dfTolerance, g_dfCosetTolerance);
    const auto listIndex = realIndices(basis, listPoint);
    for (int nDenominator = 2; nDenominator <= 3; ++nDenominator) {
        const CCosetTable table(nDenominator);
        for (const IndexTriple& anForm : table.firsts()) {
            Absence absence;
            absence.anForm = anForm;
            absence.nDenominator = nDenominator;
            CosetWindow forbidden;
            for (const Eigen::Vector3d& index : listIndex) {
                const auto [anIndex, off] = nextCoset(index, 1);
                const double dfDistance = off.cwiseAbs().maxCoeff();
                if (anIndex[0] == 0 || anIndex[1] == 0 || anIndex[2] == 0 ||
                    dfDistance >= g_dfReachOfSurroundings * dfTolerance) {
                    continue;
                }
                const bool bAllowed = modulo(anForm[0] * anIndex[0] + anForm[1] * anIndex[1] +
                                                 anForm[2] * anIndex[2],
                                             nDenominator) == 0;
                if (!bAllowed) {
                    forbidden.add(off, dfTolerance);
                } else if (dfDistance < dfTolerance) {
                    ++absence.nFitting;
                }
            }
            absence.nAgainst = forbidden.nInside;
            absence.dfByChance = forbidden.byChance();
            const double dfDeviation = std::sqrt(absence.dfByChance + 1);
            if (absence.nFitting >= nFewest && absence.nAgainst <= absence.dfByChance + 3 * dfDeviation &&
                absence.nAgainst - absence.dfByChance + 3 * dfDeviation <= dfMostSeen * absence.nFitting) {
                listFound.push_back(absence);
            }
        }
    }
    return listFound;
}

QString centringOf(const std::vector<Absence>& listAbsence)
{
    QString strLetters;
    for (const Absence& absence : listAbsence) {
        const IndexTriple& an = absence.anForm;
        const int nZeros = int(std::count(an.begin(), an.end(), 0));
        if (absence.nDenominator == 2 && nZeros < 2) {
            strLetters += nZeros == 0  ? QLatin1Char('I')
                          : an[0] == 0 ? QLatin1Char('A')
                          : an[1] == 0 ? QLatin1Char('B')
                                       : QLatin1Char('C');
        }
        // The conditions are −h + k + l = 3n (obverse) and h − k + l = 3n (reverse), each up to the sign.
        else if (absence.nDenominator == 3 && (an == IndexTriple{1, 2, 2} || an == IndexTriple{1, 2, 1})) {
            strLetters += QLatin1Char('R');
        } else {
            return {};
        }
    }
    if (strLetters.isEmpty()) {
        return QStringLiteral("P");
    }
    std::sort(strLetters.begin(), strLetters.end());
    return strLetters == QLatin1String("ABC") ? QStringLiteral("F")
           : strLetters.size() == 1           ? strLetters
                                              : QString();
}

}  // namespace tessera
