#include "window/timeleft.h"

#include <QCoreApplication>

#include <cmath>

namespace tessera {

QString timeLeftText(double dfSeconds, double dfShare)
{
    const double dfLeast = 1, dfLeastShare = 0.02;  // before that a guess jumps to and fro
    if (!(dfShare >= dfLeastShare) || dfShare >= 1 || dfSeconds < dfLeast) {
        return {};
    }
    const auto nLeft = qint64(std::ceil(dfSeconds * (1 - dfShare) / dfShare));
    return QCoreApplication::translate("RoadDock", "%1:%2 left")
        .arg(nLeft / 60)
        .arg(nLeft % 60, 2, 10, QLatin1Char('0'));
}

}  // namespace tessera
