// Exports of a series for other programs: each writes all of its files.
#pragma once

#include "exchange/exchangesource.h"
#include "exchange/virtualframes.h"
#include "records/runoutcome.h"
#include "records/runreport.h"
#include "refinement/geometryspot.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

// All files go to the folder of the source, each whole or not at all, and none over a frame of the series.
// A text that its user has changed since it was written stays, and the new one gets the next free name, which
// the log tells. What is left out, and why, is told in the log too.

/// XDS.INP, and SMV frames where the series has none that can be read in place.
RunOutcome exportForXds(const ExchangeSource& source, CRunReport& report);

/// NAME.expt and NAME.refl with the SMV frames.
/// @param listSpot  the indexed peaks, relative to source.listBeam; empty: refused
RunOutcome exportForDials(const ExchangeSource& source, const std::vector<GeometrySpot>& listSpot,
                          CRunReport& report);

/// NAME.pts and the frames, as they were read, as TIFF in NAME_pets/tiff.
RunOutcome exportForPets(const ExchangeSource& source, CRunReport& report);

/// NAME_dyn.cif_pets: intensities by frames for dynamical refinement. Refused where nothing is integrated.
RunOutcome exportZoneAxisCif(const ExchangeSource& source, const VirtualFrameOptions& options,
                             CRunReport& report);

}  // namespace tessera
