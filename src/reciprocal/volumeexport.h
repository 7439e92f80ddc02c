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
    bool bScaled = false;      ///< true: pixel values between the contrast limits become 0 to 255
    double dfContrastMin = 0;  ///< pixel value that becomes 0; used with bScaled only
    double dfContrastMax = 0;  ///< pixel value that becomes 255
};

/// The file that exportReciprocalVolume() writes: NAME.mrc in the folder of the project. If a frame of the
/// series has this name, as can be when the frames were opened without a project, it is NAME_volume.mrc.
QString reciprocalVolumeFile(const DataSet& dataSet);

/// Maps all pixels of the first image of each frame into a cube of voxels around the origin of reciprocal
/// space (see CReciprocalVolume), and writes it to reciprocalVolumeFile(). A voxel has the edge of a pixel in
/// Å⁻¹.
///
/// The export is refused without shifts for all frames, without frames, if the file is a frame of the series,
/// or if there is not enough memory for the cube. A frame that cannot be loaded ends the reading of frames;
/// the volume is then written with the frames before it, or not at all if there are none. A frame without an
/// image is left out. If the run is stopped, no new file is written. The log has a red line for each of these
/// cases. An existing volume of the same name is replaced without a question.
/// @return Finished if the volume holds all frames and is on disk
RunOutcome exportReciprocalVolume(const DataSet& dataSet, const VolumeExportParameters& parameters,
                                  CRunReport& report);

}  // namespace tessera
