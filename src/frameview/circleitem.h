// CircleItem: a circle around an integration window.
#pragma once

#include "frameview/markitem.h"

namespace tessera {

/// The size is the radius; the square around the circle stands on whole pixels.
class CircleItem : public MarkItem {
public:
    using MarkItem::MarkItem;
    void paint(QPainter* pPainter, const QStyleOptionGraphicsItem* pOption, QWidget* pWidget) override;
};

}  // namespace tessera
