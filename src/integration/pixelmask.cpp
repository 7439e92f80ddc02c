#include "integration/pixelmask.h"

#include <QRect>

#include <algorithm>
#include <cmath>

namespace tessera {

std::vector<char> pixelMask(const QSize& sizeFrame, const MaskData& mask, const QList<QPoint>& listHotPixel)
{
    const QRect rcFrame(QPoint(0, 0), sizeFrame);
    std::vector<char> listMasked(size_t(std::max(0, sizeFrame.width())) *
                                 size_t(std::max(0, sizeFrame.height())));
    const auto at = [&](int x, int y) -> char& {
        return listMasked[size_t(y) * size_t(sizeFrame.width()) + size_t(x)];
    };
    for (const QPolygonF& polygon : mask.listPolygon) {
        const QRect rc = polygon.boundingRect().toAlignedRect().adjusted(-1, -1, 1, 1).intersected(rcFrame);
        for (int y = rc.top(); y <= rc.bottom(); ++y) {
            for (int x = rc.left(); x <= rc.right(); ++x) {
                if (polygon.containsPoint(QPointF(x, y), mask.fillRule)) {
                    at(x, y) = 1;
                }
            }
        }
    }
    for (const QPoint& pt : listHotPixel) {
        if (rcFrame.contains(pt)) {
            at(pt.x(), pt.y()) = 1;
        }
    }
    return listMasked;
}

}  // namespace tessera
