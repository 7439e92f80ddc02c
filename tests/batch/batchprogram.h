// Running the programs.
#pragma once

#include "filebytes.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

struct BatchOutcome {
    int nStatus = -1;  ///< -1: crashed, or did not end in time
    QString strText;   ///< standard output and error
};

inline BatchOutcome runProgram(const QString& strName, const QStringList& listArgument)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(TESSERA_BIN_DIR "/") + strName, listArgument);
    BatchOutcome outcome;
    if (process.waitForFinished(600000) && process.exitStatus() == QProcess::NormalExit)
        outcome.nStatus = process.exitCode();
    process.kill();
    outcome.strText = QString::fromUtf8(process.readAll());
    return outcome;
}

inline BatchOutcome runBatch(const QStringList& listArgument)
{
    return runProgram(QStringLiteral("tessera-batch"), listArgument);
}
