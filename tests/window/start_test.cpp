// The page of a window without a data set: when it is there, its list, its keys, and the demo.
#include "dataset/unitcellfile.h"
#include "geometry/reciprocalbasis.h"
#include "tests/window/windowtest.h"
#include "window/newproject/framelistbox.h"
#include "window/newproject/pixelsizebox.h"
#include "window/newproject/projectfilerow.h"
#include "window/newproject/tiltsbox.h"
#include "window/newprojectdialog.h"
#include "window/start/recentseries.h"
#include "window/start/startcontroller.h"
#include "window/start/startpage.h"

namespace tessera {

namespace {

class Start : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        m_pPage = m_pWindow->findChild<StartPage*>();
        ASSERT_NE(m_pPage, nullptr);
        writePicture("a.png", [](int x, int) { return x; });
    }
    void newWindowWithPage()
    {
        newWindow();
        m_pPage = m_pWindow->findChild<StartPage*>();
    }
    QString project(const QString& strName) const
    {
        return writeProject(strName, {"a.png 0 0 0", "a.png 1 0 1"});
    }
    QString cell(int nRow, int nColumn) const
    {
        return m_pPage->m_pRecentList->topLevelItem(nRow)->text(nColumn);
    }
    /// The demo in small, for whoever asks for it by the page of a controller of its own.
    DemoOptions smallDemo() const
    {
        return {QStringLiteral(TESSERA_BIN_DIR "/tessera-simulate"), path("data/demo"), 3, 64};
    }

    StartPage* m_pPage = nullptr;
};

}  // namespace

TEST_F(Start, ThePageIsThereAsLongAsNoDataSetIs)
{
    m_pWindow->show();
    EXPECT_TRUE(m_pPage->isVisible());
    EXPECT_EQ(m_pTabs->widget(0), m_pView) << "the page lies over the view and takes no tab";
    EXPECT_EQ(m_pPage->geometry(), m_pView->rect());
    m_pWindow->resize(1000, 700);
    QCoreApplication::processEvents();
    EXPECT_EQ(m_pPage->geometry(), m_pView->rect());
    EXPECT_FALSE(m_pActions->m_pClose->isEnabled());
    // What is dropped anywhere on it goes on to the window.
    for (QWidget* p : m_pPage->findChildren<QWidget*>() + QList<QWidget*>{m_pPage}) {
        EXPECT_FALSE(p->acceptDrops() && !qobject_cast<QLineEdit*>(p)) << p->metaObject()->className();
    }

    m_pWindow->openFiles({write("bad.ed3d", "WAVELENGTH 0.0251\n")});
    EXPECT_TRUE(m_pPage->isVisible()) << "nothing was opened";
    m_pWindow->openFiles({project("a.ed3d")});
    EXPECT_FALSE(m_pPage->isVisible());
    EXPECT_TRUE(m_pActions->m_pClose->isEnabled());
    EXPECT_EQ(m_pFrames->m_pFileTable->rowCount(), 2);

    m_pActions->m_pClose->trigger();
    EXPECT_TRUE(m_pPage->isVisible());
    EXPECT_FALSE(m_pActions->m_pClose->isEnabled());
    EXPECT_EQ(m_pFrames->m_pFileTable->rowCount(), 0);
    EXPECT_FALSE(m_pSpin->isEnabled());
    EXPECT_EQ(m_pWindow->windowFilePath(), "");
    EXPECT_TRUE(m_pScene->images().empty());
    m_pWindow->openFiles({path("a.png")});
    EXPECT_FALSE(m_pPage->isVisible());
    EXPECT_EQ(m_pFrames->m_pFileTable->rowCount(), 1);
}

TEST_F(Start, TheListTellsCellsAndWhatIsGone)
{
    const QString strFirst = project("first.ed3d"), strGone = project("gone.ed3d");
    write("first.uc", unitCellText(*basisFromList({{1 / 8.0f, 0, 0}, {0, 1 / 8.0f, 0}, {0, 0, 1 / 6.0f}})));
    // The list of a version that noted no dates.
    QSettings("Lumenarc", "Tessera").setValue("recentSeriesList", QStringList{strGone});
    newWindowWithPage();
    m_pWindow->openFiles({strFirst});
    QFile::remove(strGone);
    m_pActions->m_pClose->trigger();
    m_pWindow->show();

    QTreeWidget* pList = m_pPage->m_pRecentList;
    ASSERT_EQ(pList->topLevelItemCount(), 2);
    QTRY_COMPARE(cell(1, 1), QString("not found"));
    const QLocale locale = QLocale::system();
    EXPECT_EQ(cell(0, 0), "first.ed3d");
    EXPECT_TRUE(cell(0, 1).startsWith(locale.toString(8.0, 'f', 2))) << cell(0, 1).toStdString();
    EXPECT_EQ(cell(0, 2), "tP, tetragonal");
    EXPECT_EQ(cell(0, 3), "2");
    EXPECT_EQ(cell(0, 4), locale.toString(QDate::currentDate(), QLocale::ShortFormat));
    EXPECT_EQ(cell(1, 4), "");
    EXPECT_EQ(cell(0, 5), QDir::toNativeSeparators(m_dir.path()));
    EXPECT_NE(pList->topLevelItem(1)->foreground(0).color(), pList->palette().color(QPalette::Text));

    // By keys: what is gone does not open, and goes from list, menu and settings.
    ASSERT_NO_FATAL_FAILURE(activate());
    pList->setFocus();
    pList->setCurrentItem(pList->topLevelItem(1));
    EXPECT_FALSE(m_pPage->m_pOpenRecentButton->isEnabled());
    QTest::keyClick(pList, Qt::Key_Return);
    EXPECT_TRUE(m_pPage->isVisible());
    QTest::keyClick(pList, Qt::Key_Delete);
    EXPECT_EQ(pList->topLevelItemCount(), 1);
    EXPECT_EQ(setting("recentSeriesList").toStringList(), QStringList(strFirst));
    EXPECT_FALSE(m_pActions->m_listRecent[1]->isVisible());
    EXPECT_EQ(pList->currentItem(), pList->topLevelItem(0)) << "the keyboard goes on from there";
    QTest::keyClick(pList, Qt::Key_Return);
    EXPECT_FALSE(m_pPage->isVisible());
    EXPECT_EQ(m_pWindow->windowFilePath(), "first.ed3d");
}

TEST_F(Start, EachWayInIsReachedByTheKeyboard)
{
    m_pWindow->openFiles({project("a.ed3d")});
    m_pActions->m_pClose->trigger();
    m_pWindow->show();
    ASSERT_NO_FATAL_FAILURE(activate());
    m_pPage->m_pOpenButton->setFocus();
    QList<QWidget*> listReached;
    for (int i = 0; i < 4; ++i) {
        listReached.append(QApplication::focusWidget());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(listReached[3], m_pPage->m_pRecentList);
    for (QWidget* p : listReached) {
        EXPECT_NE(p->accessibleName(), "") << p->metaObject()->className();
    }
    listReached[0]->setFocus();
    EXPECT_EQ(answered({}, [&] { QTest::keyClick(listReached[0], Qt::Key_Return); }),
              QStringList("Open Files"));
    listReached[1]->setFocus();
    EXPECT_EQ(answered({}, [&] { QTest::keyClick(listReached[1], Qt::Key_Enter); }),
              QStringList("New Project"));
}

TEST(RecentSeriesList, KeepsOrderDatesAndLength)
{
    QTemporaryDir dir;
    QSettings settings(dir.filePath("s.ini"), QSettings::IniFormat);
    const QDateTime begin(QDate(2026, 3, 1), QTime(12, 0));
    for (int i = 0; i < 25; ++i) {
        enterRecentSeries(settings, {QStringLiteral("/x/%1.ed3d").arg(i)}, begin.addDays(i));
    }
    enterRecentSeries(settings, {"/x/10.ed3d"}, begin.addDays(100));
    QList<RecentSeries> list = recentSeries(settings);
    ASSERT_EQ(list.size(), 20);
    EXPECT_EQ(list[0].listFile, QStringList("/x/10.ed3d"));
    EXPECT_EQ(list[0].lastUse, begin.addDays(100));
    EXPECT_EQ(list[1].lastUse, begin.addDays(24));
    removeRecentSeries(settings, {"/x/24.ed3d"});
    list = recentSeries(settings);
    ASSERT_EQ(list.size(), 19);
    EXPECT_EQ(list[1].listFile, QStringList("/x/23.ed3d"));
    EXPECT_EQ(list[1].lastUse, begin.addDays(23));
}

TEST_F(Start, TheDemoIsMadeOnceAndOpened)
{
    QStringList listOpened, listComplaint;
    StartHost host;
    host.fnSettings = [this] { return std::make_unique<QSettings>(path("own.ini"), QSettings::IniFormat); };
    host.fnOpenFiles = [&](const QStringList& listFile) {
        listOpened += listFile;
        m_pWindow->openFiles(listFile);
    };
    host.fnComplain = [&](const QString& str) { listComplaint += str; };
    QWidget view;
    StartController controller(host, &view, smallDemo());
    view.show();
    StartPage& page = controller.page();
    QPushButton* pDemo = page.m_pDemoButton;
    pDemo->click();
    EXPECT_TRUE(page.m_pDemoProgress->isVisible());
    EXPECT_FALSE(pDemo->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(listOpened, QStringList(path("data/demo/demo.ed3d")), 60000);
    EXPECT_FALSE(page.m_pDemoProgress->isVisible());
    EXPECT_EQ(m_pFrames->m_pFileTable->rowCount(), 3);
    EXPECT_FALSE(m_pScene->images().empty());
    EXPECT_EQ(QDir(path("data")).entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList("demo"));

    const QDateTime date = QFileInfo(path("data/demo/demo.ed3d")).lastModified();
    pDemo->click();
    EXPECT_EQ(listOpened.size(), 2) << "what is there is opened at once";
    EXPECT_EQ(QFileInfo(path("data/demo/demo.ed3d")).lastModified(), date);
    EXPECT_TRUE(listComplaint.isEmpty());
}

TEST_F(Start, ADemoThatIsStoppedOrFailsLeavesNothing)
{
    const auto ended = [&](const DemoOptions& options, bool bStop) {
        DemoSeries demo(options);
        QSignalSpy spyMade(&demo, &DemoSeries::made), spyStopped(&demo, &DemoSeries::stopped),
            spyFailed(&demo, &DemoSeries::failed);
        demo.start();
        if (bStop) {
            demo.stop();
        }
        EXPECT_TRUE(QTest::qWaitFor([&] { return spyMade.size() + spyStopped.size() + spyFailed.size() > 0; },
                                    60000));
        EXPECT_TRUE(spyMade.isEmpty());
        return spyStopped.isEmpty() ? spyFailed.value(0).value(0).toString() : QString("stopped");
    };
    DemoOptions options = smallDemo();
    options.nFrames = 120;
    options.nSize = 512;
    EXPECT_EQ(ended(options, true), "stopped");
    options.nSize = -1;
    EXPECT_NE(ended(options, false), "");
    options.strProgram = path("none");
    EXPECT_NE(ended(options, false), "");
    options.strProgram.clear();
    EXPECT_EQ(ended(options, false), "The program tessera-simulate is not there.");
    EXPECT_TRUE(QDir(path("data")).isEmpty());
    {
        DemoSeries demo(smallDemo());
        demo.start();
    }  // the window is closed meanwhile
    EXPECT_TRUE(QDir(path("data")).isEmpty());
    // A folder of the user's own is in the way, and stays.
    QDir(m_dir.path()).mkpath("data/demo");
    write("data/demo/mine", "x");
    EXPECT_TRUE(ended(smallDemo(), false).contains("in the way"));
    EXPECT_EQ(QDir(path("data/demo")).entryList(QDir::Files), QStringList("mine"));
}

TEST_F(Start, ANewProjectIsSolvedAtOnceWhereThatIsWished)
{
    for (int i = 0; i < 3; ++i) {
        writePicture(QStringLiteral("f%1.png").arg(i), [](int x, int y) { return (x * y) % 50; });
    }
    const auto make = [&](bool bWishedBefore, bool bWish) {
        QTimer::singleShot(0, [&] {
            auto* pDialog = qobject_cast<NewProjectDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(pDialog, nullptr);
            EXPECT_EQ(pDialog->m_pSolveCheck->isChecked(), bWishedBefore);
            pDialog->m_pSolveCheck->setChecked(bWish);
            pDialog->addFrames({path("f0.png"), path("f1.png"), path("f2.png")});
            pDialog->m_pTilts->m_pTiltStepSpin->setValue(1);
            pDialog->m_pPixels->m_pPixelSizeSpin->setValue(0.004);
            pDialog->m_pFile->m_pFileEdit->setText(path(bWish ? "solved.ed3d" : "plain.ed3d"));
            emit pDialog->m_pFile->m_pFileEdit->textEdited(pDialog->m_pFile->m_pFileEdit->text());
            ASSERT_EQ(pDialog->m_pProblemLabel->text(), "");
            pDialog->m_pButtons->button(QDialogButtonBox::Ok)->click();
        });
        m_pActions->m_pNewProject->trigger();
    };
    make(false, false);
    EXPECT_FALSE(QFile::exists(path("plain.log"))) << "nobody has asked for it";
    make(false, true);
    EXPECT_EQ(m_pWindow->windowFilePath(), "solved.ed3d");
    EXPECT_TRUE(QFile::exists(path("solved.log"))) << log().toStdString();
    EXPECT_TRUE(setting("NewProject/SolveAtOnce").toBool());
}

}  // namespace tessera
