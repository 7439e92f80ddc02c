// KeptWork: a work state saved for recovery after a crash, in a file whose head describes it to the user.
#pragma once

#include "workstate/workstate.h"

#include <QByteArray>
#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

/// The head of the file.
struct KeptWork {
    QString strFile;     ///< path of the file; not part of its contents
    QString strName;     ///< name of the project or of the frames, "garnet.ed3d"
    QString strProject;  ///< full path of the project; empty for frames without a project
    /// MD5 of the project file at the time of saving, in hexadecimal; empty if there was no file.
    QByteArray bytesProjectSum;
    QDateTime when;   ///< UTC, time of the last step
    QString strStep;  ///< the last step before the state was saved
};

/// The head for a state, with the check sum of its project file as it is now; strFile is left empty.
KeptWork keptWorkOf(const WorkState& state, const QString& strStep, const QDateTime& when);

/// The contents of the file: the head with a check sum of its own, then the workStateBytes() of the state.
/// @return empty if the state is too large for a file
QByteArray keptWorkBytes(const KeptWork& work, const WorkState& state);

/// The condition of a kept work, judged by the head of its file.
enum class KeptWorkHead {
    Good,        ///< the head was read
    Unreadable,  ///< the file cannot be opened or was written by a later version: it may be intact
    Damaged,     ///< the file is not a kept work, or is incomplete
};
/// Reads the head of a kept work.
/// @param work  replaced if the head is good, else left as it was
KeptWorkHead readKeptWork(const QString& strFile, KeptWork& work, QString* pstrReason = nullptr);
/// Reads the state of a kept work.
/// @return nothing, with the reason, if the file cannot be read
std::optional<WorkState> readKeptState(const KeptWork& work, QString* pstrReason = nullptr);

/// A sentence for the user: 'The work on garnet.ed3d of 12:31 was interrupted after "Solve".'
/// @param today  the user's date; a time on another day is given with its date
QString interruptedText(const KeptWork& work, const QDate& today, const QLocale& locale);

/// What has changed since the work was saved, one line each: frames that are missing, a project that is
/// missing or was modified.
QStringList changesSince(const KeptWork& work, const WorkState& state);

}  // namespace tessera
