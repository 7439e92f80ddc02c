// The strip of what is stale, what of a project comes back, and results of "Tools" that are taken over.
#include "tests/window/reciprocaltest.h"
#include "window/crystal/geometrycontrol.h"
#include "window/road/roaddock.h"
#include "window/road/statusstrip.h"

namespace tessera {

namespace {

class Status : public Reciprocal {
protected:
    void SetUp() override
    {
        Reciprocal::SetUp();
        findParts();
    }
    void findParts() { m_pStrip = m_pWindow->findChild<StatusStrip*>(); }
    /// A letter a stage: D done, S stale, M missing.
    QString states()
    {
        m_pWindow->showWorkStatus();
        QString str;
        for (const StageStatus& stage : m_pStrip->status()) {
            str += QLatin1Char("MDS"[int(stage.state)]);
        }
        return str;
    }
    QToolButton* chip(WorkStage stage) const { return m_pStrip->m_listChip[size_t(stage)]; }
    /// Clicks the last link of the log with that text.
    bool clickLink(const QString& strText) const
    {
        QString strAddress;
        for (QTextBlock block = m_pLog->document()->begin(); block.isValid(); block = block.next()) {
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                if (it.fragment().text().contains(strText) && it.fragment().charFormat().isAnchor()) {
                    strAddress = it.fragment().charFormat().anchorHref();
                }
            }
        }
        emit m_pLog->anchorClicked(QUrl(strAddress));
        return !strAddress.isEmpty();
    }
    /// How many lines of the log hold the text and can be seen.
    int visibleLines(const QString& strText) const
    {
        int nLines = 0;
        for (QTextBlock block = m_pLog->document()->begin(); block.isValid(); block = block.next()) {
            nLines += block.text().contains(strText) && block.isVisible();
        }
        return nLines;
    }

    StatusStrip* m_pStrip = nullptr;
};

}  // namespace

TEST_F(Status, OneClickDoesWhatIsMissing)
{
    m_pWindow->showWorkStatus();
    EXPECT_FALSE(m_pStrip->isVisible()) << "no data set is open";
    open();
    EXPECT_EQ(states(), "DDDDMDMMM");
    EXPECT_TRUE(m_pStrip->isVisible());
    EXPECT_EQ(m_pStrip->m_pUpdateButton->text(), "Bring up to date: Merge and index");
    m_pStrip->m_pUpdateButton->click();
    EXPECT_EQ(states(), "DDDDDDDMM") << log().right(600).toStdString();
    EXPECT_FALSE(m_pStrip->m_pUpdateButton->isVisible());
}

TEST_F(Status, OneClickBringsWhatIsStaleUpToDate)
{
    open();
    m_pStrip->m_pUpdateButton->click();
    // By itself, without a look that is asked for.
    m_pFrames->m_pRotationAxisSpin->setValue(m_pFrames->m_pRotationAxisSpin->value() + 0.3);
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_pStrip->m_pUpdateButton->isVisible(); }, 3000));
    EXPECT_EQ(states(), "DDDDSDSMM");
    EXPECT_TRUE(chip(WorkStage::Merging)->toolTip().contains("turned by 0.3°"))
        << qPrintable(chip(WorkStage::Merging)->toolTip());
    EXPECT_EQ(m_pStrip->m_pUpdateButton->text(), "Bring up to date: Merge and index anew");
    chip(WorkStage::Merging)->click();
    EXPECT_EQ(m_pTabs->currentWidget(), m_pMerged);
    const QByteArray bytesCell = readBytes(file("w.uc"));
    m_pStrip->m_pUpdateButton->click();
    EXPECT_EQ(states(), "DDDDDDDMM");
    EXPECT_EQ(readBytes(file("w.uc")), bytesCell) << "a cell from a file is not searched again";
}

TEST_F(Status, NewerNumbersOfTheSearchMakeItsPeaksStale)
{
    open();
    m_pStrip->m_pUpdateButton->click();
    m_pSearch->m_pThresholdSpin->setValue(2 * m_pSearch->m_pThresholdSpin->value());
    EXPECT_EQ(states(), "DDDDDDDMM") << "nobody knows what the peaks of a file were hunted with";
    m_pSearch->m_pRunButton->click();
    m_pSearch->m_pThresholdSpin->setValue(1);
    EXPECT_EQ(states(), "DSDSSDSMM");
}

TEST_F(Status, NumbersAndMergedReflectionsComeBack)
{
    open();
    EXPECT_FALSE(QFile::exists(file("w.window.json"))) << "to open is to change nothing";
    m_pMerging->m_pSpinResolutionMax->setValue(0.77);
    m_pMerging->m_pSpinMax2DDistance->setValue(4.5);
    m_pCell->m_pSpinCellRangeMax->setValue(23.4);
    m_pCell->m_pComboMethod->setCurrentIndex(1);
    m_pCell->m_pSpinIndexThreshold->setValue(0.12);
    m_pMerging->m_pButtonMerge->click();
    ASSERT_TRUE(QFile::exists(file("w.window.json")));
    const int nMerged = m_pMerged->points().size(), nRows = table()->rowCount();
    newWindow();
    m_pWindow->show();
    findParts();
    open();
    EXPECT_EQ(m_pMerging->m_pSpinResolutionMax->value(), 0.77);
    EXPECT_EQ(m_pMerging->m_pSpinMax2DDistance->value(), 4.5);
    EXPECT_EQ(m_pCell->m_pSpinCellRangeMax->value(), 23.4);
    EXPECT_EQ(m_pCell->m_pComboMethod->currentIndex(), 1);
    EXPECT_EQ(m_pCell->m_pSpinIndexThreshold->value(), 0.12);
    EXPECT_EQ(m_pMerged->points().size(), nMerged);
    EXPECT_EQ(table()->rowCount(), nRows);
    EXPECT_EQ(states(), "DDDDDDMMM");
    const std::vector<RoadRow>& listRow = m_pWindow->findChild<RoadDock*>()->rows();
    EXPECT_EQ(listRow[size_t(RoadRowKind::Cell)].state, RoadRowState::Found);
    EXPECT_EQ(listRow[size_t(RoadRowKind::Integration)].state, RoadRowState::Waiting);
}

TEST_F(Status, SettingsHaveTheNumbersWhereTheirFileCannotBeWritten)
{
    open();
    m_pMerging->m_pSpinResolutionMax->setValue(0.77);
    ASSERT_TRUE(QDir().mkpath(file("w.window.json")));
    m_pMerging->m_pSpinIntensityMin->setValue(1);
    m_pWindow->close();
    newWindow();
    open();
    EXPECT_EQ(m_pMerging->m_pSpinIntensityMin->value(), 1);
    EXPECT_EQ(m_pMerging->m_pSpinResolutionMax->value(), 0.77);
}

TEST_F(Status, ADamagedFileOfNumbersIsTold)
{
    writeBytes(file("w.window.json"), "{\"format\": \"Tessera win");
    newWindow();
    open();
    EXPECT_EQ(lines("w.window.json is not used"), 1);
    EXPECT_EQ(m_pMerging->m_pSpinResolutionMax->value(), 1) << "the start value";
    EXPECT_TRUE(m_pMerged->points().isEmpty());
}

TEST_F(Status, DetailsOfAToolAreFoldedIntoItsLine)
{
    open();
    m_pActions->m_pTestRotationAxis->trigger();
    EXPECT_EQ(lines("Rotation axis test: axis ", Qt::blue), 1) << log().right(300).toStdString();
    EXPECT_EQ(lines("Max Angle Weighted:", Qt::black), 1);
    EXPECT_EQ(visibleLines("Max Angle Weighted:"), 0);
    EXPECT_TRUE(clickLink("Rotation axis test"));
    EXPECT_EQ(visibleLines("Max Angle Weighted:"), 1);
    EXPECT_TRUE(clickLink("Rotation axis test"));
    EXPECT_EQ(visibleLines("Max Angle Weighted:"), 0);
    EXPECT_EQ(visibleLines("Rotation axis test: axis "), 1) << "what comes after a fold is not in it";
}

TEST_F(Status, TheAxisThatAToolFindsIsTakenAndGivenBack)
{
    open();
    m_pMerging->m_pButtonMerge->click();
    const QString strCell = fields();
    QDoubleSpinBox* pAxis = m_pFrames->m_pRotationAxisSpin;
    const double dfAxis = pAxis->value();
    pAxis->setValue(dfAxis + 20);
    m_pActions->m_pTestRotationAxis->trigger();
    EXPECT_EQ(pAxis->value(), dfAxis + 20);
    EXPECT_TRUE(clickLink("Take it"));
    const double dfTaken = pAxis->value();
    EXPECT_NE(dfTaken, dfAxis + 20);
    EXPECT_LE(std::fabs(dfTaken - dfAxis - 20), 90.05) << "the sense of the rotation stays";
    EXPECT_EQ(fields(), strCell);
    EXPECT_EQ(states().mid(3, 2), "DS");
    m_pWindow->findChild<GeometryControl*>()->undo();
    EXPECT_EQ(pAxis->value(), dfAxis + 20);
}

TEST_F(Status, TheBeamThatAToolFindsIsTakenForItsOwnSeriesAlone)
{
    open();
    const double dfX = m_pShift->m_pCenterXSpin->value();
    m_pShift->m_pCenterXSpin->setValue(dfX + 3);
    m_pActions->m_pFitDirectBeam->trigger();
    EXPECT_EQ(lines("Direct beam on the first frame", Qt::blue), 1);
    EXPECT_TRUE(clickLink("Take it"));
    EXPECT_NEAR(m_pShift->m_pCenterXSpin->value(), dfX, 1) << log().right(500).toStdString();
    m_pWindow->openFiles({writeProject("x.ed3d", {})});
    const double dfOther = m_pShift->m_pCenterXSpin->value();
    EXPECT_TRUE(clickLink("Take it"));
    EXPECT_EQ(lines("of another series"), 1);
    EXPECT_EQ(m_pShift->m_pCenterXSpin->value(), dfOther);
}

TEST_F(Status, TheFormerCellOfTheProjectIsKept)
{
    open();
    m_pMerging->m_pButtonMerge->click();
    const QByteArray bytesFormer = readBytes(file("w.uc"));
    ASSERT_FALSE(bytesFormer.isEmpty());
    m_pCell->m_pSpinCellRangeMin->setValue(2);
    m_pCell->m_pSpinCellRangeMax->setValue(3.5);  // below all edges: the search takes others of the lattice
    m_pCell->m_pButtonSearchCell->click();
    const QByteArray bytesNow = readBytes(file("w.uc"));
    EXPECT_NE(bytesNow, bytesFormer) << log().right(900).toStdString();
    EXPECT_EQ(readBytes(file("w.uc~")), bytesFormer);
    EXPECT_EQ(lines("The former unit cell is kept as", Qt::black), 1);
    EXPECT_EQ(lines("explains fewer peaks", g_colorDoubt), 0) << "it is the same lattice";
}

TEST_F(Status, TheShownPeaksSayThatTheyFollowTheBoxes)
{
    open();
    EXPECT_FALSE(m_pSearch->m_pLiveLabel->isVisibleTo(m_pSearch));
    m_pSearch->m_pShowPeaksCheck->setChecked(true);
    EXPECT_TRUE(m_pSearch->m_pLiveLabel->isVisibleTo(m_pSearch));
    const QString strBefore = m_pSearch->m_pLiveLabel->text();
    EXPECT_TRUE(strBefore.contains("follow the boxes"));
    m_pSearch->m_pThresholdSpin->setValue(20 * m_pSearch->m_pThresholdSpin->value());
    EXPECT_NE(m_pSearch->m_pLiveLabel->text(), strBefore);
}

}  // namespace tessera
