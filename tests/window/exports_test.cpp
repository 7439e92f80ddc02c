// The File menu's ways of writing: names and questions of the dialogs, the files beside the driver's, the
// movie.
#include "app/dataset/hotpixelfile.h"
#include "app/mainwindow.h"
#include "app/messageedit.h"
#include "app/windowactions.h"
#include "batch/batchprogram.h"
#include "frames/frameloader.h"
#include "frames/pages/framespage.h"
#include "frameview/originalimgscene.h"
#include "imagefiles/mrcfile.h"
#include "imaging/contrast.h"
#include "recordingreport.h"
#include "view3d/ed3dwidget.h"
#include "view3d/pages/view3dpage.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QImage>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTimer>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

class ExportsWindow : public testing::Test {
protected:
    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.filePath("settings"));
        ASSERT_EQ(runProgram("tessera-simulate", {"--crystal", "quartz", "--frames", "5", "--size", "192",
                                                  "--pixel-size", "0.01", "--tilt-start", "-2", "--tilt-step",
                                                  "1", "--drift", "3", "--out", m_dir.path(), "--name", "w"})
                      .nStatus,
                  0);
    }
    QString path(const char* pszName) const { return m_dir.filePath(QString::fromLatin1(pszName)); }
    void open()
    {
        m_pWindow = std::make_unique<MainWindow>();
        m_pWindow->show();
        m_pActions = m_pWindow->findChild<WindowActions*>();
        m_pTabs = m_pWindow->findChild<QTabWidget*>();
        m_pWindow->openFiles({path("w.ed3d")});
    }
    /// Gives the dialogs that `fn` brings up their answers in turn: a path, after '|' a filter; the value or
    /// item of an input; the button of a question. None cancels. Returns the dialogs' titles.
    static QStringList answered(QVariantList listAnswer, const std::function<void()>& fn)
    {
        QStringList listTitle;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            auto* pDialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (!pDialog)
                return;
            listTitle.append(pDialog->windowTitle());
            if (listAnswer.isEmpty())
                return pDialog->reject();
            const QVariant answer = listAnswer.takeFirst();
            if (auto* pBox = qobject_cast<QMessageBox*>(pDialog)) {
                listTitle.last() += ": " + pBox->text();
                return pBox->button(QMessageBox::StandardButton(answer.toInt()))->click();
            }
            if (auto* pInput = qobject_cast<QInputDialog*>(pDialog)) {
                if (answer.type() == QVariant::Int)
                    pInput->setIntValue(answer.toInt());
                else if (answer.type() == QVariant::Double)
                    pInput->setDoubleValue(answer.toDouble());
                else
                    pInput->setTextValue(answer.toString());
            } else {
                auto* pFile = static_cast<QFileDialog*>(pDialog);
                pFile->setOption(QFileDialog::DontConfirmOverwrite);
                if (answer.toString().contains('|'))
                    pFile->selectNameFilter(answer.toString().section('|', 1));
                pFile->findChild<QLineEdit*>("fileNameEdit")->setText(answer.toString().section('|', 0, 0));
            }
            QMetaObject::invokeMethod(pDialog, "accept");
        });
        timer.start(10);
        fn();
        EXPECT_TRUE(listAnswer.isEmpty())
            << "dialogs are missing after " << listTitle.join(", ").toStdString();
        return listTitle;
    }
    /// The titles of the dialogs that a press of Ctrl+Shift and the key brings up and that are cancelled.
    QString keyed(Qt::Key key)
    {
        m_pWindow->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(m_pWindow.get()));
        const auto press = [&] {
            QTest::keyClick(m_pWindow.get(), key, Qt::ControlModifier | Qt::ShiftModifier);
        };
        return answered({}, press).join(", ");
    }
    /// The contents of the files of a pattern, by name.
    QMap<QString, QByteArray> files(const QString& strFolder, const char* pszPattern)
    {
        QMap<QString, QByteArray> map;
        for (const QString& strName : QDir(strFolder).entryList({pszPattern}, QDir::Files | QDir::Hidden))
            map[strName] = readBytes(strFolder + '/' + strName);
        return map;
    }
    int redLines(const QString& strText) const
    {
        int nLines = 0;
        const auto* pLog = m_pWindow->findChild<MessageEdit*>();
        for (QTextBlock block = pLog->document()->begin(); block.isValid(); block = block.next())
            nLines += block.text().contains(strText) &&
                      block.begin().fragment().charFormat().foreground().color() == QColor(Qt::red);
        return nLines;
    }

    QTemporaryDir m_dir;
    std::unique_ptr<MainWindow> m_pWindow;
    WindowActions* m_pActions = nullptr;
    QTabWidget* m_pTabs = nullptr;
};

}  // namespace

TEST_F(ExportsWindow, TheImageInViewIsSavedGreyOrAsItsValues)
{
    open();
    const auto save = [&](const QVariantList& list) {
        return answered(list, [this] { m_pWindow->saveCurrent(); }).join(", ");
    };
    ImageList vecFrame;
    QList<QPoint> listHot;
    QString strReason;
    ASSERT_TRUE(readHotPixelFile(path("hotpixels.txt"), listHot, &strReason));
    CRecordingReport report;
    const QStringList listFrame = QDir(m_dir.path()).entryList({"*.mrc"});
    ASSERT_TRUE(loadFirstImage(vecFrame, m_dir.filePath(listFrame.value(2)), listHot, report))
        << listFrame.size();
    const CImgObj<float>& frame = *vecFrame.front();
    const int nPixels = frame.Width() * frame.Height();
    m_pWindow->switchToImgIndex(3);
    auto* pPage = m_pWindow->findChild<FramesPage*>();
    const float fLow = 15.5f, fHigh = 90;  // values beyond on both sides
    pPage->m_pContrastMinSpin->setValue(double(fLow));
    pPage->m_pContrastMaxSpin->setValue(double(fHigh));
    m_pActions->m_listPalette[2]->setChecked(true);
    std::vector<unsigned char> vecByte(static_cast<size_t>(nPixels));
    FloatToByte(frame.Data(), vecByte.data(), nPixels, fLow, fHigh, 0, 255);

    QDir(m_dir.path()).mkdir("out");
    EXPECT_EQ(save({path("out/a.tif") + "|PNG Image (*.png)"}), "Save Files");
    const QImage image(path("out/a.tif.png"));
    ASSERT_EQ(image.size(), QSize(frame.Width(), frame.Height()));
    int nWrong = 0;
    for (int i = 0; i < nPixels; ++i)
        nWrong += image.pixel(i % image.width(), i / image.width()) !=
                  QRgb(0xFF000000u + 0x10101u * vecByte[size_t(i)]);
    EXPECT_EQ(nWrong, 0);
    for (int nEnd : {0, 255})
        EXPECT_GT(std::count(vecByte.begin(), vecByte.end(), nEnd), 0);

    // An existing file: No asks for another name. Working folder and suffix follow the names chosen.
    const QByteArray bytesBefore = readBytes(path("out/a.tif.png"));
    const QString strExists = QStringLiteral("Overwite: File \"%1\" already exists. Overwrite?");
    EXPECT_EQ(save({"a.tif|PNG Image (*.png)", int(QMessageBox::No), "b.MRC"}),
              "Save Files, " + strExists.arg(path("out/a.tif.png")) + ", Save Files");
    EXPECT_EQ(readBytes(path("out/a.tif.png")), bytesBefore);
    ImageList vecSaved;
    ASSERT_TRUE(ReadMRC(path("out/b.MRC"), vecSaved));
    ASSERT_EQ(vecSaved.size(), 1u);
    EXPECT_TRUE(std::equal(frame.Data(), frame.Data() + nPixels, vecSaved.front()->Data()));
    writeBytes(path("out/a.tif.png"), "old");
    save({"a.tif.png", int(QMessageBox::Yes)});
    EXPECT_EQ(readBytes(path("out/a.tif.png")), bytesBefore);

    const QString strFrame = m_dir.filePath(listFrame.value(0));
    const QByteArray bytesFrame = readBytes(strFrame);
    EXPECT_TRUE(
        save({strFrame, int(QMessageBox::Yes), int(QMessageBox::Ok)})
            .endsWith("Saving images: " + strFrame + " is a frame of this series and is not overwritten."));
    EXPECT_EQ(readBytes(strFrame), bytesFrame);

    m_pTabs->setCurrentIndex(1);
    EXPECT_FALSE(m_pActions->m_pSaveCurrent->isEnabled());
    EXPECT_EQ(save({path("c.png")}), "Save Files");
    EXPECT_EQ(save({"d"}), "Save Files");
    EXPECT_TRUE(files(m_dir.path(), "[cd].*").isEmpty());
}

TEST_F(ExportsWindow, WithoutFramesOrShifts)
{
    m_pWindow = std::make_unique<MainWindow>();
    m_pActions = m_pWindow->findChild<WindowActions*>();
    for (const QAction* pAction :
         {m_pActions->m_pSaveCurrent, m_pActions->m_pSaveSeries, m_pActions->m_pScaledFrames,
          m_pActions->m_pReciprocalVolume, m_pActions->m_pSmvImages, m_pActions->m_pMovieFrames})
        EXPECT_FALSE(pAction->isEnabled()) << pAction->text().toStdString();
    open();
    const auto before = files(m_dir.path(), "*");
    for (QAction* pAction : {m_pActions->m_pReciprocalVolume, m_pActions->m_pSmvImages})
        EXPECT_TRUE(answered({}, [&] { pAction->trigger(); }).isEmpty());
    EXPECT_EQ(redLines("No shift correction data. Run shift evaluation first."), 2);
    EXPECT_EQ(files(m_dir.path(), "*"), before);
}

TEST_F(ExportsWindow, TheSeriesAsTheDriverWritesIt)
{
    const QString strProject = path("w.ed3d");
    ASSERT_EQ(runBatch({"--window-defaults", "--to", "shifts", strProject}).nStatus, 0);
    // Frames and copies stand in one folder, so what is there goes before the window has its turn.
    typedef QMap<QString, QByteArray> Files;
    const auto take = [this](const char* pszPattern) {
        const Files map = files(m_dir.path(), pszPattern);
        for (const QString& strName : map.keys())
            EXPECT_TRUE(QFile::remove(m_dir.filePath(strName)));
        return map;
    };
    const auto driver = [&](const char* pszPattern, const QStringList& list) {
        const BatchOutcome outcome = runBatch(QStringList{"--export-only", "--window-defaults", "--export"} +
                                              list + QStringList{strProject});
        EXPECT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        return take(pszPattern);
    };
    open();
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
        const Files mapDriver = row.listDriver.isEmpty() ? Files() : driver(row.pszPattern, row.listDriver);
        EXPECT_EQ(answered(row.listAnswer, [&] { row.pAction->trigger(); }).join(", "), row.pszTitles);
        const Files mapWindow = take(row.pszPattern);
        EXPECT_EQ(mapWindow.size(), row.nFiles);
        EXPECT_EQ(mapWindow.keys(), mapDriver.keys());
        EXPECT_TRUE(mapWindow == mapDriver) << "differs";
    }
    EXPECT_EQ(redLines(""), 0);
    EXPECT_TRUE(m_pWindow->findChild<QProgressBar*>()->isHidden());

    EXPECT_EQ(keyed(Qt::Key_S), "Select image output directory");
    EXPECT_EQ(keyed(Qt::Key_B), "Frame Scaling");
    EXPECT_EQ(keyed(Qt::Key_R), "Volume Dimensions");
    EXPECT_EQ(keyed(Qt::Key_M), "");
    EXPECT_EQ(take("*.img").size(), 5);

    // The window closed in the middle: at the end of the file at hand, and no volume at all.
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
            const auto* pBar = m_pWindow->findChild<QProgressBar*>();
            if (!pBar->isHidden() && pBar->value() >= 2)
                m_pWindow->close();
        });
        timer.start(0);
        answered(row.listAnswer, [&] { row.pAction->trigger(); });
        EXPECT_TRUE(QTest::qWaitFor([this] { return m_pWindow->isHidden(); }, 2000));
        const Files mapLeft = take(row.pszPattern);
        EXPECT_EQ(mapLeft.size(), row.nFiles) << row.pszPattern;
        for (const QByteArray& bytes : mapLeft)
            EXPECT_EQ(bytes.size(), 512 + 2 * 192 * 192);
    }
}

TEST_F(ExportsWindow, Movie)
{
    ASSERT_EQ(runBatch({"--window-defaults", "--to", "peaks", path("w.ed3d")}).nStatus, 0);
    open();
    m_pTabs->setCurrentIndex(1);
    auto* pView = static_cast<ED3DWidget*>(m_pTabs->currentWidget());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWindow.get()));
    EXPECT_EQ(keyed(Qt::Key_M), "Export Image Files");
    const auto movie = [&](const QString& strStep) {
        m_pWindow->findChild<View3DPage*>()->m_pComboRotationStep->setCurrentText(strStep);
        answered({path("movie.x.png")}, [&] { m_pActions->m_pMovieFrames->trigger(); });
        return files(m_dir.path(), "movie*").keys();
    };
    for (const char* pszStep : {"a lot", "0", "-90", "361"})
        EXPECT_TRUE(movie(pszStep).isEmpty()) << pszStep;
    EXPECT_EQ(redLines("Unknown numberic format."), 1);
    EXPECT_EQ(redLines("The rotation step of a movie must be above "), 2);
    if (pView->grabFrameBuffer().isNull()) {  // without OpenGL
        EXPECT_TRUE(movie("90").isEmpty());
        EXPECT_EQ(redLines("The 3D view gives no picture."), 1);
        return;
    }
    // The pictures of the view that is turned by hand.
    std::vector<QImage> vecWanted;
    for (int i = 0; i < 4; ++i) {
        vecWanted.push_back(pView->grabFrameBuffer());
        pView->rotateAroundScreenY(90);
    }
    EXPECT_NE(vecWanted[0], vecWanted[1]);
    EXPECT_EQ(movie("90"), (QStringList{"movie0000.png", "movie0001.png", "movie0002.png", "movie0003.png"}));
    for (size_t i = 0; i < 4; ++i) {
        const QImage image(m_dir.filePath(QStringLiteral("movie000%1.png").arg(i)));
        ASSERT_EQ(image.size(), vecWanted[i].size());
        int nDifferent = 0;
        for (int n = 0; n < image.width() * image.height(); ++n)
            nDifferent += image.pixel(n % image.width(), n / image.width()) !=
                          vecWanted[i].pixel(n % image.width(), n / image.width());
        EXPECT_LT(nDifferent, image.width() * image.height() / 200) << i;  // a full turn is not exact
    }
    EXPECT_EQ(movie("7").size(), 51);

    // A picture of the movie that is a frame of the series.
    m_pWindow->openFiles({path("movie0000.png"), path("movie0001.png")});
    m_pTabs->setCurrentIndex(1);
    const auto before = files(m_dir.path(), "movie*");
    movie("90");
    EXPECT_EQ(files(m_dir.path(), "movie*"), before);
    EXPECT_EQ(redLines("movie0000.png is a frame of this series and would be overwritten."), 1);
}
