// Window file ("NAME.window.json"): settings of the window for a project, saved beside the result files.
#pragma once

#include "records/runparameters.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tessera {

/// The parameters with which the peaks were found.
struct HuntedMemory {
    PeakHuntingParameters hunting;
    quint64 nPeaks = 0;  ///< fingerprint of the peaks that were found with them
};

/// Which peaks were merged.
struct MergedMemory {
    int nGroup = -1;      ///< group of the peaks; −1: all peaks
    quint64 nPeaks = 0;   ///< fingerprint of the peaks
    quint64 nMerged = 0;  ///< number of merged reflections
};

/// The parameters on the pages of the window, and those with which the lists of the project were made.
struct WindowMemory {
    PeakHuntingParameters hunting;
    MappingParameters mapping;  ///< only its limits are stored
    PeakMergingParameters merging;
    CellHuntingParameters cell;
    IndexingParameters indexing;  ///< only threshold and space group are stored

    std::optional<HuntedMemory> hunted;
    std::optional<MergedMemory> merged;
};

/// The contents of a window file, as JSON.
QByteArray windowFileText(const WindowMemory& memory);

/// Reads the contents of a window file.
/// @param memory  gets the numbers of the file; those that are missing in the file keep their values
/// @return false with the reason, and `memory` as it was, if the text is not a window file, is damaged, or
///         contains a number outside the range of its box on the page
[[nodiscard]] bool readWindowFileText(const QByteArray& bytes, WindowMemory& memory,
                                      QString* pstrReason = nullptr);

}  // namespace tessera
