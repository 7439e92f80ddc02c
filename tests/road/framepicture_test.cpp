// The picture of a frame in a report.
#include "road/framepicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace tessera {

// 1283 = 320 · 4 + 3: the last blocks have 3 pixels of 4, and 641 = 160 · 4 + 1 one row.
TEST(FramePicture, HasTheWholeFrame)
{
    const int nWidth = 1283, nHeight = 641;
    std::vector<float> listPixel(size_t(nWidth) * nHeight, 1.f);
    for (int y = 0; y < nHeight; ++y) {
        listPixel[size_t(y) * nWidth + nWidth - 1] = 1000.f;
    }
    for (int x = 0; x < nWidth; ++x) {
        listPixel[size_t(nHeight - 1) * nWidth + size_t(x)] = 1000.f;
    }
    const QImage image = smallPicture(listPixel.data(), nWidth, nHeight);
    ASSERT_EQ(image.size(), QSize(321, 161));
    EXPECT_EQ(blockOfPicture(nWidth, nHeight), 4);
    EXPECT_EQ(qGray(image.pixel(100, 100)), 0);
    EXPECT_EQ(qGray(image.pixel(100, 160)), 255) << "1000";
    EXPECT_NEAR(qGray(image.pixel(320, 100)), 255 * std::sqrt(1. / 3), 3) << "1, 1, 1000";
    std::fill(listPixel.begin(), listPixel.end(), std::numeric_limits<float>::quiet_NaN());
    EXPECT_TRUE(smallPicture(listPixel.data(), nWidth, nHeight).isNull());
}

}  // namespace tessera
