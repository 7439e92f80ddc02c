// The current frame, the runs on the frames, what lies on them, and the side files by hand.
#include "app/mainwindow.h"
#include "app/messageedit.h"
#include "app/windowactions.h"
#include "frames/frameseries.h"
#include "frames/pages/framespage.h"
#include "frames/pages/peaksearchpage.h"
#include "frames/pages/shiftpage.h"
#include "frameview/baseimgview.h"
#include "frameview/crossitem.h"
#include "frameview/originalimgscene.h"
#include "reciprocal/pages/cellpage.h"
#include "reciprocal/pages/mergingpage.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QGraphicsLineItem>
#include <QGraphicsPolygonItem>
#include <QLineEdit>
#include <QMouseEvent>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QTextBlock>
#include <QTimer>

#include <algorithm>
#include <memory>
#include <set>

namespace {

const int g_nFrames = 9;
const int g_nSide = 160;
const QPointF g_ptBeam(82.4, 76.7);  // on the first frame

QPointF drift(int nFrame)
{
    return {0.6 * nFrame, -0.35 * nFrame};
}

/// Pixel (x, y) of a frame: a beam and two spots that drift, over a regular ground.
double pixel(int nFrame, int x, int y)
{
    const QPointF pt = QPointF(x, y) - g_ptBeam - drift(nFrame);
    return 20 + 4000 * gaussian(pt.x(), pt.y(), 4) + 900 * gaussian(pt.x() - 21, pt.y() - 12, 2) +
           300 * gaussian(pt.x() + 55, pt.y() - 40, 2) + (x * 31 + y * 17) % 7;
}

/// A window on a series of such frames.
class FramesWindow : public testing::Test {
protected:
    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_series.dir.filePath("settings"));
        QByteArray bytesProject = "WAVELENGTH 0.0251\nROTATIONAXIS 30\nCCDPIXELSIZE 0.004\nFILELIST\n";
        for (int i = 0; i < g_nFrames; ++i) {
            m_series.add(makeImage(g_nSide, g_nSide, [&](int x, int y) { return pixel(i, x, y); }));
            const QByteArray bytesTilt = QByteArray::number(-2 + 0.5 * i);
            bytesProject += "FILE " +
                            QFileInfo(m_series.dataSet.m_listFrameFile.last()).fileName().toLatin1() + " " +
                            bytesTilt + " 0.25 " + bytesTilt + "\n";
        }
        m_strProject = write("series.ed3d", bytesProject + "ENDFILELIST\n");

        m_pWindow = std::make_unique<MainWindow>();
        m_pLog = m_pWindow->findChild<MessageEdit*>();
        m_pFrames = m_pWindow->findChild<FramesPage*>();
        m_pShift = m_pWindow->findChild<ShiftPage*>();
        m_pSearch = m_pWindow->findChild<PeakSearchPage*>();
        m_pView = m_pWindow->findChild<BaseImgView*>();
        m_pScene = m_pWindow->findChild<OriginalImgScene*>();
        m_pActions = m_pWindow->findChild<WindowActions*>();
        for (QSlider* pSlider : m_pWindow->findChildren<QSlider*>())
            if (pSlider->tickPosition() == QSlider::TicksAbove)
                m_pSlider = pSlider;
        m_pWindow->openFiles({m_strProject});
    }
    QString write(const QString& strName, const QByteArray& bytes)
    {
        QFile file(m_series.dir.filePath(strName));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }
    /// How often the log holds a line that ends so, in that colour.
    int lines(const QString& strEnd, Qt::GlobalColor color) const
    {
        int nLines = 0;
        for (QTextBlock block = m_pLog->document()->begin(); block.isValid(); block = block.next())
            if (block.text().endsWith(strEnd) && !block.begin().atEnd() &&
                block.begin().fragment().charFormat().foreground().color() == QColor(color))
                ++nLines;
        return nLines;
    }
    template <typename TItem>
    QList<TItem*> shownItems() const
    {
        QList<TItem*> listItem;
        for (QGraphicsItem* pItem : m_pScene->items())
            if (auto* pWanted = dynamic_cast<TItem*>(pItem))
                if (pWanted->isVisible())
                    listItem.append(pWanted);
        return listItem;
    }
    /// Calls `fnOpen` and answers its file dialog; an empty name cancels.
    void answer(const std::function<void()>& fnOpen, const QString& strTitle, const QString& strFilter,
                const QString& strFile)
    {
        bool bAnswered = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            auto* pDialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!pDialog || bAnswered)
                return;
            bAnswered = true;
            EXPECT_EQ(pDialog->windowTitle(), strTitle);
            EXPECT_EQ(pDialog->nameFilters(), strFilter.split(";;"));
            if (strFile.isEmpty())
                return pDialog->reject();
            pDialog->findChild<QLineEdit*>("fileNameEdit")->setText(strFile);
            QMetaObject::invokeMethod(pDialog, "accept");
        });
        timer.start(10);
        fnOpen();
        EXPECT_TRUE(bAnswered) << strTitle.toStdString();
    }
    /// The bytes of the image in view.
    QByteArray shownBytes() const
    {
        if (m_pScene->images().size() != 1)
            return {};
        const CImgObj<unsigned char>& img = *m_pScene->images().front();
        return QByteArray(reinterpret_cast<const char*>(img.Data()), img.Width() * img.Height());
    }
    void chooseRegion(int nSize) { m_pActions->m_listSelection[nSize]->trigger(); }

    FrameSeries m_series;
    QString m_strProject;
    std::unique_ptr<MainWindow> m_pWindow;
    MessageEdit* m_pLog = nullptr;
    FramesPage* m_pFrames = nullptr;
    ShiftPage* m_pShift = nullptr;
    PeakSearchPage* m_pSearch = nullptr;
    BaseImgView* m_pView = nullptr;
    OriginalImgScene* m_pScene = nullptr;
    WindowActions* m_pActions = nullptr;
    QSlider* m_pSlider = nullptr;
};

TEST_F(FramesWindow, EachControlLoadsAFrameOnceAndAllAgree)
{
    EXPECT_EQ(m_pFrames->m_pFileTable->item(8, 0)->text(), "f0008.mrc");
    EXPECT_EQ(m_pFrames->m_pFileTable->item(8, 1)->text(), "  2.00°");
    EXPECT_EQ(m_pFrames->m_pFileTable->item(8, 3)->text(), " 2.000°");
    QSignalSpy spyLoaded(m_pWindow.get(), &MainWindow::frameLoaded);
    auto* pSpin = m_pWindow->findChild<QSpinBox*>(QString());
    for (QSpinBox* pEach : m_pWindow->findChildren<QSpinBox*>())
        if (pEach->maximum() == g_nFrames)
            pSpin = pEach;
    const std::function<void(int)> afnSet[] = {
        [&](int n) { m_pSlider->setValue(n); },
        [&](int n) { pSpin->setValue(n); },
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
        EXPECT_EQ(pSpin->value(), nFrame);
        EXPECT_EQ(m_pFrames->m_pFileTable->currentRow(), nFrame - 1);
        --nFrame;
    }
    const double dfMax = m_pFrames->m_pContrastMaxSpin->value();
    EXPECT_GT(dfMax, 500);
    spyLoaded.clear();
    m_pWindow->switchToImgIndex(g_nFrames + 1);
    EXPECT_EQ(spyLoaded.size(), 0);
    EXPECT_EQ(m_pSlider->value(), 4);
    EXPECT_EQ(lines("Invalid file index: 10", Qt::red), 1);

    // A frame that cannot be read: its number stands, its predecessor stays in view, and all goes on.
    QFile::remove(m_series.dataSet.m_listFrameFile[1]);
    const QByteArray bytesBefore = shownBytes();
    m_pSlider->setValue(2);
    EXPECT_FALSE(spyLoaded.last()[1].toBool());
    EXPECT_EQ(pSpin->value(), 2);
    EXPECT_EQ(lines("f0001.mrc: failed to load", Qt::red), 1);
    EXPECT_EQ(shownBytes(), bytesBefore);
    m_pSlider->setValue(3);
    EXPECT_TRUE(spyLoaded.last()[1].toBool());
    EXPECT_NE(shownBytes(), bytesBefore);
    EXPECT_EQ(m_pFrames->m_pContrastMaxSpin->value(), dfMax);

    // The first frame that can be read gives the contrast of the series.
    QFile::remove(m_series.dataSet.m_listFrameFile[0]);
    m_pFrames->m_pContrastMaxSpin->setValue(1);
    m_pWindow->openFiles({m_strProject});
    EXPECT_EQ(m_pScene->currentIndex(), -1);
    m_pSlider->setValue(3);
    EXPECT_GT(m_pFrames->m_pContrastMaxSpin->value(), 500);
}

TEST_F(FramesWindow, PlayEndsAtTheEndsAndAtItsButton)
{
    QSignalSpy spyLoaded(m_pWindow.get(), &MainWindow::frameLoaded);
    m_pFrames->m_pPlayForwardButton->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_pSlider->value() == g_nFrames; }));
    EXPECT_EQ(spyLoaded.size(), g_nFrames - 1);
    m_pFrames->m_pPlayDelaySpin->setValue(30);
    QTest::qWait(60);
    EXPECT_EQ(m_pSlider->value(), g_nFrames);
    QElapsedTimer timer;
    timer.start();
    m_pFrames->m_pPlayBackwardButton->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_pSlider->value() == g_nFrames - 3; }));
    EXPECT_GE(timer.elapsed(), 80);
    m_pFrames->m_pPlayStopButton->click();
    QTest::qWait(80);
    EXPECT_EQ(m_pSlider->value(), g_nFrames - 3);
}

TEST_F(FramesWindow, ShiftEvaluationFillsTheTableAndBringsTheFrameBack)
{
    m_pSlider->setValue(5);
    EXPECT_FALSE(m_pShift->m_pRunButton->isEnabled());
    chooseRegion(2);  // 128
    EXPECT_TRUE(m_pShift->m_pRunButton->isEnabled());
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
    EXPECT_GE(elapsed.elapsed(), 30 * g_nFrames);
    EXPECT_EQ(setWidth.count(128), 1u);  // the regions
    EXPECT_GE(std::set<int>(listRows.begin(), listRows.end()).size(), 5);
    EXPECT_EQ(m_pScene->imageSize(), QSize(g_nSide, g_nSide));
    EXPECT_EQ(m_pSlider->value(), 5);
    EXPECT_FALSE(m_pShift->m_pRunButton->isEnabled());
    EXPECT_EQ(m_pActions->selectionIndex(), 0);
    ASSERT_EQ(m_pShift->m_pShiftTable->rowCount(), g_nFrames);
    for (int i = 0; i < g_nFrames; ++i) {
        EXPECT_NEAR(m_pShift->m_pShiftTable->item(i, 0)->text().toDouble(), drift(i).x(), 0.08) << i;
        EXPECT_NEAR(m_pShift->m_pShiftTable->item(i, 1)->text().toDouble(), drift(i).y(), 0.08) << i;
    }
    EXPECT_NEAR(m_pShift->m_pCenterXSpin->value(), g_ptBeam.x(), 0.3);
    EXPECT_NEAR(m_pShift->m_pCenterYSpin->value(), g_ptBeam.y(), 0.3);
    EXPECT_EQ(m_series.content("series.sc").count('\n'), 1 + g_nFrames);

    // The axis runs through the beam of the frame in view.
    m_pFrames->m_pShowAxisCheck->setChecked(true);
    ASSERT_EQ(shownItems<QGraphicsLineItem>().size(), 1);
    QLineF line = shownItems<QGraphicsLineItem>().first()->line();
    EXPECT_NEAR(line.angleTo(QLineF(0, 0, 1, 0)), 330, 0.5);
    const QPointF ptNow = g_ptBeam + drift(4);
    QPointF ptCross;
    EXPECT_EQ(line.intersects(QLineF(ptNow.x(), 0, ptNow.x(), g_nSide), &ptCross),
              QLineF::BoundedIntersection);
    EXPECT_NEAR(ptCross.y(), ptNow.y(), 1.2);
    m_pFrames->m_pShowAxisCheck->setChecked(false);
    EXPECT_TRUE(shownItems<QGraphicsLineItem>().isEmpty());

    // A file with fewer frames is not used, and said twice; a closing window leaves all as it was.
    const QByteArray bytesShift = m_series.content("series.sc");
    answer([&] { m_pShift->m_pLoadButton->click(); }, "Load ED Shift",
           "Shift Correction Files (*.sc);;All Files (*.*)", write("short.sc", "1 2\n1 0 0\n"));
    EXPECT_EQ(lines("is from 1 frames, while there are 9 frames in the current dataset.", Qt::red), 1);
    EXPECT_EQ(lines("short.sc as shift data.", Qt::red), 1);
    EXPECT_EQ(m_pShift->m_pShiftTable->rowCount(), g_nFrames);
    m_pWindow->show();
    chooseRegion(1);
    QTimer::singleShot(60, m_pWindow.get(), [&] { m_pWindow->close(); });
    m_pShift->m_pRunButton->click();
    QApplication::processEvents();
    EXPECT_FALSE(m_pWindow->isVisible());
    EXPECT_EQ(m_series.content("series.sc"), bytesShift);
    EXPECT_EQ(m_pShift->m_pShiftTable->rowCount(), g_nFrames);
}

TEST_F(FramesWindow, ThePreviewMarksWhatTheRunFindsOutsideTheMask)
{
    m_pSearch->m_pShowPeaksCheck->setChecked(true);
    ASSERT_EQ(shownItems<CrossItem>().size(), 3);
    const CrossItem* pCross = shownItems<CrossItem>().first();
    EXPECT_EQ(pCross->size(), 5);
    EXPECT_EQ(pCross->pen().color(), QColor(Qt::green));
    EXPECT_EQ(pCross->pen().widthF(), 1);
    m_pSearch->m_pThresholdSpin->setValue(50);  // the weaker spot goes
    EXPECT_EQ(shownItems<CrossItem>().size(), 2);
    m_pSearch->m_pThresholdSpin->setValue(1);
    EXPECT_EQ(shownItems<CrossItem>().size(), 3);

    const auto load = [&](const QString& strFile) {
        answer([&] { m_pSearch->m_pLoadMaskButton->click(); }, "Load Peak Hunting Mask",
               "Mask Files (*.msk);;All Files (*.*)", strFile);
    };
    load(write("beam.msk", "1 70 60\n1 95 60\n2 0 0\n1 95 85\n1 70 85\n2 1 1\n"));  // around the beam
    EXPECT_EQ(shownItems<CrossItem>().size(), 2);
    ASSERT_EQ(m_pSearch->m_pMaskTable->rowCount(), 2);
    EXPECT_EQ(m_pSearch->m_pMaskTable->item(0, 0)->text(), "4");
    EXPECT_EQ(m_pSearch->m_pMaskTable->item(1, 0)->text(), "2");
    EXPECT_TRUE(m_pSearch->m_pShowMaskCheck->isChecked());
    EXPECT_EQ(shownItems<QGraphicsPolygonItem>().size(), 2);
    load({});
    load(write("two.msk", "1 0 0\n1 9 9\n"));
    EXPECT_EQ(lines("two.msk as mask file.", Qt::red), 1);
    EXPECT_EQ(m_pSearch->m_pMaskTable->rowCount(), 2);
    m_pSearch->m_pShowMaskCheck->setChecked(false);
    EXPECT_TRUE(shownItems<QGraphicsPolygonItem>().isEmpty());

    // The run: what it finds is on disk, and the frame in view is shown again with its own marks.
    // Meanwhile the marks are those of the frame that was hunted last.
    m_pSlider->setValue(2);
    const auto* pBar = m_pWindow->findChild<QProgressBar*>();
    std::set<int> setHunted;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        const int nHunted = pBar->value();
        if (pBar->isHidden() || nHunted < 2 || !setHunted.insert(nHunted).second)
            return;
        const QList<CrossItem*> listMark = shownItems<CrossItem>();
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
    EXPECT_GE(m_series.content("series.pk").count('\n'), 2 * g_nFrames);
    EXPECT_EQ(lines("2 peaks found on frame #   1", Qt::black), 1);
    EXPECT_EQ(m_pWindow->findChild<QTabWidget*>()->currentIndex(), 1);
    EXPECT_EQ(m_pSearch->m_pThresholdSpin->value(), 2000);

    m_pWindow->findChild<QTabWidget*>()->setCurrentIndex(0);
    EXPECT_TRUE(shownItems<CrossItem>().isEmpty());
    m_pSearch->m_pThresholdSpin->setValue(1);
    m_pSearch->m_pClearMaskButton->click();
    EXPECT_EQ(m_pSearch->m_pMaskTable->rowCount(), 0);
    EXPECT_EQ(shownItems<CrossItem>().size(), 3);
    m_pSearch->m_pShowPeaksCheck->setChecked(false);
    EXPECT_TRUE(shownItems<CrossItem>().isEmpty());
}

TEST_F(FramesWindow, SideFilesGoOutAndComeBack)
{
    const QString strShiftFilter = "Shift Correction Files (*.sc);;All Files (*.*)";
    QByteArray bytesShift = "82.40 76.70\n";
    for (int i = 0; i < g_nFrames; ++i)
        bytesShift += QByteArray::number(i + 1) + " " + QByteArray::number(1234.5 * i) + " -0.25\n";
    answer([&] { m_pWindow->loadEDShift(); }, "Load ED Shift", strShiftFilter, write("in.sc", bytesShift));
    EXPECT_EQ(m_pShift->m_pCenterXSpin->value(), 82.4);
    EXPECT_EQ(m_pShift->m_pShiftTable->item(1, 0)->text(), QStringLiteral("%L1").arg(1234.5, 0, 'f', 2));
    m_pShift->m_pCenterYSpin->setValue(77.25);  // what the page shows is what is written
    answer([&] { m_pWindow->saveEDShift(); }, "Export Shift Data to File", strShiftFilter,
           m_series.dir.filePath("out.sc"));
    EXPECT_TRUE(
        m_series.content("out.sc").startsWith("   82.40   77.25\n   1    0.00   -0.25\n   2 1234.50"));

    const QString strPeakFilter = "Peak List Files (*.pk);;All Files (*.*)";
    answer([&] { m_pWindow->loadRawPeaks(); }, "Load Raw Peaks", strPeakFilter,
           write("in.pk", "1 2 0 100.5 20.5 77\n2 8 0 30 40 5\n"));
    answer([&] { m_pWindow->saveRawPeaks(); }, "Export Raw Peaks", strPeakFilter,
           m_series.dir.filePath("out.pk"));
    EXPECT_EQ(m_series.content("out.pk").count('\n'), 2);
    EXPECT_TRUE(m_series.content("out.pk").startsWith("       1    2     0  100.5   20.5     77.0"));
    EXPECT_EQ(lines("List of raw peaks saved to " + m_series.dir.filePath("out.pk"), Qt::black), 1);

    const auto* pCell = m_pWindow->findChild<CellPage*>();
    const QString strCellFilter = "Unit Cell Files (*.uc);;All Files (*.*)";
    answer([&] { m_pWindow->loadUnitCell(); }, "Load Unit Cell", strCellFilter,
           write("in.uc", "a* 0.1 0 0\nb* 0 0.05 0\nc* 0 0 0.04\n"));
    answer([&] { m_pWindow->loadUnitCell(); }, "Load Unit Cell", strCellFilter,
           write("bad.uc", "b* 0.1 0 0\na* 0 0.05 0\nc* 0 0 0.04\n"));
    EXPECT_EQ(lines("bad.uc as unit cell data.", Qt::red), 1);
    EXPECT_EQ(pCell->m_apEditCell[1]->text(), QLocale::system().toString(20.0, 'f', 2));
    answer([&] { m_pWindow->exportUnitCell(); }, "Export Unit Cell Data to File", strCellFilter,
           m_series.dir.filePath("out.uc"));
    EXPECT_TRUE(m_series.content("out.uc").contains("b*   0.00000000  0.05000000  0.00000000\n"));
}

TEST_F(FramesWindow, ThePointerReadsThePixelUnderIt)
{
    m_pWindow->resize(1200, 900);
    m_pWindow->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWindow.get()));
    m_pView->setScaleFactor(4);
    m_pView->centerOn(80, 80);
    QWidget* pPort = m_pView->viewport();
    const QPoint ptOnFrame = m_pView->mapFromScene(QPointF(81.5, 76.5));
    const auto move = [&](const QPoint& pt, Qt::MouseButtons buttons) {
        QTest::qWait(1);
        QMouseEvent event(QEvent::MouseMove, pt, pPort->mapToGlobal(pt), Qt::NoButton, buttons,
                          Qt::NoModifier);
        QApplication::sendEvent(pPort, &event);
    };
    const double dfValue = float(pixel(0, 81, 76));
    move(ptOnFrame, Qt::NoButton);
    EXPECT_EQ(m_pWindow->statusBar()->currentMessage(),
              QStringLiteral("Experimental(%L1, %L2): %L3").arg(81).arg(76).arg(dfValue));
    EXPECT_FALSE(m_pScene->isLabelVisible());
    QTest::mousePress(pPort, Qt::RightButton, {}, ptOnFrame);
    move(ptOnFrame, Qt::RightButton);
    EXPECT_TRUE(m_pScene->isLabelVisible());
    EXPECT_EQ(m_pView->dragMode(), QGraphicsView::NoDrag);
    EXPECT_EQ(pPort->cursor().shape(), Qt::CrossCursor);
    QTest::mouseRelease(pPort, Qt::RightButton, {}, ptOnFrame);
    if (auto* pMenu = QApplication::activePopupWidget())
        pMenu->close();
    move(ptOnFrame, Qt::NoButton);
    EXPECT_FALSE(m_pScene->isLabelVisible());
    EXPECT_EQ(m_pView->dragMode(), QGraphicsView::ScrollHandDrag);
    EXPECT_EQ(pPort->cursor().shape(), Qt::OpenHandCursor);

    // Off the frame nothing changes; a frame that could not be read has no values.
    move(m_pView->mapFromScene(QPointF(-3, 76)), Qt::NoButton);
    EXPECT_TRUE(m_pWindow->statusBar()->currentMessage().startsWith("Experimental(81"));
    QFile::remove(m_series.dataSet.m_listFrameFile[1]);
    m_pSlider->setValue(2);
    move(ptOnFrame, Qt::NoButton);
    EXPECT_EQ(m_pWindow->statusBar()->currentMessage(), QString());
}

}  // namespace
