// Running the programs.
#pragma once

#include "tests/filebytes.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

namespace tessera {

struct BatchOutcome {
    int nStatus = -1;  ///< -1: crashed, or did not end in time
    QString strText;   ///< standard output and error
};

inline BatchOutcome outcomeOf(QProcess& process, const QString& strProgram, const QStringList& listArgument)
{
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(strProgram, listArgument);
    BatchOutcome outcome;
    if (process.waitForFinished(600000) && process.exitStatus() == QProcess::NormalExit) {
        outcome.nStatus = process.exitCode();
    }
    process.kill();
    outcome.strText = QString::fromUtf8(process.readAll());
    return outcome;
}

inline BatchOutcome runProgram(const QString& strName, const QStringList& listArgument)
{
    QProcess process;
    return outcomeOf(process, QStringLiteral(TESSERA_BIN_DIR "/") + strName, listArgument);
}

/// Runs a line of the shell in a folder, with the programs in its path.
inline BatchOutcome runShell(const QString& strFolder, const QString& strLine)
{
    QProcess process;
    process.setWorkingDirectory(strFolder);
    return outcomeOf(process, QStringLiteral("/bin/sh"),
                     {QStringLiteral("-c"), QStringLiteral("PATH=" TESSERA_BIN_DIR ":$PATH; ") + strLine});
}

/// Makes q.ed3d with 40 frames of quartz in a folder: enough for a cell, soon hunted.
inline BatchOutcome simulateQuartz(const QString& strFolder)
{
    return runProgram("tessera-simulate", {"--crystal", "quartz", "--frames", "40", "--size", "320",
                                           "--tilt-start", "-20", "--tilt-step", "1", "--pixel-size", "0.008",
                                           "--axis", "-38.5", "--out", strFolder, "--name", "q"});
}

inline BatchOutcome runBatch(const QStringList& listArgument)
{
    return runProgram(QStringLiteral("tessera-batch"), listArgument);
}

}  // namespace tessera
