// ExportKind: the forms in which data can be exported, and what options and summaries call them.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// SMV images, resized copies, reciprocal space as a volume, grey pictures, indexed peaks by frame.
enum class ExportKind { Smv, Scaled, Volume, Pictures, IndexedPeaks };

/// The names of the kinds, in their order.
inline const QStringList& exportNames()
{
    static const QStringList list = {QStringLiteral("smv"), QStringLiteral("scaled"),
                                     QStringLiteral("volume"), QStringLiteral("pictures"),
                                     QStringLiteral("ipf")};
    return list;
}

inline QString exportName(ExportKind kind)
{
    return exportNames().at(int(kind));
}

}  // namespace tessera
