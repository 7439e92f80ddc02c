// waitAlive: a pause of a run, in which the window goes on.
#pragma once

#include <functional>

namespace tessera {

class CRunReport;

/// Waits while the window lives, until the report wants the end. The time in ms is asked for again and again,
/// so that a shorter one counts at once.
void waitAlive(CRunReport& report, const std::function<int()>& fnTime);

}  // namespace tessera
