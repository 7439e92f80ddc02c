// The files of DIALS: the experiment with its models, and the table of reflections.
#pragma once

#include "exchange/exchangereflections.h"
#include "exchange/highestcount.h"

#include <QByteArray>
#include <QRect>
#include <QString>

#include <vector>

namespace tessera {

struct DialsOptions {
    QString strTemplate;  ///< path of the frames, "#" for each digit
    std::vector<QRect> listUntrusted;
    int nHighest = g_nHighestSmv;  ///< counts, the most that a pixel is trusted with
    double dfSpotSigma = 0;        ///< pixels; 0: not known
    double dfRockingSigma = 0;     ///< degrees about the axis; 0: not known
};

/// NAME.expt: beam, detector, goniometer, scan, crystal, frames and a profile model, as JSON.
///
/// The crystal is the cell in force, in P 1. The scan is written in the form that all versions read. The
/// identifier is made from the geometry, so that equal series have equal files.
/// Source: the models' to_dict() of dxtbx.
QByteArray dialsExperiment(const ExchangeGeometry& geometry, const DialsOptions& options);

/// NAME.refl: the indexed reflections with their observed and expected places, as MessagePack.
///
/// Variances are those that the places and angles scatter by.
/// Source: the reflection table of DIALS, version 1.
QByteArray dialsReflections(const ExchangeGeometry& geometry, const DialsOptions& options,
                            const std::vector<ExchangeReflection>& listReflection);

}  // namespace tessera
