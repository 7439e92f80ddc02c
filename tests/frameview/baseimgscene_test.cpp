#include "frameview/baseimgscene.h"

#include "frameview/palettes.h"
#include "testscenes.h"

#include <gtest/gtest.h>

#include <QTimer>

TEST(BaseImgScene, DrawsEachPixelThroughThePalette)
{
    for (int nWidth : {1, 5, 6, 7, 8}) {  // rows that need padding elsewhere
        BaseImgScene scene;
        scene.setShowProgress(false);
        // Values 7 apart from 1000, so that byte and value differ by a shift only.
        const auto byteAt = [&](int x, int y) { return (y * nWidth + x) * 7; };
        scene.setImagesLimits(makeFrame(nWidth, 4, [&](int x, int y) { return 1000 + byteAt(x, y); }),
                              {{1000, 1255}});
        for (int nPalette : {0, 2, 3, 1}) {
            EXPECT_EQ(scene.setPalette(nPalette), nPalette);
            const QImage picture = drawn(scene);
            ASSERT_EQ(picture.size(), QSize(nWidth, 4));
            for (int y = 0; y < 4; y++)
                for (int x = 0; x < nWidth; x++)
                    EXPECT_EQ(picture.pixel(x, y), paletteTable(nPalette)->at(byteAt(x, y)))
                        << nWidth << ": " << x << ' ' << y << ", palette " << nPalette;
        }
        EXPECT_EQ(scene.setPalette(4), 1);
    }
}

TEST(BaseImgScene, LimitsAndOutputRangesSetTheContrast)
{
    BaseImgScene scene;
    scene.setShowProgress(false);
    const ImageList vecImage = makeFrame(4, 1, [](int x, int) { return 100.0 * x; });  // 0 100 200 300
    const struct {
        RangeList vecLimit, vecOut;
        int aByte[4];
    } aRow[] = {{{{100, 151}}, {}, {0, 0, 255, 255}},
                {{{0, 300}}, {{50, 110}}, {50, 70, 90, 110}},
                {{{0, 300}}, {{50, 110}, {0, 1}}, {0, 85, 170, 255}},  // another count: 0 to 255
                {{{300, 0}}, {}, {255, 170, 85, 0}},                   // limits the wrong way round invert
                {{{70, 70}}, {}, {0, 0, 0, 0}}};
    for (const auto& row : aRow) {
        scene.setImagesLimits(vecImage, row.vecLimit, row.vecOut);
        const QImage picture = drawn(scene);
        for (int x = 0; x < 4; x++)
            EXPECT_EQ(qRed(picture.pixel(x, 0)), row.aByte[x]) << &row - aRow << ' ' << x;
    }
    // The automatic limits leave a thousandth of a ramp of 10000 out at either end.
    scene.setImagesAuto(makeFrame(100, 100, [](int x, int y) { return 100 * y + x; }));
    const QImage picture = drawn(scene);
    EXPECT_EQ(qRed(picture.pixel(5, 0)), 0);
    EXPECT_NEAR(qRed(picture.pixel(0, 50)), 127, 1);
    EXPECT_EQ(qRed(picture.pixel(95, 99)), 255);
}

TEST(BaseImgScene, SwitchesAmongTheImagesOfAFrame)
{
    BaseImgScene scene;
    scene.setShowProgress(false);
    ImageList vecImage = makeFrame(9, 5, [](int, int) { return 10; });
    vecImage.push_back(makeImage(3, 4, [](int, int) { return 20; }));
    vecImage.push_back(nullptr);  // keeps its number
    vecImage.push_back(makeImage(3, 4, [](int, int) { return 40; }));
    const RangeList vecLimit(4, {0, 255});
    scene.setImagesLimits(vecImage, vecLimit);
    EXPECT_TRUE(scene.switchToIndex(1));
    EXPECT_EQ(scene.sceneRect(), QRectF(0, 0, 3, 4));
    EXPECT_EQ(qRed(drawn(scene).pixel(2, 3)), 20);
    EXPECT_TRUE(scene.switchToIndex(2));
    EXPECT_EQ(drawn(scene).pixelColor(1, 1), QColor(Qt::magenta));  // nothing drawn
    EXPECT_TRUE(scene.switchToIndex(3));
    EXPECT_EQ(qRed(drawn(scene).pixel(2, 3)), 40);
    EXPECT_FALSE(scene.switchToIndex(4));
    EXPECT_EQ(scene.currentIndex(), 3);

    scene.setImagesLimits(vecImage, {{0, 1}});  // counts differ: everything stays
    EXPECT_EQ(scene.currentIndex(), 3);
    EXPECT_EQ(qRed(drawn(scene).pixel(2, 3)), 40);
    scene.setImagesLimits(vecImage, vecLimit);  // a redraw comes back to the first
    EXPECT_EQ(scene.currentIndex(), 0);
    EXPECT_EQ(qRed(drawn(scene).pixel(8, 4)), 10);

    scene.clearImages();
    EXPECT_EQ(scene.currentIndex(), -1);
    CImgObj<unsigned char> imgByte;
    imgByte.Create(2, 2);
    std::fill_n(imgByte.Data(), 4, 77);
    scene.addImage(imgByte);
    std::fill_n(imgByte.Data(), 4, 99);  // the scene has its own copy
    scene.setPalette(1);
    EXPECT_EQ(qRed(drawn(scene).pixel(1, 1)), 255 - 77);
    EXPECT_EQ(scene.images().size(), 1u);
}

TEST(BaseImgScene, AFrameThatComesInDuringTheProgressWins)
{
    BaseImgScene scene;
    ImageList vecLong;
    for (int i = 0; i < 3; i++)
        vecLong.push_back(makeImage(8, 8, [](int, int) { return 1; }));
    const ImageList vecOther = makeFrame(4, 4, [](int, int) { return 200; });
    QTimer::singleShot(0, [&] {
        vecLong.clear();
        scene.setShowProgress(false);
        scene.setImagesLimits(vecOther, {{0, 255}});
    });
    scene.setImagesLimits(vecLong, RangeList(3, {0, 255}));
    ASSERT_EQ(scene.images().size(), 1u);
    EXPECT_EQ(qRed(drawn(scene).pixel(3, 3)), 200);
}
