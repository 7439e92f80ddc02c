// Lorentz curve: rise and fall of a reflection through the frames.
#pragma once

#include <QList>
#include <QPointF>
#include <QVector>

namespace tessera {

/// Fits L(f) = I / ((f − F)²/C² + 1) to points of frame number and intensity.
///
/// @param adfPara  I, F, C: the start goes in, the fitted values come out. C enters squared; its sign
///                 is what the routine ends with
/// @param adfErr   out: standard errors of I, F, C; +infinity with 3 points or fewer, which leave
///                 nothing to estimate an error from
/// @return info of CLmdifFit::Run; 0, with the parameters as they were, for fewer than 3 points
int fitLorentzCurve(const QList<QPointF>& listPoint, double adfPara[3], double adfErr[3]);

/// 1000 points (f, L(f)) in equal steps over the frames ptFrameRange.x() to ptFrameRange.y(), of which
/// the last stands one step short of the end.
QVector<QPointF> calcFittedCurveData(double dfI, double dfFrame, double dfC, QPointF ptFrameRange);

}  // namespace tessera
