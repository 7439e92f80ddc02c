#include "road/reporttables.h"

#include "crystal/cellarithmetic.h"
#include "records/pi.h"
#include "refinement/geometrynumbers.h"
#include "road/geometrytable.h"
#include "road/usedparameters.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const size_t g_nMostCandidates = 12;

QString number(double dfValue, int nDecimals)
{
    return std::isfinite(dfValue) ? QString::number(dfValue, 'f', nDecimals) : QStringLiteral("-");
}

QString percent(double dfShare)
{
    return number(100 * dfShare, 1);
}

double volumeOf(const CellParameters& cell)
{
    const double dfA = std::cos(cell.alpha * g_dfPi / 180), dfB = std::cos(cell.beta * g_dfPi / 180),
                 dfC = std::cos(cell.gamma * g_dfPi / 180);
    return cell.a * cell.b * cell.c *
           std::sqrt(std::max(0.0, 1 - dfA * dfA - dfB * dfB - dfC * dfC + 2 * dfA * dfB * dfC));
}

QStringList cellRow(const QString& strWhich, const CellParameters& cell, const CellParameters& errors)
{
    QStringList listCell = {strWhich};
    const std::array<double, 6> aValue = cell.numbers(), aError = errors.numbers();
    for (size_t n = 0; n < aValue.size(); ++n) {
        listCell.append(withError(aValue[n], aError[n]));
    }
    return listCell << number(volumeOf(cell), 1);
}

const QStringList& cellHead()
{
    static const QStringList list = {QString(),
                                     QStringLiteral("a / Å"),
                                     QStringLiteral("b / Å"),
                                     QStringLiteral("c / Å"),
                                     QStringLiteral("α / °"),
                                     QStringLiteral("β / °"),
                                     QStringLiteral("γ / °"),
                                     QStringLiteral("V / Å³")};
    return list;
}

QStringList shellRow(const ShellQuality& shell, const QString& strName)
{
    return {strName,
            QString::number(shell.nObserved),
            QString::number(shell.nUnique),
            percent(shell.dfCompleteness),
            number(shell.dfMultiplicity, 1),
            number(shell.dfIOverSigma, 1),
            number(shell.dfRInt, 3),
            number(shell.dfRMeas, 3),
            number(shell.dfRPim, 3),
            number(shell.dfCcHalf, 3)};
}

QString limits(const ShellQuality& shell)
{
    return QStringLiteral("%1 – %2").arg(number(shell.dfDMax, 2), number(shell.dfDMin, 2));
}

void judgementRow(CHtmlPage& page, const QString& strPart, const QString& strSeconds,
                  const Judgement* pJudgement, const QString& strElse)
{
    page.open("tr");
    page.element("td", strPart);
    if (pJudgement) {
        const QString strVerdict = verdictName(pJudgement->verdict);
        page.element("td", strVerdict, strVerdict.toLatin1().constData());
        page.element("td", pJudgement->strReason);
    } else {
        page.element("td", QStringLiteral("–"));
        page.element("td", strElse);
    }
    page.element("td", strSeconds, "number");
    page.close();
}

}  // namespace

QString withError(double dfValue, double dfError)
{
    if (!std::isfinite(dfValue) || !(dfError > 0) || std::isinf(dfError)) {
        return number(dfValue, 3);
    }
    const int nDecimals = int(std::clamp(std::ceil(std::log10(1.95 / dfError)), 0.0, 6.0));
    const double dfUnits = std::max(1.0, std::round(dfError * std::pow(10.0, nDecimals)));
    return QStringLiteral("%1(%2)").arg(number(dfValue, nDecimals), number(dfUnits, 0));
}

QString cellText(const CellParameters& cell, const CellParameters& errors)
{
    const QStringList list = cellRow({}, cell, errors);
    return QStringLiteral("%1 %2 %3 Å, %4 %5 %6°").arg(list[1], list[2], list[3], list[4], list[5], list[6]);
}

void writeJudgements(CHtmlPage& page, const RoadResults& results)
{
    page.open("div", "scroll");
    page.open("table");
    page.open("thead");
    page.open("tr");
    for (const char* pszHead : {"Step", "Judgement", "Why"}) {
        page.element("th", QLatin1String(pszHead));
    }
    page.element("th", QStringLiteral("Seconds"), "number");
    page.close();
    page.close();
    page.open("tbody");
    const QList<PartTime> listTime = results.listTime.value_or(QList<PartTime>());
    for (const Judgement& judgement : results.listJudgement) {
        const auto it = std::find_if(listTime.begin(), listTime.end(),
                                     [&](const PartTime& time) { return time.strPart == judgement.strPart; });
        judgementRow(page, judgement.strPart, it == listTime.end() ? QString() : number(it->dfSeconds, 2),
                     &judgement, {});
    }
    for (const PartTime& time : listTime) {
        const bool bJudged = std::any_of(
            results.listJudgement.begin(), results.listJudgement.end(),
            [&](const Judgement& judgement) { return judgement.strPart == time.strPart; });
        if (!bJudged) {
            judgementRow(
                page, time.strPart, number(time.dfSeconds, 2), nullptr,
                time.strPart == results.strFailed ? results.end.strReason : QStringLiteral("not judged"));
        }
    }
    page.close();
    page.close();
    page.close();
}

void writeCells(CHtmlPage& page, const RoadResults& results)
{
    std::vector<QStringList> listRow;
    if (results.cell && results.cell->parameters) {
        listRow.push_back(cellRow(QStringLiteral("as found"), *results.cell->parameters, {}));
    }
    if (results.index && results.index->refined) {
        listRow.push_back(cellRow(QStringLiteral("refined from d*"), results.index->refined->cell,
                                  results.index->refined->cellStdErr));
    }
    if (results.geometry && results.geometry->done()) {
        const GeometryModel& free = results.geometry->free;
        listRow.push_back(cellRow(QStringLiteral("refined with the geometry"), free.cell, free.cellErrors));
        if (results.geometry->constrained) {
            const GeometryModel& held = *results.geometry->constrained;
            listRow.push_back(
                cellRow(QStringLiteral("likewise, under %1").arg(held.fit.form.constraint()->strSymbol),
                        held.cell, held.cellErrors));
        }
    }
    if (results.integrate && results.integrate->result) {
        const IntegrationResult& result = *results.integrate->result;
        listRow.push_back(cellRow(QStringLiteral("of the intensities"), result.cell, result.cellErrors));
    }
    if (!listRow.empty()) {
        page.table(cellHead(), listRow,
                   QStringLiteral("The cell. Its lengths have the error of the pixel size in common."));
    }
}

void writeLattice(CHtmlPage& page, const LatticeAnalysis& lattice)
{
    std::vector<QStringList> listRow;
    for (const LatticeType& type : lattice.listType) {
        const LatticeSymmetry& symmetry = type.symmetry;
        const bool bProposed = lattice.proposed &&
                               bravaisSymbol(lattice.proposed->symmetry) == bravaisSymbol(symmetry);
        QStringList listCell = {bravaisSymbol(symmetry), nameOf(symmetry.system)};
        for (const double df : symmetry.cellConstrained.numbers()) {
            listCell.append(number(df, 3));
        }
        listCell << number(symmetry.dfMisfitLengths, 2) << number(symmetry.dfMisfitAngles, 2)
                 << (bProposed ? QStringLiteral("proposed") : QString());
        listRow.push_back(listCell);
    }
    QStringList listHead = {QStringLiteral("Type"), QStringLiteral("System")};
    listHead += cellHead().mid(1, 6);
    listHead << QStringLiteral("Δ / %") << QStringLiteral("Δ / °") << QString();
    if (!listRow.empty()) {
        page.table(
            listHead, listRow,
            QStringLiteral(
                "Bravais types that fit the lattice, with the largest misfit of an edge and of an angle."));
    }
    for (const QString& strLine : tellWholeLattice(lattice.whole) + tellFurtherLattices(lattice.lattices)) {
        page.element("p", strLine);
    }
}

void writeGeometry(CHtmlPage& page, const GeometryRefinement& refinement)
{
    if (!refinement.done()) {
        page.element("p", QStringLiteral("The geometry stays as it was. ") + refinement.strReason);
        return;
    }
    const GeometryModel& best = refinement.best();
    const std::vector<int>& listFree = best.fit.listFree;
    // The ellipse is counted from the azimuth of the axis at the start of the fit.
    const GeometryNumbers before = numbersOf(refinement.before, refinement.before.plane.axis);
    std::vector<QStringList> listRow;
    for (const GeometryRow& row : geometryRows()) {
        const size_t n = size_t(row.number);
        const bool bFree = std::find(listFree.begin(), listFree.end(), int(row.number)) != listFree.end();
        listRow.push_back({QString::fromUtf8(row.pszName), QString::fromUtf8(row.pszUnit),
                           number(row.dfFactor * before[n], row.nDecimals),
                           number(row.dfFactor * best.fit.numbers[n], row.nDecimals),
                           bFree ? number(row.dfFactor * best.errors[n], row.nDecimals) : QStringLiteral("-"),
                           bFree ? QStringLiteral("free") : QStringLiteral("fixed")});
    }
    page.table({QString(), QStringLiteral("Unit"), QStringLiteral("Before"), QStringLiteral("After"),
                QStringLiteral("e.s.d."), QString()},
               listRow,
               QStringLiteral("%1 of %2 indexed peaks fit with an rms of %3 px; before %4 with %5 px.")
                   .arg(refinement.nFitAfter)
                   .arg(refinement.nPeaks)
                   .arg(number(refinement.dfRmsAfter, 3))
                   .arg(refinement.nFitBefore)
                   .arg(number(refinement.dfRmsBefore, 3)));
}

void writeShells(CHtmlPage& page, const IntegrationResult& result)
{
    std::vector<QStringList> listRow;
    for (const ShellQuality& shell : result.quality.listShell) {
        listRow.push_back(shellRow(shell, limits(shell)));
    }
    listRow.push_back(
        shellRow(result.quality.overall, QStringLiteral("all, %1").arg(limits(result.quality.overall))));
    page.table(
        {QStringLiteral("d / Å"), QStringLiteral("Observed"), QStringLiteral("Unique"),
         QStringLiteral("Complete / %"), QStringLiteral("Multiplicity"), QStringLiteral("I/σ"),
         QStringLiteral("Rint"), QStringLiteral("Rmeas"), QStringLiteral("Rpim"), QStringLiteral("CC1/2")},
        listRow, QStringLiteral("Intensities by shell of resolution, after rejection of outliers."));
    const struct {
        const char* pszWhen;
        const ShellQuality& quality;
    } aWhen[] = {{"before scaling", result.unscaled.overall},
                 {"after scaling", result.scaled.overall},
                 {"after rejection", result.quality.overall}};
    listRow.clear();
    for (const auto& when : aWhen) {
        listRow.push_back({QLatin1String(when.pszWhen), QString::number(when.quality.nObserved),
                           number(when.quality.dfRInt, 3), number(when.quality.dfRMeas, 3),
                           number(when.quality.dfCcHalf, 3)});
    }
    page.table({QString(), QStringLiteral("Observed"), QStringLiteral("Rint"), QStringLiteral("Rmeas"),
                QStringLiteral("CC1/2")},
               listRow, QStringLiteral("Agreement of equivalent reflections."));
    if (!result.forecast.strText.isEmpty()) {
        page.element("p", result.forecast.strText);
    }
}

void writeSymmetry(CHtmlPage& page, const IntegrationResult& result)
{
    std::vector<QStringList> listRow;
    for (const LaueCandidate& candidate : result.laue.listCandidate) {
        if (listRow.size() < g_nMostCandidates) {
            listRow.push_back(
                {candidate.strClass, QString(QLatin1Char(candidate.chCentring)),
                 number(candidate.dfLikelihood, 2), number(candidate.dfRInt, 3),
                 number(candidate.dfCcHalf, 3),
                 candidate.strClass == result.chosen.strClass ? QStringLiteral("taken") : QString()});
        }
    }
    page.table({QStringLiteral("Laue class"), QStringLiteral("Centring"), QStringLiteral("Likelihood"),
                QStringLiteral("Rint"), QStringLiteral("CC1/2"), QString()},
               listRow, QStringLiteral("Laue classes, the best first."));
    listRow.clear();
    for (const SpaceGroupCandidate& candidate : result.spaceGroups.listCandidate) {
        if (listRow.size() < g_nMostCandidates) {
            listRow.push_back({QString::number(candidate.nNumber), candidate.strName,
                               number(candidate.dfLikelihood, 2),
                               candidate.listCondition.join(QStringLiteral("; "))});
        }
    }
    if (!listRow.empty()) {
        page.table({QStringLiteral("Number"), QStringLiteral("Space group"), QStringLiteral("Likelihood"),
                    QStringLiteral("Conditions")},
                   listRow, QStringLiteral("Space groups by what is absent, the best first."));
    }
    listRow.clear();
    for (const ConditionEvidence& condition : result.spaceGroups.listCondition) {
        listRow.push_back({condition.strCondition, QString::number(condition.nForbidden),
                           withError(condition.dfRatio, condition.dfRatioError),
                           number(condition.dfLikelihood, 2)});
    }
    if (!listRow.empty()) {
        page.table({QStringLiteral("Condition"), QStringLiteral("Forbidden"),
                    QStringLiteral("Mean I of these / others"), QStringLiteral("Likelihood")},
                   listRow, QStringLiteral("Reflection conditions."));
    }
}

void writeParameters(CHtmlPage& page, const RoadState& state)
{
    std::vector<QStringList> listRow;
    for (const UsedParameter& parameter : usedParameters(state)) {
        listRow.push_back({parameter.strName,
                           parameter.strValue.isEmpty() ? QStringLiteral("–") : parameter.strValue,
                           parameter.strUnit, parameter.bGiven ? QStringLiteral("given") : QString()});
    }
    page.open("details");
    page.element("summary", QStringLiteral("%1 parameters as the steps used them").arg(listRow.size()));
    page.table({QStringLiteral("Parameter"), QStringLiteral("Value"), QStringLiteral("Unit"), QString()},
               listRow);
    page.close();
}

void writeFiles(CHtmlPage& page, const RoadState& state)
{
    std::vector<QStringList> listRow;
    for (const QString& strFile : state.results.listFile) {
        const QFileInfo info(strFile);
        listRow.push_back({info.absoluteFilePath(), QString::number(info.size())});
    }
    if (!listRow.empty()) {
        page.table({QStringLiteral("File"), QStringLiteral("Bytes")}, listRow);
    }
}

}  // namespace tessera
