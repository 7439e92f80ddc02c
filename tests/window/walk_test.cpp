// From "Open..." to indexed reflections as a user gets there, and what the driver makes of the same series.
//
// Pointer and keys enter through the window that holds the widgets, so what is out of sight, covered or
// without the focus is not reached.
#include "dataset/unitcellfile.h"
#include "tests/window/windowtest.h"

#include <qwt_plot.h>
#include <qwt_plot_curve.h>

namespace tessera {

namespace {

const QPoint g_ptDrag(9, -7);  // frame pixels; the beam stays within the region

class Walk : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        simulate(m_dir.path(),
                 "--frames 41 --size 256 --pixel-size 0.008 --tilt-start -20 --tilt-step 1 "
                 "--beam-x 134.4 --beam-y 123.3 --drift 2");
        m_pWindow->resize(1400, 1000);
        m_pWindow->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWindow.get()));
        ASSERT_NO_FATAL_FAILURE(activate());
        ASSERT_NO_FATAL_FAILURE(walk());
    }
    void walk()
    {
        ASSERT_NO_FATAL_FAILURE(openByKeys(path("w.ed3d")));
        ASSERT_EQ(m_pScene->imageSize(), QSize(256, 256));

        ASSERT_NO_FATAL_FAILURE(openPage("Shift Evaluation"));
        ASSERT_NO_FATAL_FAILURE(click(onPage("Select 128×128")));
        const QPointF ptBefore = m_pScene->selectionRect().topLeft();
        ASSERT_EQ(m_pView->scaleFactor(), 1);
        const QPoint ptFrom = m_pView->mapFromScene(m_pScene->selectionRect().center() + QPointF(20, 20));
        ASSERT_NO_FATAL_FAILURE(drag(m_pView->viewport(), ptFrom, ptFrom + g_ptDrag));
        m_ptRegion = (ptBefore + g_ptDrag).toPoint();
        ASSERT_NO_FATAL_FAILURE(click(onPage("Run")));

        ASSERT_NO_FATAL_FAILURE(openPage("Peak Search"));
        ASSERT_NO_FATAL_FAILURE(click(onPage("Run")));

        // All peaks as a group of their own, and a second one of some of them.
        ASSERT_NO_FATAL_FAILURE(openPage("3D View Control"));
        const int nPeaks = m_pRaw->points().size();
        for (const double dfPart : {0.99, 0.3}) {
            ASSERT_NO_FATAL_FAILURE(band(dfPart));
            const int nPicked = m_pRaw->selectedPoints().size();
            EXPECT_GT(nPicked, 0);
            EXPECT_EQ(nPicked == nPeaks, dfPart > 0.9) << nPicked;
            EXPECT_EQ(m_pPanel->m_pEditSelectedCount->text(), QStringLiteral("%L1").arg(nPicked));
            EXPECT_EQ(m_pWindow->statusBar()->currentMessage(), QStringLiteral("%L1 selected").arg(nPicked));
            ASSERT_NO_FATAL_FAILURE(click(onPage("Add")));
        }
        EXPECT_EQ(m_pPanel->m_pTablePeakGroups->rowCount(), 3);
        ASSERT_NO_FATAL_FAILURE(openPage("3D Peak Merging"));
        auto* pTarget = currentPage()->findChild<QTableWidget*>();
        ASSERT_EQ(pTarget->item(0, 1)->text(), QStringLiteral("0"));
        ASSERT_NO_FATAL_FAILURE(
            clickAt(pTarget->viewport(), pTarget->visualItemRect(pTarget->item(1, 0)).center()));
        ASSERT_NO_FATAL_FAILURE(click(onPage("Merge")));
        EXPECT_EQ(m_pTabs->currentIndex(), 2);

        ASSERT_NO_FATAL_FAILURE(openPage("Unit Cell Determination and Indexing"));
        ASSERT_NO_FATAL_FAILURE(click(onPage("Search for Unit Cell")));
        for (const char* pszBox : {"Output Indexing Results", "Output Reflection Statistics"}) {
            ASSERT_NO_FATAL_FAILURE(click(onPage(pszBox)));
        }
        ASSERT_NO_FATAL_FAILURE(click(onPage("Index Merged Peaks")));
    }
    /// Ctrl+O, and the path typed into the dialog that comes.
    void openByKeys(const QString& strFile)
    {
        bool bAnswered = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            auto* pDialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!pDialog || bAnswered) {
                return;
            }
            if (!pDialog->isActiveWindow()) {
                return pDialog->activateWindow();
            }
            bAnswered = true;
            auto* pEdit = pDialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            QTest::keyClicks(pEdit, strFile);
            EXPECT_EQ(pEdit->text(), strFile);
            QTest::keyClick(pEdit, Qt::Key_Return);
            if (pDialog->isVisible()) {
                ADD_FAILURE() << "Return does not open what was typed";
                pDialog->reject();
            }
        });
        timer.start(20);
        QTest::keyClick(m_pWindow->windowHandle(), Qt::Key_O, Qt::ControlModifier);
        ASSERT_TRUE(bAnswered) << "no file dialog came";
        ASSERT_NO_FATAL_FAILURE(activate());
    }
    QWidget* currentPage() const { return m_pWindow->findChild<QToolBox*>()->currentWidget(); }
    QAbstractButton* onPage(const char* pszText) const { return button(currentPage(), pszText); }
    void openPage(const char* pszTitle) { click(button(m_pWindow->findChild<QToolBox*>(), pszTitle)); }
    void openTab(int nIndex)
    {
        auto* pBar = m_pTabs->findChild<QTabBar*>();
        clickAt(pBar, pBar->tabRect(nIndex).center());
    }
    static QAbstractButton* button(const QWidget* pParent, const char* pszText)
    {
        for (QAbstractButton* pButton : pParent->findChildren<QAbstractButton*>()) {
            if (pButton->text() == QString::fromUtf8(pszText) ||
                pButton->toolTip() == QString::fromUtf8(pszText)) {
                return pButton;
            }
        }
        ADD_FAILURE() << "no button " << pszText;
        return nullptr;
    }
    void click(QWidget* pWidget)
    {
        ASSERT_NE(pWidget, nullptr);
        QPoint pt = pWidget->rect().center();
        if (qobject_cast<QCheckBox*>(pWidget)) {
            pt.setX(10);  // on the box or its text
        }
        clickAt(pWidget, pt);
    }
    /// A click at a place of a widget, which is scrolled into view as far as need be.
    void clickAt(QWidget* pWidget, const QPoint& ptIn, Qt::MouseButton nButton = Qt::LeftButton)
    {
        QTest::qWait(20);  // a page that has just come to sight is laid out
        scrollTo(pWidget, ptIn);
        const QPoint pt = pWidget->mapTo(m_pWindow.get(), ptIn);
        ASSERT_EQ(m_pWindow->childAt(pt), pWidget) << "out of sight";
        ASSERT_TRUE(pWidget->isEnabled());
        QTest::mouseClick(m_pWindow->windowHandle(), nButton, {}, pt);
    }
    /// Turns the wheel on the scroll bar of the page.
    void scrollTo(QWidget* pWidget, const QPoint& ptIn)
    {
        QScrollArea* pArea = nullptr;
        for (QWidget* pEach = pWidget; pEach && !pArea; pEach = pEach->parentWidget()) {
            pArea = qobject_cast<QScrollArea*>(pEach);
        }
        for (int i = 0; pArea && i < 200; ++i) {
            const int nY = pWidget->mapTo(pArea, ptIn).y();
            if (nY > 8 && nY < pArea->height() - 8) {
                return;
            }
            const QPointF pt = pArea->verticalScrollBar()->mapTo(m_pWindow.get(),
                                                                 pArea->verticalScrollBar()->rect().center());
            QWheelEvent event(pt, m_pWindow->mapToGlobal(pt.toPoint()), {}, {0, nY > 8 ? -40 : 40}, {}, {},
                              Qt::NoScrollPhase, false);
            QApplication::sendEvent(m_pWindow->windowHandle(), &event);
        }
    }
    /// A rubber band round the centre of the view, over a part of its width and height.
    void band(double dfPart)
    {
        QWidget* pView = m_pTabs->currentWidget();
        const QPoint ptHalf(int(pView->width() * dfPart / 2), int(pView->height() * dfPart / 2));
        const QPoint ptCentre = pView->rect().center();
        drag(pView, ptCentre - ptHalf, ptCentre + ptHalf, Qt::ControlModifier);
    }
    /// Drags within a widget, whose places on the way lie in sight.
    void drag(QWidget* pWidget, QPoint ptFrom, QPoint ptTo, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::qWait(20);
        ptFrom = pWidget->mapTo(m_pWindow.get(), ptFrom);
        ptTo = pWidget->mapTo(m_pWindow.get(), ptTo);
        const QPoint ptHalfWay = (ptFrom + ptTo) / 2;
        ASSERT_EQ(m_pWindow->childAt(ptHalfWay), pWidget) << "out of sight";
        QWindow* pHandle = m_pWindow->windowHandle();
        QTest::mousePress(pHandle, Qt::LeftButton, modifiers, ptFrom);
        QTest::mouseMove(pHandle, ptHalfWay);
        QTest::mouseMove(pHandle, ptTo);
        QTest::mouseRelease(pHandle, Qt::LeftButton, modifiers, ptTo);
    }
    void expectInLog(const QStringList& listWanted, int& nFrom) const
    {
        const QString strLog = log();
        for (const QString& strWanted : listWanted) {
            const int nAt = strLog.indexOf(strWanted, nFrom);
            ASSERT_GE(nAt, 0) << strWanted.toStdString() << " is missing or out of order in\n"
                              << strLog.toStdString();
            nFrom = nAt + strWanted.size();
        }
    }
    void expectAllRunsInLog(int& nFrom) const
    {
        expectInLog(
            {QStringLiteral("Reference region: (%1, %2) 128×128\n").arg(m_ptRegion.x()).arg(m_ptRegion.y()),
             QStringLiteral(">Image shift evaluation finished in "),
             QStringLiteral(" peaks found on frame #  41\n"),
             QStringLiteral("Peak list saved to %1.").arg(path("w.pk")),
             QStringLiteral(">Peak hunting finished in "), QStringLiteral(" chains found. "),
             QStringLiteral("Found unit cell: a="),
             QStringLiteral(">HKL file written: %1\n").arg(path("w.hkl")),
             QStringLiteral(">p4p file written: %1\n").arg(path("w.p4p")),
             QStringLiteral(">List of the indexed peaks on the frames output to file: %1").arg(path("w.ipf")),
             QStringLiteral(">Unit cell used for indexing: a="), QStringLiteral("%) were indexed."),
             QStringLiteral("SG.Symbol")},
            nFrom);
    }
    /// With the region as the log has it, so that a line that hides a fraction is found out.
    void expectFilesOfDriver() const
    {
        const QRegularExpressionMatch match =
            QRegularExpression(QStringLiteral("Reference region: \\((\\d+), (\\d+)\\) 128×128")).match(log());
        ASSERT_TRUE(match.hasMatch());
        const QString strOther = path("driver");
        const BatchOutcome outcome = runBatch({"--window-defaults", "--region",
                                               match.captured(1) + ',' + match.captured(2) + ",128", "--out",
                                               strOther, path("w.ed3d")});
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        const struct {
            const char* pszName;
            int nLines;  ///< at least
        } aFile[] = {{"w.sc", 42}, {"w.pk", 300}, {"w.uc", 3}, {"w.hkl", 60}, {"w.p4p", 1}, {"w.ipf", 200}};
        for (const auto& file : aFile) {
            const QByteArray bytesWindow = readBytes(path(file.pszName));
            EXPECT_GE(bytesWindow.count('\n'), file.nLines) << file.pszName;
            EXPECT_EQ(bytesWindow, readBytes(strOther + '/' + file.pszName)) << file.pszName << " differs";
        }
    }
    /// A row of the table gives its curve.
    void expectCurveOfARow()
    {
        ASSERT_NO_FATAL_FAILURE(openTab(3));
        const QModelIndex index = m_pTable->model()->index(2, 7);
        m_pTable->scrollTo(index);
        ASSERT_NO_FATAL_FAILURE(clickAt(m_pTable->viewport(), m_pTable->visualRect(index).center()));
        const auto listCurve = m_pWindow->findChild<QwtPlot*>(QStringLiteral("curvePlot"))
                                   ->itemList(QwtPlotItem::Rtti_PlotCurve);
        const double dfHighest = static_cast<QwtPlotCurve*>(listCurve.first())->maxYValue();
        EXPECT_EQ(QLocale::system().toString(dfHighest, 'f', 1), index.data().toString());
    }
    /// A matrix typed and taken: a*' = a* + b*, in the cell file too.
    void expectMatrixTaken()
    {
        const QList<Vec3D> listBefore = readUnitCellFile(path("w.uc"));
        ASSERT_EQ(listBefore.size(), 3);
        ASSERT_NO_FATAL_FAILURE(click(m_pCell->m_apEditMatrix[0][1]));
        for (const QKeySequence& key : {QKeySequence("Ctrl+A"), QKeySequence("1"), QKeySequence("Tab")}) {
            QTest::keySequence(m_pWindow->windowHandle(), key);
        }
        ASSERT_NO_FATAL_FAILURE(click(onPage("Transform")));
        EXPECT_EQ(m_pCell->m_apEditMatrix[0][1]->text(), QStringLiteral("0"));
        const QList<Vec3D> listAfter = readUnitCellFile(path("w.uc"));
        ASSERT_EQ(listAfter.size(), 3);
        const Vec3D aWanted[] = {listBefore[0] + listBefore[1], listBefore[1], listBefore[2]};
        for (int i = 0; i < 3; ++i) {
            EXPECT_LT(length(listAfter[i] - aWanted[i]), 4e-8f) << i;
        }
    }
    QPoint m_ptRegion;  ///< upper left corner of the region that was dragged
};

}  // namespace

TEST_F(Walk, EndsWithTheFilesOfTheDriver)
{
    int nFrom = 0;
    ASSERT_NO_FATAL_FAILURE(expectAllRunsInLog(nFrom));
    ASSERT_NO_FATAL_FAILURE(expectFilesOfDriver());
    double dfX = 0;
    double dfY = 0;
    QTextStream(readBytes(path("w.sc"))) >> dfX >> dfY;
    EXPECT_NEAR(dfX, 134.4, 0.5);
    EXPECT_NEAR(dfY, 123.3, 0.5);
    ASSERT_NO_FATAL_FAILURE(expectCurveOfARow());
    ASSERT_NO_FATAL_FAILURE(expectMatrixTaken());
    expectInLog({QStringLiteral("Transformed unit cell: a=")}, nFrom);
}

}  // namespace tessera
