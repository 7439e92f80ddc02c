// Exchange writing: what the exports for other programs have in common.
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

/// A file and its content.
struct NamedFile {
    QString strFile;
    QByteArray bytes;
};

/// Writes the files of an export, all or none, and none over a frame of the series.
RunOutcome writeExchangeFiles(const ExchangeSource& source, const std::vector<NamedFile>& listFile,
                              CRunReport& report);

/// The template of the frames relative to the folder of the other files, with a character for each digit.
QString templateOf(const ExchangeSource& source, const ExchangeFrames& frames, QChar chDigit);

/// The geometry of a series with the frames that other programs read. The log tells it, and what these
/// programs cannot be told.
/// @return nothing, with the reason in the report, where there is none
std::optional<ExchangeGeometry> toldGeometry(const ExchangeSource& source, const ExchangeFrames& frames,
                                             CRunReport& report);

}  // namespace tessera
