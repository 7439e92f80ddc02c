// RoadCommand: the command line that repeats a road.
#pragma once

#include "road/roadoptions.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// A command line.
struct RoadCommand {
    QStringList listArgument;  ///< the program, followed by all options that differ from the defaults
    QStringList listUnsaid;    ///< settings of the window that have no option, "smooth radius 0.7"

    /// The command quoted for a shell.
    QString line() const;
};

/// The command for options as they were given, before the stages changed them. Paths are absolute, so that
/// the command can be run in any folder.
RoadCommand commandOf(const RoadOptions& given);

/// An argument quoted for a POSIX shell: in single quotes if it contains characters that the shell
/// interprets.
QString shellQuoted(const QString& strArgument);

}  // namespace tessera
