// CLineWatch: rows and columns of a camera that hold no measurement of their own.
#pragma once

#include "imaging/imgobj.h"

#include <QtGlobal>

#include <vector>

namespace tessera {

/// Neighbouring rows, or columns, from the first to the last, which both count.
struct LineRun {
    int nFirst = 0;
    int nLast = 0;
};

/// Watches the lines of one direction over frames of a size.
///
/// A line is stuck where next to all its pixels, on all frames, are the same from pixel to pixel (dead), are
/// those of the line beside it (a wide pixel that was shared out), or lie on the straight line between both
/// neighbours (interpolated) - while those of most lines are not. Frames that are blank for the most part, or
/// hold few grey levels, say nothing of their lines.
class CLineWatch {
public:
    /// @param nLines  rows or columns of the frames, from 1
    explicit CLineWatch(int nLines) : m_vecLine(static_cast<size_t>(nLines)) {}

    /// Takes the counts of a frame's lines.
    void add(const CLineWatch& frame);
    /// The stuck lines in order, those that touch as one run. None over the half of all lines.
    std::vector<LineRun> stuckLines() const;

    struct Line {
        qint64 nPixels = 0;    ///< pixels that were looked at
        qint64 nAlong = 0;     ///< of them such as the next one of the line
        qint64 nAcross = 0;    ///< such as their neighbour on the next line
        qint64 nStraight = 0;  ///< half way between their neighbours on both sides
    };
    std::vector<Line> m_vecLine;
};

/// What one frame says of its columns and rows.
struct FrameLines {
    CLineWatch columns;
    CLineWatch rows;
};

/// Looks at a frame, which may be of any size but empty.
FrameLines linesOfFrame(const CImgObj<float>& imgFrame);

}  // namespace tessera
