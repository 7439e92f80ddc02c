// tessera-killtest: kills a writer of result files at random moments. Each file must then be wholly the old
// one or wholly the new one, and what a killed writer leaves behind must not look like a result.
#include "crystal/indexedpeaklist.h"
#include "crystal/indexingfiles.h"
#include "crystal/peaklist3d.h"
#include "dataset/dataset.h"
#include "dataset/newproject.h"
#include "dataset/peaklistfile.h"
#include "dataset/shiftfile.h"
#include "dataset/unitcellfile.h"
#include "imagefiles/imagesaving.h"
#include "imagefiles/mrcfile.h"
#include "imagefiles/mrcwriter.h"
#include "imagefiles/smvfile.h"
#include "records/wholefile.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <functional>
#include <optional>
#include <random>
#include <vector>

namespace tessera {

namespace {

/// Whether bytes are the complete summary that tessera-batch writes at its start, in which the run is
/// "unfinished".
bool isUnfinishedSummary(const QByteArray& bytes)
{
    return QJsonDocument::fromJson(bytes).object()[QStringLiteral("failed")] == QLatin1String("unfinished");
}

/// A writer of result files.
struct Writer {
    const char* pName;
    /// Writes version 0 or 1 of the files into a folder.
    std::function<bool(const QString& strFolder, int nVersion)> fnWrite;
    QStringList listTogether = {};  ///< files that must all be of the same version
};

DataSet peaksOf(int nVersion)
{
    std::mt19937 random(static_cast<unsigned>(nVersion));
    std::uniform_real_distribution<double> place(0, 512), intensity(1, 9000);
    DataSet data;
    for (int nFrame = 0; nFrame < 100; ++nFrame) {
        data.m_listFrameFile.append(QString::number(nFrame));
        data.m_listPeakFrame.append(QList<Peak3D>());
        for (int i = 0; i < 200 + 50 * nVersion; ++i) {
            Peak3D peak;
            peak.dfX2D = place(random);
            peak.dfY2D = place(random);
            peak.dfIPoint = intensity(random);
            peak.nFrame = nFrame;
            peak.setHKL(i % 13 - 6, nFrame % 11 - 5, i % 7 - 3);
            data.m_listPeakFrame.last().append(peak);
        }
    }
    data.m_listCell = {{0.1f + 0.01f * float(nVersion), 0, 0}, {0, 0.12f, 0}, {0, 0.01f, 0.15f}};
    return data;
}

CImgObj<float> imageOf(int nVersion)
{
    CImgObj<float> image;
    image.Create(512, 512);
    for (int i = 0; i < 512 * 512; ++i) {
        image.Data()[i] = float((i * (3 + nVersion)) % 4001);
    }
    return image;
}

bool writeVolume(const QString& strFile, int nVersion)
{
    const CImgObj<float> image = imageOf(nVersion);
    CMrcWriter<float> writer;
    bool bWritten = writer.open(strFile, 512, 512, 12);
    for (int z = 0; z < 12; ++z) {
        bWritten = bWritten && writer.addSection(image.Data());
    }
    return bWritten && writer.commit();
}

/// Writes a file the way result files are not written: in place, over the old one.
bool writeInPlace(const QString& strFolder, int nVersion)
{
    static const QByteArray s_abytes[] = {QByteArray(1 << 22, 'o'), QByteArray(1 << 22, 'n')};
    QFile file(strFolder + QStringLiteral("/plain"));
    return file.open(QIODevice::WriteOnly) && file.write(s_abytes[nVersion]) == s_abytes[nVersion].size();
}

bool writeShifts(const QString& strFile, int nVersion)
{
    ShiftData shift;
    for (int i = 0; i < 900 - 300 * nVersion; ++i) {
        shift.listShift.append(QPointF(0.25 * i, nVersion));
    }
    return writeShiftFile(strFile, shift);
}

bool writeProject(const QString& strFolder, const QString& strFile, int nVersion)
{
    NewProject project;
    for (int i = 0; i < 2000; ++i) {
        project.listFrame.append(strFolder + QStringLiteral("/f%1.mrc").arg(i));
    }
    project.tilts = evenTilts(2000, -60, 0.05 + 0.01 * nVersion);
    project.dfWavelength = 0.0251;
    project.dfPixelSize = 0.004;
    const std::optional<QByteArray> bytes = makeProjectText(project, strFile);
    return bytes && writeWholeFile(strFile, *bytes);
}

/// The writers of all kinds of result file, except those of files that only the driver writes.
std::vector<Writer> fileWriters()
{
    const auto inFolder = [](const QString& strFolder, const char* pName) {
        return strFolder + QLatin1Char('/') + QLatin1String(pName);
    };
    static const DataSet s_aData[] = {peaksOf(0), peaksOf(1)};
    static const CImgObj<float> s_aImage[] = {imageOf(0), imageOf(1)};
    return {
        {"pk",
         [=](const QString& str, int n) { return writePeakList(s_aData[n], inFolder(str, "s.pk")) == 1; }},
        // The list gets shorter, so that the longer one is kept as "s.sc~".
        {"sc", [=](const QString& str, int n) { return writeShifts(inFolder(str, "s.sc"), n); }},
        {"uc",
         [=](const QString& str, int n) {
             DataSet data;
             data.m_listCell = s_aData[n].m_listCell;
             return saveUnitCellFile(data, inFolder(str, "s.uc"));
         }},
        {"ed3d", [=](const QString& str, int n) { return writeProject(str, inFolder(str, "s.ed3d"), n); }},
        {"hkl and p4p",
         [=](const QString& str, int n) {
             CRunReport report;
             return outputIndexingResultsToFile(s_aData[n].m_listPeakFrame[n], cellInForce(s_aData[n]),
                                                {-60, 0, 60}, str, QStringLiteral("s"), report);
         }},
        {"ipf",
         [=](const QString& str, int n) {
             return writeIndexedPeakList(s_aData[n].m_listPeakFrame.toVector(), inFolder(str, "s.ipf"));
         }},
        {"peaks in 3D",
         [=](const QString& str, int n) {
             return writePeak3DList(s_aData[n].m_listPeakFrame[n], inFolder(str, "peaks.txt"), true);
         }},
        {"MRC volume", [=](const QString& str, int n) { return writeVolume(inFolder(str, "s.mrc"), n); }},
        {"SMV",
         [=](const QString& str, int n) {
             return writeSmvImage(smvHeaderTemplate(), s_aImage[n], inFolder(str, "s_0001.img"));
         }},
        {"picture",
         [=](const QString& str, int n) {
             CImgObj<unsigned char> image;
             image.Set(s_aImage[n].Data(), 512, 512);
             return saveImage(&image, inFolder(str, "s_0001.png"));
         }},
    };
}

/// Calls a function in a process of its own, which can be killed.
pid_t forked(const std::function<bool()>& fn)
{
    std::fflush(nullptr);
    const pid_t nProcess = fork();
    if (nProcess == 0) {
        setpgid(0, 0);
        _exit(fn() ? 0 : 1);
    }
    setpgid(nProcess, nProcess);  // here and in the child, as either of them may come first
    return nProcess;
}

/// Kills a process and the processes that it has started, and waits for their end, so that none of them can
/// write any more.
void killGroup(pid_t nProcess)
{
    kill(-nProcess, SIGKILL);
    while (waitpid(-nProcess, nullptr, 0) > 0 || errno == EINTR) {
    }
}

bool succeeded(pid_t nProcess)
{
    int nStatus = -1;
    return waitpid(nProcess, &nStatus, 0) == nProcess && WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0;
}

/// The files of a folder. Numbers are replaced by 0 in the driver's log and summary, as some are times.
QMap<QString, QByteArray> filesOf(const QString& strFolder)
{
    QMap<QString, QByteArray> mapFile;
    for (const QString& strName : QDir(strFolder).entryList(QDir::Files)) {
        QFile file(strFolder + QLatin1Char('/') + strName);
        if (!file.open(QIODevice::ReadOnly)) {
            continue;
        }
        QByteArray bytes = file.readAll();
        if (strName.endsWith(QLatin1String(".log")) || strName.endsWith(QLatin1String(".json"))) {
            bytes = QString::fromUtf8(bytes)
                        .replace(QRegularExpression(QStringLiteral("-?[0-9.]+(e[-+][0-9]+)?")),
                                 QStringLiteral("0"))
                        .toUtf8();
        }
        mapFile[strName] = bytes;
    }
    return mapFile;
}

/// What was found in the folder after the kills.
struct Figures {
    int nOld = 0, nNew = 0;  ///< number of files of each version
    int nTorn = 0;           ///< number of files that are neither version
    int nTemporary = 0;      ///< number of other files
    QStringList listWrong;   ///< the faults, in words
};

using FilesOfFolder = QMap<QString, QByteArray>;

/// Both versions of a writer's files.
struct Versions {
    FilesOfFolder amapFile[2];
    double dfOneWrite = 0;  ///< time of a write, µs
};

/// Lets the writer finish both versions, each of them twice, the second time over the other version's files.
Versions writeVersions(const Writer& writer, const QString& strFolder, Figures& figures)
{
    Versions versions;
    QElapsedTimer timer;
    timer.start();
    for (int nPass = 0; nPass < 2; ++nPass) {
        for (int nVersion : {1, 0}) {
            if (!succeeded(forked([&] { return writer.fnWrite(strFolder, nVersion); }))) {
                figures.listWrong.append(QStringLiteral("version %1 cannot be written").arg(nVersion));
            }
            versions.amapFile[nVersion] = filesOf(strFolder);
        }
    }
    versions.dfOneWrite = double(timer.nsecsElapsed()) / 4000;
    for (FilesOfFolder& mapFile : versions.amapFile) {
        mapFile.remove(QStringLiteral("s.sc~"));
    }
    if (versions.amapFile[0] == versions.amapFile[1]) {
        figures.listWrong.append(QStringLiteral("the two versions are the same"));
    }
    return versions;
}

/// Starts a writer that writes the versions in turn for ever, and kills it after a time.
void killAfter(const Writer& writer, const QString& strFolder, double dfMicroseconds)
{
    const pid_t nProcess = forked([&] {
        for (int nVersion = 1;; nVersion = 1 - nVersion) {
            if (!writer.fnWrite(strFolder, nVersion)) {
                return false;
            }
        }
    });
    usleep(static_cast<useconds_t>(dfMicroseconds));
    killGroup(nProcess);
}

/// Counts a file that no finished writer leaves. It is a fault unless it is a temporary file, which has the
/// name of a result with a further suffix, so that no reader takes it for a result.
void judgeStrayFile(const QString& strName, const FilesOfFolder& mapResult, int nRound, Figures& figures)
{
    static const QRegularExpression s_suffix(QStringLiteral("\\.[A-Za-z0-9]{6}$"));
    const bool bHarmless = s_suffix.match(strName).hasMatch() &&
                           mapResult.contains(QString(strName).remove(s_suffix));
    if (!bHarmless) {
        figures.listWrong.append(QStringLiteral("round %1: stray file %2").arg(nRound).arg(strName));
    }
    ++figures.nTemporary;
}

/// Compares each file that a killed writer has left with both versions.
void judgeFiles(const QString& strFolder, const FilesOfFolder& mapFile, const Versions& versions, int nRound,
                Figures& figures)
{
    const FilesOfFolder& mapOld = versions.amapFile[0];
    for (auto it = mapFile.begin(); it != mapFile.end(); ++it) {
        QString strName = it.key();
        strName.replace(QStringLiteral("s.sc~"), QStringLiteral("s.sc"));
        if (!mapOld.contains(strName)) {
            judgeStrayFile(strName, mapOld, nRound, figures);
            QFile::remove(strFolder + QLatin1Char('/') + it.key());
        } else if (it.value() == mapOld[strName]) {
            ++figures.nOld;
        } else if (it.value() == versions.amapFile[1][strName] || isUnfinishedSummary(it.value())) {
            ++figures.nNew;
        } else {
            ++figures.nTorn;
            figures.listWrong.append(QStringLiteral("round %1: %2 of %3 bytes is neither version")
                                         .arg(nRound)
                                         .arg(it.key())
                                         .arg(it.value().size()));
        }
    }
    for (const QString& strName : mapOld.keys()) {
        if (!mapFile.contains(strName)) {
            figures.listWrong.append(QStringLiteral("round %1: %2 is gone").arg(nRound).arg(strName));
        }
    }
}

/// Looks for files of different versions among those that must be of the same one.
void judgeTogether(const QStringList& listTogether, const FilesOfFolder& mapFile, const Versions& versions,
                   int nRound, Figures& figures)
{
    for (const QString& strName : listTogether) {
        for (const QString& strOther : listTogether) {
            if (mapFile[strName] != versions.amapFile[1][strName] &&
                mapFile[strOther] != versions.amapFile[0][strOther]) {
                figures.listWrong.append(QStringLiteral("round %1: %2 is the old one and %3 the new one")
                                             .arg(nRound)
                                             .arg(strName, strOther));
            }
        }
    }
}

/// Kills the writer `nRounds` times at random moments and judges each time what it has left.
Figures killWriter(const Writer& writer, const QString& strFolder, int nRounds, std::mt19937& random)
{
    Figures figures;
    QDir().mkpath(strFolder);
    const Versions versions = writeVersions(writer, strFolder, figures);
    std::uniform_real_distribution<double> delay(0, 3 * versions.dfOneWrite);
    for (int nRound = 0; nRound < nRounds; ++nRound) {
        killAfter(writer, strFolder, delay(random));
        const FilesOfFolder mapFile = filesOf(strFolder);
        judgeFiles(strFolder, mapFile, versions, nRound, figures);
        judgeTogether(writer.listTogether, mapFile, versions, nRound, figures);
    }
    return figures;
}

/// Runs the driver on a simulated series through all stages, with the exports.
bool runDriver(const QString& strDriver, const QString& strProject, const QString& strFolder, int nVersion)
{
    const QStringList listArgument{strDriver,
                                   strProject,
                                   QStringLiteral("--out"),
                                   strFolder,
                                   QStringLiteral("--json"),
                                   strFolder + QStringLiteral("/s.json"),
                                   QStringLiteral("--export"),
                                   QStringLiteral("smv,volume,pictures"),
                                   QStringLiteral("--volume-edge"),
                                   QStringLiteral("40"),
                                   QStringLiteral("--pixel-size"),
                                   QString::number(nVersion == 0 ? 0.012 : 0.0125)};
    QList<QByteArray> listBytes;
    std::vector<char*> vecArgument;
    for (const QString& str : listArgument) {
        listBytes.append(str.toLocal8Bit());
    }
    for (QByteArray& bytes : listBytes) {
        vecArgument.push_back(bytes.data());
    }
    vecArgument.push_back(nullptr);
    const pid_t nProcess = fork();
    if (nProcess == 0) {
        if (std::freopen("/dev/null", "w", stdout) && std::freopen("/dev/null", "w", stderr)) {
            execv(vecArgument[0], vecArgument.data());
        }
        _exit(127);
    }
    return succeeded(nProcess);
}

/// The driver on a series that is simulated into a folder; nothing where the simulator fails.
std::optional<Writer> driverWriter(const QString& strSeries)
{
    const QString strBin = QCoreApplication::applicationDirPath();
    if (QProcess::execute(strBin + QStringLiteral("/tessera-simulate"),
                          {QStringLiteral("--out"), strSeries, QStringLiteral("--name"), QStringLiteral("s"),
                           QStringLiteral("--frames"), QStringLiteral("24"), QStringLiteral("--size"),
                           QStringLiteral("128"), QStringLiteral("--pixel-size"), QStringLiteral("0.012")}) !=
        0) {
        return std::nullopt;
    }
    return Writer{"tessera-batch",
                  [=](const QString& str, int n) {
                      return runDriver(strBin + QStringLiteral("/tessera-batch"),
                                       strSeries + QStringLiteral("/s.ed3d"), str, n);
                  },
                  {QStringLiteral("s.hkl"), QStringLiteral("s.p4p"), QStringLiteral("s.ipf")}};
}

/// Prints the results for a writer.
void printFigures(const char* pName, const Figures& figures)
{
    std::printf("%-14s files old %5d, new %5d, torn %3d; temporary files left %3d; faults %d\n", pName,
                figures.nOld, figures.nNew, figures.nTorn, figures.nTemporary, figures.listWrong.size());
    for (const QString& str : figures.listWrong) {
        std::printf("  %s\n", qPrintable(str));
    }
}

}  // namespace

}  // namespace tessera

int main(int argc, char** argv)
{
    using namespace tessera;
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Kills writers of result files at random moments and looks at what they leave.\n"
        "Exit status: 0 every file is wholly the old or the new one, 1 not so, 2 wrong call."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("rounds"), QStringLiteral("Kills of each writer."),
                      QStringLiteral("number"), QStringLiteral("50")});
    parser.addOption({QStringLiteral("seed"), QStringLiteral("Of the moments; default: another each time."),
                      QStringLiteral("number"), QString::number(std::random_device()() % 1000000)});
    parser.addOption({QStringLiteral("no-driver"), QStringLiteral("Leave out the runs of tessera-batch.")});
    parser.process(app);
    const int nRounds = parser.value(QStringLiteral("rounds")).toInt();
    const unsigned nSeed = parser.value(QStringLiteral("seed")).toUInt();
    const QTemporaryDir folder;
    if (nRounds < 1 || !folder.isValid()) {
        return 2;
    }
    prctl(PR_SET_CHILD_SUBREAPER, 1);  // so that killGroup() can wait for grandchildren

    std::vector<Writer> vecWriter = fileWriters();
    if (!parser.isSet(QStringLiteral("no-driver"))) {
        const std::optional<Writer> driver = driverWriter(folder.filePath(QStringLiteral("series")));
        if (!driver) {
            return 2;
        }
        vecWriter.push_back(*driver);
    }
    std::printf("%d kills of each writer, seed %u\n", nRounds, nSeed);
    bool bGood = true;
    for (const Writer& writer : vecWriter) {
        std::mt19937 random(nSeed);
        const Figures figures = killWriter(writer, folder.filePath(QLatin1String(writer.pName)), nRounds,
                                           random);
        printFigures(writer.pName, figures);
        bGood = bGood && figures.listWrong.isEmpty();
    }
    // The kills prove something only if they tear a file that is written in place.
    std::mt19937 random(nSeed);
    const int nTorn = killWriter({"in place", writeInPlace}, folder.filePath(QStringLiteral("in place")),
                                 std::max(nRounds, 20), random)
                          .nTorn;
    std::printf("for comparison, written in place: torn %d\n", nTorn);
    bGood = bGood && nTorn > 0;
    return bGood ? 0 : 1;
}
