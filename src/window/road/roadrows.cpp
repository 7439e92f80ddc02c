#include "window/road/roadrows.h"

#include <QCoreApplication>

#include <algorithm>

namespace tessera {

namespace {

struct RowTraits {
    const char* pszName;
    RoadStage stage;
    const char* pszPart;  ///< by which its judgement is known
};

const RowTraits& traitsOf(RoadRowKind kind)
{
    static const RowTraits s_aTraits[] = {
        {QT_TRANSLATE_NOOP("RoadDock", "Drift"), RoadStage::Shifts, "shifts"},
        {QT_TRANSLATE_NOOP("RoadDock", "Peaks"), RoadStage::Peaks, "peaks"},
        {QT_TRANSLATE_NOOP("RoadDock", "Axis"), RoadStage::Merge, "axis"},
        {QT_TRANSLATE_NOOP("RoadDock", "Merging"), RoadStage::Merge, "merge"},
        {QT_TRANSLATE_NOOP("RoadDock", "Unit cell"), RoadStage::Cell, "cell"},
        {QT_TRANSLATE_NOOP("RoadDock", "Lattice"), RoadStage::Cell, "lattice"},
        {QT_TRANSLATE_NOOP("RoadDock", "Indexing"), RoadStage::Index, "index"},
        {QT_TRANSLATE_NOOP("RoadDock", "Geometry"), RoadStage::Geometry, "geometry"},
        {QT_TRANSLATE_NOOP("RoadDock", "Integration"), RoadStage::Integrate, "integrate"}};
    return s_aTraits[int(kind)];
}

std::optional<Judgement> judgementOf(const QList<Judgement>& listJudgement, const char* pszPart)
{
    const auto it = std::find_if(listJudgement.begin(), listJudgement.end(), [&](const Judgement& judgement) {
        return judgement.strPart == QLatin1String(pszPart);
    });
    return it == listJudgement.end() ? std::nullopt : std::optional<Judgement>(*it);
}

}  // namespace

QString roadRowName(RoadRowKind kind)
{
    return QCoreApplication::translate("RoadDock", traitsOf(kind).pszName);
}

RoadStage stageOfRow(RoadRowKind kind)
{
    return traitsOf(kind).stage;
}

CRoadRows::CRoadRows()
{
    for (int nKind = int(RoadRowKind::Drift); nKind <= int(RoadRowKind::Integration); ++nKind) {
        m_listRow.push_back({RoadRowKind(nKind), RoadRowState::Waiting, {}, {}});
    }
}

void CRoadRows::begin(RoadStage stageFrom)
{
    m_stageFrom = stageFrom;
    for (RoadRow& row : m_listRow) {
        if (stageOfRow(row.kind) >= stageFrom) {
            row = {row.kind, RoadRowState::Waiting, {}, {}};
        } else {
            row.state = RoadRowState::Earlier;
            row.strText = row.judgement ? row.strText : QString();
        }
    }
}

void CRoadRows::take(const RoadStep& step, const RoadResults& results)
{
    for (RoadRow& row : m_listRow) {
        const bool bOwn = roadStageName(stageOfRow(row.kind)) == step.strPart;
        // Stages before the first one that was asked for are run, too, where their results were not kept.
        if (bOwn && !step.bEnded) {
            row = {row.kind, RoadRowState::Running, {}, {}};
        } else if (bOwn && step.end.finished()) {
            row.state = RoadRowState::Done;
        } else if (bOwn) {
            row.state = RoadRowState::Ended;
            row.strText = step.end.strReason;
        }
        if (step.bEnded && row.state != RoadRowState::Earlier && row.state != RoadRowState::Waiting) {
            row.judgement = judgementOf(results.listJudgement, traitsOf(row.kind).pszPart);
            if (row.judgement && row.state == RoadRowState::Done) {
                row.strText = row.judgement->strReason;
            } else if (row.kind == RoadRowKind::Axis && row.state == RoadRowState::Done) {
                row.strText = QCoreApplication::translate("RoadDock", "from the project or the page");
            }
        }
    }
    if (step.strPart == QLatin1String("open") && step.bEnded && !step.end.finished()) {
        m_listRow.front().state = RoadRowState::Ended;
        m_listRow.front().strText = step.end.strReason;
    }
}

void CRoadRows::end()
{
    for (RoadRow& row : m_listRow) {
        if (row.state == RoadRowState::Running) {
            row.state = RoadRowState::Waiting;
        }
    }
}

void CRoadRows::setFound(RoadRowKind kind, const QString& strText)
{
    RoadRow& row = m_listRow[size_t(kind)];
    if (row.state == RoadRowState::Waiting || row.state == RoadRowState::Found) {
        row.state = strText.isEmpty() ? RoadRowState::Waiting : RoadRowState::Found;
        row.strText = strText;
    }
}

}  // namespace tessera
