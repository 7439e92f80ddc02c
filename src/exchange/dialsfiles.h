// DIALS files: the experiment with its models, and the table of reflections.
#pragma once

#include "exchange/exchangereflections.h"
#include "exchange/highestcount.h"

#include <QByteArray>
#include <QRect>
#include <QString>

#include <vector>

namespace tessera {

/// What the files tell besides the geometry.
struct DialsOptions {
    QString strTemplate;               ///< path of the frames with "#" for each digit
    std::vector<QRect> listUntrusted;  ///< areas without a measurement, pixels
    int nHighest = g_nHighestSmv;      ///< greatest count of a trusted pixel
    double dfSpotSigma = 0;            ///< width of the spots, pixels; 0: unknown
    double dfRockingSigma = 0;         ///< width of the reflections, degrees about the axis; 0: unknown
};

/// The content of NAME.expt: beam, detector, goniometer, scan, crystal, frames and a profile model, as
/// JSON.
///
/// The crystal is the cell in force in P 1. The scan has the form that all versions read. The identifier
/// depends on the geometry only, so that equal series have equal files.
/// Source: to_dict() of the models of dxtbx.
QByteArray dialsExperiment(const ExchangeGeometry& geometry, const DialsOptions& options);

/// The content of NAME.refl: the indexed reflections with their observed and expected places, as
/// MessagePack. The variances are those of the scatter of places and angles.
/// Source: the reflection table of DIALS, version 1.
QByteArray dialsReflections(const ExchangeGeometry& geometry, const DialsOptions& options,
                            const std::vector<ExchangeReflection>& listReflection);

}  // namespace tessera
