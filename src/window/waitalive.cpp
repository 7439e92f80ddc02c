#include "window/waitalive.h"

#include "records/runreport.h"

#include <QElapsedTimer>
#include <QThread>

#include <algorithm>

namespace tessera {

void waitAlive(CRunReport& report, const std::function<int()>& fnTime)
{
    const int nSlice = 10;  // ms
    if (fnTime() <= 0) {
        return;
    }
    QElapsedTimer timer;
    timer.start();
    while (report.goOn() && timer.elapsed() < fnTime()) {
        QThread::msleep(std::min<qint64>(nSlice, std::max<qint64>(1, fnTime() - timer.elapsed())));
    }
}

}  // namespace tessera
