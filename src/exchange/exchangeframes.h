// ExchangeFrames: the SMV frames for other programs, and their names.
#pragma once

#include "exchange/exchangesource.h"
#include "exchange/framenumbering.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QRect>
#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

/// The frames that other programs read.
struct ExchangeFrames {
    QString strFolder;                  ///< folder of the frames
    FrameNumbering numbering;           ///< their numbers and names
    bool bOriginal = false;             ///< they are the frames of the series themselves
    std::vector<FramePlace> listMoved;  ///< whole pixels by which each frame is moved; empty: none is
    bool bBlanks = false;               ///< numbers without a frame get a blank image

    /// The paths of all frames, without the blank images.
    QStringList files() const;
    /// The paths of the blank images.
    QStringList blankFiles() const;
};

/// What a program needs for a number between the first and the last that has no frame.
enum class FrameGaps {
    Told,   ///< gaps can be declared to the program
    Filled  ///< it reads a file for each number
};

/// Chooses the frames that other programs are to read:
///
/// - those of the series, if they are SMV, their numbers are proportional to the angle, and the beam does
///   not move by more than a pixel, or not more than it would after moves by whole pixels;
/// - else SMV images beside the project with the names of exportSMVImages(), if the numbers in these are
///   proportional to the angle and none is a frame of the series;
/// - else SMV images in the folder NAME_smv, numbered by the angle of each frame.
///
/// Blank images for gaps are written only to that folder, which has no files of others.
ExchangeFrames chooseExchangeFrames(const ExchangeSource& source, FrameGaps gaps = FrameGaps::Told);

/// Writes the frames, unless they are those of the series. Each pixel of a blank image has 65535 counts,
/// the value of saturated pixels, which no program trusts.
RunOutcome writeExchangeFrames(const ExchangeSource& source, const ExchangeFrames& frames,
                               CRunReport& report);

/// The areas of these frames without a measurement: by the mask of the data set, by the marks in the format
/// of the first frame, and at the edges of moved frames.
std::vector<QRect> untrustedOf(const ExchangeSource& source, const ExchangeFrames& frames,
                               CRunReport& report);

/// The name of the series, with "_" for characters that are impossible in lists of files separated by
/// blanks.
QString plainName(const DataSet& dataSet);

}  // namespace tessera
