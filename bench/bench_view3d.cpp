// The 3D view with 100 000 points: setPoints, a picture in one call against point by point, a slab, a rubber
// band over all and the plain pick within it, and the colours of many groups.
//
// Pictures need a display: xvfb-run -a -s "-screen 0 1600x1200x24 +extension GLX" with QT_QPA_PLATFORM=xcb.
// Without OpenGL those benchmarks are skipped.
#include "view3d/ed3dwidget.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QMouseEvent>

#include <cmath>
#include <random>

namespace tessera {

namespace {

const int g_nPoints = 100000;

const QList<Peak3D>& cloud()
{
    static QList<Peak3D> listPeak;
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    for (int i = listPeak.size(); i < g_nPoints; ++i) {
        Peak3D peak;
        const float x = float(0.5 * normal(random)), y = float(0.5 * normal(random)),
                    z = float(0.5 * normal(random));
        peak.setPoint({x, y, z});
        peak.dfIPoint = std::exp(1.5 * normal(random));
        peak.nID = i;
        listPeak.append(peak);
    }
    return listPeak;
}

// Lives to the end, as the application does.
ED3DWidget* view()
{
    static ED3DWidget* pView = nullptr;
    if (pView) {
        return pView;
    }
    if (!qApp) {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
        static int nArgument = 1;
        static char aName[] = "tessera-bench";
        static char* aArgument[] = {aName, nullptr};
        new QApplication(nArgument, aArgument);
    }
    pView = new ED3DWidget;
    pView->resize(900, 700);
    pView->setPoints(cloud());
    pView->show();
    for (int i = 0; i < 10; ++i) {
        QApplication::processEvents();
    }
    return pView;
}

void view3DSetPoints(benchmark::State& state)
{
    view();
    for (auto _ : state) {
        view()->setPoints(cloud());
    }
}

void view3DPaint(benchmark::State& state)
{
    if (!view()->isValid()) {
        state.SkipWithError("no OpenGL on this platform");
        return;
    }
    view()->setPlainDrawing(state.range(0));
    for (auto _ : state) {
        view()->updateGL();
        glFinish();
    }
    view()->setPlainDrawing(false);
}

// A slab of a twentieth of the points moves by one layer, the picture included.
void view3DSlab(benchmark::State& state)
{
    if (!view()->isValid()) {
        state.SkipWithError("no OpenGL on this platform");
        return;
    }
    view()->setLattice({{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}});
    int nLayer = 0;
    for (auto _ : state) {
        view()->setSlab(CloudSlab{{0, 0, 1}, double(nLayer++ % 3 - 1), 0.2});
        view()->updateGL();
        glFinish();
    }
    view()->setSlab({});
    view()->setLattice({});
}

void view3DBand(benchmark::State& state)
{
    for (auto _ : state) {
        const QPoint ptFrom(1, 1), ptTo(899, 699);
        QMouseEvent press(QEvent::MouseButtonPress, ptFrom, Qt::LeftButton, Qt::LeftButton,
                          Qt::ControlModifier),
            move(QEvent::MouseMove, ptTo, Qt::NoButton, Qt::LeftButton, Qt::ControlModifier),
            release(QEvent::MouseButtonRelease, ptTo, Qt::LeftButton, Qt::NoButton, Qt::ControlModifier);
        for (QMouseEvent* pEvent : {&press, &move, &release}) {
            QApplication::sendEvent(view(), pEvent);
        }
    }
    state.counters["points"] = view()->selectedPoints().size();
    view()->clearSelection();
}

void view3DColoursOf40Groups(benchmark::State& state)
{
    CPointGroups groups;
    groups.reset(g_nPoints);
    for (int k = 0; k < 40; ++k) {
        QList<int> listPoint;
        for (int i = k; i < g_nPoints; i += 3) {
            listPoint.append(i);
        }
        groups.insertGroup(k + 1, QString(), listPoint, CPointGroups::nextGroupColor());
    }
    PointDisplay display;
    for (auto _ : state) {
        groups.makeDisplay(display);
    }
}

}  // namespace

BENCHMARK(view3DSetPoints)->Unit(benchmark::kMillisecond);
BENCHMARK(view3DPaint)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(view3DSlab)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(view3DBand)->Unit(benchmark::kMillisecond);
BENCHMARK(view3DColoursOf40Groups)->Unit(benchmark::kMillisecond);

}  // namespace tessera
