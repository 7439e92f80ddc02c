// The peak table, the curve of the row that is clicked, and the point groups between masks, views and tables.
#include "tests/window/windowtest.h"

#include <qwt_plot.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_marker.h>

namespace tessera {

namespace {

class PeakTableWindow : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        m_pWindow->show();
        m_pGroups = m_pPanel->m_pTablePeakGroups;
        m_pTarget = m_pMerging->m_pTableTargetPeaks;
        m_pPlot = m_pWindow->findChild<QwtPlot*>(QStringLiteral("curvePlot"));
    }
    /// Six frames whose beam tilt jumps before the fourth, with two reflections: A on all frames, of group 2
    /// on the first two, and B on frames 4 to 6, of which the last has no group.
    void open(bool bGroups = true)
    {
        QStringList listFrame;
        QByteArray bytesShift = "256 256\n", bytesPeaks;
        int nSerial = 0;
        for (int i = 0; i < 6; ++i) {
            writePicture(QStringLiteral("f%1.png").arg(i), [](int, int) { return 10; });
            listFrame += QStringLiteral("f%1.png 0 %2 %2").arg(i).arg(0.1 * i + (i > 2 ? 1 : 0));
            bytesShift += QByteArray::number(i + 1) + " 0 0\n";
            const auto add = [&](int nOnFrame, double dfX, double dfY, double dfI, const char* pchMask) {
                bytesPeaks += QString::asprintf("%8d%5d%6d%7.1f%7.1f%9.1f%12.1f%17s\n", ++nSerial, i,
                                                nOnFrame, dfX, dfY, dfI, 10 * dfI, pchMask)
                                  .toLatin1();
            };
            add(0, 300, 270, 1000.5 + 100 * i, bGroups && i < 2 ? "2000000000000000" : "8000000000000000");
            if (i > 2)
                add(1, 200, 240, 50 + i, bGroups && i == 5 ? "0000000000000000" : "8000000000000000");
        }
        write("s.sc", bytesShift);
        write("s.pk", bytesPeaks);
        m_pWindow->openFiles({writeProject("s.ed3d", listFrame, "ROTATIONAXIS 0\nCCDPIXELSIZE 0.002\n")});
    }
    /// "label count colour shown" of each row.
    static QStringList rows(const QTableWidget* pTable)
    {
        QStringList listRow;
        for (int i = 0; i < pTable->rowCount(); ++i)
            listRow.append(QStringLiteral("%1 %2 %3 %4")
                               .arg(pTable->item(i, 0)->text(), pTable->item(i, 1)->text(),
                                    pTable->item(i, 2)->background().color().name(),
                                    pTable->columnCount() > 3 ? pTable->item(i, 3)->text() : QString()));
        return listRow;
    }
    QString cell(int nRow, int nColumn) const
    {
        return m_pTable->model()->index(nRow, nColumn).data().toString();
    }
    QString lastLine() const { return log().section('\n', -1); }

    QTableWidget *m_pGroups = nullptr, *m_pTarget = nullptr;
    QwtPlot* m_pPlot = nullptr;
};

}  // namespace

TEST_F(PeakTableWindow, TheClipboardHasTheColumnsInSight)
{
    const QList<QAction*> listAction = m_pTable->horizontalHeader()->actions();
    ASSERT_EQ(listAction.size(), 29);
    listAction[1]->setChecked(true);
    m_pTable->setColumnWidth(5, 77);
    m_pWindow->updatePeakTable({});  // without rows the columns go, and come back as they were
    listAction[9]->setChecked(false);

    Peak3D peak;
    peak.nFrame = 0;
    peak.setHKL(1, 0, 0);  // allowed: the page names P 1
    peak.dfIPoint = 1234567.5;
    peak.dfDStar = 0.5;
    Peak3D weak = peak;
    weak.nID = 3;
    weak.dfIPoint = 2;
    m_pWindow->updatePeakTable({peak, weak});
    EXPECT_EQ(m_pTable->columnWidth(5), 77);
    m_pTable->sortByColumn(7, Qt::AscendingOrder);
    m_pWindow->copyAllReflectionsInPeakTable();
    // Digit groups stay only where the locale parts them by what is no space.
    const QLocale locale = QLocale::system();
    QString strStrong = locale.toString(1234567.5, 'f', 1);
    strStrong.remove(
        QRegularExpression(QStringLiteral("\\s"), QRegularExpression::UseUnicodePropertiesOption));
    QString strExpected = QStringLiteral(
        "3|1.00|1|0|0|2.0|0.500|1|0.0|0.0|0|0|0.00|0.00|0.00|0.00|1|0\n"
        "0|1.00|1|0|0|S|0.500|1|0.0|0.0|0|0|0.00|0.00|0.00|0.00|1|0");
    QStringList listExpected = strExpected.split('|');
    for (int i = 0; i < listExpected.size(); ++i)
        if (i % 17 > 1)  // the real index is not the locale's
            listExpected[i].replace('.', locale.decimalPoint());
    strExpected = listExpected.join('\t').replace(QStringLiteral("S"), strStrong);
    EXPECT_EQ(QApplication::clipboard()->text(), strExpected);
    QApplication::clipboard()->clear();
    m_pTable->clearSelection();
    const auto nRows = QItemSelectionModel::Select | QItemSelectionModel::Rows;
    for (int nRow : {1, 0})
        m_pTable->selectionModel()->select(m_pTable->model()->index(nRow, 5), nRows);
    m_pWindow->copySelectedReflectionsInPeakTable();
    EXPECT_EQ(QApplication::clipboard()->text(), strExpected) << "in the order of the rows";
}

TEST_F(PeakTableWindow, CurveOfTheRow)
{
    open(false);
    m_pWindow->peakReduction3D();
    ASSERT_EQ(m_pTable->model()->rowCount(), 2) << log().toStdString();
    m_pTabs->setCurrentIndex(3);
    m_pTable->sortByColumn(9, Qt::DescendingOrder);  // d: A comes first
    ASSERT_EQ(cell(0, 18), QStringLiteral("300"));

    // The page stands at two-dimensional intensities, which are ten times the others.
    const auto* pCurve = static_cast<QwtPlotCurve*>(m_pPlot->itemList(QwtPlotItem::Rtti_PlotCurve)[0]);
    const auto shown = [&] {
        QStringList list = {pCurve->title().text()};
        for (size_t i = 0; i < pCurve->dataSize(); ++i)
            list.append(QString::asprintf("%g:%g", pCurve->sample(int(i)).x(), pCurve->sample(int(i)).y()));
        for (const QwtPlotItem* pItem : m_pPlot->itemList(QwtPlotItem::Rtti_PlotMarker))
            list.append(QString::number(static_cast<const QwtPlotMarker*>(pItem)->xValue()));
        return list.join(' ');
    };
    const auto click = [&](Qt::MouseButton eButton = Qt::LeftButton) {
        const QRect rect = m_pTable->visualRect(m_pTable->model()->index(0, 7));
        QTest::mouseClick(m_pTable->viewport(), eButton, {}, rect.center());
    };
    const QString strA = QStringLiteral(
        "2D Integration 1:10005 2:11005 3:12005 4:13005 5:14005 6:15005 0.5 3.5");
    click();
    EXPECT_EQ(shown(), strA);
    QTest::keyClick(m_pTable, Qt::Key_Down);
    const QString strB = QStringLiteral("2D Integration 4:530 5:540 6:550 3.5");
    EXPECT_EQ(shown(), strB) << "the keyboard walks through the rows";
    click(Qt::RightButton);
    EXPECT_EQ(shown(), strA) << "the row that the menu is for";
    QTest::keyClick(m_pTable, Qt::Key_Down);
    EXPECT_EQ(shown(), strB);

    m_pWindow->copyIntensityCurveData();
    QString strCopied = QStringLiteral(
        "     4.0 \t      530.00\n     5.0 \t      540.00\n     6.0 \t      550.00\n\n");
    EXPECT_EQ(QApplication::clipboard()->text(), strCopied.replace('.', QLocale().decimalPoint()));

    // A row whose ID has no chain says so once and leaves the curve.
    Peak3D stranger;
    stranger.nID = 99;
    m_pWindow->updatePeakTable({stranger});
    m_pLog->clear();
    click();
    EXPECT_EQ(log(), "Failed to retrieve data for reflection with ID: 99.");
    EXPECT_EQ(shown(), strB);

    // Of the series before nothing is left to show, also not by a number that it had.
    QFile::copy(path("s.ed3d"), path("other.ed3d"));
    m_pWindow->openFiles({path("other.ed3d")});
    m_pTabs->setCurrentIndex(3);
    ASSERT_EQ(cell(0, 0), QStringLiteral("0"));
    click();
    EXPECT_EQ(lastLine(), QStringLiteral("Failed to retrieve data for reflection with ID: 0."));
    EXPECT_EQ(shown(), QStringLiteral("2D Integration"));
}

TEST_F(PeakTableWindow, GroupsBetweenMasksAndTables)
{
    open();
    EXPECT_EQ(m_pTabs->currentIndex(), 1);
    const QString strColor = m_pRaw->groupColors().value(1).name(), strZero = m_pRaw->groupColors()[0].name();
    EXPECT_EQ(rows(m_pGroups), QStringList({"Unlabeled 6 " + strZero + " ●", "Label2 2 " + strColor + " ●"}));
    EXPECT_EQ(rows(m_pTarget), QStringList({"Unlabeled 6 " + strZero + ' ', "Label2 2 " + strColor + ' '}));

    // A name, a colour and the eye by the panel; the row that the merging page has chosen stays chosen.
    m_pTarget->selectRow(1);
    m_pGroups->editItem(m_pGroups->item(1, 0));
    QPointer<QLineEdit> pEditor = m_pGroups->findChild<QLineEdit*>();
    ASSERT_TRUE(pEditor);
    pEditor->setText(QStringLiteral("spots"));
    m_pRaw->updatePointGroups();
    ASSERT_TRUE(pEditor) << "what is typed outlives a change of the groups";
    QTest::keyClick(pEditor, Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_EQ(m_pRaw->groupLabels()[1], QStringLiteral("spots"));
    m_pWindow->pointGroupTableCellClicked(1, 3);
    EXPECT_FALSE(m_pRaw->groupsVisible()[1]);
    EXPECT_EQ(answered({QColor(Qt::darkRed)}, [&] { m_pWindow->pointGroupTableCellClicked(1, 2); }),
              QStringList{"Select Color"});
    EXPECT_EQ(rows(m_pGroups)[1], QStringLiteral("spots 2 #800000 "));
    EXPECT_EQ(rows(m_pTarget)[1], QStringLiteral("spots 2 #800000 "));
    ASSERT_EQ(m_pTarget->selectedItems().size(), 3);
    EXPECT_EQ(m_pTarget->selectedItems().first()->row(), 1);

    // All groups one after the other, or those that are selected.
    answered({path("out.txt")}, [&] { m_pWindow->exportSelectedPeak3D(); });
    EXPECT_EQ(linesOf("out.txt").size(), 1 + 8);
    EXPECT_TRUE(linesOf("out.txt")[0].startsWith("# FrameNo.")) << "no indices from the raw view";
    answered({QStringLiteral("/proc/out.txt")}, [&] { m_pWindow->exportSelectedPeak3D(); });
    EXPECT_TRUE(log().contains("Failed to open file for writing: /proc/out.txt\n/proc/out.txt: "))
        << log().toStdString();

    answered({path("out.pk")}, [&] { m_pWindow->saveRawPeaks(); });
    EXPECT_EQ(lines("List of raw peaks saved to " + path("out.pk"), Qt::black), 1);

    // Reset asks only when there is something to reset.
    m_pRaw->removePointGroups({1});
    m_pWindow->resetSelectedPeakGroups();
    m_pMerging->m_pSpinIntensityMin->setValue(1100);
    answered({path("out.pk")}, [&] { m_pWindow->loadRawPeaks(); });
    // Of A1 to A5, and so is what is merged; A0 has kept its group when the limit lets it in.
    EXPECT_EQ(rows(m_pTarget).join('|').remove(QRegularExpression(" #\\w+ ")),
              QStringLiteral("Unlabeled 4|Label1 1"));
    m_pTarget->selectRow(1);
    m_pMerging->m_pButtonMerge->click();
    EXPECT_TRUE(log().contains("Merging the peaks of the group \"Label1\" (1).\n"));
    EXPECT_EQ(lines("1 peaks lie outside the intensity or resolution limits", Qt::black), 1);
    m_pTabs->setCurrentIndex(1);
    m_pMerging->m_pSpinIntensityMin->setValue(1000);
    EXPECT_EQ(rows(m_pTarget).join('|').remove(QRegularExpression(" #\\w+ ")),
              QStringLiteral("Unlabeled 4|Label1 2"));
    answered({int(QMessageBox::No)}, [&] { m_pWindow->resetSelectedPeakGroups(); });
    ASSERT_EQ(m_pRaw->groupPoints().size(), 2);
    EXPECT_EQ(m_pRaw->groupLabels()[1], QStringLiteral("Label1"));
    EXPECT_EQ(answered({int(QMessageBox::Yes)}, [&] { m_pWindow->resetSelectedPeakGroups(); }),
              QStringList{"Confirm: Are you sure you want to reset this table?"});
    EXPECT_EQ(m_pRaw->groupPoints().size(), 1);
}

// A peak list that had to wait for its shifts when it was opened.
TEST_F(PeakTableWindow, ALoadedShiftFileBringsAWaitingPeakListToLife)
{
    open();
    const QStringList listRow = rows(m_pTarget);
    m_pTabs->setCurrentIndex(0);
    ASSERT_TRUE(QFile::rename(path("s.sc"), path("late.sc")));
    m_pWindow->openFiles({path("s.ed3d")});
    EXPECT_EQ(m_pRaw->points().size(), 0);
    answered({path("late.sc")}, [&] { m_pWindow->loadEDShift(); });
    ASSERT_EQ(m_pRaw->points().size(), 8);
    EXPECT_NEAR(m_pRaw->points()[0].dfDStar, 0.002 * std::hypot(300 - 256, 270 - 256), 1e-4);
    QStringList listNow = rows(m_pTarget);
    ASSERT_EQ(listNow.size(), 2);
    for (int i : {0, 1})
        EXPECT_EQ(listNow[i].section(' ', 0, 1), listRow[i].section(' ', 0, 1));
    EXPECT_EQ(m_pTabs->currentIndex(), 0);
}

TEST_F(PeakTableWindow, GroupsOutliveLimitsGeometryAndOtherPoints)
{
    open();
    m_pWindow->peakReduction3D();
    answered({path("out.txt")}, [&] { m_pWindow->exportSelectedPeak3D(); });
    EXPECT_TRUE(linesOf("out.txt")[0].startsWith("# H | K | L ")) << "indices from the merged view";
    m_pTabs->setCurrentIndex(1);
    // The points are A0 A1 A2 A3 B3 A4 B4 A5; a change of a limit brings B5.
    m_pRaw->setGroupLabel(0, QStringLiteral("rest"));
    m_pRaw->setGroupColor(1, Qt::red);
    m_pRaw->insertPointGroup(2, QStringLiteral("odd"), {1, 3, 7}, Qt::blue);
    m_pRaw->insertPointGroup(3, QStringLiteral("B"), {0, 4, 6}, Qt::green);
    m_pRaw->setGroupVisible(2, false);
    const auto state = [this] {
        QStringList list;
        for (int g = 0; g < m_pRaw->groupLabels().size(); ++g) {
            list << m_pRaw->groupLabels()[g] + ' ' + m_pRaw->groupColors()[g].name().mid(1) +
                        (m_pRaw->groupsVisible()[g] ? "" : " hidden");
            for (int n : m_pRaw->groupPoints()[g])
                list.last() += (m_pRaw->points()[n].dfX2D > 250 ? " A" : " B") +
                               QString::number(m_pRaw->points()[n].nFrame);
        }
        return list.join(", ").toStdString();
    };
    const std::string strAll =
        "rest ffffff A2 A4 B5, Label2 ff0000 A0 A1, odd 0000ff hidden A1 A3 A5, B 00ff00 A0 B3 B4";
    m_pTarget->selectRow(2);
    const auto chosen = [this] {
        const QList<QTableWidgetItem*> list = m_pTarget->selectedItems();
        return list.isEmpty() ? -1 : list.first()->row();
    };
    for (QDoubleSpinBox* p :
         {m_pMerging->m_pSpinResolutionMax, m_pFrames->m_pPixelSizeSpin, m_pFrames->m_pRotationAxisSpin}) {
        p->stepUp();
        EXPECT_EQ(state(), strAll);
        EXPECT_EQ(chosen(), 2);
    }
    m_pWindow->peakReduction3D();
    EXPECT_TRUE(log().contains("Merging the peaks of the group \"odd\" (3).\n3 peaks in "));
    m_pTabs->setCurrentIndex(1);
    const std::string strSome = "rest ffffff A2 A4, Label2 ff0000 A1, odd 0000ff hidden A1 A3 A5, B 00ff00";
    m_pMerging->m_pSpinIntensityMin->setValue(1050);
    EXPECT_EQ(state(), strSome);

    // A list of points for a look: none of them can be merged, and what has been merged stays.
    m_pWindow->openFiles({write("in.txt", "1 1 0 2 0.1 0.2 0.3 5 77 ok\n")});
    EXPECT_EQ(state(), "Unlabeled ffffff B-1");
    const int nRows = m_pTable->model()->rowCount(), nMerged = m_pMerged->points().size();
    m_pWindow->peakReduction3D();
    EXPECT_EQ(lastLine(),
              QStringLiteral("The points of this group are no peaks of the data set. Nothing was merged."));
    EXPECT_EQ(m_pTable->model()->rowCount(), nRows);
    EXPECT_EQ(m_pMerged->points().size(), nMerged);
    EXPECT_GT(nMerged, 0);
    m_pMerging->m_pSpinIntensityMax->setValue(5000);
    EXPECT_EQ(state(), strSome);

    // Groups that go and unite while some of their peaks are out of sight.
    m_pGroups->selectRow(1);
    m_pWindow->removeSelectedPeakGroups();
    EXPECT_EQ(state(), "rest ffffff A2 A4, odd 0000ff hidden A1 A3 A5, B 00ff00");
    m_pGroups->setRangeSelected({1, 0, 2, 3}, true);
    m_pWindow->mergeSelectedPeakGroups();
    m_pMerging->m_pSpinIntensityMin->setValue(0);
    EXPECT_EQ(state(), "rest ffffff A2 A4 B5, odd 0000ff A0 A1 A3 B3 B4 A5");
    answered({path("out.pk")}, [&] { m_pWindow->saveRawPeaks(); });
    QString strMasks;
    for (const QString& strLine : linesOf("out.pk"))
        strMasks += strLine.right(16)[0];
    EXPECT_EQ(strMasks, QStringLiteral("448448448"));

    // What is united with group 0 becomes group 1, in sight or not. One group alone keeps its looks, too.
    m_pMerging->m_pSpinIntensityMin->setValue(1150);
    m_pGroups->setRangeSelected({0, 0, 1, 3}, true);
    m_pWindow->mergeSelectedPeakGroups();
    m_pMerging->m_pSpinIntensityMin->setValue(0);
    EXPECT_EQ(state(), "rest ffffff, rest ffffff A0 A1 A2 A3 B3 A4 B4 A5 B5");
    m_pRaw->removePointGroups({1});
    m_pRaw->setGroupColor(0, Qt::cyan);
    m_pRaw->setGroupVisible(0, false);
    m_pMerging->m_pSpinResolutionMax->stepUp();
    EXPECT_EQ(state(), "rest 00ffff hidden A0 A1 A2 A3 B3 A4 B4 A5 B5");
    m_pRaw->insertPointGroup(1, QStringLiteral("last"), {0}, Qt::green);

    // Both views have two groups: what is typed or chosen for one of them is not the other's.
    m_pMerged->insertPointGroup(1, QStringLiteral("other"), {0}, Qt::green);
    m_pMerged->setGroupLabel(0, QStringLiteral("rest"));
    m_pGroups->setCurrentCell(1, 0);
    m_pGroups->editItem(m_pGroups->item(1, 0));
    ASSERT_TRUE(m_pGroups->findChild<QLineEdit*>());
    QTest::keyClicks(m_pGroups->findChild<QLineEdit*>(), QStringLiteral("mine"));
    m_pTabs->setCurrentIndex(2);
    QCoreApplication::processEvents();
    EXPECT_EQ(
        m_pRaw->groupLabels()[1] + '|' + m_pMerged->groupLabels()[1] + '|' + m_pGroups->item(1, 0)->text(),
        QStringLiteral("mine|other|other"));
    m_pGroups->selectRow(1);
    m_pTabs->setCurrentIndex(1);
    m_pWindow->removeSelectedPeakGroups();
    EXPECT_EQ(m_pRaw->groupLabels().size() + m_pMerged->groupLabels().size(), 4);
}

}  // namespace tessera
