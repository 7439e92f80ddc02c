// The result of an integration as a JSON object for the summary.
#pragma once

#include "road/roadresults.h"

#include <QJsonObject>

namespace tessera {

/// Laue class, space groups, agreement, completeness, shells, scales of the frames and files. Numbers that
/// the data do not determine are null. If there are no intensities, only the reason.
QJsonObject integrationObject(const IntegrateResult& integrate);

}  // namespace tessera
