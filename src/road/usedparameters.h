// The parameters that the stages of a road used, for its record and its report.
#pragma once

#include "road/roadstate.h"

#include <QString>

#include <vector>

namespace tessera {

/// A parameter with its value.
struct UsedParameter {
    QString strName;   ///< name of its option, or else of its box on the page: "peak-radius"
    QString strValue;  ///< in the C locale and full precision
    QString strUnit;
    bool bNumber = true;  ///< the value is a number
    bool bGiven = false;  ///< the value was given, else it was determined by a stage or is the default
};

/// All parameters, in the order of the driver's help. Those of stages that were not run have their initial
/// values.
std::vector<UsedParameter> usedParameters(const RoadState& state);

}  // namespace tessera
