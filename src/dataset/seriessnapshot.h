// SeriesSnapshot: a copy of what a run over the frames needs of the data set.
#pragma once

#include "dataset/dataset.h"
#include "geometry/rotationgeometry.h"

#include <QList>
#include <QPoint>
#include <QStringList>

namespace tessera {

/// The series of a data set at one moment. A run handles waiting events, and through them the user can
/// change the data set during the run, which goes on with these copies. The lists share their memory with
/// those of the data set until one of them changes.
struct SeriesSnapshot {
    QStringList listFrameFile;   ///< full path of each frame in series order
    QList<QPoint> listHotPixel;  ///< pixels to repair on every frame: column, row
    SeriesReading reading;       ///< how the frames are made of those of the files
    QList<double> listTilt;      ///< overall tilt, degrees, one per frame
    BeamCentres centres;         ///< shifts and direct beam, pixels of the raw frames

    /// Copies the present state.
    explicit SeriesSnapshot(const DataSet& dataSet)
        : listFrameFile(dataSet.m_listFrameFile),
          listHotPixel(dataSet.m_listHotPixel),
          reading(dataSet.m_reading),
          listTilt(dataSet.m_listOverallTilt),
          centres{dataSet.m_listShift, dataSet.m_dfCenterX, dataSet.m_dfCenterY}
    {}

    /// See SeriesData.
    const QStringList& allFiles() const { return reading.allFiles(listFrameFile); }
    /// Number of frames.
    int frameCount() const { return listFrameFile.size(); }
};

}  // namespace tessera
