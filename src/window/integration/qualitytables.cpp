#include "window/integration/qualitytables.h"

#include <QCoreApplication>

namespace tessera {

namespace {

using Cell = QualityCell;

QString tr(const char* pszText)
{
    return QCoreApplication::translate("QualityTables", pszText);
}

std::vector<Cell> shellRow(const ShellQuality& shell)
{
    return {Cell::number(shell.dfDMax, 2),         Cell::number(shell.dfDMin, 2),
            Cell::number(shell.nObserved, 0),      Cell::number(shell.nUnique, 0),
            Cell::number(shell.nPossible, 0),      Cell::number(100 * shell.dfCompleteness, 1),
            Cell::number(shell.dfMultiplicity, 1), Cell::number(shell.dfIOverSigma, 1),
            Cell::number(shell.dfRInt, 3),         Cell::number(shell.dfRMeas, 3),
            Cell::number(shell.dfRPim, 3),         Cell::number(shell.dfCcHalf, 3)};
}

QualityTable operationTable(const LaueProposal& laue)
{
    QualityTable table;
    table.strName = QStringLiteral("laue_operations");
    table.strTitle = tr("Operations of the Lattice");
    table.listColumn = {
        {tr("Operation"), tr("The image of x, y, z of the conventional cell.")},
        {tr("Order"), tr("Of the rotation.")},
        {tr("Pairs"), tr("Pairs of reflections that it relates.")},
        {tr("Correlation"),
         tr("Of their intensities: 1 where the crystal has the operation, about 0 where not.")},
        {tr("R"), tr("Mean deviation of the two intensities over their mean.")},
        {tr("Likelihood"), tr("That the crystal has it.")}};
    for (const OperationAgreement& operation : laue.listOperation) {
        table.listRow.push_back({Cell::text(operation.strOperation), Cell::number(operation.nOrder, 0),
                                 Cell::number(operation.nPairs, 0), Cell::bar(operation.dfCorrelation, 3),
                                 Cell::bar(operation.dfR, 3), Cell::bar(operation.dfLikelihood, 3)});
    }
    return table;
}

QualityTable classTable(const IntegrationResult& result)
{
    QualityTable table;
    table.strName = QStringLiteral("laue_classes");
    table.strTitle = tr("Laue Classes");
    table.listColumn = {
        {tr("Class"),
         tr("Subgroups of the symmetry of the lattice. Bold: the one that scaling and merging use.")},
        {tr("Lattice"), tr("System and centring.")},
        {tr("Likelihood"), tr("All of them together are 1.")},
        {tr("Rint"), tr("Agreement of its equivalents.")},
        {tr("CC1/2"), tr("Correlation of half data sets.")}};
    for (const LaueCandidate& candidate : result.laue.listCandidate) {
        if (table.nBold < 0 && candidate.strClass == result.chosen.strClass) {
            table.nBold = int(table.listRow.size());
        }
        table.listRow.push_back(
            {Cell::text(candidate.strClass),
             Cell::text(nameOf(candidate.system) + QLatin1Char(' ') + QLatin1Char(candidate.chCentring)),
             Cell::bar(candidate.dfLikelihood, 3), Cell::number(candidate.dfRInt, 3),
             Cell::number(candidate.dfCcHalf, 3)});
    }
    return table;
}

QualityTable conditionTable(const SpaceGroupRanking& ranking)
{
    QualityTable table;
    table.strName = QStringLiteral("absences");
    table.strTitle = tr("Absences");
    table.listColumn = {
        {tr("Condition"),
         tr("Reflections of the zone or row that are allowed by a screw axis or glide plane.")},
        {tr("Forbidden"), tr("Merged reflections that it forbids.")},
        {tr("Ratio"), tr("Mean intensity of the forbidden reflections, divided by that of the allowed ones "
                         "of the same zone. Because of multiple scattering it is above 0.")},
        {tr("± Ratio"), tr("Standard error of the ratio.")},
        {tr("Likelihood"), tr("Likelihood that the condition is fulfilled.")}};
    for (const ConditionEvidence& evidence : ranking.listCondition) {
        table.listRow.push_back({Cell::text(evidence.strCondition), Cell::number(evidence.nForbidden, 0),
                                 Cell::bar(evidence.dfRatio, 3), Cell::number(evidence.dfRatioError, 3),
                                 Cell::bar(evidence.dfLikelihood, 3)});
    }
    return table;
}

QualityTable groupTable(const IntegrationResult& result)
{
    QualityTable table;
    table.strName = QStringLiteral("space_groups");
    table.strTitle = tr("Space Groups");
    table.listColumn = {{tr("Group"), tr("In the setting of the cell. Bold: the one of the files.")},
                        {tr("No."), tr("Of the International Tables.")},
                        {tr("Centre"), tr("Whether it has a centre of symmetry.")},
                        {tr("Likelihood"), tr("All of them together are 1.")},
                        {tr("Conditions"), tr("What it asks for.")}};
    for (const SpaceGroupCandidate& candidate : result.spaceGroups.listCandidate) {
        if (table.nBold < 0 && result.spaceGroup && candidate.strName == result.spaceGroup->strName) {
            table.nBold = int(table.listRow.size());
        }
        table.listRow.push_back({Cell::text(candidate.strName), Cell::number(candidate.nNumber, 0),
                                 Cell::text(candidate.bCentric ? tr("yes") : tr("no")),
                                 Cell::bar(candidate.dfLikelihood, 3),
                                 Cell::text(candidate.listCondition.join(QStringLiteral("; ")))});
    }
    return table;
}

}  // namespace

QualityTable shellTable(const IntegrationResult& result)
{
    QualityTable table;
    table.strName = QStringLiteral("shells");
    table.strTitle = tr("Shells of Resolution");
    table.listColumn = {{tr("d from, Å"), tr("Inner limit of the shell.")},
                        {tr("to, Å"), tr("Outer limit.")},
                        {tr("Observations"), tr("Observations that were merged.")},
                        {tr("Unique"), tr("Reflections that they are of.")},
                        {tr("Possible"), tr("Number of possible reflections.")},
                        {tr("Complete, %"), tr("Share of these that was observed.")},
                        {tr("Multiplicity"), tr("Observations for each reflection.")},
                        {tr("I/σ"), tr("Mean of the merged reflections.")},
                        {tr("Rint"), tr("Deviation of equivalents from their mean.")},
                        {tr("Rmeas"), tr("The same, independent of the number of observations.")},
                        {tr("Rpim"), tr("The same for the merged intensities.")},
                        {tr("CC1/2"), tr("Correlation of half data sets.")}};
    for (const ShellQuality& shell : result.quality.listShell) {
        table.listRow.push_back(shellRow(shell));
    }
    table.nBold = int(table.listRow.size());
    table.listRow.push_back(shellRow(result.quality.overall));
    return table;
}

std::vector<QualityTable> laueTables(const IntegrationResult& result)
{
    return {operationTable(result.laue), classTable(result)};
}

std::vector<QualityTable> spaceGroupTables(const IntegrationResult& result)
{
    return {conditionTable(result.spaceGroups), groupTable(result)};
}

}  // namespace tessera
