// ButtonStatus: the look of a run's button.
#pragma once

namespace tessera {

enum class ButtonStatus {
    ready = 0,   ///< "Run"
    running = 1  ///< "Stop": a second click is the wish to stop
};

}  // namespace tessera
