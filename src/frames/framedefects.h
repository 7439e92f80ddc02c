// FrameDefects: what of the frames is no measurement, seen over some frames of a series.
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

constexpr int g_nBorderLines = 16;  ///< that are looked at along each edge

/// What one frame says of defects.
struct FrameSigns {
    int nWidth = 0;  ///< pixels
    int nHeight = 0;
    FrameLines lines = {CLineWatch(0), CLineWatch(0)};
    std::vector<float> vecBlockMean;  ///< as by blockMeans()
    /// Brightness of the outermost lines, from the edge inwards: left, right, top, bottom.
    std::array<std::array<float, g_nBorderLines>, 4> aBorder = {};
    QList<QPoint> listSpike;            ///< single pixels that stand high above all their neighbours
    std::vector<PixelRun> vecUnusable;  ///< pixels without a usable number
};

struct FrameDefects {
    int nWidth = 0;  ///< of the frames, pixels
    int nHeight = 0;
    std::vector<LineRun> vecColumn;    ///< dead, copied or interpolated columns
    std::vector<LineRun> vecRow;       ///< such rows
    std::array<int, 4> anBorder = {};  ///< columns or rows along an edge: left, right, top, bottom
    QList<QPolygonF> listShadow;       ///< of an aperture or a beam stop, pixels
    /// Pieces of an edge whose opposite lies in a shadow, pixels. The transform of the hunting continues a
    /// frame by its opposite edge, and the band-pass makes a ridge of peaks along the step between them.
    QList<QPolygonF> listWrapped;
    QList<QPoint> listHotPixel;  ///< column, row
    QList<QPolygonF> listGap;    ///< as by gapAreas(): what all frames mark as no measurement
    qint64 nUnusable = 0;        ///< pixels that they mark so, those in no area as well
};

/// Looks at one frame; any size.
FrameSigns signsOfFrame(const CImgObj<float>& imgFrame);

/// The defects out of the signs of some frames; frames of another size than the first do not count.
///
/// A reflection, a ring, the halo of the beam are none: what counts is the same on all frames and ends
/// sharply. Fewer than five frames say nothing of hot pixels and shadows.
/// What the frames mark as no measurement is believed of one, unless it is all of it.
FrameDefects defectsOf(const std::vector<FrameSigns>& vecFrame);

/// The defects as areas that hunting leaves out, in the order of tellDefects(); hot pixels are no areas.
MaskData maskOfDefects(const FrameDefects& defects);

/// A line of the log for each kind of defect; none without defects.
QStringList tellDefects(const FrameDefects& defects);

/// Looks at some frames of the series.
/// @param nJobs  frames looked at side by side; the defects are the same for each
/// @return false when the report asked to stop or memory is short
bool findFrameDefects(const DataSet& dataSet, CRunReport& report, FrameDefects& defects, int nJobs = 1);

}  // namespace tessera
