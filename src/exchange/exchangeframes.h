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

    /// Paths of all of them.
    QStringList files() const;
};

/// Which frames other programs are to read:
///
/// - those of the series where they are SMV themselves, their names count the turns, and the beam stands
///   still to a pixel, so that moving it by whole pixels would gain nothing;
/// - else SMV images beside the project under the names that exportSMVImages() gives, where these count the
///   turns and none is a frame of the series;
/// - else SMV images in the folder NAME_smv, numbered by the angle of each frame.
ExchangeFrames chooseExchangeFrames(const ExchangeSource& source);

/// Writes them, where they are not the series' own.
RunOutcome writeExchangeFrames(const ExchangeSource& source, const ExchangeFrames& frames,
                               CRunReport& report);

/// What of these frames is no measurement: by the mask of the data set, by what the format of the first frame
/// marks as none, and by having been moved.
std::vector<QRect> untrustedOf(const ExchangeSource& source, const ExchangeFrames& frames,
                               CRunReport& report);

/// The name of the series, with "_" for what lists of files parted by blanks cannot hold.
QString plainName(const DataSet& dataSet);

}  // namespace tessera
