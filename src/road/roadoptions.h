// RoadOptions: what is to be done with a series, from which files on and with which numbers.
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

/// Everything that was asked for. An empty optional is a value that a stage finds itself or takes from the
/// project.
struct RoadOptions {
    QStringList listInput;       ///< one project, or images in series order
    QStringList listInputGiven;  ///< as it was given, where folders or files of many images stood for frames
    QString strSeriesName;       ///< what the results of images are called after; empty: the first image
    QSize sizeFrame;  ///< of images of several sizes those of this one; not valid: all are of one size
    QList<QSize> listSizeFound;          ///< of a folder; with several of them each is a series
    std::optional<SeriesChoice> choice;  ///< how the series is read; none: as its files tell, or as it comes
    std::optional<SeriesFacts> facts;    ///< what the images tell; none for a project
    bool bMakeProject = false;           ///< write a project of the images beside the results
    QString strOutDir;                   ///< empty: beside the project or the first image
    QString strMaskFile;                 ///< areas that peak hunting leaves out; empty: none
    std::optional<QList<QPoint>> hotPixels;  ///< in place of the list beside the project
    bool bIgnoreHotPixelList = false;        ///< a list beside the project is left unread
    bool bFindDefects = true;  ///< leave out what is no measurement, unless there is a mask file
    QString strCellFile;       ///< a cell in place of a search; empty: search
    std::optional<CellParameters> knownCell;  ///< whose orientation is looked for in place of a search
    QString strKnownCellFile;                 ///< the CIF file that it was read from; empty: none
    QString strCalibrationFile;      ///< of the microscope, in place of what the project tells; empty: none
    QString strSaveCalibrationFile;  ///< takes that of the stage geometry; empty: none
    RoadStage stageFrom = RoadStage::Shifts;
    RoadStage stageTo = RoadStage::Integrate;
    int nJobs = 0;                 ///< frames worked on side by side; 0: one per core
    int nGroup = -1;               ///< merge only the peaks of this group; -1: all
    bool bAccept = false;          ///< a result that is judged bad is written and ends well too
    bool bFindAxis = false;        ///< the rotation axis from the peaks, whatever the project says
    bool bConventional = false;    ///< the files in the conventional setting of the proposed Bravais type
    bool bWindowDefaults = false;  ///< the window's start values in place of values that the stages find

    std::optional<QRect> rcRegion;  ///< reference region, pixels

    std::optional<double> dfWavelength;        ///< Å
    std::optional<double> dfPixelSize;         ///< Å⁻¹
    std::optional<double> dfRotationAxis;      ///< degrees, counter-clockwise from 3 o'clock
    std::optional<double> dfTiltStart;         ///< degrees, of the first frame
    std::optional<double> dfTiltStep;          ///< degrees, from frame to frame
    std::optional<double> dfTiltRelaxation;    ///< degrees, spread over the series
    std::optional<double> dfStretchAmplitude;  ///< per cent
    std::optional<double> dfStretchAzimuth;    ///< degrees
    std::optional<bool> bApplyStretching;
    /// Distortions that are given in the place of those of the project.
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
    CellHuntingParameters cell;            ///< the window's range; method and range that are asked for follow
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
    std::vector<int> listFixedGeometry;  ///< GeometryNumber: not to be refined
    bool bConstantBackground = false;    ///< refine also with positions fitted beside a constant
    ExportOptions exports;
    QStringList listCallerOption;  ///< options of the caller's own, such as "--json" and its file

    bool isProject() const;
    int jobs() const;  ///< at least 1
};

}  // namespace tessera
