// CLineWatch: finds rows and columns of a camera that have no measurement of their own.
#pragma once

#include "imaging/imgobj.h"

#include <QtGlobal>

#include <vector>

namespace tessera {

/// A run of neighbouring rows or columns, including the first and the last one.
struct LineRun {
    int nFirst = 0;
    int nLast = 0;
};

/// Observes the rows, or the columns, over frames of one size.
///
/// A line is stuck if on all frames nearly all its pixels are equal to the next pixel (dead), equal to
/// those of the line beside it (a wide pixel that was divided), or on the straight line between both
/// neighbours (interpolated), while most lines are not like this. Frames that are mostly blank, or have few
/// grey levels, tell nothing about their lines.
class CLineWatch {
public:
    /// @param nLines  number of rows or columns of the frames, at least 1
    explicit CLineWatch(int nLines) : m_vecLine(static_cast<size_t>(nLines)) {}

    /// Adds the counts of a frame.
    void add(const CLineWatch& frame);
    /// The stuck lines in order, adjacent ones as one run. Empty if more than half of all lines would be
    /// stuck.
    std::vector<LineRun> stuckLines() const;

    /// Counts of one line.
    struct Line {
        qint64 nPixels = 0;    ///< pixels that were compared
        qint64 nAlong = 0;     ///< pixels equal to the next one of the line
        qint64 nAcross = 0;    ///< pixels equal to their neighbour on the next line
        qint64 nStraight = 0;  ///< pixels halfway between their neighbours on both sides
    };
    std::vector<Line> m_vecLine;
};

/// The counts of the columns and rows of one frame.
struct FrameLines {
    CLineWatch columns;
    CLineWatch rows;
};

/// Counts on a frame of any size but empty.
FrameLines linesOfFrame(const CImgObj<float>& imgFrame);

}  // namespace tessera
