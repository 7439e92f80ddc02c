// The shell of the window: settings, keys, the recent list, and what the user may do during a run.
#include "app/mainwindow.h"
#include "app/messageedit.h"
#include "app/windowactions.h"
#include "frames/pages/framespage.h"
#include "frames/pages/peaksearchpage.h"
#include "frameview/baseimgview.h"
#include "frameview/originalimgscene.h"
#include "reciprocal/pages/mergingpage.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QDropEvent>
#include <QFile>
#include <QImage>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSlider>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTimer>
#include <QToolBox>
#include <QUrl>

#include <memory>

namespace {

const int g_nSide = 64;

class Shell : public testing::Test {
protected:
    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.filePath("settings"));
        newWindow();
    }
    void newWindow()
    {
        m_pWindow.reset();
        m_pWindow = std::make_unique<MainWindow>();
        m_pLog = m_pWindow->findChild<MessageEdit*>();
        m_pSearch = m_pWindow->findChild<PeakSearchPage*>();
        m_pActions = m_pWindow->findChild<WindowActions*>();
        m_pTable = m_pWindow->findChild<FramesPage*>()->m_pFileTable;
        m_pFrameSlider = m_pWindow->findChild<QSlider*>(QString());
        for (QSlider* pSlider : m_pWindow->findChildren<QSlider*>())
            if (pSlider->tickPosition() == QSlider::TicksAbove)
                m_pFrameSlider = pSlider;
    }

    /// Frames with a bright pixel each, and a project on them with one shift per frame.
    QString makeProject(int nFrames, const QString& strName = QStringLiteral("series"))
    {
        QByteArray bytesProject = "WAVELENGTH 0.0251\nROTATIONAXIS 12.5\nCCDPIXELSIZE 0.004\nFILELIST\n";
        QByteArray bytesShift = "32 32\n";
        for (int i = 0; i < nFrames; ++i) {
            QImage image(g_nSide, g_nSide, QImage::Format_Grayscale8);
            image.fill(10);
            image.setPixel(30, 20 + i, 255);
            const QString strFrame = QStringLiteral("%1%2.png").arg(strName).arg(i);
            EXPECT_TRUE(image.save(m_dir.filePath(strFrame)));
            bytesProject += "FILE " + strFrame.toLatin1() + " " + QByteArray::number(0.5 * i) + " 0 " +
                            QByteArray::number(0.5 * i) + "\n";
            bytesShift += QByteArray::number(i + 1) + " 0 0\n";
        }
        write(strName + ".sc", bytesShift);
        return write(strName + ".ed3d", bytesProject + "ENDFILELIST\n");
    }
    QString write(const QString& strName, const QByteArray& bytes)
    {
        QFile file(m_dir.filePath(strName));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }
    bool logHas(const QString& strText) const { return m_pLog->toPlainText().contains(strText); }
    /// Runs the hunt with `fnMeanwhile` called once from its event pump, after some frames.
    void huntWith(const std::function<void()>& fnMeanwhile)
    {
        QTimer timer;
        const auto* pBar = m_pWindow->findChild<QProgressBar*>();
        bool bCalled = false;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (bCalled || pBar->isHidden() || pBar->value() < 2)
                return;
            bCalled = true;
            fnMeanwhile();
        });
        timer.start(0);
        m_pSearch->m_pRunButton->click();
        EXPECT_TRUE(bCalled);
    }

    /// What the last merge in the log said.
    QString mergedLine() const
    {
        return m_pLog->toPlainText()
            .split(QLatin1Char('\n'))
            .filter(QStringLiteral("remained after merging"))
            .value(0);
    }

    QTemporaryDir m_dir;
    std::unique_ptr<MainWindow> m_pWindow;
    MessageEdit* m_pLog = nullptr;
    PeakSearchPage* m_pSearch = nullptr;
    WindowActions* m_pActions = nullptr;
    QTableWidget* m_pTable = nullptr;
    QSlider* m_pFrameSlider = nullptr;
};

TEST_F(Shell, StartsWithDefaultsAndComesBackWithWhatWasSet)
{
    EXPECT_EQ(m_pSearch->m_pPeakRadiusSpin->value(), 5);
    EXPECT_EQ(m_pSearch->m_pBackgroundRadiusSpin->value(), 10);
    EXPECT_EQ(m_pSearch->m_pThresholdSpin->value(), 1);
    EXPECT_EQ(m_pSearch->m_pIntegrationRadiusSpin->value(), 15);
    EXPECT_EQ(m_pSearch->m_pIntegrationBackgroundSpin->value(), 3);
    EXPECT_FALSE(m_pFrameSlider->isEnabled());
    EXPECT_EQ(m_pWindow->findChild<QTabWidget*>()->currentIndex(), 0);
    EXPECT_EQ(m_pWindow->findChild<QToolBox*>()->count(), 7);

    m_pSearch->m_pPeakRadiusSpin->setValue(3.25);
    m_pWindow->show();
    m_pWindow->close();
    const QSettings settings(QStringLiteral("Lumenarc"), QStringLiteral("Tessera"));
    EXPECT_EQ(settings.value("PeakSearch/PeakRadius").toDouble(), 3.25);
    EXPECT_EQ(settings.value("3DView/CanvasGridAlpha").toDouble(), 0.05);
    QSettings(QStringLiteral("Lumenarc"), QStringLiteral("Tessera"))
        .setValue("PeakSearch/PeakBGDiffThreshold", "rubbish");
    newWindow();
    EXPECT_EQ(m_pSearch->m_pPeakRadiusSpin->value(), 3.25);
    EXPECT_EQ(m_pSearch->m_pThresholdSpin->value(), 1) << "a damaged value must not become 0";
}

TEST_F(Shell, EveryKeyHasOneTaker)
{
    m_pWindow->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWindow.get()));
    auto* pIntensity = m_pWindow->findChild<QDockWidget*>("Intensity");
    ASSERT_TRUE(pIntensity->isVisible());
    QTest::keyClick(m_pWindow.get(), Qt::Key_P, Qt::ControlModifier);
    EXPECT_FALSE(pIntensity->isVisible());
    EXPECT_EQ(m_pWindow->findChild<QMessageBox*>(), nullptr);

    const QKeySequence keyMovie(QStringLiteral("Ctrl+Shift+M"));
    m_pActions->setReady(m_pActions->m_pSmvImages);
    EXPECT_EQ(m_pActions->actionForKey(keyMovie), m_pActions->m_pSmvImages);
    m_pActions->setReady(m_pActions->m_pMovieFrames);
    EXPECT_EQ(m_pActions->actionForKey(keyMovie), m_pActions->m_pMovieFrames);

    // Desktops whose "Refresh" is Ctrl+R too, or alone.
    const QKeySequence keyRefresh(QStringLiteral("Ctrl+R"));
    QAction* pRedBlue = m_pActions->m_listPalette[3];
    auto* pView = m_pWindow->findChild<BaseImgView*>();
    pView->setFocus();
    m_pActions->m_pShowPeakLabels->setShortcuts({keyRefresh, QKeySequence(QStringLiteral("F5"))});
    QTest::keyClick(pView, Qt::Key_R, Qt::ControlModifier);
    EXPECT_TRUE(pRedBlue->isChecked());
    EXPECT_FALSE(m_pActions->m_pShowPeakLabels->isChecked());
    m_pActions->m_pShowPeakLabels->setShortcuts({keyRefresh});
    QTest::keyClick(pView, Qt::Key_R, Qt::ControlModifier);
    EXPECT_TRUE(m_pActions->m_pShowPeakLabels->isChecked());
    m_pLog->setFocus();
    EXPECT_EQ(m_pActions->actionForKey(keyRefresh), pRedBlue);

    // Copy: what is selected in the log, else the picture of the tab.
    m_pLog->addMessage(QStringLiteral("a line"));
    m_pLog->selectAll();
    QTest::keyClick(m_pLog, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("a line"));

    // Keys of a page that is out of sight.
    QTest::keyClick(m_pWindow.get(), Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(m_pActions->selectionIndex(), 2);
}

TEST_F(Shell, ZoomStaysInItsListAndTakesWhatIsTyped)
{
    auto* pView = m_pWindow->findChild<BaseImgView*>();
    QComboBox* pCombo = nullptr;
    for (QComboBox* pCandidate : m_pWindow->findChildren<QComboBox*>())
        if (pCandidate->itemText(3) == QLatin1String("100%"))
            pCombo = pCandidate;
    ASSERT_NE(pCombo, nullptr);
    const struct {
        int nIndex;
        double dfScale;
    } aRow[] = {{-5, 0.125}, {2, 0.5}, {7, 8}, {99, 8}};
    for (const auto& row : aRow) {
        m_pWindow->updateScale(row.nIndex);
        EXPECT_EQ(pView->scaleFactor(), row.dfScale);
    }
    pCombo->setEditText(QStringLiteral("190 %"));
    m_pWindow->scaleTextEntered();
    EXPECT_EQ(pView->scaleFactor(), 2);
    pCombo->setEditText(QStringLiteral("much"));
    m_pWindow->scaleTextEntered();
    EXPECT_EQ(pView->scaleFactor(), 2);
    EXPECT_EQ(pCombo->currentText(), QStringLiteral("200%"));
}

TEST_F(Shell, OpensAProjectWholeAndRemembersIt)
{
    const QString strProject = makeProject(5);
    QSignalSpy spy(m_pWindow.get(), &MainWindow::frameLoaded);
    m_pSearch->m_pPeakRadiusSpin->setValue(2);  // on the page only
    m_pWindow->openFiles({strProject, QStringLiteral("ignored.png")});
    EXPECT_EQ(m_pTable->rowCount(), 5);
    EXPECT_EQ(m_pFrameSlider->maximum(), 5);
    ASSERT_EQ(spy.size(), 1) << "the first frame is read once";
    EXPECT_EQ(spy[0][0].toInt(), 1);
    EXPECT_EQ(m_pSearch->m_pPeakRadiusSpin->value(), 2);
    EXPECT_EQ(m_pWindow->findChild<FramesPage*>()->m_pRotationAxisSpin->value(), 12.5);
    EXPECT_EQ(m_pWindow->windowFilePath(), QStringLiteral("series.ed3d"));
    ASSERT_TRUE(m_pActions->m_listRecent[0]->isVisible());
    EXPECT_EQ(m_pActions->m_listRecent[0]->text(), QStringLiteral("&1 series.ed3d"));
    EXPECT_EQ(m_pActions->m_listRecent[0]->statusTip(),
              QStringLiteral("Open %1 : 1 files").arg(m_dir.filePath("series.ed3d")));
    EXPECT_FALSE(m_pActions->m_listRecent[1]->isVisible());

    // A series as images: dropped, in the order of the drop, and not for the recent list.
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(m_dir.filePath("series2.png")),
                  QUrl::fromLocalFile(m_dir.filePath("series1.png"))});
    QDragEnterEvent eventEnter({10, 10}, Qt::CopyAction, &mime, Qt::LeftButton, {});
    QApplication::sendEvent(m_pWindow.get(), &eventEnter);
    EXPECT_TRUE(eventEnter.isAccepted());
    QDropEvent event({10, 10}, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, Qt::ShiftModifier);
    event.setDropAction(Qt::MoveAction);
    m_pFrameSlider->setValue(4);
    QApplication::sendEvent(m_pWindow.get(), &event);
    EXPECT_EQ(event.dropAction(), Qt::CopyAction) << "a move would let the source delete the frames";
    ASSERT_EQ(m_pTable->rowCount(), 2);
    EXPECT_EQ(m_pTable->item(0, 0)->text(), QStringLiteral("series2.png"));
    EXPECT_EQ(m_pFrameSlider->value(), 1);
    EXPECT_FALSE(m_pActions->m_listRecent[1]->isVisible());

    m_pActions->m_listRecent[0]->trigger();
    EXPECT_EQ(m_pTable->rowCount(), 5);
    for (int i = 0; i < 25; ++i)
        m_pWindow->openFiles({makeProject(1, QStringLiteral("p%1").arg(i))});
    const QStringList listEntry = QSettings(QStringLiteral("Lumenarc"), QStringLiteral("Tessera"))
                                      .value("recentSeriesList")
                                      .toStringList();
    ASSERT_EQ(listEntry.size(), 20);
    EXPECT_EQ(listEntry.first(), m_dir.filePath("p24.ed3d"));
    EXPECT_EQ(m_pActions->m_listRecent[19]->text(), QStringLiteral("&20 p5.ed3d"));
}

TEST_F(Shell, AProjectThatCannotBeReadLeavesTheOldOne)
{
    m_pWindow->openFiles({makeProject(3)});
    m_pWindow->openFiles({write(QStringLiteral("bad.ed3d"), "WAVELENGTH 0.0251\n")});
    EXPECT_TRUE(logHas(QStringLiteral("Error reading ed3d file: Could not find keyword \"CCDPIXELSIZE\"")));
    EXPECT_EQ(m_pTable->rowCount(), 3);
    auto* pFrames = m_pWindow->findChild<FramesPage*>();
    pFrames->m_pContrastMinSpin->setValue(-1000000);  // the pages are connected as before: all turns white
    const auto& vecImage = m_pWindow->findChild<OriginalImgScene*>()->images();
    ASSERT_FALSE(vecImage.empty());
    EXPECT_NE(vecImage.front()->Data()[0], 0);

    m_pWindow->openFiles({m_dir.path()});
    m_pWindow->openFiles({write(QStringLiteral("series.sc"), "1 1\n1 0 0\n")});
    EXPECT_EQ(m_pLog->toPlainText().count(QStringLiteral("is neither a project nor an image.")), 2);
    EXPECT_EQ(m_pTable->rowCount(), 3);
}

TEST_F(Shell, AFrameAskedForDuringARunIsShownAtItsEnd)
{
    m_pWindow->openFiles({makeProject(6)});
    QSignalSpy spy(m_pWindow.get(), &MainWindow::frameLoaded);
    int nLoadedInRun = -1;
    huntWith([&] {
        m_pFrameSlider->setValue(4);
        nLoadedInRun = spy.size();
        EXPECT_EQ(m_pSearch->m_pRunButton->text(), QStringLiteral("Stop"));
        m_pSearch->m_pThresholdSpin->setValue(7);  // for the next run
        m_pWindow->openFiles({m_dir.filePath("series.ed3d")});
    });
    EXPECT_EQ(nLoadedInRun, 0);
    ASSERT_EQ(spy.size(), 1);
    EXPECT_EQ(spy[0][0].toInt(), 4);
    EXPECT_EQ(m_pTable->currentRow(), 3);
    EXPECT_EQ(m_pSearch->m_pThresholdSpin->value(), 7);
    EXPECT_TRUE(logHas(QStringLiteral("Opening files has to wait")));
    EXPECT_TRUE(logHas(QStringLiteral("Peak hunting finished in")));
    EXPECT_TRUE(QFile::exists(m_dir.filePath("series.pk")));
    EXPECT_EQ(m_pSearch->m_pRunButton->text(), QStringLiteral("Run"));
}

TEST_F(Shell, ASecondClickStopsTheRun)
{
    m_pWindow->openFiles({makeProject(6)});
    const auto expectStopped = [&](int nFramesAtLeast) {
        const QString strLog = m_pLog->toPlainText();
        EXPECT_FALSE(strLog.contains(QStringLiteral("Peak hunting finished")));
        EXPECT_TRUE(strLog.endsWith(QStringLiteral("Peak hunting did not finish."))) << qPrintable(strLog);
        EXPECT_GE(strLog.count(QStringLiteral("peaks found on frame")), nFramesAtLeast);
        EXPECT_FALSE(QFile::exists(m_dir.filePath("series.pk")));
        EXPECT_EQ(m_pSearch->m_pRunButton->text(), QStringLiteral("Run"));
        m_pLog->clear();
    };
    QTimer::singleShot(0, m_pSearch->m_pRunButton, &QPushButton::click);  // before the first frame
    m_pSearch->m_pRunButton->click();
    expectStopped(0);
    huntWith([&] { m_pSearch->m_pRunButton->click(); });
    expectStopped(2);
    m_pSearch->m_pRunButton->click();
    EXPECT_TRUE(logHas(QStringLiteral("Peak hunting finished"))) << "the flag was left standing";

    // The peaks that a complete run left stay through one that is stopped, in memory and on disk.
    const QString strMerged = mergedLine();
    EXPECT_FALSE(strMerged.startsWith(QStringLiteral("0 peaks"))) << qPrintable(strMerged);
    m_pSearch->m_pThresholdSpin->setValue(1e6);  // of the run to come
    huntWith([&] { m_pSearch->m_pRunButton->click(); });
    EXPECT_TRUE(m_pLog->toPlainText().endsWith(QStringLiteral("Peak hunting did not finish.")));
    m_pLog->clear();
    m_pWindow->findChild<MergingPage*>()->m_pButtonMerge->click();
    EXPECT_EQ(mergedLine(), strMerged);
    QFile filePeaks(m_dir.filePath("series.pk"));
    ASSERT_TRUE(filePeaks.open(QIODevice::ReadOnly));
    EXPECT_FALSE(filePeaks.readAll().isEmpty());
}

TEST_F(Shell, AFrameThatIsMissingEndsTheRunWithItsName)
{
    m_pWindow->openFiles({makeProject(5)});
    QFile::remove(m_dir.filePath("series3.png"));
    m_pSearch->m_pRunButton->click();
    EXPECT_TRUE(logHas(QStringLiteral("series3.png: failed to load")));
    EXPECT_TRUE(m_pLog->toPlainText().endsWith(QStringLiteral("Peak hunting did not finish.")));
    EXPECT_FALSE(QFile::exists(m_dir.filePath("series.pk")));
    EXPECT_EQ(m_pSearch->m_pRunButton->text(), QStringLiteral("Run"));
}

TEST_F(Shell, HotPixelsAreRepairedOnTheFrameThatIsShown)
{
    const QString strProject = makeProject(2);
    const auto isSpotShown = [&] {
        m_pWindow->openFiles({strProject});
        auto* pFrames = m_pWindow->findChild<FramesPage*>();
        pFrames->m_pContrastMinSpin->setValue(0);
        pFrames->m_pContrastMaxSpin->setValue(20000);  // the spot has 16320, the ground 640
        const auto& imgShown = *m_pWindow->findChild<OriginalImgScene*>()->images().front();
        return imgShown.Data()[20 * g_nSide + 30] != imgShown.Data()[0];
    };
    EXPECT_TRUE(isSpotShown());
    write(QStringLiteral("hotpixels.txt"), "1 30.9 20.2\n");
    EXPECT_FALSE(isSpotShown());
    EXPECT_TRUE(logHas(QStringLiteral("1 hot pixel positions loaded.")));
}

TEST_F(Shell, TheProgramOpensWhatItsCommandLineNames)
{
    const QString strProject = makeProject(2);
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_dir.filePath("config"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(m_dir.path());
    process.start(QStringLiteral(TESSERA_BIN_DIR "/tessera"), {QFileInfo(strProject).fileName()});
    // What has been opened stands in the recent list.
    const auto recent = [&] {
        return QSettings(m_dir.filePath("config/Lumenarc/Tessera.conf"), QSettings::IniFormat)
            .value(QStringLiteral("recentSeriesList"))
            .toStringList();
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return !recent().isEmpty(); }, 30000));
    EXPECT_EQ(recent(), QStringList{strProject});
    process.kill();
    process.waitForFinished();
}

TEST_F(Shell, ClosingDuringARunStopsItAndThenCloses)
{
    m_pWindow->openFiles({makeProject(6)});
    m_pWindow->show();
    huntWith([&] {
        m_pWindow->close();
        EXPECT_TRUE(m_pWindow->isVisible());
    });
    EXPECT_FALSE(QFile::exists(m_dir.filePath("series.pk")));
    QCoreApplication::processEvents();
    EXPECT_FALSE(m_pWindow->isVisible());
}

TEST(MessageEdit, TakesTextLiterallyInItsColourOnALightGround)
{
    MessageEdit edit;
    edit.addMessage(QStringLiteral("<b>1</b>   2"), Qt::red);
    edit.addMessage(QStringLiteral("next"), Qt::blue);
    edit.addHtml(QStringLiteral("<a href=\"http://localhost/\">link</a>"));
    EXPECT_EQ(edit.toPlainText(), QStringLiteral("<b>1</b>   2\nnextlink"));
    const auto colorOf = [&](int nBlock) {
        const QTextBlock block = edit.document()->findBlockByNumber(nBlock);
        return block.begin().fragment().charFormat().foreground().color();
    };
    EXPECT_EQ(colorOf(0), QColor(Qt::red));
    EXPECT_EQ(colorOf(1), QColor(Qt::blue));
    EXPECT_EQ(edit.palette().color(QPalette::Base), QColor(248, 248, 248));
    EXPECT_EQ(edit.palette().color(QPalette::Text), QColor(Qt::black));
    EXPECT_TRUE(edit.textCursor().atEnd());
}

}  // namespace
