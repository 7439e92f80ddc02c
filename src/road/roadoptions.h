// RoadOptions: input, stages and parameters of a road.
#pragma once

#include "dataset/serieschoice.h"
#include "dataset/seriesfacts.h"
#include "geometry/seriesdistortion.h"
#include "records/runparameters.h"
#include "road/exports.h"
#include "road/intensities.h"
#include "road/roadstage.h"

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

namespace tessera {

/// Everything that was requested. Optional values without a value are determined by a stage or taken from the
/// project.
struct RoadOptions {
    QStringList listInput;               ///< one project, or images in the order of the series
    QStringList listInputGiven;          ///< the input as given, if it was a folder or a file of many images
    QString strSeriesName;               ///< name of the results of images; empty: that of the first image
    QSize sizeFrame;                     ///< use only images of this size; not valid: all have the same size
    QList<QSize> listSizeFound;          ///< sizes of the frames in a folder; each is a series of its own
    std::optional<SeriesChoice> choice;  ///< frames, binning and summing; none: as saved, else all frames
    std::optional<SeriesFacts> facts;    ///< contents of the headers of images; none for a project
    bool bMakeProject = false;           ///< write a project of the images beside the results
    QString strOutDir;                   ///< empty: beside the project or the first image
    QString strMaskFile;                 ///< areas that peak hunting leaves out; empty: none
    std::optional<QList<QPoint>> hotPixels;   ///< used instead of the list beside the project
    bool bIgnoreHotPixelList = false;         ///< do not read the list of hot pixels beside the project
    bool bFindDefects = true;                 ///< look for detector defects, unless there is a mask file
    QString strCellFile;                      ///< unit-cell file to use instead of a search; empty: search
    std::optional<CellParameters> knownCell;  ///< find the orientation of this cell instead of a search
    QString strKnownCellFile;                 ///< CIF file from which the known cell was read; empty: none
    QString strCalibrationFile;      ///< calibration to use instead of the project's values; empty: none
    QString strSaveCalibrationFile;  ///< file for the calibration of the stage geometry; empty: none
    RoadStage stageFrom = RoadStage::Shifts;
    RoadStage stageTo = RoadStage::Integrate;
    int nJobs = 0;                 ///< frames processed in parallel; 0: one per core
    int nGroup = -1;               ///< merge only the peaks of this group; -1: all
    bool bAccept = false;          ///< write a result that is judged bad, and count the run as good
    bool bFindAxis = false;        ///< determine the rotation axis from the peaks even if the project has one
    bool bConventional = false;    ///< write files in the conventional setting of the proposed Bravais type
    bool bWindowDefaults = false;  ///< use the window's defaults instead of values determined by the stages

    std::optional<QRect> rcRegion;  ///< reference region, pixels

    std::optional<double> dfWavelength;        ///< Å
    std::optional<double> dfPixelSize;         ///< Å⁻¹
    std::optional<double> dfRotationAxis;      ///< degrees, counter-clockwise from 3 o'clock
    std::optional<double> dfTiltStart;         ///< degrees, of the first frame
    std::optional<double> dfTiltStep;          ///< degrees, from frame to frame
    std::optional<double> dfTiltRelaxation;    ///< degrees, spread over the series
    std::optional<double> dfStretchAmplitude;  ///< per cent
    std::optional<double> dfStretchAzimuth;    ///< degrees
    std::optional<bool> bApplyStretching;      ///< correct the elliptical distortion
    /// Distortions that are given instead of those of the project.
    std::vector<std::pair<double SeriesDistortion::*, double>> listDistortion;
    std::optional<double> dfCenterX;  ///< direct beam on the first frame, pixels
    std::optional<double> dfCenterY;

    PeakHuntingParameters hunting;
    std::optional<double> dfPeakRadius;  ///< pixels
    std::optional<double> dfBackgroundRadius;
    std::optional<double> dfIntegrationRadius;
    std::optional<double> dfIntegrationBackground;
    std::optional<double> dfPeakThreshold;  ///< counts
    std::optional<double> dfResolutionMin;  ///< Å⁻¹, of the peaks to merge
    std::optional<double> dfResolutionMax;
    std::optional<double> dfIntensityMin;  ///< counts, of the peaks to merge
    std::optional<double> dfIntensityMax;
    PeakMergingParameters merging;
    CellHuntingParameters cell;            ///< the window's range; given method and range are below
    std::optional<double> dfCellRangeMin;  ///< Å
    std::optional<double> dfCellRangeMax;
    std::optional<CellSearchMethod> cellMethod;
    std::optional<double> dfMin3DDistance;  ///< pixels
    std::optional<double> dfMax2DDistance;
    IndexingParameters indexing;
    IntensityOptions intensities;
    RefinementParameters refinement;
    std::optional<double> dfRefineIntensityLow;  ///< counts, of the peaks of a pair
    std::optional<double> dfRefineIntensityHigh;
    std::optional<double> dfRefineDStarLow;  ///< Å⁻¹
    std::optional<double> dfRefineDStarHigh;
    std::vector<int> listFixedGeometry;  ///< GeometryNumber: numbers that are not refined
    bool bConstantBackground = false;    ///< refine also with positions fitted with a constant background
    ExportOptions exports;
    QStringList listCallerOption;  ///< options of the calling program, such as "--json" and its file

    bool isProject() const;  ///< whether the input is a project
    int jobs() const;        ///< at least 1
};

}  // namespace tessera
