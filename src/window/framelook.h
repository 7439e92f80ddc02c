// FrameLook: a frame as it is shown before there is a project, with its direct beam.
#pragma once

#include <QImage>
#include <QPointF>
#include <QSize>
#include <QString>

#include <atomic>
#include <optional>

namespace tessera {

/// What a look at one frame gives.
struct FrameLook {
    QImage image;                   ///< grey, no larger than it is of use
    QSize size;                     ///< of the frame, pixels
    std::optional<QPointF> ptBeam;  ///< as found, frame pixels; the centre of the first one is (0, 0)
    QString strProblem;             ///< why there is no image
};

/// Reads a frame, finds its beam as the driver does and fits it. Reads files only: for any thread.
/// @param bStop  true: what is returned will not be looked at
FrameLook lookAtFrame(const QString& strFrame, const std::atomic<bool>& bStop);

}  // namespace tessera
