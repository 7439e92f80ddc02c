// RoadStage: the stages of the road, in their order.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// Shifts and direct beam, peaks of the frames, reflections of the peaks, cell, indices, geometry refined
/// against them, intensities of all reflections, cell from pairs of peaks.
enum class RoadStage { Shifts, Peaks, Merge, Cell, Index, Geometry, Integrate, Refine };

/// The names by which options and summaries call the stages, in the order of the road.
inline const QStringList& roadStageNames()
{
    static const QStringList list = {QStringLiteral("shifts"),    QStringLiteral("peaks"),
                                     QStringLiteral("merge"),     QStringLiteral("cell"),
                                     QStringLiteral("index"),     QStringLiteral("geometry"),
                                     QStringLiteral("integrate"), QStringLiteral("refine")};
    return list;
}

inline QString roadStageName(RoadStage stage)
{
    return roadStageNames().at(int(stage));
}

}  // namespace tessera
