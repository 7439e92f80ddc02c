// sideBySide: pieces of work spread over threads.
#pragma once

#include <functional>

namespace tessera {

using FnPiece = std::function<void(int)>;  ///< does the piece of this number

/// Does pieces 0 … nPieces − 1, each once, in as many threads as asked for or to be had; the calling thread
/// is one of them. What a piece leaves behind must depend on its number alone.
///
/// @param fnMakeWorker  called once in each thread: what it returns may keep buffers of its own
/// @param fnGoOn        asked before each piece of the calling thread, and only there; false ends the work
/// @return false when it was ended. What a piece throws comes out here, after all threads have ended.
bool sideBySide(int nPieces, int nJobs, const std::function<FnPiece()>& fnMakeWorker,
                const std::function<bool()>& fnGoOn = {});

}  // namespace tessera
