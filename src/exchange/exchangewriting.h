// What the exports for other programs have in common.
#pragma once

#include "exchange/exchangeframes.h"
#include "exchange/exchangegeometry.h"
#include "exchange/exchangesource.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace tessera {

struct NamedFile {
    QString strFile;
    QByteArray bytes;
};

/// Writes files of an export together, all or none, and none over a frame of the series.
RunOutcome writeExchangeFiles(const ExchangeSource& source, const std::vector<NamedFile>& listFile,
                              CRunReport& report);

/// The template of the frames from the folder of the other files, with a character for each digit.
QString templateOf(const ExchangeSource& source, const ExchangeFrames& frames, QChar chDigit);

/// The geometry of a series with its frames as other programs read them, told to the report with what these
/// programs cannot know of it; none with the reason in the report.
std::optional<ExchangeGeometry> toldGeometry(const ExchangeSource& source, const ExchangeFrames& frames,
                                             CRunReport& report);

}  // namespace tessera
