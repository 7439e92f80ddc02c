// The window of the lattices: types and their matrices, further lattices chosen and coloured.
#include "simulate/truthfile.h"
#include "tests/window/reciprocaltest.h"
#include "window/crystal/latticesdialog.h"

namespace tessera {

namespace {

/// a*, b*, c* of the direct basis with these rows.
Mat reciprocalOf(const Mat& matRows, const Mat& matConventional)
{
    return dual(matRows * matConventional);
}

LatticesDialog& dialogOf(const MainWindow& window)
{
    return *window.findChild<LatticesDialog*>();
}

QString textOf(const QTableWidget* pTable, int nRow, int nColumn)
{
    return pTable->item(nRow, nColumn)->text();
}

/// What the dialog says in the place of what it does not show.
QStringList notes(const LatticesDialog& dialog)
{
    QStringList list;
    for (const QLabel* pLabel : dialog.findChildren<QLabel*>()) {
        if (pLabel->isVisible()) {
            list.append(pLabel->text());
        }
    }
    return list;
}

/// The dialog beside a cubic body-centred cell, askew and turned, by a basis that has twice a body diagonal.
class LatticeTypes : public Reciprocal {
protected:
    void loadPrimitiveCell() { loadCell(reciprocalOf(matPrimitive, matCube)); }
    /// The first row of a type whose symbol begins so, or the number of rows.
    int rowOf(const char* pszType) const
    {
        const QTableWidget* pTypes = dialogOf(*m_pWindow).m_pTableTypes;
        int nRow = 0;
        while (nRow < pTypes->rowCount() && !textOf(pTypes, nRow, 0).startsWith(pszType)) {
            ++nRow;
        }
        return nRow;
    }

    const double s = std::sqrt(0.5);
    const Mat matCube = {{{8.1 * s, 8.1 * s, 0}, {-8.1 * s, 8.1 * s, 0}, {0, 0, 8.1}}};
    const Mat matPrimitive = {{{0.5, 0.5, -0.5}, {-0.5, 0.5, 0.5}, {0.5, -0.5, 0.5}}};
};

}  // namespace

TEST_F(LatticeTypes, MatrixOfTheProposedOneLeadsToItsConventionalCell)
{
    LatticesDialog& dialog = dialogOf(*m_pWindow);
    m_pCell->m_pButtonLattices->click();
    EXPECT_EQ(lines("Unit cell information is missing."), 1);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_FALSE(dialog.m_pButtonFillMatrix->isEnabled());
    EXPECT_FALSE(dialog.m_pButtonCopy->isEnabled());
    for (bool bReal : {false, true}) {
        loadPrimitiveCell();
        (bReal ? m_pCell->m_pRadioSpaceReal : m_pCell->m_pRadioSpaceReciprocal)->setChecked(true);
        m_pCell->m_pButtonLattices->click();
        ASSERT_GT(dialog.m_pTableTypes->rowCount(), 5);
        ASSERT_EQ(dialog.selectedType(), 0);
        EXPECT_EQ(textOf(dialog.m_pTableTypes, 0, 0), "cI *");
        EXPECT_EQ(textOf(dialog.m_pTableTypes, 0, 2).split("  ").first(),
                  QLocale::system().toString(8.1, 'f', 3));
        EXPECT_TRUE(dialog.m_pTableTypes->isVisible());
        dialog.m_pButtonFillMatrix->click();
        m_pCell->m_pButtonTest->click();
        const QString strCube = fieldsOf(dual(matCube));
        EXPECT_EQ(fields(), strCube);
        m_pCell->m_pButtonTransform->click();
        EXPECT_EQ(fields(), strCube);
    }
}

TEST_F(LatticeTypes, ATableOfAnEarlierCellIsNotShownAndGivesNoMatrix)
{
    LatticesDialog& dialog = dialogOf(*m_pWindow);
    loadPrimitiveCell();
    m_pCell->m_pButtonLattices->click();
    dialog.m_pButtonFillMatrix->click();
    m_pCell->m_pButtonTransform->click();
    EXPECT_FALSE(dialog.m_pTableTypes->isVisible());
    EXPECT_TRUE(notes(dialog).value(0).contains("of an earlier cell"));
    dialog.m_pButtonFillMatrix->click();
    EXPECT_EQ(m_pCell->m_apEditMatrix[0][1]->text(), "0");
    EXPECT_EQ(lines("The unit cell is another one than the table of lattices belongs to."), 1);
}

// With thirds in its matrix.
TEST_F(LatticeTypes, OneOfLowerSymmetryIsTakenAsTheUserChooses)
{
    LatticesDialog& dialog = dialogOf(*m_pWindow);
    loadPrimitiveCell();
    m_pCell->m_pButtonLattices->click();
    const int nRow = rowOf("hR");
    ASSERT_LT(nRow, dialog.m_pTableTypes->rowCount());
    dialog.m_pTableTypes->selectRow(nRow);
    dialog.m_pButtonFillMatrix->click();
    m_pCell->m_pButtonTransform->click();
    const auto number = [](double df) { return QLocale::system().toString(df, 'f', 2); };
    EXPECT_EQ(fields(), QStringList({number(8.1 * std::sqrt(2.0)), number(8.1 * std::sqrt(2.0)),
                                     number(8.1 * std::sqrt(0.75)), number(90), number(90), number(120)})
                            .join(' '));
}

TEST_F(LatticeTypes, TheTableIsCopiedAndReadWhole)
{
    LatticesDialog& dialog = dialogOf(*m_pWindow);
    loadPrimitiveCell();
    m_pCell->m_pButtonLattices->click();
    dialog.m_pButtonCopy->click();
    const QString strCopied = QApplication::clipboard()->text();
    EXPECT_TRUE(strCopied.contains("*cI")) << strCopied.toStdString();
    EXPECT_TRUE(strCopied.contains("hR")) << strCopied.toStdString();
    for (const QString& strLine : strCopied.split('\n')) {
        EXPECT_TRUE(log().contains(strLine.trimmed()) || strLine.startsWith("Lattice 1"))
            << strLine.toStdString();
    }
    // Numbers are read whole, whatever the width of the window.
    dialog.resize(400, 400);
    for (int nColumn = 0; nColumn < dialog.m_pTableTypes->columnCount(); ++nColumn) {
        EXPECT_GE(
            dialog.m_pTableTypes->columnWidth(nColumn),
            dialog.m_pTableTypes->fontMetrics().horizontalAdvance(textOf(dialog.m_pTableTypes, 0, nColumn)));
    }
}

/// A window on a series of two crystals of quartz.
class TwoLattices : public SeriesTest {
protected:
    static void SetUpTestSuite()
    {
        makeSeries(
            "--frames 60 --size 320 --pixel-size 0.007 --tilt-start -30 --tilt-step 1 "
            "--second-lattice 0.5 --second-turn 17",
            "peaks");
        QString strError;
        s_pTruth = new SimulatedSeries;
        ASSERT_TRUE(readTruthFile(s_pMade->filePath("w_truth.json"), *s_pTruth, strError));
    }
    static void TearDownTestSuite()
    {
        SeriesTest::TearDownTestSuite();
        delete s_pTruth;
    }
    void SetUp() override
    {
        SeriesTest::SetUp();
        m_pWindow->show();
        open();
        lookAt(s_pTruth->matBasis);
    }
    void lookAt(const Mat& matReciprocal)
    {
        QByteArray bytes;
        for (size_t i = 0; i < 3; ++i) {
            const Vec& v = matReciprocal[i];
            bytes += QString::asprintf("%c* %.8f %.8f %.8f\n", int('a' + i), v[0], v[1], v[2]).toLatin1();
        }
        answered({write("in.uc", bytes)}, [this] { m_pWindow->loadUnitCell(); });
        m_pCell->m_pButtonLattices->click();
    }
    /// Whole combinations of the vectors, of the same volume, lead from the cell of the file to the lattice.
    void expectCellOf(const Mat& matLattice) const
    {
        const QList<QByteArray> listWord = readBytes(file("w.uc")).simplified().split(' ');
        ASSERT_GE(listWord.size(), 12);
        Mat mat{};
        for (int i = 0; i < 9; ++i) {
            mat[size_t(i) / 3][size_t(i) % 3] =
                listWord[listWord.size() - 12 + i / 3 * 4 + 1 + i % 3].toDouble();
        }
        const Mat matChange = mat * inverseOf(matLattice);
        for (const Vec& row : matChange) {
            for (const double df : row) {
                EXPECT_NEAR(df, std::round(df), 0.06);
            }
        }
        EXPECT_NEAR(std::abs(determinantOf(matChange)), 1, 0.05);
    }
    LatticesDialog& dialog() const { return dialogOf(*m_pWindow); }
    /// Lattice of the spot of the truth next to a peak, −1: none within two pixels.
    static int trueLattice(const Peak3D& peak)
    {
        int nLattice = -1;
        double dfNearest = 2;
        for (const TruthSpot& spot : s_pTruth->listSpot) {
            const double dfDistance = std::hypot(spot.dfX - peak.dfX2D, spot.dfY - peak.dfY2D);
            if (spot.nFrame == peak.nFrame && dfDistance < dfNearest) {
                dfNearest = dfDistance;
                nLattice = spot.nLattice;
            }
        }
        return nLattice;
    }
    /// All that is told of the groups of a view.
    static QString groups(const ED3DWidget* pView)
    {
        QStringList list;
        for (int g = 0; g < pView->groupLabels().size(); ++g) {
            QStringList listPoint;
            for (const int nPoint : pView->groupPoints()[g]) {
                listPoint.append(QString::number(nPoint));
            }
            list.append(pView->groupLabels()[g] + pView->groupColors()[g].name() +
                        QString::number(pView->groupsVisible()[g]) + ": " + listPoint.join(' '));
        }
        return list.join('\n');
    }
    void choose(int nLattice)
    {
        dialog().m_pListLattices->setCurrentRow(nLattice);
        dialog().m_pButtonChoose->click();
    }

    static SimulatedSeries* s_pTruth;
};

SimulatedSeries* TwoLattices::s_pTruth = nullptr;

TEST_F(TwoLattices, TheSecondOneIsChosenMergedAndIndexed)
{
    ASSERT_EQ(dialog().m_pListLattices->count(), 2);
    EXPECT_EQ(
        lines("turned by", Qt::black) + lines("turned by", Qt::darkGreen) + lines("turned by", Qt::blue),
        log().count("turned by"));
    EXPECT_TRUE(log().contains(dialog().m_pListLattices->item(1)->text()));
    choose(1);
    expectCellOf(s_pTruth->matSecondBasis);
    EXPECT_EQ(dialog().m_pListLattices->count(), 2);  // the other one can still be chosen
    ASSERT_GE(dialog().selectedType(), 0);
    EXPECT_EQ(textOf(dialog().m_pTableTypes, dialog().selectedType(), 0), "hP *");

    dialog().m_pCheckColors->setChecked(true);
    ASSERT_EQ(m_pRaw->groupLabels(), QStringList({"Unlabeled", "Lattice 1", "Lattice 2"}));
    m_pMerging->m_pTableTargetPeaks->selectRow(2);
    m_pMerging->m_pButtonMerge->click();
    EXPECT_GT(m_pMerged->points().size(), 100);
    EXPECT_EQ(m_pMerged->groupPoints().value(1).size(), 0);  // of the second alone
    EXPECT_EQ(m_pMerged->groupPoints().value(2).size(), m_pMerged->points().size());
    m_pCell->m_pTableReflectionSelection->selectRow(2);
    m_pCell->m_pButtonIndexMergedPeaks->click();
    const int nIndexed = m_pTable->model()->rowCount();
    EXPECT_GT(nIndexed, 0.9 * m_pMerged->points().size());
    // The first cell indexes few of them.
    choose(0);
    m_pCell->m_pTableReflectionSelection->selectRow(2);
    m_pCell->m_pButtonIndexMergedPeaks->click();
    EXPECT_LT(m_pTable->model()->rowCount(), 0.5 * nIndexed);
}

TEST_F(TwoLattices, ALongerCellThatThePeaksAskForIsTaken)
{
    Mat matShort = s_pTruth->matBasis;
    for (double& df : matShort[2]) {
        df *= 2;
    }
    lookAt(matShort);
    EXPECT_FALSE(dialog().m_pButtonLongerCell->isEnabled());
    int nRow = 0;
    while (nRow < dialog().m_pListPoints->count() &&
           !dialog().m_pListPoints->item(nRow)->text().contains("1/2")) {  // of the shortest axes
        ++nRow;
    }
    ASSERT_LT(nRow, dialog().m_pListPoints->count()) << log().right(2000).toStdString();
    dialog().m_pListPoints->setCurrentRow(nRow);
    dialog().m_pButtonLongerCell->click();
    expectCellOf(s_pTruth->matBasis);
    EXPECT_EQ(textOf(dialog().m_pTableTypes, dialog().selectedType(), 0), "hP *");
}

TEST_F(TwoLattices, ColoursAreThoseOfTheCrystals)
{
    m_pMerging->m_pButtonMerge->click();
    dialog().m_pCheckColors->setChecked(true);
    for (const ED3DWidget* pView : {m_pRaw, m_pMerged}) {
        ASSERT_EQ(pView->groupLabels(), QStringList({"Unlabeled", "Lattice 1", "Lattice 2"}));
        EXPECT_NE(pView->groupColors()[1], pView->groupColors()[2]);
    }
    // By the simulator's list of spots; the crystals share spots where these lie close.
    for (int nLattice : {0, 1}) {
        int nRight = 0, nWrong = 0;
        for (const int nPoint : m_pRaw->groupPoints()[1 + nLattice]) {
            const int nTrue = trueLattice(m_pRaw->points()[nPoint]);
            nRight += nTrue == nLattice;
            nWrong += nTrue == 1 - nLattice;
        }
        EXPECT_GT(nRight, 300) << nLattice;
        EXPECT_LT(nWrong, 0.1 * nRight) << nLattice;
    }
    EXPECT_GT(m_pMerged->groupPoints()[1].size(), 100);
    EXPECT_GT(m_pMerged->groupPoints()[2].size(), 100);
}

/// The same with groups of the user's in both views, and their list of peaks.
class TwoLatticesAndGroups : public TwoLattices {
protected:
    void SetUp() override
    {
        TwoLattices::SetUp();
        m_pMerging->m_pButtonMerge->click();
        m_pRaw->insertPointGroup(1, QStringLiteral("mine"), {1, 3, 7, 8, 20}, Qt::cyan);
        m_pRaw->insertPointGroup(2, QStringLiteral("hidden"), {0, 4, 6}, Qt::green);
        m_pRaw->setGroupVisible(2, false);
        m_pMerged->insertPointGroup(1, QStringLiteral("merged"), {2, 5}, Qt::blue);
        strRaw = groups(m_pRaw);
        strMerged = groups(m_pMerged);
        answered({path("before.pk")}, [this] { m_pWindow->saveRawPeaks(); });
        dialog().m_pCheckColors->setChecked(true);
    }

    QString strRaw, strMerged;
};

// Nothing edits those of the lattices.
TEST_F(TwoLatticesAndGroups, TheUsersGroupsAreWhatIsSaved)
{
    answered({path("during.pk")}, [this] { m_pWindow->saveRawPeaks(); });
    EXPECT_EQ(readBytes(path("during.pk")), readBytes(path("before.pk")));
    m_pTabs->setCurrentIndex(1);
    m_pPanel->m_pTablePeakGroups->selectRow(1);
    m_pActions->m_pGroupReset->trigger();
    EXPECT_EQ(lines("The groups are those of lattices."), 1);
    EXPECT_EQ(m_pRaw->groupLabels().size(), 3);
}

TEST_F(TwoLatticesAndGroups, ColoursGoWithoutATraceAlsoAfterOtherLimits)
{
    const double dfMost = m_pMerging->m_pSpinResolutionMax->value();
    const int nAll = m_pRaw->points().size();
    m_pMerging->m_pSpinResolutionMax->setValue(0.5);
    EXPECT_LT(m_pRaw->points().size(), nAll);
    EXPECT_EQ(m_pRaw->groupLabels().value(2), "Lattice 2");
    m_pMerging->m_pSpinResolutionMax->setValue(dfMost);
    ASSERT_EQ(m_pRaw->points().size(), nAll);

    dialog().m_pCheckColors->setChecked(false);
    EXPECT_EQ(groups(m_pRaw), strRaw);
    EXPECT_EQ(groups(m_pMerged), strMerged);
}

TEST_F(TwoLatticesAndGroups, AGroupThatIsMadeUnderTheColoursStays)
{
    m_pRaw->insertPointGroup(3, QStringLiteral("new"), {9}, Qt::yellow);
    dialog().m_pCheckColors->setChecked(false);
    EXPECT_EQ(groups(m_pRaw).section('\n', 1, 2), strRaw.section('\n', 1, 2));
    EXPECT_EQ(m_pRaw->groupLabels(), QStringList({"Unlabeled", "mine", "hidden", "new"}));
}

TEST_F(TwoLatticesAndGroups, OtherPeaksKnowNoLattices)
{
    answered({path("before.pk")}, [this] { m_pWindow->loadRawPeaks(); });
    EXPECT_FALSE(dialog().m_pCheckColors->isChecked());
    EXPECT_EQ(dialog().m_pListLattices->count(), 0);
    EXPECT_FALSE(m_pRaw->groupLabels().contains("Lattice 1"));
}

TEST_F(TwoLattices, TheRunIsStoppedByItsButtonAndKeepsTheWindowAlive)
{
    const int nTables = log().count("Bravais types that");
    bool bRefused = false;
    during([this] { dialog().m_pButtonRun->click(); },
           [&] {
               if (dialog().m_pButtonRun->text() != "Stop") {
                   return false;
               }
               m_pCell->m_pButtonTransform->click();
               bRefused = lines("Transforming the cell has to wait") == 1;
               dialog().m_pButtonRun->click();
               return true;
           });
    EXPECT_TRUE(bRefused);
    EXPECT_EQ(dialog().m_pButtonRun->text(), "Run");
    EXPECT_EQ(lines("The search for further lattices did not finish."), 1);
    EXPECT_EQ(log().count("Bravais types that"), nTables + 1);
    EXPECT_EQ(dialog().m_pListLattices->count(), 1);
}

}  // namespace tessera
