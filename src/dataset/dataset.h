// DataSet: the state of one series, which runs pass to each other.
#pragma once

#include "crystal/spacegroup.h"
#include "dataset/madewith.h"
#include "dataset/maskdata.h"
#include "dataset/peakmapping.h"
#include "dataset/serieschoice.h"
#include "geometry/reciprocalbasis.h"
#include "geometry/rotationmode.h"
#include "geometry/seriesdistortion.h"
#include "imaging/imagelist.h"
#include "records/peak3d.h"
#include "records/resultfile.h"
#include "records/vec3d.h"

#include <QList>
#include <QPoint>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>
#include <vector>

namespace tessera {

/// All that is known of a series, except the images in memory. Every run replaces its results as a whole
/// and leaves the results of later steps as they are; the numbers of frames are checked where data are
/// used. A copy is cheap, as its lists share their memory until one of them changes.
struct SeriesData {
    QString m_strProjectDir;   ///< folder of the project file, or of the image files; empty: no data set
    QString m_strProjectName;  ///< name of the project file, without folder and suffix
    QStringList
        m_listFrameFile;  ///< full path of each frame in series order; of a summed frame the first file
    QList<double> m_listStageTilt;    ///< degrees, one per frame
    QList<double> m_listBeamTilt;     ///< degrees, one per frame
    QList<double> m_listOverallTilt;  ///< degrees; the angle that the geometry uses
    QList<int> m_listBeamTiltBreak;   ///< 1 for each frame at which a beam tilt series starts
    QList<QPoint> m_listHotPixel;     ///< pixels to repair on every frame
    SeriesReading m_reading;          ///< how these frames are made of those of the files
    double m_dfWavelength = 0.0251;   ///< Å
    double m_dfPixelSize = 0.001;     ///< Å⁻¹ per pixel
    double m_dfRotationAxis = 0;      ///< degrees, counter-clockwise on the screen from 3 o'clock
    int m_nAxisDecimals = 1;          ///< decimals with which the page shows the axis, and to which it rounds
    bool m_bRotationAxisKnown = true;      ///< false: the axis is unknown and must be found
    RotationMode m_rotation;               ///< how the crystal moved while a frame was exposed
    double m_dfTiltRelaxation = 0;         ///< degrees, distributed evenly over the series
    double m_dfStretchAmplitude = 0;       ///< per cent
    double m_dfStretchAzimuth = 0;         ///< degrees
    SeriesDistortion m_distortion;         ///< the other distortions, and the tilt of the axis
    QList<QPointF> m_listShift;            ///< per frame, pixels, relative to the first frame
    double m_dfCenterX = 0;                ///< column of the direct beam on the first frame, pixels
    double m_dfCenterY = 0;                ///< row of it, pixels
    QList<Vec3D> m_listCellFound;          ///< a*, b*, c* as found or loaded; any number but 3: no cell
    QList<Vec3D> m_listCell;               ///< the cell in force, see cellInForce()
    QList<QList<Peak3D>> m_listPeakFrame;  ///< all peaks per frame
    /// The numbers with which the points in m_listPeakFrame were computed; nothing if they were not
    /// computed since the list was replaced.
    std::optional<PeakMapping> m_peakMapping;
    QVector<QVector<QList<int>>> m_vecPeakGroup;  ///< group numbers per frame and peak
    QList<QList<Peak3D>> m_listPeakFrameShown;    ///< peaks within the limits of intensity and resolution
    QList<Peak3D> m_listPeakMergedShown;          ///< reflections, and the single peaks of streaks
    QList<Peak3D> m_listPeakMerged;               ///< reflections only
    QList<QList<Peak3D>> m_listPeakChain;         ///< for each nID the frame peaks, relative to the centre
    /// For each frame the peaks of indexed reflections, with whole h, k, l.
    QVector<QList<Peak3D>> m_vecPeakIndexedOnFrame;
    std::vector<int> m_vecReflectionFrame;  ///< for each nID the frame on which the reflection is strongest
    QList<Peak3D> m_listReflectionIndexed;  ///< reflections after the last indexing, with real indices
    QList<Vec3D> m_listCellIndexed;         ///< the cell with which they were indexed
    int m_nIntensityMode = 0;               ///< 0: dfIPoint, 1: dfI2D
    MaskData m_maskPeakHunting;             ///< areas that the peak search leaves out
    CSpaceGroup m_spaceGroup;               ///< for the labels, the peak table and the statistics
    MadeWith m_made;                        ///< parameters with which these lists were made

    /// All frame files of the series, including those that were summed or left out.
    const QStringList& allFiles() const { return m_reading.allFiles(m_listFrameFile); }
};

/// A series with the images of the current frame.
struct DataSet : SeriesData {
    ImageList m_vecFrameImage;  ///< images of the current frame

    /// Copies everything except the images of the current frame.
    void takeSeries(const SeriesData& series) { static_cast<SeriesData&>(*this) = series; }
};

/// The basis of m_listCell; nothing without a cell in force.
std::optional<ReciprocalBasis> cellInForce(const DataSet& data);

/// Closes the data set: frees the images of the current frame and empties hot pixels, peaks, shifts, cells,
/// indexed peaks and reflections, and the mask of the peak search. Geometry, groups and merged lists stay
/// until they are replaced.
void clearDataSet(DataSet& data);

/// Whether reflections and their peaks have been indexed with the cell in force.
bool holdsIndicesOfCell(const DataSet& data);

/// The file of a project with an ending such as ".pk" or "_pos.txt": project folder, "/", project name,
/// ending.
QString fileOfProject(const DataSet& data, const QString& strEnding);
/// The result file of a project. Files of a refined geometry are named NAME_refined. If the project itself
/// is named NAME_refined or NAME_refined3, they get the next number: NAME_refined2, NAME_refined4.
QString fileOfProject(const DataSet& data, ResultFile file);

}  // namespace tessera
