#include "road/road.h"

#include "records/whatwasthrown.h"
#include "road/exchangekinds.h"
#include "road/misfithint.h"
#include "road/sections.h"
#include "road/seriesopening.h"
#include "road/stagejudgement.h"
#include "road/stages.h"

#include <QElapsedTimer>

#include <algorithm>

namespace tessera {

namespace {

/// Records the result of the first part that did not finish.
/// @return whether this part finished
bool noteEnd(RoadResults& results, const QString& strPart, const StageResult& end)
{
    if (!end.finished() && results.end.finished()) {
        results.strFailed = strPart;
        results.end = end;
    }
    return end.finished();
}

double secondsOf(const QElapsedTimer& timer)
{
    return double(timer.elapsed()) / 1000;
}

/// Records a judgement and writes it to the log.
void noteJudgement(RoadState& state, const std::optional<Judgement>& judgement)
{
    if (judgement) {
        takeJudgement(state.results.listJudgement, *judgement);
        state.report.addMessage(judgementLine(*judgement), Severity::Milestone);
    }
}

/// The same for the lattice, once.
void noteLattice(RoadState& state)
{
    const QList<Judgement>& listJudgement = state.results.listJudgement;
    const bool bNoted = std::any_of(
        listJudgement.begin(), listJudgement.end(),
        [](const Judgement& judgement) { return judgement.strPart == QLatin1String("lattice"); });
    if (state.results.lattice && !bNoted) {
        Judgement judgement = judgeLattice(*state.results.lattice);
        const std::optional<CellResult>& cell = state.results.cell;
        if (cell && cell->fit && !fitsLattice(*cell->fit)) {
            judgement.verdict = Verdict::Bad;
            judgement.strReason.prepend(
                QStringLiteral("It is that of a cell that most peaks do not lie on; "));
        }
        noteJudgement(state, judgement);
    }
}

/// A stage that failed is judged bad, whatever its result.
void judgeEnd(RoadState& state, RoadStage stage, const StageResult& end)
{
    if (stage == RoadStage::Merge && state.results.axis) {
        noteJudgement(state, judgeAxis(*state.results.axis));
    }
    std::optional<Judgement> judgement = judgeStage(stage, state.results);
    const bool bWithout = end.end == RunEnd::Failed || end.end == RunEnd::Refused;
    if (!judgement && bWithout) {
        judgement = {roadStageName(stage), Verdict::Bad, end.strReason, 0};
    }
    noteJudgement(state, judgement);
    if (stage == RoadStage::Cell || stage == RoadStage::Index) {
        noteLattice(state);
    }
}

/// Whether the cell is bad and the road has reached the last stage that judges it.
bool isMisfit(const RoadState& state, RoadStage stage, const StageResult& end)
{
    const bool bLast = stage == RoadStage::Index ||
                       (stage == RoadStage::Cell &&
                        (!end.finished() || state.options.stageTo == RoadStage::Cell));
    return bLast && end.end != RunEnd::Stopped && worstVerdict(state.results.listJudgement) == Verdict::Bad;
}

bool runStages(RoadState& state, QList<PartTime>& listTime)
{
    const RoadOptions& options = state.options;
    for (int nStage = int(RoadStage::Shifts); nStage <= int(options.stageTo); ++nStage) {
        const RoadStage stage = RoadStage(nStage);
        // Merged reflections are not stored in a file, and the file of indexed peaks has whole pixels only. A
        // road that starts later repeats both from peak list and cell, and integration also repeats the
        // refined geometry.
        const bool bAnew = stage == RoadStage::Merge || stage == RoadStage::Index ||
                           (stage == RoadStage::Geometry && options.stageFrom == RoadStage::Integrate);
        if (stage < options.stageFrom && !bAnew) {
            continue;
        }
        QElapsedTimer timer;
        timer.start();
        state.tellStep({roadStageName(stage), false, {}});
        const StageResult end = runStage(stage, state);
        listTime.append({roadStageName(stage), secondsOf(timer)});
        judgeEnd(state, stage, end);
        if (isMisfit(state, stage, end)) {
            timer.restart();
            hintAtMisfit(state);
            listTime.append({QStringLiteral("hints"), secondsOf(timer)});
        }
        const bool bFinished = noteEnd(state.results, roadStageName(stage), end);
        if (bFinished) {
            state.results.lastStage = stage;
        }
        state.tellStep({roadStageName(stage), true, end});
        if (!bFinished) {
            return false;
        }
    }
    return true;
}

bool makeExport(ExportKind kind, RoadState& state)
{
    if (!isForOtherProgram(kind)) {
        return writeExport(kind, state.options.exports, state.dataSet, state.report);
    }
    const RoadResults& results = state.results;
    FoundOfSeries found;
    found.virtualFrames = state.options.exports.virtualFrames;
    found.pGeometry = results.geometry ? &*results.geometry : nullptr;
    found.pIntegration = results.integrate && results.integrate->result ? &*results.integrate->result
                                                                        : nullptr;
    found.pWritten = &state.results.listFile;
    return writeForOtherProgram(kind, state.dataSet, state.mapping, found, state.options.jobs(),
                                state.report);
}

void runExports(RoadState& state, QList<PartTime>& listTime)
{
    const ExportOptions& exports = state.options.exports;
    QStringList listDone;
    for (const ExportKind kind : exports.listKind) {
        const QString strKind = exportName(kind);
        QElapsedTimer timer;
        timer.start();
        roundToPages(state);
        state.report.beginPart(strKind);
        state.tellStep({strKind, false, {}});
        // Without a known axis the volume would be wrong.
        const bool bNeedsAxis = kind == ExportKind::Volume || isForOtherProgram(kind);
        const bool bAxis = state.dataSet.m_bRotationAxisKnown || !bNeedsAxis;
        if (!bAxis) {
            state.report.fail(QStringLiteral("%1 needs the rotation axis, which the stage merge finds.")
                                  .arg(kind == ExportKind::Volume
                                           ? QStringLiteral("A volume")
                                           : QStringLiteral("--export %1").arg(strKind)));
        }
        const bool bDone = bAxis && makeExport(kind, state);
        listTime.append({strKind, secondsOf(timer)});
        const StageResult end = bDone ? StageResult() : state.report.failed();
        noteEnd(state.results, strKind, end);
        if (bDone) {
            listDone.append(strKind);
        }
        state.tellStep({strKind, true, end});
    }
    if (!exports.listKind.isEmpty()) {
        state.results.listExported = listDone;
    }
}

void runSections(RoadState& state, QList<PartTime>& listTime)
{
    if (state.options.exports.listSection.empty()) {
        return;
    }
    const QString strPart = QStringLiteral("sections");
    QElapsedTimer timer;
    timer.start();
    roundToPages(state);
    state.report.beginPart(strPart);
    state.tellStep({strPart, false, {}});
    const StageResult end = writeSectionsOfRoad(state) ? StageResult() : state.report.failed();
    listTime.append({strPart, secondsOf(timer)});
    noteEnd(state.results, strPart, end);
    state.tellStep({strPart, true, end});
}

void walk(RoadState& state)
{
    QList<PartTime> listTime;
    const QString strOpen = QStringLiteral("open");
    state.tellStep({strOpen, false, {}});
    const StageResult end = openSeries(state);
    const bool bOpened = noteEnd(state.results, strOpen, end);
    state.tellStep({strOpen, true, end});
    if (bOpened && (state.options.exports.bOnly || runStages(state, listTime))) {
        runExports(state, listTime);
        runSections(state, listTime);
    }
    state.results.listTime = listTime;
}

/// Makes the current exception the reason of the end, unless a part has failed before. To be called in a
/// catch block.
void noteThrown(RoadState& state)
{
    const StageResult end = state.report.failed(whatWasThrown());
    if (state.results.end.finished()) {
        state.results.end = end;
    }
}

}  // namespace

void runRoad(RoadState& state)
{
    try {
        walk(state);
    } catch (...) {
        noteThrown(state);
    }
    RoadResults& results = state.results;
    results.listWarning = state.report.redLines();
    if (!results.end.finished()) {
        results.listWarning.removeOne(results.end.strReason);
    }
}

}  // namespace tessera
