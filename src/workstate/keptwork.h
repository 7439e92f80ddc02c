// KeptWork: a work state in a file, with what a user has to know of it before it is read.
#pragma once

#include "workstate/workstate.h"

#include <QByteArray>
#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QStringList>

namespace tessera {

/// The head of such a file.
struct KeptWork {
    QString strFile;             ///< where it is kept; not in the file
    QString strName;             ///< of the project or the frames, "garnet.ed3d"
    QString strProject;          ///< full path; empty: frames without a project
    QByteArray bytesProjectSum;  ///< MD5 of the project file as the state was kept; empty: it was not there
    QDateTime when;              ///< UTC, of the step
    QString strStep;             ///< that the state was kept after
};

/// What is to be kept of a state, and of its project file as it is now; strFile is empty.
KeptWork keptWorkOf(const WorkState& state, const QString& strStep, const QDateTime& when);

/// The whole file: head with its own check sum, then the state as workStateBytes() has it.
/// @return empty where the state is too large for a file
QByteArray keptWorkBytes(const KeptWork& work, const WorkState& state);

/// What the head of a file says of it. `work` is replaced or stays as it was.
enum class KeptWorkHead {
    Good,
    Unreadable,  ///< the file cannot be opened, or is of a later program: it may be good
    Damaged,     ///< it is no kept work, or not whole
};
KeptWorkHead readKeptWork(const QString& strFile, KeptWork& work, QString* pstrReason = nullptr);
/// The state of a kept work; false with the reason, and `state` as it was.
bool readKeptState(const KeptWork& work, WorkState& state, QString* pstrReason = nullptr);

/// The work on garnet.ed3d of 12:31 was interrupted after "Solve".
/// @param today  of the user; the time of another day has its date with it
QString interruptedText(const KeptWork& work, const QDate& today, const QLocale& locale);

/// What has changed since the work was kept: frames that are missing, a project that is missing or another
/// one. A line each.
QStringList changesSince(const KeptWork& work, const WorkState& state);

}  // namespace tessera
