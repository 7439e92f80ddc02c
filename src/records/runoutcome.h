// RunOutcome: how a run ended, and why.
#pragma once

#include <QString>

namespace tessera {

/// How a run ended.
enum class RunEnd {
    Finished,  ///< the run did all its work
    Stopped,   ///< the user stopped it
    Refused,   ///< it did not begin, as something that it needs is missing
    Failed,    ///< a fault ended it
};

/// How a run ended, and why. The reason is a line for the log and names the file or frame at fault. For a run
/// that finished it is empty, or tells why a result file could not be written.
struct RunOutcome {
    RunEnd end = RunEnd::Finished;
    QString strReason;

    /// Whether the run did all its work.
    bool finished() const { return end == RunEnd::Finished; }
};

}  // namespace tessera
