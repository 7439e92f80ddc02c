// RoadStage: the stages of the road, in their order, with their names.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// Shifts and direct beam; peaks on the frames; merging of peaks to reflections; cell; indexing; refinement
/// of the geometry; integration; refinement of the cell from pairs of peaks.
enum class RoadStage { Shifts, Peaks, Merge, Cell, Index, Geometry, Integrate, Refine };

/// The names of the stages in options and summaries, in the order of the stages.
inline const QStringList& roadStageNames()
{
    static const QStringList list = {QStringLiteral("shifts"),    QStringLiteral("peaks"),
                                     QStringLiteral("merge"),     QStringLiteral("cell"),
                                     QStringLiteral("index"),     QStringLiteral("geometry"),
                                     QStringLiteral("integrate"), QStringLiteral("refine")};
    return list;
}

/// The name of a stage in options and summaries.
inline QString roadStageName(RoadStage stage)
{
    return roadStageNames().at(int(stage));
}

}  // namespace tessera
