// Showing a frame against the three things that it cannot do without, marks by the thousand, and the
// grid of numbers.
//
// Compare frameShown with frameLoadedConvertedAndDrawn: the ratio is what the scene costs on top.
#include "bench/benchapplication.h"
#include "frameview/baseimgview.h"
#include "frameview/circleitem.h"
#include "frameview/crossitem.h"
#include "frameview/originalimgscene.h"
#include "frameview/palettes.h"
#include "frameview/replacemarks.h"
#include "frameview/textdatawidget.h"
#include "imagefiles/mrcfile.h"
#include "imaging/contrast.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QPixmap>
#include <QTemporaryDir>

namespace tessera {

namespace {

const int g_nSide = 2048;

QString frameFile()
{
    static const QTemporaryDir dir;
    const QString strFileName = dir.filePath(QStringLiteral("frame.mrc"));
    if (QFile::exists(strFileName)) {
        return strFileName;
    }
    auto pImage = std::make_unique<CImgObj<float>>();
    pImage->Create(g_nSide, g_nSide);
    for (int i = 0; i < g_nSide * g_nSide; ++i) {
        pImage->Data()[i] = float(i % 1009 * 7919 % 1009);
    }
    ImageList vecImage;
    vecImage.push_back(std::move(pImage));
    WriteMRC(vecImage, strFileName);
    return strFileName;
}

void frameLoadedConvertedAndDrawn(benchmark::State& state)
{
    needApplication();
    const QString strFileName = frameFile();
    CImgObj<unsigned char> imgByte;
    imgByte.Create(g_nSide, g_nSide);
    QPixmap pixmap;  // the one before goes when the next is there, as on a screen
    for (auto _ : state) {
        ImageList vecImage;
        ReadMRC(strFileName, vecImage);
        FloatToByte(vecImage[0]->Data(), imgByte.Data(), g_nSide * g_nSide, 0.f, 1000.f, 0.f, 255.f);
        QImage picture(imgByte.Data(), g_nSide, g_nSide, g_nSide, QImage::Format_Indexed8);
        picture.setColorTable(*paletteTable(0));
        pixmap = QPixmap::fromImage(picture);
        benchmark::DoNotOptimize(pixmap);
    }
}
BENCHMARK(frameLoadedConvertedAndDrawn)->Unit(benchmark::kMillisecond);

// As the window does it, with the text data hidden.
void frameShown(benchmark::State& state)
{
    needApplication();
    const QString strFileName = frameFile();
    OriginalImgScene scene;
    scene.setShowProgress(false);
    BaseImgView view(&scene);
    TextDataWidget textData;
    for (auto _ : state) {
        ImageList vecImage;
        ReadMRC(strFileName, vecImage);
        scene.setImagesLimits(vecImage, {{0.0, 1000.0}});
        textData.setImage(vecImage[0].get());
        textData.setByteImage(scene.images()[0].get());
        textData.refresh();
    }
}
BENCHMARK(frameShown)->Unit(benchmark::kMillisecond);

void paletteChanged(benchmark::State& state)
{
    needApplication();
    ImageList vecImage;
    ReadMRC(frameFile(), vecImage);
    OriginalImgScene scene;
    scene.setShowProgress(false);
    scene.setImagesLimits(vecImage, {{0.0, 1000.0}});
    int nPalette = 0;
    for (auto _ : state) {
        scene.setPalette(++nPalette % 4);
    }
}
BENCHMARK(paletteChanged)->Unit(benchmark::kMillisecond);

// Marks set, painted once and cleared, on a frame that fills a large window.
template <typename TItem>
void marks(benchmark::State& state)
{
    needApplication();
    ImageList vecImage;
    ReadMRC(frameFile(), vecImage);
    OriginalImgScene scene;
    scene.setShowProgress(false);
    scene.setImagesLimits(vecImage, {{0.0, 1000.0}});
    BaseImgView view(&scene);
    view.setRenderHint(QPainter::Antialiasing);
    view.setScaleFactor(0.5);
    view.resize(1100, 1100);
    view.show();
    QCoreApplication::processEvents();
    QList<TItem*> listMark;
    for (auto _ : state) {
        QList<TItem*> listNew;
        for (int i = 0; i < state.range(0); ++i) {
            auto* pItem = new TItem;
            pItem->setSize(5);
            pItem->setColor(Qt::green);
            pItem->setPenWidth(1.0);
            pItem->setPos(i * 7919 % g_nSide, i * 104729 % g_nSide);
            listNew.append(pItem);
        }
        replaceMarks(&scene, listMark, listNew);
        QCoreApplication::processEvents();
        replaceMarks(&scene, listMark);
    }
}
BENCHMARK_TEMPLATE(marks, CrossItem)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(marks, CircleItem)->Arg(5000)->Unit(benchmark::kMillisecond);

// One step of the pointer with the grid of numbers in a large window.
void textDataMoved(benchmark::State& state)
{
    needApplication();
    ImageList vecImage;
    ReadMRC(frameFile(), vecImage);
    OriginalImgScene scene;
    scene.setShowProgress(false);
    scene.setImagesLimits(vecImage, {{0.0, 1000.0}});
    TextDataWidget textData;
    textData.resize(1200, 400);
    textData.show();
    textData.setImage(vecImage[0].get());
    textData.setByteImage(scene.images()[0].get());
    int x = 100;
    for (auto _ : state) {
        textData.setCenter(QPointF(100 + x++ % 1000, 700));
        textData.refresh();
        QCoreApplication::processEvents();
    }
}
BENCHMARK(textDataMoved)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tessera
