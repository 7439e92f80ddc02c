#include "road/report.h"

#include "records/whatwasthrown.h"
#include "records/wholefile.h"
#include "road/framepicture.h"
#include "road/reportplots.h"
#include "road/reportstyle.h"
#include "road/reporttables.h"
#include "road/runrecord.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <cmath>

namespace tessera {

namespace {

using Integrated = IntegrationResult;

const Integrated* integrationOf(const RoadResults& results)
{
    return results.integrate && results.integrate->result ? &*results.integrate->result : nullptr;
}

void writeFact(CHtmlPage& page, const char* pszName, const QString& strValue, const char* pszClass = "")
{
    if (!strValue.isEmpty()) {
        page.element("dt", QString::fromUtf8(pszName));
        page.element("dd", strValue, pszClass);
    }
}

/// The worst verdict, and the steps with this verdict.
void writeVerdict(CHtmlPage& page, const QList<Judgement>& listJudgement)
{
    const Verdict worst = worstVerdict(listJudgement);
    QStringList listPart;
    for (const Judgement& judgement : listJudgement) {
        if (judgement.verdict == worst && worst != Verdict::Good) {
            listPart.append(judgement.strPart);
        }
    }
    const QString strVerdict = verdictName(worst);
    const QString strBy = listPart.isEmpty() ? QString()
                                             : QStringLiteral(", by ") + listPart.join(QStringLiteral(", "));
    writeFact(page, "Judgement", strVerdict + strBy, strVerdict.toLatin1().constData());
}

QString bestCell(const RoadResults& results)
{
    if (const Integrated* pResult = integrationOf(results)) {
        return cellText(pResult->cell, pResult->cellErrors);
    }
    if (results.geometry && results.geometry->done()) {
        return cellText(results.geometry->best().cell, results.geometry->best().cellErrors);
    }
    return results.cell && results.cell->parameters ? cellText(*results.cell->parameters, {}) : QString();
}

QString symmetryText(const Integrated& result)
{
    QString strText = QStringLiteral("Laue class %1, likelihood %2")
                          .arg(result.chosen.strClass)
                          .arg(result.chosen.dfLikelihood, 0, 'f', 2);
    if (result.spaceGroup) {
        strText += QStringLiteral("; space group %1 (No. %2), likelihood %3")
                       .arg(result.spaceGroup->strName)
                       .arg(result.spaceGroup->nNumber)
                       .arg(result.spaceGroup->dfLikelihood, 0, 'f', 2);
    }
    return strText;
}

QString qualityText(const Integrated& result)
{
    const ShellQuality& all = result.quality.overall;
    QStringList listPart = {QStringLiteral("%1 observations of %2 reflections to %3 Å")
                                .arg(all.nObserved)
                                .arg(all.nUnique)
                                .arg(all.dfDMin, 0, 'f', 2)};
    const auto put = [&listPart](const char* pszText, double dfValue, int nDecimals) {
        if (std::isfinite(dfValue)) {
            listPart.append(QString::fromUtf8(pszText).arg(dfValue, 0, 'f', nDecimals));
        }
    };
    put("%1 % complete", 100 * all.dfCompleteness, 1);
    put("Rint %1", all.dfRInt, 3);
    put("CC1/2 %1", all.dfCcHalf, 3);
    put("I/σ %1", all.dfIOverSigma, 1);
    return listPart.join(QStringLiteral(", "));
}

void writeHead(CHtmlPage& page, const RoadState& state)
{
    const RoadResults& results = state.results;
    page.element("h1", state.dataSet.m_strProjectName);
    QString strWhat = QStringLiteral("%1 frames").arg(state.dataSet.m_listFrameFile.size());
    const QString strChoice = choiceText(state.dataSet.m_reading.choice);
    strWhat += strChoice.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(strChoice);
    if (results.open) {
        strWhat += QStringLiteral(" over %1°").arg(results.open->dfTurn, 0, 'f', 1);
    }
    page.element("p",
                 QStringLiteral("%1, begun %2, Tessera %3")
                     .arg(strWhat, state.begun.toString(QStringLiteral("yyyy-MM-dd HH:mm 'UTC'")),
                          QStringLiteral(TESSERA_VERSION)),
                 "faint");
    page.open("dl");
    if (!results.end.finished()) {
        writeFact(page, "Ended in", results.strFailed + QStringLiteral(": ") + results.end.strReason, "bad");
    } else if (results.lastStage) {
        writeFact(page, "Reached", roadStageName(*results.lastStage));
    }
    if (!results.listJudgement.isEmpty()) {
        writeVerdict(page, results.listJudgement);
    }
    writeFact(page, "Cell", bestCell(results));
    if (results.lattice && results.lattice->proposed) {
        const LatticeSymmetry& symmetry = results.lattice->proposed->symmetry;
        writeFact(page, "Lattice",
                  QStringLiteral("%1, %2").arg(bravaisSymbol(symmetry), nameOf(symmetry.system)));
    }
    if (const Integrated* pResult = integrationOf(results)) {
        writeFact(page, "Symmetry", symmetryText(*pResult));
        writeFact(page, "Intensities", qualityText(*pResult));
    } else if (results.integrate) {
        writeFact(page, "Intensities", QStringLiteral("none. ") + results.integrate->strReason);
    }
    if (results.index) {
        writeFact(page, "Indexed",
                  QStringLiteral("%1 reflections, %2 % of those that were merged")
                      .arg(results.index->nIndexed)
                      .arg(100 * results.index->dfShare, 0, 'f', 1));
    }
    page.close();
}

void writePlots(CHtmlPage& page, const std::vector<SvgPlot>& listPlot)
{
    page.open("div", "row");
    page.text({});
    for (const SvgPlot& plot : listPlot) {
        if (!plot.isEmpty()) {
            page.open("figure", "plot");
            page.element("h3", plot.strTitle);
            drawPlot(page, plot);
            page.close();
        }
    }
    page.close();
}

void writeFrames(CHtmlPage& page, const RoadState& state)
{
    const SeriesData& series = state.dataSet;
    page.element("h2", QStringLiteral("Frames"));
    page.element("p",
                 QStringLiteral("Grey from the 1st to the 99.7th percentile, by its square root; the cross "
                                "is the direct beam, rings are "
                                "peaks that were found."),
                 "faint");
    page.open("div", "row frames");
    page.text({});
    for (const int nFrame : framesShown(series.m_listFrameFile.size())) {
        if (!drawFrame(page, series, nFrame, state.options.hunting.m_dfPeakRadius)) {
            page.element("p", QStringLiteral("Frame %1 cannot be read.").arg(nFrame + 1), "faint");
        }
    }
    page.close();
    writePlots(page, {driftPlot(series), peaksPlot(series)});
}

void writeCrystal(CHtmlPage& page, const RoadState& state)
{
    const RoadResults& results = state.results;
    if (results.cell || results.lattice || results.index) {
        page.element("h2", QStringLiteral("Cell and lattice"));
        writeCells(page, results);
    }
    if (results.lattice) {
        writeLattice(page, *results.lattice);
    }
    if (results.geometry) {
        page.element("h2", QStringLiteral("Geometry"));
        writeGeometry(page, *results.geometry);
        writePlots(page, {residualsPlot(state)});
    }
}

void writeIntensities(CHtmlPage& page, const RoadResults& results)
{
    if (const Integrated* pResult = integrationOf(results)) {
        page.element("h2", QStringLiteral("Intensities"));
        writeShells(page, *pResult);
        writePlots(page, {agreementPlot(*pResult), completenessPlot(*pResult), scalePlot(*pResult)});
        page.element("h2", QStringLiteral("Symmetry of the intensities"));
        writeSymmetry(page, *pResult);
    }
}

void writeLines(CHtmlPage& page, const char* pszHead, const QStringList& listLine)
{
    if (listLine.isEmpty()) {
        return;
    }
    page.element("h3", QString::fromUtf8(pszHead));
    page.open("ul");
    for (const QString& strLine : listLine) {
        page.element("li", strLine);
    }
    page.close();
}

void writeEnd(CHtmlPage& page, const RoadState& state)
{
    page.element("h2", QStringLiteral("How it was made"));
    writeParameters(page, state);
    QStringList listWarning = state.results.listWarning;
    listWarning.replaceInStrings(QRegularExpression(QStringLiteral("^Warning: ")), QString());
    writeLines(page, "Warnings", listWarning);
    writeLines(page, "Hints", state.results.listHint);
    const RoadCommand command = commandOfRoad(state);
    if (!state.given.listInput.isEmpty()) {
        page.element("h3", QStringLiteral("The same again"));
        page.element("pre", command.line());
    }
    writeLines(page, "Chosen without an option", command.listUnsaid);
    if (!state.results.listFile.isEmpty()) {
        page.element("h3", QStringLiteral("Files"));
        writeFiles(page, state);
        page.element("p",
                     QStringLiteral("The input of each of them, with check sums, is listed in %1.")
                         .arg(QFileInfo(fileOfProject(state.dataSet, ResultFile::Run)).fileName()),
                     "faint");
    }
}

}  // namespace

QByteArray reportHtml(const RoadState& state)
{
    CHtmlPage page(QStringLiteral("%1 – report").arg(state.dataSet.m_strProjectName),
                   QLatin1String(g_pszReportStyle));
    writeHead(page, state);
    if (!state.results.listJudgement.isEmpty() || state.results.listTime) {
        page.element("h2", QStringLiteral("Steps"));
        writeJudgements(page, state.results);
    }
    if (!state.dataSet.m_listFrameFile.isEmpty()) {
        writeFrames(page, state);
    }
    writeCrystal(page, state);
    writeIntensities(page, state.results);
    writeEnd(page, state);
    return page.end();
}

QString writeReport(const RoadState& state, const QString& strFile)
{
    QString strReason;
    try {
        static_cast<void>(writeWholeFile(strFile, reportHtml(state), &strReason));
    } catch (...) {
        strReason = whatWasThrown();
    }
    return strReason;
}

}  // namespace tessera
