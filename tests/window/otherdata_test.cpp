// What opening other data does to views, table and cell.
#include "tests/window/reciprocaltest.h"

#include "frameview/textitem.h"

#include <unistd.h>

namespace tessera {

// One line says so, however many views there are; all else in these tests goes on.
TEST_F(Reciprocal, WithoutOpenGlOneLineSaysSo)
{
    m_pTabs->setCurrentIndex(1);
    m_pTabs->setCurrentIndex(2);
    QApplication::processEvents();
    EXPECT_EQ(lines("OpenGL"), m_pRaw->isValid() ? 0 : 1);
}

TEST_F(Reciprocal, AProjectBringsItsPeaksSeenAlongTheAxis)
{
    open();
    EXPECT_EQ(m_pTabs->currentIndex(), 1);
    const int nPeaks = m_pRaw->points().size();
    EXPECT_GT(nPeaks, 100);
    EXPECT_EQ(groups(m_pRaw), QStringLiteral("Unlabeled %1 #ffffff").arg(nPeaks));
    EXPECT_NEAR(std::fabs(m_pRaw->getViewDirection().x), 1, 1e-6);

    // A peak list without masks: all its peaks are shown, in no group.
    QByteArray bytesList;
    for (const QByteArray& bytesLine : readBytes(file("w.pk")).split('\n')) {
        bytesList += bytesLine.left(bytesLine.lastIndexOf(' ')) + '\n';
    }
    answered({write("nomask.pk", bytesList)}, [&] { m_pWindow->loadRawPeaks(); });
    EXPECT_EQ(groups(m_pRaw), QStringLiteral("Unlabeled %1 #ffffff").arg(nPeaks));
}

// Without OpenGL a view has nothing to give.
TEST_F(Reciprocal, CopyWindowTakesWhatTheTabShows)
{
    open();
    m_pMerging->m_pButtonMerge->click();
    for (int nTab : {3, 1, 2}) {
        m_pTabs->setCurrentIndex(nTab);
        const QWidget* pTab = m_pTabs->currentWidget();
        QApplication::clipboard()->setText(QStringLiteral("mine"));
        m_pWindow->copyWindow();
        const QImage image = QApplication::clipboard()->image();
        if (nTab < 3 && !m_pRaw->isValid()) {
            EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("mine"));
            continue;
        }
        EXPECT_EQ(image.size(), pTab->size() * pTab->devicePixelRatioF());
        QImage imageOne = image;
        imageOne.fill(image.pixelColor(0, 0));
        EXPECT_NE(image, imageOne) << "nothing but ground";
    }
}

TEST_F(Reciprocal, ReflectionsForALookAreThePointsOfTheCellInForce)
{
    m_pTabs->setCurrentIndex(2);  // the page is that of the views
    m_pPanel->m_pButtonLoadHKL->click();
    EXPECT_EQ(lines("Unit cell is not ready. Stop."), 1);
    open();
    const Mat matCell = cell();
    answered({write("in.hkl", "   1   2  -3   120.0     1.0\n# none\n   0   0   0     0.0     0.0\n")},
             [&] { m_pPanel->m_pButtonLoadHKL->click(); });
    ASSERT_EQ(m_pMerged->points().size(), 2);
    const Peak3D& peak = m_pMerged->points()[0];
    expectNear({{{double(peak.fX3D), double(peak.fY3D), double(peak.fZ3D)}, {}, {}}},
               {Vec{1, 2, -3} * matCell, {}, {}}, 1e-6);
    EXPECT_EQ(table()->rowCount(), 2);
    EXPECT_EQ(table()->index(0, 6).data().toString(), QStringLiteral("-3"));
    EXPECT_EQ(lines("2 reflections loaded from ", Qt::black), 1);
}

TEST_F(Reciprocal, AnotherDataSetHasNoneOfTheResultsBefore)
{
    open();
    m_pMerging->m_pButtonMerge->click();
    m_pCell->m_pButtonTest->setChecked(true);
    QFile::copy(file("w.ed3d"), file("other.ed3d"));
    m_pWindow->openFiles({file("other.ed3d")});
    EXPECT_EQ(m_pRaw->points().size(), 0);
    EXPECT_EQ(m_pMerged->points().size(), 0);
    EXPECT_EQ(table()->rowCount(), 1);
    EXPECT_EQ(fields(), g_strNoCell);
    EXPECT_FALSE(m_pCell->m_pButtonTest->isChecked());
    m_pCell->m_pButtonTransform->click();
    EXPECT_EQ(lines("Unit cell information is missing.", Qt::black), 1);
    m_pWindow->testRotationAxis();
    m_pWindow->test2DIndexing();
    EXPECT_EQ(lines("There are no peaks of these frames in 3D."), 2) << "those of the former data set";
}

TEST_F(Reciprocal, ACellByHandIsThatOfItsDataSet)
{
    open();
    const Mat matCell = cell();
    m_pCell->m_pRadioCellManual->setChecked(true);
    EXPECT_EQ(fields(), fieldsOf(matCell));
    QFile::copy(file("w.ed3d"), file("other.ed3d"));
    m_pWindow->openFiles({file("other.ed3d")});
    EXPECT_EQ(fields(), g_strNoCell) << "nobody has made up a cell for these frames";
    EXPECT_TRUE(m_pCell->m_pRadioCellAuto->isChecked());
    m_pCell->m_pRadioCellManual->setChecked(true);
    expectNear(cell(), {{{0.1, 0, 0}, {0, 0.1, 0}, {0, 0, 0.1}}});
}

TEST_F(Reciprocal, LabelsThatAreAskedForDuringARunAreThereAtItsEnd)
{
    open();
    m_pMerging->m_pButtonMerge->click();
    m_pCell->m_pButtonIndexMergedPeaks->click();
    m_pTabs->setCurrentIndex(0);
    m_pSpin->setValue(16);
    EXPECT_TRUE(marks<TextItem>().isEmpty());
    during([&] { m_pCell->m_pButtonSearchCell->click(); },
           [&] {
               m_pActions->m_pShowPeakLabels->trigger();
               return true;
           });
    EXPECT_FALSE(marks<TextItem>().isEmpty());
}

// A reflection takes some 230 bytes in all; 26 ready made texts each would take two thousand.
TEST_F(Reciprocal, ALongListTakesLittleMemory)
{
    const int nReflections = 200000;
    QByteArray bytes;
    for (int i = 0; i < nReflections; ++i) {
        bytes += QString::asprintf("%4d%4d%4d%8d%8.1f\n", i % 100, i / 100 % 100, i / 10000, 3 * i, 1.0)
                     .toLatin1();
    }
    write("long.hkl", bytes);
    bytes.clear();
    loadCell(g_matCell);
    m_pTabs->setCurrentIndex(2);
    const auto usedPages = [] { return readBytes("/proc/self/statm").split(' ').value(1).toLongLong(); };
    [[maybe_unused]] const qint64 nBefore = usedPages();
    answered({path("long.hkl")}, [this] { m_pPanel->m_pButtonLoadHKL->click(); });
    ASSERT_EQ(m_pMerged->points().size(), nReflections);
    ASSERT_EQ(table()->rowCount(), nReflections);
#ifndef __SANITIZE_ADDRESS__  // which keeps what has been freed
    EXPECT_LT((usedPages() - nBefore) * sysconf(_SC_PAGESIZE), 500 * qint64(nReflections));
#endif
    m_pTable->sortByColumn(7, Qt::DescendingOrder);
    EXPECT_EQ(table()->index(0, 7).data().toString(),
              QLocale::system().toString(3.0 * (nReflections - 1), 'f', 1));
}

}  // namespace tessera
