// What the user may do while peaks are hunted: stop, close, look at other frames, change the pages.
#include "tests/window/windowtest.h"

namespace tessera {

namespace {

/// Six frames with a bright pixel each, and no shifts.
class Hunting : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        QStringList listFrame;
        QByteArray bytesShift = "32 32\n";
        for (int i = 0; i < 6; ++i) {
            const QString strFrame = QStringLiteral("series%1.png").arg(i);
            writePicture(strFrame, [i](int x, int y) { return x == 30 && y == 20 + i ? 255 : 10; });
            listFrame.append(strFrame + QStringLiteral(" %1 0 %1").arg(0.5 * i));
            bytesShift += QByteArray::number(i + 1) + " 0 0\n";
        }
        write("series.sc", bytesShift);
        m_pWindow->openFiles({writeProject("series.ed3d", listFrame)});
    }
    /// Runs the hunt with `fnMeanwhile` called once from its event pump, after some frames.
    void huntWith(const std::function<void()>& fnMeanwhile)
    {
        const auto* pBar = m_pWindow->statusBar()->findChild<QProgressBar*>();
        during([this] { m_pSearch->m_pRunButton->click(); },
               [&] {
                   const bool bUnderWay = !pBar->isHidden() && pBar->value() >= 2;
                   if (bUnderWay) {
                       fnMeanwhile();
                   }
                   return bUnderWay;
               });
    }
    void expectStopped(int nFramesAtLeast)
    {
        EXPECT_FALSE(log().contains("Peak hunting finished"));
        EXPECT_TRUE(log().endsWith("Peak hunting did not finish.")) << log().toStdString();
        EXPECT_GE(log().count("peaks found on frame"), nFramesAtLeast);
        EXPECT_FALSE(QFile::exists(path("series.pk")));
        EXPECT_EQ(m_pSearch->m_pRunButton->text(), "Run");
        m_pLog->clear();
    }
    /// What the last merge in the log said.
    QString mergedLine() const { return log().split('\n').filter("remained after merging").value(0); }
};

}  // namespace

TEST_F(Hunting, AFrameAskedForDuringARunIsShownAtItsEnd)
{
    QSignalSpy spy(m_pWindow.get(), &MainWindow::frameLoaded);
    int nLoadedInRun = -1;
    huntWith([&] {
        m_pSlider->setValue(4);
        nLoadedInRun = spy.size();
        EXPECT_EQ(m_pSearch->m_pRunButton->text(), "Stop");
        m_pSearch->m_pThresholdSpin->setValue(7);  // for the next run
        m_pWindow->openFiles({path("series.ed3d")});
    });
    EXPECT_EQ(nLoadedInRun, 0);
    ASSERT_EQ(spy.size(), 1);
    EXPECT_EQ(spy[0][0].toInt(), 4);
    EXPECT_EQ(m_pFrames->m_pFileTable->currentRow(), 3);
    EXPECT_EQ(m_pSearch->m_pThresholdSpin->value(), 7);
    EXPECT_EQ(lines("Opening files has to wait"), 1);
    EXPECT_EQ(lines("Peak hunting finished in", Qt::blue), 1);
    EXPECT_TRUE(QFile::exists(path("series.pk")));
    EXPECT_EQ(m_pSearch->m_pRunButton->text(), "Run");
}

TEST_F(Hunting, ASecondClickEndsTheRun)
{
    QTimer::singleShot(0, m_pSearch->m_pRunButton, &QPushButton::click);  // before the first frame
    m_pSearch->m_pRunButton->click();
    expectStopped(0);
    huntWith([&] { m_pSearch->m_pRunButton->click(); });
    expectStopped(2);
    m_pSearch->m_pRunButton->click();
    EXPECT_EQ(lines("Peak hunting finished", Qt::blue), 1) << "the flag was left standing";
}

TEST_F(Hunting, AMissingFrameEndsTheRun)
{
    QFile::remove(path("series3.png"));
    m_pSearch->m_pRunButton->click();
    EXPECT_EQ(lines("series3.png: failed to load"), 1);
    expectStopped(3);
}

TEST_F(Hunting, AWindowThatIsClosedEndsTheRunAndGoesAfterIt)
{
    m_pWindow->show();
    huntWith([&] {
        m_pWindow->close();
        EXPECT_TRUE(m_pWindow->isVisible());
    });
    expectStopped(2);
    QCoreApplication::processEvents();
    EXPECT_FALSE(m_pWindow->isVisible());
    m_pSearch->m_pRunButton->click();
    EXPECT_EQ(lines("Peak hunting finished", Qt::blue), 1) << "the flag was left standing";
}

// In memory and on disk.
TEST_F(Hunting, PeaksOfACompleteRunStayThroughOneThatIsStopped)
{
    m_pSearch->m_pRunButton->click();
    const QString strMerged = mergedLine();
    EXPECT_FALSE(strMerged.isEmpty());
    EXPECT_FALSE(strMerged.startsWith("0 peaks")) << strMerged.toStdString();
    m_pSearch->m_pThresholdSpin->setValue(1e6);  // of the run to come
    huntWith([&] { m_pSearch->m_pRunButton->click(); });
    EXPECT_TRUE(log().endsWith("Peak hunting did not finish."));
    m_pLog->clear();
    m_pMerging->m_pButtonMerge->click();
    EXPECT_EQ(mergedLine(), strMerged);
    EXPECT_FALSE(linesOf("series.pk").isEmpty());
}

TEST_F(Hunting, HotPixelsAreRepairedOnTheFrameThatIsShown)
{
    const auto isSpotShown = [&] {
        m_pWindow->openFiles({path("series.ed3d")});
        m_pFrames->m_pContrastMinSpin->setValue(0);
        m_pFrames->m_pContrastMaxSpin->setValue(20000);  // the spot has 16320, the ground 640
        const auto& imgShown = *m_pScene->images().front();
        return imgShown.Data()[20 * 64 + 30] != imgShown.Data()[0];
    };
    EXPECT_TRUE(isSpotShown());
    write("hotpixels.txt", "1 30.9 20.2\n");
    EXPECT_FALSE(isSpotShown());
    EXPECT_EQ(lines("1 hot pixel positions loaded.", Qt::black), 1);
}

TEST_F(Hunting, WithoutShiftsTheLogSaysOnceWhatToDoFirst)
{
    QFile::remove(path("series.sc"));
    m_pWindow->openFiles({path("series.ed3d")});
    m_pSearch->m_pRunButton->click();
    EXPECT_EQ(lines("Peak hunting finished", Qt::blue), 1);
    EXPECT_EQ(lines("does not match that of the shift correction data. Stop."), 1);
    EXPECT_EQ(lines("run the shift evaluation, or load a shift file, and then merge."), 1);
}

TEST_F(Hunting, TooManyCandidatesAreTold)
{
    const char* const pszTooMany = "More than 1 % of the pixels are peak candidates";
    const auto status = [this] { return m_pWindow->statusBar()->currentMessage(); };
    writePicture("series3.png",
                 [](int x, int y) { return 120 + (x * x * 31 + y * y * 17 + x * y * 7) % 100; });
    m_pSearch->m_pPeakRadiusSpin->setValue(0.5);
    m_pSearch->m_pShowPeaksCheck->setChecked(true);
    EXPECT_FALSE(status().startsWith(pszTooMany)) << status().toStdString();
    m_pSlider->setValue(4);
    EXPECT_TRUE(status().startsWith(pszTooMany)) << status().toStdString();
    m_pSlider->setValue(2);
    EXPECT_FALSE(status().startsWith(pszTooMany)) << status().toStdString();
    m_pSearch->m_pRunButton->click();
    EXPECT_EQ(lines("0 peaks found on frame #   4", Qt::black), 1);
    EXPECT_EQ(lines("On 1 of 6 frames, first #4, more than 1 % of the pixels are peak candidates"), 1);
}

}  // namespace tessera
