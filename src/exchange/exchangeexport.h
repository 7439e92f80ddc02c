// Exchange export: exports a series for other programs.
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

// All files are written to the folder of the source, each whole or not at all, and none over a frame of the
// series. A text that the user has changed since it was written is kept, and the new one gets the next free
// name, which the log tells. The log also tells what was left out and why.

/// Exports XDS.INP, and SMV frames unless those of the series are SMV that XDS can read in place.
RunOutcome exportForXds(const ExchangeSource& source, CRunReport& report);

/// Exports NAME.expt and NAME.refl with SMV frames.
/// @param listSpot  the indexed peaks, relative to source.listBeam; refused if empty
RunOutcome exportForDials(const ExchangeSource& source, const std::vector<GeometrySpot>& listSpot,
                          CRunReport& report);

/// Exports NAME.pts, and the frames as TIFF, as they were read, in NAME_pets/tiff.
RunOutcome exportForPets(const ExchangeSource& source, CRunReport& report);

/// Exports NAME_dyn.cif_pets: intensities by frames for dynamical refinement. Refused without integrated
/// intensities.
RunOutcome exportZoneAxisCif(const ExchangeSource& source, const VirtualFrameOptions& options,
                             CRunReport& report);

}  // namespace tessera
