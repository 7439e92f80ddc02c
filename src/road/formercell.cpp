#include "road/formercell.h"

#include "dataset/unitcellfile.h"
#include "reciprocal/latticehunting.h"
#include "reciprocal/latticepoints.h"
#include "records/formerfile.h"

#include <QFile>
#include <QLocale>

#include <cmath>
#include <optional>

namespace tessera {

namespace {

constexpr double g_dfClearly = 0.95;  // ratio of two shares, as used for the candidates of a search
constexpr double g_dfSigmas = 3;      // significance of the difference of two counts

std::optional<LatticeCandidate> candidateOf(const QList<Vec3D>& listCell, const LatticePoints& listPoint)
{
    const std::optional<ReciprocalBasis> basis = basisFromList(listCell);
    if (!basis || !latticeBasisOf(*basis).allFinite()) {
        return std::nullopt;
    }
    const LatticeBasis matBasis = latticeBasisOf(*basis);
    return LatticeCandidate{matBasis, fitOfLattice(matBasis, listPoint)};
}

}  // namespace

void keepFormerCell(const DataSet& dataSet, CRunReport& report)
{
    const std::optional<ReciprocalBasis> basis = cellInForce(dataSet);
    if (dataSet.m_strProjectDir.isEmpty() || !basis) {
        return;
    }
    const QString strFile = fileOfProject(dataSet, ResultFile::Cell);
    QFile file(strFile);
    if (!file.open(QIODevice::ReadOnly) || file.readAll() == unitCellText(*basis)) {
        return;
    }
    file.close();
    const LatticePoints listPoint = latticePoints(dataSet);
    // The number of peaks that fit, plus 1 so that a cell that fits none still counts more than no cell.
    const auto fnWorth = [&](const QString& strName) {
        const std::optional<LatticeCandidate> former = candidateOf(readUnitCellFile(strName), listPoint);
        return former ? 1 + former->fit.nFitting : 0;
    };
    QString strReason;
    const QString strKept = nameOfKept(strFile);
    switch (keepFormerFiles({strFile}, fnWorth, 0, &strReason)) {
        case FormerFiles::NoneWorthKeeping:
            break;
        case FormerFiles::Kept:
            report.addMessage(QStringLiteral("The former unit cell is kept as %1.").arg(strKept));
            break;
        case FormerFiles::RicherAreKept:
            report.addMessage(
                QStringLiteral("%1 stays as it is: it keeps a unit cell that explains more peaks "
                               "than the one that is replaced.")
                    .arg(strKept));
            break;
        case FormerFiles::Failed:
            report.addMessage(
                QStringLiteral("Warning: the former unit cell could not be kept. %1").arg(strReason),
                Severity::Warning);
            break;
    }
}

QString tellPoorerCell(const DataSet& dataSet, const QList<Vec3D>& listFormer)
{
    const LatticePoints listPoint = latticePoints(dataSet);
    const std::optional<LatticeCandidate> former = candidateOf(listFormer, listPoint);
    const std::optional<LatticeCandidate> now = candidateOf(dataSet.m_listCell, listPoint);
    if (!former || !now || now->honestShare() >= g_dfClearly * former->honestShare()) {
        return {};
    }
    const int nLost = former->fit.nFitting - now->fit.nFitting;
    if (nLost <= g_dfSigmas * std::sqrt(double(former->fit.nFitting))) {
        return {};
    }
    return QStringLiteral(
               "The new unit cell explains fewer peaks than the one that it replaces: %1; before: %2.")
        .arg(latticeFitText(now->fit), latticeFitText(former->fit));
}

}  // namespace tessera
