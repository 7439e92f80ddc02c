// The parameters of the pages that a road determines itself unless they are given.
#pragma once

#include "dataset/parametertable.h"
#include "road/roadoptions.h"

#include <optional>

namespace tessera {

/// The optional member of the options for a parameter that a stage determines, or that the project contains,
/// unless it is given.
/// @return null for other parameters, whose given values are in their parameter record
std::optional<double>* givenNumber(RoadOptions& options, const ParameterMember& member);

}  // namespace tessera
