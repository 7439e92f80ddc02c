// FrameDefects: parts of the frames that are no measurement, found by comparing some frames of a series.
#pragma once

#include "dataset/dataset.h"
#include "dataset/maskdata.h"
#include "frames/framegaps.h"
#include "frames/stucklines.h"
#include "imaging/imgobj.h"
#include "records/runreport.h"

#include <QList>
#include <QPoint>
#include <QPolygonF>
#include <QStringList>

#include <array>
#include <optional>
#include <vector>

namespace tessera {

constexpr int g_nBorderLines = 16;  ///< lines along each edge that are examined

/// What is taken from one frame for the search for defects.
struct FrameSigns {
    int nWidth = 0;  ///< pixels
    int nHeight = 0;
    FrameLines lines = {CLineWatch(0), CLineWatch(0)};  ///< its columns and rows
    std::vector<float> vecBlockMean;                    ///< blockMeans() of the frame
    /// Brightness of the outermost lines of each edge, from the edge inwards. Order: left, right, top,
    /// bottom.
    std::array<std::array<float, g_nBorderLines>, 4> aBorder = {};
    QList<QPoint> listSpike;            ///< single pixels much brighter than all their neighbours
    std::vector<PixelRun> vecUnusable;  ///< pixels without a usable number
};

/// The defects of the frames of a series.
struct FrameDefects {
    int nWidth = 0;  ///< of the frames, pixels
    int nHeight = 0;
    std::vector<LineRun> vecColumn;  ///< dead, copied or interpolated columns
    std::vector<LineRun> vecRow;     ///< dead, copied or interpolated rows
    /// Width of the unusable columns or rows at an edge: left, right, top, bottom.
    std::array<int, 4> anBorder = {};
    QList<QPolygonF> listShadow;  ///< shadows of an aperture or a beam stop, pixels
    /// Parts of an edge, in pixels, whose opposite part is in a shadow. The Fourier transform of the peak
    /// search continues a frame periodically, and the band-pass makes a ridge of false peaks along the step
    /// between the two edges.
    QList<QPolygonF> listWrapped;
    QList<QPoint> listHotPixel;  ///< column, row
    QList<QPolygonF> listGap;  ///< gaps of the detector, which all frames mark as no measurement: gapAreas()
    qint64 nUnusable = 0;      ///< number of all pixels that are marked so, including those outside the areas
};

/// Examines one frame of any size.
FrameSigns signsOfFrame(const CImgObj<float>& imgFrame);

/// Finds the defects from the signs of some frames. Frames of another size than the first one are left out.
///
/// Reflections, rings and the halo of the beam are no defects: a defect is the same on all frames and has a
/// sharp edge. Hot pixels and shadows are found only with at least five frames. Pixels that frames mark as
/// no measurement are accepted even from a single frame, unless they are the whole frame.
FrameDefects defectsOf(const std::vector<FrameSigns>& vecFrame);

/// The defects as areas to be left out in the peak search, in the order of tellDefects(). Hot pixels get no
/// area.
MaskData maskOfDefects(const FrameDefects& defects);

/// One line of the log for each kind of defect.
QStringList tellDefects(const FrameDefects& defects);

/// Finds the defects of a series from some of its frames.
/// @param nJobs  frames that are read side by side; the result does not depend on it
/// @return nothing when the report asked to stop or memory is short
std::optional<FrameDefects> findFrameDefects(const DataSet& dataSet, CRunReport& report, int nJobs = 1);

}  // namespace tessera
