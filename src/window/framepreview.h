// FramePreview: a frame with its direct beam and the rotation axis through it.
#pragma once

#include "window/framelook.h"

#include <QWidget>

namespace tessera {

/// Draws in the pixels of the frame: the beam as found as a green cross, as told as an orange ring, and the
/// axis as a dashed line with a head at the end that its angle points to.
class FramePreview : public QWidget {
    Q_OBJECT

public:
    /// Shows no frame yet.
    explicit FramePreview(QWidget* pParent = nullptr);

    /// What is shown from now on; without an image its problem, or nothing.
    void setLook(const FrameLook& look);
    /// What is shown.
    const FrameLook& look() const { return m_look; }
    /// Where a header has the beam, frame pixels.
    void setToldBeam(const std::optional<QPointF>& ptBeam);
    /// Degrees counter-clockwise from 3 o'clock; none: no line.
    void setAxis(const std::optional<double>& dfAxis);
    /// Angle of the line, degrees; none: no line.
    std::optional<double> axis() const { return m_dfAxis; }

    QSize sizeHint() const override { return {340, 340}; }
    QSize minimumSizeHint() const override { return {200, 200}; }

protected:
    void paintEvent(QPaintEvent* pEvent) override;

private:
    FrameLook m_look;
    std::optional<QPointF> m_ptToldBeam;
    std::optional<double> m_dfAxis;
};

}  // namespace tessera
