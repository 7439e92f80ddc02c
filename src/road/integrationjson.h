// An integration as an object of the summary.
#pragma once

#include "road/roadresults.h"

#include <QJsonObject>

namespace tessera {

/// Laue class, space groups, agreement, completeness, shells, scales of the frames and files. Numbers that
/// the data do not tell are null. Of a series that was not integrated the reason alone.
QJsonObject integrationObject(const IntegrateResult& integrate);

}  // namespace tessera
