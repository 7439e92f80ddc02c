// Chain linking: the peaks of one reflection on frame after frame, linked into chains.
#pragma once

#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

#include <functional>
#include <optional>

namespace tessera {

/// Whether a chain with that last peak is over by the time of a frame.
using FnChainIsOver = std::function<bool(int nFrame, const Peak3D& peakLast)>;

/// Walks the frames. A peak joins the open chain whose last peak on the frames before lies nearest, if it is
/// nearer than `dfMaxDistance` (strictly), or begins a chain. Several peaks of one frame can join one chain.
///
/// @param listPeakFrame  one list per frame, dfX2D and dfY2D relative to its direct beam, pixels
/// @return the chains in the order in which they were closed, those still open last; none when the run was
/// stopped
std::optional<QList<QList<Peak3D>>> linkChains(const QList<QList<Peak3D>>& listPeakFrame,
                                               double dfMaxDistance, const FnChainIsOver& fnIsOver,
                                               CRunReport& report);

}  // namespace tessera
