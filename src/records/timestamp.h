// Time stamps: the times in the lines that tell the start and the end of a run.
#pragma once

#include <QElapsedTimer>
#include <QString>

namespace tessera {

/// Local time as "hh:mm:ss", each with two digits.
QString currentTimeStamp();

/// The line that tells the end of a run and how long it took.
/// @param strTemplate  with "%1>... in %L2 min %L3 sec." for stamp, whole minutes and remaining whole seconds
QString timedEndLine(const QString& strTemplate, const QElapsedTimer& timer);

}  // namespace tessera
