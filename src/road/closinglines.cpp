#include "road/closinglines.h"

#include <QFileInfo>

namespace tessera {

namespace {

const double g_dfEqual = 0.95;  // likelihoods are shown with two decimals

QString endText(const RoadResults& results)
{
    const QString strName = results.open ? results.open->strName : QString();
    const QString strEnd =
        results.end.finished()
            ? QStringLiteral("%1 reached").arg(roadStageName(*results.lastStage))
            : QStringLiteral("ended in %1. %2").arg(results.strFailed, results.end.strReason);
    return QStringLiteral("Summary of %1: %2").arg(strName, strEnd);
}

QString cellText(const CellParameters& cell, const QString& strWhich)
{
    return QStringLiteral("Cell:         %1 %2 %3 Å, %4 %5 %6°, %7")
        .arg(cell.a, 0, 'f', 3)
        .arg(cell.b, 0, 'f', 3)
        .arg(cell.c, 0, 'f', 3)
        .arg(cell.alpha, 0, 'f', 2)
        .arg(cell.beta, 0, 'f', 2)
        .arg(cell.gamma, 0, 'f', 2)
        .arg(strWhich);
}

/// The most reliable cell: that of the intensities, else the refined one, else the one found.
QStringList cellLines(const RoadResults& results)
{
    if (results.integrate && results.integrate->result) {
        return {
            cellText(results.integrate->result->cell, QStringLiteral("of the intensities and their files"))};
    }
    if (results.geometry && results.geometry->done()) {
        const std::optional<GeometryModel>& held = results.geometry->constrained;
        return {cellText(results.geometry->best().cell, held
                                                            ? QStringLiteral("refined under its Bravais type")
                                                            : QStringLiteral("refined"))};
    }
    if (results.cell && results.cell->parameters) {
        return {cellText(*results.cell->parameters, QStringLiteral("as found"))};
    }
    return {};
}

QStringList symmetryLines(const RoadResults& results)
{
    if (!results.integrate || !results.integrate->result) {
        return {};
    }
    const IntegrationResult& result = *results.integrate->result;
    QStringList listPart = {QStringLiteral("%1, likelihood %2")
                                .arg(result.chosen.strClass)
                                .arg(result.chosen.dfLikelihood, 0, 'f', 2)};
    if (result.spaceGroup) {
        QStringList listEqual;  // space groups with the same absences
        for (const SpaceGroupCandidate& other : result.spaceGroups.listCandidate) {
            if (other.nNumber != result.spaceGroup->nNumber &&
                other.dfLikelihood > g_dfEqual * result.spaceGroup->dfLikelihood) {
                listEqual.append(other.strName);
            }
        }
        listPart.append(QStringLiteral("space group %1 (%2), likelihood %3")
                            .arg(result.spaceGroup->strName)
                            .arg(result.spaceGroup->nNumber)
                            .arg(result.spaceGroup->dfLikelihood, 0, 'f', 2));
        if (!listEqual.isEmpty()) {
            listPart.append(QStringLiteral("as likely: %1").arg(listEqual.join(QStringLiteral(", "))));
        }
    }
    return {QStringLiteral("Laue class:   %1").arg(listPart.join(QStringLiteral("; ")))};
}

/// The most frequent folder, followed by the names of its files; other files are listed with their paths.
QStringList fileLines(const QStringList& listFile)
{
    QStringList listName, listLine;
    const QString strFolder = listFile.isEmpty() ? QString() : QFileInfo(listFile.first()).absolutePath();
    for (const QString& strFile : listFile) {
        const QFileInfo info(strFile);
        listName.append(info.absolutePath() == strFolder ? info.fileName() : strFile);
    }
    if (!listName.isEmpty()) {
        listLine = QStringList{QStringLiteral("Files in      %1:").arg(strFolder),
                               QStringLiteral("              %1").arg(listName.join(QStringLiteral(", ")))};
    }
    return listLine;
}

QStringList judgementLines(const QList<Judgement>& listJudgement, bool bFinished)
{
    if (listJudgement.isEmpty()) {
        return {};
    }
    QStringList listLine, listPart;
    for (const Judgement& judgement : listJudgement) {
        if (judgement.verdict != Verdict::Good) {
            listPart.append(judgement.strPart);
            listLine.append(QStringLiteral("  ") + judgementLine(judgement));
        }
    }
    const QString strVerdict = verdictName(worstVerdict(listJudgement));
    listLine.prepend(listPart.isEmpty()
                         ? QStringLiteral("Judgement:    %1 in all parts%2.")
                               .arg(strVerdict, bFinished ? QString() : QStringLiteral(" that were reached"))
                         : QStringLiteral("Judgement:    %1, by %2.")
                               .arg(strVerdict, listPart.join(QStringLiteral(", "))));
    return listLine;
}

}  // namespace

QStringList closingLines(const RoadResults& results)
{
    const bool bFailedFirst = results.end.finished() || results.strFailed.isEmpty();
    if (!results.open || (!results.lastStage && bFailedFirst)) {
        return {};
    }
    return QStringList{QString(), endText(results)} + cellLines(results) + symmetryLines(results) +
           fileLines(results.listFile) + judgementLines(results.listJudgement, results.end.finished());
}

}  // namespace tessera
