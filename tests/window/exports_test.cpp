// The File menu's ways of writing: names and questions of the dialogs, the files beside the driver's, the
// movie.
#include "imagefiles/mrcfile.h"
#include "tests/window/windowtest.h"

#include <vector>

namespace tessera {

namespace {

typedef QMap<QString, QByteArray> Files;

class ExportsWindow : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        simulate(m_dir.path(),
                 "--frames 5 --size 192 --pixel-size 0.01 --tilt-start -2 --tilt-step 1 --drift 3");
    }
    /// Has the driver evaluate the shifts, which exports in reciprocal space need.
    void openWithShifts()
    {
        ASSERT_EQ(runBatch({"--window-defaults", "--to", "shifts", path("w.ed3d")}).nStatus, 0);
        open();
        m_pFrames->m_pContrastFullButton->click();  // the contrast of the driver
    }
    void open()
    {
        m_pWindow->show();
        m_pWindow->openFiles({path("w.ed3d")});
    }
    QString save(const QVariantList& listAnswer)
    {
        return answered(listAnswer, [this] { m_pWindow->saveCurrent(); }).join(", ");
    }
    /// The titles of the dialogs that a press of Ctrl+Shift and the key brings up and that are cancelled.
    QString keyed(Qt::Key key)
    {
        activate();
        const auto press = [&] {
            QTest::keyClick(m_pWindow.get(), key, Qt::ControlModifier | Qt::ShiftModifier);
        };
        return answered({}, press).join(", ");
    }
    /// The contents of the files of a pattern, by name.
    static Files files(const QString& strFolder, const char* pszPattern)
    {
        Files map;
        for (const QString& strName : QDir(strFolder).entryList({pszPattern}, QDir::Files | QDir::Hidden)) {
            map[strName] = readBytes(strFolder + '/' + strName);
        }
        return map;
    }
    /// The same, after which the files are gone: frames and copies stand in one folder, so what one side has
    /// written goes before the other one has its turn.
    Files take(const char* pszPattern)
    {
        const Files map = files(m_dir.path(), pszPattern);
        for (const QString& strName : map.keys()) {
            EXPECT_TRUE(QFile::remove(m_dir.filePath(strName)));
        }
        return map;
    }
    /// What the driver exports of the series.
    Files filesOfDriver(const char* pszPattern, const QStringList& list)
    {
        const BatchOutcome outcome = runBatch(QStringList{"--export-only", "--window-defaults", "--export"} +
                                              list + QStringList{path("w.ed3d")});
        EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        return take(pszPattern);
    }
};

}  // namespace

TEST_F(ExportsWindow, TheImageInViewIsSavedGreyOrAsItsValues)
{
    writePicture("ramp.png", [](int x, int) { return 4 * x; });  // 256 x in memory
    m_pWindow->openFiles({path("ramp.png")});
    m_pFrames->m_pContrastMinSpin->setValue(1000);  // values beyond on both sides
    m_pFrames->m_pContrastMaxSpin->setValue(9000);
    m_pActions->m_listPalette[2]->setChecked(true);
    QDir(m_dir.path()).mkdir("out");
    EXPECT_EQ(save({path("out/a.tif") + "|PNG Image (*.png)"}), "Save Files");
    const QImage image(path("out/a.tif.png"));
    ASSERT_EQ(image.size(), QSize(64, 64));
    const unsigned char* pShown = m_pScene->images().front()->Data();
    EXPECT_EQ(pShown[63] - pShown[0], 255);
    for (int x = 0; x < 64; ++x) {
        EXPECT_EQ(image.pixel(x, 9), QRgb(0xFF000000u + 0x10101u * pShown[x])) << x;
    }
}

// No asks for another name. Working folder and suffix follow the names chosen.
TEST_F(ExportsWindow, AnExistingFileIsAskedAboutAndAFrameNeverReplaced)
{
    writePicture("ramp.png", [](int x, int) { return 4 * x; });  // 256 x in memory
    m_pWindow->openFiles({path("ramp.png")});
    QDir(m_dir.path()).mkdir("out");
    save({path("out/a.tif") + "|PNG Image (*.png)"});
    const QByteArray bytesBefore = readBytes(path("out/a.tif.png"));
    EXPECT_EQ(save({"a.tif|PNG Image (*.png)", int(QMessageBox::No), "b.MRC"}),
              "Save Files, Overwite: File \"" + path("out/a.tif.png") +
                  "\" already exists. Overwrite?, Save Files");
    EXPECT_EQ(readBytes(path("out/a.tif.png")), bytesBefore);
    ImageList vecSaved;
    ASSERT_TRUE(ReadMRC(path("out/b.MRC"), vecSaved));
    ASSERT_EQ(vecSaved.size(), 1u);
    for (int x = 0; x < 64; ++x) {
        EXPECT_EQ(vecSaved.front()->Data()[640 + x], 256 * x);
    }
    writeBytes(path("out/a.tif.png"), "old");
    save({"a.tif.png", int(QMessageBox::Yes)});
    EXPECT_EQ(readBytes(path("out/a.tif.png")), bytesBefore);

    const QByteArray bytesFrame = readBytes(path("ramp.png"));
    EXPECT_TRUE(save({path("ramp.png"), int(QMessageBox::Yes), int(QMessageBox::Ok)})
                    .endsWith("ramp.png is a frame of this series and is not overwritten."));
    EXPECT_EQ(readBytes(path("ramp.png")), bytesFrame);
    m_pTabs->setCurrentIndex(1);
    EXPECT_EQ(save({path("c.png")}), "Save Files");
    EXPECT_TRUE(files(m_dir.path(), "c.*").isEmpty());
}

TEST_F(ExportsWindow, WantFramesAndVolumesShifts)
{
    for (const QAction* pAction :
         {m_pActions->m_pSaveCurrent, m_pActions->m_pSaveSeries, m_pActions->m_pScaledFrames,
          m_pActions->m_pReciprocalVolume, m_pActions->m_pSmvImages, m_pActions->m_pMovieFrames}) {
        EXPECT_FALSE(pAction->isEnabled()) << pAction->text().toStdString();
    }
    open();
    const auto before = files(m_dir.path(), "*");
    for (QAction* pAction : {m_pActions->m_pReciprocalVolume, m_pActions->m_pSmvImages}) {
        EXPECT_TRUE(answered({}, [&] { pAction->trigger(); }).isEmpty());
    }
    EXPECT_EQ(lines("No shift correction data. Run shift evaluation first."), 2);
    EXPECT_EQ(files(m_dir.path(), "*"), before);
}

TEST_F(ExportsWindow, FilesOfTheSeriesAreTheDrivers)
{
    ASSERT_NO_FATAL_FAILURE(openWithShifts());
    const char* const pszVolume = "Volume Dimensions, Data Type Selection";
    const char* const pszSeries = "Select image output directory, Image Type Selection";
    QAction *const pScaled = m_pActions->m_pScaledFrames, *const pVolume = m_pActions->m_pReciprocalVolume;
    const QStringList listScaled = {"volume", "--volume-edge", "33", "--volume-type", "scaled"};
    const QStringList listTif = {"pictures", "--export-format", "tif"};
    const struct {
        QAction* pAction;
        QVariantList listAnswer;
        const char* pszTitles;
        const char* pszPattern;
        QStringList listDriver;  ///< none where a dialog is cancelled
        int nFiles;
    } aRow[] = {
        {m_pActions->m_pSmvImages, {}, "", "*.img", {"smv"}, 5},
        {pScaled, {0.33}, "Frame Scaling", "*_s.mrc", {"scaled", "--scale", "0.33"}, 5},
        {pScaled, {}, "Frame Scaling", "*_s.mrc", {}, 0},
        {pVolume, {20, "Raw"}, pszVolume, "w.mrc", {"volume", "--volume-edge", "20"}, 1},
        {pVolume, {33, "Scaled"}, pszVolume, "w.mrc", listScaled, 1},
        {pVolume, {33}, pszVolume, "w.mrc", {}, 0},
        {m_pActions->m_pSaveSeries, {m_dir.path(), "TIFF 8-bit (.tif)"}, pszSeries, "*.tif", listTif, 5},
        {m_pActions->m_pSaveSeries, {m_dir.path()}, pszSeries, "*.bmp", {}, 0},
    };
    for (const auto& row : aRow) {
        SCOPED_TRACE(&row - aRow);
        ASSERT_TRUE(row.pAction->isEnabled());
        const Files mapDriver = row.listDriver.isEmpty() ? Files()
                                                         : filesOfDriver(row.pszPattern, row.listDriver);
        EXPECT_EQ(answered(row.listAnswer, [&] { row.pAction->trigger(); }).join(", "), row.pszTitles);
        const Files mapWindow = take(row.pszPattern);
        EXPECT_EQ(mapWindow.size(), row.nFiles);
        EXPECT_EQ(mapWindow.keys(), mapDriver.keys());
        EXPECT_EQ(mapWindow, mapDriver) << "differs";
    }
    EXPECT_EQ(lines(""), 0);
    EXPECT_TRUE(m_pWindow->statusBar()->findChild<QProgressBar*>()->isHidden());
}

TEST_F(ExportsWindow, KeysBringUpTheDialogs)
{
    ASSERT_NO_FATAL_FAILURE(openWithShifts());
    EXPECT_EQ(keyed(Qt::Key_S), "Select image output directory");
    EXPECT_EQ(keyed(Qt::Key_B), "Frame Scaling");
    EXPECT_EQ(keyed(Qt::Key_R), "Volume Dimensions");
    EXPECT_EQ(keyed(Qt::Key_M), "");
    EXPECT_EQ(take("*.img").size(), 5);
}

// At the end of the file at hand, and no volume at all.
TEST_F(ExportsWindow, EndWhenTheWindowIsClosed)
{
    ASSERT_NO_FATAL_FAILURE(openWithShifts());
    const struct {
        QAction* pAction;
        QVariantList listAnswer;
        const char* pszPattern;
        int nFiles;
    } aClosed[] = {{m_pActions->m_pSmvImages, {}, "*.img", 1},
                   {m_pActions->m_pReciprocalVolume, {20, "Raw"}, "w.mrc*", 0}};
    for (const auto& row : aClosed) {
        m_pWindow->show();
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [this] {
            const auto* pBar = m_pWindow->statusBar()->findChild<QProgressBar*>();
            if (!pBar->isHidden() && pBar->value() >= 2) {
                m_pWindow->close();
            }
        });
        timer.start(0);
        answered(row.listAnswer, [&] { row.pAction->trigger(); });
        EXPECT_TRUE(QTest::qWaitFor([this] { return m_pWindow->isHidden(); }, 2000));
        const Files mapLeft = take(row.pszPattern);
        EXPECT_EQ(mapLeft.size(), row.nFiles) << row.pszPattern;
        for (const QByteArray& bytes : mapLeft) {
            EXPECT_EQ(bytes.size(), 512 + 2 * 192 * 192);
        }
    }
}

class Movie : public ExportsWindow {
protected:
    void SetUp() override
    {
        ExportsWindow::SetUp();
        ASSERT_EQ(runBatch({"--window-defaults", "--to", "peaks", path("w.ed3d")}).nStatus, 0);
        open();
        m_pTabs->setCurrentIndex(1);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWindow.get()));
        // Pictures have the size of the view, so the layout must have come to rest.
        QSize size;
        int nSame = 0;
        ASSERT_TRUE(QTest::qWaitFor(
            [&] {
                nSame = m_pRaw->size() == size ? nSame + 1 : 0;
                size = m_pRaw->size();
                return nSame == 20;
            },
            10000));
    }
    bool hasPictures() const { return !m_pRaw->grabFrameBuffer().isNull(); }
    /// The names of its pictures.
    QStringList movie(const QString& strStep)
    {
        m_pPanel->m_pComboRotationStep->setCurrentText(strStep);
        answered({path("movie.x.png")}, [&] { m_pActions->m_pMovieFrames->trigger(); });
        return files(m_dir.path(), "movie*").keys();
    }
};

TEST_F(Movie, WantsAStepOfItsRangeAndAPicture)
{
    EXPECT_EQ(keyed(Qt::Key_M), "Export Image Files");
    for (const char* pszStep : {"a lot", "0", "-90", "361"}) {
        EXPECT_TRUE(movie(pszStep).isEmpty()) << pszStep;
    }
    EXPECT_EQ(lines("Unknown numberic format."), 1);
    EXPECT_EQ(lines("The rotation step of a movie must be above "), 2);
    EXPECT_EQ(movie("90").isEmpty(), !hasPictures());
    EXPECT_EQ(lines("The 3D view gives no picture."), hasPictures() ? 0 : 1);
}

TEST_F(Movie, HasThePicturesOfTheViewThatIsTurnedByHand)
{
    if (!hasPictures()) {
        GTEST_SKIP() << "no OpenGL on this platform";
    }
    std::vector<QImage> vecWanted;
    for (int i = 0; i < 4; ++i) {
        vecWanted.push_back(m_pRaw->grabFrameBuffer());
        m_pRaw->rotateAroundScreenY(90);
    }
    EXPECT_NE(vecWanted[0], vecWanted[1]);
    EXPECT_EQ(movie("90"), (QStringList{"movie0000.png", "movie0001.png", "movie0002.png", "movie0003.png"}));
    for (size_t i = 0; i < 4; ++i) {
        const QImage image(m_dir.filePath(QStringLiteral("movie000%1.png").arg(i)));
        ASSERT_EQ(image.size(), vecWanted[i].size());
        int nDifferent = 0;
        for (int n = 0; n < image.width() * image.height(); ++n) {
            nDifferent += image.pixel(n % image.width(), n / image.width()) !=
                          vecWanted[i].pixel(n % image.width(), n / image.width());
        }
        EXPECT_LT(nDifferent, image.width() * image.height() / 200) << i;  // a full turn is not exact
    }
    EXPECT_EQ(movie("7").size(), 51);
}

TEST_F(Movie, ReplacesNoFrameOfTheSeries)
{
    if (!hasPictures()) {
        GTEST_SKIP() << "no OpenGL on this platform";
    }
    movie("90");
    m_pWindow->openFiles({path("movie0000.png"), path("movie0001.png")});
    m_pTabs->setCurrentIndex(1);
    const auto before = files(m_dir.path(), "movie*");
    movie("90");
    EXPECT_EQ(files(m_dir.path(), "movie*"), before);
    EXPECT_EQ(lines("movie0000.png is a frame of this series and would be overwritten."), 1);
}

}  // namespace tessera
