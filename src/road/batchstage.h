// BatchStage: the stages of the road, in their order.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

enum class BatchStage { Shifts, Peaks, Merge, Cell, Index, Refine };

/// The names as the command line has them, in the order of the road.
inline const QStringList& batchStageNames()
{
    static const QStringList list = {QStringLiteral("shifts"), QStringLiteral("peaks"),
                                     QStringLiteral("merge"),  QStringLiteral("cell"),
                                     QStringLiteral("index"),  QStringLiteral("refine")};
    return list;
}

inline QString batchStageName(BatchStage stage)
{
    return batchStageNames().at(int(stage));
}

}  // namespace tessera
