// The file of a work state, which outlives a crash of the program.
#pragma once

#include "workstate/workstate.h"

#include <QByteArray>
#include <QString>

namespace tessera {

/// The state as bytes, exact to the last bit of each number, with a version and a check sum.
QByteArray workStateBytes(const WorkState& state);
/// The same back; false with the reason, and `state` as it was, for bytes that are not whole or of a version
/// that is not known.
bool workStateFromBytes(const QByteArray& bytes, WorkState& state, QString* pstrReason = nullptr);

}  // namespace tessera
