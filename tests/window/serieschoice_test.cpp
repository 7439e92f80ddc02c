// Frames of a series that are chosen, summed and binned, in "New Project" and for the project that is open.
#include "dataset/serieschoicefile.h"
#include "tests/window/windowtest.h"
#include "window/newproject/framelistbox.h"
#include "window/newproject/pixelsizebox.h"
#include "window/newproject/tiltsbox.h"
#include "window/newprojectdialog.h"
#include "window/serieschoicebox.h"
#include "window/serieschoicedialog.h"

namespace tessera {

namespace {

class ChosenFrames : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        for (int n = 1; n <= 9; ++n) {
            writePicture(QString("p%1.png").arg(n),
                         [n](int x, int y) { return n + (x == 20 && y == 31 ? 100 : 0); });
        }
    }
    /// Works in the dialog that the action opens.
    template <class TDialog>
    void withDialog(QAction* pAction, const std::function<void(TDialog&)>& fnWork)
    {
        bool bCame = false;
        QTimer::singleShot(0, [&] {
            auto* pDialog = qobject_cast<TDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(pDialog, nullptr);
            bCame = true;
            fnWork(*pDialog);
            if (pDialog->isVisible()) {
                pDialog->done(QDialog::Rejected);
            }
        });
        pAction->trigger();
        EXPECT_TRUE(bCame);
    }
    /// The frames 2 to 9 without 6, two by two and binned by two.
    static void choose(const NewProjectDialog& dialog)
    {
        dialog.m_pFrames->m_pChoice->m_pFramesEdit->setText("2-");
        dialog.m_pFrames->m_pChoice->m_pSkipEdit->setText("6");
        dialog.m_pFrames->m_pChoice->m_pSumSpin->setValue(2);
        dialog.m_pFrames->m_pChoice->m_pBinSpin->setValue(2);
    }
    /// A project of all frames with that choice.
    void create()
    {
        withDialog<NewProjectDialog>(m_pActions->m_pNewProject, [&](NewProjectDialog& dialog) {
            fill(dialog);
            choose(dialog);
            dialog.m_pButtons->button(QDialogButtonBox::Ok)->click();
        });
    }
    void fill(NewProjectDialog& dialog) const
    {
        dialog.addFrames({m_dir.path()});
        ASSERT_EQ(dialog.m_pFrames->m_pFrameList->count(), 9);
        dialog.m_pTilts->m_pStepRadio->setChecked(true);
        dialog.m_pTilts->m_pTiltStartSpin->setValue(-4);
        dialog.m_pTilts->m_pTiltStepSpin->setValue(1);
        dialog.m_pPixels->m_pPixelSizeRadio->setChecked(true);
        dialog.m_pPixels->m_pPixelSizeSpin->setValue(0.004);
    }
    QStringList tableOfFrames() const
    {
        QStringList list;
        const QTableWidget* pTable = m_pFrames->m_pFileTable;
        for (int n = 0; n < pTable->rowCount(); ++n) {
            list.append(pTable->item(n, 0)->text());
        }
        return list;
    }

    const QStringList m_listChosen = {"p2.png", "p4.png", "p7.png"};
};

}  // namespace

TEST_F(ChosenFrames, AreCheckedBeforeAProjectIsMade)
{
    withDialog<NewProjectDialog>(m_pActions->m_pNewProject, [&](NewProjectDialog& dialog) {
        QPushButton* pCreate = dialog.m_pButtons->button(QDialogButtonBox::Ok);
        fill(dialog);
        EXPECT_TRUE(pCreate->isEnabled()) << dialog.m_pProblemLabel->text().toStdString();
        EXPECT_TRUE(dialog.m_pFrames->m_pChoiceLabel->isHidden());
        for (const char* pszBad : {"5-3", "8-10", "x"}) {
            dialog.m_pFrames->m_pChoice->m_pFramesEdit->setText(pszBad);
            EXPECT_FALSE(pCreate->isEnabled()) << pszBad;
            EXPECT_TRUE(dialog.m_pProblemLabel->text().startsWith("Frames to take: "));
        }
        choose(dialog);
        EXPECT_TRUE(dialog.m_pFrames->m_pChoiceLabel->text().startsWith("3 frames of 9"))
            << dialog.m_pFrames->m_pChoiceLabel->text().toStdString();
        EXPECT_TRUE(pCreate->isEnabled()) << dialog.m_pProblemLabel->text().toStdString();
    });
}

TEST_F(ChosenFrames, AreThoseOfTheProjectFromItsMakingOn)
{
    create();
    EXPECT_EQ(tableOfFrames(), m_listChosen) << log().toStdString();
    EXPECT_EQ(m_pFrames->m_pFileTable->item(0, 3)->text(), "-2.500°");
    EXPECT_EQ(m_pFrames->m_pFileTable->item(2, 3)->text(), " 2.500°");
    EXPECT_EQ(m_pFrames->m_pPixelSizeSpin->value(), 0.008);
    EXPECT_EQ(m_pScene->imageSize(), QSize(32, 32));
    EXPECT_TRUE(readBytes(path("p.ed3d")).contains("CCDPIXELSIZE 0.004\n")) << "a project is of its files";

    newWindow();
    m_pWindow->openFiles({path("p.ed3d")});
    EXPECT_EQ(tableOfFrames(), m_listChosen) << "the same for the next who opens it";
}

TEST_F(ChosenFrames, AreAllOfThemWhereThatIsWanted)
{
    create();
    writeBytes(path("p.sc"), "as measured on these frames");
    withDialog<SeriesChoiceDialog>(m_pActions->m_pFrames, [&](SeriesChoiceDialog& dialog) {
        QPushButton* pOpen = dialog.m_pButtons->button(QDialogButtonBox::Ok);
        EXPECT_FALSE(pOpen->isEnabled()) << "as it is";
        EXPECT_EQ(dialog.m_pChoice->m_pFramesEdit->text(), QString("2-"));
        dialog.m_pChoice->setChoice({});
        EXPECT_TRUE(pOpen->isEnabled());
        pOpen->click();
    });
    EXPECT_EQ(tableOfFrames().size(), 9);
    EXPECT_EQ(m_pFrames->m_pPixelSizeSpin->value(), 0.004);
    EXPECT_EQ(lines("p.sc is not used", Qt::black), 1) << log().toStdString();
    withDialog<SeriesChoiceDialog>(m_pActions->m_pFrames, [&](SeriesChoiceDialog& dialog) {
        dialog.m_pChoice->m_pSkipEdit->setText("1-9");
        EXPECT_FALSE(dialog.m_pButtons->button(QDialogButtonBox::Ok)->isEnabled());
        EXPECT_TRUE(dialog.m_pOutcomeLabel->text().contains("no frame of 9 is left"));
        dialog.m_pButtons->button(QDialogButtonBox::Cancel)->click();
    });
    EXPECT_EQ(tableOfFrames().size(), 9);
}

TEST_F(ChosenFrames, OfAFolderWithTwoSizesAreOfTheOneThatIsWanted)
{
    QDir().mkpath(path("two"));
    for (int n = 1; n <= 5; ++n) {
        QImage image(n < 3 ? 48 : 64, 64, QImage::Format_Grayscale8);
        image.fill(n);
        ASSERT_TRUE(image.save(path(QString("two/f%1.png").arg(n))));
    }
    withDialog<NewProjectDialog>(m_pActions->m_pNewProject, [&](NewProjectDialog& dialog) {
        QTimer::singleShot(0, &dialog, [&] {
            auto* pAsk = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(pAsk, nullptr);
            EXPECT_EQ(pAsk->comboBoxItems().size(), 2);
            EXPECT_TRUE(pAsk->textValue().startsWith("64 × 64 pixels: 3 frames")) << "the commonest";
            pAsk->accept();
        });
        dialog.addFrames({path("two")});
        EXPECT_EQ(dialog.m_pFrames->m_pFrameList->count(), 3);
    });
}

}  // namespace tessera
