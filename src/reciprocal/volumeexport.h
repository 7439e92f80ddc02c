// exportReciprocalVolume: the whole of reciprocal space that a series has seen, as a stacked MRC file.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QString>

namespace tessera {

/// How large the volume is, and what its voxels say.
struct VolumeExportParameters {
    int nEdge = 500;           ///< voxels along each side
    bool bScaled = false;      ///< 0 to 255 between the contrast limits, instead of the pixel values
    double dfContrastMin = 0;  ///< for bScaled
    double dfContrastMax = 0;
};

/// PROJECTDIR/NAME.mrc, where exportReciprocalVolume() writes; NAME_volume.mrc where that is a frame of the
/// series, as in one that was opened without a project.
QString reciprocalVolumeFile(const DataSet& dataSet);

/// Maps all pixels of the first image of each frame into a cube of voxels of the size of a pixel round the
/// origin of reciprocal space (see CReciprocalVolume), and writes it to reciprocalVolumeFile().
///
/// Memory for the cube is asked for before anything is written. A frame that can't be loaded ends the walk;
/// what was added before it is saved, but when that is nothing, no file is written. A frame without an image
/// is left out. A stop leaves no file. A file that is a frame of the series is not overwritten. All these say
/// so in red; an existing volume of the same name is replaced without a question.
/// @return Finished if the volume holds all frames and is on disk
RunOutcome exportReciprocalVolume(const DataSet& dataSet, const VolumeExportParameters& parameters,
                                  CRunReport& report);

}  // namespace tessera
