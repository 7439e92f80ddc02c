// Running tessera-batch, and a small series for it to fail on.
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QString>
#include <QStringList>

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
    if (process.waitForFinished(300000) && process.exitStatus() == QProcess::NormalExit) {
        outcome.nStatus = process.exitCode();
    }
    process.kill();
    outcome.strText = QString::fromUtf8(process.readAll());
    return outcome;
}

inline BatchOutcome runBatch(const QStringList& listArgument)
{
    return runProgram(QStringLiteral("tessera-batch"), listArgument);
}

inline QByteArray readBytes(const QString& strFileName)
{
    QFile file(strFileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void writeBytes(const QString& strFileName, const QByteArray& bytes)
{
    QFile file(strFileName);
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    file.write(bytes);
}
