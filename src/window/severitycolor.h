// Severity color: in which color a log shows its lines.
#pragma once

#include "records/severity.h"

#include <Qt>

namespace tessera {

/// What the user reads from it: blue a run's start and end, red what went wrong.
inline Qt::GlobalColor severityColor(Severity severity)
{
    switch (severity) {
        case Severity::Info:
            return Qt::black;
        case Severity::Milestone:
            return Qt::blue;
        case Severity::Warning:
        case Severity::Error:
            break;
    }
    return Qt::red;
}

}  // namespace tessera
