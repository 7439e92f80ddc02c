// tessera-walk: goes with the frames of a folder from an empty window to the merged intensities by pointer
// and keys only, counts these, and compares the files with those of the driver.
//
//   tessera-walk FRAMES [--type "First Frame=-29.45"]... [--work FOLDER] [--log FILE] [--pictures FOLDER]
//
// Exit status: 0 all steps were done and the files equal those of the driver to the byte, 1 some files
// differ, 2 wrong call, or a step was impossible.
#include "dataset/framefiles.h"
#include "tools/walk/hands.h"
#include "tools/walk/walker.h"
#include "window/application.h"
#include "window/mainwindow.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace tessera {

namespace {

/// Copies the files of a series that a camera writes, without projects and results.
bool copyFrames(const QString& strFrom, const QString& strTo)
{
    if (!QDir().mkpath(strTo)) {
        return false;
    }
    for (const QString& strFile : framesInFolder(strFrom)) {
        if (!QFile::copy(strFile, strTo + QLatin1Char('/') + QFileInfo(strFile).fileName())) {
            return false;
        }
    }
    return true;
}

QByteArray bytesOf(const QString& strFile)
{
    QFile file(strFile);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

/// Compares two folders. Logs and records of runs contain folders and times, so these only have to exist.
/// @return the number of files that differ
int filesThatDiffer(const QDir& one, const QDir& other)
{
    QStringList listFile = one.entryList(QDir::Files, QDir::Name);
    for (const QString& strFile : other.entryList(QDir::Files, QDir::Name)) {
        if (!listFile.contains(strFile)) {
            listFile.append(strFile);
        }
    }
    // The settings of a window for its display, such as the contrast, are no results.
    for (const QString& strFile : listFile.filter(QRegularExpression(QStringLiteral("\\.window\\.json$")))) {
        listFile.removeAll(strFile);
    }
    int nDiffer = 0;
    for (const QString& strFile : listFile) {
        const bool bThere = one.exists(strFile) && other.exists(strFile);
        const bool bTold = strFile.endsWith(QLatin1String(".log")) ||
                           strFile.endsWith(QLatin1String(".run.json"));
        if (!bThere || (!bTold && bytesOf(one.filePath(strFile)) != bytesOf(other.filePath(strFile)))) {
            std::printf("  not alike: %s\n", qPrintable(strFile));
            ++nDiffer;
        }
    }
    std::printf("%d files of window and driver, %d not alike\n", int(listFile.size()), nDiffer);
    return nDiffer;
}

/// Runs the driver on a copy of the frames with the project of the walk, and compares the results.
int compareWithDriver(const QString& strWindow, const QString& strFrames, const QString& strDriver)
{
    const QStringList listProject = QDir(strWindow).entryList({QStringLiteral("*.ed3d")}, QDir::Files);
    if (listProject.isEmpty() || !copyFrames(strFrames, strDriver)) {
        std::printf("nothing for the driver\n");
        return 2;
    }
    const QString strProject = strDriver + QLatin1Char('/') + listProject.first();
    QFile::copy(strWindow + QLatin1Char('/') + listProject.first(), strProject);
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/tessera-batch"), {strProject});
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit) {
        std::printf("the driver did not end\n");
        return 2;
    }
    std::printf("driver: exit status %d\n", process.exitCode());
    const QStringList listMerged = QDir(strWindow).entryList({QStringLiteral("*_merged.hkl")}, QDir::Files);
    std::printf("merged: %s\n",
                qPrintable(listMerged.isEmpty() ? QStringLiteral("none") : listMerged.first()));
    return filesThatDiffer(QDir(strWindow), QDir(strDriver)) > 0 || listMerged.isEmpty() ? 1 : 0;
}

/// Splits texts "NAME=TEXT".
/// @return false for a text of another form
bool fieldsOf(const QStringList& listText, std::vector<CWalker::Field>& listField)
{
    for (const QString& strText : listText) {
        const int nAt = strText.lastIndexOf(QLatin1Char('='));
        if (nAt < 1) {
            return false;
        }
        listField.emplace_back(strText.left(nAt), strText.mid(nAt + 1));
    }
    return true;
}

void addOptions(QCommandLineParser& parser)
{
    parser.addHelpOption();
    parser.addOptions(
        {{QStringLiteral("type"),
          QStringLiteral("A field of \"New Project\" by the text before it, and what is typed. Repeatable."),
          QStringLiteral("name=text")},
         {QStringLiteral("work"), QStringLiteral("Where the copies go; default: a folder that is removed."),
          QStringLiteral("folder")},
         {QStringLiteral("log"), QStringLiteral("Where clicks and keys go; default: the output."),
          QStringLiteral("file")},
         {QStringLiteral("pictures"), QStringLiteral("Gets a picture of the screen before each step."),
          QStringLiteral("folder")}});
    parser.addPositionalArgument(QStringLiteral("frames"),
                                 QStringLiteral("A folder with the frames of a series."));
}

}  // namespace

}  // namespace tessera

int main(int argc, char** argv)
{
    using namespace tessera;
    // Settings and data of the user are neither read nor written.
    const QTemporaryDir home;
    for (const char* pszName : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        qputenv(pszName, QFile::encodeName(home.path()));
    }
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeMenuBar);
    // Never deleted, as the offscreen platform loses its screen when the application is deleted.
    static const Application& application = *new Application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Lumenarc"));
    QCoreApplication::setApplicationName(QStringLiteral("Tessera"));
    QStandardPaths::setTestModeEnabled(true);
    Q_INIT_RESOURCE(tessera);

    QCommandLineParser parser;
    addOptions(parser);
    parser.process(application);
    std::vector<CWalker::Field> listField;
    const QString strFrames = parser.positionalArguments().value(0);
    if (parser.positionalArguments().size() != 1 || framesInFolder(strFrames).isEmpty() ||
        !fieldsOf(parser.values(QStringLiteral("type")), listField)) {
        std::fprintf(stderr, "%s", qPrintable(parser.helpText()));
        return 2;
    }
    QTemporaryDir temporary;
    const QDir dirWork(parser.isSet(QStringLiteral("work")) ? parser.value(QStringLiteral("work"))
                                                            : temporary.path());
    const QString strWindow = dirWork.absoluteFilePath(QStringLiteral("window"));
    const QString strLog = parser.value(QStringLiteral("log")),
                  strPictures = parser.value(QStringLiteral("pictures"));
    FILE* pLog = strLog.isEmpty() ? stdout : std::fopen(QFile::encodeName(strLog).constData(), "w");
    if (!pLog || !copyFrames(strFrames, strWindow) ||
        (!strPictures.isEmpty() && !QDir().mkpath(strPictures))) {
        std::fprintf(stderr, "Log, pictures or copies cannot be written\n");
        return 2;
    }

    MainWindow window;
    window.resize(1280, 800);
    window.show();
    CHands hands(pLog);
    CWalker walker(window, hands, strWindow, listField, strPictures);
    QObject::connect(&walker, &CWalker::ended, [&] {
        std::printf("%d clicks, %d keys, %.1f s, of which %.1f s for \"Solve\"\n", hands.clicks(),
                    hands.keys(), hands.seconds(), walker.solveSeconds());
        if (!hands.failure().isEmpty()) {
            std::printf("the way ends: %s\n", qPrintable(hands.failure()));
            std::fflush(nullptr);
            std::_Exit(2);  // ends the program within any open dialogs and runs
        }
        QCoreApplication::exit(
            compareWithDriver(strWindow, strFrames, dirWork.absoluteFilePath(QStringLiteral("driver"))));
    });
    walker.start();
    return QApplication::exec();
}
