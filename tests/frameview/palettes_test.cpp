#include "frameview/palettes.h"

#include <gtest/gtest.h>

TEST(Palettes, RampsStartAndEndWhereTheyShould)
{
    const struct {
        int nPalette, i;
        QRgb rgb;
    } aRow[] = {{0, 0, 0xFF000000},   {0, 200, 0xFFC8C8C8}, {1, 0, 0xFFFFFFFF},   {1, 200, 0xFF373737},
                {2, 0, 0xFF0000FF},   {2, 63, 0xFF00FCFF},  {2, 64, 0xFF00FFFF},  {2, 127, 0xFF00FF03},
                {2, 128, 0xFF00FF00}, {2, 191, 0xFFFCFF00}, {2, 192, 0xFFFFFF00}, {2, 255, 0xFFFF0300},
                {3, 0, 0xFFFF0300},   {3, 255, 0xFF0000FF}, {3, 100, 0xFF6CFF00}};
    for (const auto& row : aRow) {
        ASSERT_EQ(paletteTable(row.nPalette)->size(), 256);
        EXPECT_EQ(paletteTable(row.nPalette)->at(row.i), row.rgb) << row.nPalette << ' ' << row.i;
    }
}
