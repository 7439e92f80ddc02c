// The file of a work state, which outlives a crash of the program.
#pragma once

#include "workstate/workstate.h"

#include <QByteArray>
#include <QString>

namespace tessera {

/// Of the layout of the bytes. It grows by one with every change of a record that a state holds.
constexpr quint32 g_nWorkStateVersion = 2;

/// The state as bytes, exact to the last bit of each number, with a version and a check sum.
/// @return empty where they would come to more than 2 GB
QByteArray workStateBytes(const WorkState& state);
/// The same back; false with the reason, and `state` as it was, for bytes that are not whole or of a version
/// that is not known. Memory: a few times that of the bytes, whatever they hold.
bool workStateFromBytes(const QByteArray& bytes, WorkState& state, QString* pstrReason = nullptr);

/// The head that workStateBytes() puts before the values: mark, version, check sum (MD5) of the values.
QByteArray workStateHead(const QByteArray& bytesValues);

}  // namespace tessera
