// Quality plots: what the plots of an integration show, as records.
#pragma once

#include "integration/integrationresult.h"
#include "window/plotseries.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

namespace tessera {

/// The contents of one plot. Points whose number is not known are not finite.
struct QualityPlot {
    QString strName;  ///< of its files: "rint_by_resolution"
    QString strTitle;
    QString strX;  ///< title of the axis, with its unit
    QString strY;
    QVector<PlotSeries> vecSeries;
    QVector<double> vecLevel = {};  ///< of thin lines all along x
};

/// By shell against 1/d in its middle: agreement, CC1/2, completeness with multiplicity, I over sigma.
std::vector<QualityPlot> shellPlots(const IntegrationResult& result);

/// By frame, from 1: scale and decay, Rint, number of observations.
std::vector<QualityPlot> framePlots(const IntegrationResult& result);

/// The Wilson plot with its line, and the completeness against the turn of the crystal.
std::vector<QualityPlot> seriesPlots(const IntegrationResult& result);

/// The numbers of the whole in a few lines: class and group, resolution, agreement before and after.
QStringList summaryOf(const IntegrationResult& result);

}  // namespace tessera
