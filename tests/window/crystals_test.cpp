// "Merge Crystals": folders to files by pointer, the program's bytes, and what goes wrong on the way.
#include "tests/window/resultfolder.h"
#include "tests/window/windowtest.h"
#include "window/crystals/mergecontroller.h"
#include "window/crystals/mergedialog.h"
#include "window/crystals/mergeinput.h"
#include "window/crystals/mergeresultview.h"
#include "window/crystals/treeview.h"
#include "window/integration/qualitytab.h"
#include "window/integration/tablepanel.h"

namespace tessera {

namespace {

const int g_nPatience = 60000;  // ms, for a machine that is busy with other things

class Crystals : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        m_pController = m_pWindow->findChild<MergeController*>();
        m_pActions->m_pMergeCrystals->trigger();
        m_pDialog = m_pController->dialog();
        m_pInput = m_pDialog->m_pInput;
        m_pResult = m_pDialog->m_pResult;
    }
    /// Five crystals of quartz and three of kyanite, each in a folder of one for all.
    void makeSeries() const
    {
        for (int n = 0; n < 8; ++n) {
            const QString strName = QString("c%1").arg(n);
            writeResultFolder(path("series/" + strName), strName, n < 5 ? "quartz" : "kyanite", n + 1);
        }
    }
    void drop(const QStringList& listPath) const
    {
        QMimeData data;
        QList<QUrl> listUrl;
        for (const QString& strPath : listPath) {
            listUrl.append(QUrl::fromLocalFile(strPath));
        }
        data.setUrls(listUrl);
        QDragEnterEvent enter({50, 50}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(m_pDialog, &enter);
        QDropEvent event({50, 50}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(m_pDialog, &event);
        EXPECT_EQ(event.dropAction(), Qt::CopyAction) << "a move would let the source delete the results";
        ASSERT_TRUE(QTest::qWaitFor([this] { return !m_pController->isReading(); }, g_nPatience));
    }
    void click(QPushButton* pButton) const { QTest::mouseClick(pButton, Qt::LeftButton); }
    /// A file of known cells.
    QString writeKnown() const
    {
        return write("known.csv", "name,a,b,c,al,be,ga,sg\nquartz,4.91,4.91,5.41,90,90,120,P3121\n");
    }
    bool waitForEnd() const
    {
        return QTest::qWaitFor([this] { return !m_pController->isMerging(); }, g_nPatience);
    }
    QString state() const { return m_pDialog->m_pLabelState->text(); }
    static QStringList column(const QTableWidget* pTable, int nColumn)
    {
        QStringList list;
        for (int nRow = 0; nRow < pTable->rowCount(); ++nRow) {
            list.append(pTable->item(nRow, nColumn)->text());
        }
        return list;
    }

    MergeController* m_pController = nullptr;
    MergeDialog* m_pDialog = nullptr;
    MergeInput* m_pInput = nullptr;
    MergeResultView* m_pResult = nullptr;
};

}  // namespace

TEST_F(Crystals, FoldersComeAndGoAsRows)
{
    makeSeries();
    EXPECT_FALSE(m_pDialog->m_pButtonMerge->isEnabled());
    drop({path("series")});
    EXPECT_EQ(column(m_pInput->m_pTable, 0), QString("c0 c1 c2 c3 c4 c5 c6 c7").split(' '));
    EXPECT_EQ(column(m_pInput->m_pTable, 2).value(0), "-3m1");
    EXPECT_EQ(column(m_pInput->m_pTable, 7).value(0), "123") << "as the run has merged them";
    EXPECT_FALSE(m_pInput->m_pTableUnread->isVisible());
    EXPECT_EQ(m_pInput->outFolder(), path("merged"));

    // A row that is chosen goes with its folder; given again it is there again.
    m_pInput->m_pTable->selectRow(2);
    click(m_pInput->m_pButtonRemove);
    EXPECT_EQ(m_pInput->m_pTable->rowCount(), 7);
    EXPECT_FALSE(column(m_pInput->m_pTable, 0).contains("c2"));
    drop({path("series/c2/c2.run.json"), path("series/c3")});
    EXPECT_EQ(column(m_pInput->m_pTable, 0), QString("c0 c1 c2 c3 c4 c5 c6 c7").split(' '));
}

TEST_F(Crystals, FoldersBecomeTheFilesOfTheProgram)
{
    makeSeries();
    const QString strKnown = writeKnown();
    drop({path("series")});
    m_pInput->m_pEditKnown->setText(strKnown);
    click(m_pDialog->m_pButtonMerge);
    EXPECT_EQ(m_pDialog->m_pButtonMerge->text(), "Stop");
    EXPECT_FALSE(m_pInput->m_pButtonAdd->isEnabled());
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(state(), "Written to " + path("merged")) << m_pDialog->m_pLog->toPlainText().toStdString();
    EXPECT_EQ(lines("Crystals merged. ", Qt::blue), 1) << log().toStdString();
    EXPECT_EQ(lines("", Qt::red), 0) << log().toStdString();
    EXPECT_EQ(m_pDialog->m_pTabs->currentWidget(), m_pResult);

    // The files: all but those with times in them, and named alike.
    const BatchOutcome outcome = runProgram(
        "tessera-merge", {path("series"), "--out", path("program/merged"), "--known", strKnown});
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    const QDir window(path("merged")), program(path("program/merged"));
    const QStringList listFile = program.entryList(QDir::Files);
    ASSERT_GT(listFile.size(), 10);
    EXPECT_EQ(window.entryList(QDir::Files), listFile);
    for (const QString& strFile : listFile) {
        if (!strFile.endsWith(".log") && !strFile.endsWith(".merge.json")) {
            QByteArray bytes = readBytes(program.filePath(strFile));
            bytes.replace(path("program/merged").toUtf8(), path("merged").toUtf8());
            EXPECT_EQ(readBytes(window.filePath(strFile)), bytes) << qPrintable(strFile);
        }
    }
    EXPECT_EQ(m_pResult->result()->listFile.size(), listFile.size());
    for (const QString& strFile : listFile) {
        EXPECT_TRUE(m_pResult->m_pFiles->toPlainText().contains(strFile)) << qPrintable(strFile);
    }
}

TEST_F(Crystals, TheProposedFolderGoesWithTheFolders)
{
    writeResultFolder(path("a/x"), "x", "quartz", 1);
    writeResultFolder(path("b/y"), "y", "quartz", 2);
    drop({path("a/x")});
    EXPECT_EQ(m_pInput->outFolder(), path("a/merged"));
    click(m_pInput->m_pButtonClear);
    EXPECT_EQ(m_pInput->outFolder(), "");
    drop({path("b/y")});
    drop({path("a/x")});
    EXPECT_EQ(m_pInput->outFolder(), path("b/merged"));
    ASSERT_EQ(column(m_pInput->m_pTable, 0), QStringList({"x", "y"}));
    m_pInput->m_pTable->selectRow(1);
    click(m_pInput->m_pButtonRemove);
    EXPECT_EQ(m_pInput->outFolder(), path("a/merged"));
    QTest::keyClicks(m_pInput->m_pEditOut, "2");
    click(m_pInput->m_pButtonClear);
    EXPECT_EQ(m_pInput->outFolder(), path("a/merged2")) << "typed";
}

TEST_F(Crystals, GroupsTreesAndTablesGoTogether)
{
    makeSeries();
    drop({path("series")});
    QString strOpened;
    QObject::connect(m_pResult, &MergeResultView::openWished, [&](const QString& str) { strOpened = str; });
    click(m_pDialog->m_pButtonMerge);
    ASSERT_TRUE(waitForEnd());
    ASSERT_EQ(column(m_pResult->m_pTableGroups, 0), (QStringList{"Group 1", "Group 2"}));
    EXPECT_EQ(column(m_pResult->m_pTableGroups, 1), (QStringList{"5", "3"}));
    EXPECT_EQ(column(m_pResult->m_pTableMembers, 0), QString("c0 c1 c2 c3 c4").split(' '));
    EXPECT_FALSE(m_pResult->m_pQuality->isEmpty());
    for (const QString& strCorrelation : column(m_pResult->m_pTableMembers, 3)) {
        EXPECT_GT(strCorrelation.toDouble(), 0.9);
    }

    m_pResult->m_pTableGroups->selectRow(1);
    EXPECT_EQ(column(m_pResult->m_pTableMembers, 0), QString("c5 c6 c7").split(' '));
    EXPECT_EQ(m_pResult->m_pTreeCorrelations->canvas()->plot().listLeaf.size(), 3u);

    // A crystal that is chosen in the tree of all is chosen in the table of its group.
    m_pResult->m_pPages->setCurrentIndex(1);
    TreeCanvas* pCanvas = m_pResult->m_pTreeLattices->canvas();
    ASSERT_EQ(pCanvas->plot().listLeaf.size(), 8u);
    QTest::mouseClick(pCanvas, Qt::LeftButton, {}, pCanvas->rowOf(3).center());
    EXPECT_EQ(m_pResult->chosenGroup(), 0);
    EXPECT_EQ(m_pResult->m_pTableMembers->currentItem()->text(), "c3");
    EXPECT_EQ(pCanvas->leafAt(pCanvas->rowOf(3).center().y()), 3);
    EXPECT_EQ(pCanvas->leafAt(0), -1);

    // Rows down to the height of the view and up to one that is read.
    m_pResult->m_pTreeLattices->fit();
    EXPECT_LE(pCanvas->minimumHeight(), m_pResult->m_pTreeLattices->viewport()->height());
    const int nHeight = pCanvas->rowHeight();
    m_pResult->m_pTreeLattices->zoomOut();
    EXPECT_LT(pCanvas->rowHeight(), nHeight);

    emit m_pResult->m_pFiles->anchorClicked(QUrl::fromLocalFile(path("merged/merged_crystals.csv")));
    EXPECT_EQ(strOpened, path("merged/merged_crystals.csv"));
    EXPECT_TRUE(m_pDialog->m_pButtonReport->isEnabled());
}

TEST_F(Crystals, WhatIsNoCrystalIsToldAndTheRestMerged)
{
    makeSeries();
    ASSERT_TRUE(QDir().mkpath(path("empty")));
    QFile list(path("series/c1/c1_integrated.hkl"));
    ASSERT_TRUE(list.resize(500));
    drop({path("series"), path("empty"), path("nowhere")});
    EXPECT_EQ(m_pInput->m_pTable->rowCount(), 7);
    const QStringList listUnread = column(m_pInput->m_pTableUnread, 0);
    EXPECT_EQ(listUnread, (QStringList{path("empty"), path("nowhere"), path("series/c1/c1.run.json")}));
    const QStringList listWhy = column(m_pInput->m_pTableUnread, 1);
    EXPECT_TRUE(listWhy.value(0).contains("no record of a run")) << listWhy.join('\n').toStdString();
    EXPECT_TRUE(listWhy.value(1).contains("no such folder")) << listWhy.join('\n').toStdString();
    EXPECT_TRUE(listWhy.value(2).contains("not the list")) << listWhy.join('\n').toStdString();
    EXPECT_TRUE(m_pInput->m_pTableUnread->isVisible());

    click(m_pDialog->m_pButtonMerge);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(m_pResult->result()->listUnread.size(), 3u);
    EXPECT_EQ(m_pResult->result()->usedCount(), 7);
    EXPECT_EQ(m_pResult->m_pTableUnread->rowCount(), 3);
    EXPECT_TRUE(m_pResult->m_pPages->isTabVisible(m_pResult->m_pPages->indexOf(m_pResult->m_pTableUnread)));

    // What cannot be begun is told before anything is read, and the former result stays.
    const struct {
        QString strOut, strKnown, strReason;
    } aFault[] = {{path("series/c0"), "", "holds the results of a series"},
                  {write("file", "x"), "", "is no folder"},
                  {path("other"), path("none.csv"), "known cells"}};
    for (const auto& fault : aFault) {
        m_pInput->m_pEditOut->setText(fault.strOut);
        m_pInput->m_pEditKnown->setText(fault.strKnown);
        click(m_pDialog->m_pButtonMerge);
        ASSERT_TRUE(waitForEnd());
        EXPECT_TRUE(state().contains(fault.strReason)) << state().toStdString();
        EXPECT_EQ(lines(fault.strReason, Qt::red), 1) << log().toStdString();
        EXPECT_TRUE(m_pResult->result());
    }
    EXPECT_FALSE(QFile::exists(path("other")));
}

TEST_F(Crystals, StopLeavesNoFilesAndTheListAsItWas)
{
    makeSeries();
    drop({path("series")});
    click(m_pDialog->m_pButtonMerge);
    click(m_pDialog->m_pButtonMerge);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(state(), "Stopped.");
    EXPECT_FALSE(QFile::exists(path("merged")));
    EXPECT_FALSE(m_pResult->result());
    EXPECT_EQ(m_pDialog->m_pButtonMerge->text(), "Merge");

    // So does closing; the window comes back with its list, and merges.
    click(m_pDialog->m_pButtonMerge);
    click(m_pDialog->m_pButtonClose);
    EXPECT_FALSE(m_pDialog->isVisible());
    ASSERT_TRUE(waitForEnd());
    EXPECT_FALSE(QFile::exists(path("merged")));
    m_pActions->m_pMergeCrystals->trigger();
    EXPECT_EQ(m_pInput->m_pTable->rowCount(), 8);
    click(m_pDialog->m_pButtonMerge);
    ASSERT_TRUE(waitForEnd());
    EXPECT_TRUE(m_pResult->result());

    // The main window does not wait for a merging; the next one does not know of it.
    click(m_pDialog->m_pButtonMerge);
    m_pWindow->close();
    EXPECT_FALSE(m_pDialog->isVisible());
    m_pWindow.reset();
}

TEST_F(Crystals, TheOpenSeriesIsAddedOnceItHasResults)
{
    click(m_pInput->m_pButtonSeries);
    EXPECT_EQ(state(), "No project is open.");
    writePicture("a.png", [](int x, int y) { return x + y; });
    const QString strProject = writeProject("p.ed3d", {"a.png 0 0 0"});
    m_pWindow->openFiles({strProject});
    click(m_pInput->m_pButtonSeries);
    EXPECT_TRUE(state().contains("no results yet")) << state().toStdString();
    writeResultFolder(m_dir.path(), "p", "quartz", 1);
    click(m_pInput->m_pButtonSeries);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !m_pController->isReading(); }, g_nPatience));
    EXPECT_EQ(column(m_pInput->m_pTable, 0), QStringList{"p"});
}

}  // namespace tessera
