// The program `tessera`: the window, and what the command line asks it to open.
#include "window/application.h"
#include "window/history/workkeeper.h"
#include "window/mainwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QIcon>
#include <QLocale>
#include <QPixmap>
#include <QSplashScreen>
#include <QTextCodec>
#include <QTimer>

namespace tessera {

namespace {

// The working folder of the process may change under dialogs, and the recent list outlives it.
QStringList absolutePaths(const QStringList& listFile)
{
    QStringList listPath;
    for (const QString& strFile : listFile) {
        listPath.append(QFileInfo(strFile).absoluteFilePath());
    }
    return listPath;
}

}  // namespace

}  // namespace tessera

int main(int argc, char** argv)
{
    using namespace tessera;
    Q_INIT_RESOURCE(tessera);
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    Application application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Lumenarc"));
    QCoreApplication::setApplicationName(QStringLiteral("Tessera"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TESSERA_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("A workbench for three-dimensional electron crystallography."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("files"),
        QStringLiteral("A project (.ed3d) or the frames of a series, to open at the start."),
        QStringLiteral("[PROJECT.ed3d | frames...]"));
    parser.process(application);

    MainWindow window;
    const QPixmap pixmapSplash(QStringLiteral(":/images/Tessera_splash_QVT.png"));
    QSplashScreen splash(pixmapSplash);
    splash.show();
    QCoreApplication::processEvents();

    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF8"));
    if (QLocale::system().language() == QLocale::Chinese) {
        QFont fontApplication = QApplication::font();
        fontApplication.setFamily(QStringLiteral("MS Shell Dlg 2"));
        QApplication::setFont(fontApplication);
    }
    window.setSplashPixmap(pixmapSplash);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/tessera.png")));
    window.show();
    splash.finish(&window);

    const QStringList listFile = absolutePaths(parser.positionalArguments());
    QTimer::singleShot(0, &window, [&window, listFile] {
        window.openFiles(listFile);
        window.keepWork(WorkKeeper::usualFolder());
    });
    return application.exec();
}
