// firstImage: the image of a frame that a run works on, or what there is to say without one.
#pragma once

#include "dataset/seriessnapshot.h"
#include "imaging/imgobj.h"
#include "records/runreport.h"

#include <QString>

#include <memory>

namespace tessera {

/// What a run says of a frame that it cannot use, in red.
struct FrameFaults {
    QString strNotLoaded;  ///< with %1 for the file, after the loader's own lines; empty: these suffice
    QString strThen = QStringLiteral(" Stop.");  ///< ends the line on a file without an image
};

enum class OnShortMemory {
    Say,    ///< the frame cannot be loaded
    Throw,  ///< a CShortMemory, for a caller that can try again with more room
};

/// Loads the first image of a frame of a series, with the hot pixels repaired.
/// @return null, with red lines and the first of them as the report's reason, when the file cannot be
///         loaded or has no image
/// @throw CShortMemory if asked for
std::unique_ptr<CImgObj<float>> firstImage(const SeriesSnapshot& series, int nFrame,
                                           const FrameFaults& faults, CRunReport& report,
                                           OnShortMemory onShortMemory = OnShortMemory::Say);

}  // namespace tessera
