// tessera-monkey: uses the window at random, in a folder of its own, until the time is up or something
// breaks.
//
//   tessera-monkey PROJECT.ed3d [--seed N] [--seconds S] [--log FILE]
//
// Each step is in the log before it is done, so that the last line tells what broke the program. A seed gives
// the same choices again; as runs and animations go by the clock, the same steps may meet them elsewhere.
// Exit status: 0 nothing broke, 1 a critical message of Qt, 2 wrong call; a crash or a hang aborts.
#include "window/mainwindow.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDesktopServices>
#include <QDir>
#include <QDoubleSpinBox>
#include <QDrag>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QMap>
#include <QMimeData>
#include <QPointer>
#include <QSettings>
#include <QSlider>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolBox>
#include <QWheelEvent>
#include <QWindow>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>

#include <pthread.h>

namespace tessera {

namespace {

constexpr int g_nHangSeconds = 60;
constexpr int g_nMostNested =
    6;  ///< levels of dialogs and runs; in deeper ones nothing is done except ending them
constexpr int g_nStepsInADialog = 40;  ///< steps after which a dialog is rejected
constexpr int g_nLongestPause = 8;     ///< ms between steps

FILE* g_pLog = stdout;
std::atomic<int> g_nStep{0};
QMap<QString, int> g_mapWarning;
int g_nCritical = 0;

void keepMessage(QtMsgType type, const QMessageLogContext&, const QString& strText)
{
    std::fprintf(g_pLog, "  Qt: %s\n", qPrintable(strText));
    std::fflush(g_pLog);
    if (type == QtCriticalMsg || type == QtFatalMsg) {
        ++g_nCritical;
        std::fprintf(stderr, "critical message at step %d: %s\n", g_nStep.load(), qPrintable(strText));
    } else {
        ++g_mapWarning[strText];
    }
    if (type == QtFatalMsg) {
        std::abort();
    }
}

/// Aborts the program when the thread of the window makes no step for too long.
void watchForHangs(pthread_t nWindowThread)
{
    std::thread([nWindowThread] {
        int nSeen = -1, nSeconds = 0;
        for (;;) {
            std::this_thread::sleep_for(std::chrono::seconds(1));
            const int nNow = g_nStep.load();
            nSeconds = nNow == nSeen ? nSeconds + 1 : 0;
            nSeen = nNow;
            if (nSeconds == g_nHangSeconds) {
                std::fprintf(stderr, "hang: no step for %d s after step %d\n", g_nHangSeconds, nNow);
                pthread_kill(nWindowThread, SIGABRT);
            }
        }
    }).detach();
}

QString nameOf(const QWidget* p)
{
    QString strText;
    if (const auto* pButton = qobject_cast<const QAbstractButton*>(p)) {
        strText = pButton->text();
    }
    return QStringLiteral("%1 %2 \"%3\"").arg(p->metaObject()->className(), p->objectName(), strText);
}

class CMonkey : public QObject {
public:
    CMonkey(const QString& strProject, unsigned nSeed, double dfSeconds)
        : m_random(nSeed),
          m_strSource(QFileInfo(strProject).absolutePath()),
          m_strProject(QFileInfo(strProject).fileName()),
          m_dfSeconds(dfSeconds)
    {
        // A deep folder, so that a path that loses its end is still inside the temporary folder.
        m_strWork = m_folder.filePath(QStringLiteral("a/b/c/work"));
        QDir().mkpath(m_strWork);
        copySeries();
        QDir::setCurrent(m_strWork);
        m_timer.start();
        openWindow();
        later();
    }

    void closeWindow() { m_pWindow.reset(); }
    void printFigures() const
    {
        std::printf("%d steps, %d dialogs answered, %d windows opened, deepest nesting %d\n", g_nStep.load(),
                    m_nDialogs, m_nWindows, m_nDeepest);
        for (auto it = m_mapDone.begin(); it != m_mapDone.end(); ++it) {
            std::printf("  %-12s %d\n", qPrintable(it.key()), it.value());
        }
        for (auto it = g_mapWarning.begin(); it != g_mapWarning.end(); ++it) {
            std::printf("  %d times: %s\n", it.value(), qPrintable(it.key()));
        }
    }

private:
    int pick(int nCount) { return nCount < 1 ? 0 : int(m_random() % unsigned(nCount)); }
    bool chance(int nPercent) { return pick(100) < nPercent; }
    template <typename T>
    T* pickOf(const QList<T*>& list)
    {
        return list.isEmpty() ? nullptr : list[pick(list.size())];
    }
    QPoint pickPoint(const QWidget* p) { return {pick(p->width()), pick(p->height())}; }

    void say(const char* pKind, const QString& strWhat)
    {
        ++m_mapDone[QString::fromLatin1(pKind)];
        std::fprintf(g_pLog, "%d (%d) %s: %s\n", g_nStep.load(), m_nDepth, pKind, qPrintable(strWhat));
        std::fflush(g_pLog);
    }

    void later()
    {
        QTimer::singleShot(pick(g_nLongestPause + 1), this, [this] { step(); });
    }

    void copySeries()
    {
        const QDir dir(m_strSource);
        for (const QString& strName : dir.entryList(QDir::Files)) {
            QFile::remove(m_strWork + QLatin1Char('/') + strName);
            QFile::copy(dir.filePath(strName), m_strWork + QLatin1Char('/') + strName);
        }
    }

    void openWindow()
    {
        ++m_nWindows;
        m_pWindow.reset();
        m_pWindow = std::make_unique<MainWindow>();
        m_pWindow->resize(1280, 900);
        m_pWindow->show();
        m_pWindow->openFiles({m_strWork + QLatin1Char('/') + m_strProject});
    }

    void step()
    {
        if (m_bEnded) {
            return;
        }
        ++g_nStep;
        later();  // before anything that may run another event loop
        ++m_nDepth;
        m_nDeepest = qMax(m_nDeepest, m_nDepth);
        if (m_bDragging) {
            QDrag::cancel();  // such as of a colour: Qt would wait for a release that only comes after the
                              // move
        }
        if (m_timer.elapsed() > 1000 * m_dfSeconds) {
            end();
        } else if (QWidget* pPopup = QApplication::activePopupWidget()) {
            useMenu(pPopup);
        } else if (QWidget* pDialog = QApplication::activeModalWidget()) {
            useDialog(pDialog);
        } else if (m_nDepth > g_nMostNested) {
            pressStop();
        } else if (!m_pWindow->isVisible() && m_nDepth == 1) {
            reopen();
        } else if (m_pWindow->isVisible()) {
            useWindow();
        }
        --m_nDepth;
    }

    /// Ends dialogs and runs, from the innermost outwards, and then the program.
    void end()
    {
        if (QWidget* pPopup = QApplication::activePopupWidget()) {
            pPopup->close();
        } else if (auto* pDialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            pDialog->reject();
        } else if (m_nDepth > 1) {
            m_pWindow->close();  // a running run is asked to stop
        } else {
            m_bEnded = true;
            QApplication::quit();
        }
    }

    void reopen()
    {
        say("reopen", m_strProject);
        if (chance(50)) {
            copySeries();
        }
        if (chance(50)) {
            openWindow();
        } else {
            m_pWindow->show();
        }
    }

    void pressStop()
    {
        for (QAbstractButton* pButton : m_pWindow->findChildren<QAbstractButton*>()) {
            if (pButton->text().contains(QLatin1String("Stop")) && pButton->isEnabled()) {
                say("stop", nameOf(pButton));
                pButton->click();
                return;
            }
        }
    }

    /// A file of the folder, or a name that does not exist yet.
    QString fileName()
    {
        static const char* const s_apSuffix[] = {"ed3d", "pk",  "sc",  "uc",  "hkl", "mrc", "png",
                                                 "img",  "txt", "msk", "tif", "",    "bmp"};
        if (chance(25)) {
            return QStringLiteral("%1/new%2.%3")
                .arg(m_strWork)
                .arg(pick(5))
                .arg(QLatin1String(s_apSuffix[pick(int(std::size(s_apSuffix)))]));
        }
        const QStringList listFile = QDir(m_strWork).entryList(QDir::Files);
        return m_strWork + QLatin1Char('/') + listFile.value(pick(listFile.size()));
    }

    void useFileDialog(QFileDialog* pDialog)
    {
        auto* pEdit = pDialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        if (chance(25) || !pEdit) {
            say("dialog", QStringLiteral("file dialog rejected"));
            pDialog->reject();
            return;
        }
        QString strFile = fileName();
        if (pDialog->fileMode() == QFileDialog::Directory || pDialog->testOption(QFileDialog::ShowDirsOnly)) {
            strFile = chance(60) ? m_strWork : QStringLiteral("%1/out%2").arg(m_strWork).arg(pick(3));
            QDir().mkpath(strFile);
        }
        say("dialog", QStringLiteral("file dialog \"%1\": %2").arg(pDialog->windowTitle(), strFile));
        pEdit->setText(strFile);
        press(pDialog, Qt::Key_Return, Qt::NoModifier);
    }

    void useDialog(QWidget* pWidget)
    {
        auto* pDialog = qobject_cast<QDialog*>(pWidget);
        if (pWidget != m_pDialog) {
            m_nInDialog = 0;
        }
        m_pDialog = pWidget;
        if (pDialog && (++m_nInDialog > g_nStepsInADialog || m_nDepth > g_nMostNested + 2 || chance(5))) {
            say("dialog", QStringLiteral("%1 \"%2\" left").arg(nameOf(pDialog), pDialog->windowTitle()));
            ++m_nDialogs;
            chance(50) && m_nInDialog <= g_nStepsInADialog ? pDialog->accept() : pDialog->reject();
        } else if (auto* pFiles = qobject_cast<QFileDialog*>(pWidget)) {
            ++m_nDialogs;
            useFileDialog(pFiles);
        } else {
            useWidgets(pWidget);
        }
    }

    void useMenu(QWidget* pPopup)
    {
        if (chance(20)) {
            say("menu", QStringLiteral("closed"));
            pPopup->close();
        } else if (chance(50)) {
            clickIn(pPopup, pPopup);
        } else {
            static const Qt::Key s_aKey[] = {Qt::Key_Down, Qt::Key_Up, Qt::Key_Return, Qt::Key_Right,
                                             Qt::Key_Left};
            press(pPopup, s_aKey[pick(5)], Qt::NoModifier);
        }
    }

    void useWindow()
    {
        const int nDice = pick(100);
        if (nDice < 14) {
            triggerAction();
        } else if (nDice < 15) {
            drop();
        } else if (nDice < 17) {
            resize();
        } else {
            useWidgets(pickWindow());
        }
    }

    /// The main window, or now and then another open window.
    QWidget* pickWindow()
    {
        QList<QWidget*> listOther;
        for (QWidget* p : QApplication::topLevelWidgets()) {
            if (p->isVisible() && p != m_pWindow.get() && p->windowType() != Qt::ToolTip) {
                listOther.append(p);
            }
        }
        return listOther.isEmpty() || chance(70) ? m_pWindow.get() : pickOf(listOther);
    }

    void triggerAction()
    {
        QList<QAction*> listAction;
        for (QAction* pAction : m_pWindow->findChildren<QAction*>()) {
            if (pAction->isEnabled() && pAction->isVisible() && !pAction->menu() && !pAction->isSeparator()) {
                listAction.append(pAction);
            }
        }
        if (QAction* pAction = pickOf(listAction)) {
            say("action", pAction->text());
            pAction->trigger();
        }
    }

    void drop()
    {
        QMimeData data;
        QList<QUrl> listUrl;
        for (int n = 1 + pick(3); n > 0; --n) {
            listUrl.append(
                QUrl::fromLocalFile(chance(60) ? m_strWork + QLatin1Char('/') + m_strProject : fileName()));
        }
        data.setUrls(listUrl);
        say("drop", listUrl.first().toString());
        QDragEnterEvent eventEnter(QPoint(9, 9), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_pWindow.get(), &eventEnter);
        QDropEvent eventDrop(QPointF(9, 9), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_pWindow.get(), &eventDrop);
    }

    void resize()
    {
        const QSize size(200 + pick(1600), 150 + pick(1000));
        say("resize", QStringLiteral("%1 x %2").arg(size.width()).arg(size.height()));
        m_pWindow->resize(size);
    }

    void useWidgets(QWidget* pTop)
    {
        QList<QWidget*> listWidget;
        for (QWidget* p : pTop->findChildren<QWidget*>()) {
            if (p->isVisible() && p->isEnabled() && p->window() == pTop) {
                listWidget.append(p);
            }
        }
        QWidget* pWidget = listWidget.isEmpty() ? pTop : pickOf(listWidget);
        const int nDice = pick(100);
        if (nDice < 18) {
            setValue(listWidget);
        } else if (nDice < 36) {
            clickButton(listWidget);
        } else if (nDice < 60) {
            clickIn(pTop, pWidget);
        } else if (nDice < 72) {
            dragIn(pTop, pWidget);
        } else if (nDice < 80) {
            turnWheel(pWidget);
        } else if (nDice < 86) {
            turnPage(listWidget);
        } else {
            pressAnyKey(pTop);
        }
    }

    /// Sets a widget to a number at an end of its range or within it, to an entry, or to a text.
    void setValue(const QList<QWidget*>& listWidget)
    {
        QList<QWidget*> listBox;
        for (QWidget* p : listWidget) {
            if (qobject_cast<QAbstractSpinBox*>(p) || qobject_cast<QComboBox*>(p) ||
                qobject_cast<QSlider*>(p)) {
                listBox.append(p);
            }
        }
        QWidget* p = pickOf(listBox);
        if (!p) {
            return;
        }
        const double dfPart = chance(15) ? 0 : chance(15) ? 1 : pick(1001) / 1000.0;
        say("value", QStringLiteral("%1 to %2 of its range").arg(nameOf(p)).arg(dfPart));
        const auto between = [dfPart](double dfMin, double dfMax) {
            return dfMin + dfPart * (dfMax - dfMin);
        };
        if (auto* pInt = qobject_cast<QSpinBox*>(p)) {
            pInt->setValue(int(between(pInt->minimum(), pInt->maximum())));
        } else if (auto* pDouble = qobject_cast<QDoubleSpinBox*>(p)) {
            pDouble->setValue(chance(50) ? between(pDouble->minimum(), pDouble->maximum()) : 20 * dfPart);
        } else if (auto* pCombo = qobject_cast<QComboBox*>(p)) {
            pCombo->setCurrentIndex(pick(pCombo->count()));
        } else if (auto* pSlider = qobject_cast<QSlider*>(p)) {
            pSlider->setValue(int(between(pSlider->minimum(), pSlider->maximum())));
        }
    }

    void clickButton(const QList<QWidget*>& listWidget)
    {
        QList<QAbstractButton*> listButton;
        for (QWidget* p : listWidget) {
            if (auto* pButton = qobject_cast<QAbstractButton*>(p)) {
                listButton.append(pButton);
            }
        }
        if (QAbstractButton* pButton = pickOf(listButton)) {
            say("button", nameOf(pButton));
            pButton->click();
        }
    }

    Qt::MouseButton pickButton()
    {
        return chance(75) ? Qt::LeftButton : chance(70) ? Qt::RightButton : Qt::MiddleButton;
    }
    Qt::KeyboardModifiers pickModifiers()
    {
        return chance(70) ? Qt::KeyboardModifiers(Qt::NoModifier)
                          : Qt::KeyboardModifiers(pick(4) * int(Qt::ShiftModifier));
    }

    void clickIn(QWidget* pTop, QWidget* pWidget)
    {
        const QPoint pt = pWidget->mapTo(pTop, pickPoint(pWidget));
        say("click", QStringLiteral("%1 at %2, %3").arg(nameOf(pWidget)).arg(pt.x()).arg(pt.y()));
        QWindow* pWindow = pTop->windowHandle();
        const Qt::MouseButton button = pickButton();
        if (pWindow && chance(15)) {
            QTest::mouseDClick(pWindow, button, pickModifiers(), pt);
        } else if (pWindow) {
            QTest::mouseClick(pWindow, button, pickModifiers(), pt);
        }
    }

    void dragIn(QWidget* pTop, QWidget* pWidget)
    {
        QWindow* pWindow = pTop->windowHandle();
        if (!pWindow) {
            return;
        }
        QPoint pt = pWidget->mapTo(pTop, pickPoint(pWidget));
        const QPoint ptEnd = chance(80) ? pWidget->mapTo(pTop, pickPoint(pWidget)) : pickPoint(pTop);
        const Qt::MouseButton button = pickButton();
        const Qt::KeyboardModifiers modifiers = pickModifiers();
        say("drag", QStringLiteral("%1 from %2, %3 to %4, %5")
                        .arg(nameOf(pWidget))
                        .arg(pt.x())
                        .arg(pt.y())
                        .arg(ptEnd.x())
                        .arg(ptEnd.y()));
        const QPointer<QWindow> pGuard(pWindow);
        QTest::mousePress(pWindow, button, modifiers, pt);
        m_bDragging = true;
        for (int i = 1; i <= 4 && pGuard; ++i) {
            QTest::mouseMove(pWindow, pt + (ptEnd - pt) * i / 4);
        }
        m_bDragging = false;
        if (pGuard) {
            QTest::mouseRelease(pWindow, button, modifiers, ptEnd);
        }
    }

    void turnWheel(QWidget* pWidget)
    {
        const QPoint pt = pickPoint(pWidget);
        const QPoint ptAngle(0, 120 * (pick(9) - 4));
        say("wheel", QStringLiteral("%1 by %2").arg(nameOf(pWidget)).arg(ptAngle.y()));
        QWheelEvent event(pt, pWidget->mapToGlobal(pt), {}, ptAngle, Qt::NoButton, pickModifiers(),
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(pWidget, &event);
    }

    void turnPage(const QList<QWidget*>& listWidget)
    {
        QList<QWidget*> listPages;
        for (QWidget* p : listWidget) {
            if (qobject_cast<QToolBox*>(p) || qobject_cast<QTabBar*>(p)) {
                listPages.append(p);
            }
        }
        QWidget* p = pickOf(listPages);
        if (auto* pToolBox = qobject_cast<QToolBox*>(p)) {
            const int nPage = pick(pToolBox->count());
            say("page", pToolBox->itemText(nPage));
            pToolBox->setCurrentIndex(nPage);
        } else if (auto* pTabs = qobject_cast<QTabBar*>(p)) {
            const int nTab = pick(pTabs->count());
            say("page", pTabs->tabText(nTab));
            pTabs->setCurrentIndex(nTab);
        }
    }

    void pressAnyKey(QWidget* pTop)
    {
        static const int s_aKey[] = {Qt::Key_Tab,    Qt::Key_Backtab,   Qt::Key_Return,  Qt::Key_Escape,
                                     Qt::Key_Space,  Qt::Key_Up,        Qt::Key_Down,    Qt::Key_Left,
                                     Qt::Key_Right,  Qt::Key_PageUp,    Qt::Key_Home,    Qt::Key_End,
                                     Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_F1,      Qt::Key_Plus,
                                     Qt::Key_Minus,  Qt::Key_Period,    Qt::Key_PageDown};
        const int nKey = chance(50)   ? s_aKey[pick(int(std::size(s_aKey)))]
                         : chance(50) ? Qt::Key_0 + pick(10)
                                      : Qt::Key_A + pick(26);
        static const Qt::KeyboardModifiers s_aModifiers[] = {Qt::NoModifier, Qt::ControlModifier,
                                                             Qt::ShiftModifier, Qt::AltModifier,
                                                             Qt::ControlModifier | Qt::ShiftModifier};
        press(pTop, nKey, s_aModifiers[chance(60) ? 0 : pick(5)]);
    }

    void press(QWidget* pTop, int nKey, Qt::KeyboardModifiers modifiers)
    {
        // Single letters of a path are never changed, as the path might then lead out of the folder.
        const auto* pEdit = qobject_cast<QLineEdit*>(pTop->focusWidget());
        const bool bPath = pEdit && pEdit->text().contains(QLatin1Char('/')) && nKey != Qt::Key_Return;
        say("key", QKeySequence(nKey | int(modifiers)).toString() +
                       (bPath ? QStringLiteral(" left out") : QString()));
        if (QWindow* pWindow = bPath ? nullptr : pTop->windowHandle()) {
            QTest::keyClick(pWindow, Qt::Key(nKey), modifiers);
        }
    }

    std::mt19937 m_random;
    QTemporaryDir m_folder;
    QString m_strSource;   ///< folder of the given series
    QString m_strProject;  ///< name of the project file
    QString m_strWork;     ///< folder of the copy
    std::unique_ptr<MainWindow> m_pWindow;
    const QWidget* m_pDialog = nullptr;  ///< the last dialog seen; only for comparison
    QElapsedTimer m_timer;
    double m_dfSeconds;
    int m_nDepth = 0;
    int m_nDeepest = 0;
    int m_nInDialog = 0;
    int m_nDialogs = 0;
    int m_nWindows = 0;
    bool m_bEnded = false;
    bool m_bDragging = false;  ///< during the moves of a drag
    QMap<QString, int> m_mapDone;
};

/// Prevents addresses from being opened in a browser.
class CNoBrowser : public QObject {
    Q_OBJECT
public slots:
    void open(const QUrl&) {}
};

}  // namespace

}  // namespace tessera

int main(int argc, char** argv)
{
    using namespace tessera;
    // Settings and data of the user are neither read nor written.
    const QTemporaryDir home;
    for (const char* pName : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        qputenv(pName, QFile::encodeName(home.path()));
    }
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    // Never deleted, as the offscreen platform loses its screen when the application is deleted.
    static const QApplication* pApplication = new QApplication(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Lumenarc"));
    QCoreApplication::setApplicationName(QStringLiteral("Tessera"));
    QStandardPaths::setTestModeEnabled(true);
    QApplication::setQuitOnLastWindowClosed(false);
    Q_INIT_RESOURCE(tessera);

    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("seed"), QStringLiteral("Of the choices; default: another each time."),
                      QStringLiteral("number"), QString::number(std::random_device()() % 1000000)});
    parser.addOption({QStringLiteral("seconds"), QStringLiteral("How long; default 60."),
                      QStringLiteral("number"), QStringLiteral("60")});
    parser.addOption({QStringLiteral("log"), QStringLiteral("Where the steps go; default: the output."),
                      QStringLiteral("file")});
    parser.addPositionalArgument(QStringLiteral("project"),
                                 QStringLiteral("The .ed3d file of a small series."));
    parser.process(*pApplication);
    if (parser.positionalArguments().size() != 1 ||
        !QFileInfo::exists(parser.positionalArguments().first())) {
        parser.showHelp(2);
    }
    if (parser.isSet(QStringLiteral("log"))) {
        g_pLog = std::fopen(QFile::encodeName(parser.value(QStringLiteral("log"))).constData(), "w");
    }
    if (!g_pLog) {
        return 2;
    }
    const unsigned nSeed = parser.value(QStringLiteral("seed")).toUInt();
    std::printf("seed %u\n", nSeed);
    std::fflush(stdout);
    std::fprintf(g_pLog, "seed %u\n", nSeed);

    CNoBrowser noBrowser;
    for (const char* pScheme : {"http", "https", "file", "mailto"}) {
        QDesktopServices::setUrlHandler(QString::fromLatin1(pScheme), &noBrowser, "open");
    }
    qInstallMessageHandler(keepMessage);
    watchForHangs(pthread_self());
    CMonkey monkey(parser.positionalArguments().first(), nSeed,
                   parser.value(QStringLiteral("seconds")).toDouble());
    QApplication::exec();
    monkey.closeWindow();
    monkey.printFigures();
    qInstallMessageHandler(nullptr);
    return g_nCritical == 0 ? 0 : 1;
}

#include "main.moc"
