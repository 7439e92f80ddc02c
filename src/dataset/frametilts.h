// FrameTilts: the tilts of the frames of a series.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace tessera {

/// Tilts in degrees, one entry per frame in each list.
struct FrameTilts {
    QList<double> listStage;    ///< tilt of the goniometer
    QList<double> listBeam;     ///< tilt of the beam, which subdivides the steps of the goniometer
    QList<double> listOverall;  ///< the angle that the geometry uses

    /// Number of frames.
    int size() const { return listOverall.size(); }
    /// Adds a frame.
    void append(double dfStage, double dfBeam, double dfOverall);
};

/// The tilts of a series with equal steps.
///
/// @param nFrames        number of frames
/// @param dfStart        overall tilt of the first frame, degrees
/// @param dfStep         from frame to frame, degrees
/// @param nPerStageStep  number of frames for which only the beam is tilted before the goniometer moves by
///                       as many steps; with less than 2 the goniometer makes every step
FrameTilts evenTilts(int nFrames, double dfStart, double dfStep, int nPerStageStep = 1);

/// The step for nFrames from one tilt to another; 0 for fewer than two frames.
double tiltStep(int nFrames, double dfStart, double dfEnd);

/// Reads a text with one line per frame: the tilt, or stage, beam and overall tilt, degrees, separated by
/// white space, commas or semicolons, with decimal points. Empty lines and those that begin with "#" are
/// skipped. Any number of lines is accepted.
///
/// @param pstrReason  may be null; takes on failure which line is wrong
/// @return nothing when a line has another form or there is no line
[[nodiscard]] std::optional<FrameTilts> readTilts(const QByteArray& bytesText, QString* pstrReason = nullptr);

}  // namespace tessera
