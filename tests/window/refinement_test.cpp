// The tools of the window on a simulated series: what they find, how they are stopped, and where they expect
// reflections on a frame.
#include "frameview/circleitem.h"
#include "frameview/crossitem.h"
#include "frameview/textitem.h"
#include "tests/window/seriestest.h"

#include <cmath>

namespace tessera {

namespace {

const int g_nRefinedFrames = 41;

class Refinement : public SeriesTest {
protected:
    static void SetUpTestSuite()
    {
        makeSeries("--frames 41 --size 320 --pixel-size 0.006 --tilt-start -20 --tilt-step 1", "cell");
    }
    void SetUp() override
    {
        SeriesTest::SetUp();
        open();
    }
    void open()
    {
        m_pWindow->show();
        SeriesTest::open();
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
        for (QAction* pAction : m_pActions->findChildren<QAction*>()) {
            if (pAction->text() == pszText) {
                return pAction->trigger();
            }
        }
        FAIL() << pszText;
    }
    /// The numbers behind the last occurrence of a text in the log.
    QList<double> numbers(const QString& strHead) const
    {
        QList<double> list;
        for (const QString& str : log().section(strHead, -1).section('\n', 0, 0).split(',')) {
            list.append(str.toDouble());
        }
        return list;
    }
    /// The places of the marks of a kind and colour.
    template <typename TItem>
    QList<QPointF> places(const QColor& color) const
    {
        QList<QPointF> list;
        for (const TItem* pMark : marks<TItem>(color)) {
            list.append(pMark->pos());
        }
        return list;
    }
};

}  // namespace

TEST_F(Refinement, EachToolTellsThatIndexedPeaksAreMissing)
{
    for (const char* psz : {"&Extract Intensities", "Refine &Direct Beam Position", "Refine &Basis Vectors",
                            "Refine Cell by Frame &Numbers", "Find &Cubic Cell", "&Refine Cubic Cell"}) {
        tool(psz);
    }
    m_pExtraction->m_pButtonRun->click();
    m_pRefine->m_pButtonRunRefinement->click();
    tool("Test &Stretching");
    EXPECT_FALSE(QFile::exists(file("w_pos.txt")));
    EXPECT_EQ(log().count("No indexed peaks are available. Do merging and indexing first."), 7);
    QStatusTipEvent eventTip(m_pExtraction->m_pButtonRun->statusTip());
    QCoreApplication::sendEvent(m_pExtraction->m_pButtonRun, &eventTip);
    EXPECT_EQ(m_pWindow->statusBar()->currentMessage(), "Run intensity extraction");
    EXPECT_EQ(log().count("Frame counts do not match."), 2);
}

TEST_F(Refinement, TheDirectBeamOfEachFrameIsFittedUntilItIsStopped)
{
    index();
    const QRegularExpression expBeam(
        "\n +\\d+( +-?[0-9.]+){4} +(-?[0-9.]+) +(-?[0-9.]+)( +[0-9.]+){3} [1-8](?=\n)");
    during([this] { tool("&Fit Direct Beam"); },
           [&] {  // each fit takes its time
               if (log().count(expBeam) < 3) {
                   return false;
               }
               EXPECT_EQ(places<CircleItem>(Qt::green).size(), 1);
               tool("&Fit Direct Beam");
               return true;
           });
    EXPECT_TRUE(log().contains("Evaluation of the direct beam did not finish."));
    for (auto it = expBeam.globalMatch(log()); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        EXPECT_LT(std::hypot(match.captured(2).toDouble(), match.captured(3).toDouble()), 1.5);
    }
    EXPECT_TRUE(places<CircleItem>(Qt::green).isEmpty());
    EXPECT_EQ(m_pExtraction->m_pButtonRun->text(), "Run");
}

TEST_F(Refinement, TheToolsRefineBasisAndFrameNumbers)
{
    index();
    for (const char* psz :
         {"Test Rotation &Axis", "Refine &Basis Vectors", "Refine Cell by Frame &Numbers"}) {
        tool(psz);
    }
    EXPECT_TRUE(log().contains("Max Angle Weighted:"));
    EXPECT_TRUE(log().contains(" using "));
    const QList<double> listError = numbers("Averaged error before and after refinement: ");
    ASSERT_EQ(listError.size(), 2);
    EXPECT_LT(listError[0], 1);
    EXPECT_LT(listError[1], listError[0]);
    EXPECT_GT(listError[1], 0);
}

TEST_F(Refinement, TheDirectBeamIsRefinedByPairsOfPeaksWithinTheLimits)
{
    index();
    m_pRefine->m_pSpinRefineDStarLow->setValue(5);
    m_pRefine->m_pSpinRefineDStarHigh->setValue(6);
    tool("Refine &Direct Beam Position");  // no two peaks are so far apart
    EXPECT_FALSE(log().contains("End values:"));
    m_pRefine->m_pSpinRefineDStarLow->setValue(2);
    m_pRefine->m_pSpinRefineDStarHigh->setValue(0.5);
    tool("Refine &Direct Beam Position");
    EXPECT_TRUE(log().contains("End values:"));
}

TEST_F(Refinement, ThePageFindsTheCellOfTheSimulation)
{
    index();
    m_pRefine->m_pSpinRefineDStarLow->setValue(2);
    m_pRefine->m_pSpinRefineDStarHigh->setValue(0.5);
    m_pRefine->m_pCheckRefine2D->setChecked(true);
    m_pRefine->m_pButtonRunRefinement->click();
    QList<double> listCell = numbers("Unit cell after UCLS refinement: ");
    std::sort(listCell.begin(), listCell.end());
    const QList<double> listQuartz = {4.913, 4.913, 5.405, 90, 90, 120};
    ASSERT_EQ(listCell.size(), 6);
    for (int i = 0; i < 6; ++i) {
        EXPECT_NEAR(listCell[i], listQuartz[i], 0.003 * listQuartz[i]);
    }
}

TEST_F(Refinement, ThePageRefinesWithTheGroupOfItsBoxAndTheCellOfTheIndices)
{
    m_pRefine->m_pSpinRefineDStarLow->setValue(0.3);
    const auto vectors = [&] {
        m_pRefine->m_pButtonRunRefinement->click();
        return numbers("Total number of difference vectors for refinement: ");
    };
    index();
    const QList<double> listBefore = vectors();
    ASSERT_EQ(listBefore.size(), 1);
    ASSERT_GT(listBefore[0], 50);
    m_pCell->m_pCheckOutputStatistics->setChecked(true);
    index();
    EXPECT_EQ(vectors(), listBefore) << "the statistics end with group 230";
    tool("Refine &Basis Vectors");
    EXPECT_FALSE(log().contains("with the wavelength of the data set"));
    m_pFrames->m_pWavelengthSpin->setValue(0.0197);
    for (const char* psz : {"Refine &Basis Vectors", "Refine Cell by Frame &Numbers"}) {
        tool(psz);
    }
    EXPECT_EQ(lines("Tilts are calculated with the wavelength of the data set, 0.0197 Å.", Qt::black), 2);

    m_pCell->m_apEditMatrix[0][0]->setText(QStringLiteral("2"));
    m_pCell->m_pButtonTest->click();
    const int nRuns = log().count("Total number of difference vectors");
    m_pRefine->m_pButtonRunRefinement->click();
    EXPECT_EQ(lines("The unit cell is another one than the reflections were indexed with. Index them again"),
              1);
    EXPECT_EQ(log().count("Total number of difference vectors"), nRuns);
}

TEST_F(Refinement, ExtractionLeavesNoOtherReflectionsData)
{
    index();
    tool("Show Peak Labels");
    m_pWindow->switchToImgIndex(11);
    const QList<QPointF> listStrongest = places<TextItem>(Qt::red);
    ASSERT_FALSE(listStrongest.isEmpty());
    const int nRows = m_pTable->model()->rowCount();

    // A frame that is missing, and a stop: all stays, the labels too.
    const QString strFrame = file(QDir(file("")).entryList({"w*15.mrc"}).value(0));
    ASSERT_TRUE(QFile::rename(strFrame, strFrame + "away"));
    tool("&Extract Intensities");
    QFile::rename(strFrame + "away", strFrame);
    during([this] { tool("&Extract Intensities"); },
           [this] {
               const bool bStop = m_pExtraction->m_pButtonRun->text() == "Stop" &&
                                  !places<CircleItem>(Qt::green).isEmpty();
               if (bStop) {
                   tool("&Stop");
               }
               return bStop;
           });
    EXPECT_EQ(log().count("Intensity extraction did not finish."), 2);
    EXPECT_EQ(places<TextItem>(Qt::red), listStrongest);
    EXPECT_TRUE(m_pWindow->showPeakInCurve(0));
    EXPECT_EQ(m_pTable->model()->rowCount(), nRows);
    EXPECT_EQ(m_pTabs->currentIndex(), 0);

    tool("&Extract Intensities");
    EXPECT_EQ(m_pTabs->currentIndex(), 2);
    EXPECT_GT(m_pTable->model()->rowCount(), 2 * nRows) << "one row per peak on a frame";
    m_pTabs->setCurrentIndex(0);
    EXPECT_FALSE(m_pWindow->showPeakInCurve(0));
    EXPECT_TRUE(places<TextItem>(Qt::red).isEmpty());
    tool("Refine &Basis Vectors");  // which would be of the reflections that have left
    EXPECT_TRUE(log().endsWith("No indexed peaks are available. Do merging and indexing first."));
}

TEST_F(Refinement, CrossesShowThePositionsBeforeAndAfterAFit)
{
    index();
    m_pSearch->m_pShowPeaksCheck->setChecked(true);
    QElapsedTimer timer;
    during([this] { m_pExtraction->m_pButtonRun->click(); },
           [&] {
               if (places<CrossItem>(Qt::yellow).isEmpty()) {
                   return false;
               }
               timer.start();
               m_pExtraction->m_pButtonRun->click();
               return true;
           });
    EXPECT_TRUE(timer.isValid()) << "of the second that the crosses stand";
    EXPECT_LT(timer.elapsed(), 700) << "of the second that the crosses stand";
    EXPECT_TRUE(log().contains("Peak position refinement did not finish."));
    EXPECT_TRUE(places<CrossItem>(Qt::yellow).isEmpty());
}

TEST_F(Refinement, ExpectedPositionsFallOnPeaksOfTheRightAxisOnly)
{
    m_pSearch->m_pShowPeaksCheck->setChecked(true);
    m_pExtraction->m_pCheckShowEstimated->setChecked(true);
    auto* pAxis = m_pFrames->m_pRotationAxisSpin;
    for (double dfTurn : {0.0, 20.0, -20.0}) {
        pAxis->setValue(pAxis->value() + dfTurn);
        int nCircles = 0, nNear = 0;
        for (int nFrame = g_nRefinedFrames; nFrame > 10; --nFrame) {
            m_pWindow->switchToImgIndex(nFrame);
            const QList<QPointF> listCross = places<CrossItem>(Qt::green),
                                 listCircle = places<CircleItem>(Qt::cyan);
            nCircles += listCircle.size();
            for (const QPointF& pt : listCircle) {
                nNear += std::any_of(listCross.begin(), listCross.end(), [&](const QPointF& ptCross) {
                    return std::hypot(pt.x() - ptCross.x(), pt.y() - ptCross.y()) < 2;
                });
            }
        }
        EXPECT_GT(nCircles, 60);
        EXPECT_EQ(nNear > (dfTurn > 0 ? 0.1 : 0.7) * nCircles, dfTurn <= 0) << nNear << " of " << nCircles;
    }
    // At once: the limit, the way, the box.
    const int nBefore = places<CircleItem>(Qt::cyan).size();
    m_pExtraction->m_pSpinResolutionLimit->setValue(0.3);
    EXPECT_LT(places<CircleItem>(Qt::cyan).size(), nBefore);
    m_pExtraction->m_pRadioIndexedReflections->setChecked(true);
    EXPECT_TRUE(places<CircleItem>(Qt::cyan).isEmpty());
    index();
    EXPECT_FALSE(places<CircleItem>(Qt::cyan).isEmpty());
    m_pExtraction->m_pCheckShowEstimated->setChecked(false);
    EXPECT_TRUE(places<CircleItem>(Qt::cyan).isEmpty());
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
        newWindow();
        open();
        for (const QMenu* pMenu : m_pWindow->findChildren<QMenu*>()) {
            EXPECT_TRUE(pMenu->title() != "Test &Runs" || pMenu->menuAction()->isVisible() == bTestRuns);
        }
    }
    EXPECT_EQ(log().count("is not understood and not used: 1,2"), 1);
    index();
    tool("Refine Cell by Frame &Numbers");
    EXPECT_TRUE(log().contains("Averaged error"));
    EXPECT_FALSE(log().contains(match.captured(0)));
}

}  // namespace tessera
