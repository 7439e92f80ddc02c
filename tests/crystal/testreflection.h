// A reflection in one line.
#pragma once

#include "records/peak3d.h"
#include "tests/recordingreport.h"

#include <QLocale>

namespace tessera {

/// Numbers as in "1.234,5": messages show them so, files never do.
inline void speakGerman()
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
}

inline Peak3D reflection(double h, double k, double l, double dfIPoint = 0, double dfDStar = 0)
{
    Peak3D peak;
    peak.setHKL(h, k, l);
    peak.dfIPoint = dfIPoint;
    peak.dfDStar = dfDStar;
    return peak;
}

}  // namespace tessera
