// StageResult: how a part of the road ended, and why if it did not reach its end.
#pragma once

#include <QString>

namespace tessera {

/// How a run ended.
enum class RunEnd {
    Finished,  ///< all is done, and what was to be written is on the disk
    Stopped,   ///< the user ended it
    Refused,   ///< what it needs is not there, so that it did not begin
    Failed,    ///< something went wrong on the way
};

struct [[nodiscard]] StageResult {
    RunEnd end = RunEnd::Finished;
    QString strReason;  ///< a line of the log, with the file or the frame that it lies at; empty if finished

    bool finished() const { return end == RunEnd::Finished; }
};

}  // namespace tessera
