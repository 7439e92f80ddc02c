// ToldTilts: the tilts of a series as the headers of its frames tell them.
#pragma once

#include "imagefiles/frameheader.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

/// The tilt of a frame is that in the middle of its exposure, as everywhere in a data set.
struct ToldTilts {
    QList<double> list;  ///< degrees, one per frame; empty where they are not told
    QString strSource;   ///< how they follow from what is told

    bool isTold() const { return !list.isEmpty(); }
};

/// Starts and widths of the exposures, or else the tilts of frames that stood still. A start that is told
/// without a width counts half way to the next one. Tilts that are 0 or equal throughout are not told; where
/// a width is told beside them it is taken from frame to frame, with a doubt.
///
/// @param vecHeader  one per frame
/// @param listName   what the doubts call the frames
/// @param listDoubt  gets contradictions in words: frames that tell nothing, tilts that turn back or leap, a
///                   width that does not go with the starts
ToldTilts tiltsOfHeaders(const std::vector<FrameHeader>& vecHeader, const QStringList& listName,
                         QStringList& listDoubt);

/// Frames one after the other from one tilt to another, which a log tells: the first starts at the one and
/// the last ends at the other.
/// @param dfWidth  of a frame where it is told, degrees; its sign is that of the way. NaN: it follows.
ToldTilts tiltsOfRange(int nFrames, double dfStart, double dfEnd, double dfWidth, QStringList& listDoubt);

/// Whether tilts go on by the same step but for what rounding in a header leaves.
bool areEvenTilts(const QList<double>& listTilt);

/// What is odd about a list of tilts: one that turns back, leaps, or stands still.
void doubtTilts(const QList<double>& listTilt, const QStringList& listName, QStringList& listDoubt);

}  // namespace tessera
