// The unit cell by hand and by matrix.
#include "tests/window/reciprocaltest.h"

namespace tessera {

TEST_F(Reciprocal, TheFirstCellByHandIsACubeAndInSight)
{
    m_pCell->m_pSpinManualLengthB->setValue(0.2);  // no cell yet: kept for the next click
    EXPECT_EQ(fields(), g_strNoCell);
    m_pCell->m_pRadioCellManual->setChecked(true);
    expectNear(cell(), {{{0.1, 0, 0}, {0, 0.1, 0}, {0, 0, 0.1}}});
    EXPECT_EQ(fields(), fieldsOf(cell()));
    for (const ED3DWidget* pView : {m_pRaw, m_pMerged}) {
        EXPECT_TRUE(pView->showLatticeLines());
        EXPECT_TRUE(pView->showLatticePoints());
    }
    m_pCell->m_pButtonAssignRB->click();  // no view yet
    expectNear(cell(), {{{0.1, 0, 0}, {0, 0.1, 0}, {0, 0, 0.1}}});
}

TEST_F(Reciprocal, VectorsByHandLieAlongTheViewAndHaveTheLengthsTyped)
{
    m_pCell->m_pRadioCellManual->setChecked(true);
    m_pCell->m_pSpinManualLengthB->setValue(0.2);
    const auto seesAnother = [](ED3DWidget* pView, QPushButton* pButton) {
        QTest::qWait(50);                               // a view that has just come to sight is laid out
        const QImage image = pView->grabFrameBuffer();  // none without OpenGL
        pButton->click();
        return image.isNull() || pView->grabFrameBuffer() != image;
    };
    m_pTabs->setCurrentIndex(1);
    const double n = 1 / std::sqrt(14.0);
    m_pRaw->viewAlong({1, 2, 3});
    EXPECT_TRUE(seesAnother(m_pRaw, m_pCell->m_pButtonAssignRB));
    m_pRaw->viewAlong({3, -1, 2});  // moves no vector
    m_pCell->m_pSpinManualLengthA->setValue(0.05);
    m_pCell->m_pSpinManualLengthC->setValue(0.0725);
    m_pTabs->setCurrentIndex(2);
    m_pMerged->viewAlong({-2, 3, 1});
    EXPECT_TRUE(seesAnother(m_pMerged, m_pCell->m_pButtonAssignRC));
    const Mat matWanted = {{{0.05, 0, 0}, {0.2 * n, 0.4 * n, 0.6 * n}, {-0.145 * n, 0.2175 * n, 0.0725 * n}}};
    expectNear(cell(), matWanted);
    EXPECT_EQ(fields(), fieldsOf(matWanted));
    m_pCell->m_pButtonAssignRB->click();  // co-planar with c*
    EXPECT_EQ(fields(), g_strNoCell);
}

TEST_F(Reciprocal, AVectorOfNoLengthBeginsAnewAlongItsAxis)
{
    m_pCell->m_pRadioCellManual->setChecked(true);
    m_pTabs->setCurrentIndex(1);
    m_pRaw->viewAlong({1, 2, 3});
    m_pCell->m_pButtonAssignRB->click();
    m_pCell->m_pSpinManualLengthB->setValue(0);
    m_pCell->m_pSpinManualLengthB->setValue(0.3);
    expectNear(cell(), {{{0.1, 0, 0}, {0, 0.3, 0}, {0, 0, 0.1}}});
}

// Which rounds its lengths.
TEST_F(Reciprocal, ACellStaysUntilTheManualWayIsLeft)
{
    loadCell(g_matCell);
    m_pPanel->m_pCheckLatticePoints->setChecked(false);
    m_pCell->m_pRadioCellManual->setChecked(true);
    EXPECT_TRUE(m_pMerged->showLatticePoints());
    expectNear(cell(), g_matCell);
    m_pCell->m_pRadioCellAuto->setChecked(true);
    Mat matRounded = g_matCell;
    for (Vec& v : matRounded) {
        v = std::round(lengthOf(v) * 1e5) / 1e5 / lengthOf(v) * v;
    }
    EXPECT_GT(std::fabs(matRounded[2][2] - g_matCell[2][2]), 1e-6);
    expectNear(cell(), matRounded);
}

TEST_F(Reciprocal, AMatrixIsTestedAndTakenInEitherSpace)
{
    m_pCell->m_pButtonTransform->click();
    EXPECT_EQ(lines("Unit cell information is missing.", Qt::black), 1);
    const Mat matTurned = {{{1, 1, 0}, {-1, 1, 0}, {0.5, 0, 1}}};
    for (bool bReal : {false, true}) {
        const Mat matWanted = bReal ? dual(matTurned * dual(g_matCell)) : matTurned * g_matCell;
        auto *pSpace = m_pCell->m_pRadioSpaceReciprocal, *pOther = m_pCell->m_pRadioSpaceReal;
        if (bReal) {
            std::swap(pSpace, pOther);
        }
        const auto tries = [this] { return log().count("Transformed unit cell: a="); };
        loadCell(g_matCell);
        pSpace->setChecked(true);
        int nTries = tries();
        type(matTurned);
        EXPECT_EQ(tries(), nTries);
        m_pCell->m_pButtonTest->click();
        EXPECT_EQ(tries(), ++nTries);
        EXPECT_EQ(fields(), fieldsOf(matWanted));
        type(matTurned);  // equal: no new test
        EXPECT_EQ(tries(), nTries);
        type(g_matOne);  // an edit under test tests again
        EXPECT_EQ(tries(), ++nTries);
        EXPECT_EQ(fields(), fieldsOf(g_matCell));
        type(matTurned);
        pOther->setChecked(true);  // the other space ends the test
        EXPECT_FALSE(m_pCell->m_pButtonTest->isChecked());
        EXPECT_EQ(fields(), fieldsOf(g_matCell));
        expectNear(cell(), g_matCell);
        pSpace->setChecked(true);
        m_pCell->m_pButtonTest->click();
        m_pCell->m_pButtonTransform->click();
        EXPECT_FALSE(m_pCell->m_pButtonTest->isChecked());
        expectNear(cell(), matWanted, 2e-7);
        EXPECT_EQ(m_pCell->m_apEditMatrix[2][0]->text(), "0");
    }
}

TEST_F(Reciprocal, ASingularMatrixIsRefusedInRealSpace)
{
    loadCell(g_matCell);
    m_pCell->m_pRadioSpaceReal->setChecked(true);
    type({{{1, 2, 3}, {2, 4, 6}, {0, 0, 1}}});
    const Mat matKept = cell();
    m_pCell->m_pButtonTest->click();
    m_pCell->m_pButtonTransform->click();
    EXPECT_EQ(lines("TransformUnitCell: singlular matrix!"), 2);
    EXPECT_TRUE(m_pCell->m_pButtonTest->isChecked());
    expectNear(cell(), matKept);
}

// It is in force.
TEST_F(Reciprocal, ACellSetByHandIsNotUnderTest)
{
    loadCell(g_matCell);
    type({{{2, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
    m_pCell->m_pButtonTest->setChecked(true);
    m_pCell->m_pSpinManualLengthA->setValue(0.7);
    EXPECT_FALSE(m_pCell->m_pButtonTest->isChecked());
}

TEST_F(Reciprocal, AMatrixThatIsNoNumbersIsTold)
{
    loadCell(g_matCell);
    const Mat matBefore = cell();
    const QString strBefore = fields();
    for (const char* pszText : {"", "-", "1e"}) {
        m_pCell->m_apEditMatrix[1][2]->setText(QString::fromLatin1(pszText));
        const int nLines = lines("Unknown numeric format.");
        m_pWindow->unitCellTransformatinMatrixEdited();
        m_pCell->m_pButtonTest->click();
        EXPECT_FALSE(m_pCell->m_pButtonTest->isChecked());
        m_pCell->m_pButtonTransform->click();
        EXPECT_EQ(lines("Unknown numeric format."), nLines + 3) << pszText;
        expectNear(cell(), matBefore);
        EXPECT_EQ(fields(), strBefore);
    }
}

}  // namespace tessera
