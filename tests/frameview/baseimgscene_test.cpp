#include "frameview/baseimgscene.h"

#include "frameview/palettes.h"
#include "tests/frameview/testscenes.h"

#include <QTimer>

namespace tessera {

namespace {

class Scene : public testing::Test {
protected:
    Scene() { m_scene.setShowProgress(false); }
    int red(int x, int y) { return qRed(drawn(m_scene).pixel(x, y)); }
    BaseImgScene m_scene;
};

}  // namespace

TEST(Palettes, RampsStartAndEndWhereTheyShould)
{
    const struct {
        int nPalette, i;
        QRgb rgb;
    } aRow[] = {{0, 0, 0xFF000000},   {0, 200, 0xFFC8C8C8}, {1, 200, 0xFF373737}, {2, 0, 0xFF0000FF},
                {2, 63, 0xFF00FCFF},  {2, 64, 0xFF00FFFF},  {2, 127, 0xFF00FF03}, {2, 191, 0xFFFCFF00},
                {2, 192, 0xFFFFFF00}, {2, 255, 0xFFFF0300}, {3, 255, 0xFF0000FF}, {3, 100, 0xFF6CFF00}};
    for (const auto& row : aRow) {
        EXPECT_EQ(paletteTable(row.nPalette)->at(row.i), row.rgb) << row.nPalette << ' ' << row.i;
    }
}

TEST_F(Scene, DrawsEachPixelThroughThePalette)
{
    for (int nWidth : {1, 5, 6, 7, 8}) {  // rows that need padding elsewhere
        // Values 7 apart from 1000, so that byte and value differ by a shift only.
        m_scene.setImagesLimits(
            makeFrame(nWidth, 4, [&](int x, int y) { return 1000 + (y * nWidth + x) * 7; }), {{1000, 1255}});
        for (int nPalette : {0, 2, 3, 1}) {
            EXPECT_EQ(m_scene.setPalette(nPalette), nPalette);
            const QImage picture = drawn(m_scene);
            ASSERT_EQ(picture.size(), QSize(nWidth, 4));
            for (int i = 0; i < 4 * nWidth; ++i) {
                EXPECT_EQ(picture.pixel(i % nWidth, i / nWidth), paletteTable(nPalette)->at(7 * i))
                    << nWidth << ": " << i << ", palette " << nPalette;
            }
        }
        EXPECT_EQ(m_scene.setPalette(4), 1);
    }
}

TEST_F(Scene, LimitsAndOutputRangesSetTheContrast)
{
    const ImageList vecImage = makeFrame(4, 1, [](int x, int) { return 100 * x; });
    const RangeList vecOut[] = {
        {}, {{50, 110}}, {{50, 110}, {0, 1}}};  // another count than of images: 0 to 255
    const int aanByte[][4] = {{0, 85, 170, 255}, {50, 70, 90, 110}, {0, 85, 170, 255}};
    for (int i = 0; i < 3; ++i) {
        m_scene.setImagesLimits(vecImage, {{0, 300}}, vecOut[i]);
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(red(x, 0), aanByte[i][x]) << i;
        }
    }
}

TEST_F(Scene, SwitchesAmongTheImagesOfAFrame)
{
    ImageList vecImage = makeFrame(9, 5, 10);
    vecImage.push_back(std::move(makeFrame(3, 4, 20)[0]));
    vecImage.push_back(nullptr);  // keeps its number
    const RangeList vecLimit(3, {0, 255});
    m_scene.setImagesLimits(vecImage, vecLimit);
    EXPECT_TRUE(m_scene.switchToIndex(2));
    EXPECT_EQ(drawn(m_scene).pixelColor(1, 1), QColor(Qt::magenta));  // nothing drawn
    EXPECT_TRUE(m_scene.switchToIndex(1));
    EXPECT_EQ(m_scene.sceneRect(), QRectF(0, 0, 3, 4));
    EXPECT_FALSE(m_scene.switchToIndex(3));
    m_scene.setImagesLimits(vecImage, {{0, 1}});  // counts differ: everything stays
    EXPECT_EQ(m_scene.currentIndex(), 1);
    EXPECT_EQ(red(2, 3), 20);
    m_scene.setImagesLimits(vecImage, vecLimit);  // a redraw comes back to the first
    EXPECT_EQ(m_scene.currentIndex(), 0);
    EXPECT_EQ(red(8, 4), 10);

    m_scene.clearImages();
    EXPECT_EQ(m_scene.currentIndex(), -1);
    CImgObj<unsigned char> imgByte;
    imgByte.Create(2, 2);
    std::fill_n(imgByte.Data(), 4, 77);
    m_scene.addImage(imgByte);
    std::fill_n(imgByte.Data(), 4, 99);  // the scene has its own copy
    m_scene.setPalette(1);
    EXPECT_EQ(red(1, 1), 255 - 77);
    EXPECT_EQ(m_scene.images().size(), 1u);
}

/// A scene with an overlay on its second image.
class OverlayScene : public BaseImgScene {
public:
    void setOverlay(const QList<uchar>& listByte, bool bShow)
    {
        m_vecOverlay.resize(2);
        m_vecOverlay[1] = std::make_unique<CImgObj<unsigned char>>();
        m_vecOverlay[1]->Create(listByte.size(), 1);
        std::copy(listByte.begin(), listByte.end(), m_vecOverlay[1]->Data());
        m_bOverlay = bShow;
        updateOverlay();
    }
};

TEST(Overlay, LiesOnItsImageInTheColoursOfItsTable)
{
    OverlayScene scene;
    scene.setShowProgress(false);
    ImageList vecImage = makeFrame(5, 1, 100);
    vecImage.push_back(std::move(makeFrame(5, 1, 100)[0]));
    scene.setImagesLimits(vecImage, {{0, 255}, {0, 255}});
    const auto pixels = [&] {
        QString str;
        for (int x = 0; x < 5; ++x) {
            str += drawn(scene).pixelColor(x, 0).name() + ' ';
        }
        return str;
    };
    const QString strPlain = QStringLiteral("#646464 ").repeated(5);
    scene.setOverlay({0, 1, 253, 254, 255}, true);
    EXPECT_EQ(pixels(), strPlain) << "the first image has none";
    scene.switchToIndex(1);
    EXPECT_TRUE(scene.setOverlayAlpha(255));
    EXPECT_EQ(pixels(), "#646464 #000100 #00fd00 #ff0000 #00ffff ");
    EXPECT_FALSE(scene.setOverlayAlpha(256));
    EXPECT_FALSE(scene.setOverlayAlpha(-1));
    EXPECT_EQ(pixels(), "#646464 #000100 #00fd00 #ff0000 #00ffff ");
    EXPECT_TRUE(scene.setOverlayAlpha(0));
    EXPECT_EQ(pixels(), "#646464 #646464 #646464 #ff0000 #00ffff ");
    scene.setOverlay({0, 1, 253, 254, 255}, false);
    EXPECT_EQ(pixels(), strPlain);
}

TEST_F(Scene, AFrameThatComesInDuringTheProgressWins)
{
    for (bool bGone : {false, true}) {
        m_scene.setShowProgress(true);
        ImageList vecLong = makeFrame(8, 8, 1);
        for (int i = 0; i < 2; ++i) {
            vecLong.push_back(std::move(makeFrame(8, 8, 1)[0]));
        }
        QTimer::singleShot(0, [&] {
            if (bGone) {
                vecLong.clear();
            }
            m_scene.setShowProgress(false);
            m_scene.setImagesLimits(makeFrame(4, 4, 200), {{0, 255}});
        });
        m_scene.setImagesLimits(vecLong, RangeList(3, {0, 255}));
        ASSERT_EQ(m_scene.images().size(), 1u);
        EXPECT_EQ(red(3, 3), 200);
    }
}

}  // namespace tessera
