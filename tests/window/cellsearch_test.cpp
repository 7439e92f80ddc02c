// The methods of the cell search on the page, the share of peaks beside the cell, and the dialog of a known
// cell.
#include "tests/window/reciprocaltest.h"
#include "window/knowncelldialog.h"

namespace tessera {

namespace {

const double g_dfEdgeA = 4.916, g_dfEdgeC = 5.4054;  // Å, of the simulator's quartz

class CellSearchPage : public Reciprocal {
protected:
    void SetUp() override
    {
        Reciprocal::SetUp();
        open();
        m_pMerging->m_pButtonMerge->click();
    }
    void chooseMethod(const char* pszText)
    {
        const int nIndex = m_pCell->m_pComboMethod->findText(QString::fromLatin1(pszText));
        ASSERT_GE(nIndex, 0) << pszText;
        m_pCell->m_pComboMethod->setCurrentIndex(nIndex);
    }
    /// Volume of the cell in use, by the vectors of an export.
    double volume() { return 1 / std::fabs(determinantOf(cell())); }
    static double determinantOf(const Mat& m)
    {
        return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
               m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
               m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    }
    /// The first number of "80.6% of 5097 peaks fit, by chance 6.5%".
    double shownShare() const
    {
        const QString strFit = m_pCell->m_pLabelCellFit->text();
        EXPECT_TRUE(strFit.contains("peaks fit, by chance ")) << strFit.toStdString();
        return QLocale::system().toDouble(strFit.section('%', 0, 0));
    }
    /// Opens the dialog and works in it; `fnWork` leaves it closed.
    void withDialog(const std::function<void(KnownCellDialog&)>& fnWork)
    {
        bool bCame = false;
        QTimer::singleShot(0, [&] {
            auto* pDialog = qobject_cast<KnownCellDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(pDialog, nullptr);
            bCame = true;
            fnWork(*pDialog);
            EXPECT_FALSE(pDialog->isVisible());
            if (pDialog->isVisible()) {
                pDialog->reject();
            }
        });
        m_pCell->m_pButtonKnownCell->click();
        EXPECT_TRUE(bCame);
    }
};

}  // namespace

TEST_F(CellSearchPage, EachMethodFindsTheCellAndTellsItsShare)
{
    EXPECT_EQ(m_pCell->m_pComboMethod->currentText(), "Difference Vectors");
    EXPECT_FALSE(m_pCell->m_pCheckAutoRange->isChecked());
    const double dfVolume = g_dfEdgeA * g_dfEdgeA * g_dfEdgeC * std::sqrt(0.75);
    for (const char* pszMethod : {"Difference Vectors", "Directions", "Best of Both"}) {
        loadCell(g_matCell);
        EXPECT_LT(shownShare(), 40) << "that of another cell";
        ASSERT_NO_FATAL_FAILURE(chooseMethod(pszMethod));
        m_pCell->m_pButtonSearchCell->click();
        EXPECT_NEAR(volume(), dfVolume, 0.03 * dfVolume) << pszMethod << log().right(500).toStdString();
        EXPECT_GT(shownShare(), 80) << pszMethod;
        EXPECT_EQ(m_pCell->m_pButtonSearchCell->text(), "Search for Unit Cell");
        EXPECT_TRUE(m_pMerged->showLatticeLines());
    }
    // Other data have neither cell nor share; those with peaks and a wrong axis have another share.
    const double dfShare = shownShare();
    m_pFrames->m_pRotationAxisSpin->setValue(m_pFrames->m_pRotationAxisSpin->value() + 30);
    EXPECT_LT(shownShare(), dfShare / 2);
    QFile::copy(file("w.ed3d"), file("bare.ed3d"));
    m_pWindow->openFiles({file("bare.ed3d")});
    EXPECT_EQ(m_pCell->m_pLabelCellFit->text(), QString());
}

TEST_F(CellSearchPage, RangeComesFromTheSpotsOnDemand)
{
    QDoubleSpinBox *pMin = m_pCell->m_pSpinCellRangeMin, *pMax = m_pCell->m_pSpinCellRangeMax;
    pMax->setValue(44);
    m_pCell->m_pCheckAutoRange->setChecked(true);
    EXPECT_FALSE(pMin->isEnabled());
    EXPECT_FALSE(pMax->isEnabled());
    EXPECT_EQ(pMin->value(), 2);
    // The edges of the lattice and some room.
    EXPECT_GT(pMax->value(), g_dfEdgeC);
    EXPECT_LT(pMax->value(), 2.5 * g_dfEdgeC);
    m_pCell->m_pButtonSearchCell->click();
    EXPECT_EQ(lines("The distances of the spots allow for edges of 2.0 to ", Qt::blue), 1);
    EXPECT_GT(shownShare(), 80);
    m_pCell->m_pCheckAutoRange->setChecked(false);
    EXPECT_TRUE(pMin->isEnabled());
    EXPECT_TRUE(pMax->isEnabled());
    EXPECT_EQ(pMin->value(), 3);
    EXPECT_EQ(pMax->value(), 44);
    newWindow();
    EXPECT_FALSE(m_pCell->m_pCheckAutoRange->isChecked());
}

TEST_F(CellSearchPage, StopsAndLeavesTheFormerCell)
{
    loadCell(g_matCell);
    ASSERT_NO_FATAL_FAILURE(chooseMethod("Directions"));
    bool bStop = false;
    during([&] { m_pCell->m_pButtonSearchCell->click(); },
           [&] {
               bStop = bStop || m_pCell->m_pButtonSearchCell->text() == "Stop";
               m_pWindow->runIndexing();  // has to wait
               m_pCell->m_pButtonSearchCell->click();
               return true;
           });
    EXPECT_TRUE(bStop);
    EXPECT_EQ(lines("The search for the cell was stopped.", Qt::black), 1);
    EXPECT_EQ(m_pCell->m_pButtonSearchCell->text(), "Search for Unit Cell");
    expectNear(cell(), g_matCell);
}

TEST_F(CellSearchPage, AKnownCellIsReadFromACifAndKeepsItsResultUntilItIsChanged)
{
    loadCell(g_matCell);
    write("q.cif",
          "data_q\n_cell_length_a 4.916(2)\n_cell_length_b 4.916\n_cell_length_c 5.4054\n"
          "_cell_angle_alpha 90\n_cell_angle_beta 90\n_cell_angle_gamma 120\n");
    withDialog([this](KnownCellDialog& dialog) {
        EXPECT_FALSE(dialog.m_pButtonSearch->isEnabled()) << "edges of 0";
        EXPECT_FALSE(dialog.m_pButtonTakeRotated->isEnabled());
        answered({write("bad.cif", "data_q\n_cell_length_a 4\n")}, [&] { dialog.m_pButtonCif->click(); });
        EXPECT_TRUE(dialog.m_pLabelSays->text().contains("no _cell_length_b"));
        answered({path("q.cif")}, [&] { dialog.m_pButtonCif->click(); });
        EXPECT_EQ(dialog.m_apSpin[2]->value(), 5.4054);
        dialog.m_pButtonSearch->click();
        EXPECT_TRUE(dialog.m_pButtonTakeRotated->isEnabled()) << dialog.m_pLabelSays->text().toStdString();
        for (const QLabel* pLabel : dialog.m_apLabelFit) {
            EXPECT_TRUE(pLabel->text().contains("peaks fit, by chance"));
        }
        dialog.m_apSpin[0]->setValue(6);  // takes the result away
        EXPECT_FALSE(dialog.m_pButtonTakeRefined->isEnabled());
        EXPECT_FALSE(dialog.m_apLabelFit[0]->text().contains("peaks"));
        dialog.reject();
    });
    expectNear(cell(), g_matCell);
}

TEST_F(CellSearchPage, AKnownCellIsOrientedAndTaken)
{
    loadCell(g_matCell);
    const Mat matTruth = {{{g_dfEdgeA, g_dfEdgeA, g_dfEdgeC}, {90, 90, 120}, {0, 0, 0}}};
    for (const bool bRefined : {false, true}) {
        withDialog([&](KnownCellDialog& dialog) {
            EXPECT_EQ(dialog.m_apSpin[0]->value(), bRefined ? g_dfEdgeA : 0) << "as it was given last";
            for (size_t n = 0; n < 6; ++n) {
                dialog.m_apSpin[n]->setValue(matTruth[n / 3][n % 3]);
            }
            dialog.m_pButtonSearch->click();
            (bRefined ? dialog.m_pButtonTakeRefined : dialog.m_pButtonTakeRotated)->click();
        });
        const auto aNumber = cellOfReciprocalBasis(cell());
        for (size_t n = 0; n < 6; ++n) {
            EXPECT_NEAR(aNumber[n], matTruth[n / 3][n % 3],
                        (bRefined ? 1e-2 : 1e-4) * matTruth[n / 3][n % 3]);
        }
        EXPECT_GT(shownShare(), 80);
        EXPECT_EQ(readBytes(file("w.uc")), readBytes(path("out.uc"))) << "the project's own file";
        EXPECT_EQ(log().count("Found unit cell: a="), bRefined ? 2 : 1);
        EXPECT_TRUE(m_pMerged->showLatticeLines());
    }
}

TEST_F(CellSearchPage, AKnownCellThatIsNotFoundLeavesTheFormerOne)
{
    loadCell(g_matCell);
    withDialog([](KnownCellDialog& dialog) {
        for (size_t n = 0; n < 6; ++n) {
            dialog.m_apSpin[n]->setValue(n < 3 ? 5.64 : 90);
        }
        dialog.m_pButtonSearch->click();
        EXPECT_TRUE(dialog.m_pLabelSays->text().startsWith("The known cell was not found"));
        EXPECT_FALSE(dialog.m_pButtonTakeRotated->isEnabled());
        // A search that is cancelled ends with its dialog.
        during([&] { dialog.m_pButtonSearch->click(); },
               [&] {
                   EXPECT_EQ(dialog.m_pButtonSearch->text(), "Stop");
                   EXPECT_FALSE(dialog.m_apSpin[0]->isEnabled());
                   dialog.reject();
                   return true;
               });
    });
    expectNear(cell(), g_matCell);
}

}  // namespace tessera
