// tessera-windowkilltest: kills a working window at random moments and starts the next one, which restores
// the state that the former one has stored. This must be, to the bit, one of the last two states of the
// former window, and not older than the last one that was on the disk.
#include "tools/windowkilltest/workingwindow.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <random>

namespace tessera {

namespace {

constexpr int g_nStartSeconds = 60;
const QString g_strStage = QStringLiteral("Solve: ");

/// The states that a window has reported, in order. Equal states in succession count as one.
struct Account {
    QStringList listState;        ///< sums
    QStringList listStep;         ///< the step after which each was last reported
    QMap<QString, int> mapState;  ///< number of the last state by its steps
    int nOnDisk = -1;             ///< number of the last state known to be on the disk; −1: none
    QString strRestored;          ///< check sum of the restored state; empty: there was none
    bool bReady = false;          ///< it has begun its first step
    bool bEnded = false;          ///< it has ended regularly
};

Account readAccount(const QString& strFile)
{
    Account account;
    QFile file(strFile);
    if (!file.open(QIODevice::ReadOnly)) {
        return account;
    }
    for (const QByteArray& bytesLine : file.readAll().split('\n')) {
        const QList<QByteArray> listWord = bytesLine.split(' ');
        const QString strValue = QString::fromUtf8(listWord.value(1));
        if (listWord[0] == "restored") {
            account.strRestored = strValue;
        } else if (listWord[0] == "taken") {
            const QString strStep = QString::fromUtf8(listWord.mid(2).join(' '));
            if (account.listState.isEmpty() || account.listState.last() != strValue) {
                account.listState.append(strValue);
                account.listStep.append(strStep);
            }
            account.listStep.last() = strStep;
            account.mapState[strStep] = account.listState.size() - 1;
        } else if (listWord[0] == "kept") {
            const QString strStep = QString::fromUtf8(bytesLine.mid(int(sizeof "kept ") - 1));
            account.nOnDisk = qMax(account.nOnDisk, account.mapState.value(strStep, -1));
        } else if (listWord[0] == "ready") {
            account.bReady = true;
        } else if (listWord[0] == "ended") {
            account.bEnded = true;
        }
    }
    return account;
}

/// What is wrong with the state that was restored after a window with this account; empty if nothing is.
QString faultOf(const Account& former, const QString& strRestored)
{
    if (strRestored.isEmpty()) {
        return former.nOnDisk >= 0 ? QStringLiteral("nothing came back") : QString();
    }
    const int nState = former.listState.lastIndexOf(strRestored);
    if (nState < 0 && strRestored == former.strRestored && former.nOnDisk < 0) {
        return {};  // killed before the restored state was on the disk again
    }
    if (nState < 0) {
        return QStringLiteral("what came back was never there");
    }
    // The stages of such a small series follow each other faster than a disk can write.
    const bool bStage = former.listStep.last().startsWith(g_strStage);
    if (nState < former.nOnDisk || (!bStage && nState < former.listState.size() - 2)) {
        return QStringLiteral("state %1 of %2 came back, %3 was on the disk")
            .arg(nState)
            .arg(former.listState.size() - 1)
            .arg(former.nOnDisk);
    }
    return {};
}

/// A window in a process of its own, with separate settings and data.
class WindowProcess {
public:
    WindowProcess(const QString& strFolder, const QStringList& listArgument)
        : m_strLog(strFolder + QStringLiteral("/account"))
    {
        QFile::remove(m_strLog);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("HOME"), strFolder);
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), strFolder + QStringLiteral("/config"));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.start(QCoreApplication::applicationFilePath(), listArgument + QStringList(m_strLog));
    }

    Account account() const { return readAccount(m_strLog); }
    /// Waits until the window works.
    /// @return false where it never does
    bool waitUntilReady()
    {
        QElapsedTimer timer;
        timer.start();
        while (!account().bReady) {
            if (timer.elapsed() > g_nStartSeconds * 1000 || m_process.waitForFinished(2)) {
                return false;
            }
        }
        return true;
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    bool waitForEnd() { return m_process.waitForFinished(g_nStartSeconds * 1000); }

private:
    QString m_strLog;
    QProcess m_process;
};

struct Figures {
    int nFaults = 0;
    int nRestored = 0;
    int nWithoutLast = 0;  ///< windows restored without the last state, which was still being written
    int nStages = 0;       ///< windows restored from the middle of "Solve"
};

/// Kills one window after another. Each continues with the state of the one before it.
Figures killWindows(const QString& strFolder, const QString& strProject, int nRounds, std::mt19937& random)
{
    const QString strKept = strFolder + QStringLiteral("/kept");
    Figures figures;
    const auto wrong = [&](int nRound, const QString& strWhat) {
        ++figures.nFaults;
        std::printf("  round %d: %s\n", nRound, qPrintable(strWhat));
    };
    Account former;
    for (int nRound = 0; nRound <= nRounds; ++nRound) {
        const bool bLast = nRound == nRounds;
        WindowProcess window(strFolder, {bLast ? QStringLiteral("--end") : QStringLiteral("--work"),
                                         strProject, strKept, QString::number(random() % 1000000)});
        if (!window.waitUntilReady()) {
            wrong(nRound, QStringLiteral("the window does not start"));
            return figures;
        }
        if (bLast) {
            window.waitForEnd();
        } else {
            QThread::usleep(random() % 700000);
            window.kill();
        }
        const Account account = window.account();
        const QString strFault = faultOf(former, account.strRestored);
        if (!strFault.isEmpty()) {
            wrong(nRound, strFault);
        }
        const int nState = former.listState.lastIndexOf(account.strRestored);
        figures.nRestored += !account.strRestored.isEmpty();
        figures.nWithoutLast += nState >= 0 && nState == former.listState.size() - 2;
        figures.nStages += nState >= 0 && former.listStep[nState].startsWith(g_strStage);
        if (bLast && (!account.bEnded || !QDir(strKept).isEmpty())) {
            wrong(nRound, QStringLiteral("a clean end leaves %1")
                              .arg(QDir(strKept).entryList(QDir::Files).join(QStringLiteral(", "))));
        }
        former = account;
    }
    return figures;
}

}  // namespace

}  // namespace tessera

int main(int argc, char** argv)
{
    using namespace tessera;
    if (argc == 6 && (qstrcmp(argv[1], "--work") == 0 || qstrcmp(argv[1], "--end") == 0)) {
        return runWorkingWindow(argc, argv);
    }
    const QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Kills windows at work at random moments and looks at what the next one restores.\n"
                       "Exit status: 0 always one of the last two states, 1 not so, 2 wrong call."));
    parser.addHelpOption();
    parser.addOption(
        {QStringLiteral("rounds"), QStringLiteral("Kills."), QStringLiteral("number"), QStringLiteral("20")});
    parser.addOption({QStringLiteral("seed"), QStringLiteral("Of the moments; default: another each time."),
                      QStringLiteral("number"), QString::number(std::random_device()() % 1000000)});
    parser.process(app);
    const int nRounds = parser.value(QStringLiteral("rounds")).toInt();
    const unsigned nSeed = parser.value(QStringLiteral("seed")).toUInt();
    const QTemporaryDir folder;
    if (nRounds < 1 || !folder.isValid() ||
        QProcess::execute(
            QCoreApplication::applicationDirPath() + QStringLiteral("/tessera-simulate"),
            {QStringLiteral("--out"), folder.path(), QStringLiteral("--name"), QStringLiteral("s"),
             QStringLiteral("--frames"), QStringLiteral("24"), QStringLiteral("--size"),
             QStringLiteral("128"), QStringLiteral("--pixel-size"), QStringLiteral("0.012")}) != 0) {
        return 2;
    }
    std::printf("%d kills of a window, seed %u\n", nRounds, nSeed);
    std::mt19937 random(nSeed);
    const Figures figures = killWindows(folder.path(), folder.filePath(QStringLiteral("s.ed3d")), nRounds,
                                        random);
    std::printf(
        "restored %d, %d of them without the last state, %d from the middle of \"Solve\"; faults %d\n",
        figures.nRestored, figures.nWithoutLast, figures.nStages, figures.nFaults);
    // Most windows must have stored a state, or the kills prove nothing.
    return figures.nFaults == 0 && 2 * figures.nRestored > nRounds ? 0 : 1;
}
