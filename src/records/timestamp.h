// The time stamp that begins the start and end lines of a run.
#pragma once

#include <QElapsedTimer>
#include <QString>

namespace tessera {

/// Local time as "hh:mm:ss", each with two digits.
QString currentTimeStamp();

/// The blue end line of a run that times itself, from a template with the places
/// "%1>... in %L2 min %L3 sec.": stamp, whole minutes, remaining whole seconds.
QString timedEndLine(const QString& strTemplate, const QElapsedTimer& timer);

}  // namespace tessera
