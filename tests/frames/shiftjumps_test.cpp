// Frames apart from their neighbours, on drifts with one or two frames moved.
#include "frames/shiftjumps.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

QList<QPointF> drift(int nFrames)
{
    QList<QPointF> list;
    for (int i = 0; i < nFrames; ++i) {
        list.append({0.8 * i, 12 * std::sin(i * 0.2)});
    }
    return list;
}

}  // namespace

TEST(ShiftJumps, NamesTheFramesThatStandApartAndNoOthers)
{
    EXPECT_EQ(findShiftJumps(drift(60), 10), QList<int>());
    for (int nMoved : {0, 1, 2, 30, 58, 59}) {
        QList<QPointF> list = drift(60);
        list[nMoved] += QPointF(0, -35);
        EXPECT_EQ(findShiftJumps(list, 10), QList<int>{nMoved}) << nMoved;
    }
    QList<QPointF> list = drift(60);
    list[20] += QPointF(40, 0);
    list[21] += QPointF(40, 0);
    EXPECT_TRUE(findShiftJumps(list, 10).contains(20));
    EXPECT_EQ(findShiftJumps(drift(4), 0.001), QList<int>());
}
