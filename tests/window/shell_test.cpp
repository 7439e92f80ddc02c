// The shell of the window: settings, keys, zoom, the ways of opening, and the command line.
#include "tests/window/windowtest.h"
#include "window/guards.h"
#include "window/pages/lensdistortionbox.h"

#include <sys/stat.h>

namespace tessera {

namespace {

typedef WindowTest Shell;

/// Five frames and a project of them.
class Opening : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        for (int i = 0; i < 5; ++i) {
            writePicture(QStringLiteral("f%1.png").arg(i), [](int x, int) { return x; });
        }
        m_strProject = writeProject(
            "series.ed3d", m_listFrame,
            "ROTATIONAXIS 12.5\nCCDPIXELSIZE 1\nSTRETCHINGAMP 0.5\nSTRETCHINGAZIMUTH 100\n");
        m_pFiles = m_pFrames->m_pFileTable;
    }
    QAction* recent(int n) const { return m_pActions->m_listRecent[n]; }

    const QStringList m_listFrame = {"f0.png 0 0 0", "f1.png 1 0 1", "f2.png 2 0 2", "f3.png 3 0 3",
                                     "f4.png 4 0 4"};
    QString m_strProject;
    QTableWidget* m_pFiles = nullptr;
};

}  // namespace

TEST_F(Shell, ComesBackWithWhatWasSet)
{
    EXPECT_FALSE(setting("workingDir").isValid());

    writePicture("a.png", [](int, int) { return 9; });
    m_pWindow->openFiles({writeProject("a.ed3d", {"a.png 0 0 0"})});
    m_pSearch->m_pPeakRadiusSpin->setValue(3.25);
    m_pWindow->show();
    m_pWindow->resize(m_pWindow->size() + QSize(0, -37));
    m_pWindow->findChild<QDockWidget*>("Intensity")->hide();
    const QSize sizeLeft = m_pWindow->size();
    m_pWindow->close();
    EXPECT_EQ(setting("PeakSearch/PeakRadius").toDouble(), 3.25);
    EXPECT_EQ(setting("3DView/CanvasGridAlpha").toDouble(), 0.05);
    QSettings("Lumenarc", "Tessera").setValue("PeakSearch/PeakBGDiffThreshold", "rubbish");
    newWindow();
    EXPECT_EQ(m_pSearch->m_pPeakRadiusSpin->value(), 3.25);
    EXPECT_EQ(m_pSearch->m_pThresholdSpin->value(), 1) << "a damaged value must not become 0";
    m_pWindow->show();
    EXPECT_EQ(m_pWindow->size(), sizeLeft);
    EXPECT_TRUE(m_pWindow->findChild<QDockWidget*>("Intensity")->isHidden());
    EXPECT_FALSE(m_pWindow->findChild<QDockWidget*>("Messages")->isHidden());
    m_pWindow->close();
    EXPECT_EQ(setting("workingDir"), m_dir.path()) << "kept by a start that opens nothing";
}

TEST_F(Shell, TheFirstWindowFitsOnTheScreenWithItsTitleBar)
{
    m_pWindow->show();
    EXPECT_LE(m_pWindow->height() + 40, m_pWindow->screen()->availableSize().height());
}

// A type whose bytes are damaged takes the process with it when it is read.
TEST_F(Shell, SettingsThatCannotBeReadArePutAside)
{
    m_pWindow.reset();
    QDir(m_dir.path()).mkpath("settings/Lumenarc");
    const QString strFile = "settings/Lumenarc/Tessera.conf";
    const QByteArray bytesPen = "[General]\ngeometry=@Variant(\\0\\0\\0M\\0\\x7f\\xff\\xff\\xf0" +
                                QByteArray("\\x11").repeated(60) + ")\n";
    const std::function<void()> afnMake[] = {
        [&] { write(strFile, bytesPen); },
        [&] { write(strFile, "[General\nworkingDir=/\n"); },
        [&] { ASSERT_EQ(mkfifo(qPrintable(path(strFile)), 0600), 0); },
        [&] { ASSERT_TRUE(QFile::link("/dev/zero", path(strFile))); },
        [&] {
            QFile file(path(strFile));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            ASSERT_TRUE(file.resize(qint64(200) << 30));
        },
    };
    QString strAside = path(strFile) + '~';
    for (int i = 0; i < int(std::size(afnMake)); ++i) {
        afnMake[i]();
        newWindow();
        EXPECT_EQ(lines("The settings cannot be read and begin anew. " + path(strFile) + ": "), 1) << i;
        EXPECT_EQ(lines("The file is now " + strAside + "."), 1) << log().toStdString();
        EXPECT_TRUE(QFileInfo(strAside).isSymLink() || QFile::exists(strAside));
        m_pSearch->m_pPeakRadiusSpin->setValue(3.25);
        m_pWindow->close();
        newWindow();
        EXPECT_EQ(m_pSearch->m_pPeakRadiusSpin->value(), 3.25);
        EXPECT_EQ(lines("settings"), 0);
        m_pWindow.reset();
        QFile::remove(path(strFile));
        strAside = path(strFile) + '~' + QString::number(i + 2);
    }
    EXPECT_EQ(linesOf(strFile + '~').size(), 2);
}

TEST_F(Shell, ALayoutThatCannotBeReadIsLeftOut)
{
    m_pWindow->findChild<QDockWidget*>("Intensity")->hide();
    m_pWindow->close();
    QByteArray bytesState = setting("windowState").toByteArray();
    bytesState[20] = char(bytesState[20] ^ 0x40);
    QSettings("Lumenarc", "Tessera").setValue("windowState", bytesState);
    newWindow();
    EXPECT_EQ(lines("of the window's place and docks is damaged"), 1);
    EXPECT_FALSE(m_pWindow->findChild<QDockWidget*>("Intensity")->isHidden());
}

TEST_F(Shell, EveryKeyHasOneTaker)
{
    m_pWindow->show();
    ASSERT_NO_FATAL_FAILURE(activate());
    auto* pIntensity = m_pWindow->findChild<QDockWidget*>("Intensity");
    ASSERT_TRUE(pIntensity->isVisible());
    QTest::keyClick(m_pWindow.get(), Qt::Key_P, Qt::ControlModifier);
    EXPECT_FALSE(pIntensity->isVisible());
    EXPECT_EQ(m_pWindow->findChild<QMessageBox*>(), nullptr);

    const QKeySequence keyMovie("Ctrl+Shift+M");
    m_pActions->setReady(m_pActions->m_pSmvImages);
    EXPECT_EQ(m_pActions->actionForKey(keyMovie), m_pActions->m_pSmvImages);
    m_pActions->setReady(m_pActions->m_pMovieFrames);
    EXPECT_EQ(m_pActions->actionForKey(keyMovie), m_pActions->m_pMovieFrames);

    // Desktops whose "Refresh" is Ctrl+R too, or alone.
    const QKeySequence keyRefresh("Ctrl+R");
    QAction *pRedBlue = m_pActions->m_listPalette[3], *pLabels = m_pActions->m_pShowPeakLabels;
    m_pView->setFocus();
    pLabels->setShortcuts({keyRefresh, QKeySequence("F5")});
    QTest::keyClick(m_pView, Qt::Key_R, Qt::ControlModifier);
    EXPECT_TRUE(pRedBlue->isChecked());
    EXPECT_FALSE(pLabels->isChecked());
    pLabels->setShortcuts({keyRefresh});
    QTest::keyClick(m_pView, Qt::Key_R, Qt::ControlModifier);
    EXPECT_TRUE(pLabels->isChecked());
    m_pLog->setFocus();
    EXPECT_EQ(m_pActions->actionForKey(keyRefresh), pRedBlue);

    // Copy: what is selected in the log, else the picture of the tab.
    m_pLog->clear();
    m_pLog->addMessage("a line");
    m_pLog->selectAll();
    QTest::keyClick(m_pLog, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "a line");

    // Keys of a page that is out of sight.
    QTest::keyClick(m_pWindow.get(), Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(m_pActions->selectionIndex(), 2);
}

TEST_F(Shell, ZoomStaysInItsListAndTakesWhatIsTyped)
{
    auto* pCombo = m_pWindow->findChild<QToolBar*>("ToolBar")->findChild<QComboBox*>();
    EXPECT_EQ(pCombo->itemText(0), QStringLiteral("%L1%").arg(12.5));
    const std::pair<int, double> aScale[] = {{-5, 0.125}, {2, 0.5}, {7, 8}, {99, 8}};
    for (const auto& scale : aScale) {
        m_pWindow->updateScale(scale.first);
        EXPECT_EQ(m_pView->scaleFactor(), scale.second);
    }
    for (const char* pszText : {"190 %", "much"}) {
        pCombo->setEditText(pszText);
        m_pWindow->scaleTextEntered();
        EXPECT_EQ(m_pView->scaleFactor(), 2);
    }
    EXPECT_EQ(pCombo->currentText(), "200%");
}

// A refined project has its lens and all decimals of its axis on the pages; the next one has none of it.
TEST_F(Shell, ALensIsThatOfTheProjectInView)
{
    writePicture(QStringLiteral("f0.png"), [](int x, int) { return x; });
    const QString strPlain = writeProject("plain.ed3d", {"f0.png 0 0 0"},
                                          "ROTATIONAXIS 12.55\nCCDPIXELSIZE 1\n");
    const QString strRefined = writeProject(
        "r.ed3d", {"f0.png 0 0 0"},
        "ROTATIONAXIS 12.3456\nCCDPIXELSIZE 1\nELLIPSEAMP 1.25\nTHIRDORDERRADIAL -2\n");
    LensDistortionBox& lens = *m_pMerging->m_pLensDistortion;
    QDoubleSpinBox& axis = *m_pFrames->m_pRotationAxisSpin;
    m_pWindow->openFiles({strRefined});
    EXPECT_EQ(lens.distortion().dfEllipseAmplitude, 1.25);
    EXPECT_EQ(lens.distortion().dfThirdOrderRadial, -2);
    EXPECT_EQ(lens.m_pUnfoldButton->text(), "Lens Distortion (in force)");
    EXPECT_EQ(axis.value(), 12.3456);
    EXPECT_TRUE(lens.boxes().first()->isHidden() || !lens.boxes().first()->isVisibleTo(&lens));
    lens.m_pUnfoldButton->click();
    EXPECT_TRUE(lens.boxes().first()->isVisibleTo(&lens));
    m_pWindow->openFiles({strPlain});
    EXPECT_EQ(lens.distortion(), SeriesDistortion());
    EXPECT_EQ(lens.m_pUnfoldButton->text(), "Lens Distortion");
    EXPECT_EQ(axis.decimals(), 1);
    EXPECT_NEAR(axis.value(), 12.6, 0.06);
}

TEST_F(Opening, AProjectIsOnAllPages)
{
    QSignalSpy spy(m_pWindow.get(), &MainWindow::frameLoaded);
    m_pSearch->m_pPeakRadiusSpin->setValue(2);  // on the page only
    m_pWindow->openFiles({m_strProject, "ignored.png"});
    EXPECT_EQ(m_pFiles->rowCount(), 5);
    EXPECT_EQ(m_pSlider->maximum(), 5);
    ASSERT_EQ(spy.size(), 1) << "the first frame is read once";
    EXPECT_EQ(spy[0][0].toInt(), 1);
    EXPECT_EQ(m_pSearch->m_pPeakRadiusSpin->value(), 2);
    EXPECT_EQ(m_pFrames->m_pRotationAxisSpin->value(), 12.5);
    EXPECT_TRUE(m_pMerging->m_pGroupApplyStretching->isChecked());
    EXPECT_EQ(m_pMerging->m_pSpinStretchAmplitude->value(), 0.5);
    EXPECT_EQ(m_pMerging->m_pSpinStretchAzimuth->value(), 10);
    EXPECT_EQ(m_pWindow->windowFilePath(), "series.ed3d");
    ASSERT_TRUE(recent(0)->isVisible());
    EXPECT_EQ(recent(0)->text(), "&1 series.ed3d");
    EXPECT_EQ(recent(0)->statusTip(), "Open " + m_strProject + " : 1 files");
    EXPECT_FALSE(recent(1)->isVisible());
}

// In the order of the drop, and not for the recent list.
TEST_F(Opening, ImagesThatAreDroppedAreASeries)
{
    m_pWindow->openFiles({m_strProject});
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(path("f2.png")), QUrl::fromLocalFile(path("f1.png"))});
    QDragEnterEvent eventEnter({10, 10}, Qt::CopyAction, &mime, Qt::LeftButton, {});
    QApplication::sendEvent(m_pWindow.get(), &eventEnter);
    EXPECT_TRUE(eventEnter.isAccepted());
    QDropEvent event({10, 10}, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, Qt::ShiftModifier);
    event.setDropAction(Qt::MoveAction);
    m_pSlider->setValue(4);
    QApplication::sendEvent(m_pWindow.get(), &event);
    EXPECT_EQ(event.dropAction(), Qt::CopyAction) << "a move would let the source delete the frames";
    ASSERT_EQ(m_pFiles->rowCount(), 2);
    EXPECT_EQ(lines(QStringLiteral("The stretching set before stays on, as this data set tells none: "
                                   "%L1 % at %L2°.")
                        .arg(0.5)
                        .arg(10)),
              1);
    EXPECT_EQ(m_pFiles->item(0, 0)->text(), "f2.png");
    EXPECT_EQ(m_pSlider->value(), 1);
    EXPECT_FALSE(recent(1)->isVisible());
    recent(0)->trigger();
    EXPECT_EQ(m_pFiles->rowCount(), 5);
}

TEST_F(Opening, TwentyProjectsAreRemembered)
{
    for (int i = 0; i < 25; ++i) {
        m_pWindow->openFiles({writeProject(QStringLiteral("p%1.ed3d").arg(i), m_listFrame.mid(4))});
    }
    const QStringList listEntry = setting("recentSeriesList").toStringList();
    ASSERT_EQ(listEntry.size(), 20);
    EXPECT_EQ(listEntry.first(), path("p24.ed3d"));
    EXPECT_EQ(recent(19)->text(), "&20 p5.ed3d");

    // Two of one name can be told apart.
    QDir(m_dir.path()).mkdir("again");
    const QString strOther = writeProject("again/series.ed3d", {});
    m_pWindow->openFiles({strOther});
    m_pWindow->openFiles({m_strProject});
    EXPECT_EQ(recent(0)->text(), "&1 series.ed3d (" + m_dir.path() + ")");
    EXPECT_EQ(recent(1)->text(), "&2 series.ed3d (" + path("again") + ")");
    EXPECT_EQ(recent(2)->text(), "&3 p24.ed3d");
}

// Also the pages connected: all turns white.
TEST_F(Opening, WhatCannotBeOpenedLeavesTheDataSet)
{
    m_pWindow->openFiles({m_strProject});
    m_pWindow->openFiles({write("bad.ed3d", "WAVELENGTH 0.0251\n")});
    EXPECT_EQ(lines("Error reading ed3d file: Could not find keyword \"CCDPIXELSIZE\"", Qt::black), 1);
    QStringList listNone = {m_dir.path(), "/dev/zero"};
    for (const char* pszName : {"series.sc", "s.hkl", "s.p4p", "s.ipf", "s.log", "s.json", "s.sc~", "none"}) {
        listNone.append(write(pszName, "1 1\n1 0 0\n"));
    }
    for (const char* pszName : {"pipe.ed3d", "pipe.png", "pipe.txt"}) {
        listNone.append(path(pszName));
        ASSERT_EQ(mkfifo(qPrintable(path(pszName)), 0600), 0);
    }
    for (const QString& strNone : listNone) {
        m_pWindow->openFiles({strNone, path("f0.png")});
    }
    EXPECT_EQ(lines("is neither a project nor an image."), listNone.size());
    m_pWindow->openFiles({path("gone.mrc")});
    EXPECT_EQ(lines("gone.mrc does not exist."), 1);
    EXPECT_EQ(m_pFiles->rowCount(), 5);
    m_pFrames->m_pContrastMinSpin->setValue(-1000000);
    ASSERT_FALSE(m_pScene->images().empty());
    EXPECT_NE(m_pScene->images().front()->Data()[0], 0);
}

TEST_F(Opening, APictureIsKnownByItsContent)
{
    QFile::rename(path("f0.png"), path("frame.0"));
    m_pWindow->openFiles({path("frame.0")});
    EXPECT_EQ(m_pFiles->rowCount(), 1);
}

TEST_F(Shell, GoesOnAfterWhatASlotThrows)
{
    int nAfter = 0;
    QPushButton button(m_pWindow.get());
    QObject::connect(&button, &QPushButton::clicked, [] { throw std::bad_alloc(); });
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(lines("Error: std::bad_alloc"), 1) << log().toStdString();
    // From the event loop, where the receiver is no widget of the window; what comes later is still done.
    QObject other;
    QTimer::singleShot(0, &other, [] { throw std::runtime_error("amid a timer"); });
    QTimer::singleShot(0, &other, [&] { ++nAfter; });
    QTRY_COMPARE_WITH_TIMEOUT(nAfter, 1, 1000);
    EXPECT_EQ(lines("Error: amid a timer"), 1) << log().toStdString();
    // A run whose slot throws leaves its button and the cursor as they were.
    {
        const auto run = [&] {
            const CDisabledWidget disabled(&button);
            const CWaitCursor wait;
            throw std::bad_alloc();
        };
        EXPECT_THROW(run(), std::bad_alloc);
    }
    EXPECT_TRUE(button.isEnabled());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(Shell, TheProgramOpensWhatItsCommandLineNames)
{
    const QString strProject = writeProject("series.ed3d", {"a.png 0 0 0"});
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_CONFIG_HOME", path("config"));
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(m_dir.path());
    process.start(TESSERA_BIN_DIR "/tessera", {"series.ed3d"});
    // What has been opened stands in the recent list.
    const auto recent = [this] {
        return QSettings(path("config/Lumenarc/Tessera.conf"), QSettings::IniFormat)
            .value("recentSeriesList")
            .toStringList();
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return !recent().isEmpty(); }, 30000));
    EXPECT_EQ(recent(), QStringList{strProject});
    process.kill();
    process.waitForFinished();
}

TEST(MessageEdit, TakesTextLiterally)
{
    MessageEdit edit;
    edit.addMessage("<b>1</b>   2", Qt::red);
    edit.addMessage("next", Qt::blue);
    edit.addHtml("<a href=\"http://localhost/\">link</a>");
    EXPECT_EQ(edit.toPlainText(), "<b>1</b>   2\nnextlink");
    EXPECT_TRUE(edit.textCursor().atEnd());
}

}  // namespace tessera
