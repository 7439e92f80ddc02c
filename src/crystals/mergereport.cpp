#include "crystals/mergereport.h"

#include "crystals/joblines.h"
#include "crystals/jobtrees.h"
#include "crystals/mergerecord.h"
#include "road/reportplots.h"
#include "road/reportstyle.h"
#include "road/reporttables.h"
#include "road/roadcommand.h"

#include <QJsonObject>

#include <cmath>

namespace tessera {

namespace {

const int g_nMostSections = 50;
const int g_nFewestInPlot = 8;  ///< crystals; for fewer the table is enough

QString number(double dfValue, int nDecimals)
{
    if (!std::isfinite(dfValue)) {
        return QStringLiteral("-");
    }
    const QString strText = QString::number(dfValue, 'f', nDecimals);
    return strText.toDouble() == 0 ? QString::number(0.0, 'f', nDecimals) : strText;  // no -0.00
}

QString compoundName(const CrystalsJobResult& result, const CompoundGroup& compound)
{
    return compound.known ? result.listKnown[compound.known->nKnown].strName : QStringLiteral("–");
}

void writeFact(CHtmlPage& page, const char* pszName, const QString& strValue)
{
    page.element("dt", QString::fromUtf8(pszName));
    page.element("dd", strValue);
}

void writeHead(CHtmlPage& page, const CrystalsJobResult& result)
{
    page.element("h1", result.strName);
    page.element("p", QStringLiteral("Crystals merged by Tessera %1").arg(QStringLiteral(TESSERA_VERSION)),
                 "faint");
    page.open("dl");
    writeFact(page, "Read", counted(int(result.listCrystal.size()), "crystal"));
    writeFact(page, "Not read",
              result.listUnread.empty() ? QStringLiteral("none") : QString::number(result.listUnread.size()));
    writeFact(
        page, "Groups",
        QStringLiteral("%1, of which %2 merged").arg(result.listGroup.size()).arg(result.mergedCount()));
    writeFact(page, "Merged",
              QStringLiteral("%1 of %2")
                  .arg(result.usedCount())
                  .arg(counted(int(result.listCrystal.size()), "crystal")));
    page.close();
}

void writeGroups(CHtmlPage& page, const CrystalsJobResult& result)
{
    std::vector<QStringList> listRow;
    for (const CompoundGroup& compound : result.listGroup) {
        QStringList listCell = {
            compound.strName, compoundName(result, compound),
            QStringLiteral("%1 of %2").arg(compound.usedCount()).arg(compound.crystalCount())};
        if (compound.isMerged()) {
            const ShellQuality& quality = compound.merged.result.quality.overall;
            listCell << compound.merged.result.chosen.strClass << number(100 * quality.dfCompleteness, 1)
                     << number(quality.dfDMin, 2) << number(quality.dfRInt, 3) << number(quality.dfCcHalf, 3);
        } else {
            listCell << QString() << QString() << QString() << QString() << QString();
        }
        const std::array<double, 6> adfMean = compound.cellMean.numbers(),
                                    adfSpread = compound.cellSpread.numbers();
        for (size_t n = 0; n < adfMean.size(); ++n) {
            listCell.append(withError(adfMean[n], adfSpread[n]));
        }
        listRow.push_back(listCell);
    }
    page.element("h2", QStringLiteral("Compounds"));
    page.table(
        {QStringLiteral("Group"), QStringLiteral("Compound"), QStringLiteral("Merged"),
         QStringLiteral("Laue"), QStringLiteral("Complete / %"), QStringLiteral("to / Å"),
         QStringLiteral("Rint"), QStringLiteral("CC1/2"), QStringLiteral("a / Å"), QStringLiteral("b / Å"),
         QStringLiteral("c / Å"), QStringLiteral("α / °"), QStringLiteral("β / °"), QStringLiteral("γ / °")},
        listRow,
        QStringLiteral("Crystals of one lattice are a group. The cell is the reduced one, the mean of the "
                       "crystals; in brackets the standard deviation of one crystal."));
    page.open("ul");
    page.text({});
    for (const CompoundGroup& compound : result.listGroup) {
        if (!compound.isMerged()) {
            page.element(
                "li",
                QStringLiteral("%1 is not merged. %2").arg(compound.strName, compound.outcome.strReason));
        }
        const QString strRelation = relationLine(compound, result);
        if (!strRelation.isEmpty()) {
            page.element("li", strRelation);
        }
    }
    page.close();
}

void writeTree(CHtmlPage& page, const TreePlot& plot, const QString& strCaption)
{
    if (plot.listJoint.empty()) {
        return;
    }
    page.open("figure", "tree");
    drawTree(page, plot);
    page.element("figcaption", strCaption);
    page.close();
}

void writeMembers(CHtmlPage& page, const CrystalsJobResult& result, const CompoundGroup& compound)
{
    const QStringList listLabel = labelsOf(result.listCrystal);
    std::vector<QStringList> listRow;
    for (const int nMember : compound.group.listMember) {
        const Crystal& crystal = result.listCrystal[nMember];
        const CrystalFate& fate = result.listFate[nMember];
        QStringList listCell = {listLabel[nMember]};
        if (fate.nSettled >= 0) {
            const size_t n = size_t(fate.nSettled);
            const SettledCrystal& settled = compound.merged.listSettled[n];
            const bool bDoubt = settled.nAlternatives > 1 && !settled.bBySharing &&
                                compound.crystalCount() > 1;
            const CrystalScale& scale = compound.merged.listScale[n];
            listCell << settingText(compound, settled) + (bDoubt ? QStringLiteral(" ?") : QString())
                     << QString::number(settled.nCommon)
                     << (settled.nCommon > 0 ? number(settled.dfCorrelation, 3) : QStringLiteral("-"));
            if (fate.bUsed) {
                listCell << number(scale.dfScale, 3) << number(scale.dfB, 2)
                         << number(compound.merged.listGain[n], 3);
            } else {
                listCell << QString() << QString() << QString();
            }
        } else {
            listCell << QString() << QString() << QString() << QString() << QString() << QString();
        }
        listCell << QString::number(crystal.listIntensity.size()) << number(100 * crystal.dfCompleteness, 1)
                 << number(crystal.dfRInt, 3) << (fate.bUsed ? QStringLiteral("merged") : fate.strReason);
        listRow.push_back(listCell);
    }
    page.table(
        {QStringLiteral("Crystal"), QStringLiteral("Its indices become"), QStringLiteral("Common"),
         QStringLiteral("Correlation"), QStringLiteral("Scale"), QStringLiteral("B / Å²"),
         QStringLiteral("Gain"), QStringLiteral("Observed"), QStringLiteral("Alone / %"),
         QStringLiteral("Alone, Rint"), QString()},
        listRow,
        QStringLiteral(
            "The crystals: common reflections and correlation of amplitudes with all others, scale and B "
            "factor relative to the others, change of CC1/2 due to the crystal (as Fisher's z; negative: it "
            "lowers CC1/2), completeness and Rint of the crystal alone. A setting with ? was chosen by the "
            "cell, because the crystal has too few reflections in common with the others."));
}

SvgPlot scalesPlot(const CompoundGroup& compound)
{
    if (compound.usedCount() < g_nFewestInPlot) {
        return {};
    }
    SvgPlot plot{QStringLiteral("Scale of the crystals"),
                 QStringLiteral("crystal"),
                 QStringLiteral("scale"),
                 {},
                 0.0,
                 {}};
    plot.listSeries = {{QStringLiteral("scale"), {}, false, true}};
    for (size_t n = 0; n < compound.merged.listScale.size(); ++n) {
        if (compound.merged.listUsed[n]) {
            plot.listSeries[0].listPoint.emplace_back(double(n + 1), compound.merged.listScale[n].dfScale);
        }
    }
    return plot;
}

void writePlots(CHtmlPage& page, const CompoundGroup& compound)
{
    const IntegrationResult& merged = compound.merged.result;
    page.open("div", "row");
    page.text({});
    for (const SvgPlot& plot : {agreementPlot(merged), completenessPlot(merged), scalesPlot(compound)}) {
        if (!plot.isEmpty()) {
            page.open("figure", "plot");
            page.element("h3", plot.strTitle);
            drawPlot(page, plot);
            page.close();
        }
    }
    page.close();
}

void writeGroup(CHtmlPage& page, const CrystalsJobResult& result, const CompoundGroup& compound)
{
    const IntegrationResult& merged = compound.merged.result;
    page.element("h2", compound.strName);
    page.open("dl");
    if (compound.known) {
        writeFact(page, "Compound",
                  QStringLiteral("%1; edges off by %2 %, angles by %3°")
                      .arg(compoundName(result, compound), number(compound.known->dfLengths, 2),
                           number(compound.known->dfAngles, 2)));
    }
    writeFact(page, "Cell", cellText(compound.cell, merged.cellErrors));
    if (compound.usedCount() > 1) {
        const std::array<double, 6> adf = compound.cellDeviation.numbers();
        writeFact(page, "Spread of a crystal",
                  QStringLiteral("%1 %2 %3 Å, %4 %5 %6°")
                      .arg(number(adf[0], 4), number(adf[1], 4), number(adf[2], 4), number(adf[3], 3),
                           number(adf[4], 3), number(adf[5], 3)));
    }
    QString strSymmetry = QStringLiteral("Laue class %1, likelihood %2")
                              .arg(merged.chosen.strClass, number(merged.chosen.dfLikelihood, 2));
    if (merged.spaceGroup) {
        strSymmetry += QStringLiteral("; space group %1 (No. %2), likelihood %3")
                           .arg(merged.spaceGroup->strName, QString::number(merged.spaceGroup->nNumber),
                                number(merged.spaceGroup->dfLikelihood, 2));
    }
    writeFact(page, "Symmetry", strSymmetry);
    writeFact(page, "Crystals",
              QStringLiteral("%1 of %2 merged").arg(compound.usedCount()).arg(compound.crystalCount()));
    page.close();
    writeMembers(page, result, compound);
    for (const QString& strLine : otherKindLines(compound, result)) {
        page.element("p", strLine);
    }
    writeTree(
        page, correlationTree(result, compound),
        QStringLiteral("The crystals by the correlation of their amplitudes; struck through: left out."));
    writeShells(page, merged);
    writePlots(page, compound);
    page.element("h3", QStringLiteral("Symmetry of the intensities"));
    writeSymmetry(page, merged);
}

void writeEnd(CHtmlPage& page, const CrystalsJobOptions& options, const CrystalsJobResult& result,
              const QJsonArray& arrayFile)
{
    if (!result.listUnread.empty()) {
        std::vector<QStringList> listRow;
        for (const UnreadCrystal& unread : result.listUnread) {
            listRow.push_back({unread.strName, unread.strReason});
        }
        page.element("h2", QStringLiteral("Not read"));
        page.table({QStringLiteral("Folder or record"), QStringLiteral("Why")}, listRow);
    }
    if (!result.listNote.isEmpty()) {
        page.element("h2", QStringLiteral("Notes"));
        page.open("ul");
        for (const QString& strNote : result.listNote) {
            page.element("li", strNote);
        }
        page.close();
    }
    page.element("h2", QStringLiteral("The same again"));
    QStringList listQuoted;
    for (const QString& strArgument : mergeArguments(options, result)) {
        listQuoted.append(shellQuoted(strArgument));
    }
    page.element("pre", listQuoted.join(QLatin1Char(' ')));
    std::vector<QStringList> listRow;
    for (const QJsonValue& value : arrayFile) {
        const QJsonObject file = value.toObject();
        listRow.push_back({file[QStringLiteral("path")].toString(),
                           QString::number(qint64(file[QStringLiteral("size")].toDouble()))});
    }
    if (!listRow.empty()) {
        page.element("h2", QStringLiteral("Files"));
        page.table({QStringLiteral("File"), QStringLiteral("Bytes")}, listRow);
    }
}

}  // namespace

QByteArray mergeReport(const CrystalsJobOptions& options, const CrystalsJobResult& result,
                       const QJsonArray& arrayFile)
{
    CHtmlPage page(QStringLiteral("%1 – crystals merged").arg(result.strName),
                   QLatin1String(g_pszReportStyle) + QLatin1String(g_pszTreeStyle));
    writeHead(page, result);
    writeGroups(page, result);
    writeTree(page, latticeTree(result, options.tolerance),
              QStringLiteral("The crystals by their lattices; those that are joined before the dashed line "
                             "are a group. Struck through: not merged."));
    int nSections = 0;
    for (const CompoundGroup& compound : result.listGroup) {
        if (compound.isMerged() && nSections < g_nMostSections) {
            writeGroup(page, result, compound);
            ++nSections;
        }
    }
    if (result.mergedCount() > nSections) {
        page.element(
            "p",
            QStringLiteral("%1 further groups are only in the table.").arg(result.mergedCount() - nSections));
    }
    writeEnd(page, options, result, arrayFile);
    return page.end();
}

}  // namespace tessera
