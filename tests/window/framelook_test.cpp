// How the frames are looked at: their contrast and its histogram, all of them in one picture, the play, the
// screen.
#include "tests/frames/frameseries.h"
#include "tests/frameview/testscenes.h"
#include "tests/window/windowtest.h"
#include "window/frames/contrasthistogram.h"
#include "window/frames/keptcontrast.h"
#include "window/frames/seriespicturetitle.h"

namespace tessera {

namespace {

const int g_nRamps = 4, g_nRampSide = 100;

// Frame n has the numbers 0 to 9999 in a scattered order, each 10·n larger, and a beam of 40 000 in one
// corner.
double pixelOfRamp(int nFrame, int x, int y)
{
    return (x + g_nRampSide * y) * 3947 % 10000 + 10 * nFrame + (x < 4 && y < 4 ? 40000 : 0);
}

class FrameLookWindow : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        for (const QString strSeries : {"a", "b"}) {
            QStringList listFrame;
            for (int i = 0; i < g_nRamps; ++i) {
                const CImgObj<float> img = makeImage(g_nRampSide, g_nRampSide,
                                                     [&](int x, int y) { return pixelOfRamp(i, x, y); });
                const QString strFrame = QStringLiteral("%1%2.mrc").arg(strSeries).arg(i);
                ASSERT_TRUE(WriteMRC<float>({&img}, path(strFrame)));
                listFrame.append(strFrame + QStringLiteral(" %1 0.25 %1").arg(0.5 * i));
            }
            writeProject(strSeries + ".ed3d", listFrame);
        }
        m_pWindow->resize(1280, 800);
        open("a");
    }
    void open(const QString& strSeries) { m_pWindow->openFiles({path(strSeries + ".ed3d")}); }
    QPair<double, double> limits() const
    {
        return {m_pFrames->m_pContrastMinSpin->value(), m_pFrames->m_pContrastMaxSpin->value()};
    }
    int shown(int x, int y) const
    {
        const auto& vec = m_pScene->images();
        return vec.size() == 1 ? int(vec[0]->Data()[x + g_nRampSide * y]) : -1;
    }
    /// The number in the middle of what "Save Image" writes.
    double saved()
    {
        EXPECT_EQ(answered({path("all.mrc")}, [&] { m_pActions->m_pSaveCurrent->trigger(); }).size(), 1);
        ImageList vec;
        EXPECT_EQ(ReadMRC(path("all.mrc"), vec), 1);
        const double df = vec.empty() ? NAN : double(vec[0]->Data()[50 + g_nRampSide * 50]);
        QFile::remove(path("all.mrc"));
        return df;
    }
    QAction* viewAction(const QString& strText) const
    {
        for (QAction* pAction : m_pWindow->findChildren<QAction*>()) {
            if (pAction->text().remove('&') == strText) {
                return pAction;
            }
        }
        ADD_FAILURE() << "no action " << strText.toStdString();
        return nullptr;
    }
};

}  // namespace

TEST_F(FrameLookWindow, ContrastIsThatOfThePercentilesStaysAndComesBack)
{
    // The pixels outside the disc of 6.25 round the beam: nearly all of the ramp.
    EXPECT_NEAR(limits().first, 99, 3);
    EXPECT_NEAR(limits().second, 9969, 3);
    EXPECT_EQ(shown(1, 1), 255);
    const auto first = limits();
    m_pSlider->setValue(3);
    EXPECT_EQ(limits(), first) << "no frame has limits of its own";
    m_pFrames->m_pContrastAutoButton->click();
    EXPECT_NEAR(limits().first, 119, 3);
    m_pFrames->m_pContrastFullButton->click();
    EXPECT_GT(limits().second, 40000);
    EXPECT_LT(limits().first, 0) << "lowered below the weakest";

    // Kept for the series that it was chosen for, over another one and another start.
    m_pFrames->m_pContrastMaxSpin->setValue(5000);
    m_pFrames->m_pContrastLogCheck->setChecked(true);
    const auto chosen = limits();
    open("b");
    EXPECT_EQ(limits(), first);
    EXPECT_FALSE(m_pFrames->m_pContrastLogCheck->isChecked());
    open("a");
    EXPECT_EQ(limits(), chosen);
    EXPECT_TRUE(m_pFrames->m_pContrastLogCheck->isChecked());
    m_pFrames->m_pContrastMinSpin->setValue(700);
    newWindow();
    open("a");
    EXPECT_EQ(limits(), (QPair<double, double>{700, 5000}));

    QSettings settings("Lumenarc", "Tessera");
    for (int i = 0; i < g_nKeptContrasts; ++i) {
        keepContrast(settings, QStringLiteral("/series %1, one.ed3d").arg(i), {double(i), 1e7 / 3, true});
    }
    EXPECT_FALSE(keptContrast(settings, path("a.ed3d"))) << "the oldest goes";
    EXPECT_EQ(keptContrast(settings, "/series 0, one.ed3d")->dfHigh, 3333333.33333);
    settings.setValue("contrastOfSeries", QStringList{"0 x 1 /s", "nan 1 0 /t", "words"});
    for (const char* pszSeries : {"/s", "/t", "words", ""}) {
        EXPECT_FALSE(keptContrast(settings, pszSeries)) << pszSeries;
    }
}

TEST_F(FrameLookWindow, HandlesAndKeysSetTheLimitsAtOnceAndADoubleClickThoseOfThePercentiles)
{
    m_pWindow->show();
    auto* pHistogram = m_pFrames->m_pContrastHistogram;
    ASSERT_TRUE(pHistogram->isVisible());
    EXPECT_FALSE(pHistogram->histogram().vecCount.empty());
    const auto first = limits();
    const int nByte = shown(50, 50), nY = pHistogram->height() / 2;
    const QPoint ptHigh(int(pHistogram->handleX(true)), nY);
    const QPoint ptTo(int((pHistogram->handleX(false) + pHistogram->handleX(true)) / 2), nY);
    sendMouse(pHistogram, QEvent::MouseButtonPress, ptHigh, Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(limits(), first) << "taken hold of, not moved";
    sendMouse(pHistogram, QEvent::MouseMove, ptTo, Qt::NoButton, Qt::LeftButton);
    EXPECT_NEAR(limits().second, (first.first + first.second) / 2, 300);
    EXPECT_GT(shown(50, 50), nByte) << "while it is dragged";
    sendMouse(pHistogram, QEvent::MouseMove, {-500, nY}, Qt::NoButton, Qt::LeftButton);
    EXPECT_GT(limits().second, limits().first) << "never turns round";
    sendMouse(pHistogram, QEvent::MouseButtonRelease, {-500, nY}, Qt::LeftButton, Qt::NoButton);
    QTest::mouseDClick(pHistogram, Qt::LeftButton, {}, ptTo);
    EXPECT_EQ(limits(), first);

    QTest::keyClick(pHistogram, Qt::Key_Down);
    QTest::keyClick(pHistogram, Qt::Key_Right);
    EXPECT_GT(limits().first, first.first);
    EXPECT_EQ(limits().second, first.second);
    QTest::keyClick(pHistogram, Qt::Key_Return);
    EXPECT_EQ(limits(), first);
}

TEST_F(FrameLookWindow, LogarithmIsTheClosedForm)
{
    m_pFrames->m_pContrastMinSpin->setValue(0);
    m_pFrames->m_pContrastMaxSpin->setValue(9999);
    const int nLinear = shown(50, 50);
    m_pFrames->m_pContrastLogCheck->setChecked(true);
    for (const int x : {7, 50, 99}) {
        EXPECT_EQ(shown(x, 50), int(255 * std::log1p(pixelOfRamp(0, x, 50)) / std::log1p(9999))) << x;
    }
    m_pFrames->m_pContrastLogCheck->setChecked(false);
    EXPECT_EQ(shown(50, 50), nLinear);
}

TEST_F(FrameLookWindow, PictureOfTheSeriesStandsUntilAFrameIsChosen)
{
    auto* pTitle = m_pWindow->findChild<SeriesPictureTitle*>();
    m_pWindow->show();
    m_pSlider->setValue(2);
    const auto first = limits();
    viewAction("Sum of the Series")->trigger();
    EXPECT_TRUE(pTitle->isVisible());
    EXPECT_TRUE(pTitle->text().startsWith("Sum of 4 frames, as they are")) << qPrintable(pTitle->text());
    EXPECT_NEAR(limits().second, 4 * 9969 + 60, 20) << "with limits of its own";
    EXPECT_EQ(saved(), 4 * pixelOfRamp(0, 50, 50) + 60);
    m_pTabs->setCurrentIndex(3);
    m_pTabs->setCurrentIndex(0);
    EXPECT_TRUE(pTitle->isVisible()) << "until a frame is chosen";
    viewAction("Maximum of the Series")->trigger();
    EXPECT_TRUE(viewAction("Maximum of the Series")->isChecked());
    EXPECT_EQ(saved(), pixelOfRamp(3, 50, 50));

    m_pSlider->setValue(3);
    EXPECT_FALSE(pTitle->isVisible());
    EXPECT_TRUE(viewAction("Single Frame")->isChecked());
    EXPECT_EQ(limits(), first);
    EXPECT_EQ(saved(), pixelOfRamp(2, 50, 50));
    viewAction("Mean of the Series")->trigger();
    EXPECT_EQ(saved(), pixelOfRamp(0, 50, 50) + 15);
    viewAction("Single Frame")->trigger();
    EXPECT_EQ(saved(), pixelOfRamp(2, 50, 50)) << "the same one";
    open("b");
    EXPECT_EQ(limits(), first) << "nothing that was seen of a sum is kept";
}

TEST_F(FrameLookWindow, AStoppedPictureOfTheSeriesGivesTheFrameBack)
{
    auto* pTitle = m_pWindow->findChild<SeriesPictureTitle*>();
    m_pWindow->show();
    const auto first = limits();
    during([&] { viewAction("Sum of the Series")->trigger(); },
           [&] {
               m_pActions->m_pStopRun->trigger();
               return true;
           });
    EXPECT_EQ(lines("The picture of the series did not finish."), 1);
    EXPECT_TRUE(viewAction("Single Frame")->isChecked());
    EXPECT_FALSE(pTitle->isVisible());
    EXPECT_EQ(limits(), first);
}

TEST_F(FrameLookWindow, PlayGoesRoundAndTheScreenIsGivenBack)
{
    m_pFrames->m_pPlayLoopCheck->setChecked(true);
    QList<int> listFrame;
    QObject::connect(m_pWindow.get(), &MainWindow::frameLoaded, [&](int n) { listFrame.append(n); });
    m_pFrames->m_pPlayForwardButton->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return listFrame.size() >= 6; }));
    EXPECT_EQ(listFrame.mid(0, 6), (QList<int>{2, 3, 4, 1, 2, 3}));
    m_pFrames->m_pPlayStopButton->click();
    m_pSlider->setValue(2);
    listFrame.clear();
    m_pFrames->m_pPlayBackwardButton->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return listFrame.size() >= 3; }));
    EXPECT_EQ(listFrame.mid(0, 3), (QList<int>{1, 4, 3}));
    m_pFrames->m_pPlayLoopCheck->setChecked(false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_pSlider->value() == 1; }));

    m_pWindow->show();
    activate();
    QAction* pFull = viewAction("Full Screen");
    EXPECT_EQ(pFull->shortcut(), QKeySequence(Qt::Key_F11));
    pFull->trigger();
    EXPECT_TRUE(m_pWindow->isFullScreen());
    QTest::keyClick(m_pWindow.get(), Qt::Key_Escape);
    EXPECT_FALSE(m_pWindow->isFullScreen());
    EXPECT_FALSE(pFull->isChecked());
    pFull->trigger();
    m_pWindow->close();
    newWindow();
    EXPECT_FALSE(m_pWindow->isFullScreen()) << "the next start is as always";
}

}  // namespace tessera
