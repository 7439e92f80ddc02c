#include "imagefiles/hdf5probe.h"

#include "imagefiles/hdf5emd.h"
#include "imagefiles/hdf5finding.h"
#include "records/availablememory.h"

#include <QFile>

#include <algorithm>
#include <limits>

#if defined(Q_OS_UNIX)
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#endif

namespace tessera {

#if defined(Q_OS_UNIX)

namespace {

constexpr rlim_t g_nMostProcessorTime = 60;  // s
constexpr unsigned g_nLongest = 600;         // s of real time, which is enough for a slow disk

/// Reads the first and the last image of a series, as the parent will do.
void readImages(const Hdf5Series& series)
{
    QString strReason;
    const Hdf5Block& block = series.vecBlock.front();
    if (block.strMissing.isEmpty()) {
        const CHdf5Id idFile = openHdf5(block.strFile, strReason);
        const CHdf5Id idDataSet = openDataSet(idFile, block.strPath);
        const int nHeld = imagesIn(block.layout, series.bFramesLast);
        for (const int nImage : {block.nFirst, block.nFirst + block.nCount - 1}) {
            Hdf5Fetched fetched;
            if (idDataSet.isOpen() && nImage < nHeld) {
                fetchPlane(idDataSet, block.strFile, block.layout,
                           planeOf(block.layout, series.bFramesLast, nImage), fetched, strReason);
            }
        }
    }
    if (series.kind == Hdf5Series::Kind::VELOX) {
        veloxText(series, 0);
    }
}

/// Does what the parent will do, and keeps nothing. It takes no CHdf5Lock, since the thread of the parent
/// that has it does not exist in the child.
/// @return why there are no images; empty when there are
QString readOnce(const QString& strPath)
{
    Hdf5Series series;
    QString strReason;
    try {
        if (!findSeries(strPath, series, strReason)) {
            return strReason.isEmpty() ? QStringLiteral("no images") : strReason;
        }
    } catch (const std::exception&) {
        return QStringLiteral("it asks for more memory than there is");
    }
    try {
        readImages(series);
    } catch (const std::exception&) {  // the parent will meet it with this image, too
    }
    return {};
}

/// Limits the address space of the process to what it has plus the available memory. HDF5 allocates as much
/// as a damaged file tells it to, which the system would grant at the expense of all other programs.
void limitMemory()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    const uint64_t nPages = file.open(QIODevice::ReadOnly) ? file.readLine().split(' ').value(0).toULongLong()
                                                           : 0;
    const uint64_t nHeld = nPages * uint64_t(sysconf(_SC_PAGESIZE)), nLeft = availableMemory();
    constexpr uint64_t nMost = std::numeric_limits<int64_t>::max();
    if (nHeld > 0 && nHeld < nMost && nLeft < nMost - nHeld) {
        const rlimit memory = {rlim_t(nHeld + nLeft), rlim_t(nHeld + nLeft)};
        setrlimit(RLIMIT_AS, &memory);
    }
}

/// Runs the child. It must not use the signal handlers of the parent, nor the functions that run at the end
/// of a program.
/// @param nAnswer  descriptor to which it writes '+', or '-' and the reason why there are no images
[[noreturn]] void readAndExit(const QString& strPath, int nAnswer)
{
    for (const int nSignal : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL, SIGALRM, SIGXCPU}) {
        std::signal(nSignal, SIG_DFL);
    }
    const rlimit noCore = {0, 0}, processor = {g_nMostProcessorTime, g_nMostProcessorTime + 1};
    setrlimit(RLIMIT_CORE, &noCore);
    setrlimit(RLIMIT_CPU, &processor);
    limitMemory();
    const int nNull = open("/dev/null", O_WRONLY);
    dup2(nNull, STDERR_FILENO);  // the C library writes there before it aborts
    alarm(g_nLongest);
    const QString strReason = readOnce(strPath);
    const QByteArray bytes = (strReason.isEmpty() ? QByteArray("+") : '-' + strReason.left(1000).toUtf8());
    _exit(write(nAnswer, bytes.constData(), size_t(bytes.size())) == bytes.size() ? 0 : 1);
}

/// Reads the answer of a child that has ended, so there is no waiting. The answer fits into a pipe.
QByteArray answerOf(int nAnswer)
{
    constexpr int nLongestAnswer = 4096;
    QByteArray bytes(nLongestAnswer, 0);
    const ssize_t nRead = read(nAnswer, bytes.data(), size_t(bytes.size()));
    return bytes.left(int(std::max<ssize_t>(nRead, 0)));
}

QString notTried()
{
    return QStringLiteral("the process that tries an HDF5 file before it is read did not start: %1")
        .arg(QString::fromLocal8Bit(std::strerror(errno)));
}

}  // namespace

Hdf5Trial tryReading(const QString& strPath, QString& strReason)
{
    int anEnd[2];
    if (pipe(anEnd) != 0) {
        strReason = notTried();
        return Hdf5Trial::NONE;
    }
    fcntl(anEnd[0], F_SETFD, FD_CLOEXEC);
    fcntl(anEnd[1], F_SETFD, FD_CLOEXEC);
    fcntl(anEnd[0], F_SETFL, O_NONBLOCK);
    const pid_t nChild = fork();
    if (nChild == 0) {
        readAndExit(strPath, anEnd[1]);
    }
    if (nChild < 0) {
        strReason = notTried();
    }
    close(anEnd[1]);
    int nStatus = 0;
    pid_t nEnded = -1;
    do {
        nEnded = nChild > 0 ? waitpid(nChild, &nStatus, 0) : -1;
    } while (nEnded < 0 && nChild > 0 && errno == EINTR);
    const QByteArray bytesAnswer = answerOf(anEnd[0]);
    close(anEnd[0]);
    if (nChild < 0) {
        return Hdf5Trial::NONE;
    }
    if (bytesAnswer.startsWith('+')) {
        return Hdf5Trial::GOOD;
    }
    if (bytesAnswer.startsWith('-')) {
        strReason = QString::fromUtf8(bytesAnswer.mid(1));
        return Hdf5Trial::NONE;
    }
    if (nEnded != nChild || !WIFSIGNALED(nStatus) || WTERMSIG(nStatus) == SIGTERM) {
        strReason = QStringLiteral("the process that tries an HDF5 file before it is read gave no answer");
        return Hdf5Trial::NONE;
    }
    const int nSignal = WTERMSIG(nStatus);
    strReason = nSignal == SIGALRM || nSignal == SIGXCPU
                    ? QStringLiteral("HDF5 does not come to an end with this file")
                    : QStringLiteral("damaged: HDF5 itself fails on this file");
    return Hdf5Trial::BROKEN;
}

#else

Hdf5Trial tryReading(const QString&, QString&)
{
    return Hdf5Trial::GOOD;
}

#endif

}  // namespace tessera
