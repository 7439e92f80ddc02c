// Predicted discs: where the reflections of a frame were predicted, and what is said of each.
#pragma once

#include "integration/integrationresult.h"

#include <QColor>
#include <QPointF>
#include <QString>
#include <QStringList>

#include <vector>

class QLocale;

namespace tessera {

/// One observation on one of its frames.
struct PredictedDisc {
    int nObservation = 0;  ///< place in the list of the series
    QPointF ptCentre;      ///< scene coordinates of the frame: whole numbers are corners of pixels
    QColor color;
    QString strTip;
};

/// The observations whose passage includes the frame; where a passage has no frames, the one that it is
/// nearest to.
/// @param nFrame  from 0
std::vector<PredictedDisc> discsOnFrame(const IntegrationResult& result, int nFrame, const QLocale& locale);

/// The disc around a point, the nearest where several include it; −1 for none.
/// @param ptScene   scene coordinates
/// @param dfRadius  pixels, of the discs
/// @return number of the observation
int observationAt(const std::vector<PredictedDisc>& listDisc, const QPointF& ptScene, double dfRadius);

/// Indices, intensity and its sigma on the common scale, spacing and frames, flags: a line for each.
QStringList describeObservation(const Observation& observation, const QLocale& locale);

/// An intensity and its sigma as a user reads them: digits by the sigma.
QString intensityText(double dfIntensity, double dfSigma, const QLocale& locale);

/// The radius of the discs that were summed, pixels.
double discRadius(const IntegrationResult& result);

}  // namespace tessera
