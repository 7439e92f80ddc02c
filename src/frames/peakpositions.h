// Positions of peaks on a frame, as they are shown.
#pragma once

#include "records/peak3d.h"

#include <QList>
#include <QPointF>

#include <functional>

namespace tessera {

/// Positions of peaks on the raw frame, pixels.
QList<QPointF> peakPositions(const QList<Peak3D>& listPeak);

/// Positions on a frame, raw pixels, for the view; the frame's image stands in m_vecFrameImage by then.
using FnFramePositions = std::function<void(int nFrame, const QList<QPointF>& listPosition)>;

}  // namespace tessera
