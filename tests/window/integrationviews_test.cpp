// What an integration puts on the frames and into the peak table.
#include "integration/reflectionflags.h"
#include "tests/window/integrationtest.h"
#include "window/integration/disccolors.h"
#include "window/reciprocal/peaktableview.h"

namespace tessera {

TEST_F(IntegrationWindow, DiscsHaveTheColoursOfTheirFlags)
{
    // Every flag by itself, on passages of frame 5.
    const size_t nFirst = 4;
    for (size_t nBit = 0; nBit < 13; ++nBit) {
        m_result.integrated.listObservation[nFirst + g_nFrames * (nBit / 3) + nBit % 3].nFlags = 1u << nBit;
    }
    integrate();
    m_pSpin->setValue(6);
    EXPECT_TRUE(marks<DiscItem>().isEmpty());
    m_pPage->m_pCheckPredicted->click();
    int nFlagged = 0;
    for (const Observation& observation : observations()) {
        DiscItem* pDisc = discOf(observation);
        ASSERT_EQ(pDisc != nullptr, std::abs(observation.dfFrame - 5) <= 1) << observation.dfFrame;
        if (!pDisc) {
            continue;
        }
        EXPECT_EQ(pDisc->rect().width(), 8);
        EXPECT_TRUE(pDisc->toolTip().startsWith(QString("h k l = %1 %2 %3\nI = ")
                                                    .arg(observation.anIndex[0])
                                                    .arg(observation.anIndex[1])
                                                    .arg(observation.anIndex[2])));
        EXPECT_EQ(pDisc->toolTip().section("flags: ", 1), reflectionFlagNames(observation.nFlags).join(", "));
        nFlagged += observation.nFlags != 0;
        EXPECT_EQ(pDisc->pen().color() == QColor(60, 220, 60), observation.nFlags == 0);
    }
    EXPECT_EQ(nFlagged, 13);
    m_pSpin->setValue(20);
    EXPECT_FALSE(marks<DiscItem>().isEmpty());
    EXPECT_EQ(discOf(observations()[4]), nullptr);
    m_pPage->m_pCheckPredicted->click();
    EXPECT_TRUE(marks<DiscItem>().isEmpty());
}

TEST_F(IntegrationWindow, TheGravestFlagGivesTheColourAndNoTwoClassesLookAlike)
{
    EXPECT_EQ(discColor(FlagOutlier | FlagSlow), discColor(FlagOutlier));
    EXPECT_EQ(discColor(FlagMasked | FlagBadProfile), discColor(FlagOffFrame));
    QSet<QRgb> setColor;
    unsigned nFlags = 0;
    for (const DiscClass& discs : discClasses()) {
        setColor.insert(discs.color.rgb());
        EXPECT_EQ(nFlags & discs.nFlags, 0u) << "each flag has one colour";
        nFlags |= discs.nFlags;
        EXPECT_TRUE(m_pPage->m_pLabelLegend->text().contains(discs.color.name()));
    }
    EXPECT_EQ(setColor.size(), int(discClasses().size()));
    EXPECT_EQ(nFlags, g_nExcludingFlags);
}

TEST_F(IntegrationWindow, AClickOnADiscShowsWhatWasSummed)
{
    integrate();
    m_pPage->m_pCheckPredicted->click();
    m_pSpin->setValue(6);
    const Observation& observation = observations()[5];
    const QPoint ptDisc = m_pView->mapFromScene(observation.place.dfX + 0.5, observation.place.dfY + 0.5);
    // A drag that begins on the disc moves the frame and asks for nothing.
    QTest::mousePress(m_pView->viewport(), Qt::LeftButton, {}, ptDisc);
    QTest::mouseRelease(m_pView->viewport(), Qt::LeftButton, {}, ptDisc + QPoint(40, 0));
    QCoreApplication::processEvents();
    EXPECT_EQ(profile(), nullptr);
    QTest::mouseClick(m_pView->viewport(), Qt::LeftButton, {},
                      m_pView->mapFromScene(observation.place.dfX + 0.5, observation.place.dfY + 0.5));
    QCoreApplication::processEvents();
    ASSERT_NE(profile(), nullptr);
    EXPECT_TRUE(profile()->isVisible());
    EXPECT_TRUE(profile()->text()->text().startsWith(QString("h k l = %1 %2 %3")
                                                         .arg(observation.anIndex[0])
                                                         .arg(observation.anIndex[1])
                                                         .arg(observation.anIndex[2])));
    // Measured and learned curve against the numbers of the frames: 5 to 7 were summed.
    ASSERT_EQ(profile()->plot()->series().size(), 2);
    EXPECT_EQ(profile()->plot()->series()[0].vecPoint,
              QVector<QPointF>({{4, 10}, {5, 100}, {6, 1000}, {7, 10000}, {8, 100000}}));
    EXPECT_EQ(profile()->plot()->series()[1].vecPoint.value(2), QPointF(6, 500));
    // The outline is green on three of five frames: 28 edges around the disc on each.
    const QImage picture = profile()->picture()->pixmap(Qt::ReturnByValue).toImage();
    int nGreen = 0, nGrey = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            nGreen += picture.pixelColor(x, y) == QColor(60, 220, 60);
            nGrey += picture.pixelColor(x, y) == QColor(150, 150, 150);
        }
    }
    EXPECT_GT(nGrey, 300);
    EXPECT_NEAR(double(nGreen) / nGrey, 1.5, 0.2);

    open();
    EXPECT_FALSE(profile()->isVisible()) << "of a series that is gone";
}

/// Indexed reflections in the peak table, the fourth of which passes twice; the passage on its frame, the
/// second, is the one that is shown.
class IntegratedColumns : public IntegrationWindow {
protected:
    void SetUp() override
    {
        IntegrationWindow::SetUp();
        m_pMerging->m_pButtonMerge->click();
        m_pCell->m_pButtonIndexMergedPeaks->click();
        ASSERT_GT(table()->rowCount(), 20) << log().right(500).toStdString();
        ASSERT_EQ(table()->columnCount(), 29);
        m_result.integrated.listObservation.resize(2);
        for (int n : {0, 1}) {
            Observation& observation = m_result.integrated.listObservation[n];
            for (int nAxis = 0; nAxis < 3; ++nAxis) {
                observation.anIndex[nAxis] = text(3, 4 + nAxis).toInt();
            }
            observation.dfFrame = text(3, 11).toInt() - 1 + (n == 0 ? 9 : 0);
            observation.dfIntensity = n == 0 ? 7 : -1234.56;
            observation.dfScale = 2;
            observation.nFlags = n == 0 ? 0 : FlagOverlap | FlagOutlier;
        }
    }
    QString text(int nRow, int nColumn) const { return table()->index(nRow, nColumn).data().toString(); }
    /// The row of the reflection of an observation, -1: none.
    int find(const Observation& observation) const
    {
        for (int nRow = 0; nRow < table()->rowCount(); ++nRow) {
            if (text(nRow, 4).toInt() == observation.anIndex[0] &&
                text(nRow, 5).toInt() == observation.anIndex[1] &&
                text(nRow, 6).toInt() == observation.anIndex[2]) {
                return nRow;
            }
        }
        return -1;
    }
    /// How many rows have an integrated intensity.
    int filled() const
    {
        int nFilled = 0;
        for (int n = 0; n < table()->rowCount(); ++n) {
            nFilled += !text(n, 26).isEmpty();
        }
        return nFilled;
    }
};

TEST_F(IntegratedColumns, HaveTheIntensitiesAndFlags)
{
    EXPECT_TRUE(m_pTable->isColumnHidden(26));
    EXPECT_TRUE(m_pTable->isColumnHidden(28));
    integrate();
    const int nRow = find(observations()[1]);
    ASSERT_GE(nRow, 0);
    EXPECT_FALSE(m_pTable->isColumnHidden(26));
    EXPECT_FALSE(m_pTable->isColumnHidden(28));
    const QLocale locale = QLocale::system();
    EXPECT_EQ(text(nRow, 26), locale.toString(-2469.12, 'f', 1));
    EXPECT_EQ(text(nRow, 27), locale.toString(4.0, 'f', 1));
    EXPECT_EQ(text(nRow, 28), reflectionFlagNames(FlagOverlap | FlagOutlier).join(", "));
    EXPECT_EQ(text(nRow == 0 ? 1 : 0, 26), QString()) << "not integrated";
    // Empty cells come before the numbers.
    m_pTable->sortByColumn(26, Qt::DescendingOrder);
    EXPECT_EQ(find(observations()[1]), 0);
}

TEST_F(IntegratedColumns, AFilterKeepsThePassageBehindItsRow)
{
    integrate();
    m_pTable->sortByColumn(26, Qt::DescendingOrder);
    auto& view = dynamic_cast<PeakTableView&>(*m_pTable);
    const int nRowsBefore = table()->rowCount();
    ASSERT_TRUE(view.setFilter(QStringLiteral("int.integr.<0,flags=overlap")));
    ASSERT_EQ(table()->rowCount(), 1);
    ASSERT_NE(view.integratedPeak(table()->index(0, 7)), nullptr);
    EXPECT_EQ(view.integratedPeak(table()->index(0, 7))->nObservation, 1);
    view.setFilter({});
    ASSERT_EQ(table()->rowCount(), nRowsBefore);
    m_pTabs->setCurrentWidget(m_pTable);
    QTest::mouseClick(m_pTable->viewport(), Qt::LeftButton, {},
                      m_pTable->visualRect(table()->index(0, 7)).center());
    ASSERT_NE(profile(), nullptr);
    EXPECT_TRUE(profile()->isVisible());
}

// With two axes in each other's place the indices are those of other reflections.
TEST_F(IntegratedColumns, AreEmptyForAnotherCell)
{
    m_result = quartzResult(g_nFrames);
    integrate();
    EXPECT_GT(filled(), 20);
    Mat matSwapped = cell();
    std::swap(matSwapped[0], matSwapped[1]);
    loadCell(matSwapped);
    m_pCell->m_pButtonIndexMergedPeaks->click();
    ASSERT_GT(table()->rowCount(), 20);
    EXPECT_EQ(filled(), 0);
}

}  // namespace tessera
