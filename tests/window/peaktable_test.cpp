// The peak table, the curve of the row that is clicked, and the point groups between masks, views and tables.
#include "reciprocal/peaktable.h"
#include "tests/window/windowtest.h"
#include "window/reciprocal/peakfilterbar.h"
#include "window/reciprocal/peaktableview.h"

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
            if (i > 2) {
                add(1, 200, 240, 50 + i, bGroups && i == 5 ? "0000000000000000" : "8000000000000000");
            }
        }
        write("s.sc", bytesShift);
        write("s.pk", bytesPeaks);
        m_pWindow->openFiles({writeProject("s.ed3d", listFrame, "ROTATIONAXIS 0\nCCDPIXELSIZE 0.002\n")});
    }
    /// "label count colour shown" of each row.
    static QStringList rows(const QTableWidget* pTable)
    {
        QStringList listRow;
        for (int i = 0; i < pTable->rowCount(); ++i) {
            listRow.append(QStringLiteral("%1 %2 %3 %4")
                               .arg(pTable->item(i, 0)->text(), pTable->item(i, 1)->text(),
                                    pTable->item(i, 2)->background().color().name(),
                                    pTable->columnCount() > 3 ? pTable->item(i, 3)->text() : QString()));
        }
        return listRow;
    }
    QString cell(int nRow, int nColumn) const
    {
        return m_pTable->model()->index(nRow, nColumn).data().toString();
    }
    QString lastLine() const { return log().section('\n', -1); }
    PeakTableView& table() const { return dynamic_cast<PeakTableView&>(*m_pTable); }
    template <class T>
    T* inBar(const char* pszName) const
    {
        return table().filterBar().findChild<T*>(QLatin1String(pszName));
    }
    QLineEdit* line() const { return inBar<QLineEdit>("peakFilter"); }
    QString counts() const { return inBar<QLabel>("peakFilterCounts")->text(); }
    QString error() const
    {
        const auto* pLabel = inBar<QLabel>("peakFilterError");
        return pLabel->isVisibleTo(m_pTable) ? pLabel->text() : QString();
    }
    void typeFilter(const QString& strLine)
    {
        line()->clear();
        QTest::keyClicks(line(), strLine);
        QTest::keyClick(line(), Qt::Key_Return);
    }
    /// The numbers of the rows that are seen, in their order.
    QList<int> ids() const
    {
        QList<int> listID;
        for (int i = 0; i < m_pTable->model()->rowCount(); ++i) {
            listID.append(cell(i, 0).toInt());
        }
        return listID;
    }
    /// Reflections h = 0 to n - 1, the strongest last, every third of them not indexed.
    static QList<Peak3D> reflections(int nCount)
    {
        QList<Peak3D> listPeak;
        for (int i = 0; i < nCount; ++i) {
            Peak3D peak;
            peak.nID = 100 + i;
            peak.nFrame = i;
            peak.setHKL(i, i % 3 == 2 ? 0.5 : 0, -i);
            peak.dfIPoint = 1e7 / 3 * i;
            peak.dfDStar = 0.1 + 0.01 * i;
            peak.dfX2D = -1234.567 + i / 7.0;
            listPeak.append(peak);
        }
        return listPeak;
    }
    /// Two rows with the second and without the twelfth column: strong, and "0" beside weak, "3".
    void showTwoReflections()
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
        m_pTable->sortByColumn(7, Qt::AscendingOrder);
    }
    /// The same as text in the locale. Digit groups stay only where the locale parts them by what is no
    /// space.
    static QString textOfTwoReflections()
    {
        const QLocale locale = QLocale::system();
        QString strStrong = locale.toString(1234567.5, 'f', 1);
        strStrong.remove(
            QRegularExpression(QStringLiteral("\\s"), QRegularExpression::UseUnicodePropertiesOption));
        QStringList listField = QStringLiteral(
                                    "3|1.00|1|0|0|2.0|0.500|1|0.0|0.0|0|0|0.00|0.00|0.00|0.00|1|0\n"
                                    "0|1.00|1|0|0|S|0.500|1|0.0|0.0|0|0|0.00|0.00|0.00|0.00|1|0")
                                    .split('|');
        for (int i = 0; i < listField.size(); ++i) {
            if (i % 17 > 1) {  // the real index is not the locale's
                listField[i].replace('.', locale.decimalPoint());
            }
        }
        return listField.join('\t').replace(QStringLiteral("S"), strStrong);
    }

    QTableWidget *m_pGroups = nullptr, *m_pTarget = nullptr;
    QwtPlot* m_pPlot = nullptr;
};

}  // namespace

TEST_F(PeakTableWindow, TheClipboardHasTheColumnsInSight)
{
    ASSERT_NO_FATAL_FAILURE(showTwoReflections());
    const QString strExpected = textOfTwoReflections();
    EXPECT_EQ(m_pTable->columnWidth(5), 77);
    m_pWindow->copyAllReflectionsInPeakTable();
    EXPECT_EQ(QApplication::clipboard()->text(), strExpected);
    QApplication::clipboard()->clear();
    m_pTable->clearSelection();
    const auto nRows = QItemSelectionModel::Select | QItemSelectionModel::Rows;
    for (int nRow : {1, 0}) {
        m_pTable->selectionModel()->select(m_pTable->model()->index(nRow, 5), nRows);
    }
    m_pWindow->copySelectedReflectionsInPeakTable();
    EXPECT_EQ(QApplication::clipboard()->text(), strExpected) << "in the order of the rows";
}

TEST_F(PeakTableWindow, NoNumberIsElided)
{
    m_pTabs->setCurrentIndex(3);
    m_pWindow->updatePeakTable(reflections(400));
    for (QAction* pAction : m_pTable->horizontalHeader()->actions()) {
        pAction->setChecked(true);
    }
    // The delegate's own measure, with a pixel for the line of the grid.
    QStyleOptionViewItem option;
    option.initFrom(m_pTable);
    option.font = m_pTable->font();
    option.fontMetrics = m_pTable->fontMetrics();
    const auto needed = [&](int nColumn) {
        int nNeeded = m_pTable->horizontalHeader()->sectionSizeHint(nColumn);
        for (int i = 0; i < m_pTable->model()->rowCount(); ++i) {
            nNeeded = std::max(
                nNeeded,
                1 + m_pTable->itemDelegate()->sizeHint(option, m_pTable->model()->index(i, nColumn)).width());
        }
        return nNeeded;
    };
    for (int nColumn = 0; nColumn < g_nPeakTableColumns; ++nColumn) {
        if (m_pTable->isColumnHidden(nColumn)) {
            continue;
        }
        EXPECT_GE(m_pTable->columnWidth(nColumn), needed(nColumn)) << "column " << nColumn;
        EXPECT_LE(m_pTable->columnWidth(nColumn), needed(nColumn) + 20) << "column " << nColumn;
        EXPECT_FALSE(
            m_pTable->model()->headerData(nColumn, Qt::Horizontal, Qt::ToolTipRole).toString().isEmpty());
    }
    // Made wider, a column stays so; narrower than its numbers it cannot be; a double click fits it again.
    const int nFit = m_pTable->columnWidth(7);
    m_pTable->setColumnWidth(7, 15);
    EXPECT_EQ(m_pTable->columnWidth(7), nFit);
    m_pTable->setColumnWidth(7, nFit + 50);
    m_pWindow->updatePeakTable(reflections(2));
    EXPECT_EQ(m_pTable->columnWidth(7), nFit + 50);
    EXPECT_LT(m_pTable->columnWidth(4), 50) << "two indices of one digit";
    emit m_pTable->horizontalHeader()->sectionHandleDoubleClicked(7);
    EXPECT_LE(m_pTable->columnWidth(7), nFit);
}

TEST_F(PeakTableWindow, OrderAndChoiceOfColumnsOutliveTheWindow)
{
    QHeaderView* pHeader = m_pTable->horizontalHeader();
    pHeader->moveSection(pHeader->visualIndex(7), 0);
    pHeader->moveSection(pHeader->visualIndex(22), 3);
    pHeader->actions()[1]->setChecked(true);
    pHeader->actions()[9]->setChecked(false);
    pHeader->actions()[28]->trigger();  // flags: shown without an integration, and not wanted with one
    pHeader->actions()[28]->trigger();
    m_pWindow->updatePeakTable({});  // without rows the columns go, and come back as they were
    m_pWindow->updatePeakTable(reflections(2));
    const auto state = [this] {
        QStringList list;
        for (int i = 0; i < 29; ++i) {
            const int nColumn = m_pTable->horizontalHeader()->logicalIndex(i);
            if (!m_pTable->isColumnHidden(nColumn)) {
                list.append(QString::number(nColumn));
            }
        }
        return list.join(' ');
    };
    const QString strState = "7 0 1 22 4 5 6 10 11 16 17 18 19 20 21 23 24 25";
    EXPECT_EQ(state(), strState);
    m_pWindow->copyAllReflectionsInPeakTable();
    EXPECT_EQ(QApplication::clipboard()->text().section('\n', 1, 1).section('\t', 1, 2), "101\t1.00")
        << "what is copied stands as it is seen";
    m_pWindow->close();
    newWindow();
    EXPECT_EQ(state(), strState);
    table().checkIntegratedColumns(true);
    EXPECT_EQ(state(), strState + " 26 27");
    // What no window has written is passed over.
    QSettings settings("Lumenarc", "Tessera");
    settings.setValue("PeakTable/columnOrder", QStringList{"5", "x", "-1", "99", "5", "0"});
    settings.setValue("PeakTable/columnsHidden", QStringList{"4", "12"});
    settings.setValue("PeakTable/columnsShown", QStringList{"3"});
    settings.sync();
    newWindow();
    EXPECT_EQ(state(), "5 0 3 4 6 7 9 10 11 16 17 18 19 20 21 22 23 24 25");
}

TEST_F(PeakTableWindow, TheLineChoosesTheRows)
{
    m_pTabs->setCurrentIndex(3);
    m_pWindow->updatePeakTable(reflections(12));
    EXPECT_EQ(counts(), "12 of 12");
    m_pTable->sortByColumn(7, Qt::DescendingOrder);
    m_pTable->selectRow(3);
    ASSERT_EQ(cell(3, 0), "108");
    typeFilter("unindexed, frame=4..12");
    EXPECT_EQ(ids(), QList<int>({111, 108, 105}));
    EXPECT_EQ(counts(), "3 of 12");
    ASSERT_EQ(m_pTable->selectionModel()->selectedRows().size(), 1) << "the chosen row is the same one";
    EXPECT_EQ(m_pTable->selectionModel()->selectedRows()[0].row(), 1);
    EXPECT_EQ(table().peakRow(m_pTable->model()->index(1, 0)), 8);
    EXPECT_EQ(table().indexOfPeak(5).row(), 2);
    EXPECT_FALSE(table().indexOfPeak(4).isValid());
}

// It says why under it, for which the rows have room.
TEST_F(PeakTableWindow, ALineThatIsNotUnderstoodLeavesTheRows)
{
    m_pTabs->setCurrentIndex(3);
    m_pWindow->updatePeakTable(reflections(12));
    typeFilter("unindexed, frame=4..12");
    const int nTop = m_pTable->horizontalHeader()->viewport()->mapTo(m_pTable, QPoint()).y();
    typeFilter("h=0, nonsense>1");
    EXPECT_EQ(error(), "\"nonsense\" is no column of the table.");
    EXPECT_EQ(counts(), "3 of 12");
    EXPECT_GT(m_pTable->horizontalHeader()->viewport()->mapTo(m_pTable, QPoint()).y(), nTop);
    EXPECT_LE(table().filterBar().geometry().bottom(),
              m_pTable->horizontalHeader()->viewport()->mapTo(m_pTable, QPoint()).y());
    EXPECT_LE(m_pTable->viewport()->geometry().bottom(), m_pTable->height());
    // A line that is understood takes the reason away.
    typeFilter("h=0");
    EXPECT_EQ(error(), QString());
}

TEST_F(PeakTableWindow, TheLineIsInForceForAnotherListAndForCopies)
{
    m_pTabs->setCurrentIndex(3);
    m_pWindow->updatePeakTable(reflections(12));
    m_pTable->sortByColumn(7, Qt::DescendingOrder);
    typeFilter("unindexed, frame=4..12");
    m_pWindow->updatePeakTable(reflections(6));
    EXPECT_EQ(ids(), QList<int>({105}));
    m_pWindow->copyAllReflectionsInPeakTable();
    EXPECT_EQ(QApplication::clipboard()->text().section('\t', 0, 3), "105\t*\t*\t*");
    typeFilter("h=77");
    EXPECT_EQ(counts(), "0 of 6");
    EXPECT_EQ(m_pTable->model()->columnCount(), 29);
    m_pWindow->copyAllReflectionsInPeakTable();
    EXPECT_TRUE(QApplication::clipboard()->text().startsWith("105"))
        << "nothing to copy leaves what is there";

    // A pause is enough, and the end of the line brings all rows back in the order chosen.
    line()->clear();
    QTRY_COMPARE(counts(), QString("6 of 6"));
    EXPECT_EQ(ids(), QList<int>({105, 104, 103, 102, 101, 100}));
}

TEST_F(PeakTableWindow, SortingKeepsTheOrderOfEqualRows)
{
    QList<Peak3D> listPeak = reflections(40);
    for (int i = 0; i < 40; ++i) {
        listPeak[i].dfIPoint = 5 - i % 4;
    }
    m_pWindow->updatePeakTable(listPeak);
    m_pTable->sortByColumn(7, Qt::AscendingOrder);
    table().setFilter("indexed");
    std::stable_sort(listPeak.begin(), listPeak.end(),
                     [](const Peak3D& left, const Peak3D& right) { return left.dfIPoint < right.dfIPoint; });
    QList<int> listExpected;
    for (const Peak3D& peak : listPeak) {
        if ((peak.nID - 100) % 3 != 2) {
            listExpected.append(peak.nID);
        }
    }
    EXPECT_EQ(ids(), listExpected);
}

TEST_F(PeakTableWindow, KeysGoToTheLineAndThroughTheUnindexed)
{
    activate();
    m_pTabs->setCurrentIndex(3);
    m_pWindow->updatePeakTable(reflections(7));
    m_pFrames->m_pPixelSizeSpin->setFocus();
    QTest::keyClick(m_pWindow.get(), Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(line()->hasFocus());
    QTest::keyClicks(line(), "n!=1, h<6");  // letters of the line are no keys of the table
    QTest::keyClick(line(), Qt::Key_Return);
    EXPECT_EQ(error(), "\"n\" is no column of the table.");
    typeFilter("frame!=3");
    EXPECT_EQ(counts(), "6 of 7");
    QTest::keyClick(line(), Qt::Key_Escape);
    EXPECT_EQ(counts() + line()->text(), "7 of 7");
    EXPECT_TRUE(m_pTable->hasFocus());
    m_pTable->setCurrentIndex(m_pTable->model()->index(0, 4));
    const auto step = [&](Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(m_pTable, Qt::Key_N, modifiers);
        return cell(m_pTable->currentIndex().row(), 0).toInt();
    };
    EXPECT_EQ(step(), 102);
    EXPECT_EQ(step(), 105);
    EXPECT_EQ(step(), 102) << "round at the end";
    EXPECT_EQ(step(Qt::ShiftModifier), 105);
    m_pTable->sortByColumn(0, Qt::DescendingOrder);
    EXPECT_EQ(step(), 102);
    table().setFilter("frame!=3");
    m_pTable->setCurrentIndex(m_pTable->model()->index(0, 4));
    EXPECT_EQ(step(), 105) << "only rows in sight";
    table().setFilter("indexed");
    EXPECT_EQ(table().chooseUnindexed(1), false);
    m_pTabs->setCurrentIndex(0);
    QTest::keyClick(m_pWindow.get(), Qt::Key_F, Qt::ControlModifier);
    EXPECT_FALSE(line()->hasFocus()) << "out of sight";
}

TEST_F(PeakTableWindow, TheCsvHasWhatIsSeen)
{
    m_pTabs->setCurrentIndex(3);
    const QList<Peak3D> listPeak = reflections(9);
    m_pWindow->updatePeakTable(listPeak);
    m_pTable->horizontalHeader()->moveSection(18, 0);
    m_pTable->sortByColumn(0, Qt::DescendingOrder);
    table().setFilter("h=2n");
    EXPECT_EQ(answered({path("out")}, [&] { table().filterBar().m_pExportButton->click(); }),
              QStringList{"Export Peak Table"});
    const QStringList listLine = linesOf("out.csv");
    ASSERT_EQ(listLine.size(), 1 + 3) << log().toStdString();  // 0, 4 and 6; 2 and 8 are not indexed
    EXPECT_TRUE(listLine[0].startsWith("x,ID,h,k,l,Intensity,")) << listLine[0].toStdString();
    const int anID[] = {106, 104, 100};
    for (int i = 0; i < 3; ++i) {
        const QStringList listField = listLine[i + 1].split(',');
        const Peak3D& peak = listPeak[anID[i] - 100];
        EXPECT_EQ(listField[1].toInt(), peak.nID);
        EXPECT_EQ(listField[0].toDouble(), peak.dfX2D);
        EXPECT_EQ(listField[5].toDouble(), peak.dfIPoint);
    }
    EXPECT_EQ(lines("Peak table of 3 rows saved to " + path("out.csv"), Qt::black), 1);
    answered({QStringLiteral("/proc/out.csv")}, [&] { table().filterBar().m_pExportButton->click(); });
    EXPECT_EQ(lines("/proc/out.csv: "), 1) << log().toStdString();
}

/// The two merged reflections, A in the first row and B in the second. The page stands at two-dimensional
/// intensities, which are ten times the others.
class CurveOfTheRow : public PeakTableWindow {
protected:
    void SetUp() override
    {
        PeakTableWindow::SetUp();
        open(false);
        m_pWindow->peakReduction3D();
        ASSERT_EQ(m_pTable->model()->rowCount(), 2) << log().toStdString();
        m_pTabs->setCurrentIndex(3);
        m_pTable->sortByColumn(9, Qt::DescendingOrder);  // d: A comes first
        ASSERT_EQ(cell(0, 18), QStringLiteral("300"));
    }
    /// Title, points and places of the markers.
    QString shown() const
    {
        const auto* pCurve = static_cast<QwtPlotCurve*>(m_pPlot->itemList(QwtPlotItem::Rtti_PlotCurve)[0]);
        QStringList list = {pCurve->title().text()};
        for (size_t i = 0; i < pCurve->dataSize(); ++i) {
            list.append(QString::asprintf("%g:%g", pCurve->sample(int(i)).x(), pCurve->sample(int(i)).y()));
        }
        for (const QwtPlotItem* pItem : m_pPlot->itemList(QwtPlotItem::Rtti_PlotMarker)) {
            list.append(QString::number(static_cast<const QwtPlotMarker*>(pItem)->xValue()));
        }
        return list.join(' ');
    }
    /// A click on the first row.
    void click(Qt::MouseButton eButton = Qt::LeftButton)
    {
        const QRect rect = m_pTable->visualRect(m_pTable->model()->index(0, 7));
        QTest::mouseClick(m_pTable->viewport(), eButton, {}, rect.center());
    }

    const QString strA = QStringLiteral(
        "2D Integration 1:10005 2:11005 3:12005 4:13005 5:14005 6:15005 0.5 3.5");
    const QString strB = QStringLiteral("2D Integration 4:530 5:540 6:550 3.5");
};

TEST_F(CurveOfTheRow, ComesByPointerAndKeys)
{
    click();
    EXPECT_EQ(shown(), strA);
    QTest::keyClick(m_pTable, Qt::Key_Down);
    EXPECT_EQ(shown(), strB) << "the keyboard walks through the rows";
    click(Qt::RightButton);
    EXPECT_EQ(shown(), strA) << "the row that the menu is for";
}

// Under a filter the first row is the other reflection.
TEST_F(CurveOfTheRow, IsThatOfTheRowInSight)
{
    click();
    QTest::keyClick(m_pTable, Qt::Key_Down);
    EXPECT_EQ(shown(), strB);
    typeFilter("frame>3,x<250");
    ASSERT_EQ(counts(), "1 of 2") << error().toStdString();
    EXPECT_EQ(shown(), strB);
    m_pTable->clearSelection();
    m_pWindow->showPeakInCurve(0);
    click();
    EXPECT_EQ(shown(), strB);
    m_pWindow->copyIntensityCurveData();
    QString strCopied = QStringLiteral(
        "     4.0 \t      530.00\n     5.0 \t      540.00\n     6.0 \t      550.00\n\n");
    EXPECT_EQ(QApplication::clipboard()->text(), strCopied.replace('.', QLocale().decimalPoint()));
}

TEST_F(CurveOfTheRow, StaysAtARowThatHasNoChain)
{
    click();
    Peak3D stranger;
    stranger.nID = 99;
    m_pWindow->updatePeakTable({stranger});
    m_pLog->clear();
    click();
    EXPECT_EQ(log(), "Failed to retrieve data for reflection with ID: 99.");
    EXPECT_EQ(shown(), strA);
}

// Also not by a number that it had.
TEST_F(CurveOfTheRow, IsNotThatOfTheSeriesBefore)
{
    click();
    QFile::copy(path("s.ed3d"), path("other.ed3d"));
    m_pWindow->openFiles({path("other.ed3d")});
    m_pTabs->setCurrentIndex(3);
    ASSERT_EQ(cell(0, 0), QStringLiteral("0"));
    click();
    EXPECT_EQ(lastLine(), QStringLiteral("Failed to retrieve data for reflection with ID: 0."));
    EXPECT_EQ(shown(), QStringLiteral("2D Integration"));
}

TEST_F(PeakTableWindow, GroupsOfMasksAreInBothTables)
{
    open();
    EXPECT_EQ(m_pTabs->currentIndex(), 1);
    const QString strColor = m_pRaw->groupColors().value(1).name(), strZero = m_pRaw->groupColors()[0].name();
    EXPECT_EQ(rows(m_pGroups), QStringList({"Unlabeled 6 " + strZero + " ●", "Label2 2 " + strColor + " ●"}));
    EXPECT_EQ(rows(m_pTarget), QStringList({"Unlabeled 6 " + strZero + ' ', "Label2 2 " + strColor + ' '}));
}

// The row that the merging page has chosen stays chosen.
TEST_F(PeakTableWindow, ThePanelGivesAGroupNameColourAndEye)
{
    open();
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
}

TEST_F(PeakTableWindow, AllGroupsAreExportedOneAfterTheOther)
{
    open();
    answered({path("out.txt")}, [&] { m_pWindow->exportSelectedPeak3D(); });
    EXPECT_EQ(linesOf("out.txt").size(), 1 + 8);
    EXPECT_TRUE(linesOf("out.txt")[0].startsWith("# FrameNo.")) << "no indices from the raw view";
    answered({QStringLiteral("/proc/out.txt")}, [&] { m_pWindow->exportSelectedPeak3D(); });
    EXPECT_TRUE(log().contains("Failed to open file for writing: /proc/out.txt\n/proc/out.txt: "))
        << log().toStdString();
}

TEST_F(PeakTableWindow, AGroupOfTheFileIsMergedAloneAndGrowsWithTheLimits)
{
    open();
    answered({path("out.pk")}, [&] { m_pWindow->saveRawPeaks(); });
    EXPECT_EQ(lines("List of raw peaks saved to " + path("out.pk"), Qt::black), 1);
    m_pRaw->removePointGroups({1});
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
}

TEST_F(PeakTableWindow, ResetAsksWhereThereIsSomethingToReset)
{
    open();
    answered({int(QMessageBox::No)}, [&] { m_pWindow->resetSelectedPeakGroups(); });
    ASSERT_EQ(m_pRaw->groupPoints().size(), 2);
    EXPECT_EQ(m_pRaw->groupLabels()[1], QStringLiteral("Label2"));
    EXPECT_EQ(answered({int(QMessageBox::Yes)}, [&] { m_pWindow->resetSelectedPeakGroups(); }),
              QStringList{"Confirm: Are you sure you want to reset this table?"});
    EXPECT_EQ(m_pRaw->groupPoints().size(), 1);
    EXPECT_EQ(answered({}, [&] { m_pWindow->resetSelectedPeakGroups(); }), QStringList());
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
    for (int i : {0, 1}) {
        EXPECT_EQ(listNow[i].section(' ', 0, 1), listRow[i].section(' ', 0, 1));
    }
    EXPECT_EQ(m_pTabs->currentIndex(), 0);
}

/// Four groups of the raw view, which share points.
class GroupsOfPeaks : public PeakTableWindow {
protected:
    void SetUp() override
    {
        PeakTableWindow::SetUp();
        open();
        m_pWindow->peakReduction3D();
        m_pTabs->setCurrentIndex(1);
        // The points are A0 A1 A2 A3 B3 A4 B4 A5; a change of a limit brings B5.
        m_pRaw->setGroupLabel(0, QStringLiteral("rest"));
        m_pRaw->setGroupColor(1, Qt::red);
        m_pRaw->insertPointGroup(2, QStringLiteral("odd"), {1, 3, 7}, Qt::blue);
        m_pRaw->insertPointGroup(3, QStringLiteral("B"), {0, 4, 6}, Qt::green);
        m_pRaw->setGroupVisible(2, false);
    }
    /// "label colour hidden points" of each group.
    std::string state() const
    {
        QStringList list;
        for (int g = 0; g < m_pRaw->groupLabels().size(); ++g) {
            list << m_pRaw->groupLabels()[g] + ' ' + m_pRaw->groupColors()[g].name().mid(1) +
                        (m_pRaw->groupsVisible()[g] ? "" : " hidden");
            for (int n : m_pRaw->groupPoints()[g]) {
                list.last() += (m_pRaw->points()[n].dfX2D > 250 ? " A" : " B") +
                               QString::number(m_pRaw->points()[n].nFrame);
            }
        }
        return list.join(", ").toStdString();
    }

    const std::string strAll =
        "rest ffffff A2 A4 B5, Label2 ff0000 A0 A1, odd 0000ff hidden A1 A3 A5, B 00ff00 A0 B3 B4";
    /// Those with an intensity of 1050 at least.
    const std::string strSome = "rest ffffff A2 A4, Label2 ff0000 A1, odd 0000ff hidden A1 A3 A5, B 00ff00";
};

TEST_F(GroupsOfPeaks, OutliveLimitsAndGeometryAndStayChosen)
{
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
    m_pMerging->m_pSpinIntensityMin->setValue(1050);
    EXPECT_EQ(state(), strSome);
    m_pTabs->setCurrentIndex(2);
    answered({path("out.txt")}, [&] { m_pWindow->exportSelectedPeak3D(); });
    EXPECT_TRUE(linesOf("out.txt")[0].startsWith("# H | K | L ")) << "indices from the merged view";
}

// None of its points can be merged, and what has been merged stays.
TEST_F(GroupsOfPeaks, OutliveAListOfPointsForALook)
{
    m_pMerging->m_pSpinIntensityMin->setValue(1050);
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
}

TEST_F(GroupsOfPeaks, GoAndUniteWhileSomeOfTheirPeaksAreOutOfSight)
{
    m_pMerging->m_pSpinIntensityMin->setValue(1050);
    m_pGroups->selectRow(1);
    m_pWindow->removeSelectedPeakGroups();
    EXPECT_EQ(state(), "rest ffffff A2 A4, odd 0000ff hidden A1 A3 A5, B 00ff00");
    m_pGroups->setRangeSelected({1, 0, 2, 3}, true);
    m_pWindow->mergeSelectedPeakGroups();
    m_pMerging->m_pSpinIntensityMin->setValue(0);
    EXPECT_EQ(state(), "rest ffffff A2 A4 B5, odd 0000ff A0 A1 A3 B3 B4 A5");
    answered({path("out.pk")}, [&] { m_pWindow->saveRawPeaks(); });
    QString strMasks;
    for (const QString& strLine : linesOf("out.pk")) {
        strMasks += strLine.right(16)[0];
    }
    EXPECT_EQ(strMasks, QStringLiteral("448448448"));
}

// In sight or not. One group alone keeps its looks, too.
TEST_F(GroupsOfPeaks, WhatIsUnitedWithTheFirstBecomesTheSecond)
{
    m_pRaw->removePointGroups({1, 3});
    m_pMerging->m_pSpinResolutionMax->stepUp();  // brings B5
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
}

// What is typed or chosen for one of them is not the other's.
TEST_F(GroupsOfPeaks, EachViewHasItsOwn)
{
    m_pRaw->removePointGroups({2, 3});
    m_pMerged->insertPointGroup(1, QStringLiteral("other"), {0}, Qt::green);
    m_pMerged->setGroupLabel(0, QStringLiteral("rest"));
    m_pGroups->setCurrentCell(1, 0);
    m_pGroups->editItem(m_pGroups->item(1, 0));
    ASSERT_TRUE(m_pGroups->findChild<QLineEdit*>());
    QTest::keyClicks(m_pGroups->findChild<QLineEdit*>(), QStringLiteral("mine"));
    m_pTabs->setCurrentIndex(2);
    QCoreApplication::processEvents();
    EXPECT_EQ(m_pRaw->groupLabels()[1], "mine");
    EXPECT_EQ(m_pMerged->groupLabels()[1], "other");
    EXPECT_EQ(m_pGroups->item(1, 0)->text(), "other");
    m_pGroups->selectRow(1);
    m_pTabs->setCurrentIndex(1);
    m_pWindow->removeSelectedPeakGroups();
    EXPECT_EQ(m_pRaw->groupLabels().size(), 2) << "what was chosen in the table of the other";
    EXPECT_EQ(m_pMerged->groupLabels().size(), 2);
}

}  // namespace tessera
