// ButtonStatus: what the button of a run shows.
#pragma once

namespace tessera {

/// What the button of a run shows.
enum class ButtonStatus {
    ready = 0,   ///< "Run"
    running = 1  ///< "Stop": a click asks the run to stop
};

}  // namespace tessera
