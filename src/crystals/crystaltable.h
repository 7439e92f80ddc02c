// Crystal table: one line for each crystal of a merging, as CSV.
#pragma once

#include "crystals/crystalsjob.h"

#include <QByteArray>

namespace tessera {

/// Columns: crystal, folder, group, compound, used (yes, no), number (by which the group's list of
/// rejected observations calls it), setting (the conventional indices from its own), correlation (with all
/// others), second (of the best other setting), common (reflections shared), scale, b (Å²), ccHalfGain (of
/// Fisher's z; below 0: it makes CC1/2 worse), its own cell and centring, Laue class, completeness, rInt,
/// ccHalf, observed, reason. What was not read stands at the end, with the reason. What is not known is
/// empty. UTF-8, RFC 4180 with \n.
QByteArray crystalTable(const CrystalsJobResult& result);

}  // namespace tessera
