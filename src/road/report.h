// The report of a road: what was done and what came out, for somebody who was not there.
#pragma once

#include "road/roadstate.h"

#include <QByteArray>

namespace tessera {

/// One page of HTML that refers to nothing outside: how the series ended, all judgements, cell, lattice,
/// geometry, intensities and space groups as tables, curves as SVG, three frames as pictures, and the command
/// that makes it all again. What the state does not hold is left out, so that a state with the data set of a
/// window alone has a page, too. Of the files the three frames are read, and nothing is written.
QByteArray reportHtml(const RoadState& state);

/// Writes it.
/// @return empty, or why it was not written
QString writeReport(const RoadState& state, const QString& strFile);

}  // namespace tessera
