// dialsIdentifier: the identifier that connects experiment and reflections of DIALS.
#pragma once

#include "exchange/exchangegeometry.h"

#include <QString>

namespace tessera {

/// A UUID as text. It depends on the geometry only, so that equal geometries have equal ones.
QString dialsIdentifier(const ExchangeGeometry& geometry);

}  // namespace tessera
