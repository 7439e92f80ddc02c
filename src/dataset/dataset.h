// DataSet: all that the program keeps of one data set between runs.
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

/// What is known of a series, without the images in memory: the state that runs hand to one another. Every
/// run replaces its outputs whole and leaves what lies further down the road standing; counts of frames are
/// checked where the data are used. A copy costs little, as it shares its lists until one of them changes.
struct SeriesData {
    QString m_strProjectDir;   ///< folder of the project file; of image files their own; empty: no data set
    QString m_strProjectName;  ///< name of the project file, without folder and suffix
    QStringList m_listFrameFile;           ///< full path of each frame in series order; of a sum the first
    QList<double> m_listStageTilt;         ///< degrees, one per frame
    QList<double> m_listBeamTilt;          ///< degrees, one per frame
    QList<double> m_listOverallTilt;       ///< the angle that the geometry uses
    QList<int> m_listBeamTiltBreak;        ///< 1 where a beam tilt series starts
    QList<QPoint> m_listHotPixel;          ///< pixels to repair on every frame
    SeriesReading m_reading;               ///< how these frames come from those of the files
    double m_dfWavelength = 0.0251;        ///< Å
    double m_dfPixelSize = 0.001;          ///< Å⁻¹ per pixel
    double m_dfRotationAxis = 0;           ///< degrees, counter-clockwise on the screen from 3 o'clock
    int m_nAxisDecimals = 1;               ///< that the page shows the axis with, and rounds it to
    bool m_bRotationAxisKnown = true;      ///< false: nobody has told it, so it is to be found
    RotationMode m_rotation;               ///< how the crystal turned while a frame was exposed
    double m_dfTiltRelaxation = 0;         ///< degrees, spread evenly over the series
    double m_dfStretchAmplitude = 0;       ///< per cent
    double m_dfStretchAzimuth = 0;         ///< degrees
    SeriesDistortion m_distortion;         ///< what the lens and the axis do beside the stretching
    QList<QPointF> m_listShift;            ///< pixels with respect to the first frame
    double m_dfCenterX = 0;                ///< direct beam on the first frame, pixels
    double m_dfCenterY = 0;                ///< row of it, pixels
    QList<Vec3D> m_listCellFound;          ///< a*, b*, c* as found or loaded; any count but 3: no cell
    QList<Vec3D> m_listCell;               ///< the one in force: cellInForce()
    QList<QList<Peak3D>> m_listPeakFrame;  ///< all peaks per frame
    /// What the points in m_listPeakFrame were mapped with; none: not mapped since the list was replaced.
    std::optional<PeakMapping> m_peakMapping;
    QVector<QVector<QList<int>>> m_vecPeakGroup;  ///< group numbers per frame and peak
    QList<QList<Peak3D>> m_listPeakFrameShown;    ///< after the intensity and resolution limits
    QList<Peak3D> m_listPeakMergedShown;          ///< reflections and the single peaks of streaks
    QList<Peak3D> m_listPeakMerged;               ///< reflections only
    QList<QList<Peak3D>> m_listPeakChain;         ///< per nID the frame peaks, centre-relative
    /// Per frame the peaks of indexed reflections, with whole h, k, l.
    QVector<QList<Peak3D>> m_vecPeakIndexedOnFrame;
    std::vector<int> m_vecReflectionFrame;  ///< per nID the frame where the reflection is strongest
    QList<Peak3D> m_listReflectionIndexed;  ///< reflections that the last indexing left, with real indices
    QList<Vec3D> m_listCellIndexed;         ///< the cell that they were indexed with
    int m_nIntensityMode = 0;               ///< 0 dfIPoint, 1 dfI2D
    MaskData m_maskPeakHunting;             ///< areas that the hunt leaves out
    CSpaceGroup m_spaceGroup;               ///< of the labels, the peak table and the statistics
    MadeWith m_made;                        ///< what these lists were made with

    /// The frames of all files of the series, also of those that are summed and that are left out.
    const QStringList& allFiles() const { return m_reading.allFiles(m_listFrameFile); }
};

/// A series with the frame in view.
struct DataSet : SeriesData {
    ImageList m_vecFrameImage;  ///< images of the current frame

    /// Everything but these images, which stay as they are.
    void takeSeries(const SeriesData& series) { static_cast<SeriesData&>(*this) = series; }
};

/// The basis of m_listCell; none without a cell in force.
std::optional<ReciprocalBasis> cellInForce(const DataSet& data);

/// Takes leave of the data set: frees the images of the current frame and empties hot pixels, peaks, shifts,
/// cells, indexed peaks and reflections, and the hunting mask. Geometry, groups and merged lists stay until
/// they are replaced.
void clearDataSet(DataSet& data);

/// Whether the indices of the reflections and of their peaks are those of the cell in force.
bool holdsIndicesOfCell(const DataSet& data);

/// The file beside the project that is named after it: project folder, "/", project name and the ending as it
/// is given, such as ".pk" or "_pos.txt".
QString fileOfProject(const DataSet& data, const QString& strEnding);
/// The files of a refined geometry are named NAME_refined; where the project has this name already, or
/// NAME_refined3, they get the next number: NAME_refined2, NAME_refined4.
QString fileOfProject(const DataSet& data, ResultFile file);

}  // namespace tessera
