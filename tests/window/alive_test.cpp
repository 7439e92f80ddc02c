// The window goes on while runs compute: no run keeps its thread for long, and
// clicks are answered meanwhile.
#include "tests/window/loopwatch.h"
#include "tests/window/seriestest.h"
#include "window/aliverun.h"
#include "window/crystal/geometrydialog.h"
#include "window/pages/integrationpage.h"
#include "window/road/roaddock.h"

#include <atomic>
#include <ctime>
#include <random>

namespace tessera {

namespace {

class Alive : public SeriesTest {
protected:
    static void SetUpTestSuite()
    {
        makeSeries("--frames 61 --size 320 --pixel-size 0.007 --tilt-start -30 --tilt-step 1");
    }
    void SetUp() override
    {
        SeriesTest::SetUp();
        m_pWindow->resize(1280, 800);
        m_pWindow->show();
        open();
    }
    void solve() const { m_pActions->m_pSolve->trigger(); }
};

/// CPU time of the whole process, ms.
double processCpu()
{
    return 1e3 * double(std::clock()) / CLOCKS_PER_SEC;
}

/// What this build on this machine takes to sort a million numbers, ms of CPU:
/// about the time in which an answer is still taken for one at once.
double costOfReference()
{
    std::mt19937 random(1);
    std::vector<double> vecNumber(1000000);
    for (double& df : vecNumber) {
        df = random();
    }
    const double dfBegin = threadCpu();
    std::sort(vecNumber.begin(), vecNumber.end());
    return threadCpu() - dfBegin + (vecNumber[0] > vecNumber[1]);
}

}  // namespace

TEST_F(Alive, NoRunKeepsTheThreadOfTheWindow)
{
    solve();
    ASSERT_EQ(lines("", Qt::red), 0) << log().toStdString();
    const double dfLimit = 1.5 * costOfReference();
    const struct {
        const char* pszName;
        std::function<void()> fnRun;
    } aRun[] = {
        {"solve", [&] { solve(); }},
        {"shifts",
         [&] {
             m_pTabs->setCurrentIndex(0);
             m_pActions->m_listSelection[2]->trigger();
             m_pShift->m_pRunButton->click();
         }},
        {"hunting", [&] { m_pSearch->m_pRunButton->click(); }},
        {"merging", [&] { m_pMerging->m_pButtonMerge->click(); }},
        {"cell", [&] { m_pCell->m_pButtonSearchCell->click(); }},
        {"indexing", [&] { m_pCell->m_pButtonIndexMergedPeaks->click(); }},
        {"lattices", [&] { m_pWindow->runLatticeAnalysis(); }},
        {"geometry", [&] { m_pWindow->findChild<GeometryDialog*>()->m_pButtonRun->click(); }},
        {"integration", [&] { m_pWindow->findChild<IntegrationPage*>()->m_pButtonIntegrate->click(); }},
        {"opening", [&] { open(); }},
    };
    CLoopWatch watch;
    int nLong = 0;  // runs that could not have passed in one go
    for (const auto& run : aRun) {
        QCoreApplication::processEvents();
        const double dfBegin = processCpu();
        watch.begin();
        run.fnRun();
        watch.round();
        nLong += processCpu() - dfBegin > dfLimit;
        EXPECT_LT(watch.longestCpu(), dfLimit) << run.pszName;
    }
    EXPECT_GE(nLong, 3) << "the series is too small to tell anything";
    EXPECT_EQ(log().count("did not finish"), 0);
}

TEST_F(Alive, ClicksAreAnsweredWhileTheRoadIsUnderWay)
{
    auto* pRoad = m_pWindow->findChild<RoadDock*>();
    auto* pToolBox = m_pWindow->findChild<QToolBox*>();
    m_pTabs->setCurrentIndex(0);
    bool bBusy = false;
    during([&] { solve(); },
           [&] {
               if (!log().contains("Image shift evaluation started")) {
                   return false;
               }
               bBusy = true;
               // The picture of another frame, bare, in the place of the one
               // before.
               const QImage before = m_pView->viewport()->grab().toImage();
               m_pSlider->setValue(40);
               EXPECT_EQ(m_pSpin->value(), 40);
               EXPECT_NE(m_pView->viewport()->grab().toImage(), before);
               m_pTabs->setCurrentIndex(3);
               EXPECT_TRUE(m_pTable->isVisible());
               pToolBox->setCurrentWidget(m_pMerging);
               EXPECT_EQ(pToolBox->currentWidget(), m_pMerging);
               QMenu* pMenu = m_pWindow->menuBar()->actions().first()->menu();
               pMenu->popup({0, 0});
               EXPECT_TRUE(pMenu->isVisible());
               pMenu->close();
               m_pTabs->setCurrentIndex(0);
               pRoad->m_pSolveButton->click();
               return true;
           });
    EXPECT_TRUE(bBusy);
    EXPECT_EQ(m_pSpin->value(), 40);
    EXPECT_EQ(pRoad->m_pSolveButton->text(), "Solve");
}

/// A report in the thread of the window that counts and stops.
struct AliveReport : CRunReport {
    void addMessage(const QString& strText, Severity) override
    {
        EXPECT_EQ(QThread::currentThread(), pWindow);
        listText.append(strText);
    }
    void setProgress(int nValue) override { listText.append(QString::number(nValue)); }
    bool goOn() override
    {
        EXPECT_EQ(QThread::currentThread(), pWindow);
        ++nAsked;
        return !bStop;
    }
    QThread* pWindow = QThread::currentThread();
    QStringList listText;
    int nAsked = 0;
    bool bStop = false;
};

TEST(AliveRun, WhatIsSaidComesInOrderAndAStopAtOnce)
{
    AliveReport report;
    CAliveRun run;
    QStringList listWanted;
    run.run(report, [&] {
        EXPECT_NE(QThread::currentThread(), report.pWindow);
        for (int n = 0; n < 300; ++n) {
            listWanted << QString("line %1").arg(n) << QString::number(n);
            run.addMessage(QString("line %1").arg(n));
            run.setProgress(n);
        }
        run.inWindow([&] { EXPECT_EQ(report.listText, listWanted); });
        EXPECT_TRUE(run.goOn());
        EXPECT_EQ(report.listText, listWanted) << "a question comes after the lines before it";
        run.inWindow([&] { report.bStop = true; });
        EXPECT_FALSE(run.goOn()) << "as if the events had been handled here";
        run.addMessage(QString(120, '\n') + "end");  // a table of the log
        run.fail("the reason");
    });
    EXPECT_EQ(report.listText.mid(600).join('\n'), QString(120, '\n') + "end\nthe reason");
    EXPECT_EQ(report.listText.size(), 600 + 3 + 1);
    EXPECT_EQ(report.reason(), "the reason");
    EXPECT_EQ(report.listText.last(), "the reason");
}

// While the run computes the window is asked again and again.
TEST(AliveRun, WhatEitherSideThrowsComesOut)
{
    AliveReport report;
    CAliveRun run;
    const auto sleepAndThrow = [&](bool bInWindow) {
        EXPECT_THROW(run.run(report,
                             [&] {
                                 QThread::msleep(200);
                                 const auto fnThrow = [] { throw std::bad_alloc(); };
                                 if (bInWindow) {
                                     run.guardInWindow(fnThrow);
                                     EXPECT_FALSE(run.goOn());
                                 } else {
                                     run.inWindow(fnThrow);
                                 }
                             }),
                     std::bad_alloc);
    };
    sleepAndThrow(true);
    EXPECT_GE(report.nAsked, 3);
    sleepAndThrow(false);
}

}  // namespace tessera
