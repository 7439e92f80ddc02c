// RoadCommand: the line of the shell that walks a road again.
#pragma once

#include "road/roadoptions.h"

#include <QString>
#include <QStringList>

namespace tessera {

struct RoadCommand {
    QStringList listArgument;  ///< the program first, then all options that are not as they are by default
    QStringList listUnsaid;    ///< what was chosen in the window and has no option, "smooth radius 0.7"

    /// The arguments as a shell takes them.
    QString line() const;
};

/// The command of options as they were given, not as the stages changed them. Files have their whole path, so
/// that it does not matter which folder it is run in.
RoadCommand commandOf(const RoadOptions& given);

/// An argument as a POSIX shell takes it for one word, whatever it holds: as it is where it means nothing to
/// the shell, else in single quotes.
QString shellQuoted(const QString& strArgument);

}  // namespace tessera
