#include "reciprocal/geometry/axisline.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(AxisLine, MeetsTheEdgesWhereTheTableSays)
{
    const struct {
        QPointF ptCentre;
        double dfAxis;
        QSize sizeFrame;
        bool bShown;
        QLineF line;
    } aRow[] = {
        {{101.25, 49.5}, 0, {200, 100}, true, {0, 49.5, 200, 49.5}},
        {{101.25, 49.5}, 90, {200, 100}, true, {101.25, 0, 101.25, 100}},
        {{100, 50}, 45, {200, 100}, true, {150, 0, 50, 100}},  // up to the right, as y runs down
        {{60, 60}, 45, {100, 100}, true, {100, 20, 20, 100}},  // right edge before bottom
        {{50, 50}, 45, {100, 100}, true, {100, 0, 0, 100}},    // two corners, each cut twice
        {{0, 100}, 45, {200, 100}, true, {100, 0, 0, 100}},    // out of one corner
        {{-10, -20}, 45, {200, 100}, false, {}},               // passes by
        {{-30, 30}, 45, {200, 100}, true, {0, 0, 0, 0}},       // touches a corner alone
        {{-10, 30}, -45, {200, 100}, true, {0, 40, 60, 100}},  // from a beam beside the frame
        {{100, 50}, 45, {0, 100}, false, {}},
        {{std::nan(""), 50}, 45, {200, 100}, false, {}},
    };
    for (const auto& row : aRow) {
        const QLineF lineBefore(1, 2, 3, 4);
        QLineF line = lineBefore;
        EXPECT_EQ(axisLine(line, row.ptCentre, row.dfAxis, row.sizeFrame), row.bShown) << row.dfAxis;
        EXPECT_EQ(line, row.bShown ? row.line : lineBefore)
            << row.ptCentre.x() << " " << row.dfAxis << ": " << line.x1() << " " << line.y1() << " "
            << line.x2() << " " << line.y2();
    }
}
