// frameAmongTargets: frames that an export would overwrite.
#pragma once

#include "records/runreport.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// The first target that is one of the frame files or a link to one; empty if none is.
QString frameAmongTargets(const QStringList& listTarget, const QStringList& listFrameFile);

/// Whether any target is a frame file. If so, a red line names the first one and says that nothing was
/// exported.
bool overwritesFrames(const QStringList& listTarget, const QStringList& listFrameFile, CRunReport& report);

}  // namespace tessera
