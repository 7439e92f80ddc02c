// SpotRing: a ring around a spot that is chosen.
#pragma once

#include "frameview/markitem.h"

namespace tessera {

/// The size is the radius: pixels of the frame when it is enlarged, else of the screen, so that the ring is
/// seen at every scale and leaves the spot free.
class SpotRing : public MarkItem {
public:
    using MarkItem::MarkItem;
    QRectF boundingRect() const override;
    void paint(QPainter* pPainter, const QStyleOptionGraphicsItem* pOption, QWidget* pWidget) override;
};

}  // namespace tessera
