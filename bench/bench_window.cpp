// Peak hunting of a series in the window, and the same run without a window; and mapping with the views.
//
// Compare huntInTheWindow with huntAlone: the ratio is what log, progress, events and mapping cost on top.
// With a screen (QT_QPA_PLATFORM=xcb) remapInTheWindow paints the cloud by OpenGL as well.
#include "bench/benchapplication.h"
#include "dataset/opening.h"
#include "frames/peakhunting.h"
#include "imagefiles/mrcfile.h"
#include "view3d/ed3dwidget.h"
#include "window/mainwindow.h"
#include "window/pages/framespage.h"
#include "window/pages/mergingpage.h"
#include "window/pages/peaksearchpage.h"
#include "window/selection/selectioncontroller.h"

#include <benchmark/benchmark.h>

#include <QDoubleSpinBox>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace tessera {

namespace {

/// many.ed3d with its shifts and peaks; the text of the project lacks its last line.
void writeProject(const QTemporaryDir& dir, const QByteArray& bytesShift, const QByteArray& bytesPeaks,
                  const QByteArray& bytesProject)
{
    const auto write = [&](const char* pszName, const QByteArray& bytes) {
        QFile file(dir.filePath(pszName));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            qFatal("no project written");
        }
    };
    write("many.sc", bytesShift);
    write("many.pk", bytesPeaks);
    write("many.ed3d", bytesProject + "ENDFILELIST\n");
}

const int g_nFrames = 24;
const int g_nSide = 1024;
const int g_nSpots = 300;
const double g_dfThreshold = 20;

// Noise, a halo and spots of which each frame has its own.
CImgObj<float> frameImage(int nFrame)
{
    std::mt19937 random(nFrame);
    std::normal_distribution<float> noise(100.f, 10.f);
    std::uniform_int_distribution<int> place(20, g_nSide - 21);
    CImgObj<float> img;
    img.Create(g_nSide, g_nSide);
    for (int i = 0; i < g_nSide * g_nSide; ++i) {
        const double dfR = std::hypot(i % g_nSide - 510, i / g_nSide - 505);
        img.Data()[i] = noise(random) + float(5000 / (1 + dfR * dfR / 400));
    }
    for (int k = 0; k < g_nSpots; ++k) {
        const int nX = place(random), nY = place(random);
        for (int d = -9; d <= 9; ++d) {
            for (int e = -9; e <= 9; ++e) {
                img.Data()[(nY + e) * g_nSide + nX + d] += 400.f * float(std::exp(-(d * d + e * e) / 18.0));
            }
        }
    }
    return img;
}

/// A project on frames of its own, with shifts, so that its peaks are mapped after the run.
QString makeProject(const QTemporaryDir& dir)
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.filePath("settings"));
    QByteArray bytesProject = "WAVELENGTH 0.0251\nROTATIONAXIS 12.5\nCCDPIXELSIZE 0.002\nFILELIST\n";
    QByteArray bytesShift = "510 505\n";
    for (int i = 0; i < g_nFrames; ++i) {
        const QString strName = QStringLiteral("f%1.mrc").arg(i);
        const CImgObj<float> img = frameImage(i);
        if (!WriteMRC<float>({&img}, dir.filePath(strName))) {
            qFatal("no frame written");
        }
        const QByteArray bytesTilt = QByteArray::number(0.5 * i);
        bytesProject += "FILE " + strName.toLatin1() + ' ' + bytesTilt + " 0 " + bytesTilt + '\n';
        bytesShift += QByteArray::number(i + 1) + " 0 0\n";
    }
    const auto write = [&](const char* pszName, const QByteArray& bytes) {
        QFile file(dir.filePath(pszName));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            qFatal("no project written");
        }
    };
    write("series.sc", bytesShift);
    write("series.ed3d", bytesProject + "ENDFILELIST\n");
    return dir.filePath("series.ed3d");
}

void huntInTheWindow(benchmark::State& state)
{
    needApplication();
    const QTemporaryDir dir;
    const QString strProject = makeProject(dir);
    MainWindow window;
    window.resize(1280, 800);
    window.show();
    window.openFiles({strProject});
    auto* pPage = window.findChild<PeakSearchPage*>();
    pPage->m_pThresholdSpin->setValue(g_dfThreshold);
    for (auto _ : state) {
        pPage->m_pRunButton->click();
    }
    state.counters["list_bytes"] = double(QFileInfo(dir.filePath("series.pk")).size());
}
BENCHMARK(huntInTheWindow)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime();

void huntAlone(benchmark::State& state)
{
    const QTemporaryDir dir;
    const QString strProject = makeProject(dir);
    CRunReport report;
    DataSet dataSet;
    MappingParameters mapping;
    if (!openProject(dataSet, mapping, strProject, report)) {
        qFatal("no project opened");
    }
    PeakHuntingParameters hunting;
    hunting.m_dfPeakThreshold = g_dfThreshold;
    CPeakFilters filters;
    PeakHuntingOptions options;
    options.nJobs = QThread::idealThreadCount();
    for (auto _ : state) {
        runPeakHunting(dataSet, hunting, filters, report, options);
    }
    state.counters["list_bytes"] = double(QFileInfo(dir.filePath("series.pk")).size());
}
BENCHMARK(huntAlone)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime();

// A change of the rotation axis with `peaks` peaks on 200 frames, some of them in groups that are kept; the
// raw view is in sight.
void remapInTheWindow(benchmark::State& state)
{
    needApplication();
    const QTemporaryDir dir;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.filePath("settings"));
    const int nFrames = 200, nOnFrame = int(state.range(0)) / nFrames;
    std::mt19937 random(3);
    std::normal_distribution<double> normal;  // of the logarithm: few reflections are strong
    QByteArray bytesProject = "WAVELENGTH 0.0251\nROTATIONAXIS 12.5\nCCDPIXELSIZE 0.0013\nFILELIST\n";
    QByteArray bytesShift = "510 505\n", bytesPeaks;
    for (int i = 0; i < nFrames; ++i) {
        const QByteArray bytesTilt = QByteArray::number(0.5 * i - 50);
        bytesProject += "FILE none.mrc " + bytesTilt + " 0 " + bytesTilt + '\n';
        bytesShift += QByteArray::number(i + 1) + " 0 0\n";
        for (int k = 0; k < nOnFrame; ++k) {
            bytesPeaks += QString::asprintf("%8d%5d%6d%7.1f%7.1f%9.1f%12.1f 8000000000000000\n",
                                            1 + i * nOnFrame + k, i, k, random() % 10200 / 10.0,
                                            random() % 10100 / 10.0,
                                            std::min(20 * std::exp(1.5 * normal(random)), 32000.0), 1.0)
                              .toLatin1();
        }
    }
    writeProject(dir, bytesShift, bytesPeaks, bytesProject);
    MainWindow window;
    window.resize(1280, 800);
    window.show();
    window.openFiles({dir.filePath("many.ed3d")});
    auto* pTabs = window.findChild<QTabWidget*>();
    pTabs->setCurrentIndex(1);
    auto* pView = static_cast<ED3DWidget*>(pTabs->currentWidget());
    for (int g = 1; g <= int(state.range(1)); ++g) {
        QList<int> listPoint;
        for (int i = 0; i < pView->points().size(); i += 1 + g) {
            listPoint.append(i);
        }
        pView->insertPointGroup(g, QStringLiteral("some"), listPoint, Qt::green);
    }
    auto* pSpin = window.findChild<FramesPage*>()->m_pRotationAxisSpin;
    double dfAxis = pSpin->value();
    for (auto _ : state) {
        pSpin->setValue(dfAxis += 0.1);
        QApplication::processEvents();
    }
    state.counters["points"] = pView->points().size();
    state.counters["opengl"] = pView->isValid();
}
BENCHMARK(remapInTheWindow)
    ->ArgNames({"peaks", "groups"})
    ->Args({200000, 0})
    ->Args({200000, 3})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// A reflection chosen with `reflections` of five peaks each on 100 frames, in every view at once; the table
// is in front, or the merged view. The frames cannot be read.
void chooseReflection(benchmark::State& state)
{
    needApplication();
    const QTemporaryDir dir;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.filePath("settings"));
    const int nFrames = 100, nReflections = int(state.range(0)), nPeaks = 5;
    std::vector<QByteArray> vecLines(nFrames);
    std::mt19937 random(3);
    for (int n = 0; n < nReflections; ++n) {
        const double dfX = random() % 20400 / 10.0, dfY = random() % 20400 / 10.0;
        const int nFirst = n % (nFrames - nPeaks);
        for (int i = 0; i < nPeaks; ++i) {
            vecLines[size_t(nFirst) + size_t(i)] += QString::asprintf(
                                                        "%7.1f%7.1f%9.1f%12.1f 8000000000000000\n", dfX, dfY,
                                                        100.0 + (i == 2 ? 900 : n % 700), 1.0)
                                                        .toLatin1();
        }
    }
    QByteArray bytesProject = "WAVELENGTH 0.0251\nROTATIONAXIS 12.5\nCCDPIXELSIZE 0.0007\nFILELIST\n";
    QByteArray bytesShift = "1020 1020\n", bytesPeaks;
    int nSerial = 0;
    for (int i = 0; i < nFrames; ++i) {
        const QByteArray bytesTilt = QByteArray::number(0.2 * i - 10);
        bytesProject += "FILE none.mrc " + bytesTilt + " 0 " + bytesTilt + '\n';
        bytesShift += QByteArray::number(i + 1) + " 0 0\n";
        int nOnFrame = 0;
        const QList<QByteArray> listLine = vecLines[i].split('\n');
        for (const QByteArray& bytesLine : listLine) {
            if (!bytesLine.isEmpty()) {
                bytesPeaks += QString::asprintf("%8d%5d%6d", ++nSerial, i, nOnFrame++).toLatin1() +
                              bytesLine + '\n';
            }
        }
    }
    writeProject(dir, bytesShift, bytesPeaks, bytesProject);
    MainWindow window;
    window.resize(1280, 800);
    window.show();
    window.openFiles({dir.filePath("many.ed3d")});
    window.findChild<MergingPage*>()->m_pSpinMax2DDistance->setValue(0.5);
    window.peakReduction3D();
    auto* pTabs = window.findChild<QTabWidget*>();
    pTabs->setCurrentIndex(int(state.range(1)));
    QApplication::processEvents();
    auto* pController = window.findChild<SelectionController*>();
    auto* pMerged = static_cast<ED3DWidget*>(pTabs->widget(2));
    int nPoint = 0;
    for (auto _ : state) {
        nPoint = (nPoint + 997) % pMerged->points().size();
        pController->chooseReflection(pMerged->points().at(nPoint).nID);
        QApplication::processEvents();
    }
    state.counters["points"] = static_cast<ED3DWidget*>(pTabs->widget(1))->points().size();
    state.counters["reflections"] = pMerged->points().size();
    state.counters["opengl"] = pMerged->isValid();
}
BENCHMARK(chooseReflection)
    ->ArgNames({"reflections", "tab"})
    ->Args({20000, 1})
    ->Args({20000, 2})
    ->Args({20000, 3})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

}  // namespace tessera
