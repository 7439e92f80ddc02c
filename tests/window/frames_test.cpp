// The current frame, the runs on the frames, what lies on them, and the shifts by hand.
#include "frameview/crossitem.h"
#include "frameview/textitem.h"
#include "tests/frames/frameseries.h"
#include "tests/window/windowtest.h"

#include <algorithm>
#include <set>

namespace tessera {

namespace {

const int g_nDriftFrames = 9;
const int g_nSide = 160;
const QPointF g_ptBeam(82.4, 76.7);                                                      // on the first frame
const char* const g_pszBeamMask = "1 70 60\n1 95 60\n2 0 0\n1 95 85\n1 70 85\n2 1 1\n";  // around the beam

QPointF drift(int nFrame)
{
    return {0.6 * nFrame, -0.35 * nFrame};
}

/// Pixel (x, y) of a frame: a beam and two spots that drift, over a regular ground.
double pixelOfDrift(int nFrame, int x, int y)
{
    const QPointF pt = QPointF(x, y) - g_ptBeam - drift(nFrame);
    return 20 + 4000 * gaussian(pt.x(), pt.y(), 4) + 900 * gaussian(pt.x() - 21, pt.y() - 12, 2) +
           300 * gaussian(pt.x() + 55, pt.y() - 40, 2) + (x * 31 + y * 17) % 7;
}

/// A window on a series of such frames.
class FramesWindow : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        QStringList listFrame;
        for (int i = 0; i < g_nDriftFrames; ++i) {
            const CImgObj<float> img = makeImage(g_nSide, g_nSide,
                                                 [&](int x, int y) { return pixelOfDrift(i, x, y); });
            const QString strFrame = QStringLiteral("f000%1.mrc").arg(i);
            ASSERT_TRUE(WriteMRC<float>({&img}, path(strFrame)));
            listFrame.append(strFrame + QStringLiteral(" %1 0.25 %1").arg(-2 + 0.5 * i));
        }
        m_pWindow->openFiles(
            {writeProject("series.ed3d", listFrame, "ROTATIONAXIS 30\nCCDPIXELSIZE 0.004\n")});
    }
    /// The bytes of the image in view.
    QByteArray shownBytes() const
    {
        if (m_pScene->images().size() != 1) {
            return {};
        }
        const CImgObj<unsigned char>& img = *m_pScene->images().front();
        return QByteArray(reinterpret_cast<const char*>(img.Data()), img.Width() * img.Height());
    }
    void evaluateShifts()
    {
        m_pActions->m_listSelection[2]->trigger();
        m_pShift->m_pRunButton->click();
    }
    /// Where the points of the raw view lie.
    std::vector<double> places() const
    {
        std::vector<double> vec;
        for (const Peak3D& peak : m_pRaw->points()) {
            vec.insert(vec.end(), {double(peak.fX3D), double(peak.fY3D), double(peak.fZ3D)});
        }
        return vec;
    }
    /// The same after a change of the geometry and back, which maps all anew.
    std::vector<double> placesAnew() const
    {
        m_pFrames->m_pPixelSizeSpin->stepUp();
        m_pFrames->m_pPixelSizeSpin->stepDown();
        return places();
    }
    QString status() const { return m_pWindow->statusBar()->currentMessage(); }
};

}  // namespace

TEST_F(FramesWindow, EachControlLoadsAFrameOnceAndAllAgree)
{
    EXPECT_EQ(m_pFrames->m_pFileTable->item(8, 0)->text(), "f0008.mrc");
    EXPECT_EQ(m_pFrames->m_pFileTable->item(8, 1)->text(), "  2.00°");
    EXPECT_EQ(m_pFrames->m_pFileTable->item(8, 3)->text(), " 2.000°");
    QSignalSpy spyLoaded(m_pWindow.get(), &MainWindow::frameLoaded);
    const std::function<void(int)> afnSet[] = {
        [&](int n) { m_pSlider->setValue(n); },
        [&](int n) { m_pSpin->setValue(n); },
        [&](int n) { m_pFrames->m_pFileTable->setCurrentCell(n - 1, 2); },
        [&](int n) { m_pWindow->switchToImgIndex(n); },
    };
    int nFrame = 7;
    for (const auto& fnSet : afnSet) {
        spyLoaded.clear();
        fnSet(nFrame);
        ASSERT_EQ(spyLoaded.size(), 1) << nFrame;
        EXPECT_EQ(spyLoaded[0][0].toInt(), nFrame);
        EXPECT_EQ(m_pSlider->value(), nFrame);
        EXPECT_EQ(m_pSpin->value(), nFrame);
        EXPECT_EQ(m_pFrames->m_pFileTable->currentRow(), nFrame - 1);
        --nFrame;
    }
    spyLoaded.clear();
    m_pWindow->switchToImgIndex(g_nDriftFrames + 1);
    EXPECT_EQ(spyLoaded.size(), 0);
    EXPECT_EQ(m_pSlider->value(), 4);
    EXPECT_EQ(lines("Invalid file index: 10"), 1);
}

// Its number stands, its predecessor stays in view, and all goes on.
TEST_F(FramesWindow, AFrameThatCannotBeReadIsTold)
{
    const double dfMax = m_pFrames->m_pContrastMaxSpin->value();
    EXPECT_GT(dfMax, 60);  // the ground has 26 at most
    QSignalSpy spyLoaded(m_pWindow.get(), &MainWindow::frameLoaded);
    m_pSlider->setValue(4);
    QFile::remove(path("f0001.mrc"));
    const QByteArray bytesBefore = shownBytes();
    m_pSlider->setValue(2);
    EXPECT_FALSE(spyLoaded.last()[1].toBool());
    EXPECT_EQ(m_pSpin->value(), 2);
    EXPECT_EQ(lines("f0001.mrc: failed to load"), 1);
    EXPECT_EQ(shownBytes(), bytesBefore);
    m_pSlider->setValue(3);
    EXPECT_TRUE(spyLoaded.last()[1].toBool());
    EXPECT_NE(shownBytes(), bytesBefore);
    EXPECT_EQ(m_pFrames->m_pContrastMaxSpin->value(), dfMax);
}

TEST_F(FramesWindow, TheFirstFrameThatCanBeReadGivesTheContrast)
{
    QFile::remove(path("f0000.mrc"));
    m_pFrames->m_pContrastMaxSpin->setValue(1);  // of the other project
    ASSERT_TRUE(QFile::copy(path("series.ed3d"), path("again.ed3d")));
    m_pWindow->openFiles({path("again.ed3d")});
    EXPECT_EQ(m_pScene->currentIndex(), -1);
    m_pSlider->setValue(3);
    EXPECT_GT(m_pFrames->m_pContrastMaxSpin->value(), 60);
}

TEST_F(FramesWindow, PlayEndsAtTheEndsAndAtItsButton)
{
    QSignalSpy spyLoaded(m_pWindow.get(), &MainWindow::frameLoaded);
    m_pFrames->m_pPlayForwardButton->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_pSlider->value() == g_nDriftFrames; }));
    EXPECT_EQ(spyLoaded.size(), g_nDriftFrames - 1);
    m_pFrames->m_pPlayDelaySpin->setValue(30);
    QTest::qWait(60);
    EXPECT_EQ(m_pSlider->value(), g_nDriftFrames);
    QElapsedTimer timer;
    timer.start();
    m_pFrames->m_pPlayBackwardButton->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_pSlider->value() == g_nDriftFrames - 3; }));
    EXPECT_GE(timer.elapsed(), 80);
    m_pWindow->openFiles({write("bad.ed3d", "WAVELENGTH 0.0251\n")});
    m_pWindow->openFiles({path("series.sc~")});
    m_pWindow->openFiles({path("f0000.mrc"), write("series.log", "words")});
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_pSlider->value() == g_nDriftFrames - 5; }))
        << "the play goes on";
    m_pFrames->m_pPlayStopButton->click();
    QTest::qWait(80);
    EXPECT_EQ(m_pSlider->value(), g_nDriftFrames - 5);
}

TEST_F(FramesWindow, ARegionIsToldAndAllowsForTheShiftEvaluation)
{
    EXPECT_FALSE(m_pShift->m_pRunButton->isEnabled());
    m_pActions->m_listSelection[2]->trigger();  // 128
    EXPECT_TRUE(m_pShift->m_pRunButton->isEnabled());
    EXPECT_EQ(status(), "ROI: 16, 16, 144, 144");
    m_pActions->m_listSelection[0]->trigger();
    EXPECT_EQ(status(), "");
    m_pActions->m_listSelection[5]->trigger();
    EXPECT_EQ(status(), QStringLiteral("No region: 1024×1024 pixels are more than the frame has, 160×160."));
}

TEST_F(FramesWindow, ShiftEvaluationFillsTheTableAndBringsTheFrameBack)
{
    m_pSlider->setValue(5);
    m_pActions->m_listSelection[2]->trigger();
    m_pFrames->m_pPlayDelaySpin->setValue(30);
    QList<int> listRows;
    std::set<int> setWidth;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        listRows.append(m_pShift->m_pShiftTable->rowCount());
        setWidth.insert(m_pScene->imageSize().width());
        m_pShift->m_pRunButton->click();  // disabled
        m_pWindow->runShiftEvaluation();
    });
    timer.start(20);
    QElapsedTimer elapsed;
    elapsed.start();
    m_pShift->m_pRunButton->click();
    timer.stop();
    EXPECT_GE(elapsed.elapsed(), 30 * g_nDriftFrames);
    EXPECT_EQ(setWidth.count(128), 1u);  // the regions
    EXPECT_GE(std::set<int>(listRows.begin(), listRows.end()).size(), 5);
    EXPECT_EQ(m_pScene->imageSize(), QSize(g_nSide, g_nSide));
    EXPECT_EQ(m_pSlider->value(), 5);
    EXPECT_FALSE(m_pShift->m_pRunButton->isEnabled());
    EXPECT_EQ(m_pActions->selectionIndex(), 0);
    EXPECT_EQ(linesOf("series.sc").size(), 1 + g_nDriftFrames);
}

TEST_F(FramesWindow, ShiftsAndCentreAreThoseOfTheBeam)
{
    evaluateShifts();
    ASSERT_EQ(m_pShift->m_pShiftTable->rowCount(), g_nDriftFrames);
    for (int i = 0; i < g_nDriftFrames; ++i) {
        EXPECT_NEAR(m_pShift->m_pShiftTable->item(i, 0)->text().toDouble(), drift(i).x(), 0.08) << i;
        EXPECT_NEAR(m_pShift->m_pShiftTable->item(i, 1)->text().toDouble(), drift(i).y(), 0.08) << i;
    }
    EXPECT_NEAR(m_pShift->m_pCenterXSpin->value(), g_ptBeam.x(), 0.3);
    EXPECT_NEAR(m_pShift->m_pCenterYSpin->value(), g_ptBeam.y(), 0.3);
}

TEST_F(FramesWindow, TheAxisRunsThroughTheBeamOfTheFrameInView)
{
    evaluateShifts();
    m_pSlider->setValue(5);
    m_pFrames->m_pShowAxisCheck->setChecked(true);
    ASSERT_EQ(marks<QGraphicsLineItem>().size(), 1);
    QLineF line = marks<QGraphicsLineItem>().first()->line();
    EXPECT_NEAR(line.angleTo(QLineF(0, 0, 1, 0)), 330, 0.5);
    const QPointF ptNow = g_ptBeam + drift(4);
    QPointF ptCross;
    EXPECT_EQ(line.intersects(QLineF(ptNow.x(), 0, ptNow.x(), g_nSide), &ptCross),
              QLineF::BoundedIntersection);
    EXPECT_NEAR(ptCross.y(), ptNow.y(), 1.2);
    // It goes with a centre that is typed and with shifts that are loaded.
    m_pShift->m_pCenterYSpin->setValue(m_pShift->m_pCenterYSpin->value() + 10);
    EXPECT_NEAR(marks<QGraphicsLineItem>().first()->line().center().y() - line.center().y(), 10, 1);
    QByteArray bytesLater = QByteArray::number(m_pShift->m_pCenterXSpin->value(), 'f', 2) + ' ' +
                            QByteArray::number(m_pShift->m_pCenterYSpin->value(), 'f', 2) + '\n';
    for (int i = 0; i < g_nDriftFrames; ++i) {
        bytesLater += QByteArray::number(i + 1) + ' ' + QByteArray::number(drift(i).x(), 'f', 2) + " 20\n";
    }
    answered({write("later.sc", bytesLater)}, [&] { m_pShift->m_pLoadButton->click(); });
    EXPECT_NEAR(marks<QGraphicsLineItem>().first()->line().center().y() - line.center().y(),
                30 - drift(4).y(), 2);
    m_pFrames->m_pShowAxisCheck->setChecked(false);
    EXPECT_TRUE(marks<QGraphicsLineItem>().isEmpty());
}

TEST_F(FramesWindow, ShiftsOfFewerFramesAreRefused)
{
    evaluateShifts();
    EXPECT_EQ(answered({write("short.sc", "1 2\n1 0 0\n")}, [&] { m_pShift->m_pLoadButton->click(); }),
              QStringList{"Load ED Shift"});
    EXPECT_EQ(lines("is from 1 frames, while there are 9 frames in the current dataset."), 1);
    EXPECT_EQ(lines("short.sc as shift data."), 1);
    EXPECT_EQ(m_pShift->m_pShiftTable->rowCount(), g_nDriftFrames);
}

TEST_F(FramesWindow, AClosingWindowEndsTheEvaluationAndLeavesTheShifts)
{
    evaluateShifts();
    const QByteArray bytesShift = readBytes(path("series.sc"));
    m_pWindow->show();
    m_pFrames->m_pPlayDelaySpin->setValue(30);
    m_pActions->m_listSelection[1]->trigger();
    QTimer::singleShot(60, m_pWindow.get(), [&] { m_pWindow->close(); });
    m_pShift->m_pRunButton->click();
    QApplication::processEvents();
    EXPECT_FALSE(m_pWindow->isVisible());
    EXPECT_EQ(readBytes(path("series.sc")), bytesShift);
    EXPECT_EQ(m_pShift->m_pShiftTable->rowCount(), g_nDriftFrames);
}

TEST_F(FramesWindow, ARegionCanBeChosenWhileThoseOfTheRunAreShown)
{
    m_pWindow->show();
    m_pActions->m_listSelection[1]->trigger();
    during([&] { m_pShift->m_pRunButton->click(); },
           [&] {
               m_pActions->m_listSelection[2]->trigger();
               return true;
           });
    EXPECT_EQ(m_pScene->selectionIndex(), 2);
    EXPECT_EQ(m_pScene->selectionRect().size(), QSizeF(128, 128));
}

TEST_F(FramesWindow, PeaksThatWereFoundBeforeTheShiftsGetTheirPointsWithThem)
{
    m_pSearch->m_pRunButton->click();
    ASSERT_GT(m_pRaw->points().size(), g_nDriftFrames);
    m_pTabs->setCurrentIndex(0);
    evaluateShifts();
    EXPECT_EQ(m_pTabs->currentIndex(), 0);
    const std::vector<double> vecFirst = places();
    EXPECT_GT(*std::max_element(vecFirst.begin(), vecFirst.end()), 0.05);
    EXPECT_EQ(placesAnew(), vecFirst);
}

TEST_F(FramesWindow, NewerShiftsMoveThePeaksBeforeAMerge)
{
    m_pSearch->m_pRunButton->click();
    m_pTabs->setCurrentIndex(0);
    evaluateShifts();
    const std::vector<double> vecFirst = places();
    const auto merge = [this] {
        m_pMerging->m_pButtonMerge->click();
        return lines("mapped anew before merging.", Qt::black);
    };
    EXPECT_EQ(merge(), 0);
    EXPECT_EQ(m_pMerged->points().size(), 3) << "the beam and the spots";

    m_pShift->m_pCenterXSpin->setValue(m_pShift->m_pCenterXSpin->value() + 4);
    EXPECT_EQ(places(), vecFirst) << "as before, until they are used";
    EXPECT_EQ(merge(), 1);
    const std::vector<double> vecMoved = places();
    EXPECT_NE(vecMoved, vecFirst);
    EXPECT_EQ(placesAnew(), vecMoved);
    double dfLargest = 0;
    for (const Peak3D& peak : m_pMerged->points()) {
        dfLargest = std::max(dfLargest, peak.dfDStar);
    }
    EXPECT_NEAR(dfLargest, 0.004 * std::hypot(55 + 4, 40), 0.004 * 1.5);
    m_pShift->m_pCenterXSpin->setValue(m_pShift->m_pCenterXSpin->value() - 4);
    EXPECT_EQ(merge(), 2);
    EXPECT_EQ(merge(), 2);
    EXPECT_EQ(places(), vecFirst);
}

TEST_F(FramesWindow, APreviewThatIsAskedForDuringARunComesAtItsEnd)
{
    const auto* pBar = m_pWindow->statusBar()->findChild<QProgressBar*>();
    answered({0.5}, [&] {
        during([&] { m_pWindow->exportBinnedFrames(); },
               [&] {
                   m_pSearch->m_pShowPeaksCheck->setChecked(!pBar->isHidden());
                   return !pBar->isHidden();
               });
    });
    ASSERT_EQ(marks<CrossItem>().size(), 3);
    m_pSearch->m_pThresholdSpin->setValue(50);  // the weaker spot goes
    EXPECT_EQ(marks<CrossItem>().size(), 2);
    m_pSearch->m_pThresholdSpin->setValue(1);
    EXPECT_EQ(marks<CrossItem>().size(), 3);
}

TEST_F(FramesWindow, AMaskTakesThePreviewsMarksAway)
{
    m_pSearch->m_pShowPeaksCheck->setChecked(true);
    EXPECT_EQ(marks<CrossItem>().size(), 3);
    const auto load = [&](const QVariantList& listFile) {
        EXPECT_EQ(answered(listFile, [&] { m_pSearch->m_pLoadMaskButton->click(); }),
                  QStringList{"Load Peak Hunting Mask"});
    };
    load({write("beam.msk", g_pszBeamMask)});
    EXPECT_EQ(marks<CrossItem>().size(), 2);
    ASSERT_EQ(m_pSearch->m_pMaskTable->rowCount(), 2);
    EXPECT_EQ(m_pSearch->m_pMaskTable->item(0, 0)->text(), "4");
    EXPECT_EQ(m_pSearch->m_pMaskTable->item(1, 0)->text(), "2");
    EXPECT_TRUE(m_pSearch->m_pShowMaskCheck->isChecked());
    EXPECT_EQ(marks<QGraphicsPolygonItem>().size(), 2);
    load({});
    load({write("two.msk", "1 0 0\n1 9 9\n")});
    EXPECT_EQ(lines("two.msk as mask file."), 1);
    EXPECT_EQ(lines("two.msk: 2 corners; 3 are the least"), 1);
    EXPECT_EQ(m_pSearch->m_pMaskTable->rowCount(), 2);
    m_pSearch->m_pShowMaskCheck->setChecked(false);
    EXPECT_TRUE(marks<QGraphicsPolygonItem>().isEmpty());
    m_pSearch->m_pClearMaskButton->click();
    EXPECT_EQ(m_pSearch->m_pMaskTable->rowCount(), 0);
    EXPECT_EQ(marks<CrossItem>().size(), 3);
    m_pSearch->m_pShowPeaksCheck->setChecked(false);
    EXPECT_TRUE(marks<CrossItem>().isEmpty());
}

// What the run finds is on disk, and the frame in view is shown again with its own marks. Meanwhile the marks
// are those of the frame that was hunted last.
TEST_F(FramesWindow, TheRunShowsWhatItFindsOutsideTheMask)
{
    const auto* pBar = m_pWindow->statusBar()->findChild<QProgressBar*>();
    m_pSearch->m_pShowPeaksCheck->setChecked(true);
    answered({write("beam.msk", g_pszBeamMask)}, [&] { m_pSearch->m_pLoadMaskButton->click(); });
    m_pSlider->setValue(2);
    std::set<int> setHunted;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        const int nHunted = pBar->value();
        if (pBar->isHidden() || nHunted < 2 || !setHunted.insert(nHunted).second) {
            return;
        }
        const QList<CrossItem*> listMark = marks<CrossItem>();
        EXPECT_EQ(listMark.size(), 2) << nHunted;
        // The weaker spot, as the tail of the beam pushes the maximum of the other one outwards.
        const QPointF ptSpot = g_ptBeam + drift(nHunted - 1) + QPointF(-55, 40);
        EXPECT_TRUE(std::any_of(listMark.begin(), listMark.end(), [&](const CrossItem* pMark) {
            return QLineF(pMark->pos(), ptSpot).length() < 0.8;  // marks stand on whole pixels
        })) << nHunted;
        if (setHunted.size() == 1) {
            m_pSearch->m_pThresholdSpin->setValue(2000);  // for the next run, not for this one
            m_pSearch->m_pClearMaskButton->click();       // refused
        }
    });
    timer.start(0);
    m_pSearch->m_pRunButton->click();
    timer.stop();
    EXPECT_GE(setHunted.size(), 3u);
    EXPECT_EQ(m_pSearch->m_pMaskTable->rowCount(), 2);
    EXPECT_GE(linesOf("series.pk").size(), 2 * g_nDriftFrames);
    EXPECT_EQ(lines("2 peaks found on frame #   1", Qt::black), 1);
    EXPECT_EQ(m_pTabs->currentIndex(), 1);
    EXPECT_EQ(m_pSearch->m_pThresholdSpin->value(), 2000);
    m_pTabs->setCurrentIndex(0);
    EXPECT_TRUE(marks<CrossItem>().isEmpty());
}

TEST_F(FramesWindow, ShiftsAreSavedAsThePageShowsThem)
{
    QByteArray bytesShift = "82.40 76.70\n";
    for (int i = 0; i < g_nDriftFrames; ++i) {
        bytesShift += QByteArray::number(i + 1) + " " + QByteArray::number(1234.5 * i) + " -0.25\n";
    }
    EXPECT_EQ(answered({write("in.sc", bytesShift)}, [&] { m_pWindow->loadEDShift(); }),
              QStringList{"Load ED Shift"});
    EXPECT_EQ(m_pShift->m_pCenterXSpin->value(), 82.4);
    EXPECT_EQ(m_pShift->m_pCenterYSpin->value(), 76.7);
    answered({path("as_loaded.sc")}, [&] { m_pWindow->saveEDShift(); });
    EXPECT_EQ(linesOf("as_loaded.sc").value(0), "   82.40   76.70");
    EXPECT_EQ(m_pShift->m_pShiftTable->item(1, 0)->text(), QStringLiteral("%L1").arg(1234.5, 0, 'f', 2));
    m_pShift->m_pCenterYSpin->setValue(77.25);
    EXPECT_EQ(answered({path("out.sc")}, [&] { m_pWindow->saveEDShift(); }),
              QStringList{"Export Shift Data to File"});
    EXPECT_TRUE(readBytes(path("out.sc")).startsWith("   82.40   77.25\n   1    0.00   -0.25\n   2 1234.50"));
    answered({write("bad.uc", "b* 0.1 0 0\n")}, [&] { m_pWindow->loadUnitCell(); });
    EXPECT_EQ(lines("bad.uc as unit cell data."), 1);
    EXPECT_EQ(lines("bad.uc: no vector a* in its place"), 1);

    // What fails says why; a beam that the page cannot hold is told.
    answered({write("bad.sc", "12,5 7\n1 0 0\n")}, [&] { m_pWindow->loadEDShift(); });
    EXPECT_EQ(lines("bad.sc: the first line holds no direct beam"), 1);
    EXPECT_EQ(m_pShift->m_pCenterYSpin->value(), 77.25);
    answered({path("none/out.sc")}, [&] { m_pWindow->saveEDShift(); });
    EXPECT_EQ(lines("none/out.sc: No such file or directory"), 1);
    answered({path("none/out.uc")}, [&] { m_pWindow->exportUnitCell(); });
    EXPECT_EQ(lines("none/out.uc: no cell to write"), 1);
    answered({write("in.sc", bytesShift.replace("82.40", "-82.4"))}, [&] { m_pWindow->loadEDShift(); });
    EXPECT_EQ(lines("in.sc: the direct beam (-82.4, 76.7) lies outside 0 to 100000 pixels"), 1);
    EXPECT_EQ(m_pShift->m_pCenterXSpin->value(), 0);
}

// The whole range. A grey value g of a picture counts 64 g, so the columns 0, 256, ... 16128 fill 1000 bins
// of 16.128 evenly. The bright end is the edge of the last bin and the dark end that of the first, which is
// lowered by 0.15 times their distance.
TEST_F(FramesWindow, ContrastFollowsTheFrameAndThenTheLimits)
{
    writePicture("ramp.png", [](int x, int) { return 4 * x; });
    m_pWindow->openFiles({path("ramp.png")});
    EXPECT_EQ(m_pFrames->m_pContrastMinSpin->value(), 0);
    EXPECT_EQ(m_pFrames->m_pContrastMaxSpin->value(), 16128);
    m_pFrames->m_pContrastFullButton->click();
    EXPECT_NEAR(m_pFrames->m_pContrastMinSpin->value(), 16.128 - 0.15 * (16128 - 16.128), 0.006);
    EXPECT_EQ(m_pFrames->m_pContrastMaxSpin->value(), 16128);
    const std::array<int, 4> aRow[] = {{16128, 33, 145, 255}, {8064, 58, 255, 255}, {64000, 9, 40, 71}};
    for (const auto& row : aRow) {
        m_pFrames->m_pContrastMaxSpin->setValue(row[0]);
        const QByteArray bytes = shownBytes();
        ASSERT_EQ(bytes.size(), 64 * 64);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(int(uchar(bytes[i == 2 ? 63 : 32 * i])), row[size_t(i) + 1]) << row[0];
        }
    }

    // "Copy Window", however the frame is looked at.
    m_pWindow->updateScale(0);
    m_pWindow->copyWindow();
    const QImage image = QApplication::clipboard()->image();
    ASSERT_EQ(image.size(), QSize(64, 64));
    EXPECT_EQ(image.format(), QImage::Format_RGB888);
    EXPECT_EQ(qGray(image.pixel(63, 32)), 71);
    EXPECT_LT(qGray(image.pixel(1, 32)), qGray(image.pixel(40, 32)));
    newWindow();
    QApplication::clipboard()->setText("mine");
    m_pWindow->copyWindow();
    EXPECT_EQ(QApplication::clipboard()->text(), "mine") << "no frame, nothing to copy";
}

/// A pointer on the pixel (81, 76) of the first frame.
class PointerOnFrame : public FramesWindow {
protected:
    void SetUp() override
    {
        FramesWindow::SetUp();
        m_pWindow->resize(1200, 900);
        m_pWindow->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWindow.get()));
        m_pView->setScaleFactor(4);
        m_pView->centerOn(80, 80);
        pPort = m_pView->viewport();
        ptOnFrame = m_pView->mapFromScene(QPointF(81.5, 76.5));
    }
    void move(const QPoint& pt, Qt::MouseButtons buttons)
    {
        QTest::qWait(1);
        QMouseEvent event(QEvent::MouseMove, pt, pPort->mapToGlobal(pt), Qt::NoButton, buttons,
                          Qt::NoModifier);
        QApplication::sendEvent(pPort, &event);
    }
    /// Presses the right button, which brings the label and the grid of numbers.
    void press()
    {
        move(ptOnFrame, Qt::NoButton);
        QTest::mousePress(pPort, Qt::RightButton, {}, ptOnFrame);
        move(ptOnFrame, Qt::RightButton);
    }
    /// Lets it go, and puts away the menu that comes.
    void release()
    {
        QTest::mouseRelease(pPort, Qt::RightButton, {}, ptOnFrame);
        if (auto* pMenu = QApplication::activePopupWidget()) {
            pMenu->close();
        }
    }
    static QString readingOf(double dfValue)
    {
        return QStringLiteral("Experimental(%L1, %L2): %L3").arg(81).arg(76).arg(dfValue);
    }

    QWidget* pPort = nullptr;
    QPoint ptOnFrame;
};

TEST_F(PointerOnFrame, ReadsThePixelUnderIt)
{
    const QString strReading = readingOf(double(float(pixelOfDrift(0, 81, 76))));
    move(ptOnFrame, Qt::NoButton);
    EXPECT_EQ(status(), strReading);
    EXPECT_FALSE(m_pScene->isLabelVisible());
    move(m_pView->mapFromScene(QPointF(-3, 76)), Qt::NoButton);
    EXPECT_EQ(status(), strReading) << "beside the frame nothing changes";
    press();
    EXPECT_TRUE(m_pScene->isLabelVisible());
    EXPECT_EQ(m_pView->dragMode(), QGraphicsView::NoDrag);
    EXPECT_EQ(pPort->cursor().shape(), Qt::CrossCursor);
    release();
    move(ptOnFrame, Qt::NoButton);
    EXPECT_FALSE(m_pScene->isLabelVisible());
    EXPECT_EQ(m_pView->dragMode(), QGraphicsView::ScrollHandDrag);
    EXPECT_EQ(pPort->cursor().shape(), Qt::OpenHandCursor);
}

TEST_F(PointerOnFrame, ReadsTheFrameThatComesUnderIt)
{
    press();
    auto* pGrid = m_pWindow->findChild<QDockWidget*>("Text Data")->findChild<QGraphicsView*>()->scene();
    EXPECT_FALSE(pGrid->items().isEmpty());
    m_pSlider->setValue(3);
    EXPECT_TRUE(m_pScene->isLabelVisible());
    EXPECT_EQ(status(), readingOf(double(float(pixelOfDrift(2, 81, 76)))));
    writePicture("small.png", [](int, int) { return 9; });
    m_pWindow->openFiles({path("small.png")});  // has no such pixel
    EXPECT_FALSE(m_pScene->isLabelVisible());
    EXPECT_EQ(status(), QString());
    EXPECT_TRUE(pGrid->items().isEmpty());
    release();
}

// Where six digits would not be enough.
TEST_F(PointerOnFrame, TellsLargeNumbersWhole)
{
    const CImgObj<float> img = makeImage(g_nSide, g_nSide, [](int x, int) { return x < 81 ? 1 : 1234567; });
    ASSERT_TRUE(WriteMRC<float>({&img}, path("f0002.mrc")));
    press();
    m_pSlider->setValue(3);
    const QString strLarge = QStringLiteral("%L1").arg(1234567);
    EXPECT_EQ(status(), QStringLiteral("Experimental(%1, %2): %3").arg(81).arg(76).arg(strLarge));
    ASSERT_EQ(marks<TextItem>().size(), 1);
    EXPECT_EQ(marks<TextItem>()[0]->text(), QStringLiteral("I=%1\n(81, 76)").arg(strLarge));
    release();
}

TEST_F(PointerOnFrame, TellsNothingWhereAFrameOrItsSeriesIsGone)
{
    press();
    QFile::remove(path("f0001.mrc"));
    m_pSlider->setValue(2);
    EXPECT_EQ(status(), QString());
    EXPECT_FALSE(m_pScene->isLabelVisible());
    EXPECT_EQ(m_pView->dragMode(), QGraphicsView::ScrollHandDrag);
    move(ptOnFrame, Qt::NoButton);
    EXPECT_EQ(status(), QString());

    // Nor with other data.
    m_pSlider->setValue(3);
    move(ptOnFrame, Qt::RightButton);
    EXPECT_TRUE(m_pScene->isLabelVisible());
    EXPECT_NE(status(), QString());
    m_pWindow->openFiles({writeProject("none.ed3d", {"gone.mrc 0 0 0"})});
    EXPECT_FALSE(m_pScene->isLabelVisible());
    EXPECT_EQ(status(), QString());
    release();
}

}  // namespace tessera
