// The tools of the window on a simulated series: what they find, how they are stopped, and where they expect
// reflections on a frame.
#include "app/mainwindow.h"
#include "app/messageedit.h"
#include "app/windowactions.h"
#include "batch/batchprogram.h"
#include "crystal/pages/refinementpage.h"
#include "frames/pages/extractionpage.h"
#include "frames/pages/framespage.h"
#include "frames/pages/peaksearchpage.h"
#include "frameview/circleitem.h"
#include "frameview/crossitem.h"
#include "frameview/originalimgscene.h"
#include "frameview/textitem.h"

#include <gtest/gtest.h>

#include <QtTest>
#include <QtWidgets>

#include <cmath>
#include <memory>

namespace {

const int g_nFrames = 41;

class Refinement : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_pDir = new QTemporaryDir;
        ASSERT_EQ(
            runProgram("tessera-simulate", {"--crystal", "quartz", "--frames", QString::number(g_nFrames),
                                            "--size", "320", "--pixel-size", "0.006", "--tilt-start", "-20",
                                            "--tilt-step", "1", "--out", s_pDir->path(), "--name", "w"})
                .nStatus,
            0);
        ASSERT_EQ(runBatch({"--window-defaults", "--to", "cell", s_pDir->filePath("w.ed3d")}).nStatus, 0);
    }
    static void TearDownTestSuite() { delete s_pDir; }
    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.filePath("settings"));
        makeWindow();
    }
    void makeWindow()
    {
        m_pWindow = std::make_unique<MainWindow>();
        m_pWindow->show();
        m_pPage = m_pWindow->findChild<ExtractionPage*>();
        m_pShowPeaks = m_pWindow->findChild<PeakSearchPage*>()->m_pShowPeaksCheck;
        m_pTabs = m_pWindow->findChild<QTabWidget*>();
        m_pWindow->openFiles({s_pDir->filePath("w.ed3d")});
        m_pTabs->setCurrentIndex(0);
    }
    void index()
    {
        m_pWindow->peakReduction3D();
        m_pWindow->runIndexing();
        m_pTabs->setCurrentIndex(0);
    }
    void tool(const char* pszText)
    {
        for (QAction* pAction : m_pWindow->findChild<WindowActions*>()->findChildren<QAction*>())
            if (pAction->text() == pszText)
                return pAction->trigger();
        FAIL() << pszText;
    }
    QString log() const { return m_pWindow->findChild<MessageEdit*>()->toPlainText(); }
    /// The numbers behind the last occurrence of a text in the log.
    QList<double> numbers(const QString& strHead) const
    {
        QList<double> list;
        for (const QString& str : log().section(strHead, -1).section('\n', 0, 0).split(','))
            list.append(str.toDouble());
        return list;
    }
    /// The places of the marks of a kind and colour.
    template <typename TItem>
    QList<QPointF> marks(const QColor& color) const
    {
        QList<QPointF> list;
        for (QGraphicsItem* pItem : m_pWindow->findChild<OriginalImgScene*>()->items())
            if (auto* pMark = dynamic_cast<TItem*>(pItem)) {
                if constexpr (std::is_same_v<TItem, TextItem>)
                    list += pMark->brush().color() == color ? QList<QPointF>{pMark->pos()} : QList<QPointF>();
                else
                    list += pMark->pen().color() == color ? QList<QPointF>{pMark->pos()} : QList<QPointF>();
            }
        return list;
    }
    /// Calls fn from the events that a run lets through, until it is true.
    void during(const std::function<bool()>& fn)
    {
        auto* pTimer = new QTimer(m_pWindow.get());
        QObject::connect(pTimer, &QTimer::timeout, pTimer, [pTimer, fn] {
            if (fn())
                pTimer->deleteLater();
        });
        pTimer->start(1);
    }

    static QTemporaryDir* s_pDir;
    QTemporaryDir m_dir;
    std::unique_ptr<MainWindow> m_pWindow;
    ExtractionPage* m_pPage = nullptr;
    QCheckBox* m_pShowPeaks = nullptr;
    QTabWidget* m_pTabs = nullptr;
};
QTemporaryDir* Refinement::s_pDir = nullptr;

}  // namespace

TEST_F(Refinement, EachToolFindsWhatTheSimulationPutThere)
{
    auto* pRefine = m_pWindow->findChild<RefinementPage*>();
    for (const char* psz : {"&Extract Intensities", "Refine &Direct Beam Position", "Refine &Basis Vectors",
                            "Refine Cell by Frame &Numbers", "Find &Cubic Cell", "&Refine Cubic Cell"})
        tool(psz);
    m_pPage->m_pButtonRun->click();
    pRefine->m_pButtonRunRefinement->click();
    tool("Test &Stretching");
    EXPECT_FALSE(QFile::exists(s_pDir->filePath("w_pos.txt")));
    EXPECT_EQ(log().count("No indexed peaks are available. Do merging and indexing first."), 7);
    QStatusTipEvent eventTip(m_pPage->m_pButtonRun->statusTip());
    QCoreApplication::sendEvent(m_pPage->m_pButtonRun, &eventTip);
    EXPECT_EQ(m_pWindow->statusBar()->currentMessage(), "Run intensity extraction");
    EXPECT_EQ(log().count("Frame counts do not match."), 2);

    index();
    const QRegularExpression expBeam(
        "\n +\\d+( +-?[0-9.]+){4} +(-?[0-9.]+) +(-?[0-9.]+)( +[0-9.]+){3} [1-8](?=\n)");
    during([&] {  // each fit takes its time
        if (log().count(expBeam) < 3)
            return false;
        EXPECT_EQ(marks<CircleItem>(Qt::green).size(), 1);
        tool("&Fit Direct Beam");
        return true;
    });
    tool("&Fit Direct Beam");
    EXPECT_TRUE(log().contains("Evaluation of the direct beam did not finish."));
    for (auto it = expBeam.globalMatch(log()); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        EXPECT_LT(std::hypot(match.captured(2).toDouble(), match.captured(3).toDouble()), 1.5);
    }
    EXPECT_TRUE(marks<CircleItem>(Qt::green).isEmpty() && m_pPage->m_pButtonRun->text() == "Run");

    for (const char* psz : {"Test Rotation &Axis", "Refine &Basis Vectors", "Refine Cell by Frame &Numbers"})
        tool(psz);
    EXPECT_TRUE(log().contains("Max Angle Weighted:") && log().contains(" using "));
    const QList<double> listError = numbers("Averaged error before and after refinement: ");
    EXPECT_TRUE(listError.size() == 2 && listError[1] < listError[0] && listError[0] < 1 && listError[1] > 0);
    pRefine->m_pSpinRefineDStarLow->setValue(5);
    pRefine->m_pSpinRefineDStarHigh->setValue(6);
    tool("Refine &Direct Beam Position");  // no two peaks are so far apart
    EXPECT_FALSE(log().contains("End values:"));
    pRefine->m_pSpinRefineDStarLow->setValue(2);
    pRefine->m_pSpinRefineDStarHigh->setValue(0.5);
    tool("Refine &Direct Beam Position");
    EXPECT_TRUE(log().contains("End values:"));
    pRefine->m_pCheckRefine2D->setChecked(true);
    pRefine->m_pButtonRunRefinement->click();
    QList<double> listCell = numbers("Unit cell after UCLS refinement: ");
    std::sort(listCell.begin(), listCell.end());
    const QList<double> listQuartz = {4.913, 4.913, 5.405, 90, 90, 120};
    ASSERT_EQ(listCell.size(), 6);
    for (int i = 0; i < 6; ++i)
        EXPECT_NEAR(listCell[i], listQuartz[i], 0.003 * listQuartz[i]);
}

TEST_F(Refinement, ExtractionLeavesNoOtherReflectionsData)
{
    index();
    tool("Show Peak Labels");
    m_pWindow->switchToImgIndex(11);
    const QList<QPointF> listStrongest = marks<TextItem>(Qt::red);
    ASSERT_FALSE(listStrongest.isEmpty());
    auto* pTable = dynamic_cast<QTableView*>(m_pTabs->widget(3))->model();
    const int nRows = pTable->rowCount();

    // A frame that is missing, and a stop: all stays, the labels too.
    const QString strFrame = s_pDir->filePath(QDir(s_pDir->path()).entryList({"w*15.mrc"}).value(0));
    ASSERT_TRUE(QFile::rename(strFrame, strFrame + "away"));
    tool("&Extract Intensities");
    QFile::rename(strFrame + "away", strFrame);
    during([this] {
        const bool bStop = m_pPage->m_pButtonRun->text() == "Stop" && !marks<CircleItem>(Qt::green).isEmpty();
        if (bStop)
            tool("&Stop");
        return bStop;
    });
    tool("&Extract Intensities");
    EXPECT_EQ(log().count("Intensity extraction did not finish."), 2);
    EXPECT_EQ(marks<TextItem>(Qt::red), listStrongest);
    EXPECT_TRUE(m_pWindow->showPeakInCurve(0) && pTable->rowCount() == nRows && m_pTabs->currentIndex() == 0);

    tool("&Extract Intensities");
    EXPECT_EQ(m_pTabs->currentIndex(), 2);
    EXPECT_GT(pTable->rowCount(), 2 * nRows) << "one row per peak on a frame";
    m_pTabs->setCurrentIndex(0);
    EXPECT_TRUE(!m_pWindow->showPeakInCurve(0) && marks<TextItem>(Qt::red).isEmpty());
    tool("Refine &Basis Vectors");  // which would be of the reflections that have left
    EXPECT_TRUE(log().endsWith("No indexed peaks are available. Do merging and indexing first."));
}

TEST_F(Refinement, CrossesShowThePositionsBeforeAndAfterAFit)
{
    index();
    m_pShowPeaks->setChecked(true);
    QElapsedTimer timer;
    during([&] {
        if (marks<CrossItem>(Qt::yellow).isEmpty())
            return false;
        timer.start();
        m_pPage->m_pButtonRun->click();  // which began the run
        return true;
    });
    m_pPage->m_pButtonRun->click();
    EXPECT_TRUE(timer.isValid() && timer.elapsed() < 700) << "of the second that the crosses stand";
    EXPECT_TRUE(log().contains("Peak position refinement did not finish."));
    EXPECT_TRUE(marks<CrossItem>(Qt::yellow).isEmpty());
}

TEST_F(Refinement, ExpectedPositionsFallOnPeaksOfTheRightAxisOnly)
{
    m_pShowPeaks->setChecked(true);
    m_pPage->m_pCheckShowEstimated->setChecked(true);
    auto* pAxis = m_pWindow->findChild<FramesPage*>()->m_pRotationAxisSpin;
    for (double dfTurn : {0.0, 20.0, -20.0}) {
        pAxis->setValue(pAxis->value() + dfTurn);
        int nCircles = 0, nNear = 0;
        for (int nFrame = g_nFrames; nFrame > 10; --nFrame) {
            m_pWindow->switchToImgIndex(nFrame);
            const QList<QPointF> listCross = marks<CrossItem>(Qt::green),
                                 listCircle = marks<CircleItem>(Qt::cyan);
            nCircles += listCircle.size();
            for (const QPointF& pt : listCircle)
                nNear += std::any_of(listCross.begin(), listCross.end(), [&](const QPointF& ptCross) {
                    return std::hypot(pt.x() - ptCross.x(), pt.y() - ptCross.y()) < 2;
                });
        }
        EXPECT_GT(nCircles, 60);
        EXPECT_EQ(nNear > (dfTurn > 0 ? 0.1 : 0.7) * nCircles, dfTurn <= 0) << nNear << " of " << nCircles;
    }
    // At once: the limit, the way, the box.
    const int nBefore = marks<CircleItem>(Qt::cyan).size();
    m_pPage->m_pSpinResolutionLimit->setValue(0.3);
    EXPECT_LT(marks<CircleItem>(Qt::cyan).size(), nBefore);
    m_pPage->m_pRadioIndexedReflections->setChecked(true);
    EXPECT_TRUE(marks<CircleItem>(Qt::cyan).isEmpty());
    index();
    EXPECT_FALSE(marks<CircleItem>(Qt::cyan).isEmpty());
    m_pPage->m_pCheckShowEstimated->setChecked(false);
    EXPECT_TRUE(marks<CircleItem>(Qt::cyan).isEmpty());
}

TEST_F(Refinement, SettingsLeaveReflectionsOutAndShowTheTestRuns)
{
    index();
    tool("Refine Cell by Frame &Numbers");
    const QRegularExpressionMatch match =
        QRegularExpression("(?<=DD\n) *(\\S+) +(\\S+) +(\\S+) .*").match(log());
    ASSERT_TRUE(match.hasMatch());
    QSettings settings("Lumenarc", "Tessera");
    settings.setValue("excludedReflections", match.capturedTexts().mid(1).join(',') + "; 50,1,-1");
    settings.setValue("referenceCell", "1,2");
    for (bool bTestRuns : {false, true}) {
        settings.setValue("showTestRuns", bTestRuns);
        settings.sync();
        makeWindow();
        for (const QMenu* pMenu : m_pWindow->findChildren<QMenu*>())
            EXPECT_TRUE(pMenu->title() != "Test &Runs" || pMenu->menuAction()->isVisible() == bTestRuns);
    }
    EXPECT_EQ(log().count("is not understood and not used: 1,2"), 1);
    index();
    tool("Refine Cell by Frame &Numbers");
    EXPECT_TRUE(log().contains("Averaged error") && !log().contains(match.captured(0)));
}
