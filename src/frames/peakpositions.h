// Peak positions: the positions of peaks on a frame, for the view.
#pragma once

#include "records/peak3d.h"

#include <QList>
#include <QPointF>

#include <functional>

namespace tessera {

/// The positions of peaks on the raw frame, pixels.
QList<QPointF> peakPositions(const QList<Peak3D>& listPeak);

/// Takes positions on a frame, raw pixels, for the view. m_vecFrameImage has the image of the frame.
using FnFramePositions = std::function<void(int nFrame, const QList<QPointF>& listPosition)>;

}  // namespace tessera
