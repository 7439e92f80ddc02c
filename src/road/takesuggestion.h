// takeSuggestion: numbers that follow from the data, where nobody gave others.
#pragma once

#include "dataset/parametertable.h"
#include "frames/suggestpeaksearch.h"
#include "records/runreport.h"

#include <QList>

#include <optional>
#include <utility>

namespace tessera {

/// Parameters with what was given for them on the command line.
using GivenValues = QList<std::pair<ParameterMember, const std::optional<double>*>>;

/// Whether the data are to tell at least one of them.
bool anyIsOpen(const GivenValues& listGiven);

/// Puts suggested numbers into their records, but for those that were given, with a line of the log for each
/// that is not what it was.
void takeSuggestion(const Suggestion& suggestion, const GivenValues& listGiven,
                    const ParameterRecords& records, CRunReport& report);

/// Puts the numbers that were given into their records.
void takeGiven(const GivenValues& listGiven, const ParameterRecords& records);

}  // namespace tessera
