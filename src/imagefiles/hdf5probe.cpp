#include "imagefiles/hdf5probe.h"

#include "imagefiles/hdf5emd.h"
#include "imagefiles/hdf5finding.h"

#include <QtGlobal>

#if defined(Q_OS_UNIX)
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#endif

namespace tessera {

#if defined(Q_OS_UNIX)

namespace {

/// What the parent will do, without keeping anything. No CHdf5Lock is taken here: the parent's thread holds
/// it, which is another one than the child's.
void readOnce(const QString& strPath)
{
    Hdf5Series series;
    QString strReason;
    if (!findSeries(strPath, series, strReason)) {
        return;
    }
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

/// The child's life. It must not go through the parent's handlers, nor through what ends a program.
[[noreturn]] void readAndExit(const QString& strPath)
{
    constexpr unsigned LONGEST = 60;  // s
    for (const int nSignal : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL, SIGALRM}) {
        std::signal(nSignal, SIG_DFL);
    }
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    const int nNull = open("/dev/null", O_WRONLY);
    dup2(nNull, STDERR_FILENO);  // the C library tells there what it aborts for
    alarm(LONGEST);
    try {
        readOnce(strPath);
    } catch (const std::exception&) {  // which the parent meets as well
    }
    _exit(0);
}

}  // namespace

bool survivesReading(const QString& strPath, QString& strReason)
{
    const pid_t nChild = fork();
    if (nChild == 0) {
        readAndExit(strPath);
    }
    int nStatus = 0;
    pid_t nEnded = -1;
    do {
        nEnded = nChild > 0 ? waitpid(nChild, &nStatus, 0) : -1;
    } while (nEnded < 0 && nChild > 0 && errno == EINTR);
    if (nEnded == nChild && nChild > 0 && WIFSIGNALED(nStatus)) {
        strReason = WTERMSIG(nStatus) == SIGALRM
                        ? QStringLiteral("HDF5 does not come to an end with this file")
                        : QStringLiteral("damaged: HDF5 itself fails on this file");
        return false;
    }
    return true;
}

#else

bool survivesReading(const QString&, QString&)
{
    return true;
}

#endif

}  // namespace tessera
