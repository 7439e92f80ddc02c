// CMarkZoom: how the marks on a frame look when it is seen larger or smaller than its pixels.
#pragma once

class QPainter;

namespace tessera {

/// Lines that are as thin at each zoom, and no longer than at 100 %, so that what they mark stays in sight.
class CMarkZoom {
public:
    /// The zoom that a painter of a view has.
    explicit CMarkZoom(const QPainter& painter);
    explicit CMarkZoom(double dfZoom);  ///< screen pixels per frame pixel, above 0

    bool isActualSize() const { return m_dfZoom == 1.0; }  ///< 100 %
    /// Screen pixels per frame pixel.
    double zoom() const { return m_dfZoom; }

    /// Width of a line, frame pixels, that is 1 pixel wide on the screen; 1.5 from 400 % on.
    double penWidth() const;
    /// What stays free between the middle and an arm that ends at dfReach, frame pixels: from 100 % on the
    /// arm is as long on the screen as it is there, so that it lets go of the spot as the spot grows.
    double gap(double dfReach) const;
    /// Opacity: all up to 100 %, a twelfth less with each doubling, 0.7 at least.
    double opacity() const;

private:
    double m_dfZoom;
};

}  // namespace tessera
