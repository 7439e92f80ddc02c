#include "window/start/demoseries.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace tessera {

namespace {

const int g_nLookTime = 200;   // ms between two looks at how many frames are there
const int g_nKillTime = 5000;  // ms that a killed process may take to go

QString seriesName()
{
    return QStringLiteral("demo");
}

}  // namespace

DemoOptions DemoOptions::ofUser()
{
    DemoOptions options;
    const QString strName = QStringLiteral("tessera-simulate");
    const QString strHere = QCoreApplication::applicationDirPath();
    options.strProgram = QStandardPaths::findExecutable(strName, {strHere});
    if (options.strProgram.isEmpty()) {
        options.strProgram = QStandardPaths::findExecutable(strName);
    }
    options.strFolder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                        QStringLiteral("/Lumenarc/Tessera/demo");
    return options;
}

DemoSeries::DemoSeries(const DemoOptions& options, QObject* pParent) : QObject(pParent), m_options(options)
{
    m_process.setStandardInputFile(QProcess::nullDevice());
    connect(&m_timer, &QTimer::timeout, this, &DemoSeries::tellProgress);
    connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &DemoSeries::processEnded);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {  // after all others finished() comes
            processEnded();
        }
    });
}

DemoSeries::~DemoSeries()
{
    m_process.disconnect(this);
    if (isRunning()) {
        m_process.kill();
        m_process.waitForFinished(g_nKillTime);
    }
}

QString DemoSeries::projectFile() const
{
    return m_options.strFolder + QLatin1Char('/') + seriesName() + QStringLiteral(".ed3d");
}

void DemoSeries::start()
{
    if (isRunning()) {
        return;
    }
    if (QFileInfo::exists(projectFile())) {
        emit made(projectFile());
        return;
    }
    if (m_options.strProgram.isEmpty()) {
        emit failed(tr("The program tessera-simulate is not there."));
        return;
    }
    const QString strParent = QFileInfo(m_options.strFolder).absolutePath();
    QDir().mkpath(strParent);
    m_pFolder = std::make_unique<QTemporaryDir>(strParent + QStringLiteral("/demo.XXXXXX"));
    if (!m_pFolder->isValid()) {
        emit failed(tr("%1 cannot be written to: %2")
                        .arg(QDir::toNativeSeparators(strParent), m_pFolder->errorString()));
        m_pFolder.reset();
        return;
    }
    m_bStopping = false;
    emit progress(0, m_options.nFrames);
    m_timer.start(g_nLookTime);
    m_process.start(m_options.strProgram,
                    {QStringLiteral("--demo"), QStringLiteral("--frames"), QString::number(m_options.nFrames),
                     QStringLiteral("--size"), QString::number(m_options.nSize), QStringLiteral("--out"),
                     m_pFolder->filePath(seriesName()), QStringLiteral("--name"), seriesName()});
}

void DemoSeries::stop()
{
    if (isRunning()) {
        m_bStopping = true;
        m_process.kill();
    }
}

void DemoSeries::tellProgress()
{
    const QDir dir(m_pFolder->filePath(seriesName()), QStringLiteral("*.mrc"));
    emit progress(qMin(int(dir.count()), m_options.nFrames), m_options.nFrames);
}

void DemoSeries::processEnded()
{
    m_timer.stop();
    QString strReason;
    const bool bDone = m_process.error() != QProcess::FailedToStart &&
                       m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    if (!bDone) {
        strReason = QString::fromLocal8Bit(m_process.readAllStandardError()).trimmed();
        if (strReason.isEmpty()) {
            strReason = m_process.errorString();
        }
    }
    const bool bMade = bDone && !m_bStopping && moveIntoPlace(strReason);
    m_pFolder.reset();
    if (bMade) {
        emit made(projectFile());
    } else if (m_bStopping) {
        emit stopped();
    } else {
        emit failed(tr("The demo series was not made: %1").arg(strReason));
    }
}

/// Two windows may have made it side by side: the first one's stays.
bool DemoSeries::moveIntoPlace(QString& strReason)
{
    QDir().rmdir(m_options.strFolder);  // an empty one is in the way
    if (QDir().rename(m_pFolder->filePath(seriesName()), m_options.strFolder) ||
        QFileInfo::exists(projectFile())) {
        return true;
    }
    strReason = tr("%1 is in the way.").arg(QDir::toNativeSeparators(m_options.strFolder));
    return false;
}

}  // namespace tessera
