// frameAmongTargets: frames that an export would overwrite.
#pragma once

#include <QString>
#include <QStringList>

/// The first frame file that one of the targets is, also by way of a link; empty if none is.
/// @param pnCount  may be null; how many of the targets are frame files
QString frameAmongTargets(const QStringList& listTarget, const QStringList& listFrameFile,
                          int* pnCount = nullptr);
