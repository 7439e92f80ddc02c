// CrossItem: an upright cross on a peak position.
#pragma once

#include "frameview/markitem.h"

namespace tessera {

/// The size is the length of one arm; the centre lies in the middle of the pixel. Enlarged, the arms keep
/// their length on the screen and end where they end at 100 %, so that the middle is free (CMarkZoom).
class CrossItem : public MarkItem {
public:
    using MarkItem::MarkItem;
    void paint(QPainter* pPainter, const QStyleOptionGraphicsItem* pOption, QWidget* pWidget) override;
};

}  // namespace tessera
