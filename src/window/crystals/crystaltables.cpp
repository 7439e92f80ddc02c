#include "window/crystals/crystaltables.h"

#include "crystals/joblines.h"
#include "road/reporttables.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QStringList>

#include <cmath>
#include <limits>

namespace tessera {

namespace {

using Cell = QualityCell;

const double g_dfUnknown = std::numeric_limits<double>::quiet_NaN();

QString tr(const char* pszText)
{
    return QCoreApplication::translate("CrystalTables", pszText);
}

QString count(int n)
{
    return QLocale::system().toString(n);
}

/// Centring, edges and angles in a row; the title of the column has the units.
QString latticeText(char chCentring, const CellParameters& cell, const CellParameters& errors)
{
    QStringList listPart = {QString(QLatin1Char(chCentring))};
    for (size_t n = 0; n < 6; ++n) {
        const double dfNumber = cell.numbers()[n], dfError = errors.numbers()[n];
        const bool bExact = dfError <= 0 && dfNumber == std::round(dfNumber);  // by the symmetry
        listPart.append(bExact ? QString::number(dfNumber) : withError(dfNumber, dfError));
    }
    return listPart.join(QLatin1Char(' '));
}

Cell yesNo(bool bYes)
{
    return Cell::text(bYes ? tr("yes") : tr("no"));
}

/// Remarks on a group that its numbers do not show, as sentences.
QString remarkOf(const CrystalsJobResult& result, const CompoundGroup& compound)
{
    QStringList listRemark;
    if (!compound.isMerged()) {
        listRemark.append(compound.outcome.strReason);
    }
    if (compound.known && !compound.known->strNext.isEmpty()) {
        listRemark.append(tr("%1 is near, too.").arg(compound.known->strNext));
    }
    listRemark.append(relationLine(compound, result));
    listRemark += otherKindLines(compound, result);
    listRemark.removeAll(QString());
    return listRemark.join(QLatin1Char(' '));
}

std::vector<Cell> groupRow(const CrystalsJobResult& result, size_t nGroup)
{
    const CompoundGroup& compound = result.listGroup[nGroup];
    std::vector<Cell> row = {Cell::text(titleOfGroup(result, nGroup)),
                             Cell::number(compound.crystalCount(), 0), Cell::number(compound.usedCount(), 0)};
    if (!compound.isMerged()) {
        row.push_back(
            Cell::text(tr("%1, reduced").arg(latticeText('P', compound.cellMean, compound.cellSpread))));
        row.insert(row.end(), 2, Cell::text(QStringLiteral("–")));
        row.insert(row.end(), 6, Cell::number(g_dfUnknown, 0));
        row.push_back(Cell::text(remarkOf(result, compound)));
        return row;
    }
    const IntegrationResult& merged = compound.merged.result;
    const ShellQuality& all = merged.quality.overall;
    row.push_back(Cell::text(latticeText(merged.chosen.chCentring, compound.cell, compound.cellDeviation)));
    row.push_back(Cell::text(merged.chosen.strClass));
    row.push_back(Cell::text(merged.spaceGroup ? merged.spaceGroup->strName : QStringLiteral("–")));
    row.push_back(Cell::number(100 * all.dfCompleteness, 1));
    row.push_back(Cell::number(all.dfDMin, 2));
    row.push_back(Cell::number(all.dfMultiplicity, 1));
    row.push_back(Cell::number(all.dfRInt, 3));
    row.push_back(Cell::number(all.dfCcHalf, 3));
    row.push_back(Cell::number(all.dfIOverSigma, 1));
    row.push_back(Cell::text(remarkOf(result, compound)));
    return row;
}

}  // namespace

ListedFolder listedFolder(const QString& strFolder)
{
    ReadCrystals read = readCrystals({strFolder});
    ListedFolder folder;
    folder.strFolder = strFolder;
    folder.listUnread = std::move(read.listUnread);
    for (Crystal& crystal : read.listCrystal) {
        ListedCrystal listed;
        listed.nObserved = int(crystal.listIntensity.size());
        listed.crystal = std::move(crystal);
        listed.crystal.listIntensity = {};
        folder.listCrystal.push_back(std::move(listed));
    }
    return folder;
}

QualityTable listedTable(const std::vector<ListedFolder>& listFolder)
{
    QualityTable table;
    table.strName = QStringLiteral("crystals");
    table.strTitle = tr("Crystals");
    table.listColumn = {
        {tr("Crystal"), tr("Name of the series.")},
        {tr("Cell, Å and °"), tr("Centring and cell of the run, with standard errors in the last digits.")},
        {tr("Class"), tr("Laue class that the run has merged in.")},
        {tr("Complete, %"), tr("Of this crystal alone.")},
        {tr("Rint"), tr("Deviation of equivalents from their mean, of this crystal alone.")},
        {tr("CC1/2"), tr("Correlation of half data sets, of this crystal alone.")},
        {tr("Observations"), tr("Intensities that were measured.")},
        {tr("Reflections"), tr("What these are when equivalents are merged in its class, by the run.")},
        {tr("Folder"), tr("Folder of its results.")}};
    for (const ListedFolder& folder : listFolder) {
        for (const ListedCrystal& listed : folder.listCrystal) {
            const Crystal& crystal = listed.crystal;
            table.listRow.push_back(
                {Cell::text(crystal.strName),
                 Cell::text(latticeText(crystal.chCentring, crystal.cell, crystal.cellErrors)),
                 Cell::text(crystal.strLaueClass), Cell::number(100 * crystal.dfCompleteness, 1),
                 Cell::number(crystal.dfRInt, 3), Cell::number(crystal.dfCcHalf, 3),
                 Cell::number(listed.nObserved, 0),
                 Cell::number(crystal.nUnique > 0 ? crystal.nUnique : g_dfUnknown, 0),
                 Cell::text(QDir::toNativeSeparators(folder.strFolder))});
        }
    }
    return table;
}

std::vector<UnreadCrystal> unreadOf(const std::vector<ListedFolder>& listFolder)
{
    std::vector<UnreadCrystal> list;
    for (const ListedFolder& folder : listFolder) {
        list.insert(list.end(), folder.listUnread.begin(), folder.listUnread.end());
    }
    return list;
}

QualityTable unreadTable(const std::vector<UnreadCrystal>& listUnread)
{
    QualityTable table;
    table.strName = QStringLiteral("not_read");
    table.strTitle = tr("Not Read");
    table.listColumn = {{tr("Not read"), tr("A folder, or the record of a run in one.")},
                        {tr("Why"), tr("What is wrong with it.")}};
    for (const UnreadCrystal& unread : listUnread) {
        table.listRow.push_back(
            {Cell::text(QDir::toNativeSeparators(unread.strName)), Cell::text(unread.strReason)});
    }
    return table;
}

QualityTable groupTable(const CrystalsJobResult& result)
{
    QualityTable table;
    table.strName = QStringLiteral("groups");
    table.strTitle = tr("Groups");
    table.listColumn = {
        {tr("Compound"), tr("By the file of known cells; else the number of the group.")},
        {tr("Crystals"), tr("That have this lattice.")},
        {tr("Used"), tr("That are in the merged intensities.")},
        {tr("Cell, Å and °"),
         tr("Centring and mean cell, with the standard deviation of one crystal in the last digits.")},
        {tr("Class"), tr("Laue class.")},
        {tr("Group"), tr("Space group of the files.")},
        {tr("Complete, %"),
         tr("Share of the possible reflections that was observed, to the limit beside it.")},
        {tr("to, Å"), tr("Limit of the resolution: without a choice that of the crystal that reaches "
                         "farthest.")},
        {tr("Multiplicity"), tr("Observations for each reflection.")},
        {tr("Rint"), tr("Deviation of equivalents from their mean.")},
        {tr("CC1/2"), tr("Correlation of half data sets.")},
        {tr("I/σ"), tr("Mean of the merged reflections.")},
        {tr("Remark"),
         tr("The reason why it was not merged, another known cell that fits, the relation of its lattice to "
            "that of the first group, and crystals in it that may be of another compound.")}};
    for (size_t n = 0; n < result.listGroup.size(); ++n) {
        table.listRow.push_back(groupRow(result, n));
    }
    return table;
}

QualityTable memberTable(const CrystalsJobResult& result, size_t nGroup)
{
    QualityTable table;
    table.strName = QStringLiteral("members");
    table.strTitle = titleOfGroup(result, nGroup);
    table.listColumn = {
        {tr("Crystal"), tr("Name of the series.")},
        {tr("Used"), tr("Whether it is in the merged intensities.")},
        {tr("Setting"), tr("The indices of the merged files by its own.")},
        {tr("Correlation"), tr("Of its intensities with the mean of the others.")},
        {tr("Next"), tr("The best correlation among the other settings that the lattice allows and that are "
                        "not equivalent by symmetry. If it is nearly as high, the setting is a guess.")},
        {tr("Common"), tr("Reflections that it shares with the others.")},
        {tr("Scale"), tr("What its intensities are multiplied by.")},
        {tr("B, Å²"), tr("How much faster than the others it falls off with resolution.")},
        {tr("Gain"),
         tr("How much better equivalents agree with it, by Fisher's z of CC1/2. Below 0: it makes "
            "them worse.")},
        {tr("Why not"), tr("Why it was left out.")},
        {tr("Folder"), tr("Folder of its results.")}};
    const CompoundGroup& compound = result.listGroup[nGroup];
    for (const int nMember : compound.group.listMember) {
        const CrystalFate& fate = result.listFate[nMember];
        const Crystal& crystal = result.listCrystal[nMember];
        std::vector<Cell> row = {Cell::text(crystal.strName), yesNo(fate.bUsed)};
        if (fate.nSettled >= 0) {
            const auto n = size_t(fate.nSettled);
            const SettledCrystal& settled = compound.merged.listSettled[n];
            const CrystalScale& scale = compound.merged.listScale[n];
            row.push_back(Cell::text(settingText(compound, settled)));
            row.push_back(Cell::number(settled.dfCorrelation, 3));
            row.push_back(Cell::number(settled.nAlternatives > 1 ? settled.dfSecond : g_dfUnknown, 3));
            row.push_back(Cell::number(settled.nCommon, 0));
            row.push_back(Cell::number(fate.bUsed ? scale.dfScale : g_dfUnknown, 3));
            row.push_back(Cell::number(fate.bUsed ? scale.dfB : g_dfUnknown, 2));
            row.push_back(Cell::number(compound.merged.listGain[n], 4));
        } else {
            row.push_back(Cell::text(QStringLiteral("–")));
            row.insert(row.end(), 6, Cell::number(g_dfUnknown, 0));
        }
        row.push_back(Cell::text(fate.strReason));
        row.push_back(Cell::text(QDir::toNativeSeparators(crystal.strFolder)));
        table.listRow.push_back(std::move(row));
    }
    return table;
}

QString mergedSummary(const CrystalsJobResult& result)
{
    QString strText = tr("%1 crystals read, %2 of them merged in %3 of %4 groups.")
                          .arg(count(int(result.listCrystal.size())), count(result.usedCount()),
                               count(result.mergedCount()), count(int(result.listGroup.size())));
    if (!result.listUnread.empty()) {
        strText += QLatin1Char(' ') + tr("Not read: %1.").arg(count(int(result.listUnread.size())));
    }
    return strText;
}

QString titleOfGroup(const CrystalsJobResult& result, size_t nGroup)
{
    const std::optional<KnownCellMatch>& known = result.listGroup[nGroup].known;
    return known ? result.listKnown[known->nKnown].strName : tr("Group %1").arg(count(int(nGroup) + 1));
}

QColor colorOfGroup(int nGroup)
{
    static const QRgb anColor[] = {0x1b5fa8, 0xb3430e, 0x17693a, 0x7a3f9d,
                                   0xa3195b, 0x0d6a73, 0x7a5200, 0x4a4fc4};
    return nGroup >= 0 && nGroup < int(std::size(anColor)) ? QColor(anColor[nGroup]) : QColor(0x5b6670);
}

}  // namespace tessera
