// takeSuggestion: uses parameters suggested by the data, unless others were given.
#pragma once

#include "dataset/parametertable.h"
#include "frames/suggestpeaksearch.h"
#include "records/runreport.h"

#include <QList>

#include <optional>
#include <utility>

namespace tessera {

/// Parameters, each with the optional value of the command line.
using GivenValues = QList<std::pair<ParameterMember, const std::optional<double>*>>;

/// Whether at least one of the parameters was not given.
bool anyIsOpen(const GivenValues& listGiven);

/// Puts suggested values into the parameter records, except for parameters that were given, with a line of
/// the log for each value that changes.
void takeSuggestion(const Suggestion& suggestion, const GivenValues& listGiven,
                    const ParameterRecords& records, CRunReport& report);

/// Puts the given values into the parameter records.
void takeGiven(const GivenValues& listGiven, const ParameterRecords& records);

}  // namespace tessera
