// Window file ("NAME.window.json"): what the window keeps of a project beside the files of the runs.
#pragma once

#include "records/runparameters.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tessera {

/// The numbers that peaks were hunted with.
struct HuntedMemory {
    PeakHuntingParameters hunting;
    quint64 nPeaks = 0;  ///< print of the peaks that they gave
};

/// What was merged.
struct MergedMemory {
    int nGroup = -1;      ///< of the peaks; −1: all of them
    quint64 nPeaks = 0;   ///< print of the peaks
    quint64 nMerged = 0;  ///< number of the reflections that came out
};

/// The numbers of the pages of a project, and what its lists were made with.
struct WindowMemory {
    PeakHuntingParameters hunting;
    MappingParameters mapping;  ///< the limits alone
    PeakMergingParameters merging;
    CellHuntingParameters cell;
    IndexingParameters indexing;  ///< threshold and space group alone

    std::optional<HuntedMemory> hunted;
    std::optional<MergedMemory> merged;
};

QByteArray windowFileText(const WindowMemory& memory);

/// The same back. A number that is missing keeps its value in `memory`.
/// @return false with the reason, and `memory` as it was, for a text that is none of these, is damaged, or
///         has a number that its page cannot hold
[[nodiscard]] bool readWindowFileText(const QByteArray& bytes, WindowMemory& memory,
                                      QString* pstrReason = nullptr);

}  // namespace tessera
