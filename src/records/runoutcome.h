// RunOutcome: how a run ended, and why.
#pragma once

#include <QString>

namespace tessera {

enum class RunEnd {
    Finished,  ///< all was done
    Stopped,   ///< its user asked for the end
    Refused,   ///< nothing was begun, as something that it needs is not there
    Failed,    ///< ended by a fault
};

/// How a run ended. The reason, in words for the log, names file or frame. Of a run that finished it is
/// empty, or says why a file that it was to write is not there.
struct RunOutcome {
    RunEnd end = RunEnd::Finished;
    QString strReason;

    bool finished() const { return end == RunEnd::Finished; }
};

}  // namespace tessera
