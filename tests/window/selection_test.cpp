// One selection in all views, whichever of them it was made in; and what the pointer tells on a frame.
#include "frameview/spotring.h"
#include "frameview/textitem.h"
#include "tests/window/windowtest.h"
#include "window/frames/curveplot.h"
#include "window/frameview/frameguides.h"
#include "window/reciprocal/peaktableview.h"
#include "window/selection/selectioncontroller.h"

#include <qwt_plot_canvas.h>

namespace tessera {

namespace {

/// Six frames with reflections A, on all of them and strongest on the third, and B, on the last three and
/// strongest on the fifth; and with a weak peak C on the first, which the limits leave out.
class SelectionWindow : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        m_pWindow->resize(1280, 800);
        m_pWindow->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWindow.get()));
        m_pController = m_pWindow->findChild<SelectionController*>();
        m_pPeaks = static_cast<PeakTableView*>(m_pTable);
        m_pPlot = m_pWindow->findChild<CurvePlot*>();
        m_pReading = m_pWindow->findChild<QLabel*>(QStringLiteral("frameReading"));
        open();
        merge();
    }
    void open()
    {
        QStringList listFrame;
        QByteArray bytesShift = "32 32\n", bytesPeaks;
        int nSerial = 0;
        for (int i = 0; i < 6; ++i) {
            writePicture(QStringLiteral("f%1.png").arg(i), [](int x, int) { return x; });
            listFrame += QStringLiteral("f%1.png 0 %2 %2").arg(i).arg(0.1 * i);
            bytesShift += QByteArray::number(i + 1) + " 0 0\n";
            const auto add = [&](int nOnFrame, const QPoint& pt, double dfI) {
                bytesPeaks += QString::asprintf("%8d%5d%6d%7.1f%7.1f%9.1f%12.1f 8000000000000000\n",
                                                ++nSerial, i, nOnFrame, double(pt.x()), double(pt.y()), dfI,
                                                10 * dfI)
                                  .toLatin1();
            };
            add(0, g_ptA, i == 2 ? 2000 : 1000 + i);
            if (i > 2) {
                add(1, g_ptB, i == 4 ? 900 : 500 + i);
            }
            if (i == 0) {
                add(1, g_ptC, 3);
            }
        }
        write("s.sc", bytesShift);
        write("s.pk", bytesPeaks);
        m_pWindow->openFiles({writeProject("s.ed3d", listFrame, "ROTATIONAXIS 0\nCCDPIXELSIZE 0.02\n")});
        m_pMerging->m_pSpinIntensityMin->setValue(10);
    }
    void merge()
    {
        m_pWindow->peakReduction3D();
        ASSERT_EQ(m_pTable->model()->rowCount(), 2) << log().toStdString();
        for (const Peak3D& peak : m_pMerged->points()) {
            (peak.dfX2D == g_ptA.x() ? m_nA : m_nB) = peak.nID;
        }
        ASSERT_NE(m_nA, m_nB);
    }
    static std::vector<int> idsOf(const ED3DWidget* pView)
    {
        std::vector<int> vecId;
        for (int nPoint : pView->selectedPoints()) {
            vecId.push_back(pView->points().at(nPoint).nID);
        }
        return vecId;
    }
    static QPoint placeOf(const ED3DWidget* pView, int nID)
    {
        for (int i = 0; i < pView->points().size(); ++i) {
            if (pView->points().at(i).nID == nID) {
                return pView->placeOfPoint(i).toPoint();
            }
        }
        return {};
    }
    void clickOnFrame(const QPointF& ptRaw, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseClick(m_pView->viewport(), Qt::LeftButton, modifiers, onView(ptRaw));
        QCoreApplication::processEvents();
    }
    QPoint onView(const QPointF& ptRaw) const { return m_pView->mapFromScene(ptRaw + QPointF(0.5, 0.5)); }
    void clickOnRow(int nID, Qt::KeyboardModifiers modifiers = {})
    {
        for (int nRow = 0; nRow < 2; ++nRow) {
            const QModelIndex index = m_pTable->model()->index(nRow, 0);
            if (index.data().toInt() == nID) {
                QTest::mouseClick(m_pTable->viewport(), Qt::LeftButton, modifiers,
                                  m_pTable->visualRect(index).center());
            }
        }
    }
    void step(const char* pszKey)
    {
        for (QAction* pAction : m_pController->actions()) {
            if (pAction->shortcut() == QKeySequence(QLatin1String(pszKey))) {
                pAction->trigger();
            }
        }
    }
    std::vector<QPointF> rings() const
    {
        std::vector<QPointF> vecPlace;
        for (const SpotRing* pRing : marks<SpotRing>()) {
            vecPlace.push_back(pRing->pos() - QPointF(0.5, 0.5));
        }
        return vecPlace;
    }
    /// A reflection and nothing else is chosen in all views; leaves the frame in front.
    void expectChosen(int nID, int nFrame, const char* pszFrom)
    {
        const std::string strFrom = pszFrom;
        EXPECT_EQ(m_pController->model().reflections(), std::vector<int>({nID})) << strFrom;
        EXPECT_EQ(idsOf(m_pMerged), std::vector<int>({nID})) << strFrom;
        EXPECT_EQ(m_pMerged->points().value(m_pMerged->ringedPoint()).nID, nID) << strFrom;
        EXPECT_EQ(idsOf(m_pRaw).size(), nID == m_nA ? 6u : 3u) << strFrom;
        EXPECT_EQ(m_pRaw->points().value(m_pRaw->ringedPoint()).nFrame, nFrame) << strFrom;
        for (int nPoint : m_pRaw->selectedPoints()) {
            EXPECT_EQ(m_pRaw->points()[nPoint].dfX2D, pointOf(nID).x()) << strFrom;
        }
        EXPECT_EQ(m_pPeaks->selectedIds(), std::vector<int>({nID})) << strFrom;
        EXPECT_EQ(m_pPeaks->currentId(), nID) << strFrom;
        EXPECT_EQ(m_pPlot->reflection(), nID) << strFrom;
        EXPECT_EQ(m_pPlot->text().count('\n') - 1, nID == m_nA ? 6 : 3) << strFrom;
        m_pTabs->setCurrentIndex(0);
        EXPECT_EQ(m_pSpin->value(), nFrame + 1) << strFrom;
        EXPECT_EQ(rings(), std::vector<QPointF>({pointOf(nID)})) << strFrom;
    }
    void expectNothingChosen()
    {
        EXPECT_TRUE(m_pController->model().isEmpty());
        EXPECT_TRUE(idsOf(m_pRaw).empty());
        m_pTabs->setCurrentIndex(0);
        EXPECT_TRUE(rings().empty());
    }
    QPointF pointOf(int nID) const { return nID == m_nA ? g_ptA : g_ptB; }
    QString status() const { return m_pWindow->statusBar()->currentMessage(); }

    const QPoint g_ptA{45, 38}, g_ptB{20, 24}, g_ptC{50, 10};
    int m_nA = -1, m_nB = -1;
    SelectionController* m_pController = nullptr;
    PeakTableView* m_pPeaks = nullptr;
    CurvePlot* m_pPlot = nullptr;
    QLabel* m_pReading = nullptr;
};

}  // namespace

TEST_F(SelectionWindow, AChoiceInAViewIsThatOfAll)
{
    m_pTabs->setCurrentIndex(2);
    QTest::mouseClick(m_pMerged, Qt::LeftButton, {}, placeOf(m_pMerged, m_nB));
    EXPECT_EQ(m_pTabs->currentIndex(), 2) << "the tab in front stays";
    expectChosen(m_nB, 4, "merged view");

    m_pTabs->setCurrentIndex(1);
    int nOfA = -1;  // the peak on the third frame; those of the others lie on it as the picture goes
    for (int i = 0; i < m_pRaw->points().size(); ++i) {
        if (m_pRaw->points()[i].dfX2D == g_ptA.x() && m_pRaw->points()[i].nFrame == 2) {
            nOfA = i;
        }
    }
    QTest::mouseClick(m_pRaw, Qt::LeftButton, {}, m_pRaw->placeOfPoint(nOfA).toPoint());
    const int nFrame = m_pController->model().current().nFrame;
    expectChosen(m_nA, nFrame, "raw view");
    QTest::mouseClick(m_pRaw, Qt::LeftButton, {}, QPoint(5, 5));
    expectChosen(m_nA, nFrame, "beside all points");
}

TEST_F(SelectionWindow, AChoiceInTableFrameOrCurveIsThatOfAll)
{
    m_pTabs->setCurrentIndex(3);
    clickOnRow(m_nB);
    expectChosen(m_nB, 4, "table");
    m_pTabs->setCurrentIndex(3);
    QTest::keyClick(m_pTable, m_pTable->currentIndex().row() == 0 ? Qt::Key_Down : Qt::Key_Up);
    expectChosen(m_nA, 2, "keys of the table");

    m_pSpin->setValue(4);
    EXPECT_EQ(rings(), std::vector<QPointF>({g_ptA})) << "on each of its frames";
    clickOnFrame(g_ptB + QPointF(3, 0));
    expectChosen(m_nB, 3, "frame, which stays");
    clickOnFrame({32, 60});
    expectChosen(m_nB, 3, "beside all spots");

    const auto clickCurve = [&](double dfFrame, double dfIntensity) {
        QTest::mouseClick(m_pPlot->canvas(), Qt::LeftButton, {},
                          QPoint(qRound(m_pPlot->transform(QwtPlot::xBottom, dfFrame)),
                                 qRound(m_pPlot->transform(QwtPlot::yLeft, dfIntensity))));
    };
    m_pTabs->setCurrentIndex(2);
    clickCurve(6, 5050);
    expectChosen(m_nB, 5, "curve");
    EXPECT_FALSE(status().contains(QStringLiteral("—"))) << status().toStdString();
    EXPECT_TRUE(status().contains(QStringLiteral("frame 6"))) << status().toStdString();
}

// Both by a band, one taken out by Control, put in again by Shift.
TEST_F(SelectionWindow, SeveralAreChosenByBandControlAndShift)
{
    m_pTabs->setCurrentIndex(2);
    QTest::mousePress(m_pMerged, Qt::LeftButton, Qt::ControlModifier, QPoint(1, 1));
    QMouseEvent move(QEvent::MouseMove, m_pMerged->rect().bottomRight(), Qt::NoButton, Qt::LeftButton,
                     Qt::ControlModifier);
    QApplication::sendEvent(m_pMerged, &move);
    QTest::mouseRelease(m_pMerged, Qt::LeftButton, Qt::ControlModifier,
                        QPoint(m_pMerged->width() - 2, m_pMerged->height() - 2));
    EXPECT_EQ(m_pController->model().reflections().size(), 2u);
    EXPECT_EQ(status(), QStringLiteral("2 selected")) << "what the band told";
    EXPECT_EQ(m_pRaw->selectedPoints().size(), 9);
    EXPECT_EQ(m_pPeaks->selectedIds().size(), 2u);
    QTest::mouseClick(m_pMerged, Qt::LeftButton, Qt::ControlModifier, placeOf(m_pMerged, m_nB));
    EXPECT_EQ(m_pPeaks->selectedIds(), std::vector<int>({m_nA}));
    EXPECT_EQ(m_pController->model().current().nReflection, m_nA);
    m_pTabs->setCurrentIndex(0);
    m_pSpin->setValue(5);
    clickOnFrame(g_ptB, Qt::ShiftModifier);
    EXPECT_EQ(idsOf(m_pMerged).size(), 2u);
    EXPECT_EQ(rings().size(), 2u);
}

TEST_F(SelectionWindow, APeakThatTheLimitsHideIsOnItsFrameAlone)
{
    m_pTabs->setCurrentIndex(0);
    m_pSpin->setValue(1);
    clickOnFrame(g_ptC);
    EXPECT_TRUE(m_pController->model().reflections().empty());
    EXPECT_EQ(rings(), std::vector<QPointF>({g_ptC}));
    EXPECT_TRUE(status().contains(QStringLiteral("not in \"3D View Raw\""))) << status().toStdString();
    EXPECT_TRUE(m_pPeaks->selectedIds().empty());
}

TEST_F(SelectionWindow, WhereAChoiceCannotBeSeenIsTold)
{
    m_pTabs->setCurrentIndex(0);
    m_pMerged->setGroupVisible(0, false);
    m_pWindow->updatePeakTable({*std::find_if(m_pMerged->points().begin(), m_pMerged->points().end(),
                                              [this](const Peak3D& peak) { return peak.nID == m_nB; })});
    clickOnFrame(g_ptA);
    EXPECT_TRUE(status().contains(QStringLiteral("hidden in \"3D View Merged\""))) << status().toStdString();
    EXPECT_TRUE(status().contains(QStringLiteral("\"Peak Table\""))) << status().toStdString();
    m_pMerged->setGroupVisible(0, true);
    m_pMerged->setLattice({{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}});
    m_pMerged->setSlab(CloudSlab{{0, 0, 1}, 500, 0.2});
    clickOnFrame(g_ptA);
    EXPECT_TRUE(status().contains(QStringLiteral("outside the slab l = 500 ± 0.2 in \"3D View Merged\"")))
        << status().toStdString();
}

// All rows to the clipboard choose nothing.
TEST_F(SelectionWindow, ADoubleClickDropsTheChoiceInAllViews)
{
    m_pController->chooseReflection(m_nA);
    m_pWindow->copyAllReflectionsInPeakTable();
    EXPECT_EQ(m_pController->model().reflections(), std::vector<int>({m_nA}));
    QTest::mouseDClick(m_pRaw, Qt::LeftButton, {}, QPoint(5, 5));
    expectNothingChosen();
    EXPECT_TRUE(idsOf(m_pMerged).empty());
}

TEST_F(SelectionWindow, NothingIsChosenOfAnotherMergingOrDataSet)
{
    m_pController->chooseReflection(m_nA);
    merge();
    expectNothingChosen();
    EXPECT_TRUE(idsOf(m_pMerged).empty());
    EXPECT_TRUE(m_pPeaks->selectedIds().empty());
    m_pController->chooseReflection(m_nB);
    open();
    expectNothingChosen();
}

TEST_F(SelectionWindow, KeysStepThroughPeaksAndFrames)
{
    m_pTabs->setCurrentIndex(0);
    m_pSpin->setValue(5);
    step("F6");  // A is 14.3 pixels from the beam, B 14.4
    expectChosen(m_nA, 4, "first of the frame");
    step("F6");
    expectChosen(m_nB, 4, "second");
    step("F6");
    expectChosen(m_nA, 4, "round again");
    step("F7");
    expectChosen(m_nA, 5, "next frame");
    step("F7");
    expectChosen(m_nA, 0, "round again");
    step("F6");
    EXPECT_EQ(rings(), std::vector<QPointF>({g_ptC})) << "on the frame in view";
    step("Shift+F6");
    expectChosen(m_nA, 0, "back");
    step("F8");
    EXPECT_TRUE(status().contains(QStringLiteral("not indexed yet")));

    // A is the only one on this lattice.
    const Vec3D a = m_pMerged->points()[m_pMerged->points()[0].nID == m_nA ? 0 : 1].point();
    write("c.uc", QString::asprintf("a* %.8f %.8f %.8f\nb* %.8f %.8f 0.0\nc* 0.0 0.0 0.7\n", double(a.x),
                                    double(a.y), double(a.z), -0.4 * double(a.y), 0.4 * double(a.x))
                      .toLatin1());
    answered({path("c.uc")}, [this] { m_pWindow->loadUnitCell(); });
    m_pTabs->setCurrentIndex(2);
    m_pCell->m_pButtonIndexMergedPeaks->click();
    ASSERT_EQ(m_pTable->model()->rowCount(), 1) << log().toStdString();
    step("F8");
    EXPECT_EQ(m_pController->model().reflections(), std::vector<int>({m_nB}));
    EXPECT_TRUE(status().contains(QStringLiteral("\"Peak Table\""))) << status().toStdString();
    step("Shift+F8");
    EXPECT_EQ(m_pController->model().reflections(), std::vector<int>({m_nB})) << "the only one";
    m_pController->chooseReflection(m_nA);
    EXPECT_TRUE(status().contains(QStringLiteral("(1, 0, 0)"))) << status().toStdString();
}

TEST_F(SelectionWindow, ThePointerTellsResolutionAngleAndIndices)
{
    m_pTabs->setCurrentIndex(0);
    const QLocale locale = QLocale::system();
    // 10 pixels to the right of the beam, along the axis: 0.2 Å⁻¹ in the flat pattern.
    emit m_pScene->mouseMoving({42.5, 32.5});
    EXPECT_TRUE(m_pReading->isVisible());
    EXPECT_EQ(m_pReading->text(), QStringLiteral("d %1 Å   d* %2 Å⁻¹   ∠axis %3°")
                                      .arg(locale.toString(5.0, 'f', 3), locale.toString(0.2, 'f', 4),
                                           locale.toString(0.0, 'f', 1)));
    EXPECT_TRUE(status().startsWith(QStringLiteral("Experimental("))) << "beside what was told before";
    emit m_pScene->mouseMoving({70, 32.5});
    EXPECT_FALSE(m_pReading->isVisible()) << "beside the frame";
    write("c.uc", "a* 0.1 0 0\nb* 0 0.1 0\nc* 0 0 0.1\n");
    answered({path("c.uc")}, [this] { m_pWindow->loadUnitCell(); });
    emit m_pScene->mouseMoving({42.5, 32.5});
    EXPECT_TRUE(m_pReading->text().contains(QStringLiteral("hkl %1 ").arg(locale.toString(2.0, 'f', 1))))
        << m_pReading->text().toStdString();
}

// Kept for the next start, and drawn anew with the geometry.
TEST_F(SelectionWindow, RingsOfResolutionLieOnTheFrame)
{
    m_pTabs->setCurrentIndex(0);
    auto* pRings = m_pWindow->findChild<FrameGuides*>()->ringsAction();
    const auto texts = [this] {
        QStringList list;
        for (const TextItem* pText : marks<TextItem>(QColor(0, 190, 255))) {
            list.append(pText->text());
        }
        list.sort();
        return list;
    };
    EXPECT_TRUE(texts().isEmpty());
    pRings->trigger();
    const QStringList listText = texts();
    EXPECT_TRUE(listText.contains(QStringLiteral("2 Å"))) << listText.join(' ').toStdString();
    EXPECT_TRUE(setting("FrameView/ResolutionRings").toBool());
    m_pFrames->m_pPixelSizeSpin->setValue(0.01);
    EXPECT_FALSE(texts().isEmpty());
    EXPECT_NE(texts(), listText);
    m_pFrames->m_pPixelSizeSpin->setValue(0.02);
    m_pSpin->setValue(3);
    EXPECT_EQ(texts(), listText);
    pRings->trigger();
    EXPECT_TRUE(texts().isEmpty());
}

// It moves nothing; the next click takes it away.
TEST_F(SelectionWindow, ADragWithShiftMeasures)
{
    m_pTabs->setCurrentIndex(0);
    QCoreApplication::processEvents();  // laid out before places of it are named
    const QLocale locale = QLocale::system();
    const QColor colorLine(255, 200, 0);
    const auto pressed = onView({22, 32}), released = onView({42, 32});
    QTest::mousePress(m_pView->viewport(), Qt::LeftButton, Qt::ShiftModifier, pressed);
    QTest::mouseMove(m_pView->viewport(), released);
    QMouseEvent move(QEvent::MouseMove, released, Qt::NoButton, Qt::LeftButton, Qt::ShiftModifier);
    QApplication::sendEvent(m_pView->viewport(), &move);
    QTest::mouseRelease(m_pView->viewport(), Qt::LeftButton, Qt::ShiftModifier, released);
    QCoreApplication::processEvents();
    ASSERT_EQ(marks<QGraphicsLineItem>(colorLine).size(), 1);
    const double dfScale = m_pView->scaleFactor();
    EXPECT_NEAR(marks<QGraphicsLineItem>(colorLine)[0]->line().length(), 20, 1 / dfScale);
    const QString strText = marks<TextItem>(colorLine)[0]->text();
    EXPECT_TRUE(strText.contains(QStringLiteral("pixels\n%1").arg(locale.toString(0.4, 'f', 1))))
        << strText.toStdString();
    EXPECT_TRUE(m_pController->model().isEmpty()) << "a drag chooses nothing";
    clickOnFrame({32, 60});
    EXPECT_TRUE(marks<QGraphicsLineItem>(colorLine).isEmpty());
}

}  // namespace tessera
