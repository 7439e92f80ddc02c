// MainWindow: what runs compute in a thread, on a copy of the data set, while the window goes on.
#include "window/alivedata.h"
#include "window/mainwindow.h"

#include <utility>

namespace tessera {

namespace {

/// Hands the series of one data set to another one, with the images that a run has loaded.
void handOver(DataSet& from, DataSet& to)
{
    to.takeSeries(from);
    if (!from.m_vecFrameImage.empty()) {
        to.m_vecFrameImage = std::move(from.m_vecFrameImage);
        from.m_vecFrameImage.clear();
    }
}

}  // namespace

void CAliveData::show(const std::function<void()>& fn)
{
    m_run.inWindow([&] {
        handOver(m_dataSet, m_shown);
        fn();
        m_dataSet.takeSeries(m_shown);  // what was shown may have been worked on
    });
}

void MainWindow::computeAlive(CRunReport& report, const std::function<void(CAliveData&)>& fn)
{
    DataSet dataSet;
    dataSet.takeSeries(m_dataSet);
    CAliveRun run;
    CAliveData alive(dataSet, m_dataSet, run);
    try {
        run.run(report, [&] { fn(alive); });
    } catch (...) {
        handOver(dataSet, m_dataSet);
        throw;
    }
    handOver(dataSet, m_dataSet);
}

}  // namespace tessera
