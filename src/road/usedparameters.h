// The parameters of a road as its stages used them, for its record and its report.
#pragma once

#include "road/roadstate.h"

#include <QString>

#include <vector>

namespace tessera {

struct UsedParameter {
    QString strName;   ///< that of its option, or of its place on the page: "peak-radius"
    QString strValue;  ///< in the C locale, without loss
    QString strUnit;
    bool bNumber = true;
    bool bGiven = false;  ///< asked for, in the place of what a stage finds or a page begins with
};

/// All of them, in the order of the driver's help. Those of stages that were not run stand as they began.
std::vector<UsedParameter> usedParameters(const RoadState& state);

}  // namespace tessera
