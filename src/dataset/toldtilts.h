// ToldTilts: the tilts of a series, from the headers of its frames.
#pragma once

#include "imagefiles/frameheader.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

/// The tilts of the frames. As everywhere in a data set, they are those in the middle of the exposures.
struct ToldTilts {
    QList<double> list;  ///< degrees, one per frame; empty where they are unknown
    QString strSource;   ///< how they were found

    /// Whether the tilts are known.
    bool isTold() const { return !list.isEmpty(); }
};

/// Finds the tilts from starts and widths of the exposures, or else from the tilts of frames at rest. A
/// start without a width counts as half a step before the middle. Tilts that are all 0 or equal are not
/// used; if there is a width then, it is used from frame to frame, with a doubt.
///
/// @param vecHeader  one per frame
/// @param listName   names of the frames in the doubts
/// @param listDoubt  gets contradictions: frames without tilts, tilts that change their direction or jump,
///                   a width that disagrees with the starts
ToldTilts tiltsOfHeaders(const std::vector<FrameHeader>& vecHeader, const QStringList& listName,
                         QStringList& listDoubt);

/// The tilts of consecutive frames between two tilts of a log: the first frame starts at the one and the
/// last frame ends at the other.
/// @param dfWidth  of a frame, degrees, with its sign; NaN: it is computed
ToldTilts tiltsOfRange(int nFrames, double dfStart, double dfEnd, double dfWidth, QStringList& listDoubt);

/// Whether tilts go on by the same step but for what rounding in a header leaves.
bool areEvenTilts(const QList<double>& listTilt);

/// What is odd about a list of tilts: one that turns back, leaps, or stands still.
void doubtTilts(const QList<double>& listTilt, const QStringList& listName, QStringList& listDoubt);

}  // namespace tessera
