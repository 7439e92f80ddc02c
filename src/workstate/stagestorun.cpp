#include "workstate/stagestorun.h"

#include <QStringList>

#include <algorithm>

namespace tessera {

namespace {

StageState stateOf(const std::vector<StageStatus>& listStatus, WorkStage stage)
{
    const auto it = std::find_if(listStatus.begin(), listStatus.end(),
                                 [stage](const StageStatus& status) { return status.stage == stage; });
    return it == listStatus.end() ? StageState::Missing : it->state;
}

QString verbOf(WorkStage stage)
{
    switch (stage) {
        case WorkStage::Drift:
            return QStringLiteral("evaluate the drift");
        case WorkStage::Peaks:
            return QStringLiteral("search the peaks");
        case WorkStage::Axis:
            return QStringLiteral("find the axis");
        case WorkStage::Mapping:
            return QStringLiteral("map");
        case WorkStage::Merging:
            return QStringLiteral("merge");
        case WorkStage::Cell:
            return QStringLiteral("search the cell");
        case WorkStage::Indexing:
            return QStringLiteral("index");
        case WorkStage::Geometry:
            return QStringLiteral("refine the geometry");
        case WorkStage::Integration:
            break;
    }
    return QStringLiteral("integrate");
}

}  // namespace

std::vector<WorkStage> stagesToRun(const std::vector<StageStatus>& listStatus)
{
    std::vector<WorkStage> listStage;
    if (stateOf(listStatus, WorkStage::Drift) != StageState::Done ||
        stateOf(listStatus, WorkStage::Peaks) == StageState::Missing) {
        return listStage;
    }
    for (const StageStatus& status : listStatus) {
        const bool bOnDemand = status.stage == WorkStage::Axis || status.stage >= WorkStage::Geometry;
        if (status.state == StageState::Stale || (status.state == StageState::Missing && !bOnDemand)) {
            listStage.push_back(status.stage);
        }
    }
    return listStage;
}

QString stagesText(const std::vector<WorkStage>& listStage, const std::vector<StageStatus>& listStatus)
{
    QStringList listVerb;
    for (WorkStage stage : listStage) {
        listVerb.append(verbOf(stage));
    }
    if (listVerb.isEmpty()) {
        return {};
    }
    QString strText = listVerb.takeLast();
    if (!listVerb.isEmpty()) {
        strText = listVerb.join(QStringLiteral(", ")) + QStringLiteral(" and ") + strText;
    }
    strText[0] = strText[0].toUpper();
    const bool bAnew = std::any_of(listStage.begin(), listStage.end(), [&](WorkStage stage) {
        return stateOf(listStatus, stage) == StageState::Stale;
    });
    return bAnew ? strText + QStringLiteral(" anew") : strText;
}

}  // namespace tessera
