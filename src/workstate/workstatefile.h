// Serialization of a work state, for recovery after a crash.
#pragma once

#include "workstate/workstate.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tessera {

/// Version of the layout of the bytes. It must be raised with every change of a record that a state contains.
constexpr quint32 g_nWorkStateVersion = 2;

/// The state as bytes with a version and a check sum; all numbers are kept to the last bit.
/// @return empty if they would exceed 2 GB
QByteArray workStateBytes(const WorkState& state);
/// Reads a state. Memory stays within a few times the size of the bytes, whatever they contain.
/// @return nothing, with the reason, if the bytes are damaged or of an unknown version
std::optional<WorkState> workStateFromBytes(const QByteArray& bytes, QString* pstrReason = nullptr);

/// The head that workStateBytes() writes before the values: magic bytes, version, MD5 of the values.
QByteArray workStateHead(const QByteArray& bytesValues);

}  // namespace tessera
