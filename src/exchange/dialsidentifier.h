// dialsIdentifier: the name by which experiment and reflections of DIALS know one another.
#pragma once

#include "exchange/exchangegeometry.h"

#include <QString>

namespace tessera {

/// A UUID in text, made from the geometry: equal geometries have equal ones.
QString dialsIdentifier(const ExchangeGeometry& geometry);

}  // namespace tessera
