// The report of a road: what was done and what the results are, as an HTML page.
#pragma once

#include "road/roadstate.h"

#include <QByteArray>

namespace tessera {

/// Makes the page, which refers to no other file: outcome, judgements, tables of cell, lattice, geometry,
/// intensities and space groups, curves as SVG, pictures of three frames, and the command that repeats the
/// run. Missing results are left out, so a report can also be made from the data set of a window alone. The
/// three frames are read from their files; nothing is written.
QByteArray reportHtml(const RoadState& state);

/// Writes the report to a file.
/// @return empty, or why it was not written
QString writeReport(const RoadState& state, const QString& strFile);

}  // namespace tessera
