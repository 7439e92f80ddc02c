// ExportKind: the kinds of exports, with their names in options and summaries.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// SMV images, resized copies, reciprocal space as a volume, grey pictures, indexed peaks by frame; and input
/// for other programs: XDS, DIALS, PETS, and a list of intensities for dynamical refinement.
enum class ExportKind { Smv, Scaled, Volume, Pictures, IndexedPeaks, Xds, Dials, Pets, DynamicCif };

/// The names of the kinds, in their order.
inline const QStringList& exportNames()
{
    static const QStringList list = {
        QStringLiteral("smv"),      QStringLiteral("scaled"), QStringLiteral("volume"),
        QStringLiteral("pictures"), QStringLiteral("ipf"),    QStringLiteral("xds"),
        QStringLiteral("dials"),    QStringLiteral("pets"),   QStringLiteral("cif")};
    return list;
}

/// The name of a kind in options and summaries.
inline QString exportName(ExportKind kind)
{
    return exportNames().at(int(kind));
}

/// Whether an export is input for another program, see exchangekinds.h.
inline bool isForOtherProgram(ExportKind kind)
{
    return kind >= ExportKind::Xds;
}

}  // namespace tessera
