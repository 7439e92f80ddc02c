#include "road/knowncellsearch.h"

#include "lattice/cellfromcif.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/latticehunting.h"
#include "reciprocal/latticepoints.h"
#include "records/runends.h"
#include "records/timestamp.h"

#include <QStringList>

namespace tessera {

namespace {

constexpr double g_dfAboutEqual = 0.95;  // ratio of two shares, as used for the candidates of a search

double beyondChance(const LatticeFit& fit)
{
    return fit.share() - fit.dfByChance;
}

void tell(const QString& strForm, const LatticeFit& fit, CRunReport& report)
{
    report.addMessage(QStringLiteral("%1>%2: %3.").arg(currentTimeStamp(), strForm, latticeFitText(fit)),
                      Severity::Milestone);
}

/// A wrong cell often fits some of the peaks; so does a right one if the frames show two crystals.
QString doubtsOf(const LatticeFit& fit)
{
    return beyondChance(fit) >= 0.5 * (1 - fit.dfByChance)
               ? QString()
               : QStringLiteral(" Fewer than half of the peaks fit it: the crystal may be another one.");
}

void choose(KnownCellSearchResult& result)
{
    const KnownCellOrientation& found = *result.orientation;
    if (beyondChance(found.fitRotated) >= g_dfAboutEqual * beyondChance(found.fitRefined)) {
        result.form = KnownCellForm::Rotated;
        result.strWhy =
            QStringLiteral(
                "The cell as it is known explains about as many peaks as with its edges fitted freely.") +
            doubtsOf(found.fitRotated);
    } else {
        result.form = KnownCellForm::Refined;
        result.strWhy =
            QStringLiteral(
                "The cell as it is known explains fewer peaks than with its edges fitted freely.") +
            doubtsOf(found.fitRefined);
    }
}

}  // namespace

bool isCifName(const QString& strText)
{
    return strText.endsWith(QLatin1String(".cif"), Qt::CaseInsensitive);
}

std::optional<CellParameters> knownCellOf(const QString& strText, QString* pstrReason)
{
    const auto refuse = [&](const QString& strReason) -> std::optional<CellParameters> {
        if (pstrReason) {
            *pstrReason = strReason;
        }
        return std::nullopt;
    };
    if (isCifName(strText)) {
        return cellFromCif(strText, pstrReason);
    }
    const QStringList listWord = strText.split(QLatin1Char(','));
    if (listWord.size() != 6) {
        return refuse(QStringLiteral("neither six numbers a,b,c,alpha,beta,gamma nor a file NAME.cif"));
    }
    double adf[6] = {};
    for (int n = 0; n < 6; ++n) {
        bool bOk = false;
        adf[n] = listWord[n].trimmed().toDouble(&bOk);
        if (!bOk) {
            return refuse(QStringLiteral("\"%1\" is no number").arg(listWord[n]));
        }
    }
    const CellParameters cell = {adf[0], adf[1], adf[2], adf[3], adf[4], adf[5]};
    return basisOfCell(cell) ? cell : refuse(QStringLiteral("the six numbers make no cell"));
}

KnownCellSearchResult orientCell(const DataSet& dataSet, const CellParameters& cell, CRunReport& report,
                                 const KnownCellOptions& options)
{
    KnownCellSearchResult result;
    if (!basisOfCell(cell)) {
        result.end = refuseRun(report, QStringLiteral("The six numbers make no cell."));
        return result;
    }
    const LatticePoints listPoint = latticePoints(dataSet);
    if (listPoint.empty()) {
        result.end = refuseRun(report, QStringLiteral("There are no mapped peaks to look for the cell in."));
        return result;
    }
    report.addMessage(QStringLiteral("%1>Looking for the orientation of the cell: %2")
                          .arg(currentTimeStamp(), unitCellText(QStringLiteral("known cell"), cell)),
                      Severity::Milestone);
    result.orientation = orientKnownCell(cell, listPoint, options, [&] { return report.goOn(); });
    if (!report.goOn()) {
        result.orientation.reset();
        result.end = {RunEnd::Stopped, QString()};
        return result;
    }
    if (!result.orientation) {
        result.end = failRun(
            report, QStringLiteral("The known cell was not found: in no orientation, with lengths that are "
                                   "up to %L1% off, does it explain a good part of the %L2 peaks beyond "
                                   "what chance, or edges fitted freely, would.")
                        .arg(100 * options.dfLengthTolerance)
                        .arg(listPoint.size()));
        return result;
    }
    tell(QStringLiteral("Known cell, rotated"), result.orientation->fitRotated, report);
    tell(QStringLiteral("Known cell, its lengths times %L1").arg(result.orientation->dfScale, 0, 'f', 4),
         result.orientation->fitScaled, report);
    tell(QStringLiteral("Known cell, edges fitted freely"), result.orientation->fitRefined, report);
    choose(result);
    return result;
}

StageResult takeOrientedCell(DataSet& dataSet, const KnownCellOrientation& orientation, KnownCellForm form,
                             CRunReport& report, const QString& strLatticeHost)
{
    const bool bRotated = form == KnownCellForm::Rotated;
    const StageResult taken = commitLattice(
        dataSet, bRotated ? orientation.matRotated : orientation.matRefined, report, strLatticeHost);
    if (taken.finished()) {
        noteCellMade(dataSet);
    }
    return taken;
}

StageResult searchKnownCell(DataSet& dataSet, const CellParameters& cell, CRunReport& report)
{
    const KnownCellSearchResult found = orientCell(dataSet, cell, report);
    if (!found.end.finished()) {
        return found.end;
    }
    const QString strTaken = found.form == KnownCellForm::Rotated
                                 ? QStringLiteral("It is taken as it is known.")
                                 : QStringLiteral("These edges are taken.");
    report.addMessage(QStringLiteral("%1>%2 %3").arg(currentTimeStamp(), found.strWhy, strTaken),
                      Severity::Milestone);
    return takeOrientedCell(dataSet, *found.orientation, found.form, report);
}

}  // namespace tessera
