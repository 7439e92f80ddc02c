// ExchangeFrames: the SMV frames that other programs are to read, and their names.
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

struct ExchangeFrames {
    QString strFolder;
    FrameNumbering numbering;
    bool bOriginal = false;             ///< the frames of the series themselves
    std::vector<FramePlace> listMoved;  ///< whole pixels that each is moved by; empty: none is
    bool bBlanks = false;               ///< numbers without a frame get an image all the same

    /// Paths of all of them, without the blanks.
    QStringList files() const;
    /// Paths of the blanks.
    QStringList blankFiles() const;
};

/// What a program does about a number between the first and the last that no frame has.
enum class FrameGaps {
    Told,   ///< it can be told of them
    Filled  ///< it reads a file for each number
};

/// Which frames other programs are to read:
///
/// - those of the series where they are SMV themselves, their names count the turns, and the beam stands
///   still to a pixel, or at least as still as it would after the moves by whole pixels;
/// - else SMV images beside the project under the names that exportSMVImages() gives, where these count the
///   turns and none is a frame of the series;
/// - else SMV images in the folder NAME_smv, numbered by the angle of each frame.
///
/// Blanks for gaps that are to be filled go to that folder alone, where nobody else's files lie.
ExchangeFrames chooseExchangeFrames(const ExchangeSource& source, FrameGaps gaps = FrameGaps::Told);

/// Writes them, where they are not the series' own. Each pixel of a blank has 65535 counts, the value of what
/// was cut off, which no program trusts.
RunOutcome writeExchangeFrames(const ExchangeSource& source, const ExchangeFrames& frames,
                               CRunReport& report);

/// What of these frames is no measurement: by the mask of the data set, by what the format of the first frame
/// marks as none, and by having been moved.
std::vector<QRect> untrustedOf(const ExchangeSource& source, const ExchangeFrames& frames,
                               CRunReport& report);

/// The name of the series, with "_" for what lists of files parted by blanks cannot hold.
QString plainName(const DataSet& dataSet);

}  // namespace tessera
