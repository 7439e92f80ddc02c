// firstImage: loads the image of a frame that a run works on.
#pragma once

#include "dataset/seriessnapshot.h"
#include "imaging/imgobj.h"
#include "records/runreport.h"

#include <QString>

#include <memory>

namespace tessera {

/// The red lines for a frame that a run cannot use.
struct FrameFaults {
    QString strNotLoaded;  ///< with %1 for the file, follows the lines of the loader; empty: no further line
    QString strThen = QStringLiteral(" Stop.");  ///< end of the line for a file without an image
};

/// What happens when memory runs out.
enum class OnShortMemory {
    Say,    ///< a red line, and the frame counts as not loaded
    Throw,  ///< CShortMemory is thrown, for callers that can try again with more memory
};

/// Loads the first image of a frame of a series, with the hot pixels repaired.
/// @return null, with red lines and the first of them as the report's reason, when the file cannot be
///         loaded or has no image
/// @throw CShortMemory if asked for
std::unique_ptr<CImgObj<float>> firstImage(const SeriesSnapshot& series, int nFrame,
                                           const FrameFaults& faults, CRunReport& report,
                                           OnShortMemory onShortMemory = OnShortMemory::Say);

}  // namespace tessera
