// The numbers of the table of parameters that a road finds itself unless they are given.
#pragma once

#include "dataset/parametertable.h"
#include "road/roadoptions.h"

#include <optional>

namespace tessera {

/// The place in the options of a number that a stage finds, or that the project tells, unless it is given.
/// @return null for a parameter that has none: what was given stands in its record
std::optional<double>* givenNumber(RoadOptions& options, const ParameterMember& member);

}  // namespace tessera
