// FrameTilts: the tilts of the frames of a series.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace tessera {

/// Degrees, one entry per frame in each list.
struct FrameTilts {
    QList<double> listStage;    ///< of the goniometer
    QList<double> listBeam;     ///< of the beam, which refines the steps of the goniometer
    QList<double> listOverall;  ///< the angle that the geometry uses

    int size() const { return listOverall.size(); }
    void append(double dfStage, double dfBeam, double dfOverall);
};

/// A series in even steps.
///
/// @param nFrames        number of frames
/// @param dfStart        overall tilt of the first frame, degrees
/// @param dfStep         from frame to frame, degrees
/// @param nPerStageStep  frames that the beam is tilted through before the goniometer moves on by as many
///                       steps; with less than 2 the goniometer makes every step
FrameTilts evenTilts(int nFrames, double dfStart, double dfStep, int nPerStageStep = 1);

/// The step that takes nFrames from one tilt to another; 0 for fewer than two frames.
double tiltStep(int nFrames, double dfStart, double dfEnd);

/// Reads a text with a line per frame: the tilt, or stage, beam and overall tilt, degrees, parted by white
/// space, commas or semicolons, with decimal points. Empty lines and those that begin with "#" do not count.
///
/// @param pstrReason  may be null; on failure what is wrong with which line
/// @return false, with `tilts` as they were, when a line is none of these or the text has no line at all.
///         The number of lines is left to the caller.
[[nodiscard]] bool readTilts(const QByteArray& bytesText, FrameTilts& tilts, QString* pstrReason = nullptr);

}  // namespace tessera
