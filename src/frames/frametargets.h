// frameAmongTargets: frames that an export would overwrite.
#pragma once

#include "records/runreport.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// The first frame file that one of the targets is, also by way of a link; empty if none is.
/// @param pnCount  may be null; how many of the targets are frame files
QString frameAmongTargets(const QStringList& listTarget, const QStringList& listFrameFile,
                          int* pnCount = nullptr);

/// Whether a target is a frame file; then a red line says that nothing was exported.
bool overwritesFrames(const QStringList& listTarget, const QStringList& listFrameFile, CRunReport& report);

}  // namespace tessera
